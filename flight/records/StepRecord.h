// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a finished step of a run leaves behind, so that a later run can tell that nothing has
// changed since.
//
//     const StepRecord record = folder.record("match_1");
//     if (const auto report = record.valid<MatchReport>(key)) return *report;   // done already
//     record.begin();
//     ... the work ...
//     record.finish(key, outputs, report);
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "flight/records/FileStamp.h"
#include "flight/records/StepKey.h"

namespace Velorn::Flights {

/// One file per step. A step without a record, or with one that cannot be read, is not done.
/// Reports are those that ReportJson.h knows.
class StepRecord {
 public:
  StepRecord(const std::filesystem::path& folder, const std::string& name)
      : file_(folder / (name + ".json")) {}

  /// The report of the step, if it was finished with this key and its outputs are as it left them.
  template <typename Report>
  std::optional<Report> valid(const StepKey& key) const;

  bool exists() const;

  /// @throws Error that says why `valid` has none: no record, the first thing that the step
  /// depended
  ///         on and that is another one in the key, or an output that is not as the step left it
  void requireValid(const StepKey& key) const;

  /// @param outputs  as they were given to `finish`
  /// @param advice   how they are made
  /// @throws Error that names the output which is not as the step left it, or the missing record
  void requireOutputs(const std::vector<std::filesystem::path>& outputs,
                      const std::string& advice) const;

  /// Forgets the step, before its outputs are touched.
  /// @throws Error when the record cannot be removed
  void begin() const;

  /// @throws Error when the record cannot be written
  template <typename Report>
  void finish(const StepKey& key, const std::vector<std::filesystem::path>& outputs,
              const Report& report) const;

 private:
  std::filesystem::path file_;
};

}  // namespace Velorn::Flights
