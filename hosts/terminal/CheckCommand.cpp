#include "families/m_Johnson.h"
#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Output.h"
#include "laws/Johnson.h"

namespace palvex::terminal {

namespace {

Table checkedTable(const std::vector<DistributionArguments::Item>& items) {
  Table table({"parameter", "given", "value"});
  for (const auto& item : items) table.add({item.name, item.given, item.shown()});
  return table;
}

/// As checkedTable, with the Johnson curve that was fitted: the moments that it really has beside
/// those asked for, its type and its constants.
Table johnsonTable(const std::vector<DistributionArguments::Item>& items) {
  std::array<double, 4> asked{};
  for (std::size_t i = 0; i < asked.size(); ++i) asked[i] = content(items.at(i).value).toDouble();
  m_Johnson::JohnsonParams curve;
  m_Johnson::CalcJohnson(asked[0], asked[1], asked[2], asked[3], curve);

  // A fit may end without a curve and without a message: all its constants are 0 then.
  const bool fitted = curve.gamma != 0 || curve.delta != 0 || curve.lambda != 0 || curve.xi != 0;
  std::array<Table::Cell, 4> moments;
  if (fitted) {
    const auto [mean, stdDev, skewness, kurtosis] = laws::Johnson(curve).curveMoments();
    moments = {mean, stdDev, skewness, kurtosis};
  }

  Table table({"parameter", "given", "value", "fitted"});
  for (std::size_t i = 0; i < items.size(); ++i) {
    const auto& item = items[i];
    table.add(
        {item.name, item.given, item.shown(), i < moments.size() ? moments[i] : Table::Cell{}});
  }
  table.add({"Curve", {}, {}, fitted ? curve.typeName : "none: the fit did not converge"});
  if (fitted) {
    table.add({"gamma", {}, {}, curve.gamma});
    table.add({"delta", {}, {}, curve.delta});
    table.add({"lambda", {}, {}, curve.lambda});
    table.add({"xi", {}, {}, curve.xi});
  }
  return table;
}

}  // namespace

void addCheck(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "check", "Check a distribution's parameters and limits, and show their values");
  command->footer(
      "A fault is one sentence on standard error, and the exit code is 1.\n"
      "For Johnson also the fitted curve: the moments that it really has beside those asked for\n"
      "(the published fit is loose), its type (SL, SU, SB or Normal) and its constants.\n\n"
      "Examples:\n"
      "  palvex check Normal 10 2\n"
      "  palvex check Triangular =B2 =C2 =D2 --ltl 0 --sheet estimate.csv\n"
      "  palvex check Johnson 10 2 0.5 4\n"
      "  palvex check Normal 10 -2");
  struct Options : ResultOptions, DistributionArguments {};
  const auto options = std::make_shared<Options>();
  options->DistributionArguments::addTo(*command);
  options->ResultOptions::addTo(*command);
  command->callback([options] {
    c_Distribution distribution;
    const auto items = options->setChecked(distribution);
    const Table table = options->type == "Johnson" ? johnsonTable(items) : checkedTable(items);
    Output output;
    output.write(table.text(options->format));
    output.close();
  });
}

}  // namespace palvex::terminal
