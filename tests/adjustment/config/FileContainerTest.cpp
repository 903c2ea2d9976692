// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <vector>

#include <gmock/gmock.h>

#include "platform/morvane/Console.h"
#include "tests/support/ConsoleLines.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/FileContainer.h>

namespace fs = std::filesystem;
using testing::ElementsAre, testing::IsEmpty;
using Velorn::FileContainer;

namespace {

std::shared_ptr<Plome::StringList> list(std::vector<std::string> names) {
  return std::make_shared<Plome::StringList>(std::move(names));
}

/// A folder with the strips a, b, c, the ground truths g, h and the trajectories t, u.
class Files : public testing::Test {
 protected:
  Files() {
    for (const auto* name : {"a", "b", "c", "g", "h", "t", "u"}) writeContent(at(name), "");
  }

  std::string at(const std::string& name) const { return (folder / (name + ".kx")).string(); }

  TemporaryFolder folder;
  FileContainer container;
  ConsoleLines console;
};

}  // namespace

TEST_F(Files, AreNumberedStripsFirstThenGroundTruthThenTrajectories) {
  EXPECT_EQ(container.add(list({at("b"), at("a"), at("b")}), at("g"), at("u") + "," + at("t")), "");
  EXPECT_THAT(console, ElementsAre("Warning: Duplicated File: " + at("b")));
  EXPECT_THAT(container.getStripFiles(), ElementsAre(at("a"), at("b")));
  EXPECT_THAT(container.getGroundTruth(), ElementsAre(at("g")));
  EXPECT_THAT(container.getTrajectories(), ElementsAre(at("u"), at("t")));
  EXPECT_THAT(container.getStripFilesAndGroundTruth(), ElementsAre(at("a"), at("b"), at("g")));
  EXPECT_THAT(container.getStripFilesAndGroundTruthRaster("02_raster"),
              ElementsAre("02_raster/a.kx", "02_raster/b.kx", "02_raster/g.kx"));
  EXPECT_EQ(container.getFileAccordingID(1), at("b"));
  EXPECT_EQ(container.getFileAccordingID(4), at("t"));
  EXPECT_FALSE(container);
}

TEST_F(Files, AreSortedAndComparedByPathComponents) {
  fs::create_directory(folder / "s");
  fs::create_directory(folder / "s-1");  // as a text "s-1/" comes before "s/"
  const std::string inner = (folder / "s").string(), other = (folder / "s-1").string();
  for (const auto& parent : {inner, other}) writeContent(parent + "/z.kx", "");
  EXPECT_EQ(
      container.add(list({other + "/z.kx", inner + "/z.kx", inner + "//z.kx"}), at("g"), at("t")),
      "");
  EXPECT_THAT(container.getStripFiles(), ElementsAre(inner + "/z.kx", other + "/z.kx"));
  EXPECT_THAT(console, ElementsAre("Warning: Duplicated File: " + inner + "//z.kx"));
}

TEST_F(Files, ThatAreMissingAreNamed) {
  const auto strips = list({at("a")});
  const auto fault = [](const auto&... arguments) { return FileContainer().add(arguments...); };
  EXPECT_EQ(fault(nullptr, at("g"), at("t")), "FileContainer::add: No strips provided");
  EXPECT_EQ(fault(list({}), at("g"), at("t")), "FileContainer::add: No strips provided");
  EXPECT_EQ(fault(list({at("a"), at("x")}), at("g"), at("t")),
            "FileContainer::add: Strip file does not exist: " + at("x"));
  EXPECT_EQ(fault(strips, "", at("t")), "FileContainer::add: no ground truth available: ");
  EXPECT_EQ(fault(strips, at("x"), at("t")),
            "FileContainer::add: Ground truth file does not exist: " + at("x"));
  EXPECT_EQ(fault(strips, at("g") + ",", at("t")),
            "FileContainer::add: Ground truth file does not exist: ");
  EXPECT_EQ(fault(strips, at("g"), at("t") + ", " + at("u")),
            "FileContainer::add: trajectory does not exist:  " + at("u"));
  // A component of 300 characters: the system answers with an error, not with "no such file".
  const std::string tooLong(300, 'x');
  EXPECT_EQ(fault(list({tooLong}), at("g"), at("t")),
            "FileContainer::add: Strip file does not exist: " + tooLong);
}

TEST_F(Files, AddedBeforeAFaultStay) {
  EXPECT_EQ(container.add(list({at("b"), at("a")}), at("g"), ""),
            "FileContainer::add: No trajectories provided");
  EXPECT_THAT(container.getStripFilesAndGroundTruth(), ElementsAre(at("a"), at("b"), at("g")));
  EXPECT_THAT(container.getTrajectories(), IsEmpty());
  EXPECT_FALSE(container);
}

