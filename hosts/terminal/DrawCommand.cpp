#include <fmt/format.h>

#include <iterator>
#include <limits>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Output.h"
#include "simulation/Uniform.h"

namespace palvex::terminal {

namespace {

struct DrawOptions : ResultOptions, DistributionArguments {
  std::string count = "10";
  std::string seed = "0";
  std::string file;
};

constexpr std::uint64_t mostDraws = 1'000'000'000'000;
constexpr std::uint64_t blockSize = 4096;  // draws between two writes

/// Appends draw number `trial` (from 0) as one line.
void append(fmt::memory_buffer& text, Format format, std::uint64_t trial, double u, double value) {
  const auto end = std::back_inserter(text);
  switch (format) {
    case Format::people:
      fmt::format_to(end, "{}\n", value);
      break;
    case Format::csv:
      fmt::format_to(end, "{},{},{}\n", trial + 1, u, value);
      break;
    case Format::json:
      fmt::format_to(end, "{} {}", trial == 0 ? "\n" : ",\n", value);
      break;
  }
}

void draw(const DrawOptions& options) {
  const std::uint64_t count = countArgument("-n", options.count, 1, mostDraws);
  const std::uint64_t seed =
      countArgument("--seed", options.seed, 0, std::numeric_limits<std::uint64_t>::max());
  c_Distribution distribution;
  options.setChecked(distribution);

  Output output(options.file);
  Progress progress(output, count);
  if (options.format == Format::csv) output.write("trial,uniform,value\n");
  if (options.format == Format::json) output.write("[");
  fmt::memory_buffer text;
  for (std::uint64_t trial = 0; trial < count; ++trial) {
    const double u = simulation::uniform(seed, 0, trial);
    append(text, options.format, trial, u, distribution.RandVal(u));
    if ((trial + 1) % blockSize == 0 || trial + 1 == count) {
      output.write({text.data(), text.size()});
      text.clear();
      progress.report(trial + 1);
    }
  }
  if (options.format == Format::json) output.write("\n]\n");
  output.close();
}

}  // namespace

void addDraw(CLI::App& program) {
  CLI::App* command = program.add_subcommand("draw", "Random values of a distribution");
  command->footer(
      "Writes one value a line, in the shortest form that reads back the same; --csv adds the\n"
      "number of the trial and the uniform random number behind the value, --json writes an "
      "array.\n"
      "The uniform numbers come from a counter-based generator (Philox4x32-10): the same seed "
      "gives\n"
      "the same ones everywhere, and a longer run starts with the values of a shorter one.\n\n"
      "Examples:\n"
      "  palvex draw Normal 10 2 -n 5 --seed 7\n"
      "  palvex draw Triangular =B2 =C2 =D2 --sheet estimate.csv -n 1000000 --csv -o draws.csv");
  const auto options = std::make_shared<DrawOptions>();
  options->DistributionArguments::addTo(*command);
  command->add_option("-n", options->count, "How many values")
      ->type_name("N")
      ->capture_default_str();
  command->add_option("--seed", options->seed, "Seed of the random numbers, 0 or greater")
      ->type_name("S")
      ->capture_default_str();
  command->add_option("-o", options->file, "Write to a file, not to standard output")
      ->type_name("FILE");
  options->ResultOptions::addTo(*command);
  command->callback([options] { draw(*options); });
}

}  // namespace palvex::terminal
