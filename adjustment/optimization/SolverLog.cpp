// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <glog/logging.h>

#include <velorn/SolverLog.h>

namespace Velorn {

void keepSolverLogQuiet() {
  if (google::IsGoogleLoggingInitialized()) return;
  FLAGS_minloglevel = google::GLOG_ERROR;
  FLAGS_logtostderr = true;  // otherwise into files
  google::InitGoogleLogging("velorn");
}

}  // namespace Velorn