TEST_F(Files, WithASecondGroundTruthMakeTheContainerTrueAndAreNotReadBeyondTheirTypes) {
  EXPECT_EQ(container.add(list({at("a")}), at("g") + "," + at("h"), at("t")),
            "FileContainer::add: So far only ONE ground truth file is allowed");
  EXPECT_TRUE(container);
  EXPECT_THAT(container.getGroundTruth(), ElementsAre(at("g")));
  EXPECT_THAT(container.getTrajectories(), IsEmpty());
  EXPECT_THAT(container.getStripFilesAndGroundTruthRaster("r"), ElementsAre("r/a.kx", "r/g.kx"));
  EXPECT_EQ(container.getFileAccordingID(2), at("h"));
  EXPECT_FALSE(container.isFittingPlane(at("h")));
  container.writeStripID(folder / "ids.txt", false);
  EXPECT_EQ(contentOf(folder / "ids.txt"), "id: 0 file: " + at("a") + " type: strip\nid: 1 file: " +
                                               at("g") + " type: groundtruth\n");
}

TEST_F(Files, AreAddedOnceOnly) {
  ASSERT_EQ(container.add(list({at("b")}), at("g"), at("t")), "");
  EXPECT_EQ(container.add(list({at("a")}), at("h"), at("u")),
            "FileContainer::add: The container holds files already");
  EXPECT_EQ(container.getFileAccordingID(0), at("b"));
  EXPECT_THAT(container.getStripFilesAndGroundTruth(), ElementsAre(at("b"), at("g")));

  FileContainer stillEmpty;
  ASSERT_NE(stillEmpty.add(list({at("x")}), at("g"), at("t")), "");
  EXPECT_FALSE(stillEmpty);
  EXPECT_EQ(stillEmpty.add(list({at("a")}), at("g"), at("t")), "");
}

TEST_F(Files, FitThePlaneByTheFileNameOfTheGroundTruth) {
  EXPECT_FALSE(container.isFittingPlane(at("g")));
  ASSERT_EQ(container.add(list({at("a")}), at("g"), at("t")), "");
  EXPECT_TRUE(container.isFittingPlane("02_raster/g.kx"));
  EXPECT_FALSE(container.isFittingPlane("g.kx/a.kx"));
  EXPECT_FALSE(container.isFittingPlane(at("a")));
}

TEST_F(Files, AreWrittenWithTheirIds) {
  ASSERT_EQ(container.add(list({at("c"), at("b"), at("a")}), at("g"), at("t")), "");
  const std::string content = "id: 0 file: " + at("a") + " type: strip\nid: 1 file: " + at("b") +
                              " type: strip\nid: 2 file: " + at("c") +
                              " type: strip\nid: 3 file: " + at("g") +
                              " type: groundtruth\nid: 4 file: " + at("t") + " type: traj\n";

  writeContent(folder / "ids.txt", std::string(5000, 'x'));  // is replaced whole
  container.writeStripID(folder / "ids.txt", false);
  EXPECT_EQ(contentOf(folder / "ids.txt"), content);
  EXPECT_THAT(console, IsEmpty());
  container.writeStripID(folder / "ids.txt", true);
  EXPECT_EQ(contentOf(folder / "ids.txt"), content);
  EXPECT_THAT(console, testing::SizeIs(5));
  EXPECT_EQ(console.back() + "\n", content.substr(content.rfind("id: ")));
}

TEST_F(Files, ThatCannotBeOpenedPassSilentlyAndAFullDiskDoesNot) {
  ASSERT_EQ(container.add(list({at("a")}), at("g"), at("t")), "");
  container.writeStripID(folder / "no/such.txt", true);
  EXPECT_THAT(console, IsEmpty());
  container.writeStripID("/dev/full", false);
  EXPECT_THAT(console,
              ElementsAre("FileContainer::writeStripID: Failed to write the file:/dev/full"));
}

// Without a folder of its own: the process ends before it could be removed.
TEST(FileContainerDeathTest, AnIdOutOfRangeEndsTheProcessWithStatus2) {
  const Morvane::ConsoleRedirection redirection(
      [](std::string_view line) { std::fprintf(stderr, "%s\n", std::string(line).c_str()); });
  FileContainer container;
  ASSERT_EQ(container.add(list({".", ".."}), "/", "/dev"), "");
  EXPECT_EQ(container.getFileAccordingID(3), "/dev");
  EXPECT_EXIT(container.getFileAccordingID(4), testing::ExitedWithCode(2),
              "^fs::path FileContainer::getFileAccordingID: Error file id exceeds range of file "
              "list!\nID:4 files.size\\(\\) 4\n$");
}
