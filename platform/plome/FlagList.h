// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Option words such as "+rasterize +adjustment", as a host's user types them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Visibility.h"

namespace Plome {

/// Words in the order given. Repeated separators count once; a word given twice is held once.
class VELORN_PLATFORM_EXPORT FlagList {
 public:
  FlagList() = default;
  FlagList(std::string_view text, char separator);

  /// True when exactly this word is set, its sign included: isSet("+adjustment").
  bool isSet(std::string_view word) const;

  /// The words joined by the separator they were given with.
  std::string text() const;

  const std::vector<std::string>& words() const { return words_; }

 private:
  std::vector<std::string> words_;
  char separator_ = ' ';
};

}  // namespace Plome
