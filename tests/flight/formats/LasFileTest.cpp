// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cmath>

#include <gmock/gmock.h>
#include <ogr_spatialref.h>

#include "flight/formats/LasFile.h"
#include "tests/support/LasBytes.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"

using namespace Velorn::Flights;

namespace {

using testing::AllOf, testing::Eq, testing::HasSubstr, testing::Optional;

std::vector<LasPoint> pointsOf(const LasFile& file) {
  std::vector<LasPoint> all;
  file.read([&](std::uint64_t first, std::span<const LasPoint> points) {
    EXPECT_EQ(first, all.size());
    all.insert(all.end(), points.begin(), points.end());
  });
  return all;
}

class LasFiles : public testing::Test {
 protected:
  LasFile written(const LasSample& sample) { return written(lasBytes(sample)); }
  LasFile written(const std::string& bytes) {
    writeContent(path, bytes);
    return LasFile(path);
  }
  std::string refusalOf(const std::string& bytes) {
    return ::refusalOf([&] { written(bytes); });
  }

  TemporaryFolder folder;
  std::filesystem::path path = folder / "strip.las";
};

void expectSame(const LasPoint& point, const LasSamplePoint& expected, const LasSample& sample) {
  EXPECT_DOUBLE_EQ(point.place.x, sample.offset[0] + 0.01 * expected.numbers[0]);
  EXPECT_DOUBLE_EQ(point.place.y, sample.offset[1] + 0.01 * expected.numbers[1]);
  EXPECT_DOUBLE_EQ(point.place.z, sample.offset[2] + 0.01 * expected.numbers[2]);
  EXPECT_EQ(point.intensity, expected.intensity);
  EXPECT_EQ(point.returnNumber, expected.returnNumber);
  EXPECT_EQ(point.numberOfReturns, expected.numberOfReturns);
  EXPECT_EQ(point.classification, expected.classification);
  EXPECT_EQ(point.isWithheld, expected.isWithheld);
  EXPECT_EQ(point.sourceId, expected.sourceId);
  if (sample.format == 0 || sample.format == 2) {
    EXPECT_TRUE(std::isnan(point.time));
  } else {
    EXPECT_EQ(point.time, expected.time);
  }
}

TEST_F(LasFiles, OfEveryVersionAndFormatAreReadAsTheyWereWritten) {
  const std::array<unsigned, 5> lastFormats{1, 1, 3, 5, 10};
  for (unsigned version = 0; version <= 4; ++version) {
    for (unsigned format = 0; format <= lastFormats[version]; ++format) {
      for (const std::size_t extraBytes : {0U, 3U}) {
        SCOPED_TRACE("1." + std::to_string(version) + ", format " + std::to_string(format));
        auto sample = lasSample(version, format, 40);
        sample.extraBytes = extraBytes;
        sample.gap = version == 0 ? "\xDD\xCC" : "";
        const auto points = pointsOf(written(sample));
        ASSERT_EQ(points.size(), sample.points.size());
        for (std::size_t i = 0; i < points.size(); ++i) {
          expectSame(points[i], sample.points[i], sample);
        }
      }
    }
  }
}

TEST_F(LasFiles, HaveReturnsAndClassesOfTheWidthOfTheirFormat) {
  auto sample = lasSample(4, 6, 1);
  sample.points[0].returnNumber = sample.points[0].numberOfReturns = 15;
  sample.points[0].classification = 255;
  expectSame(pointsOf(written(sample)).at(0), sample.points[0], sample);
  sample.format = 5;
  sample.points[0].returnNumber = sample.points[0].numberOfReturns = 7;
  sample.points[0].classification = 31;
  expectSame(pointsOf(written(sample)).at(0), sample.points[0], sample);
}

TEST_F(LasFiles, LongerThanABlockAreReadInOrderAndEmptyOnesAreEmpty) {
  const auto sample = lasSample(4, 6, 40000);
  const auto points = pointsOf(written(sample));
  ASSERT_EQ(points.size(), 40000U);
  for (std::size_t i = 0; i < points.size(); ++i) ASSERT_EQ(points[i].time, sample.points[i].time);
  EXPECT_TRUE(pointsOf(written(lasSample(4, 6, 0))).empty());
}

TEST_F(LasFiles, ThatAreCompressedAreRefusedWithACommandThatHelps) {
  std::string bytes = lasBytes(lasSample(4, 6));
  putAt(bytes, 104, std::uint8_t{0x86});
  path = folder / "strip.laz";
  const std::string las = (folder / "strip.las").string();
  const auto helps = AllOf(HasSubstr("laszip -i " + path.string() + " -o " + las + "\""),
                           HasSubstr("--decompress"));
  EXPECT_THAT(refusalOf(bytes), helps);
  auto sample = lasSample(2, 1);
  sample.vlrs = {{"laszip encoded", 22204, "settings"}};
  EXPECT_THAT(refusalOf(lasBytes(sample)), helps);
  path = las;
  EXPECT_THAT(refusalOf(bytes), HasSubstr("-o " + (folder / "strip_plain.las").string()));
}

TEST_F(LasFiles, ThatAreNoneAreRefusedByName) {
  EXPECT_THAT(refusalOf(""), HasSubstr("strip.las: is empty"));
  EXPECT_THAT(refusalOf("easting;northing"), HasSubstr("strip.las: does not begin with"));
  std::filesystem::remove(path);
  EXPECT_THROW(LasFile{path}, Error);
  EXPECT_THROW(LasFile{folder.path()}, Error);
}

TEST_F(LasFiles, WithRecordsLongerThanTheirPlaceAreRefused) {
  auto sample = lasSample(4, 6);
  sample.vlrs = {{"a", 1, "content"}, {"b", 2, "content"}};
  sample.evlrs = {{"c", 3, "content"}};
  std::string bytes = lasBytes(sample);
  putAt(bytes, 375 + 61 + 20, std::uint16_t{8});
  EXPECT_THAT(refusalOf(bytes), HasSubstr("strip.las: variable length record 2 of 2: has 8 bytes"));
  bytes = lasBytes(sample);
  putAt(bytes, 375 + 20, std::uint16_t{30});
  EXPECT_THAT(refusalOf(bytes), HasSubstr("record 2 of 2: there is no place"));
  bytes = lasBytes(sample);
  putAt(bytes, bytes.size() - 7 - 40, ~std::uint64_t{0});
  EXPECT_THAT(refusalOf(bytes), HasSubstr("extended variable length record 1 of 1: has 184467"));
}

TEST_F(LasFiles, ThatShrinkAfterwardsAreRefusedWhenTheyAreRead) {
  const auto file = written(lasSample(4, 6, 5));
  std::filesystem::resize_file(path, 500);
  EXPECT_THROW(pointsOf(file), Error);
}

/// A coordinate system as WKT, with or without the codes of EPSG.
std::string wktOf(const char* system, bool withCodes = true) {
  OGRSpatialReference reference;
  EXPECT_EQ(reference.SetFromUserInput(system), OGRERR_NONE);
  char* text = nullptr;
  reference.exportToWkt(&text);
  std::string wkt = text;
  CPLFree(text);
  for (std::size_t at = 0; !withCodes && (at = wkt.find(",AUTHORITY[")) != std::string::npos;) {
    wkt.erase(at, wkt.find(']', at) + 1 - at);
  }
  return wkt;
}

LasSampleVlr wktRecord(const std::string& wkt) {
  return {"LASF_Projection", 2112, wkt + '\0'};
}

TEST_F(LasFiles, TellTheCodeOfTheirProjectedSystemByWkt) {
  auto sample = lasSample(4, 6);
  sample.globalEncoding = 16;
  const auto epsgOf = [&](const std::string& wkt) {
    sample.vlrs = {wktRecord(wkt)};
    return written(sample).epsg();
  };
  EXPECT_THAT(epsgOf(wktOf("EPSG:32632")), Optional(32632U));
  EXPECT_THAT(epsgOf(wktOf("EPSG:25832+7837")), Optional(25832U));
  EXPECT_THAT(epsgOf(wktOf("EPSG:32632", false)), Optional(32632U));
  EXPECT_THAT(epsgOf(wktOf("EPSG:25833", false)), Optional(25833U));
  EXPECT_THAT(epsgOf(wktOf("EPSG:4326")), Eq(std::nullopt));
  EXPECT_EQ(written(sample).crsText(), "WGS 84");
  EXPECT_THAT(epsgOf("PROJCS[\"mine\x1B"), Eq(std::nullopt));
  EXPECT_THAT(written(sample).crsText(), HasSubstr("not understood: PROJCS[\"mine\\x1b"));
  sample.evlrs = {wktRecord(wktOf("EPSG:32631"))};
  EXPECT_THAT(epsgOf("PROJCS[\"mine"), Optional(32631U));
}

TEST_F(LasFiles, TellNoCodeOfASystemThatOnlyLooksLikeOneOfEpsg) {
  auto sample = lasSample(4, 6);
  sample.globalEncoding = 16;
  const std::string metres = R"(PARAMETER["false_northing",0],UNIT["metre",1]])";
  const std::string feet = R"(PARAMETER["false_northing",0],UNIT["US survey foot",0.3048006096]])";
  for (const auto& end : {metres, feet}) {
    sample.vlrs = {
        wktRecord(R"(PROJCS["WGS_1984_UTM_Zone_32N",GEOGCS["GCS_WGS_1984",DATUM["D_WGS_1984",)"
                  R"(SPHEROID["WGS_1984",6378137,298.257223563]],PRIMEM["Greenwich",0],)"
                  R"(UNIT["Degree",0.0174532925199433]],PROJECTION["Transverse_Mercator"],)"
                  R"(PARAMETER["latitude_of_origin",0],PARAMETER["central_meridian",9],)"
                  R"(PARAMETER["scale_factor",0.9996],PARAMETER["false_easting",500000],)" +
                  end)};
    EXPECT_EQ(written(sample).epsg(), end == metres ? std::optional(32632U) : std::nullopt);
  }
}

TEST_F(LasFiles, TellTheCodeOfTheirProjectedSystemByKeys) {
  auto sample = lasSample(2, 1);
  sample.vlrs = {geoKeys({{1024, 0, 1, 1}, {3072, 0, 1, 32633}})};
  EXPECT_THAT(written(sample).epsg(), Optional(32633U));
  EXPECT_EQ(written(sample).crsText(), "WGS 84 / UTM zone 33N");
  sample.vlrs = {geoKeys({{3072, 0, 1, 4326}})};
  EXPECT_THAT(written(sample).epsg(), Eq(std::nullopt));
  EXPECT_THAT(written(sample).crsText(), HasSubstr("4326"));
  const LasSampleVlr texts{"LASF_Projection", 34737, "ETRS89 / UTM zone 32N|"};
  for (const auto zone :
       std::array<std::uint16_t, 2>{16032, 16033}) {  // the second contradicts the text
    sample.vlrs = {geoKeys({{1026, 34737, 22, 0}, {3072, 0, 1, 32767}, {3074, 0, 1, zone}}), texts};
    EXPECT_EQ(written(sample).epsg(), zone == 16032 ? std::optional(25832U) : std::nullopt);
    EXPECT_EQ(written(sample).crsText(), "ETRS89 / UTM zone 32N");
  }
}

TEST_F(LasFiles, WithBothKindsOfRecordsMeanTheOneThatTheirBitTells) {
  auto sample = lasSample(4, 1);
  sample.vlrs = {wktRecord(wktOf("EPSG:32632")), geoKeys({{3072, 0, 1, 32633}})};
  EXPECT_THAT(written(sample).epsg(), Optional(32633U));
  sample.globalEncoding = 16;
  EXPECT_THAT(written(sample).epsg(), Optional(32632U));
  sample.vlrs = {geoKeys({{3072, 0, 1, 32633}})};
  EXPECT_THAT(written(sample).epsg(), Optional(32633U));
  sample.vlrs.clear();
  EXPECT_THAT(written(sample).epsg(), Eq(std::nullopt));
  EXPECT_EQ(written(sample).crsText(), "");
}

TEST_F(LasFiles, OfAnotherMakerAgreeWithAnIndependentReading) {
  const LasFile file(VELORN_TEST_DATA "/line/points.las");
  EXPECT_THAT(file.epsg(), Optional(32611U));
  EXPECT_EQ(file.crsText(), "WGS 84 / UTM zone 11N");
  EXPECT_EQ(file.header().generatingSoftware.substr(0, 4), "PDAL");
  const auto points = pointsOf(file);
  ASSERT_EQ(points.size(), 1325U);
  struct Expected {
    std::size_t number;
    double x, y, z, time;
    int intensity, returnNumber, numberOfReturns, classification, sourceId;
  };
  // Python's struct.unpack("<iiiHBBbBHd", ...) of the records
  for (const auto& e :
       {Expected{0, 320000.34, 4181319.35, 2687.59, 400825.80571932, 51404, 1, 1, 0, 36},
        Expected{40, 319702.92, 4181383.04, 2810.06, 400825.19037597004, 17817, 2, 4, 0, 36},
        Expected{1324, 324263.08, 4181432.43, 2395.07, 400825.12360973004, 35921, 1, 2, 0, 36}}) {
    SCOPED_TRACE(e.number);
    const auto& point = points[e.number];
    EXPECT_NEAR(point.place.x, e.x, 1e-9);  // rounding of doubles at 4e6 m
    EXPECT_NEAR(point.place.y, e.y, 1e-9);
    EXPECT_NEAR(point.place.z, e.z, 1e-9);
    EXPECT_EQ(point.time, e.time);
    EXPECT_EQ(point.intensity, e.intensity);
    EXPECT_EQ(point.returnNumber, e.returnNumber);
    EXPECT_EQ(point.numberOfReturns, e.numberOfReturns);
    EXPECT_EQ(point.classification, e.classification);
    EXPECT_EQ(point.sourceId, e.sourceId);
  }
}

}  // namespace
