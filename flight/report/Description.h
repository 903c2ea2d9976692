// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a file holds, as a document for programs and for the listing.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Velorn::Flights {

/// The document, whose keys docs/commands.md lists, and what could not be read, one message each.
/// Both tell of a fault: the document at the place where it lies.
struct Description {
  nlohmann::ordered_json document;
  std::vector<std::string> faults;
};

/// Describes a container, or a trajectory when the name looks like one of an SBET file. Of a
/// container the structure is read; values only where a field has no stored range. Throws nothing
/// for a bad file.
Description describe(const std::filesystem::path& file);

}  // namespace Velorn::Flights
