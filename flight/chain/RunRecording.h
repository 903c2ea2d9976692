// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Keeps the state of a root folder true while a run is going on there, however it ends.
#pragma once

#include <filesystem>
#include <string>

#include "flight/records/FolderLock.h"
#include "flight/records/RunState.h"
#include "flight/strips/EnoughMemory.h"
#include "flight/strips/Watcher.h"

namespace Velorn::Flights {

class RunRecording {
 public:
  /// The root holds a running run from here on, and no result of an earlier one.
  /// @throws Error that names another run which is going on there, or of NoSpace
  RunRecording(std::filesystem::path root, const std::string& steps, const Watcher& watcher)
      : root_(std::move(root)), lock_(root_), watcher_(watcher) {
    state_.steps = steps;
    state_.write(root_);
  }

  /// Does the work, which fills in the state of a run that finished, or sets another phase.
  template <typename Work>
  auto during(const Work& work) {
    try {
      state_.phase = RunState::Phase::finished;
      auto result = withMemoryFor(root_.string(), [&] { return work(state_); });
      state_.write(root_);
      return result;
    } catch (const Error& error) {
      end(error.kind() == Error::Interrupted, error.what());
      throw;
    } catch (const std::exception& error) {
      end(false, error.what());
      throw;
    }
  }

 private:
  /// Hides no fault of the work behind one of its own.
  void end(bool isInterrupted, const std::string& message) {
    RunState ended;
    ended.phase = isInterrupted ? RunState::Phase::interrupted : RunState::Phase::failed;
    ended.steps = state_.steps;
    ended.message = message;
    try {
      ended.write(root_);
    } catch (const Error& second) {
      watcher_.tell(second.what());
    }
  }

  std::filesystem::path root_;
  FolderLock lock_;
  const Watcher& watcher_;
  RunState state_;
};

}  // namespace Velorn::Flights
