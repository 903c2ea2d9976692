// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A LAS file is refused, or read, and then written again as export does it: what was written must
// be a file that is read.
#include <cstdlib>
#include <vector>

#include "flight/formats/LasCopy.h"
#include "flight/formats/LasFile.h"
#include "tests/fuzz/FileInMemory.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace {

bool isCopied(const std::filesystem::path& from, const std::filesystem::path& to) {
  try {
    std::vector<std::uint64_t> numbers;
    std::vector<Geomra::PhysicalSpace::point> places;
    LasFile(from).read([&](std::uint64_t, std::span<const LasPoint> points) {
      for (const LasPoint& one : points) {
        numbers.push_back(numbers.size());
        places.push_back(one.place);
      }
    });
    copyLas(from, to, numbers, places);
    return true;
  } catch (const Error&) {
    return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const TemporaryFolder folder;
  const FileInMemory las(bytes, size);
  const auto copy = folder / "copy.las";
  if (!isCopied(las.path(), copy)) return 0;
  const LasFile before(las.path()), after(copy);
  if (after.header().count != before.header().count || after.epsg() != before.epsg()) std::abort();
  return 0;
}
