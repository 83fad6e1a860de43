// The object among hostile ranges, which fail, lie, change it and call back into it. Whatever they
// did, once it is set up with plain values it answers as the stateless routines do, bit for bit and
// error for error, and as the law where members and law are the same.

#include "Fuzz.h"
#include "Stateless.h"
#include "engine/c_Distribution.h"
#include "runtime/MessageBox.h"

namespace palvex::fuzz {
namespace {

using script::outcome;
using script::shown;
using script::Values;

/// A host at its worst, with one object.
struct Host {
  explicit Host(FuzzedDataProvider& given) : data(given) {}
  void act();
  Variant value();

  FuzzedDataProvider& data;
  c_Distribution object;
  int depth = 0;
};

/// A range that answers as it likes.
class HostileRange : public Object, public std::enable_shared_from_this<HostileRange> {
 public:
  explicit HostileRange(Host& host) : host_(host) {}

 protected:
  Variant doGet(std::string_view member, const std::vector<Variant>& arguments) override {
    const int mood = host_.data.ConsumeIntegralInRange(0, 15);
    if (mood == 0) throw RuntimeError(1004, "the sheet is closed", "host");
    if (mood == 1) throw std::runtime_error("a host's own");
    if (mood == 2) throw 3;
    if (mood == 3) return host_.value();
    if (mood < 7) host_.act();
    if (sameMember(member, "Application")) return std::make_shared<Object>();
    if (sameMember(member, "Address")) return "$A$1";
    if (sameMember(member, "Count")) return host_.data.ConsumeIntegralInRange(-1, 5);
    if (sameMember(member, "Cells")) return shared_from_this();
    return sameMember(member, "Value") ? host_.value() : Object::doGet(member, arguments);
  }

