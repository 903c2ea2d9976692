// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <set>
#include <sstream>
#include <tuple>

#include <gmock/gmock.h>

#include "flight/formats/LasFile.h"
#include "flight/formats/LittleEndian.h"
#include "flight/records/RunFolder.h"
#include "tests/flight/chain/SmallRun.h"
#include "tests/support/Refusal.h"
#include <velorn/CorrespondenceBlock.h>
#include <velorn/flight/WriteCorrespondences.h>

using namespace Velorn::Flights;

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;

/// A line of a table by the names of its columns; empty fields are no numbers.
using Line = std::map<std::string, std::string>;

std::vector<std::string> partsOf(const std::string& line) {
  std::vector<std::string> parts;
  std::stringstream stream(line);
  for (std::string part; std::getline(stream, part, ',');) parts.push_back(part);
  parts.resize(parts.size() + (line.ends_with(',') ? 1 : 0));
  return parts;
}

std::vector<Line> linesOf(const fs::path& csv) {
  std::istringstream stream(contentOf(csv));
  std::string text;
  std::getline(stream, text);
  const auto names = partsOf(text);
  std::vector<Line> lines;
  while (std::getline(stream, text)) {
    const auto parts = partsOf(text);
    EXPECT_EQ(parts.size(), names.size());
    Line& line = lines.emplace_back();
    for (std::size_t k = 0; k < names.size(); ++k) line[names[k]] = parts[k];
  }
  return lines;
}

