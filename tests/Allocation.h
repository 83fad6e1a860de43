#pragma once

// The allocations of a test program, and what is left behind when one of them fails.

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <new>
#include <stdexcept>

#include "runtime/RuntimeError.h"

namespace palvex::allocation {

inline std::atomic<std::size_t> made = 0;
inline std::atomic<std::size_t> firstFailing = 0;  // of those made; 0 for none
inline std::atomic<bool> lasting = false;          // whether all later ones fail, too

/// How a call ends: with a number, an error's number, refused, or without memory.
struct Outcome {
  static constexpr int noMemory = -1;
  static constexpr int refused = -2;
  double value = 0;
  int fault = 0;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};

template <class Call>
Outcome outcomeOf(Call&& call) {
  try {
    return {static_cast<double>(call()), 0};
  } catch (const RuntimeError& error) {
    return {0, error.number()};
  } catch (const std::bad_alloc&) {
    return {0, Outcome::noMemory};
  } catch (const std::logic_error&) {
    return {0, Outcome::refused};
  }
}

/// Makes each allocation of a call fail, alone and then with all later ones, each time on a fresh
/// subject. The call is to end with std::bad_alloc, or as it usually does; called again with memory
/// it is to end as usual.
/// @param examine  looks at a subject whose call had no memory, beside a fresh one
/// @returns how many allocations the call makes
template <class Make, class Call, class Examine>
std::size_t failEach(const Make& make, const Call& call, const Examine& examine) {
  auto usualSubject = make();
  const Outcome usual = outcomeOf([&] { return call(usualSubject); });
  EXPECT_NE(usual.fault, Outcome::noMemory);
  for (std::size_t n = 1;; ++n) {
    bool failed = false;
    for (const bool allLater : {false, true}) {
      auto subject = make();
      made = 0;
      lasting = allLater;
      firstFailing = n;
      const Outcome outcome = outcomeOf([&] { return call(subject); });
      firstFailing = 0;
      failed = made >= n;
      EXPECT_TRUE(outcome == usual || (failed && outcome.fault == Outcome::noMemory))
          << "allocation " << n << ": " << outcome.value << ", error " << outcome.fault;
      if (outcome.fault != Outcome::noMemory) continue;
      examine(subject, make());
      EXPECT_EQ(outcomeOf([&] { return call(subject); }), usual) << "after allocation " << n;
    }
    if (!failed || testing::Test::HasFailure()) return n - 1;
  }
}

}  // namespace palvex::allocation
