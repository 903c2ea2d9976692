// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/SelectionText.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

/// Independent of the language, other than isalnum.
bool isOfName(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// The name, the number or the operator at a place; of other characters one.
std::string_view tokenAt(std::string_view text, std::size_t place) {
  if (isOfName(text[place])) {
    const auto end =
        std::find_if_not(text.begin() + static_cast<std::ptrdiff_t>(place), text.end(), isOfName);
    return text.substr(place, static_cast<std::size_t>(end - text.begin()) - place);
  }
  for (const std::string_view two : {"<=", ">=", "==", "!=", "&&", "||"}) {
    if (text.substr(place, 2) == two) return two;
  }
  return text.substr(place, 1);
}

bool isOneOf(std::string_view token, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), token) != words.end();
}

}  // namespace

void throwFault(const std::string& text, const std::string& fault, std::size_t place) {
  std::string shown = text;
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < ' ') c = ' ';  // a tab would move the caret
  }
  const auto before = shown.begin() + static_cast<std::ptrdiff_t>(std::min(place, shown.size()));
  const auto columns = std::count_if(shown.begin(), before, [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;  // not the rest of a UTF-8 character
  });
  throw Error(fmt::format("selection: {}\n  {}\n  {}^", fault, shown,
                          std::string(static_cast<std::size_t>(columns), ' ')),
              Error::BadSettings);
}

std::string withOperators(const std::string& text) {
  std::string made = text;
  for (std::size_t place = 0; place < text.size();) {
    const std::string_view token = tokenAt(text, place);
    if (token == "and") made.replace(place, 3, "&& ");
    if (token == "or") made.replace(place, 2, "||");
    if (token == "not") made.replace(place, 3, "!  ");
    place += token.size();
  }
  return made;
}

void refuseMisleading(const std::string& text) {
  std::vector<bool> compared{false};  // whether a comparison is open, per parenthesis
  for (std::size_t place = 0; place < text.size();) {
    const std::string_view token = tokenAt(text, place);
    if (token == "=") throwFault(text, "a comparison is written ==", place);
    if (token == "," && compared.size() == 1) {
      throwFault(text, "one condition is needed, not a list", place);
    }
    if (token == "(") compared.push_back(false);
    if (token == ")" && compared.size() > 1) compared.pop_back();
    if (isOneOf(token, {"and", "or", "not", "&&", "||", "?", ":", ","})) compared.back() = false;
    if (isOneOf(token, {"<", ">", "<=", ">=", "==", "!="})) {
      if (compared.back()) throwFault(text, "comparisons are joined by `and`", place);
      compared.back() = true;
    }
    place += token.size();
  }
}

}  // namespace Velorn::Flights
