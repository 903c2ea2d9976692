// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/kestrum/LoaderProgress.h"
#include "platform/kestrum/Ownership.h"

namespace {

struct Recorder final : Kestrum::LoaderProgress {
  void report(const std::string& text, std::size_t current, std::size_t total) override {
    lines.push_back(text + std::to_string(current) + "/" + std::to_string(total));
  }
  std::vector<std::string> lines;
};

}  // namespace

TEST(Ownership, WeakProgressIsAssignedFromAStrongOneAndDiesWithIt) {
  Kestrum::WeakPtr<Kestrum::LoaderProgress, Kestrum::InterfaceBase> progress;
  EXPECT_FALSE(progress.lock());
  {
    const auto recorder = std::make_shared<Recorder>();
    const Kestrum::StrongPtr<Kestrum::LoaderProgress, Kestrum::InterfaceBase> strong = recorder;
    progress = strong;
    progress.lock()->report("setSection #", 1, 3);
    EXPECT_EQ(recorder->lines, std::vector<std::string>{"setSection #1/3"});
  }
  EXPECT_FALSE(progress.lock());
}
