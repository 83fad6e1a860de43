#include <cmath>
#include <limits>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Faults.h"
#include "hosts/terminal/Members.h"
#include "hosts/terminal/Output.h"

namespace palvex::terminal {

namespace {

struct EvalOptions : ResultOptions, DistributionArguments {
  std::vector<std::string> at;
  std::string from;
  std::string to;
  std::string steps = "10";
  bool members = false;
};

constexpr std::uint64_t mostSteps = 1'000'000'000;

/// The points of the command line.
struct Points {
  std::vector<double> single;
  double from = 0;
  double to = 0;
  std::uint64_t steps = 0;  // none for no range

  explicit Points(const EvalOptions& options) {
    for (const std::string& x : options.at) single.push_back(numberArgument("--at", x));
    if (!options.from.empty()) {
      from = numberArgument("--from", options.from);
      to = numberArgument("--to", options.to);
      steps = countArgument("--steps", options.steps, 1, mostSteps);
    }
    if (single.empty() && steps == 0)
      throw UsageError("eval: say where, with --at X... or --from A --to B");
  }

  /// Hands each point to `use`, until the user asks to end.
  template <class Use>
  void each(Use use) const {
    for (const double x : single) use(x);
    double last = std::numeric_limits<double>::quiet_NaN();
    for (std::uint64_t i = 0; steps > 0 && i <= steps && !interrupted(); ++i) {
      const double x = std::lerp(from, to, static_cast<double>(i) / static_cast<double>(steps));
      if (x != last) use(x);  // from 0 to 0 there is one point
      last = x;
    }
  }
};

void evaluateLaw(const Points& points, const Law& law, Format format, Output& output) {
  TableWriter table(output, {"x", "density", "probability", "exceedance"}, format);
  points.each([&](double x) {
    table.add({x, law.density(x), law.probability(x), law.exceedance(x)});
  });
  table.close();
}

/// The members' answers, the law's beside them, and which of them differ.
void evaluateMembers(const Points& points, Members& members, Format format, Output& output) {
  TableWriter table(output, {"x", "pdf", "cdf", "density", "probability", "not the law"}, format);
  const std::optional<Law>& law = members.law();
  const auto add = [&](double x) {
    const double pdf = members.pdf(x);
    const double cdf = members.cdf(x);
    if (!law) return table.add({x, pdf, cdf, {}, {}, members.whyNoLaw()});
    std::string marks = Members::same(pdf, law->density(x)) ? "" : "pdf";
    if (!Members::same(cdf, law->probability(x))) marks += marks.empty() ? "cdf" : ", cdf";
    table.add({x, pdf, cdf, law->density(x), law->probability(x), marks});
  };
  try {
    points.each(add);
  } catch (const RuntimeError&) {
    table.breakOff();
    throw;
  }
  table.close();
}

void eval(EvalOptions& options) {
  const Points points(options);
  const auto items = options.read();
  const CatchInterrupt catching;
  Output output;
  if (options.members) {
    Members members(options.type, items);
    evaluateMembers(points, members, options.format, output);
  } else {
    evaluateLaw(points, options.law(items), options.format, output);
  }
  output.close();
  if (interrupted()) throw Interruption{};
}

}  // namespace

void addEval(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("eval", "Density and probability at points or over a range");
  command->footer(
      "Of the law between its limits: the density at x, the probability of a value up to x and "
      "that\n"
      "of a greater one. --members shows what the members pdf and cdf of the engine answer, the "
      "law\n"
      "beside them and which of them is not the law (docs/departures.md tells why).\n\n"
      "Examples:\n"
      "  palvex eval Normal 10 2 --at 8 10 12\n"
      "  palvex eval Gamma 2 3 5 --at 8 11 --members\n"
      "  palvex eval Normal =B2 =B3 --sheet estimate.csv --from 0 --to 20 --steps 40 --csv");
  const auto options = std::make_shared<EvalOptions>();
  options->DistributionArguments::addTo(*command);
  command->add_option("--at", options->at, "Points to evaluate at")->type_name("X");
  auto* from = command->add_option("--from", options->from, "First point of a range");
  auto* to = command->add_option("--to", options->to, "Last point of the range");
  command->add_option("--steps", options->steps, "Steps from the first to the last point")
      ->capture_default_str()
      ->needs(from);
  from->type_name("A")->needs(to);
  to->type_name("B")->needs(from);
  addMembers(*command, options->members);
  options->ResultOptions::addTo(*command);
  command->callback([options] { eval(*options); });
}

}  // namespace palvex::terminal
