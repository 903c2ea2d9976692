// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <random>

#include <gmock/gmock.h>

#include "adjustment/statistics/AdjustmentStatistic.h"
#include "tests/adjustment/georef/StripOfPoints.h"
#include "tests/support/ConsoleLines.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using testing::AllOf, testing::ElementsAre, testing::HasSubstr, testing::IsEmpty;
using Velorn::AdjustmentStatistic, Velorn::CorrespondenceBlock;

namespace {

const std::vector<fs::path> strips{"a.kx", "b.kx", "c.kx"};

/// Three strips of one section each, with small corrections that differ.
Velorn::SolverParameters threeStrips() {
  std::vector<double> values = someCorrections(3);
  for (std::size_t i = 0; i < 72; ++i) values[i] *= 0.02;
  return restoredModel(std::vector<int>(3, static_cast<int>(Route().start)), values, strips);
}

/// Differences and movements of the points, one after the other.
struct Twin {
  std::vector<double> pairs, groundTruth;
  std::vector<std::vector<double>> vertical{3}, horizontal{3};
};

double quantile90(std::vector<double> movements) {
  std::erase_if(movements, [](double movement) { return movement >= 4.0; });
  std::sort(movements.begin(), movements.end());
  const auto rank = static_cast<std::size_t>(static_cast<double>(movements.size()) * 0.9);
  return rank == 0 ? 0.0 : std::floor(movements[rank - 1] / 0.1) * 0.1;
}

void expectFigures(const OrvekStatistic::Summary& summary, const std::vector<double>& values) {
  const auto moments = OrvekStatistic::moments(values);
  EXPECT_EQ(summary.moments.count, values.size());
  EXPECT_NEAR(summary.moments.mean, moments.mean, 1e-6);
  EXPECT_NEAR(summary.moments.rms, moments.rms, 1e-6);
  EXPECT_NEAR(summary.nmad, OrvekStatistic::nmad(values), 1e-6);
  EXPECT_NEAR(summary.quantiles.back(), OrvekStatistic::quantile(values, 0.95), 1e-6);
}

void expectMovements(const std::vector<Velorn::MovementFigures>& movements, const Twin& twin) {
  ASSERT_EQ(movements.size(), 3U);
  for (std::size_t s = 0; s < 3; ++s) {
    EXPECT_DOUBLE_EQ(movements[s].vertical90, quantile90(twin.vertical[s])) << s;
    EXPECT_DOUBLE_EQ(movements[s].horizontal90, quantile90(twin.horizontal[s])) << s;
    const auto counted = movements[s].vertical + movements[s].horizontal + movements[s].beyond;
    EXPECT_EQ(counted, twin.vertical[s].size() + twin.horizontal[s].size()) << s;
  }
}

Velorn::InputParameter configurationWith(const fs::path& root) {
  Velorn::InputParameter configuration;
  configuration.RootPath = root;
  return configuration;
}

std::string textOf(const fs::path& pdf) {
  return outputOf("pdftotext '" + pdf.string() + "' -");
}

class Statistics : public testing::Test {
 protected:
  point georeferenced(const Velorn::SphericalBeing& being, unsigned strip) const {
    std::vector<point> world(1);
    std::vector<vector> direction(1);
    EXPECT_EQ(Velorn::scanner2world(parameters_, trajectory_, {being.scannerPosition},
                                    {being.gpsTime}, week, strip, world, direction, 0, true),
              "");
    return world[0];
  }

  /// A measurement whose stored place is some way from where the parameters put it.
  Velorn::SphericalBeing moved(const point& scanner, double t, unsigned strip, double meters) {
    std::normal_distribution<double> draw;
    const auto any = [&](double size) {
      return vector{size * draw(random_), size * draw(random_), size * draw(random_)};
    };
    const vector normal = 5.0 * (vector{0, 0, 1} + any(0.1));
    Velorn::SphericalBeing being({}, scanner, t, normal, {}, classOfNext_);
    classOfNext_ = classOfNext_ == 14 ? 10 : static_cast<std::uint8_t>(classOfNext_ + 1);
    being.worldPosition = georeferenced(being, strip) + any(meters);
    return being;
  }

  /// Both sides measure nearly the same place.
  CorrespondenceBlock blockOf(bool groundTruth, unsigned first, unsigned second, std::size_t count,
                              unsigned weekJ = week) {
    CorrespondenceBlock block(folder_ / "c.kx", groundTruth, week, weekJ, storage_);
    const Points points(Route(), count);
    for (std::size_t k = 0; k < count; ++k) {
      const point &i = points.scanner[k], j = i + vector{0.02 * std::sin(double(k)), 0.01, 0};
      block.add(moved(i, points.times[k], first, metersMoved_),
                moved(j, points.times[k], groundTruth ? first : second, 0.4));
    }
    return block;
  }

