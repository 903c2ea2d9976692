// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/LasCrs.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include <cpl_error.h>
#include <fmt/format.h>
#include <ogr_spatialref.h>

#include "flight/formats/LittleEndian.h"
#include "platform/plome/Printable.h"

namespace Velorn::Flights {
namespace {

// Keys and values of GeoTIFF, by their numbers in its documentation.
constexpr unsigned projectedSystemKey = 3072, projectionKey = 3074;
constexpr unsigned citationKey = 1026, projectedCitationKey = 3073;
constexpr unsigned asciiTexts = 34737;
constexpr unsigned userDefined = 32767;

/// GDAL writes its messages on standard error; none of them is wanted while this lives.
class Quiet {
 public:
  Quiet() { CPLPushErrorHandler(CPLQuietErrorHandler); }
  ~Quiet() { CPLPopErrorHandler(); }
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;
};

std::string nameOf(const OGRSpatialReference& system) {
  const char* const name = system.GetName();
  return name ? Plome::printableOnOneLine(name) : "";
}

std::optional<unsigned> codeIn(const OGRSpatialReference& system) {
  const char* const authority = system.GetAuthorityName(nullptr);
  const char* const text = system.GetAuthorityCode(nullptr);
  if (!authority || !text || std::string_view(authority) != "EPSG") return {};
  unsigned code = 0;
  const char* const end = text + std::strlen(text);
  const auto read = std::from_chars(text, end, code);
  if (read.ec != std::errc() || read.ptr != end) return {};
  return code;
}

/// Code of the system that is the same, if there is exactly one.
std::optional<unsigned> codeOfMatch(const OGRSpatialReference& system) {
  constexpr int sameButForItsName = 70;  // [%]; with less the definitions differ
  int count = 0;
  int* confidence = nullptr;
  OGRSpatialReferenceH* const matches = system.FindMatches(nullptr, &count, &confidence);
  std::optional<unsigned> code;
  if (count > 0 && confidence[0] >= sameButForItsName &&
      (count == 1 || confidence[1] < confidence[0])) {
    code = codeIn(*OGRSpatialReference::FromHandle(matches[0]));
  }
  OSRFreeSRSArray(matches);
  CPLFree(confidence);
  return code;
}

std::optional<unsigned> codeOf(OGRSpatialReference& system) {
  if (system.IsCompound()) system.StripVertical();
  if (!system.IsProjected()) return {};
  if (const auto code = codeIn(system)) return code;
  if (system.AutoIdentifyEPSG() == OGRERR_NONE) {
    if (const auto code = codeIn(system)) return code;
  }
  return codeOfMatch(system);
}

struct GeoKey {
  unsigned key, place, count, value;
};

/// Looks keys up in a directory; each entry, and the head before them, has four 16-bit numbers.
class GeoKeys {
 public:
  explicit GeoKeys(std::span<const char> directory) : directory_(directory) {}

  std::optional<GeoKey> find(unsigned key) const {
    for (std::size_t start = entry; start + entry <= directory_.size(); start += entry) {
      const auto number = [&](std::size_t i) -> unsigned {
        return numberAt<std::uint16_t>(directory_.data() + start + 2 * i);
      };
      if (number(0) == key) return GeoKey{key, number(1), number(2), number(3)};
    }
    return {};
  }

  /// Value of a key that holds it in itself; 0 where there is none.
  unsigned code(unsigned key) const {
    const auto found = find(key);
    return found && found->place == 0 ? found->value : 0;
  }

  /// Text of a key, without the '|' that ends it.
  std::string text(unsigned key, const std::string& texts) const {
    const auto found = find(key);
    if (!found || found->place != asciiTexts || found->value > texts.size()) return {};
    std::string text = texts.substr(found->value, found->count);
    return text.substr(0, text.find_first_of(std::string_view("|\0", 2)));
  }

 private:
  static constexpr std::size_t entry = 8;
  std::span<const char> directory_;
};

std::string nameOfCode(unsigned code) {
  OGRSpatialReference system;
  return system.importFromEPSG(static_cast<int>(code)) == OGRERR_NONE && system.IsProjected()
             ? nameOf(system)
             : std::string();
}

/// Code of the UTM system with this name, of the zone that the projection's code tells.
std::optional<unsigned> utmCode(unsigned projection, const std::string& name) {
  const bool isNorth = projection > 16000 && projection <= 16060;
  const bool isSouth = projection > 16100 && projection <= 16160;
  if (!isNorth && !isSouth) return {};
  const unsigned zone = projection % 100;
  // WGS 84, ETRS89 and NAD83
  for (const unsigned group : {isNorth ? 32600U : 32700U, 25800U, 26900U}) {
    if (nameOfCode(group + zone) == name) return group + zone;
  }
  return {};
}

}  // namespace

LasCrs crsOfWkt(const std::string& wkt) {
  const Quiet quiet;
  OGRSpatialReference system;
  const std::string text = wkt.substr(0, wkt.find('\0'));
  if (text.empty()) return {};
  if (system.importFromWkt(text.c_str()) != OGRERR_NONE) {
    return {{},
            "a WKT text that is not understood: " + Plome::printableOnOneLine(text.substr(0, 60))};
  }
  const std::string name = nameOf(system);
  return {codeOf(system), name};
}

std::string wktOf(unsigned epsg) {
  const Quiet quiet;
  OGRSpatialReference system;
  char* text = nullptr;
  if (system.importFromEPSG(static_cast<int>(epsg)) != OGRERR_NONE || !system.IsProjected() ||
      system.exportToWkt(&text) != OGRERR_NONE) {
    CPLFree(text);
    throw std::invalid_argument(fmt::format("EPSG code {}, which is no projected system", epsg));
  }
  std::string wkt = text;
  CPLFree(text);
  return wkt;
}

LasCrs crsOfGeoKeys(std::span<const char> directory, const std::string& texts) {
  const Quiet quiet;
  const GeoKeys keys(directory);
  std::string citation = keys.text(projectedCitationKey, texts);
  if (citation.empty()) citation = keys.text(citationKey, texts);
  const unsigned code = keys.code(projectedSystemKey);
  if (code != 0 && code != userDefined) {
    const std::string name = nameOfCode(code);
    if (name.empty()) return {{}, fmt::format("EPSG code {}, which is no projected system", code)};
    return {code, name};
  }
  return {utmCode(keys.code(projectionKey), citation), Plome::printableOnOneLine(citation)};
}

}  // namespace Velorn::Flights
