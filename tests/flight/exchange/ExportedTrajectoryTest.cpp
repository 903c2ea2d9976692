// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "tests/flight/exchange/ExportedFlight.h"

namespace {

TEST_F(ExportedFlight, HasATrajectoryThatIsCorrectedWhileStripsWereMeasured) {
  takeModel();
  done();
  const auto zone = Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(32632);
  const auto projected = [&](const SbetRecord& record) {
    return Tessaly::transverseMercatorProjection({record.longitude, record.latitude, record.height},
                                                 zone, false);
  };
  const auto records = readSbet(options.output / "trajectory.sbet");
  ASSERT_EQ(records.size(), flown.size());
  for (std::size_t k = 0; k < records.size(); ++k) {
    const SbetRecord &was = flown[k], &is = records[k];
    EXPECT_NEAR(is.time, was.time, 1e-9);
    const double since = 0.1 * static_cast<double>(k);
    const auto within = [&](double first, double last) { return since > first && since < last; };
    const bool isA = within(0.95, 3.0), isB = within(5.95, 8.0);
    const bool isNone = since < 0.85 || within(3.15, 5.85) || since > 8.15;
    if (!isA && !isB && !isNone) continue;  // which records are next to a strip hangs on roundings
    const auto values = correctionsOf(isB ? 1 : 0);
    const double dt = was.time - (isB ? starts[1] + week : starts[0]);
    std::array<double, 6> expected{};
    for (std::size_t j = 0; j < 6 && !isNone; ++j) {
      expected[j] = values[4 * j] + values[4 * j + 1] * dt;
    }
    const vector moved = projected(is) - projected(was);
    EXPECT_NEAR(moved.x, expected[0], 1e-7);
    EXPECT_NEAR(moved.y, expected[1], 1e-7);
    EXPECT_NEAR(moved.z, expected[2], 1e-7);
    EXPECT_NEAR(is.roll - was.roll, expected[3], 1e-12);
    EXPECT_NEAR(is.pitch - was.pitch, expected[4], 1e-12);
    EXPECT_NEAR(is.heading - was.heading, expected[5], 1e-12);
  }
}

TEST_F(ExportedFlight, IsGeoreferencedByItsTrajectoryAndMountingAsByTheAdjustment) {
  takeModel();
  done();
  const auto mounting =
      nlohmann::json::parse(std::ifstream(options.output / "mounting.json"), nullptr, true);
  const auto angle = [&](const char* name) { return mounting["misalignment"][name].get<double>(); };
  const auto arm = [&](const char* name) { return mounting["lever_arm"][name].get<double>(); };
  const point misalignment{angle("roll_deg"), angle("pitch_deg"), angle("yaw_deg")},
      lever{arm("forward_m"), arm("right_m"), arm("down_m")};
  EXPECT_NEAR(misalignment.y, -0.002 * 180 / 3.14159265358979, 1e-12);
  EXPECT_EQ(lever.z, leverArm.z);
  EXPECT_THAT(
      contentOf(options.output / "mounting.txt"),
      AllOf(HasSubstr("lever_arm_forward     0.1 m\n"), HasSubstr("scale_angle_2         0 1\n")));

  fs::create_directory(folder / "again");
  const auto containers =
      saveTrajectories({readSbet(options.output / "trajectory.sbet"), {}}, weekNumber, 32632, lever,
                       misalignment, folder / "again");
  Velorn::Trajectory trajectory(containers);
  ASSERT_EQ(trajectory.importTrajectory(), "");
  Velorn::SolverParameters parameters({"strip"}, Velorn::InputParameter());
  ASSERT_EQ(parameters.setEmptySections(lever, misalignment), "");
  for (const auto& container : options.strips) {
    const GridFile strip(container);
    const auto adjusted = strip.world<point>("Positions").whole();
    std::vector<point> again(adjusted->size());
    std::vector<vector> beams(adjusted->size());
    ASSERT_EQ(scanner2world(parameters, trajectory, *strip.scanner<point>("Positions").whole(),
                            *strip.world<double>("GPSTime").whole(), strip.week(), 0, again, beams,
                            0.0, false),
              "");
    for (std::size_t k = 0; k < again.size(); ++k) {
      EXPECT_LT(length(again[k] - (*adjusted)[k]), 1e-6);
    }
  }
}

TEST_F(ExportedFlight, TellsOfStripsWithoutCorrectionsAndCountsTheCorrectedRecords) {
  takeModel();
  options.strips.pop_back();
  const auto report = done();
  ASSERT_EQ(told.size(), 1U);
  EXPECT_THAT(told[0], HasSubstr("1 of 2 strips of the adjustment are not among those named"));
  const auto records = readSbet(options.output / "trajectory.sbet");
  const auto corrected =
      std::inner_product(records.begin(), records.end(), flown.begin(), 0, std::plus<>(),
                         [](const SbetRecord& a, const SbetRecord& b) {
                           return std::abs(a.heading - b.heading) > 1e-6 ? 1 : 0;
                         });
  EXPECT_THAT(report.files.at(2).content,
              HasSubstr(fmt::format("{} of 101 records corrected", corrected)));

  writeContent(model.parameters, parameterText(true));
  options.overwrite = true;
  EXPECT_THAT(done().files.at(2).content, HasSubstr("0 of 101 records corrected"));
}

TEST_F(ExportedFlight, TellsOfTwoStripsOfOneTimeAndCorrectsByTheOneNamedFirst) {
  takeModel();
  options.wishes = Wishes{false, false, true};
  done();
  const auto undisputed = contentOf(options.output / "trajectory.txt");
  StripColumns other;
  other.week = weekNumber;
  other.world.resize(2);
  other.times = {begin + 2.05, begin + 2.35};
  for (const std::string name : {"b.kx", "stranger.kx"}) {
    saveStrip(folder / name, other);
  }
  options.output = folder / "disputed";
  options.strips = {options.strips[0], folder / "b.kx", folder / "stranger.kx"};
  const auto report = done();
  ASSERT_EQ(told.size(), 2U);
  EXPECT_THAT(told[0], HasSubstr("stranger.kx: not in the adjustment"));
  EXPECT_THAT(told[1], HasSubstr("trajectory: 3 records belong to two strips"));
  const auto disputed = contentOf(options.output / "trajectory.txt");
  const auto ofA = [](const std::string& text) { return text.substr(0, text.find("\n604800")); };
  EXPECT_EQ(ofA(disputed), ofA(undisputed));
  EXPECT_NE(disputed, undisputed);  // nothing corrects b's own time any more
}

}  // namespace
