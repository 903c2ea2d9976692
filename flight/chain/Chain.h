// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The processing chain: from strips, trajectory and ground truth to adjusted strips.
//
//     complete(project);
//     const Json summary = run(project, output);
//     fmt::print("{}", summaryText(summary));
#pragma once

#include "flight/chain/RunContext.h"

namespace Velorn::Flights {

/// All steps that the option words name, then summary.json and summary.txt in the root folder.
/// Steps whose inputs, options and outputs are unchanged since an earlier run are not done again.
/// @return what summary.json holds; docs/run.md describes it
/// @throws Error with the exit status of its kind, before anything else is done or after what was
///         done before it is written
Json run(const Project& project, const RunOutput& output);

/// Ends a run whose solver did not converge.
/// @throws Error unless the summary is that of a run that did, or that did not solve
void orFailAsSolver(const Json& summary);

}  // namespace Velorn::Flights
