// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Numbers in the bytes of files that keep the lowest byte first.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>

namespace Velorn::Flights {

static_assert(std::endian::native == std::endian::little, "numbers are copied as they stand");

/// Number at `bytes`, which need not be aligned; the caller knows that all its bytes are there.
template <typename T>
T numberAt(const char* bytes) {
  static_assert(std::is_arithmetic_v<T>);
  T number;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

template <typename T>
void putNumber(char* bytes, std::type_identity_t<T> number) {
  static_assert(std::is_arithmetic_v<T>);
  std::memcpy(bytes, &number, sizeof number);
}

/// Text of a field of `width` bytes: up to its first zero byte, if it has one.
inline std::string textAt(const char* bytes, std::size_t width) {
  return {bytes, strnlen(bytes, width)};
}

}  // namespace Velorn::Flights