 private:
  Host& host_;
};

Variant Host::value() {
  const std::array<Variant, 8> plain{
      Variant::missing(), Variant::error(2042),    "-Infinity",       "+Infinity",
      "Raw Data",         m_Histogram::layouts[2], Variant::array(3), true};
  const int kind = data.ConsumeIntegralInRange(0, 7);
  if (kind == 0) return oneOf(data, plain);
  if (kind < 3) return std::make_shared<HostileRange>(*this);
  if (kind == 3) return data.ConsumeRandomLengthString(8);
  if (kind > 4) return number(data);
  Variant bins = Variant::array(2, 3);
  for (int i = 0; i < 6; ++i) bins.at(i / 3 + 1, i % 3 + 1) = number(data);
  return bins;
}

/// Does one thing to the object; it answers, or raises what it is documented to raise.
void Host::act() {
  using Act = void (*)(Host&, c_Distribution&);
  static const std::array<Act, 18> acts{
      [](Host& h, c_Distribution& d) { d.distType(oneOf(h.data, families).name); },
      [](Host& h, c_Distribution& d) { d.param1 = h.value(); },
      [](Host& h, c_Distribution& d) { d.param2 = h.value(); },
      [](Host& h, c_Distribution& d) { d.param3 = d.param4 = h.value(); },
      [](Host& h, c_Distribution& d) { d.ltl = h.value(); },
      [](Host& h, c_Distribution& d) { d.utl = h.value(); },
      [](Host&, c_Distribution& d) { d.Dynamic = !d.Dynamic; },
      [](Host& h, c_Distribution& d) { d.pdf(number(h.data), h.data.ConsumeBool(), h.value()); },
      [](Host& h, c_Distribution& d) { d.cdf(number(h.data)); },
      [](Host& h, c_Distribution& d) { d.RandVal(probability(h.data)); },
      [](Host&, c_Distribution& d) { d.CalcStdev(d.mean()); },
      [](Host& h, c_Distribution& d) { d.StDev(h.value()), d.CalcMean(); },
      [](Host& h, c_Distribution& d) { d.XMin(number(h.data)), d.XMax(); },
      [](Host& h, c_Distribution& d) { d.CreateGraphData(number(h.data), number(h.data)); },
      [](Host& h, c_Distribution& d) { d.ResizeArrays(h.data.ConsumeIntegral<std::int8_t>()); },
      [](Host& h, c_Distribution& d) { static_cast<void>(d.law().quantile(number(h.data))); },
      [](Host&, c_Distribution& d) { d = c_Distribution(d); },
      [](Host&, c_Distribution& d) {
        std::string cause;
        if (d.ParamsOK(cause) != cause.empty()) fail("a fault without its sentence: " + cause);
      }};
  if (depth > 3) return;
  ++depth;
  try {
    oneOf(data, acts)(*this, object);
  } catch (const RuntimeError&) {
  } catch (const std::logic_error&) {  // of a law
  }
  --depth;
}

/// Type, parameters and limits.
using Setup = std::array<Variant, 7>;

Setup plainSetup(FuzzedDataProvider& data) {
  const Family& family = oneOf(data, families);
  Setup setup{family.name};
  for (std::size_t i = 1; i < setup.size(); ++i) {
    const bool given = i < 5 ? i <= family.parameters->size() : data.ConsumeBool();
    if (given) setup.at(i) = number(data);
  }
  if (family.tabulate == nullptr) return setup;
  Values bins;
  double edge = number(data);
  for (int i = data.ConsumeIntegralInRange(1, 5); i > 0; --i) {
    const double lower = edge + data.ConsumeIntegralInRange(0, 2);
    edge = lower + std::abs(number(data));
    bins.insert(bins.end(), {lower, edge, data.ConsumeIntegral<std::uint8_t>()});
  }
  setup[1] = block(3, bins);
  setup[2] = m_Histogram::layouts[2];
  return setup;
}

std::string text(const Setup& setup) {
  std::string text;
  for (const Variant& value : setup) text += shown(value) + ' ';
  return text;
}

/// The sentence of the object's check, or its error.
std::string check(c_Distribution& d, const Setup& setup, bool inCells) {
  const std::array members{&d.param1, &d.param2, &d.param3, &d.param4, &d.ltl, &d.utl};
  d.distType(setup[0].toText());
  for (std::size_t i = 0; i < members.size(); ++i) {
    const Variant& given = setup.at(i + 1);
    *members.at(i) = inCells && !given.isObject() ? Variant(cell(given)) : given;
  }
  std::string cause;
  const auto error = faultOf([&] { return d.ParamsOK(cause); });
  return error ? error->what() : cause;
}

/// At the law's quantile of p, where `cdf` is the law's (see docs/departures.md).
void compareWithTheLaw(c_Distribution& d, const Setup& setup, double p) try {
  const double x = d.law().quantile(p);
  d.ltl = d.utl = {};
  std::string cause;
  const std::string type = d.distType();
  // With other shapes a rounded u is a matter of many digits, and one that underflows of all.
  const auto moderate = [](const Variant& shape) {
    return shape.toDouble() > 1 && shape.toDouble() < 50;
  };
  if (type == "Gamma" || type == "Johnson" ||
      (type == "Beta" && !(moderate(setup[1]) && moderate(setup[2]))) ||
      (type == "Weibull" && !moderate(setup[1])) || !d.ParamsOK(cause))
    return;
  const Law whole = d.law();
  const double difference = d.cdf(x) - whole.probability(x);
  if (whole.support().lower < whole.support().upper && std::abs(difference) > 1e-13)
    fail(text(setup) + "cdf at " + shown(x) + " differs from the law by " + shown(difference));
} catch (const RuntimeError&) {           // what the member raises was compared before
} catch (const std::invalid_argument&) {  // no law
}

}  // namespace

void run(FuzzedDataProvider& data) {
  setMessageBox([](const std::string&) {});
  Host host(data);
  for (int i = data.ConsumeIntegralInRange(0, 12); i > 0; --i) host.act();

  c_Distribution& d = host.object;
  c_Distribution fresh;
  const Setup setup = plainSetup(data);
  const bool inCells = data.ConsumeBool();
  const std::string sentence = check(d, setup, inCells);
  if (check(fresh, setup, inCells) != sentence) fail(text(setup) + "judged otherwise: " + sentence);
  if (!sentence.empty()) return;
  const Values parameters(setup.begin() + 1, setup.begin() + 1 + d.NumParams());
  const script::Stateless routines(d.distType(), parameters, setup[5], setup[6]);
  const auto expectSame = [&](const char* member, double x, auto ofObject, auto ofRoutines) {
    const std::string got = outcome(ofObject, member);
    const std::string wanted = outcome(ofRoutines);
    if (got == wanted) return;
    fail(text(setup) + member + ' ' + shown(x) + ": " + got + ", not " + wanted);
  };
  for (int i = 0; i < 3; ++i) {
    d.Dynamic = data.ConsumeBool();
    const double x = number(data);
    const double p = data.ConsumeBool() ? probability(data) : x;
    expectSame(
        "RandVal", p, [&] { return d.RandVal(p); }, [&] { return routines.RandVal(p); });
    expectSame(
        "pdf", x, [&] { return d.pdf(x); }, [&] { return routines.pdf(x); });
    expectSame(
        "cdf", x, [&] { return d.cdf(x); }, [&] { return routines.cdf(x); });
  }
  compareWithTheLaw(d, setup, probability(data));
}

}  // namespace palvex::fuzz
