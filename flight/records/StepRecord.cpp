// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/StepRecord.h"

#include <fstream>
#include <system_error>

#include "platform/plome/ReplacedFile.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {

namespace fs = std::filesystem;

Json stampOf(const fs::path& file) {
  std::error_code fault;
  Json stamp{{"path", fs::absolute(file).lexically_normal().string()}};
  const auto size = fs::file_size(file, fault);
  if (!fault) stamp["bytes"] = size;
  const auto time = fs::last_write_time(file, fault);
  if (!fault) stamp["changed"] = time.time_since_epoch().count();
  return stamp;
}

Json stampsOf(const std::vector<fs::path>& files) {
  Json stamps = Json::array();
  for (const auto& file : files) stamps.push_back(stampOf(file));
  return stamps;
}

std::optional<Json> StepRecord::valid(const Json& key) const {
  std::ifstream stream(file_);
  const auto record = Json::parse(stream, nullptr, false);
  if (!record.is_object() || record.value("key", Json()) != key) return {};
  const auto outputs = record.value("outputs", Json::array());
  for (const auto& stamp : outputs) {
    const bool isStamp = stamp.is_object() && stamp.value("path", Json()).is_string();
    if (!isStamp || stampOf(stamp["path"].get<std::string>()) != stamp) return {};
  }
  const auto report = record.value("report", Json());
  return report.is_object() ? std::optional(report) : std::nullopt;
}

void StepRecord::begin() const {
  std::error_code fault;
  fs::remove(file_, fault);
  if (fault) throw Error(file_.string() + ": " + fault.message(), Error::NoSpace);
}

void StepRecord::finish(const Json& key, const std::vector<fs::path>& outputs,
                        const Json& report) const {
  const Json record{{"key", key}, {"outputs", stampsOf(outputs)}, {"report", report}};
  const auto text = record.dump(1, ' ', false, Json::error_handler_t::replace);
  if (const auto fault = Plome::replaceFile(file_, text + "\n"); !fault.empty()) {
    throw Error(fault, Error::NoSpace);
  }
}

}  // namespace Velorn::Flights
