// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/model/SectionFile.h"

#include <fmt/format.h>

#include "adjustment/model/Layout.h"
#include "adjustment/model/LineReader.h"
#include "adjustment/model/Scanner.h"

namespace Velorn {
namespace {

std::optional<Section> parsed(std::string_view line) {
  Scanner scanner(line);
  const bool hasStrip = scanner.take("StripID: ");
  const auto strip = scanner.takeUnsigned();
  const bool hasNumber = scanner.take(", sectionID: ");
  const auto number = scanner.takeUnsigned();
  const bool hasStart = scanner.take(", t: ");
  const auto start = scanner.takeNumber();
  const bool hasType = scanner.take(", type: ");
  const Sec_Type type = stringToSecType(scanner.rest());
  const bool whole = hasStrip && strip && hasNumber && number && hasStart && start && hasType;
  if (!whole || type == Sec_Type::UNKNOWN) return std::nullopt;
  return Section{type, *number, *start, *strip, false, 0};
}

/// Why a section can not be the next one of those before it.
std::string faultOf(const Section& section, const std::vector<Section>& before) {
  if (section.sectionID != before.size()) {
    return fmt::format("sectionID {} where {} follows", section.sectionID, before.size());
  }
  if (before.size() >= mostSections) return fmt::format("more than {} sections", mostSections);
  if (!(section.t >= 0.0)) return fmt::format("t {} is negative", section.t);
  if (before.empty()) return {};
  const Section& last = before.back();
  if (section.stripIndex < last.stripIndex) {
    return fmt::format("StripID {} after {}", section.stripIndex, last.stripIndex);
  }
  if (section.stripIndex == last.stripIndex && !(section.t > last.t)) {
    return fmt::format("t {} is not after {}", section.t, last.t);
  }
  return {};
}

}  // namespace

std::string sectionLine(const Section& section) {
  return fmt::format("StripID: {}, sectionID: {}, t: {:.15f}, type: {}\n", section.stripIndex,
                     section.sectionID, section.t, SecTypeToString(section.type));
}

std::string readSectionFile(const std::filesystem::path& path, std::vector<Section>& sections) {
  std::vector<Section> read;
  LineReader lines(path);
  for (std::string_view line; lines.next(line);) {
    const auto section = parsed(line);
    if (!section) return lines.refused(fmt::format("describes no section: {}", line));
    if (const auto fault = faultOf(*section, read); !fault.empty()) return lines.refused(fault);
    read.push_back(*section);
  }
  if (!lines.fault().empty()) return lines.fault();
  if (read.empty()) return lines.refusedWhole("holds no section");
  sections.swap(read);
  return {};
}

}  // namespace Velorn
