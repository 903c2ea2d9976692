// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <locale>
#include <regex>
#include <set>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "host/project/FirstForm.h"
#include "host/project/ProjectFile.h"
#include "host/project/SettingFlags.h"
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
    addFlags(command, project, isAny);
    fs::create_directory(folder / "strips");
    for (const char* name : {"strips/b.kx", "strips/a.kx", "strips/c.kx", "t.kx", "g.kx"}) {
      writeContent(folder / name, "");
    }
  }

  void read(const std::string& text, const std::string& flags = "") {
    writeContent(file(), text);
    command.parse(flags);
    readProject(file(), givenFlags(command), project);
  }

  std::string written(const fs::path& to) { return projectText(to, givenFlags(command), project); }

  std::string refusal(const std::string& text, const std::string& flags = "") {
    CLI::App own;
    FlightSettings its;
    addFlags(own, its, isAny);
    writeContent(file(), text);
    try {
      own.parse(flags);
      readProject(file(), givenFlags(own), its);
      complete(its);
    } catch (const Error& failure) {
      return failure.what();
    }
    return "none";
  }

  static bool isAny(const Setting& /*setting*/) { return true; }

  fs::path file() const { return folder / "flight.velorn"; }

  ProgramLocale locale;
  TemporaryFolder folder;
  CLI::App command;
  FlightSettings project;
};

constexpr const char* goodFiles =
    "strips = [\"strips/*.kx\"]\ntrajectory = \"t.kx\"\nground-truth = 'g.kx'\n";

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
  read(std::string(goodFiles) + "search-radius = 7\nmax-angle = 4\nroot = \"out\"\n",
       "--search-radius 2 --root here");
  EXPECT_EQ(project.configuration().SearchRadius, 2.0);
  EXPECT_EQ(project.configuration().ThresholdMaxAngle, 4.0);
  EXPECT_EQ(project.configuration().RootPath, "here");
}

TEST_F(ProjectFile, IsRefusedByItsLineAndTheNameOfItsKey) {
  const std::string good = goodFiles;
  EXPECT_EQ(refusal(good), "none");
  const std::pair<const char*, const char*> faults[] = {
      {"serch-radius = 3",
       "flight.velorn: line 4: serch-radius: no such key; did you mean search-radius?"},
      {"force = true", "force: no such key"},
      {"GridName = \"a\"", "GridName: no such key"},
      {"search-radius = \"wide\"", "search-radius: \"wide\" stands there, a number is needed"},
      {"search-radius = [3, 4]", "search-radius: a list stands there, one value is needed"},
      {"search-radius = -1",
       "flight.velorn: line 4: search-radius: -1 is not a number from 0.01 to 1000"},
      {"search-radius =", "line 4: is no TOML: "},
      {"rounds = 0", "rounds: 0 is not a number from 1 to 20"},
      {"rounds = 4294967297", "rounds: 4294967297 is not a number from"},
      {"rounds = 2.5", "rounds: 2.5 stands there, a whole number is needed"},
      {"relative = 2", "relative: 2 stands there, true or false is needed"},
      {"search-radius = nan", "nan is not a number from 0.01 to 1000"},
      {"max-correspondences = -5", "-5 is not a number from 0"},
      {"root = \"a", "line 4: is no TOML: "},
      {"root = \"a\\u0007\" # \xE4", "line 4: is no TOML: "},
      {"selection = 5", "selection: 5 stands there, a text in quotes is needed"},
      {"weights = [1, 2]", "weights: has 2 entries"},
      {"model = \"CUBIC\"", "model: CUBIC: not one of BIAS"},
      {"min-cell-size = 0.001", "0.001 is not a number from 0.01"},
      {"steps = \"+rasterise\"", "steps: +rasterise: not one of"},
      {"steps = \"+rasterize +adjustment\"", "+adjustment takes the model"},
      {"lock = 3", "--lock 3: there are 3 strips"},
      {"lock = [[1]]", "lock: a project file has no sections"},
      {"interval = 2026-01-01", "interval: a project file has no sections"},
      {"[match]\nsearch-radius = 3", "line 4: match: a project file has no sections"},
      {"seed = 1\nmax-angle = 3\nseed = 2", "line 6: is no TOML: "},
      {"selection = \"Amplitude > 2\"\namplitude = [1, 1, 1, 1, 1]", "Use only one parameter"}};
  for (const auto& [line, message] : faults) {
    EXPECT_THAT(refusal(good + line + "\n"), HasSubstr(message)) << line;
  }
  EXPECT_THAT(refusal(good + "rounds = 0\n", "--rounds 3"), HasSubstr("rounds: 0")) << "unused";
}

