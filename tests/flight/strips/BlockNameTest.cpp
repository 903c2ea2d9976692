// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "flight/strips/BlockName.h"

using namespace Velorn::Flights;

namespace {

TEST(BlockName, IsReadAsItIsWritten) {
  for (const std::string name : {"c0_1.kx", "c12_4294967295.kx", "c0_7_GroundTruth.kx"}) {
    const auto block = blockNameIn(name);
    ASSERT_TRUE(block.has_value()) << name;
    EXPECT_EQ(fileNameOf(*block), name);
  }
  EXPECT_TRUE(blockNameIn("c0_7_GroundTruth.kx")->isGroundTruth);
}

TEST(BlockName, IsNoOtherName) {
  for (const char* name : {"", "c0.kx", "c0_1", "c0_1.kx.part", "xc0_1.kx", "c-1_2.kx", "c_1.kx",
                           "c0_1_groundtruth.kx", "c0_1_2.kx"}) {
    EXPECT_FALSE(blockNameIn(name).has_value()) << name;
  }
}

TEST(BlockName, KeepsIdsThatAreTooLargeApartFromSmallOnes) {
  EXPECT_EQ(blockNameIn("c1_4294967296.kx")->j, 4294967295U);
  EXPECT_EQ(blockNameIn("c99999999999999999999_2.kx")->i, 4294967295U);
}

}  // namespace
