// palvex-mpi: the terminal program under mpirun. The first process reads, writes and combines; all
// work out blocks of trials. Results are those of palvex, to the bit, however many there are.

#include <mpi.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <thread>

#include "hosts/mpi/Messages.h"
#include "hosts/terminal/Program.h"

namespace palvex::mpi {

namespace {

using simulation::Block;
using simulation::Task;

// Kinds of messages.
constexpr int task = 1;
constexpr int block = 2;
constexpr int failure = 3;  // in place of a block: a sentence
constexpr int end = 4;

struct Message {
  int kind;
  std::string bytes;
};

void send(int to, int kind, const std::string& bytes) {
  if (bytes.size() > std::numeric_limits<int>::max())
    throw std::length_error("a block of trials is too large for a message");
  MPI_Send(bytes.data(), static_cast<int>(bytes.size()), MPI_CHAR, to, kind, MPI_COMM_WORLD);
}

Message receive(int from) {
  MPI_Status status;
  // Polled with pauses: MPI_Probe would keep a core busy that can work on trials.
  constexpr auto pause = std::chrono::microseconds(200);
  for (int arrived = 0;;) {
    MPI_Iprobe(from, MPI_ANY_TAG, MPI_COMM_WORLD, &arrived, &status);
    if (arrived != 0) break;
    std::this_thread::sleep_for(pause);
  }
  int size = 0;
  MPI_Get_count(&status, MPI_CHAR, &size);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  MPI_Recv(bytes.data(), size, MPI_CHAR, from, status.MPI_TAG, MPI_COMM_WORLD, MPI_STATUS_IGNORE);
  return {status.MPI_TAG, std::move(bytes)};
}

/// Has a block worked out by another process.
Block workElsewhere(int rank, const Task& task) {
  send(rank, mpi::task, packed(task));
  Message answer = receive(rank);
  if (answer.kind != block) {
    throw std::runtime_error("process " + std::to_string(rank) + ": " + answer.bytes);
  }
  return unpacked<Block>(std::move(answer.bytes));
}

/// Thrown when the first process needs no more.
struct Served {};

/// Answers tasks until the end.
/// @param answerTo  works out a task; what it throws is answered as a failure
template <class Answer>
[[noreturn]] void serve(const Answer& answerTo) {
  for (;;) {
    Message message = receive(0);
    if (message.kind == end) throw Served{};
    try {
      const std::string answer = packed(answerTo(unpacked<Task>(std::move(message.bytes))));
      send(0, block, answer);
    } catch (const std::exception& error) {
      send(0, failure, error.what());
    }
  }
}

simulation::Results workForAnother(const simulation::Model& model,
                                   const simulation::Settings& settings,
                                   const simulation::RunOptions& options) {
  const simulation::Simulation simulation(model, settings);
  simulation::Worker worker(simulation, options.openWorkbook ? options.openWorkbook() : nullptr);
  serve([&](const Task& task) { return *worker.work(task); });
}

/// The first process: a program as at the terminal, helped by the others.
terminal::ExitCode lead(int argc, char** argv, int processes) {
  terminal::Role role;
  role.alone = false;
  role.simulate = [processes](const simulation::Model& model, const simulation::Settings& settings,
                              simulation::RunOptions options) {
    if (options.threads == 0) options.threads = 1;  // a process for each core
    for (int rank = 1; rank < processes; ++rank) {
      options.helpers.emplace_back([rank](const Task& task) { return workElsewhere(rank, task); });
    }
    return simulation::run(model, settings, options);
  };
  const terminal::ExitCode code = terminal::runProgram(argc, argv, role);
  for (int rank = 1; rank < processes; ++rank) send(rank, end, "");
  return code;
}

/// Any other process. Its own output is dropped; failures are reported through the first one.
void follow(int argc, char** argv) {
  static_cast<void>(std::freopen("/dev/null", "w", stdout));
  static_cast<void>(std::freopen("/dev/null", "w", stderr));
  try {
    static_cast<void>(terminal::runProgram(argc, argv, {workForAnother, false, false}));
    // No simulation was started here; the first process is told so if it asks for a block.
    serve([](const Task&) -> Block {
      throw std::runtime_error("does not find the same table and options as the first process");
    });
  } catch (const Served&) {
  }
}

}  // namespace

}  // namespace palvex::mpi

int main(int argc, char** argv) {
  int provided = MPI_THREAD_SINGLE;
  if (MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &provided) != MPI_SUCCESS) return 1;
  int rank = 0;
  int processes = 1;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &processes);
  auto code = palvex::terminal::ExitCode::good;
  if (provided < MPI_THREAD_MULTIPLE) {
    if (rank == 0) std::fputs("palvex: this MPI library does not serve several threads\n", stderr);
    code = palvex::terminal::ExitCode::fault;
  } else if (rank == 0) {
    code = palvex::mpi::lead(argc, argv, processes);
  } else {
    palvex::mpi::follow(argc, argv);
  }
  MPI_Finalize();
  return static_cast<int>(code);
}
