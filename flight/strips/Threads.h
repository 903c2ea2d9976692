// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How many threads work: the only place of this floor that says so.
#pragma once

#include <omp.h>

namespace Velorn::Flights {

/// Threads of the loops that the calling thread begins, those of the adjustment included.
inline int threadsOfLoops() {
  return omp_get_max_threads();
}

/// Sets their number for one scope; afterwards it is the host's own again.
class LoopThreads {
 public:
  /// @param threads  0: as many as this process has cores
  explicit LoopThreads(unsigned int threads) : before_(omp_get_max_threads()) {
    omp_set_num_threads(numberOf(threads));
  }
  ~LoopThreads() { omp_set_num_threads(before_); }
  LoopThreads(const LoopThreads&) = delete;
  LoopThreads& operator=(const LoopThreads&) = delete;

  static int numberOf(unsigned int threads) {
    return threads > 0 ? static_cast<int>(threads) : omp_get_num_procs();
  }

 private:
  int before_;
};

}  // namespace Velorn::Flights
