// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A fuzzer is worth nothing if it does not see a fault. This reader trusts the length that a file
// tells.
#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 3 || bytes[0] != 'K' || bytes[1] != 'X') return 0;
  const std::vector<std::uint8_t> values(bytes + 2, bytes + size);
  unsigned sum = 0;
  for (unsigned i = 0; i < bytes[2]; ++i) sum += values.data()[i + 1];
  return sum == 0 ? 0 : -1;
}
