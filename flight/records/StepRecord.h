// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a finished step of a run leaves behind, so that a later run can tell that nothing has
// changed since.
//
//     const StepRecord record(folder, "match_1");
//     if (const auto report = record.valid(key)) return *report;   // done already
//     record.begin();
//     ... the work ...
//     record.finish(key, outputs, report);
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace Velorn::Flights {

using Json = nlohmann::ordered_json;

/// What is to be the same for a file to count as unchanged: path, size and time of its last change;
/// null in place of these when it is missing.
Json stampOf(const std::filesystem::path& file);
Json stampsOf(const std::vector<std::filesystem::path>& files);

/// One file per step. A step without a record, or with one that cannot be read, is not done.
class StepRecord {
 public:
  StepRecord(const std::filesystem::path& folder, const std::string& name)
      : file_(folder / (name + ".json")) {}

  /// The report of the step, if it was finished with this key and its outputs are as it left them.
  /// @param key  everything that the outputs depend on
  std::optional<Json> valid(const Json& key) const;

  /// Forgets the step, before its outputs are touched.
  /// @throws Error when the record cannot be removed
  void begin() const;

  /// @throws Error when the record cannot be written
  void finish(const Json& key, const std::vector<std::filesystem::path>& outputs,
              const Json& report) const;

 private:
  std::filesystem::path file_;
};

}  // namespace Velorn::Flights
