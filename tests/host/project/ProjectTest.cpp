// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <locale>
#include <regex>

#include <gmock/gmock.h>

#include "host/project/ProjectKeys.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

/// The one that the program never leaves; flags and keys are read and written by it.
struct ProgramLocale {
  std::locale before = std::locale::global(std::locale::classic());
  ProgramLocale() = default;
  ~ProgramLocale() { std::locale::global(before); }
  ProgramLocale(const ProgramLocale&) = delete;
  ProgramLocale& operator=(const ProgramLocale&) = delete;
};

/// A command with the keys, and a folder with the files that projects name.
class ProjectFile : public testing::Test {
 protected:
  ProjectFile() {
    fs::create_directory(folder / "strips");
    for (const char* name : {"strips/b.kx", "strips/a.kx", "strips/c.kx", "t.kx", "g.kx"}) {
      writeContent(folder / name, "");
    }
  }

  void read(const std::string& text, const std::string& flags = "") {
    writeContent(file(), text);
    command.parse(flags);
    keys.read(file());
  }

  std::string refusal(const std::string& text, const std::string& flags = "") {
    CLI::App own;
    FlightSettings its;
    const ProjectKeys itsKeys(own, its);
    writeContent(file(), text);
    try {
      own.parse(flags);
      itsKeys.read(file());
      complete(its);
    } catch (const Error& failure) {
      return failure.what();
    }
    return "none";
  }

  fs::path file() const { return folder / "flight.velorn"; }

  ProgramLocale locale;
  TemporaryFolder folder;
  CLI::App command;
  FlightSettings project;
  ProjectKeys keys{command, project};
};

constexpr const char* goodFiles =
    "strips = \"strips/*.kx\"\ntrajectory = t.kx\nground-truth = g.kx\n";

TEST_F(ProjectFile, NamesFilesFromItsOwnFolderAndStripsAreSortedAsTheirIds) {
  read(std::string(goodFiles) +
       "lock = [0, 2]\nweights = [5, 1, 1, 2, 1]  # control first\n"
       "selection = \"Amplitude > 20 and ReturnNumber == 1\"\n"
       "relative = false\ncompress = true\n");
  complete(project);
  EXPECT_THAT(project.strips,
              ElementsAre(folder / "strips/a.kx", folder / "strips/b.kx", folder / "strips/c.kx"));
  EXPECT_EQ(project.trajectories.at(0), (folder / "t.kx").string());
  EXPECT_EQ(project.configuration().RootPath, folder / "rigorous");
  EXPECT_THAT(project.configuration().CellSizeWeights, ElementsAre(5, 1, 1, 2, 1));
  EXPECT_THAT(project.configuration().LockedStrips, ElementsAre(0, 2));
  EXPECT_EQ(project.configuration().SelectionStr, "Amplitude > 20 and ReturnNumber == 1");
  EXPECT_FALSE(project.model.isRelative);
  EXPECT_TRUE(project.compress);
  EXPECT_TRUE(project.configuration().Options.isSet("+adjustment"));
}

TEST_F(ProjectFile, GivesWayToFlags) {
  read(std::string(goodFiles) + "search-radius = 7\nmax-angle = 4\nroot = out\n",
       "--search-radius 2 --root here");
  EXPECT_EQ(project.configuration().SearchRadius, 2.0);
  EXPECT_EQ(project.configuration().ThresholdMaxAngle, 4.0);
  EXPECT_EQ(project.configuration().RootPath, "here");
}

