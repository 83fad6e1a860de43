#include <fmt/core.h>

#include <optional>

#include "families/m_Johnson.h"
#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Members.h"
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

/// For each member whether it is the law's, or the first place where it is not.
void addMemberRows(Table& table, Members& members, std::size_t columns) {
  const auto add = [&](const char* member, std::string text) {
    std::vector<Table::Cell> row(columns);
    row.front() = member;
    row[2] = std::move(text);
    table.add(std::move(row));
  };
  if (!members.law()) {
    add("Law", "none: " + members.whyNoLaw());
    return;
  }
  const Law& law = *members.law();
  const auto compare = [&](const char* name, auto different) {
    for (const double p : {0.5, 0.01, 0.1, 0.25, 0.75, 0.9, 0.99}) {
      if (const std::string text = different(p, law.quantile(p)); !text.empty())
        return add(name, "not the law: " + text);
    }
    add(name, "the law's");
  };
  const auto difference = [](double at, double answer, double lawful) {
    return fmt::format("{:.4g} at {:.4g}, the law {:.4g}", answer, at, lawful);
  };
  compare("pdf", [&](double, double x) -> std::string {
    const double answer = members.pdf(x);
    return Members::same(answer, law.density(x)) ? "" : difference(x, answer, law.density(x));
  });
  compare("cdf", [&](double, double x) -> std::string {
    const double answer = members.cdf(x);
    return Members::same(answer, law.probability(x)) ? ""
                                                     : difference(x, answer, law.probability(x));
  });
  compare("RandVal", [&](double p, double x) -> std::string {
    const double answer = members.draw(p);
    return members.sameDraw(answer, x) ? "" : difference(p, answer, x);
  });
}

}  // namespace

void addCheck(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "check", "Check a distribution's parameters and limits, and show their values");
  command->footer(
      "A fault is one sentence on standard error, and the exit code is 1.\n"
      "For Johnson also the fitted curve: the moments that it really has beside those asked for\n"
      "(the published fit is loose), its type (SL, SU, SB or Normal) and its constants.\n"
      "--members shows where the members pdf, cdf and RandVal are not the law.\n\n"
      "Examples:\n"
      "  palvex check Normal 10 2\n"
      "  palvex check Triangular =B2 =C2 =D2 --ltl 0 --sheet estimate.csv\n"
      "  palvex check Johnson 10 2 0.5 4\n"
      "  palvex check Normal 10 -2");
  struct Options : ResultOptions, DistributionArguments {
    bool members = false;
  };
  const auto options = std::make_shared<Options>();
  options->DistributionArguments::addTo(*command);
  addMembers(*command, options->members);
  options->ResultOptions::addTo(*command);
  command->callback([options] {
    const auto items = options->read();
    std::optional<Members> members;
    if (options->members) {
      members.emplace(options->type, items);
    } else {
      lawOf(options->type, items);
    }
    Table table = options->type == "Johnson" ? johnsonTable(items) : checkedTable(items);
    if (members) addMemberRows(table, *members, options->type == "Johnson" ? 4 : 3);
    Output output;
    output.write(table.text(options->format));
    output.close();
  });
}

}  // namespace palvex::terminal
