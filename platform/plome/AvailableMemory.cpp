// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/plome/AvailableMemory.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Plome {
namespace {

using Bytes = std::optional<std::uint64_t>;

constexpr const char* groups = "/sys/fs/cgroup";

/// The number that a text begins with, after blanks; nothing for "max".
Bytes numberOf(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  std::uint64_t number = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
  return end.ec == std::errc() ? Bytes(number) : std::nullopt;
}

/// The number behind a word that begins a line.
Bytes numberAfter(const std::string& word, const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(word)) return numberOf(std::string_view(line).substr(word.size()));
  }
  return {};
}

Bytes lesser(Bytes a, Bytes b) {
  return a && b ? std::min(a, b) : a ? a : b;
}

std::uint64_t difference(std::uint64_t a, std::uint64_t b) {
  return a > b ? a - b : 0;
}

Bytes leftInSystem(const MemoryFacts& facts) {
  const auto kibibytes = numberAfter("MemAvailable:", facts.read("/proc/meminfo"));
  if (kibibytes) return *kibibytes * 1024;
  return facts.freePages > 0 ? Bytes(facts.freePages * facts.page) : std::nullopt;
}

/// Names of the files of a control group.
struct GroupFiles {
  const char *limit, *usage, *reclaimable;
};
constexpr GroupFiles version1{"/memory.limit_in_bytes", "/memory.usage_in_bytes",
                              "total_inactive_file "},
    version2{"/memory.max", "/memory.current", "inactive_file "};

Bytes leftInGroup(const MemoryFacts& facts, const std::string& folder, const GroupFiles& files) {
  const auto limit = numberOf(facts.read(folder + files.limit)),
             usage = numberOf(facts.read(folder + files.usage));
  if (!limit) return {};
  const auto kept = numberAfter(files.reclaimable, facts.read(folder + "/memory.stat"));
  return difference(*limit, difference(usage.value_or(0), kept.value_or(0)));
}

/// Of a group and all those that it is in. A container sees its own group as the root, whatever
/// its name is outside.
Bytes leftInGroups(const MemoryFacts& facts, const std::string& root, std::string group,
                   const GroupFiles& files) {
  Bytes left = leftInGroup(facts, root, files);
  while (group.size() > 1) {
    left = lesser(left, leftInGroup(facts, root + group, files));
    group.resize(group.rfind('/'));
  }
  return left;
}

/// Lines are "number:controllers:group"; version 2 has the number 0 and no controllers.
Bytes leftInGroups(const MemoryFacts& facts) {
  Bytes left;
  std::istringstream lines(facts.read("/proc/self/cgroup"));
  for (std::string line; std::getline(lines, line);) {
    const auto first = line.find(':'), second = line.find(':', first + 1);
    if (second == std::string::npos || line.size() == second + 1 || line[second + 1] != '/')
      continue;
    const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
    const std::string group = line.substr(second + 1);
    if (controllers == ",,") {
      left = lesser(left, leftInGroups(facts, groups, group, version2));
    } else if (controllers.find(",memory,") != std::string::npos) {
      left = lesser(left, leftInGroups(facts, std::string(groups) + "/memory", group, version1));
    }
  }
  return left;
}

Bytes leftOfAddresses(const MemoryFacts& facts) {
  if (!facts.addressLimit) return {};
  const auto pages = numberOf(facts.read("/proc/self/statm"));
  return difference(*facts.addressLimit, pages.value_or(0) * facts.page);
}

std::string textOf(const std::string& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::uint64_t systemValue(int name) {
  return static_cast<std::uint64_t>(std::max(0L, sysconf(name)));
}

}  // namespace

Bytes availableMemory(const MemoryFacts& facts) {
  const Bytes left =
      lesser(lesser(leftInSystem(facts), leftInGroups(facts)), leftOfAddresses(facts));
  return left ? Bytes(*left + facts.kept) : left;
}

Bytes availableMemory() {
  MemoryFacts facts;
  facts.read = textOf;
  facts.page = systemValue(_SC_PAGESIZE);
  facts.freePages = systemValue(_SC_AVPHYS_PAGES);
  facts.kept = mallinfo2().fordblks;
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
    facts.addressLimit = limit.rlim_cur;
  }
  return availableMemory(facts);
}

}  // namespace Plome
