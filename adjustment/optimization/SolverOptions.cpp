// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/SolverOptions.h"

#include <omp.h>

namespace Velorn {

ceres::Solver::Options solverOptions(const InputParameter& configuration) {
  ceres::Solver::Options options;
  options.minimizer_type = ceres::TRUST_REGION;
  options.max_num_iterations = configuration.NumberOfIterations;
  options.num_threads = omp_get_max_threads() - 1;  // one is left to the host
  options.linear_solver_type = ceres::SPARSE_NORMAL_CHOLESKY;
  options.sparse_linear_algebra_library_type = ceres::SUITE_SPARSE;
  options.dynamic_sparsity = true;
  options.use_nonmonotonic_steps = true;
  options.use_inner_iterations = true;
  options.logging_type = ceres::SILENT;
  options.minimizer_progress_to_stdout = false;
  return options;
}

void endAtMinimum(ceres::Solver::Options& options) {
  // The cost is half a sum of squares of standard deviation one, of some ten thousand: what changes
  // it by a thousandth moves nothing by a tenth of its standard deviation.
  options.function_tolerance = 1e-7;
  options.use_inner_iterations = false;
}

}  // namespace Velorn
