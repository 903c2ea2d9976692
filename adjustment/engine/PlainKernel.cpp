// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/KernelTemplate.h"
#include "adjustment/engine/Kernels.h"

namespace Velorn {

template <>
struct Lanes<double> {
  static constexpr std::size_t count = 1;
  static double load(const double* from) { return *from; }
  static void store(double value, double* to) { *to = value; }
  static double select(bool condition, double yes, double no) { return condition ? yes : no; }
  static bool all(bool condition) { return condition; }
  static double sum(double value) { return value; }
  template <std::size_t number>
  static void sums(const double (&values)[number], double* to) {
    for (std::size_t i = 0; i < number; ++i) to[i] = values[i];
  }
};

BatchKernel plainKernel() {
  return batchKernel<double>("plain");
}

}  // namespace Velorn
