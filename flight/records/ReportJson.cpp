// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/ReportJson.h"

#include <cmath>
#include <concepts>
#include <nlohmann/json.hpp>

#include "flight/records/ReportFields.h"

namespace Velorn::Flights {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<const char*, 5> classNames{"ground_truth", "roof", "slope", "bed", "flat"};

class Writer {
 public:
  template <typename T>
  void operator()(const char* name, const T& value) {
    json_[name] = of(value);
  }
  template <typename T>
  void operator()(const char* name, const std::optional<T>& value) {
    if (value) json_[name] = of(*value);
  }
  template <typename T>
  void unless(const char* name, const T& value, const T& standard) {
    if (!(value == standard)) json_[name] = of(value);
  }
  static bool has(const char* /*name*/) { return false; }

  static Json of(double value) { return std::isfinite(value) ? Json(value) : Json(); }
  template <std::integral T>
  static Json of(const T& value) {
    return value;
  }
  static Json of(const std::string& value) { return value; }
  static Json of(const std::filesystem::path& value) { return value.string(); }
  static Json of(const std::array<double, 3>& values) {
    return {of(values[0]), of(values[1]), of(values[2])};
  }
  static Json of(const PerClass& counts) {
    Json json;
    for (std::size_t i = 0; i < counts.size(); ++i) json[classNames[i]] = counts[i];
    return json;
  }
  /// Classes without candidates are left out.
  static Json of(const std::array<Funnel, 5>& funnels) {
    Json json = Json::object();
    for (std::size_t i = 0; i < funnels.size(); ++i) {
      if (funnels[i].candidates > 0) json[classNames[i]] = of(funnels[i]);
    }
    return json;
  }
  template <typename T>
  static Json of(const std::vector<T>& values) {
    Json json = Json::array();
    for (const auto& value : values) json.push_back(of(value));
    return json;
  }
  template <typename Report>
  requires(!std::integral<Report>) static Json of(const Report& report) {
    Writer writer;
    fields(writer, report);
    return writer.json_;
  }

 private:
  Json json_ = Json::object();
};

class Reader {
 public:
  explicit Reader(const Json& json) : json_(json) {}

  template <typename T>
  void operator()(const char* name, T& value) const {
    into(json_.at(name), value);
  }
  template <typename T>
  void operator()(const char* name, std::optional<T>& value) const {
    value.reset();
    if (json_.contains(name)) into(json_.at(name), value.emplace());
  }
  template <typename T>
  void unless(const char* name, T& value, const T& standard) const {
    value = standard;
    if (json_.contains(name)) into(json_.at(name), value);
  }
  bool has(const char* name) const { return json_.contains(name); }

  static void into(const Json& json, double& value) {
    value = json.is_null() ? unknownFigure : json.get<double>();
  }
  template <std::integral T>
  static void into(const Json& json, T& value) {
    value = json.get<T>();
  }
  static void into(const Json& json, std::string& value) { value = json.get<std::string>(); }
  static void into(const Json& json, std::filesystem::path& value) {
    value = json.get<std::string>();
  }
  static void into(const Json& json, std::array<double, 3>& values) {
    for (std::size_t i = 0; i < 3; ++i) into(json.at(i), values[i]);
  }
  static void into(const Json& json, PerClass& counts) {
    for (std::size_t i = 0; i < counts.size(); ++i) into(json.at(classNames[i]), counts[i]);
  }
  static void into(const Json& json, std::array<Funnel, 5>& funnels) {
    for (std::size_t i = 0; i < funnels.size(); ++i) {
      if (json.contains(classNames[i])) into(json.at(classNames[i]), funnels[i]);
    }
  }
  template <typename T>
  static void into(const Json& json, std::vector<T>& values) {
    if (!json.is_array()) throw Json::type_error::create(302, "a list was expected", &json);
    values.clear();
    for (const auto& one : json) into(one, values.emplace_back());
  }
  template <typename Report>
  requires(!std::integral<Report>) static void into(const Json& json, Report& report) {
    const Reader reader(json);
    fields(reader, report);
  }

 private:
  const Json& json_;
};

constexpr const char* schema = "velorn summary";
constexpr int version = 1;

}  // namespace

Json jsonOf(const RasterCounts& counts) {
  return Writer::of(counts);
}

Json jsonOf(const ApartReport& apart) {
  return Writer::of(apart);
}

Json jsonOf(const StripScale& scale) {
  return Writer::of(scale);
}

Json jsonOf(const MatchReport& matching) {
  return Writer::of(matching);
}

Json jsonOf(const RoundReport& round) {
  return Writer::of(round);
}

Json jsonOf(const StabilityReport& stability) {
  return Writer::of(stability);
}

Json jsonOf(const GeoreferencingReport& georeferencing) {
  return Writer::of(georeferencing);
}

Json jsonOf(const RunReport& run) {
  RunReport told = run;  // the model stands once, as seen from the root
  for (auto& round : told.rounds) {
    if (round.adjustment) round.adjustment->files = {};
  }
  if (told.adjustment) told.adjustment->files = {};
  Json json{{"schema", schema}, {"version", version}};
  json.update(Writer::of(told));
  return json;
}

void fromJson(const Json& json, RasterCounts& counts) {
  Reader::into(json, counts);
}

void fromJson(const Json& json, ApartReport& apart) {
  Reader::into(json, apart);
}

void fromJson(const Json& json, StripScale& scale) {
  Reader::into(json, scale);
}

void fromJson(const Json& json, MatchReport& matching) {
  Reader::into(json, matching);
}

void fromJson(const Json& json, RoundReport& round) {
  Reader::into(json, round);
}

void fromJson(const Json& json, StabilityReport& stability) {
  Reader::into(json, stability);
}

void fromJson(const Json& json, GeoreferencingReport& georeferencing) {
  Reader::into(json, georeferencing);
}

void fromJson(const Json& json, RunReport& run) {
  if (json.at("schema") != schema || json.at("version") != version) {
    throw Json::other_error::create(501, "not a summary of this version", &json);
  }
  Reader::into(json, run);
}

}  // namespace Velorn::Flights
