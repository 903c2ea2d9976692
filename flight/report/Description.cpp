// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/report/Description.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <numbers>
#include <variant>

#include "flight/formats/Sbet.h"
#include "flight/report/Listing.h"
#include "flight/strips/OrFail.h"
#include "platform/geomra/Degree.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/flight/Describe.h>

namespace Velorn::Flights {

using Json = nlohmann::ordered_json;
using namespace Strandel;

namespace {

using Geomra::degreesPerRadian;

Json jsonOf(const Attributes& attributes) {
  struct Value {
    Json operator()(std::int64_t value) const { return value; }
    Json operator()(double value) const { return value; }
    Json operator()(const std::string& value) const { return value; }
    Json operator()(const Geomra::PhysicalSpace::point& p) const {
      return Json::array({p.x, p.y, p.z});
    }
  };
  Json json = Json::object();
  for (const auto& [name, value] : attributes.all()) json[name] = std::visit(Value(), value);
  return json;
}

Json fragmentsOf(const Field& field) {
  Json fragments = Json::array();
  for (const auto fragment : field.fragments()) {
    Json entry{{"number", fragment.number}, {"count", field.size(fragment)}};
    if (!field.hasChunk(fragment)) entry["absent"] = true;
    fragments.push_back(std::move(entry));
  }
  return fragments;
}

/// A limit of an integer field as an integer; not that of 64 bits that rounding took beyond them.
Json limitOf(double value, const ValueTypeInfo& type) {
  if (type.floating || !(std::abs(value) < 0x1p63)) return value;
  return static_cast<std::int64_t>(value);
}

Json limitsOf(const std::array<double, 3>& limits, const ValueTypeInfo& type) {
  if (type.components == 1) return limitOf(limits[0], type);
  return Json::array({limits[0], limits[1], limits[2]});
}

/// The other charts of the grid that hold the very same field.
Json chartsThatShare(const FieldPtr& field, const std::string& chartName, const Grid& grid) {
  Json names = Json::array();
  for (const auto& [name, chart] : grid.charts()) {
    if (name != chartName && chart->field(field->name()) == field) names.push_back(name);
  }
  return names;
}

/// Walks through one container.
class ContainerDescriber {
 public:
  explicit ContainerDescriber(Description& description) : description_(description) {}

  void describe(const Bundle& bundle) {
    Json& document = description_.document;
    document["attributes"] = jsonOf(bundle.attributes());
    document["slices"] = Json::array();
    for (const auto& slice : bundle.slices()) document["slices"].push_back(sliceOf(*slice));
  }

 private:
  Json sliceOf(const Slice& slice) {
    Json json{{"time", slice.time()}, {"attributes", jsonOf(slice.attributes())}};
    json["grids"] = Json::array();
    for (const auto& [name, grid] : slice.grids()) json["grids"].push_back(gridOf(*grid));
    return json;
  }

  Json gridOf(const Grid& grid) {
    Json json{{"name", grid.name()}, {"points", pointsOf(grid)}};
    json["attributes"] = jsonOf(grid.attributes());
    if (grid.waveforms()) json["waveforms"] = jsonOf(grid.waveforms()->attributes());
    json["charts"] = Json::array();
    for (const auto& [name, chart] : grid.charts()) {
      Json fields = Json::array();
      for (const auto& [fieldName, field] : chart->fields()) {
        fields.push_back(fieldOf(field, name, grid));
      }
      json["charts"].push_back({{"name", name},
                                {"attributes", jsonOf(chart->attributes())},
                                {"fields", std::move(fields)}});
    }
    return json;
  }

  Json fieldOf(const FieldPtr& field, const std::string& chartName, const Grid& grid) {
    const auto& type = infoOf(field->valueType());
    Json json{{"name", field->name()}, {"type", type.name}, {"count", field->size()}};
    json["fragments"] = fragmentsOf(*field);
    if (Json shared = chartsThatShare(field, chartName, grid); !shared.empty()) {
      json["shared_with"] = std::move(shared);
    }
    const RangeRead& read = rangeOf(*field);
    if (read.range) {
      json["minimum"] = limitsOf(read.range->minimum, type);
      json["maximum"] = limitsOf(read.range->maximum, type);
    }
    if (!read.error.empty()) json["error"] = read.error;
    json["attributes"] = jsonOf(field->attributes());
    return json;
  }

  /// Points of a grid: every fragment counts as often as its fields have values.
  static std::size_t pointsOf(const Grid& grid) {
    std::map<FragmentId, std::size_t> sizes;
    for (const auto& [chartName, chart] : grid.charts()) {
      for (const auto& [name, field] : chart->fields()) {
        for (const auto fragment : field->fragments()) {
          sizes[fragment] = std::max(sizes[fragment], field->size(fragment));
        }
      }
    }
    std::size_t points = 0;
    for (const auto& [fragment, size] : sizes) points += size;
    return points;
  }

  /// Computed once for a shared field, and its fault told once.
  const RangeRead& rangeOf(const Field& field) {
    const auto [entry, isNew] = ranges_.try_emplace(&field);
    if (isNew) {
      entry->second = field.range();
      if (!entry->second.error.empty()) description_.faults.push_back(entry->second.error);
    }
    return entry->second;
  }

  Description& description_;
  std::map<const Field*, RangeRead> ranges_;
};

struct Extent {
  double minimum = std::numeric_limits<double>::infinity();
  double maximum = -std::numeric_limits<double>::infinity();

  void add(double value) {
    minimum = std::min(minimum, value);
    maximum = std::max(maximum, value);
  }
  Json json(double factor = 1.0) const { return Json::array({factor * minimum, factor * maximum}); }
};

void describeContainer(const std::filesystem::path& file, Description& description) {
  Bundle bundle;
  orFail(MyStorage(0, 0, 0, 1).load(file, bundle));
  ContainerDescriber(description).describe(bundle);
}

void describeSbet(const std::filesystem::path& file, Description& description) {
  Extent time, latitude, longitude, height;
  const std::size_t records = readSbet(file, [&](const SbetRecord& record) {
    time.add(record.time);
    latitude.add(record.latitude);
    longitude.add(record.longitude);
    height.add(record.height);
  });
  Json& document = description.document;
  document["records"] = records;
  document["time_s"] = time.json();
  document["latitude_deg"] = latitude.json(degreesPerRadian);
  document["longitude_deg"] = longitude.json(degreesPerRadian);
  document["height_m"] = height.json();
}

}  // namespace

Description describe(const std::filesystem::path& file) {
  const bool sbet = looksLikeSbet(file);
  Description description;
  description.document = {{"path", file.string()}, {"kind", sbet ? "sbet" : "container"}};
  try {
    (sbet ? describeSbet : describeContainer)(file, description);
  } catch (const Error& failure) {
    description.document["error"] = failure.what();
    description.faults.emplace_back(failure.what());
  }
  return description;
}

FileDescription describeFile(const std::filesystem::path& file) {
  const Description one = describe(file);
  return {listingOf(one.document), one.faults};
}

FileDescription documentFiles(const std::vector<std::filesystem::path>& files) {
  Json documents = Json::array();
  FileDescription all;
  for (const auto& file : files) {
    Description one = describe(file);
    documents.push_back(std::move(one.document));
    all.faults.insert(all.faults.end(), one.faults.begin(), one.faults.end());
  }
  const Json document{{"files", std::move(documents)}};
  all.text = document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
  return all;
}

}  // namespace Velorn::Flights
