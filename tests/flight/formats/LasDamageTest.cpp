// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>

#include <gtest/gtest.h>

#include "flight/formats/LasCopy.h"
#include "flight/formats/LasFile.h"
#include "tests/support/LasBytes.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace {

/// Reads a file and writes it again; whatever the bytes, both end with a result or a Error.
/// @param isCopied  false for reading alone; what is written waits for the disk
/// @return          false for a Error
bool survives(const TemporaryFolder& folder, const std::string& bytes, bool isCopied = true) {
  writeContent(folder / "strip.las", bytes);
  try {
    std::vector<std::uint64_t> numbers;
    std::vector<Geomra::PhysicalSpace::point> places;
    const LasFile file(folder / "strip.las");
    file.read([&](std::uint64_t first, std::span<const LasPoint> points) {
      for (std::size_t i = 0; i < points.size(); ++i) {
        numbers.push_back(first + i);
        places.push_back(points[i].place);
        EXPECT_TRUE(std::isfinite(points[i].place.x));
      }
    });
    EXPECT_EQ(numbers.size(), file.header().count);
    if (!isCopied) return true;
    copyLas(folder / "strip.las", folder / "copy.las", numbers, places);
    EXPECT_EQ(LasFile(folder / "copy.las").header().count, numbers.size());
  } catch (const Error&) {
    return false;
  }
  return true;
}

/// Small, with every kind of record that is looked into.
std::string smallFile(unsigned version, unsigned format) {
  auto sample = lasSample(version, format, 3);
  const std::string wkt =
      R"(PROJCS["mine",GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257]]]])";
  sample.globalEncoding = version == 4 ? 18 : 0;
  sample.vlrs = {geoKeys({{1026, 34737, 6, 0}, {3072, 0, 1, 32767}, {3074, 0, 1, 16032}}),
                 {"LASF_Projection", 34737, "a name|"},
                 {"LASF_Projection", 2112, wkt}};
  if (version == 4) sample.evlrs = {{"LASF_Spec", 65535, "waves"}};
  return lasBytes(sample);
}

TEST(DamagedLas, CutOffAnywhereIsReadOrRefused) {
  const TemporaryFolder folder;
  for (const std::string& whole : {smallFile(2, 1), smallFile(4, 9)}) {
    ASSERT_TRUE(survives(folder, whole));
    for (std::size_t size = 0; size < whole.size(); ++size) {
      SCOPED_TRACE(size);
      EXPECT_FALSE(survives(folder, whole.substr(0, size)));
    }
  }
}

TEST(DamagedLas, WithAByteChangedBeforeOrBehindThePointsIsReadOrRefused) {
  const TemporaryFolder folder;
  for (const std::string& whole : {smallFile(2, 1), smallFile(4, 9)}) {
    const auto header = [&] {
      writeContent(folder / "strip.las", whole);
      return LasFile(folder / "strip.las").header();
    }();
    for (std::size_t i = 0; i < whole.size(); ++i) {
      if (i >= header.pointsStart && i < header.pointsEnd()) continue;
      SCOPED_TRACE(i);
      for (const unsigned flip : {0xFFU, 0x01U, 0x80U}) {
        std::string bytes = whole;
        bytes[i] = static_cast<char>(static_cast<unsigned char>(bytes[i]) ^ flip);
        survives(folder, bytes, flip == 0xFFU && i < header.headerSize);
      }
    }
  }
}

}  // namespace
