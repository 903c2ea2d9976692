// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Time sections of flight strips, each with unknowns of its own.
#pragma once

#include <cstdint>
#include <map>

#include <velorn/SectionType.h>

namespace Velorn {

/// One time section of one strip. The default is the answer where there is no section.
struct Section {
  Sec_Type type = Sec_Type::LINEAR;
  std::uint32_t sectionID = 0xFFFFFFFF;   ///< selects its block in the vector of unknowns
  double t = -9999.0;                     ///< start [GPS seconds]
  std::uint32_t stripIndex = 0xFFFFFFFF;  ///< place of its strip in the list of strips
  bool invalid = true;                    ///< false for every section of a strip
  std::uint32_t counter = 0;              ///< free for the use of a caller

  friend bool operator==(const Section&, const Section&) = default;
};

/// A section, and where it ends.
struct SectionSpan {
  Section section;
  double end = 0.0;  ///< start of the strip's next section [GPS seconds]; infinite for the last one
};

/// One strip and its sections. They follow each other without a gap: each ends where the next
/// begins.
struct StripSections {
  Sec_Type type = Sec_Type::LINEAR;
  double intervalTime = 86400.0;       ///< longest section asked for [s]
  double minTime = 0.0;                ///< first GPS time of the strip [s]
  double maxTime = 0.0;                ///< last GPS time of the strip [s]
  std::map<double, Section> sections;  ///< by start
  std::uint32_t stripIndex = 0;        ///< place in the list of strips
};

}  // namespace Velorn
