// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <map>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "platform/plome/AvailableMemory.h"

using namespace Plome;

namespace {

using Texts = std::map<std::string, std::string>;

const std::string meminfo = "MemTotal:  16000 kB\nMemFree:  100 kB\nMemAvailable:    8000 kB\n";

MemoryFacts systemOf(const Texts& texts) {
  MemoryFacts facts;
  facts.read = [texts](const std::string& file) {
    const auto found = texts.find(file);
    return found == texts.end() ? std::string() : found->second;
  };
  facts.freePages = 1000;
  return facts;
}

TEST(AvailableMemory, IsWhatTheSystemHas) {
  EXPECT_EQ(availableMemory(systemOf({{"/proc/meminfo", meminfo}})), 8'192'000U);
  EXPECT_EQ(availableMemory(systemOf({{"/proc/meminfo", "MemTotal: 5 kB\n"}})), 4'096'000U);
  auto mute = systemOf({});
  mute.kept = 77;
  EXPECT_EQ(availableMemory(mute), 4'096'077U) << "with what the process has freed";
  mute.freePages = 0;
  EXPECT_FALSE(availableMemory(mute));
  EXPECT_GT(availableMemory().value(), 1'000'000U) << "of this process";
}

TEST(AvailableMemory, IsWhatTheNarrowestControlGroupLeaves) {
  const std::string root = "/sys/fs/cgroup";
  Texts second{{"/proc/meminfo", meminfo},
               {"/proc/self/cgroup", "0::/jobs/mine\n"},
               {root + "/jobs/mine/memory.max", "max\n"},
               {root + "/jobs/mine/memory.current", "700000\n"},
               {root + "/jobs/memory.max", "5000000\n"},
               {root + "/jobs/memory.current", "3000000\n"},
               {root + "/jobs/memory.stat", "anon 900\ninactive_file 400000\nfile 5\n"}};
  EXPECT_EQ(availableMemory(systemOf(second)), 2'400'000U) << "of the group above its own";
  second[root + "/jobs/mine/memory.max"] = "600000\n";
  EXPECT_EQ(availableMemory(systemOf(second)), 0U) << "more is used than is allowed";
  const Texts inside{{"/proc/meminfo", meminfo},
                     {"/proc/self/cgroup", "0::/\n"},
                     {root + "/memory.max", "1000000"},
                     {root + "/memory.current", "200000"}};
  EXPECT_EQ(availableMemory(systemOf(inside)), 800'000U) << "a container's own root";

  const Texts first{{"/proc/meminfo", meminfo},
                    {"/proc/self/cgroup", "7:cpu,cpuacct:/x\n4:hugetlb,memory:/docker/1\n0::/x\n"},
                    {root + "/memory/memory.limit_in_bytes", "3000000\n"},
                    {root + "/memory/memory.usage_in_bytes", "1000000\n"},
                    {root + "/memory/memory.stat", "total_inactive_file 250000\n"}};
  EXPECT_EQ(availableMemory(systemOf(first)), 2'250'000U);
  Texts unlimited = first;
  unlimited[root + "/memory/memory.limit_in_bytes"] = "9223372036854771712\n";
  EXPECT_EQ(availableMemory(systemOf(unlimited)), 8'192'000U);
  unlimited["/proc/self/cgroup"] = "no line of it\n1:memory\n2:memory:\n";
  EXPECT_EQ(availableMemory(systemOf(unlimited)), 8'192'000U);
}

TEST(AvailableMemory, IsWhatIsLeftOfTheAddressSpace) {
  auto limited = systemOf({{"/proc/meminfo", meminfo}, {"/proc/self/statm", "100 50 20 1 0 9 0"}});
  limited.addressLimit = 1'000'000;
  EXPECT_EQ(availableMemory(limited), 1'000'000U - 100U * 4096U);
  limited.addressLimit = 100'000;
  EXPECT_EQ(availableMemory(limited), 0U);
#ifndef VELORN_SANITIZED  // which map terabytes
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
  const rlimit gigabyte{std::min<rlim_t>(1'000'000'000, before.rlim_max), before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_AS, &gigabyte), 0);
  EXPECT_LT(availableMemory().value(), 1'000'000'000U);
  setrlimit(RLIMIT_AS, &before);
#endif
}

}  // namespace
