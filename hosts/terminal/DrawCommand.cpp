#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <limits>

#include "hosts/terminal/Arguments.h"
#include "hosts/terminal/Commands.h"
#include "hosts/terminal/Members.h"
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
  bool members = false;
};

constexpr std::uint64_t mostDraws = 1'000'000'000'000;
// The generator's counter has 32 bits more; `simulate` uses the streams beyond.
constexpr std::uint64_t mostStreams = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t blockSize = 4096;  // draws between two writes

/// Writes draws in blocks, with what comes before, between and after them.
class DrawWriter {
 public:
  /// @param beside  whether the law's draws stand beside those of the members
  DrawWriter(Output& output, Format format, bool beside)
      : output_(output), format_(format), beside_(beside) {
    if (format == Format::csv)
      output_.write(beside ? "trial,uniform,value,law,not the law\n" : "trial,uniform,value\n");
    if (format == Format::json) output_.write("[");
  }

  /// Takes draw number `trial` (from 0).
  void add(std::uint64_t trial, double u, double value) {
    const auto end = std::back_inserter(text_);
    switch (format_) {
      case Format::people:
        fmt::format_to(end, "{}\n", value);
        break;
      case Format::csv:
        fmt::format_to(end, "{},{},{}{}", trial + 1, u, value, beside_ ? "" : "\n");
        break;
      case Format::json:
        fmt::format_to(end, "{} {}", trial == 0 ? "\n" : ",\n", value);
        break;
    }
  }
  /// The law's draw beside the one that was just added.
  void addLaw(const std::optional<double>& value, bool same) {
    if (format_ != Format::csv) return;
    const auto end = std::back_inserter(text_);
    if (value) {
      fmt::format_to(end, ",{},{}\n", *value, same ? "" : "x");
    } else {
      fmt::format_to(end, ",,x\n");
    }
  }
  void flush() {
    output_.write({text_.data(), text_.size()});
    text_.clear();
  }
  void close() {
    flush();
    if (format_ == Format::json) output_.write("\n]\n");
    output_.close();
  }

 private:
  Output& output_;
  Format format_;
  bool beside_;
  fmt::memory_buffer text_;
};

struct Run {
  std::uint64_t count;
  std::uint64_t seed;
  std::uint64_t stream;

  /// Hands the uniform numbers to `draw`, a block at a time with the trial that it starts with,
  /// until all are done or the user asks to end; `flush` after each block.
  template <class Draw>
  void each(DrawWriter& writer, Progress& progress, Draw draw) const {
    std::vector<double> u;
    for (std::uint64_t first = 0; first < count && !interrupted(); first += blockSize) {
      u.resize(static_cast<std::size_t>(std::min(blockSize, count - first)));
      for (std::size_t i = 0; i < u.size(); ++i)
        u[i] = simulation::uniform(seed, stream, first + i);
      draw(first, u);
      writer.flush();
      progress.report(first + u.size());
    }
  }
};

void drawFromLaw(const Run& run, const Law& law, DrawWriter& writer, Progress& progress) {
  std::vector<double> values;
  run.each(writer, progress, [&](std::uint64_t first, const std::vector<double>& u) {
    values.resize(u.size());
    law.quantiles(u, values);
    for (std::size_t i = 0; i < u.size(); ++i) writer.add(first + i, u[i], values[i]);
  });
  writer.close();
}

/// @returns how many draws are not the law's
std::uint64_t drawFromMembers(const Run& run, Members& members, DrawWriter& writer,
                              Progress& progress) {
  std::uint64_t different = 0;
  const auto draw = [&](std::uint64_t first, const std::vector<double>& u) {
    for (std::size_t i = 0; i < u.size(); ++i) {
      const double value = members.draw(u[i]);
      std::optional<double> law;
      if (members.law()) law = members.law()->quantile(u[i]);
      const bool same = law && members.sameDraw(value, *law);
      writer.add(first + i, u[i], value);
      writer.addLaw(law, same);
      different += same ? 0 : 1;
    }
  };
  try {
    run.each(writer, progress, draw);
  } catch (const RuntimeError&) {
    writer.close();  // the values before it are good
    throw;
  }
  writer.close();
  return different;
}

void draw(DrawOptions& options) {
  const Run run{countArgument("-n", options.count, 1, mostDraws),
                countArgument("--seed", options.seed, 0, std::numeric_limits<std::uint64_t>::max()),
                countArgument("--stream", options.stream, 0, mostStreams)};
  const auto items = options.read();
  const auto write = [&](auto drawFrom) {
    if (!options.force) refuseToOverwriteInput(options.file, options.sheetFile);
    Output output(options.file);
    DrawWriter writer(output, options.format, options.members);
    Progress progress(output, run.count);
    const CatchInterrupt catching;
    drawFrom(writer, progress);
  };
  std::uint64_t different = 0;
  if (options.members) {
    Members members(options.type, items);
    write([&](DrawWriter& writer, Progress& progress) {
      different = drawFromMembers(run, members, writer, progress);
    });
  } else {
    const Law law = options.law(items);
    write([&](DrawWriter& writer, Progress& progress) { drawFromLaw(run, law, writer, progress); });
  }
  if (different > 0)
    writeMessage(fmt::format("palvex: {} of these draws are not the law's\n", different));
  if (interrupted()) throw Interruption{};
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
  addMembers(*command, options->members);
  options->ResultOptions::addTo(*command);
  command->callback([options] { draw(*options); });
}

}  // namespace palvex::terminal
