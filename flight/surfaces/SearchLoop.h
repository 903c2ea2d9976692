// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Loops on all threads that no exception leaves from within.
#pragma once

#include <algorithm>
#include <cstddef>
#include <exception>

namespace Velorn::Flights {

/// Calls body(k) for all k of [first, last) on all threads, in any order; the first exception is
/// thrown again after the loop, the rest of which is then skipped.
/// @param grain  numbers that a thread takes at a time
template <typename Body>
void forEachInParallel(std::size_t first, std::size_t last, std::size_t grain, const Body& body) {
  std::exception_ptr thrown;
  bool stopped = false;
#pragma omp parallel for schedule(dynamic, grain) if (last - first > grain) shared(thrown, stopped)
  for (std::size_t k = first; k < last; ++k) {
    bool skipped = false;
#pragma omp atomic read
    skipped = stopped;
    if (skipped) continue;
    try {
      body(k);
    } catch (...) {
#pragma omp critical(matchingThrew)
      if (!thrown) thrown = std::current_exception();
#pragma omp atomic write
      stopped = true;
    }
  }
  if (thrown) std::rethrow_exception(thrown);
}

/// The same in chunks, with tell(k) between them on the calling thread, k being the number that is
/// done.
template <typename Tell, typename Body>
void forEachInChunks(std::size_t count, const Tell& tell, const Body& body) {
  constexpr std::size_t chunk = 32768, grain = 64;
  for (std::size_t first = 0; first < count; first += chunk) {
    tell(first);
    forEachInParallel(first, std::min(count, first + chunk), grain, body);
  }
}

}  // namespace Velorn::Flights
