// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <map>
#include <set>

#include <gmock/gmock.h>
#include <omp.h>

#include "platform/geomra/Degree.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include "tests/support/Refusal.h"

namespace {

using namespace Velorn::Flights;
using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
namespace fs = std::filesystem;
using testing::HasSubstr;

/// Name and bytes of every file below a folder.
std::map<std::string, std::string> filesIn(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    files[fs::relative(entry.path(), folder).string()] = contentOf(entry.path());
  }
  return files;
}

std::string refusal(const fs::path& folder, const Velorn::Flights::SimulationSettings& options) {
  return refusalOf([&] { make(folder, options); }, {});
}

TEST(Simulation, TheSameSeedGivesTheSameBytesForAnyNumberOfThreads) {
  const TemporaryFolder one, other, another;
  auto options = smallFlight();
  options.correspondences = 1000;
  const int threads = omp_get_max_threads();
  omp_set_num_threads(1);
  const auto summary = make(one.path(), options);
  omp_set_num_threads(3);
  make(other.path(), options);
  omp_set_num_threads(threads);
  const auto files = filesIn(one.path());
  EXPECT_TRUE(files == filesIn(other.path()));
  EXPECT_EQ(files.size(), summary.files);
  EXPECT_EQ(files.size(), 4 + 4 + 4 + 6 + 4);  // six pairs of strips, and ground truth for four

  ++options.seed;
  make(another.path(), options);
  for (const auto& [name, bytes] : filesIn(another.path())) {
    EXPECT_TRUE(files.contains(name)) << name;
    EXPECT_FALSE(files.at(name) == bytes) << name;
  }
}

TEST(Simulation, GroundTruthHasSteepPatchesInManyDirectionsOrFlatOnesOnly) {
  for (const bool flat : {false, true}) {
    const TemporaryFolder folder;
    auto options = smallFlight();
    options.flatControl = flat;
    make(folder.path(), options);
    const OneGridFile file(folder / "ground_truth.kx");
    const auto normals = file.world<vector>("NormalVector");
    const auto positions = file.world<point>("Positions");
    const auto strip = OneGridFile(folder / "strip_01.kx").world<point>("Positions");
    EXPECT_EQ(normals.size(), 24 * 16);
    std::size_t steep = 0, level = 0;
    std::set<int> sectors;
    for (std::size_t i = 0; i < normals.size(); ++i) {
      const vector& n = normals[i];
      // All 16 points of a patch lie on its plane: true heights, to the rounding of northings.
      EXPECT_NEAR(dot(positions[i] - positions[i / 16 * 16], n), 0.0, 1e-8);
      if (n.z == 1.0) ++level;
      if (n.z > std::cos(20.0 * Geomra::degree)) continue;
      ++steep;
      sectors.insert(static_cast<int>(std::floor(std::atan2(n.x, n.y) / 1.0471975511965976)));
    }
    EXPECT_EQ(level == normals.size(), flat);
    if (flat) continue;
    EXPECT_GE(steep * 10, normals.size() * 3);
    EXPECT_GE(sectors.size(), 4);
  }
}

TEST(Simulation, GroundTruthLiesAmongMeasuredPoints) {
  const TemporaryFolder folder;
  make(folder.path(), smallFlight());
  const auto control = OneGridFile(folder / "ground_truth.kx").world<point>("Positions");
  std::vector<point> measured;
  for (const auto& strip : stripsIn(folder.path())) {
    const auto points = OneGridFile(strip).world<point>("Positions");
    measured.insert(measured.end(), points.begin(), points.end());
  }
  for (std::size_t i = 0; i < control.size(); i += 16) {
    double nearest = 1e9;
    for (const auto& p : measured) {
      nearest = std::min(nearest, std::hypot(p.x - control[i].x, p.y - control[i].y));
    }
    EXPECT_LT(nearest, 12.0) << i;  // twice the distance of points in so sparse a strip
  }
}

TEST(Simulation, AFlightIsReplacedWholeAndOnlyOnRequest) {
  const TemporaryFolder folder, fresh;
  auto options = smallFlight();
  ++options.strips;
  options.correspondences = 1000;
  make(folder / "new/folder", options);
  --options.strips;
  options.correspondences = 0;
  EXPECT_TRUE(fs::exists(folder / "new/folder/03_correspondences/c0_1.kx"));
  writeContent(folder / "new/folder/strip_notes.txt", "mine");
  writeContent(folder / "new/folder/03_correspondences/c0.kx", "mine");
  const auto before = filesIn(folder / "new/folder");
  EXPECT_THAT(refusal(folder / "new/folder", options), HasSubstr("--overwrite"));
  EXPECT_TRUE(filesIn(folder / "new/folder") == before);

  make(folder / "new/folder", options, true);
  make(fresh.path(), options);
  auto expected = filesIn(fresh.path());  // the fifth strip and the correspondences are gone
  expected["strip_notes.txt"] = expected["03_correspondences/c0.kx"] = "mine";
  EXPECT_TRUE(filesIn(folder / "new/folder") == expected);
}

TEST(Simulation, AFolderThatCannotBeMadeIsNamed) {
  const TemporaryFolder folder;
  writeContent(folder / "file", "not a folder");
  const fs::path out = folder / "file/flight";
  EXPECT_THAT(refusal(out, smallFlight()), HasSubstr(out.string()));
  EXPECT_EQ(contentOf(folder / "file"), "not a folder");
}

TEST(Simulation, OptionsOutOfBoundsAreRefusedByNameBeforeAnythingIsWritten) {
  const TemporaryFolder folder;
  const auto refused = [&](auto change) {
    auto options = smallFlight();
    change(options);
    return refusal(folder / "flight", options);
  };
  using Options = SimulationSettings;
  EXPECT_THAT(refused([](Options& o) { o.points = 10; }), HasSubstr("--points"));
  EXPECT_THAT(refused([](Options& o) { o.strips = 1; }), HasSubstr("--strips"));
  EXPECT_THAT(refused([](Options& o) { o.rangeNoise = -0.01; }), HasSubstr("--range-noise"));
  EXPECT_THAT(refused([](Options& o) { o.errorScale = std::nan(""); }), HasSubstr("--error-scale"));
  EXPECT_THAT(refused([](Options& o) { o.onlyErrors = "lever arm"; }), HasSubstr("lever-arm,"));
  EXPECT_THAT(refused([](Options& o) { o.epsg = 4326; }), HasSubstr("4326"));
  EXPECT_THAT(refused([](Options& o) { o.correspondences = 99; }), HasSubstr("--correspondences"));
  EXPECT_FALSE(fs::exists(folder / "flight"));
}

}  // namespace
