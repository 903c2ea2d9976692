// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A folder of correspondences of three strips with one section each, and an adjustment over it.
#pragma once

#include <fstream>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/plome/StringList.h"
#include "tests/support/ConsoleLines.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/CeresOptimization.h>
#include <velorn/CorrespondenceBlock.h>

class Correspondences : public testing::Test {
 protected:
  using Being = Velorn::SphericalBeing;

  Correspondences() {
    configuration.RootPath = folder.path();
    std::filesystem::create_directory(folder / "03_correspondences");
    std::filesystem::create_directory(folder / "01_status");
    for (const char* name : {"g.kx", "t.kx"}) writeContent(folder / name, "");
    Plome::StringList names;
    for (const char* name : {"a.kx", "b.kx", "c $(exit 1)`exit 1`\"\\$PATH.kx"}) {
      writeContent(folder / name, "");
      strips.push_back(folder / name);
      names.add((folder / name).string());
    }
    EXPECT_EQ(files.add(std::make_shared<Plome::StringList>(names), (folder / "g.kx").string(),
                        (folder / "t.kx").string()),
              "");
    parameters = {strips, configuration};
    EXPECT_EQ(parameters.setEmptySections({}, {}), "");
  }

  static Being being(std::uint8_t classCode = 11) {
    return {{600000, 5250000, 450}, {600, 10, 20}, 1000.0, {0, 0, 1}, {0, 0, 1}, classCode};
  }

  /// Writes a block of `count` equal correspondences.
  void write(const std::string& name, std::size_t count, bool groundTruth, const Being& first,
             const Being& second) const {
    const auto path = folder / "03_correspondences" / name;
    Velorn::CorrespondenceBlock block(path, groundTruth, 2318, 2318, configuration.Storage);
    for (std::size_t i = 0; i < count; ++i) block.add(first, second);
    const auto fault = block.save();
    if (!fault.empty()) throw std::runtime_error(fault);
  }
  void writePairs(const std::string& name, std::size_t count, std::uint8_t classCode = 11) const {
    write(name, count, false, being(classCode), being(classCode));
  }
  void writeControl(const std::string& name, std::size_t count) const {
    write(name, count, true, being(10), being(10));
  }

  std::string status(const std::string& name) const {
    return contentOf(folder / "01_status" / name);
  }
  bool hasStatus(const std::string& name) const {
    return std::filesystem::exists(folder / "01_status" / name);
  }

  std::string check() {
    counts.assign(3, 0);
    return optimization.check(counts);
  }

  TemporaryFolder folder;
  Velorn::InputParameter configuration;
  std::vector<std::filesystem::path> strips;
  Velorn::FileContainer files;
  Velorn::SolverParameters parameters;
  Velorn::Trajectory trajectory{{}};
  Velorn::CeresOptimization optimization{parameters, trajectory, configuration, files};
  std::vector<unsigned> counts;
  ConsoleLines console;
};
