// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <numeric>
#include <random>
#include <system_error>

#include <gmock/gmock.h>

#include "flight/formats/LasCopy.h"
#include "flight/formats/LasFile.h"
#include "tests/support/LasBytes.h"
#include "tests/support/Limit.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"

using namespace Velorn::Flights;

namespace {

using Geomra::PhysicalSpace::point;
using testing::AllOf, testing::ElementsAre, testing::HasSubstr;

using Numbers = std::vector<std::uint64_t>;

std::vector<LasPoint> pointsOf(const std::filesystem::path& path) {
  std::vector<LasPoint> all;
  LasFile(path).read([&](std::uint64_t, std::span<const LasPoint> points) {
    all.insert(all.end(), points.begin(), points.end());
  });
  return all;
}

Numbers allOf(std::size_t count) {
  Numbers numbers(count);
  std::iota(numbers.begin(), numbers.end(), 0U);
  return numbers;
}

class LasCopies : public testing::Test {
 protected:
  void write(const LasSample& sample) { writeContent(source, lasBytes(sample)); }
  std::vector<point> places() const {
    std::vector<point> places;
    for (const auto& p : pointsOf(source)) places.push_back(p.place);
    return places;
  }
  std::string refusal(const Numbers& numbers, const std::vector<point>& places,
                      Error::Kind kind = Error::BadInput) {
    return refusalOf([&] { copyLas(source, target, numbers, places); }, kind);
  }

