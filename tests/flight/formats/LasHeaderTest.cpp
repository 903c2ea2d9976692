// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <functional>
#include <limits>

#include <gmock/gmock.h>

#include "flight/formats/LasHeader.h"
#include "tests/support/LasBytes.h"

using namespace Velorn::Flights;

namespace {

using testing::AllOf, testing::ElementsAre, testing::HasSubstr;

std::variant<LasHeader, std::string> headerIn(const std::string& bytes) {
  return lasHeaderIn(std::span(bytes).first(std::min<std::size_t>(bytes.size(), 375)),
                     bytes.size());
}

LasHeader readable(const std::string& bytes) {
  const auto read = headerIn(bytes);
  EXPECT_TRUE(std::holds_alternative<LasHeader>(read)) << std::get<std::string>(read);
  return std::get<LasHeader>(read);
}

std::string faultOf(const std::string& bytes) {
  const auto read = headerIn(bytes);
  return std::holds_alternative<LasHeader>(read) ? "not refused" : std::get<std::string>(read);
}

TEST(LasHeader, TellsWhatTheFileSays) {
  auto sample = lasSample(4, 6, 7);
  sample.globalEncoding = 17;
  sample.extraBytes = 4;
  sample.vlrs = {{"somebody", 9, "content"}};
  sample.evlrs = {{"somebody", 10, "more content"}};
  const auto header = readable(lasBytes(sample));
  EXPECT_EQ(header.minorVersion, 4U);
  EXPECT_EQ(header.fileSource, 7);
  EXPECT_TRUE(header.hasStandardTime);
  EXPECT_TRUE(header.hasWkt);
  EXPECT_EQ(header.systemId, "scanner");
  EXPECT_EQ(header.generatingSoftware, "software with a name of 32 bytes");
  EXPECT_EQ(header.creationDay, 200U);
  EXPECT_EQ(header.creationYear, 2019U);
  EXPECT_EQ(header.pointsStart, 375U + 54 + 7);
  EXPECT_EQ(header.recordLength, 34U);
  EXPECT_EQ(header.count, 7U);
  EXPECT_EQ(header.evlrStart, header.pointsEnd());
  EXPECT_EQ(header.evlrCount, 1U);
  EXPECT_THAT(header.scale, ElementsAre(0.01, 0.01, 0.01));
  EXPECT_THAT(header.offset, ElementsAre(500000.0, 5300000.0, 0.0));
  EXPECT_EQ(header.lowest.x, 499985.0);
  EXPECT_EQ(header.highest.x, 500045.0);
}

TEST(LasHeader, TakesReservedBitsOfOldVersionsForNothing) {
  auto sample = lasSample(1, 1);
  sample.globalEncoding = 0xFFFF;
  EXPECT_FALSE(readable(lasBytes(sample)).hasStandardTime);
  EXPECT_FALSE(readable(lasBytes(sample)).hasWkt);
}

TEST(LasHeader, TakesTheCountThatIsFilledIn) {
  std::string bytes = lasBytes(lasSample(4, 1, 5));  // both
  EXPECT_EQ(readable(bytes).count, 5U);
  putAt(bytes, 247, std::uint64_t{0});
  EXPECT_EQ(readable(bytes).count, 5U);
  EXPECT_EQ(readable(bytes).countByReturn[4], 1U);
  bytes = lasBytes(lasSample(4, 1, 5));
  putAt(bytes, 107, std::uint32_t{0});
  EXPECT_EQ(readable(bytes).count, 5U);
  putAt(bytes, 107, std::uint32_t{4});
  EXPECT_THAT(faultOf(bytes), AllOf(HasSubstr("4 points in 32"), HasSubstr("5 in 64")));
}

TEST(LasHeader, CountsThatTheFileCannotHoldAreRefusedWithBothNumbers) {
  auto sample = lasSample(4, 6, 5);
  std::string bytes = lasBytes(sample);
  bytes.pop_back();
  EXPECT_THAT(faultOf(bytes), AllOf(HasSubstr("counts 5 points"), HasSubstr("are 4 in")));
  putAt(bytes, 247, std::numeric_limits<std::uint64_t>::max());
  EXPECT_THAT(faultOf(bytes), HasSubstr("counts 18446744073709551615 points"));
  sample.evlrs = {{"somebody", 10, std::string(100, 'x')}};  // has place for a sixth point
  bytes = lasBytes(sample);
  putAt(bytes, 247, std::uint64_t{6});
  EXPECT_THAT(faultOf(bytes), AllOf(HasSubstr("counts 6 points"), HasSubstr("are 5 in")));
}

TEST(LasHeader, CountsMorePointsThan32BitsWhereTheFileHasThem) {
  std::string bytes = lasBytes(lasSample(4, 6, 0));
  const std::uint64_t count = 5'000'000'000, size = 375 + 30 * count;
  putAt(bytes, 247, count);
  const auto read = lasHeaderIn(bytes, size);
  ASSERT_TRUE(std::holds_alternative<LasHeader>(read));
  EXPECT_EQ(std::get<LasHeader>(read).count, count);
  EXPECT_EQ(std::get<LasHeader>(read).pointsEnd(), size);
  EXPECT_TRUE(std::holds_alternative<std::string>(lasHeaderIn(bytes, size - 1)));
}

TEST(LasHeader, CompressedPointsAreToldAndNotMeasured) {
  for (const unsigned bit : {0x80U, 0x40U, 0xC0U}) {
    std::string bytes = lasBytes(lasSample(4, 6, 5));
    putAt(bytes, 104, static_cast<std::uint8_t>(6 | bit));
    bytes.resize(400);  // fewer bytes than plain points would have
    EXPECT_TRUE(readable(bytes).isCompressed);
  }
}

/// One number of a good header of version 1.4 with points of format 6, changed.
struct Damage {
  const char* name;
  std::function<void(std::string&)> change;
  const char* message;
};

class DamagedLasHeader : public testing::TestWithParam<Damage> {};

TEST_P(DamagedLasHeader, IsRefusedWithTheNumber) {
  auto sample = lasSample(4, 6, 5);
  sample.evlrs = {{"somebody", 10, "content"}};
  sample.globalEncoding = 2;
  std::string bytes = lasBytes(sample);
  GetParam().change(bytes);
  EXPECT_THAT(faultOf(bytes), HasSubstr(GetParam().message));
}

constexpr double infinite = std::numeric_limits<double>::infinity();

template <typename T>
std::function<void(std::string&)> put(std::size_t place, T number) {
  return [=](std::string& bytes) { putAt(bytes, place, number); };
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, DamagedLasHeader,
    testing::Values(
        Damage{"Signature", put(3, std::uint8_t{'X'}), "is no LAS file"},
        Damage{"Nothing", [](std::string& bytes) { bytes.clear(); }, "is no LAS file"},
        Damage{"Short", [](std::string& bytes) { bytes.resize(226); }, "has 226 bytes"},
        Damage{"ShortForItsVersion", [](std::string& bytes) { bytes.resize(374); }, "has 374"},
        Damage{"Major", put(24, std::uint8_t{2}), "version 2.4"},
        Damage{"Minor", put(25, std::uint8_t{5}), "version 1.5"},
        Damage{"HeaderSize", put(94, std::uint16_t{374}), "has 374 bytes by its own account"},
        Damage{"PointsInHeader", put(96, std::uint32_t{374}), "begin at byte 374"},
        Damage{"PointsBehindTheEnd", put(96, std::uint32_t{999999}), "begin at byte 999999"},
        Damage{"Records", put(100, std::uint32_t{1}), "claims 1 variable length records"},
        Damage{"Format", put(104, std::uint8_t{11}), "format 11"},
        Damage{"FormatOfLaterVersion", put(25, std::uint8_t{3}), "format 6; version 1.3"},
        Damage{"RecordLength", put(105, std::uint16_t{29}), "have 29 bytes"},
        Damage{"NoScale", put(139, 0.0), "y coordinates of scale 0 and"},
        Damage{"HugeScale", put(131, 1e300), "x coordinates of scale 1e+300"},
        Damage{"ScaleNoNumber", put(147, std::nan("")), "z coordinates of scale nan"},
        Damage{"Offset", put(155, infinite), "offset inf"},
        Damage{"Waveforms", put(227, std::uint64_t{400}), "waveforms begin at byte 400"},
        Damage{"ExtendedStart", put(235, ~std::uint64_t{0}), "from byte 18446744073709551615 on"},
        Damage{"ExtendedCount", put(243, std::uint32_t{2}), "claims 2 extended"}),
    [](const auto& test) { return test.param.name; });

TEST(LasHeader, HasCoordinatesThatAreFiniteUpToTheLargestScale) {
  std::string bytes = lasBytes(lasSample(2, 0));
  putAt(bytes, 131, std::numeric_limits<double>::max() / 4294967296.0);
  EXPECT_TRUE(std::isfinite(readable(bytes).scale[0] * -2147483648.0));
}

}  // namespace