TEST_F(ProjectFile, IsRefusedByTheNameOfItsKey) {
  const std::string good = goodFiles;
  EXPECT_EQ(refusal(good), "none");
  const std::pair<const char*, const char*> faults[] = {
      {"serch-radius = 3", "flight.velorn: serch-radius: no such key; did you mean search-radius?"},
      {"force = true", "force: no such key"},
      {"search-radius = wide", "search-radius = wide: "},
      {"search-radius = -1", "search-radius = -1: "},
      {"search-radius =", "search-radius has no value"},
      {"rounds = 0", "rounds = 0: "},
      {"search-radius = nan", "nan is not a number from 0.01 to 1000"},
      {"max-correspondences = -5", "-5 is not a number from 0"},
      {"root = \"a #1\"", "a value cannot hold a #"},
      {"weights = [1, 2]", "weights = 1, 2: "},
      {"model = CUBIC", "model = CUBIC: "},
      {"min-cell-size = 0.001", "0.001 is not a number from 0.01"},
      {"steps = \"+rasterise\"", "steps: +rasterise: not one of"},
      {"steps = \"+rasterize +adjustment\"", "+adjustment takes the model"},
      {"lock = 3", "--lock 3: there are 3 strips"},
      {"[match]\nsearch-radius = 3", "no sections"},
      {"seed = 1\nmax-angle = 3\nseed = 2", "seed is there twice"},
      {"selection = \"Amplitude > 2\"\namplitude = [1, 1, 1, 1, 1]", "Use only one parameter"}};
  for (const auto& [line, message] : faults) {
    EXPECT_THAT(refusal(good + line + "\n"), HasSubstr(message)) << line;
  }
}

TEST_F(ProjectFile, OfARelativeAdjustmentAsksForNoGroundTruth) {
  command.parse("--strips strips/*.kx --trajectory t.kx --relative");
  const std::string text = keys.text(file());
  EXPECT_THAT(text, AllOf(HasSubstr("\nrelative = true\n"),
                          HasSubstr("\n# ground-truth = ground_truth.kx\n")));
}

TEST_F(ProjectFile, MayLieInAFolderWithBrackets) {
  fs::create_directory(folder / "[2026] \\a");
  fs::rename(folder / "strips", folder / "[2026] \\a/strips");
  project.strips = {(folder / "[2026] \\a/strips/?.kx").string()};
  project.trajectories = {(folder / "t.kx").string()};
  project.groundTruth = (folder / "g.kx").string();
  complete(project);
  EXPECT_EQ(project.strips.size(), 3U);
}

TEST_F(ProjectFile, IsRefusedForItsFiles) {
  EXPECT_THAT(refusal("trajectory = t.kx\nground-truth = g.kx\n"), HasSubstr("strips: none"));
  EXPECT_THAT(refusal("strips = \"none/*.kx\"\ntrajectory = t.kx\n"), HasSubstr("no file matches"));
  EXPECT_THAT(refusal("strips = strips/a.kx\ntrajectory = u.kx\nground-truth = g.kx\n"),
              HasSubstr("trajectory: " + (folder / "u.kx").string() + ": no such file"));
  EXPECT_THAT(refusal("strips = strips/a.kx\ntrajectory = t.kx\n"), HasSubstr("relative = true"));
  EXPECT_EQ(refusal("strips = strips/a.kx\ntrajectory = t.kx\nrelative = true\n"), "none");
  fs::create_directory(folder / "more");
  fs::copy(folder / "strips/a.kx", folder / "more");
  EXPECT_THAT(refusal("strips = [\"strips/*.kx\", more/a.kx]\ntrajectory = t.kx\n"
                      "ground-truth = g.kx\n"),
              HasSubstr("two files of one name"));
}

TEST_F(ProjectFile, AsItIsWrittenReadsBackAlsoWithEveryDefaultAndExampleUncommented) {
  command.parse("--strips strips/*.kx --trajectory t.kx --ground-truth g.kx --max-angle 4.5");
  const std::string text = keys.text("flight.velorn");
  EXPECT_THAT(text, HasSubstr("\nmax-angle = 4.5\n"));
  EXPECT_THAT(keys.text("sub/flight.velorn"), HasSubstr("\ntrajectory = \"../t.kx\"\n"));
  EXPECT_THAT(text, HasSubstr("\n# search-radius = 3\n"));
  EXPECT_EQ(refusal(text), "none");
  const std::string uncommented = std::regex_replace(text, std::regex("\n# ([a-z-]+ = )"), "\n$1");
  EXPECT_EQ(refusal(uncommented), "none");
  writeContent(file(), uncommented);
  keys.read(file());
  EXPECT_EQ(project.configuration().CellSizeWeights, ModelSettings().configuration.CellSizeWeights);
  EXPECT_EQ(project.raster.neighbours, RasterSettings().neighbours);
}

}  // namespace