double numberIn(const Line& line, const char* name) {
  const std::string& text = line.at(name);
  double number = std::nan("");
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

/// Of the correspondences with strips, or with the ground truth.
double rmsOf(const std::vector<Line>& lines, const char* name, bool isKnown, std::size_t& count) {
  double sum = 0.0;
  count = 0;
  for (const Line& line : lines) {
    if (line.at("fate") != "kept" || (line.at("patch") != "-1") != isKnown) continue;
    sum += std::pow(numberIn(line, name), 2);
    ++count;
  }
  return std::sqrt(sum / static_cast<double>(count));
}

/// Both strips, and what tells a correspondence of them from others.
using Correspondences = std::multiset<std::tuple<std::uint32_t, std::uint32_t, double, double>>;

Correspondences keptIn(const std::vector<Line>& lines) {
  Correspondences kept;
  for (const Line& line : lines) {
    if (line.at("fate") != "kept") continue;
    const bool isKnown = line.at("patch") != "-1";
    kept.emplace(numberIn(line, "strip_i"), numberIn(line, "strip_j"), numberIn(line, "time_i[s]"),
                 numberIn(line, isKnown ? "x_j[m]" : "time_j[s]"));
  }
  return kept;
}

Correspondences inBlocks(const std::vector<fs::path>& files, const FlightSettings& settings) {
  Correspondences all;
  for (const auto& file : files) {
    const Velorn::CorrespondenceBlock block(file, settings.configuration().Storage);
    unsigned i = 0, j = 0;
    EXPECT_EQ(std::sscanf(file.filename().c_str(), "c%u_%u", &i, &j), 2);
    for (std::uint32_t k = 0; k < block.size(); ++k) {
      const auto [first, second] = block.get(k);
      all.emplace(i, j, first.gpsTime,
                  block.isGroundTruth() ? second.worldPosition.x : second.gpsTime);
    }
  }
  return all;
}

class WrittenRounds : public SeveralRuns {
 protected:
  std::vector<Line> rowsOf(unsigned int round) {
    const auto file = folder / "rows.csv";
    written = writeCorrespondences(settings, {round, file, true}, {});
    return linesOf(file);
  }
  std::string refused(const CorrespondenceWish& wish, Error::Kind kind = Error::BadInput) {
    return refusalOf([&] { writeCorrespondences(settings, wish, {}); }, kind);
  }
  fs::path root() const { return folder / "out"; }

  WrittenCorrespondences written;
};

TEST_F(WrittenRounds, HoldWhatTheRunMatchedAndItsFitBeforeAndAfter) {
  const auto summary = done();
  const auto blocks = RunFolder(root()).blockFiles();
  const auto stamps = [&] {
    std::vector<fs::file_time_type> times;
    for (const auto& file : fs::recursive_directory_iterator(root())) {
      const bool isLock = file.path().filename() == "lock";
      if (file.is_regular_file() && !isLock) times.push_back(file.last_write_time());
    }
    return times;
  };
  const auto before = stamps();
  const auto last = rowsOf(0);
  EXPECT_EQ(written.round, 2U);
  EXPECT_EQ(stamps(), before) << "nothing of the run changes";
  EXPECT_EQ(keptIn(last), inBlocks(blocks, settings));

  for (const RoundReport& round : summary.rounds) {
    const auto rows = rowsOf(round.number);
    Funnel sum;
    for (const PairReport& pair : round.matching->pairs) sum += pair.sum();
    EXPECT_EQ(rows.size(), sum.candidates);
    const auto& [kept, tooFar, taken, angle, noPlane, rough, outlier, thinned] = written.counts;
    EXPECT_EQ(kept, sum.kept);
    EXPECT_EQ(tooFar + taken, sum.tooFar);
    EXPECT_EQ(noPlane + rough, sum.roughness);
    EXPECT_EQ(std::tie(angle, outlier, thinned), std::tie(sum.angle, sum.outlier, sum.thinned));
    const auto expectFit = [&](const char* column, bool isKnown, const Fit& fit) {
      std::size_t count = 0;
      EXPECT_NEAR(rmsOf(rows, column, isKnown, count), fit.rms, 1e-6);
      EXPECT_EQ(count, fit.count);
    };
    expectFit("after[m]", false, round.adjustment->after.pairs);
    expectFit("after[m]", true, round.adjustment->after.groundTruth);
    if (round.number > 1) continue;  // the first one begins with the delivered strips
    expectFit("before[m]", false, round.adjustment->before.pairs);
    expectFit("before[m]", true, round.adjustment->before.groundTruth);
    EXPECT_LT(round.adjustment->after.pairs.rms, 0.2 * round.adjustment->before.pairs.rms);
  }

  const auto las = root() / "correspondences_round2.las";
  EXPECT_EQ(writeCorrespondences(settings, {}, {}).file, las);
  const LasFile file(las);
  ASSERT_EQ(file.header().count, last.size());
  EXPECT_EQ(file.epsg(), 32632U);
  file.readBytes([&](std::uint64_t first, std::uint64_t count, const char* records) {
    for (std::size_t k = 0; k < count; ++k) {
      const char* const record = records + k * file.header().recordLength;
      const Line& line = last[first + k];
      const LasPoint point = lasPointIn(record, file.header());
      ASSERT_NEAR(point.place.x, numberIn(line, "x_i[m]"), 1e-4);
      ASSERT_NEAR(point.place.z, numberIn(line, "z_i[m]"), 1e-4);
      ASSERT_EQ(point.classification, numberIn(line, "class"));
      ASSERT_NEAR(point.time + 1e9 - 604800.0 * numberIn(line, "week_i"),
                  numberIn(line, "time_i[s]"), 1e-6);
      const char* const extra = record + 30;
      ASSERT_STREQ(nameOf(static_cast<Fate>(*extra)), line.at("fate").c_str());
      const double toJ = numberIn(line, "x_j[m]") - numberIn(line, "x_i[m]");
      const auto stored = double(numberAt<float>(extra + 9));
      ASSERT_TRUE(std::isnan(toJ) ? std::isnan(stored) : std::abs(stored - toJ) < 1e-5);
    }
  });
}

TEST_F(WrittenRounds, AreRefusedWhereTheyAreNotThoseOfTheProject) {
  EXPECT_THAT(refused({}, Error::MissingFile), HasSubstr("no such folder"));
  settings.steps = {"+rasterize"};
  done();
  EXPECT_THAT(refused({}), HasSubstr("did \"+rasterize\" and matched nothing"));
  settings.steps = FlightSettings().steps;
  done();
  EXPECT_THAT(refused({7, {}, false}),
              HasSubstr("there is no round 7; there are the rounds 1 to 2"));
  EXPECT_THAT(refused({0, folder / "rows.txt", false}, Error::BadSettings),
              HasSubstr("has to end in .las or .csv"));
  writeContent(folder / "rows.csv", "mine");
  EXPECT_THAT(refused({0, folder / "rows.csv", false}), HasSubstr("exists; --overwrite"));
  EXPECT_EQ(contentOf(folder / "rows.csv"), "mine");

  const auto project = settings;
  settings.configuration().ThresholdMaxAngle = 4;
  EXPECT_THAT(refused({}), AllOf(HasSubstr("adjust_1.json"), HasSubstr("\"max-angle = 5\""),
                                 HasSubstr("now there is \"max-angle = 4\"")));
  settings = project;
  settings.configuration().TypeModel = "BIAS";
  EXPECT_THAT(refused({1, {}, false}), HasSubstr("\"model = LINEAR\""))
      << "also where it would match the same";
  settings = project;
  settings.rounds = 9;
  EXPECT_EQ(rowsOf(0).size(), rowsOf(2).size()) << "the limit of the rounds does not count";
  std::ofstream(root() / "00_parameter/Parameter_round1.txt", std::ios::app) << "\n";
  EXPECT_THAT(refused({}), HasSubstr("Parameter_round1.txt: is not as the run left it"));
}

TEST_F(WrittenRounds, CanBeCoarseOrLeadToNoModel) {
  settings.coarseRounds = 1;
  settings.rounds = 1;
  const auto summary = done();
  ASSERT_EQ(summary.rounds.size(), 2U);
  for (const RoundReport& round : summary.rounds) {
    rowsOf(round.number);
    EXPECT_EQ(written.counts[0], round.matching->correspondences) << round.number;
    EXPECT_EQ(written.isAdjusted, round.adjustment.has_value());
  }
  settings.coarseRounds = 0;
  settings.configuration().NumberOfIterations = 1;
  EXPECT_THAT(refusal(Error::NoConvergence), HasSubstr("NO_CONVERGENCE"));
  const auto rows = rowsOf(0);
  EXPECT_EQ(written.round, 1U);
  EXPECT_FALSE(written.isAdjusted);
  ASSERT_FALSE(rows.empty());
  EXPECT_EQ(rows[0].at("after[m]"), "");
  settings.steps = {"+correspondences"};
  done();
  EXPECT_EQ(rowsOf(0).size(), rows.size());
}

}  // namespace
