// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Runs that share strips, a root folder or a raster, and files that change under a run.
#include <array>
#include <functional>
#include <memory>

#include <unistd.h>

#include "flight/records/RunState.h"
#include "flight/strips/OutputPlaces.h"
#include "tests/flight/chain/SmallRun.h"

using namespace Velorn::Flights;

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;

class SharedInputs : public SeveralRuns {
 protected:
  SharedInputs() {
    settings.steps = {"+rasterize", "+correspondences"};
    settings.rounds = 1;
  }

  std::string made(const fs::path& root) const {
    std::string all;
    for (const char* part : {"02_planar", "02_raster", "03_correspondences"}) {
      std::vector<fs::path> files;
      for (const auto& entry : fs::directory_iterator(root / part)) files.push_back(entry);
      std::ranges::sort(files);
      for (const auto& file : files) all += file.filename().string() + contentOf(file);
    }
    return all;
  }

  /// Does something once, in the middle of a step.
  void during(const std::string& step, const std::function<void()>& action) {
    settings.force = true;
    const auto once = std::make_shared<bool>(false);
    watch.progress = [once, step, action](const std::string& what, std::size_t, std::size_t) {
      if (*once || what.find(step) == std::string::npos) return;
      *once = true;
      action();
    };
  }
};

TEST_F(SharedInputs, AreReadByTwoRunsAtOnceWhichEndAsEachDoesAlone) {
  auto other = settings;
  other.raster.neighbours = 24;
  other.match.seed = 2;
  const auto rootOf = [&](const char* name) { return folder / name; };
  settings.configuration().RootPath = rootOf("alone");
  done();
  other.configuration().RootPath = rootOf("other_alone");
  Flight(other).run();
  for (const auto& strip : settings.strips) {
    fs::permissions(strip, fs::perms::owner_read);
  }
  const auto before = contentOf(settings.strips[1]);

  settings.configuration().RootPath = rootOf("beside");
  other.configuration().RootPath = rootOf("other_beside");
  during("rasterizing strip_02", [&] { Flight(other).run(); });
  done();
  EXPECT_TRUE(made(rootOf("beside")) == made(rootOf("alone")));
  EXPECT_TRUE(made(rootOf("other_beside")) == made(rootOf("other_alone")));
  EXPECT_FALSE(made(rootOf("alone")) == made(rootOf("other_alone")));
  EXPECT_TRUE(contentOf(settings.strips[1]) == before);
}

TEST_F(SharedInputs, InOneRootAreRefusedToTheSecondRunWithTheNameOfTheFirst) {
  std::string told;
  during("matching", [&] {
    try {
      Flight(settings).run();
    } catch (const Error& error) {
      told = error.what();
    }
  });
  done();
  EXPECT_THAT(told, AllOf(HasSubstr((folder / "out").string() + ": in use by process"),
                          HasSubstr(std::to_string(getpid()))));
  EXPECT_EQ(RunState::in(folder / "out").phase, RunState::Phase::finished);
}

TEST_F(SharedInputs, OfAnotherMachineKeepTheRootAndThoseOfADeadProcessDoNot) {
  done();
  const auto lock = folder / "out/lock";
  writeContent(lock, "elsewhere 17 4711\n");
  EXPECT_THAT(refusal(),
              HasSubstr("process 17 of elsewhere; if that run is over, remove " + lock.string()));
  std::array<char, 256> host{};
  ASSERT_EQ(gethostname(host.data(), host.size() - 1), 0);
  writeContent(lock, std::string(host.data()) + " 17 4711\n");
  const auto out = folder / "out";
  const std::vector<fs::path> leftovers{out / "run.json.17-1.part",
                                        out / "01_status/steps/match_1.json.17-2.part",
                                        out / "02_raster/strip_01.kx.17-3.part"};
  // A user's file, and that of a variant whose run may be going on.
  const std::vector<fs::path> others{out / "02_raster/notes.part", out / "wide/run.json.17-4.part"};
  fs::create_directory(out / "wide");
  for (const auto& file : leftovers) writeContent(file, "half");
  for (const auto& file : others) writeContent(file, "kept");
  done();
  for (const auto& file : leftovers) EXPECT_FALSE(fs::exists(file)) << file;
  for (const auto& file : others) EXPECT_TRUE(fs::exists(file)) << file;
  EXPECT_EQ(contentOf(lock), "");
}

TEST_F(SharedInputs, ThatChangeDuringARunEndIt) {
  const fs::path strip = settings.strips[1], raster = folder / "out/02_raster/strip_01.kx";
  const auto replace = [](const fs::path& file) {
    const auto size = fs::file_size(file);
    fs::copy_file(file, file.string() + ".new");
    fs::rename(file.string() + ".new", file);
    EXPECT_EQ(fs::file_size(file), size);
  };
  for (const char* step : {"rasterizing strip_02", "rasterizing strip_03", "matching"}) {
    during(step, [&] { replace(strip); });
    EXPECT_THAT(refusal(), AllOf(HasSubstr(strip.string()), HasSubstr("changed while"))) << step;
    EXPECT_EQ(RunState::in(folder / "out").phase, RunState::Phase::failed);
  }
  during("matching", [&] { replace(raster); });
  EXPECT_THAT(refusal(), HasSubstr(raster.string() + ": is not as the run left it"));
  watch.progress = {};
  settings.force = false;
  settings.steps = {"+correspondences"};
  EXPECT_THAT(refusal(), HasSubstr(raster.string() + ": is not as the run left it"));
  settings.steps = {"+rasterize", "+correspondences"};
  done();
}

TEST_F(SharedInputs, ThatAreOneStripTwiceOrHalfAnImportAreRefused) {
  const auto strips = settings.strips;
  const auto second = (folder / "second.kx").string();
  fs::create_symlink(strips[0], second);
  settings.strips.push_back(second);
  EXPECT_THAT(refusal(), AllOf(HasSubstr("the same strip twice"), HasSubstr(second)));
  fs::remove(second);
  fs::copy_file(strips[0], second);
  EXPECT_THAT(refusal(), AllOf(HasSubstr("the same strip twice"), HasSubstr(strips[0])));
  settings.strips = strips;
  writeContent(markOfUnfinishedImport(flight()), "");
  EXPECT_THAT(refusal(), HasSubstr("the import has not come to its end"));
}

TEST_F(SharedInputs, AreRasterizedOnceForAllVariantsThatDoSoAlike) {
  settings.variant = "wide";
  const auto wide = done();
  EXPECT_EQ(skipped(), 0U);
  settings.variant = "narrow";
  settings.configuration().SearchRadius = 2.0;
  const auto narrow = done();
  EXPECT_EQ(skipped(), settings.strips.size()) << "rasters are there";
  EXPECT_NE(wide.rounds[0].matching->typicalDistance, narrow.rounds[0].matching->typicalDistance);
  settings.variant = "rough";
  settings.raster.maxRoughness = 0.1;
  done();
  EXPECT_EQ(skipped(), 0U);
  for (const char* name : {"wide", "narrow", "rough"}) {
    EXPECT_EQ(RunState::in(folder / "out" / name).phase, RunState::Phase::finished);
  }
  for (const char* name : {"a/b", ".hidden", "surfaces", "05_adjusted"}) {
    settings.variant = name;
    EXPECT_THAT(refusal(Error::BadSettings), HasSubstr("a variant has a name")) << name;
  }
}

}  // namespace
