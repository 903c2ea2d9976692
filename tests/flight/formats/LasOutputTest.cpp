// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <fstream>
#include <limits>

#include <gmock/gmock.h>

#include "flight/formats/LasFile.h"
#include "flight/formats/LasOutput.h"
#include "flight/formats/LittleEndian.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"

using namespace Velorn::Flights;

namespace {

using Geomra::PhysicalSpace::point;
using testing::HasSubstr;

constexpr std::size_t count = 50'000;  // more than a block

const std::vector<LasExtra> extras{{"byte", "a byte", LasNumber::uint8},
                                   {"whole", "of either sign", LasNumber::int32},
                                   {"short", "[m] of one float", LasNumber::float32},
                                   {"long", "[s] of two", LasNumber::float64}};

LasOutputPoint pointOf(std::size_t k) {
  const auto step = static_cast<double>(k);
  return {{600'000.00004 + step, 5'250'000.0 - 0.5 * step, 450.0 + 0.0001 * step},
          0.1 * step - 1e6,
          static_cast<std::uint8_t>(10 + k % 5),
          static_cast<std::uint16_t>(k % 7)};
}

std::vector<double> valuesOf(std::size_t k) {
  const auto step = static_cast<double>(k);
  return {static_cast<double>(k % 300), -step, 0.25 * step, step / 3.0};
}

TEST(LasOutput, IsReadAsItWasWritten) {
  const TemporaryFolder folder;
  const auto target = folder / "points.las";
  LasOutput out(target, 25833, extras);
  for (std::size_t k = 0; k < count; ++k) out.add(pointOf(k), valuesOf(k));
  EXPECT_FALSE(std::filesystem::exists(target)) << "before it is whole";
  out.finish();

  const LasFile file(target);
  EXPECT_EQ(file.header().minorVersion, 4U);
  EXPECT_EQ(file.header().format, 6U);
  EXPECT_TRUE(file.header().hasStandardTime && file.header().hasWkt);
  EXPECT_EQ(file.header().count, count);
  EXPECT_EQ(file.header().countByReturn[0], count);
  EXPECT_EQ(file.epsg(), 25833U);
  EXPECT_NEAR(file.header().lowest.x, 600'000.0, 1e-4);
  EXPECT_NEAR(file.header().highest.z, pointOf(count - 1).place.z, 1e-4);
  std::size_t seen = 0;
  file.read([&](std::uint64_t first, std::span<const LasPoint> points) {
    for (std::size_t k = 0; k < points.size(); ++k, ++seen) {
      const auto expected = pointOf(first + k);
      ASSERT_LT(lengthOf(points[k].place - expected.place), 1e-4);  // half a step per axis
      ASSERT_EQ(points[k].time, expected.time);
      ASSERT_EQ(points[k].classification, expected.classification);
      ASSERT_EQ(points[k].sourceId, expected.source);
      ASSERT_EQ(points[k].returnNumber, 1U);
    }
  });
  EXPECT_EQ(seen, count);

  const auto& record = file.vlrs().at(1);
  EXPECT_EQ(record.recordId, 4U);
  EXPECT_EQ(record.length, 192U * extras.size());
  std::string descriptors(record.length, '\0');
  file.open(record.position).read(descriptors.data(), std::streamsize(descriptors.size()));
  EXPECT_EQ(textAt(descriptors.data() + 2 * 192 + 4, 32), "short");
  EXPECT_EQ(textAt(descriptors.data() + 2 * 192 + 160, 32), "[m] of one float");
  EXPECT_EQ(descriptors[2 * 192 + 2], 9);
  file.readBytes([&](std::uint64_t first, std::uint64_t some, const char* records) {
    for (std::size_t k = 0; k < some; ++k) {
      const char* const bytes = records + k * file.header().recordLength + 30;
      const auto values = valuesOf(first + k);
      ASSERT_EQ(numberAt<std::uint8_t>(bytes), std::min(values[0], 255.0)) << "not 256 less";
      ASSERT_EQ(numberAt<std::int32_t>(bytes + 1), values[1]);
      ASSERT_EQ(numberAt<float>(bytes + 5), float(values[2]));
      ASSERT_EQ(numberAt<double>(bytes + 9), values[3]);
    }
  });
}

TEST(LasOutput, RefusesWhatItCannotHoldAndLeavesTheTarget) {
  const TemporaryFolder folder;
  const auto target = folder / "points.las";
  writeContent(target, "before");
  const auto refusal = [&](const point& place) {
    return refusalOf([&] {
      LasOutput out(target, 32632, {});
      out.add(pointOf(0), {});
      out.add({place, 0.0, 14, 0}, {});
      out.finish();
    });
  };
  EXPECT_THAT(refusal({6e5, std::nan(""), 0}), HasSubstr("point 1, counted from 0: its y = nan"));
  EXPECT_THAT(refusal({9e5, 5.25e6, 0}), HasSubstr("its x = 900000 does not fit into 32 bits"));
  EXPECT_THAT(refusalOf([&] { LasOutput(target, 4326, {}); }), HasSubstr("no projected system"));
  EXPECT_THAT(
      refusalOf([&] { LasOutput(folder / "no" / "points.las", 32632, {}); }, Error::NoSpace),
      HasSubstr("cannot be written"));
  EXPECT_EQ(contentOf(target), "before");
  EXPECT_EQ(namesIn(folder.path()).size(), 1U);
  LasOutput(target, 32632, {}).finish();
  EXPECT_EQ(LasFile(target).header().count, 0U);
}

}  // namespace