  TemporaryFolder folder;
  std::filesystem::path source = folder / "strip.las", target = folder / "adjusted.las";
};

/// A sample with records, waveforms and whatever the version has.
LasSample fullSample(unsigned version, unsigned format, std::size_t points) {
  auto sample = lasSample(version, format, points);
  sample.extraBytes = 5;
  sample.vlrs = {{"somebody", 1, "first"}, {"somebody", 2, "second"}};
  sample.gap = "gap";
  if (version == 4) sample.evlrs = {{"LASF_Spec", 65535, "waveforms"}, {"somebody", 3, "last"}};
  return sample;
}

TEST_F(LasCopies, WithTheSameCoordinatesDifferInNothingButTheOriginOfTheFile) {
  const std::array<unsigned, 5> lastFormats{1, 1, 3, 5, 10};
  for (unsigned version = 0; version <= 4; ++version) {
    for (unsigned format = 0; format <= lastFormats[version]; ++format) {
      SCOPED_TRACE("1." + std::to_string(version) + ", format " + std::to_string(format));
      write(fullSample(version, format, 30));
      copyLas(source, target, allOf(30), places());
      std::string before = contentOf(source), after = contentOf(target);
      ASSERT_EQ(before.size(), after.size());
      before.erase(26, 68);  // system, software and date
      after.erase(26, 68);
      EXPECT_TRUE(before == after);
    }
  }
}

TEST_F(LasCopies, AreHonestAboutTheirOrigin) {
  write(lasSample(2, 3));
  copyLas(source, target, allOf(5), places());
  const auto header = LasFile(target).header();
  EXPECT_EQ(header.systemId, "MODIFICATION");
  EXPECT_THAT(header.generatingSoftware, testing::MatchesRegex("Velorn [0-9.]+"));
  namespace c = std::chrono;
  const c::sys_days newYear = c::year(static_cast<int>(header.creationYear)) / c::January / 1;
  const auto age = c::system_clock::now() - (newYear + c::days(header.creationDay - 1));
  EXPECT_GE(age, c::seconds(0));
  EXPECT_LT(age, c::hours(25));  // begun before midnight, looked at after it
}

TEST_F(LasCopies, OfSomePointsKeepTheirAttributesAndHaveTheirCountsBoundsAndRecords) {
  const unsigned seed = 7;
  std::mt19937 random(seed);
  auto sample = fullSample(4, 10, 40000);  // more than a block
  write(sample);
  std::string bytes = contentOf(source);
  const auto end = LasFile(source).header().pointsEnd();
  putAt(bytes, 227, end);  // the first of the records behind the points holds the waveforms
  writeContent(source, bytes);
  Numbers numbers;
  std::vector<point> places;
  std::array<std::uint64_t, 15> byReturn{};
  for (std::uint64_t i = 3; i < 40000; i += 1 + random() % 30) {
    numbers.push_back(i);
    places.push_back({500100.0 + 0.013 * static_cast<double>(i), 5300000.0, -0.001});
    ++byReturn.at(sample.points[i].returnNumber - 1);
  }
  copyLas(source, target, numbers, places);
  const auto before = pointsOf(source), after = pointsOf(target);
  ASSERT_EQ(after.size(), numbers.size());
  for (std::size_t i = 0; i < after.size(); ++i) {
    const auto& old = before[numbers[i]];
    EXPECT_NEAR(after[i].place.x, places[i].x, 0.005 + 1e-9) << "seed " << seed;
    EXPECT_EQ(after[i].time, old.time);
    EXPECT_EQ(after[i].intensity, old.intensity);
    EXPECT_EQ(after[i].returnNumber, old.returnNumber);
    EXPECT_EQ(after[i].numberOfReturns, old.numberOfReturns);
    EXPECT_EQ(after[i].classification, old.classification);
    EXPECT_EQ(after[i].sourceId, old.sourceId);
    EXPECT_EQ(after[i].isWithheld, old.isWithheld);
  }
  const LasFile file(target);
  EXPECT_EQ(file.header().countByReturn, byReturn);
  EXPECT_EQ(file.header().lowest.x, after.front().place.x);
  EXPECT_EQ(file.header().highest.x, after.back().place.x);
  EXPECT_EQ(file.header().lowest.y, 5300000.0);
  EXPECT_EQ(file.header().waveformStart, file.header().pointsEnd());
  EXPECT_EQ(contentOf(target).substr(file.header().pointsEnd()), bytes.substr(end));
  EXPECT_EQ(file.vlrs().at(3).recordId, 3U);
}

TEST_F(LasCopies, OfNoPointsAreFilesWithoutPoints) {
  write(fullSample(4, 6, 5));
  copyLas(source, target, {}, {});
  const LasFile file(target);
  EXPECT_EQ(file.header().count, 0U);
  EXPECT_EQ(file.header().highest, point());
  EXPECT_EQ(file.vlrs().size(), 4U);
}

TEST_F(LasCopies, KeepTheOffsetOnlyWhileTheCoordinatesFit) {
  write(lasSample(2, 3, 2));
  const double last = 500000.0 + 0.01 * 2147483647.0;
  copyLas(source, target, allOf(2), std::vector<point>{{500000, 0, 0}, {last, 0, 0}});
  EXPECT_THAT(LasFile(target).header().offset, ElementsAre(500000.0, 5300000.0, 0.0));
  copyLas(source, target, allOf(2), std::vector<point>{{500000, 0, 1e9}, {last + 0.01, 0, 1e9}});
  EXPECT_EQ(LasFile(target).header().offset[1], 5300000.0);
  EXPECT_NE(LasFile(target).header().offset[0], 500000.0);
  const auto points = pointsOf(target);
  EXPECT_NEAR(points[0].place.x, 500000.0, 1e-6);  // integers stand for both
  EXPECT_NEAR(points[1].place.x, last + 0.01, 0.005);
  EXPECT_NEAR(points[1].place.z, 1e9, 0.005);
}

TEST_F(LasCopies, ThatCannotBeMadeAreRefusedAndTheTargetStays) {
  write(lasSample(2, 3, 5));
  writeContent(target, "before");
  const point good{500000, 5300000, 100};
  const double nan = std::nan("");
  EXPECT_THAT(refusal({1, 3}, {good, {0, nan, 0}}),
              AllOf(HasSubstr("strip.las: point 3"), HasSubstr("not finite")));
  EXPECT_THAT(refusal({1, 3}, {good, {0, 0, 1e300}}),
              AllOf(HasSubstr("point 3"), HasSubstr("z = 1e+300 does not fit")));
  EXPECT_THAT(refusal({1, 3, 4}, {good, good, {-9e7, 0, 0}}),
              AllOf(HasSubstr("point 4"), HasSubstr("x = -90000000 does not fit")));
  EXPECT_THAT(refusal({1, 1}, {good, good}), HasSubstr("1 comes after 1"));
  EXPECT_THAT(refusal({1, 5}, {good, good}), HasSubstr("holds 5 points, none with number 5"));
  EXPECT_THAT(refusal({1, 2}, {good}), HasSubstr("2 points have 1 new"));
  EXPECT_EQ(contentOf(target), "before");
  target = source;
  EXPECT_THAT(refusal({1}, {good}), HasSubstr("is the file that the points come from"));
}

TEST_F(LasCopies, ThatCannotBeWrittenAreWriteErrors) {
  write(lasSample(2, 3, 1));
  target = folder / "missing/adjusted.las";
  EXPECT_THAT(refusal({0}, {{}}, Error::NoSpace),
              HasSubstr("adjusted.las: cannot be written: " +
                        std::generic_category().message(ENOENT)));  // in the locale's language
  target = folder.path() / "folder";
  std::filesystem::create_directory(target);
  EXPECT_THAT(refusal({0}, {{}}, Error::NoSpace), HasSubstr("is not a regular file"));
}

TEST_F(LasCopies, OnAFullDiskLeaveTheTargetAsItWas) {
  write(lasSample(2, 3, 1000));
  const auto numbers = allOf(1000);
  const auto points = places();
  writeContent(target, "before");
  const std::size_t size = contentOf(source).size();
  for (const std::size_t room : {std::size_t{100}, std::size_t{20000}, size - 1}) {
    const std::string told = [&] {
      const Limit disk(RLIMIT_FSIZE, room);
      return refusal(numbers, points, Error::NoSpace);
    }();
    EXPECT_THAT(told, HasSubstr("adjusted.las: cannot be written")) << room;
    EXPECT_EQ(contentOf(target), "before");
  }
  const std::filesystem::directory_iterator files(folder.path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 2);  // nothing unfinished is left
}

TEST_F(LasCopies, OfAnotherMakersFileKeepItsSystemAndPoints) {
  source = VELORN_TEST_DATA "/line/points.las";
  copyLas(source, target, allOf(1325), places());
  EXPECT_EQ(LasFile(target).epsg(), 32611U);
  const std::string before = contentOf(source), after = contentOf(target);
  ASSERT_EQ(before.size(), after.size());
  EXPECT_TRUE(before.substr(227) == after.substr(227));
}

}  // namespace
