// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/StepRecord.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include <fmt/format.h>

#include "flight/records/ReportJson.h"
#include "flight/strips/OrFail.h"
#include "platform/plome/ReplacedFile.h"

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

Json jsonOf(const FileStamp& stamp) {
  return {{"path", stamp.path},
          {"bytes", stamp.bytes},
          {"changed", stamp.changed},
          {"number", stamp.number}};
}

FileStamp stampIn(const Json& json) {
  return {json.at("path").get<std::string>(), json.at("bytes").get<long long>(),
          json.at("changed").get<long long>(), json.at("number").get<unsigned long long>()};
}

bool isUnchanged(const FileStamp& stamp) {
  return stampOf(stamp.path) == stamp;
}

}  // namespace

template <typename Report>
std::optional<Report> StepRecord::valid(const StepKey& key) const {
  try {
    std::ifstream stream(file_);
    if (!stream) return {};
    const auto record = Json::parse(stream);
    // File names are any bytes, of which JSON replaces those that are no UTF-8.
    if (record.at("key") != key.digest()) return {};
    for (const auto& stamp : record.at("outputs")) {
      if (!isUnchanged(stampIn(stamp))) return {};
    }
    Report report;
    fromJson(record.at("report"), report);
    return report;
  } catch (const Json::exception&) {
    return {};
  }
}

bool StepRecord::exists() const {
  std::error_code ignored;
  return fs::exists(file_, ignored);
}

void StepRecord::requireValid(const StepKey& key) const {
  const auto refused = [&](const std::string& why) {
    return Error(fmt::format("{}: {}", file_.string(), why));
  };
  if (!exists()) throw refused("no such step was finished here");
  try {
    std::ifstream stream(file_);
    const auto record = Json::parse(stream);
    const auto before = record.at("depends_on").get<std::vector<std::string>>();
    const auto& now = key.lines();
    const auto [old, other] = std::ranges::mismatch(before, now);
    const auto lineOf = [](auto line, auto end) { return line == end ? "nothing" : *line; };
    // Of names that are no UTF-8 the lines have but a part.
    const bool isSame = record.at("key") == key.digest();
    if (!isSame && (old != before.end() || other != now.end())) {
      throw refused(
          fmt::format("the step was done with \"{}\", where now there is \"{}\"; give the "
                      "settings of then, or run again",
                      lineOf(old, before.end()), lineOf(other, now.end())));
    }
    for (const auto& output : record.at("outputs")) {
      const auto stamp = stampIn(output);
      if (isUnchanged(stamp)) continue;
      throw Error(fmt::format("{}: is not as the run left it", stamp.path));
    }
  } catch (const Json::exception& fault) {
    throw refused(fault.what());
  }
}

void StepRecord::requireOutputs(const std::vector<fs::path>& outputs,
                                const std::string& advice) const {
  std::vector<FileStamp> stamps;
  try {
    std::ifstream stream(file_);
    const auto record = Json::parse(stream);
    for (const auto& stamp : record.at("outputs")) stamps.push_back(stampIn(stamp));
  } catch (const Json::exception&) {
    stamps.clear();
  }
  if (stamps.size() != outputs.size()) {
    throw Error(fmt::format("{}: no such step was finished here; {}", file_.string(), advice),
                Error::MissingFile);
  }
  for (std::size_t k = 0; k < stamps.size(); ++k) {
    auto now = stampOf(outputs[k]);
    now.path = stamps[k].path;  // of names that are no UTF-8 the record has but a part
    if (now == stamps[k]) continue;
    throw Error(fmt::format("{}: {}; {}", outputs[k].string(),
                            now.bytes < 0 ? "is missing" : "is not as the run left it", advice));
  }
}

void StepRecord::begin() const {
  std::error_code fault;
  fs::remove(file_, fault);
  if (fault) throw Error(file_.string() + ": " + fault.message(), Error::NoSpace);
}

template <typename Report>
void StepRecord::finish(const StepKey& key, const std::vector<fs::path>& outputs,
                        const Report& report) const {
  Json record{{"key", key.digest()}, {"depends_on", key.lines()}, {"outputs", Json::array()}};
  for (const auto& file : outputs) record["outputs"].push_back(jsonOf(stampOf(file)));
  record["report"] = Flights::jsonOf(report);
  const auto text = record.dump(1, ' ', false, Json::error_handler_t::replace);
  orFail(Plome::replaceFile(file_, text + "\n"), Error::NoSpace);
}

template std::optional<RasterCounts> StepRecord::valid(const StepKey& key) const;
template std::optional<ApartReport> StepRecord::valid(const StepKey& key) const;
template std::optional<StripScale> StepRecord::valid(const StepKey& key) const;
template std::optional<MatchReport> StepRecord::valid(const StepKey& key) const;
template std::optional<RoundReport> StepRecord::valid(const StepKey& key) const;
template std::optional<StabilityReport> StepRecord::valid(const StepKey& key) const;
template std::optional<GeoreferencingReport> StepRecord::valid(const StepKey& key) const;
template void StepRecord::finish(const StepKey& key, const std::vector<fs::path>& outputs,
                                 const RasterCounts& report) const;
template void StepRecord::finish(const StepKey& key, const std::vector<fs::path>& outputs,
                                 const ApartReport& report) const;
template void StepRecord::finish(const StepKey& key, const std::vector<fs::path>& outputs,
                                 const StripScale& report) const;
template void StepRecord::finish(const StepKey& key, const std::vector<fs::path>& outputs,
                                 const MatchReport& report) const;
template void StepRecord::finish(const StepKey& key, const std::vector<fs::path>& outputs,
                                 const RoundReport& report) const;
template void StepRecord::finish(const StepKey& key, const std::vector<fs::path>& outputs,
                                 const StabilityReport& report) const;
template void StepRecord::finish(const StepKey& key, const std::vector<fs::path>& outputs,
                                 const GeoreferencingReport& report) const;

}  // namespace Velorn::Flights
