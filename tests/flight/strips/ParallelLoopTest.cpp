// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <new>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "flight/strips/EnoughMemory.h"
#include "flight/strips/ParallelLoop.h"

using namespace Velorn::Flights;

namespace {

constexpr std::size_t many = 20'000;

TEST(ParallelLoop, ThrowsWhatTheFirstTurnThrewForAnyNumberOfThreads) {
  for (const unsigned int count : {1U, 2U, 5U}) {
    const LoopThreads threads(count);
    for (int again = 0; again < 20; ++again) {
      std::vector<char> done(many);
      std::string first;
      try {
        forEachInParallel(0, many, 7, [&](std::size_t k) {
          if (k >= 3000 && k % 1000 == 1) throw std::runtime_error(std::to_string(k));
          done[k] = 1;
        });
      } catch (const std::runtime_error& error) {
        first = error.what();
      }
      ASSERT_EQ(first, "3001") << count;
      ASSERT_EQ(std::accumulate(done.begin(), done.begin() + 3001, 0), 3001) << count;
    }
  }
}

TEST(ParallelLoop, AsksTheCallingThreadAloneAndEndsSoon) {
  const LoopThreads threads(3);
  const auto caller = std::this_thread::get_id();
  std::atomic<std::size_t> turns = 0, told = 0;
  ParallelLoop loop([&](std::size_t done) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    EXPECT_GE(done, ++told);
    if (told == 5) throw Error("cancelled", Error::Interrupted);
  });
  const auto turn = [&](std::size_t k) {
    ++turns;
    while (loop.doneBy(k, 1) && turns < 5 * many) {
    }
  };
  EXPECT_THROW(loop.run(0, many, 1, turn), Error);
  EXPECT_EQ(told, 5U);
  EXPECT_LT(turns, 100U) << "each of the three was in its turn, or about to begin one";
  std::size_t chunks = 0;
  const auto tell = [&](std::size_t done) {
    EXPECT_EQ(done % 32768, 0U);
    if (++chunks == 2) throw Error("cancelled", Error::Interrupted);
  };
  turns = 0;
  EXPECT_THROW(forEachInChunks(100 * many, tell, [&](std::size_t) { ++turns; }), Error);
  EXPECT_EQ(turns, 32768U);
}

TEST(ParallelLoop, TellsWhatFoundTooLittleMemoryOnWhateverThread) {
  const LoopThreads threads(4);
  const auto work = [] {
    forEachInParallel(0, many, 1, [](std::size_t k) {
      if (k > many / 2) throw std::bad_alloc();
    });
  };
  try {
    withMemoryFor("strip.kx", work);
    FAIL();
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(), "strip.kx: not enough memory");
  }
}

TEST(LoopThreads, LeaveTheHostsNumberAsItWas) {
  const int before = threadsOfLoops();
  {
    const LoopThreads outer(7);
    EXPECT_EQ(threadsOfLoops(), 7);
    {
      const LoopThreads cores(0);
      EXPECT_EQ(threadsOfLoops(), omp_get_num_procs());
    }
    EXPECT_EQ(threadsOfLoops(), 7);
  }
  EXPECT_EQ(threadsOfLoops(), before);
}

}  // namespace
