#include "hosts/calc/Simulate.h"

#include <chrono>
#include <com/sun/star/awt/Key.hpp>
#include <com/sun/star/awt/XKeyHandler.hpp>
#include <com/sun/star/awt/XUserInputInterception.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <com/sun/star/frame/XModel.hpp>
#include <com/sun/star/task/XStatusIndicatorFactory.hpp>
#include <cppuhelper/implbase1.hxx>
#include <optional>
#include <rtl/ref.hxx>

#include "hosts/calc/Office.h"
#include "hosts/calc/Register.h"
#include "hosts/calc/ResultsSheet.h"
#include "hosts/calc/Text.h"
#include "hosts/calc/Uno.h"
#include "hosts/calc/Workbook.h"
#include "simulation/Run.h"

namespace palvex::calc {

namespace {

using simulation::Fault;

/// The active spreadsheet; where none is active, as without a window, the only one that is open.
Document openDocument() {
  const auto desktop = css::frame::Desktop::create(context());
  Document document(desktop->getCurrentComponent(), UNO_QUERY);
  if (document.is()) return document;
  const auto components = desktop->getComponents()->createEnumeration();
  while (components->hasMoreElements()) {
    const Document other(components->nextElement(), UNO_QUERY);
    if (!other.is()) continue;
    if (document.is()) throw Fault("several spreadsheets are open, and none is active.");
    document = other;
  }
  if (!document.is()) throw Fault("there is no open spreadsheet.");
  return document;
}

/// Takes all keys while a simulation runs, and notes Esc.
class Escape final : public cppu::WeakImplHelper1<css::awt::XKeyHandler> {
 public:
  sal_Bool SAL_CALL keyPressed(const css::awt::KeyEvent& key) override {
    pressed_ = pressed_ || key.KeyCode == css::awt::Key::ESCAPE;
    return true;
  }
  sal_Bool SAL_CALL keyReleased(const css::awt::KeyEvent&) override { return true; }
  void SAL_CALL disposing(const css::lang::EventObject&) override { pressed_ = true; }
  [[nodiscard]] bool pressed() const { return pressed_; }

 private:
  bool pressed_ = false;
};

/// The progress of a simulation in the status bar, which Esc cancels. Events of the window are
/// handled whenever the progress is shown.
class Progress {
 public:
  explicit Progress(const Document& document) {
    const auto controller =
        Reference<css::frame::XModel>(document, UNO_QUERY_THROW)->getCurrentController();
    keyboard_.set(controller, UNO_QUERY);
    if (keyboard_.is()) keyboard_->addKeyHandler(escape_.get());
    if (!controller.is()) return;
    const Reference<css::task::XStatusIndicatorFactory> factory(controller->getFrame(), UNO_QUERY);
    if (!factory.is()) return;
    indicator_ = factory->createStatusIndicator();
    if (indicator_.is()) indicator_->start("palvex: simulating, Esc cancels", hundred);
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() {
    try {
      if (indicator_.is()) indicator_->end();
      if (keyboard_.is()) keyboard_->removeKeyHandler(escape_.get());
    } catch (const css::uno::Exception&) {
      // The window has been closed.
    }
  }

  /// @param share  of the whole, from 0 to 1
  void show(double share) {
    const auto now = Clock::now();
    if (!indicator_.is() || now < next_) return;
    next_ = now + std::chrono::milliseconds(100);
    indicator_->setValue(static_cast<sal_Int32>(share * hundred));
  }
  [[nodiscard]] bool cancelled() const { return escape_->pressed(); }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr sal_Int32 hundred = 100;

  rtl::Reference<Escape> escape_{new Escape};
  Reference<css::awt::XUserInputInterception> keyboard_;
  Reference<css::task::XStatusIndicator> indicator_;
  Clock::time_point next_ = Clock::now();
};

/// A workbook that shows how far its trials are.
class WatchedWorkbook final : public simulation::Workbook {
 public:
  WatchedWorkbook(const Document& document, const simulation::Model& model, std::uint64_t trials,
                  Progress& progress)
      : cells_(document, model),
        first_(model.inputs().front()),
        trials_(static_cast<double>(trials)),
        progress_(progress) {}

  void put(std::size_t row, double value) override {
    if (row == first_) progress_.show(++done_ / trials_);
    cells_.put(row, value);
  }
  double read(std::size_t cell) override { return cells_.read(cell); }
  double result(std::size_t row) override { return cells_.result(row); }

 private:
  calc::Workbook cells_;
  std::size_t first_;
  double trials_;
  double done_ = 0;
  Progress& progress_;
};

/// Simulates a copy; no results when the user has cancelled.
std::optional<simulation::Results> simulate(const Document& document) {
  checkTakesResults(document);
  const TemporaryFolder folder;
  const auto file = folder.path() / "copy.ods";
  storeCopy(document, file);
  const HiddenDocument copy(file);
  const Table table(copy.get());
  const auto model = simulation::Model::fromWorkbook(table);
  simulation::Settings settings = settingsOf(model, table);
  settings.percents = curvePercents();
  Progress progress(document);
  simulation::RunOptions options;
  options.threads = 1;  // one document, one thread
  options.cancelled = [&] { return progress.cancelled(); };
  options.openWorkbook = [&] {
    return std::make_unique<WatchedWorkbook>(copy.get(), model, settings.trials, progress);
  };
  auto results = simulation::run(model, settings, options);
  if (results.cancelled) return {};
  return results;
}

/// Lets one simulation run at a time: while the progress is shown, the user can reach the menu
/// again.
class Turn {
 public:
  Turn() {
    if (taken_) throw Fault("a simulation is running; Esc cancels it.");
    taken_ = true;
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() { taken_ = false; }

 private:
  static inline bool taken_ = false;
};

void act(const OUString& event) {
  if (event == "run") {
    const Turn turn;
    const Document document = openDocument();
    if (const auto results = simulate(document)) writeResults(document, *results);
  } else if (event == "new") {
    insertRegister(openDocument());
  } else {
    throw Fault("palvex.Simulation knows \"run\" and \"new\", not \"" + utf8(event) + "\".");
  }
}

}  // namespace

void Simulate::trigger(const OUString& event) {
  std::string fault;
  try {
    act(event);
    return;
  } catch (const css::uno::Exception& failure) {
    fault = utf8(failure.Message);
  } catch (const std::exception& failure) {
    fault = failure.what();
  }
  showMessageBox(fault);
  throw css::uno::RuntimeException(wide(fault), *this);
}

OUString Simulate::getImplementationName() {
  return OUString::createFromAscii(implementation);
}

sal_Bool Simulate::supportsService(const OUString& service) {
  return service.equalsAscii(implementation);
}

Sequence<OUString> Simulate::getSupportedServiceNames() {
  return only(getImplementationName());
}

}  // namespace palvex::calc
