// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A parallel loop over contiguous blocks that no exception leaves.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>

#include <omp.h>

namespace Velorn {

/// Calls `work(first, end)` once per thread of OpenMP, for blocks of equal size in order of the
/// threads; the first n mod threads blocks have one item more.
/// @throws what one of the calls threw, after all have ended
template <typename Work>
void inStaticBlocks(std::size_t items, const Work& work) {
  std::exception_ptr thrown;
#pragma omp parallel
  {
    const auto threads = static_cast<std::size_t>(omp_get_num_threads());
    const auto thread = static_cast<std::size_t>(omp_get_thread_num());
    const std::size_t size = items / threads, longer = items % threads;
    const std::size_t first = thread * size + std::min(thread, longer);
    try {
      work(first, first + size + (thread < longer ? 1 : 0));
    } catch (...) {
#pragma omp critical(velorn_static_blocks)
      thrown = std::current_exception();
    }
  }
  if (thrown) std::rethrow_exception(thrown);
}

}  // namespace Velorn
