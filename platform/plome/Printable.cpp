// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/plome/Printable.h"

#include <cstddef>

#include <fmt/format.h>

namespace Plome {
namespace {

unsigned char byteAt(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

bool isWithin(unsigned char byte, unsigned char first, unsigned char last) {
  return byte >= first && byte <= last;
}

/// @param controls  characters that are left as they are
/// @return bytes of the character that begins there and can be shown; 0 where none does
std::size_t shownBytes(std::string_view text, std::size_t at, std::string_view controls) {
  const auto first = byteAt(text, at), second = byteAt(text, at + 1);
  if (first < 0x80) {
    return isWithin(first, ' ', '~') || controls.find(text[at]) != std::string_view::npos ? 1 : 0;
  }
  std::size_t size = 0;
  unsigned char low = 0x80, high = 0xBF;  // of the second byte: no overlong forms, no surrogates
  if (isWithin(first, 0xC2, 0xDF)) {
    size = 2;
    if (first == 0xC2) low = 0xA0;  // below lie the control characters of 8 bits
  } else if (isWithin(first, 0xE0, 0xEF)) {
    size = 3;
    if (first == 0xE0) low = 0xA0;
    if (first == 0xED) high = 0x9F;
  } else if (isWithin(first, 0xF0, 0xF4)) {
    size = 4;
    if (first == 0xF0) low = 0x90;
    if (first == 0xF4) high = 0x8F;
  }
  if (size == 0 || !isWithin(second, low, high)) return 0;
  for (std::size_t i = 2; i < size; ++i) {
    if (!isWithin(byteAt(text, at + i), 0x80, 0xBF)) return 0;
  }
  return size;
}

std::string escapedExcept(std::string_view controls, std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    if (const std::size_t bytes = shownBytes(text, at, controls); bytes > 0) {
      shown += text.substr(at, bytes);
      at += bytes;
    } else {
      shown += fmt::format("\\x{:02x}", byteAt(text, at++));
    }
  }
  return shown;
}

}  // namespace

std::string printable(std::string_view text) {
  return escapedExcept("\n\t", text);
}

std::string printableOnOneLine(std::string_view text) {
  return escapedExcept("", text);
}

}  // namespace Plome
