// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Two threads count in one variable: with the word "racing" without a guard, with "guarded" under a
// critical section, whose barriers the sanitizer has to know of.
#include <cstdio>
#include <string_view>

#include <omp.h>

int main(int argc, char** argv) {
  const bool guarded = argc > 1 && std::string_view(argv[1]) == "guarded";
  long count = 0;
  omp_set_num_threads(2);
#pragma omp parallel for schedule(static)
  for (int i = 0; i < 100000; ++i) {
    if (guarded) {  // NOLINT(bugprone-branch-clone): of the two only one is a race
#pragma omp critical
      ++count;
    } else {
      ++count;
    }
  }
  std::printf("%ld\n", count);
  return guarded && count != 100000 ? 1 : 0;
}
