// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/plome/FlagList.h"

#include <algorithm>

namespace Plome {

FlagList::FlagList(std::string_view text, char separator) : separator_(separator) {
  while (!text.empty()) {
    const auto length = std::min(text.find(separator), text.size());
    const auto word = text.substr(0, length);
    if (!word.empty() && !isSet(word)) words_.emplace_back(word);
    text.remove_prefix(std::min(length + 1, text.size()));
  }
}

bool FlagList::isSet(std::string_view word) const {
  return std::find(words_.begin(), words_.end(), word) != words_.end();
}

std::string FlagList::text() const {
  std::string joined;
  for (const auto& word : words_) {
    if (!joined.empty()) joined += separator_;
    joined += word;
  }
  return joined;
}

}  // namespace Plome
