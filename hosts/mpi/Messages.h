#pragma once

#include <cereal/archives/binary.hpp>
#include <cereal/types/memory.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#include <sstream>
#include <string>

#include "simulation/Simulation.h"

/// Tasks and blocks as messages between processes of the same build.
namespace palvex::simulation {

template <class Archive>
void serialize(Archive& archive, Moments& moments) {
  archive(moments.count, moments.mean, moments.squares, moments.cubes, moments.fourths,
          moments.smallest, moments.greatest);
}

template <class Archive>
void serialize(Archive& archive, CellSums& sums) {
  archive(sums.counts, sums.sums);
}

template <class Archive>
void serialize(Archive& archive, Cells& cells) {
  archive(cells.low, cells.width, cells.count);
}

template <class Archive>
void serialize(Archive& archive, Digest& digest) {
  archive(digest.count, digest.values, digest.cells, digest.counts, digest.wanted);
}

template <class Archive>
void save(Archive& archive, const Task& task) {
  archive(task.block, task.pass, task.statistics, task.sample, *task.blanks);
}

template <class Archive>
void load(Archive& archive, Task& task) {
  auto blanks = std::make_shared<std::vector<Digest>>();
  archive(task.block, task.pass, task.statistics, task.sample, *blanks);
  task.blanks = std::move(blanks);
}

template <class Archive>
void serialize(Archive& archive, Block& block) {
  archive(block.number, block.pass, block.trials, block.failures, block.fault, block.moments,
          block.cells, block.sample, block.digests, block.text);
}

}  // namespace palvex::simulation

namespace palvex::mpi {

template <class Content>
std::string packed(const Content& content) {
  std::ostringstream bytes;
  cereal::BinaryOutputArchive archive(bytes);
  archive(content);
  return std::move(bytes).str();
}

template <class Content>
Content unpacked(std::string bytes) {
  std::istringstream stream(std::move(bytes));
  cereal::BinaryInputArchive archive(stream);
  Content content;
  archive(content);
  return content;
}

}  // namespace palvex::mpi
