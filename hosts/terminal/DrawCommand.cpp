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
  std::string stream = "0";
  std::string file;
  bool force = false;
};

constexpr std::uint64_t mostDraws = 1'000'000'000'000;
// The generator's counter has 32 bits more; `simulate` uses the streams beyond.
constexpr std::uint64_t mostStreams = std::numeric_limits<std::uint32_t>::max();
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

/// Writes `count` draws, the whole ones also when a draw fails or the user asks to end.
void writeDraws(const DrawOptions& options, std::uint64_t count, std::uint64_t seed,
                std::uint64_t stream, c_Distribution& distribution, Output& output) {
  Progress progress(output, count);
  if (options.format == Format::csv) output.write("trial,uniform,value\n");
  if (options.format == Format::json) output.write("[");
  fmt::memory_buffer text;
  const auto flush = [&] {
    output.write({text.data(), text.size()});
    text.clear();
  };
  const auto end = [&] {
    flush();
    if (options.format == Format::json) output.write("\n]\n");
    output.close();
  };
  const CatchInterrupt catching;
  for (std::uint64_t trial = 0; trial < count; ++trial) {
    const double u = simulation::uniform(seed, stream, trial);
    try {
      append(text, options.format, trial, u, distribution.RandVal(u));
    } catch (const RuntimeError&) {
      end();
      throw;
    }
    if ((trial + 1) % blockSize != 0) continue;
    flush();
    progress.report(trial + 1);
    if (interrupted()) {
      end();
      throw Interruption{};
    }
  }
  end();
}

void draw(DrawOptions& options) {
  const std::uint64_t count = countArgument("-n", options.count, 1, mostDraws);
  const std::uint64_t seed =
      countArgument("--seed", options.seed, 0, std::numeric_limits<std::uint64_t>::max());
  const std::uint64_t stream = countArgument("--stream", options.stream, 0, mostStreams);
  c_Distribution distribution;
  options.setChecked(distribution);
  if (!options.force) refuseToOverwriteInput(options.file, options.sheetFile);
  Output output(options.file);
  writeDraws(options, count, seed, stream, distribution, output);
}

}  // namespace

void addDraw(CLI::App& program) {
  CLI::App* command = program.add_subcommand("draw", "Random values of a distribution");
  command->footer(
      "Writes one value a line, in the shortest form that reads back the same; --csv adds the\n"
      "number of the trial and the uniform random number behind the value, --json writes an "
      "array.\n"
      "The uniform numbers come from a counter-based generator (Philox4x32-10): the same seed and\n"
      "stream give the same ones everywhere, and a longer run starts with the values of a shorter "
      "one.\n"
      "Give each input that is to vary on its own a stream of its own: two distributions drawn "
      "with\n"
      "the same seed and stream rise and fall together. Ctrl-C ends after a whole line.\n\n"
      "Examples:\n"
      "  palvex draw Normal 10 2 -n 5 --seed 7\n"
      "  palvex draw Normal 10 2 -n 1e6 --stream 1 -o cost.txt\n"
      "  palvex draw Gamma 2 3 0 -n 1e6 --stream 2 -o delay.txt\n"
      "  palvex draw Triangular =B2 =C2 =D2 --sheet estimate.csv -n 1000000 --csv -o draws.csv");
  const auto options = std::make_shared<DrawOptions>();
  options->DistributionArguments::addTo(*command);
  command->add_option("-n", options->count, "How many values")
      ->type_name("N")
      ->capture_default_str();
  command->add_option("--seed", options->seed, "Seed of the random numbers, 0 or greater")
      ->type_name("S")
      ->capture_default_str();
  command
      ->add_option("--stream", options->stream,
                   "Which of the seed's independent sequences of random numbers, 0 or greater")
      ->type_name("K")
      ->capture_default_str();
  command->add_option("-o", options->file, "Write to a file, not to standard output")
      ->type_name("FILE");
  command->add_flag("--force", options->force, "Write even over the worksheet that is read");
  options->ResultOptions::addTo(*command);
  command->callback([options] { draw(*options); });
}

}  // namespace palvex::terminal
