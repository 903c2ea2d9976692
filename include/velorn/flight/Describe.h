// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What files hold, for people and for programs.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <velorn/flight/Visibility.h>

namespace Velorn::Flights {

/// A description, and what could not be read, one message each. The description tells of a fault,
/// too, at the place where it lies.
struct FileDescription {
  std::string text;
  std::vector<std::string> faults;
};

/// A tree with aligned tables, in UTF-8. Of a container the structure is read; values only where a
/// field has no stored range. A name that looks like one of an SBET file is read as such. Throws
/// nothing for a bad file.
VELORN_FLIGHT_EXPORT FileDescription describeFile(const std::filesystem::path& file);

/// The same as one JSON document, whose keys docs/commands.md lists.
VELORN_FLIGHT_EXPORT FileDescription documentFiles(const std::vector<std::filesystem::path>& files);

}  // namespace Velorn::Flights