  void addTo(Twin& twin, const CorrespondenceBlock& block, unsigned first, unsigned second,
             bool adjusted) const {
    for (std::uint32_t k = 0; k < block.size(); ++k) {
      const auto [i, j] = block.get(k);
      point p = i.worldPosition, q = j.worldPosition;
      if (adjusted) p = placed(twin, i, first);
      if (adjusted && !block.isGroundTruth()) q = placed(twin, j, second);
      const vector& n = i.normal;
      const double length = std::hypot(n.x, n.y, n.z);
      (block.isGroundTruth() ? twin.groundTruth : twin.pairs).push_back(dot(p - q, n) / length);
    }
  }
  point placed(Twin& twin, const Velorn::SphericalBeing& being, unsigned strip) const {
    const point world = georeferenced(being, strip);
    const vector way = world - being.worldPosition;
    twin.vertical[strip].push_back(std::abs(way.z));
    twin.horizontal[strip].push_back(std::hypot(way.x, way.y));
    return world;
  }

  std::string add(AdjustmentStatistic& statistic, const CorrespondenceBlock& block, unsigned first,
                  unsigned second, bool adjusted = true) const {
    return statistic.addData(parameters_, trajectory_, block, first, second, adjusted);
  }

  TemporaryFolder folder_;
  Velorn::InputParameter configuration_ = configurationWith(folder_ / "root");
  fs::path pages_ = configuration_.RootPath / configuration_.getStatisticPath();
  std::shared_ptr<Strandel::MyStorage> storage_ = configuration_.Storage;
  Velorn::Trajectory trajectory_ = trajectoryOf(Route());
  Velorn::SolverParameters parameters_ = threeStrips();
  std::mt19937_64 random_{4};
  std::uint8_t classOfNext_ = 10;
  double metersMoved_ = 1.6;
  ConsoleLines lines_;
  AdjustmentStatistic bevore_{"Bevore", strips, configuration_};
  AdjustmentStatistic after_{"After", strips, configuration_};
};

}  // namespace