TEST_F(ProjectFile, HoldsAnyTextAndWritesItSo) {
  const std::string odd =
      "a # \"b\" \\ c's\tstra\xC3\x9F"
      "e\n/\x7F.kx";
  command.parse(std::vector<std::string>{odd, "--root"});
  writeContent(file(), written(file()));
  CLI::App own;
  FlightSettings its;
  addFlags(own, its, isAny);
  readProject(file(), {}, its);
  EXPECT_EQ(its.configuration().RootPath, fs::absolute(odd));
  project.configuration().RootPath =
      "stra\xDF"
      "e";
  EXPECT_THROW(written(file()), Error) << "no UTF-8";
}

TEST_F(ProjectFile, OfVersion01IsReadAsItWasMeant) {
  read(
      "# A project of `velorn run`.\nstrips = \"strips/*.kx\"\ntrajectory = t.kx\n"
      "ground-truth = g.kx  # control\nroot = \"out folder\"\nmodel = BIAS\nlock = [0, 2]\n"
      "hold = [scales, lever-arm]\nweights = 5, 1, 1, 2, .5\nonto-planes = 0\nrelative = true\n"
      "steps = [+rasterize,+correspondences]\nselection = \"Amplitude > 20, or so\"\n");
  EXPECT_EQ(project.trajectories.at(0), (folder / "t.kx").string());
  EXPECT_EQ(project.configuration().RootPath, folder / "out folder");
  EXPECT_EQ(project.configuration().TypeModel, "BIAS");
  EXPECT_THAT(project.model.held, ElementsAre("scales", "lever-arm"));
  EXPECT_THAT(project.configuration().CellSizeWeights, ElementsAre(5, 1, 1, 2, 0.5));
  EXPECT_THAT(project.steps, ElementsAre("+rasterize", "+correspondences"));
  EXPECT_EQ(project.configuration().SelectionStr, "Amplitude > 20, or so");
  EXPECT_FALSE(project.match.ontoPlanes);
  EXPECT_TRUE(project.model.isRelative);
  EXPECT_EQ(tomlOfFirstForm("a = b\nb = \"c\nc = [d"), "a = \"b\"\nb = \"c\nc = \"[d\"\n")
      << "what is open stays open";
}

TEST_F(ProjectFile, OfARelativeAdjustmentAsksForNoGroundTruth) {
  command.parse("--strips strips/*.kx --trajectory t.kx --relative");
  EXPECT_THAT(written(file()), AllOf(HasSubstr("\nrelative = true\n"),
                                     HasSubstr("\n# ground-truth = \"ground_truth.kx\"\n")));
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
  const auto of = [](const char* strips, const char* more) {
    return fmt::format("strips = {}\ntrajectory = \"t.kx\"\n{}\n", strips, more);
  };
  EXPECT_THAT(refusal("trajectory = \"t.kx\"\nground-truth = \"g.kx\"\n"),
              HasSubstr("strips: none"));
  EXPECT_THAT(refusal(of("\"none/*.kx\"", "")), HasSubstr("no file matches"));
  EXPECT_THAT(refusal("strips = \"strips/a.kx\"\ntrajectory = \"u.kx\"\nground-truth = \"g.kx\"\n"),
              HasSubstr("trajectory: " + (folder / "u.kx").string() + ": no such file"));
  EXPECT_THAT(refusal(of("\"strips/a.kx\"", "")), HasSubstr("relative = true"));
  EXPECT_EQ(refusal(of("\"strips/a.kx\"", "relative = true")), "none");
  fs::create_directory(folder / "more");
  fs::copy(folder / "strips/a.kx", folder / "more");
  EXPECT_THAT(refusal(of("[\"strips/*.kx\", \"more/a.kx\"]", "ground-truth = \"g.kx\"")),
              HasSubstr("two files of one name"));
}

TEST_F(ProjectFile, AsItIsWrittenReadsBackAlsoWithEveryDefaultAndExampleUncommented) {
  command.parse("--strips strips/*.kx --trajectory t.kx --ground-truth g.kx --max-angle 4.5");
  const std::string text = written("flight.velorn");
  EXPECT_THAT(text, AllOf(HasSubstr("\nmax-angle = 4.5\n"), HasSubstr("\nroot = \"rigorous\"\n")));
  EXPECT_THAT(written("sub/flight.velorn"), HasSubstr("\ntrajectory = [\"../t.kx\"]\n"));
  EXPECT_THAT(text, HasSubstr("\n# max-roughness = 0\n"));
  EXPECT_EQ(refusal(text), "none");
  const std::string uncommented = std::regex_replace(text, std::regex("\n# ([a-z-]+ = )"), "\n$1");
  EXPECT_EQ(refusal(uncommented), "none");
  writeContent(file(), uncommented);
  FlightSettings again;
  readProject(file(), {}, again);
  const std::set<std::string> others{"strips",    "trajectory", "ground-truth", "root",
                                     "max-angle", "lock",       "hold",         "selection"};
  for (const auto& setting : settingsTable()) {
    if (others.contains(setting.name)) continue;
    EXPECT_EQ(valueText(setting, again), valueText(setting, {})) << setting.name;
  }
}

}  // namespace
