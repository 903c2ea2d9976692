// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The description of a file as a text for people.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace Velorn::Flights {

/// A tree with aligned tables, in UTF-8, each line with its line feed. Control characters from the
/// file are escaped, so that a name cannot play tricks with a terminal.
std::string listingOf(const nlohmann::ordered_json& document);

}  // namespace Velorn::Flights