TEST_F(Statistics, OfBothPhasesAgreeWithASlowTwin) {
  const auto pairs = blockOf(false, 0, 2, 300);
  const auto groundTruth = blockOf(true, 2, 3, 100, week + 1);  // where the trajectory does not go
  Twin bevore, after;
  const auto take = [&](CorrespondenceBlock made, unsigned first, unsigned second) {
    EXPECT_EQ(made.save(), "");
    const CorrespondenceBlock block(made.path(), storage_);
    ASSERT_EQ(block.errorText(), "");
    EXPECT_EQ(add(bevore_, block, first, second, false), "");
    EXPECT_EQ(add(after_, block, first, second, true), "");
    addTo(bevore, block, first, second, false);
    addTo(after, block, first, second, true);
  };
  take(pairs, 0, 2);
  take(groundTruth, 2, 3);
  ASSERT_GT(*std::max_element(after.horizontal[0].begin(), after.horizontal[0].end()), 4.0);

  const auto before = bevore_.figures(), then = after_.figures();
  expectFigures(before.pairs, bevore.pairs);
  expectFigures(before.groundTruth, bevore.groundTruth);
  expectMovements(before.movements, bevore);
  expectFigures(then.pairs, after.pairs);
  expectFigures(then.groundTruth, after.groundTruth);
  expectMovements(then.movements, after);
  EXPECT_EQ(then.movements[1].vertical, 0U);
  EXPECT_LT(then.pairs.moments.rms, 0.1 * before.pairs.moments.rms);
  // The classes go round over both sides, and those of the first one count.
  EXPECT_THAT(then.classCounts, ElementsAre(80, 80, 80, 80, 80));
  EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(Statistics, ABlockThatIsRefusedIsNotTakenInAtAll) {
  metersMoved_ = 0.1;  // so that every movement counts
  const auto pairs = blockOf(false, 0, 1, 5);
  EXPECT_EQ(add(after_, pairs, 0, 1), "");
  EXPECT_THAT(add(after_, pairs, 3, 1), AllOf(HasSubstr("c.kx"), HasSubstr("strip 3")));
  EXPECT_THAT(add(after_, pairs, 0, 4000000000U), HasSubstr("strip 4000000000"));
  EXPECT_EQ(add(after_, blockOf(false, 0, 1, 5, week + 1), 0, 1),
            "Error in scanner2world: Code: 1");
  EXPECT_THAT(lines_.back(), AllOf(HasSubstr("c.kx"), HasSubstr("strip 1")));

  const auto noNormal = blockOf(false, 0, 1, 5);
  (*noNormal.sideI().normals)[4] = {0, 0, std::nan("")};
  EXPECT_THAT(add(after_, noNormal, 0, 1), AllOf(HasSubstr("c.kx"), HasSubstr("correspondence 4")));
  const auto unequal = blockOf(false, 0, 1, 5), columns = blockOf(false, 0, 1, 5);
  unequal.sideJ().world->pop_back();
  EXPECT_EQ(add(after_, unequal, 0, 7), "AdjustmentStatistic::addData differnet size");
  columns.sideI().normals->pop_back();
  EXPECT_THAT(add(after_, columns, 0, 1), AllOf(HasSubstr("c.kx"), HasSubstr("4 of 5 points")));

  const auto atTheStart = blockOf(false, 0, 1, 5);
  (*atTheStart.sideI().times)[0] = Route().start;
  EXPECT_EQ(add(after_, atTheStart, 0, 1), "Error in scanner2world: Code: 1");
  configuration_.InterpolationFlag = false;
  AdjustmentStatistic lenient("After", strips, configuration_);
  EXPECT_EQ(add(lenient, atTheStart, 0, 1), "");

  const auto figures = after_.figures();
  EXPECT_EQ(figures.pairs.moments.count, 5U);
  EXPECT_EQ(figures.movements[0].vertical, 5U);
  EXPECT_EQ(figures.movements[1].vertical, 5U);
}

TEST_F(Statistics, MovementsThatAreNotFiniteAreCountedApartAndToldOnce) {
  metersMoved_ = 0.1;
  const auto block = blockOf(true, 1, 3, 5);
  (*block.sideI().world)[2].x = std::nan("");
  (*block.sideI().world)[3].z = std::numeric_limits<double>::infinity();
  (*block.sideI().world)[4].z = 1e300;
  EXPECT_EQ(add(after_, block, 1, 3), "");
  const auto movement = after_.figures().movements[1];
  EXPECT_EQ(movement.notFinite, 2U);
  EXPECT_EQ(movement.beyond, 1U);
  EXPECT_EQ(movement.vertical, 3U);
  EXPECT_THAT(lines_, ElementsAre(AllOf(HasSubstr("c.kx: 2 "), HasSubstr("strip 1"))));
}

TEST_F(Statistics, PagesOfBothPhasesLieInTheFolderAndNothingElse) {
  const auto block = blockOf(false, 0, 1, 3000), control = blockOf(true, 1, 3, 50);
  EXPECT_EQ(add(bevore_, block, 0, 1, false), "");
  EXPECT_EQ(add(bevore_, control, 1, 3, false), "");
  bevore_.hist();
  EXPECT_THAT(namesIn(pages_), ElementsAre("GroundTruth_Bevore.pdf", "Offset_q90_xy.pdf",
                                           "Offset_q90_z.pdf", "Strips_Bevore.pdf"));
  const std::string withoutMovement = contentOf(pages_ / "Offset_q90_z.pdf");

  EXPECT_EQ(add(after_, block, 0, 1), "");
  after_.hist();
  EXPECT_THAT(namesIn(pages_),
              ElementsAre("GroundTruth_After.pdf", "GroundTruth_Bevore.pdf", "Offset_q90_xy.pdf",
                          "Offset_q90_z.pdf", "Strips_After.pdf", "Strips_Bevore.pdf"));
  EXPECT_THAT(textOf(pages_ / "Strips_After.pdf"),
              AllOf(HasSubstr("Strips_After adjustment"), HasSubstr("differences [m]"),
                    HasSubstr("3 000")));
  EXPECT_THAT(textOf(pages_ / "GroundTruth_After.pdf"), HasSubstr("no data"));
  EXPECT_THAT(textOf(pages_ / "Offset_q90_z.pdf"),
              AllOf(HasSubstr("Offset along z (quantile 90%)"), HasSubstr("StripID [-]"),
                    HasSubstr("Offset [m]")));
  EXPECT_THAT(textOf(pages_ / "Offset_q90_xy.pdf"), HasSubstr("Spatial offset (quantile 90%)"));
  EXPECT_NE(contentOf(pages_ / "Offset_q90_z.pdf"), withoutMovement);
  EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(Statistics, OfNoStripsAndNoCorrespondencesArePages) {
  AdjustmentStatistic nothing("After", {}, configuration_);
  nothing.hist();
  EXPECT_THAT(textOf(pages_ / "Offset_q90_z.pdf"), HasSubstr("no data"));
  EXPECT_EQ(namesIn(pages_).size(), 4U);
  EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(Statistics, AFolderThatCannotBeUsedIsToldOnTheConsole) {
  fs::create_directories(configuration_.RootPath);
  writeContent(pages_, "a file");
  after_.hist();
  EXPECT_THAT(lines_,
              ElementsAre("AdjustmentStatistic::hist: can create directory",
                          testing::StartsWith("Error: "), "Invalid directory: " + pages_.string()));
  EXPECT_EQ(contentOf(pages_), "a file");
}

TEST_F(Statistics, WithoutTheDrawingProgramThereAreWarningsAndNoPages) {
  const OtherVariable path("PATH", folder_.path());
  after_.hist();
  EXPECT_THAT(lines_, testing::SizeIs(4));
  EXPECT_THAT(lines_, testing::Each(testing::StartsWith("Warning: ")));
  EXPECT_THAT(namesIn(pages_), IsEmpty());
}
