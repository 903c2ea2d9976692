// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Loops on all threads that no exception leaves from within.
//
//     forEachInParallel(0, points.size(), 1024, [&](std::size_t k) { world[k] = worldOf(k); });
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <limits>
#include <mutex>
#include <thread>
#include <utility>

#include "flight/strips/Threads.h"

namespace Velorn::Flights {

/// A loop whose turns tell how far they are, and end early with it.
class ParallelLoop {
 public:
  /// Told the number of items done, on the thread that runs the loop; what it throws ends the loop.
  using Tell = std::function<void(std::size_t done)>;

  /// @param done  items that were done before
  explicit ParallelLoop(Tell tell = {}, std::size_t done = 0)
      : tell_(std::move(tell)), caller_(std::this_thread::get_id()), done_(done) {}

  /// Calls turn(k) for all k of [first, last), in any order. When turns throw, those after them are
  /// skipped, and those before are not: the exception of the first one is thrown again at the end,
  /// the same for any number of threads.
  /// @param grain  numbers that a thread takes at a time
  /// @throws what `tell` threw, or the first turn; once
  template <typename Turn>
  void run(std::size_t first, std::size_t last, std::size_t grain, const Turn& turn) {
    const bool isShared = last - first > grain;
#pragma omp parallel for schedule(dynamic, grain) num_threads(threadsOfLoops()) if (isShared)
    for (std::size_t k = first; k < last; ++k) {
      if (!goesOn(k)) continue;
      try {
        turn(k);
      } catch (...) {
        failed(k, std::current_exception());
      }
    }
    if (cancelled_) std::rethrow_exception(cancelled_);
    if (thrown_) std::rethrow_exception(thrown_);
  }

  /// For turns that do many items: counts them, and tells of them.
  /// @return false when the turn k is to end
  bool doneBy(std::size_t k, std::size_t items) {
    done_ += items;
    if (tell_ && std::this_thread::get_id() == caller_) tellOrCancel();
    return goesOn(k);
  }

 private:
  static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

  bool goesOn(std::size_t k) const {
    return !isCancelled_ && k < failedTurn_;
  }

  /// On the calling thread alone.
  void tellOrCancel() {
    if (isCancelled_) return;
    try {
      tell_(done_);
    } catch (...) {
      cancelled_ = std::current_exception();
      isCancelled_ = true;
    }
  }

  void failed(std::size_t k, const std::exception_ptr& fault) {
    const std::lock_guard lock(mutex_);
    if (k >= failedTurn_) return;
    failedTurn_ = k;
    thrown_ = fault;
  }

  Tell tell_;
  std::thread::id caller_;
  std::atomic<std::size_t> done_, failedTurn_ = none;
  std::atomic<bool> isCancelled_ = false;
  std::mutex mutex_;
  std::exception_ptr thrown_, cancelled_;
};

/// Calls turn(k) for all k of [first, last) on all threads, in any order.
/// @param grain  numbers that a thread takes at a time
/// @throws what the first of the turns that throw has thrown, the rest of which is then skipped
template <typename Turn>
void forEachInParallel(std::size_t first, std::size_t last, std::size_t grain, const Turn& turn) {
  ParallelLoop().run(first, last, grain, turn);
}

/// The same in chunks, with tell(k) between them on the calling thread, k being the number that is
/// done; what it throws ends the loop.
template <typename Tell, typename Turn>
void forEachInChunks(std::size_t count, const Tell& tell, const Turn& turn) {
  constexpr std::size_t chunk = 32768, grain = 64;
  for (std::size_t first = 0; first < count; first += chunk) {
    tell(first);
    forEachInParallel(first, std::min(count, first + chunk), grain, turn);
  }
}

}  // namespace Velorn::Flights
