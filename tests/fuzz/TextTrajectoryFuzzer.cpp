// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A trajectory in text is refused, or becomes columns as import makes them. The first line of an
// input is how the rest is to be read: a byte of choices and the description of the columns.
#include <string>

#include "flight/formats/PoseOrder.h"
#include "flight/formats/TextTrajectory.h"
#include "tests/fuzz/FileInMemory.h"
#include <velorn/flight/Error.h>

namespace {

using namespace Velorn::Flights;

TextTrajectoryFormat formatOf(const std::string& line) {
  TextTrajectoryFormat format;
  const unsigned choices = line.empty() ? 0 : static_cast<unsigned char>(line[0]);
  format.columns = line.empty() ? line : line.substr(1);
  format.positionUnit = (choices & 1U) != 0 ? AngleUnit::Radians : AngleUnit::Degrees;
  format.attitudeUnit = (choices & 2U) != 0 ? AngleUnit::Radians : AngleUnit::Degrees;
  format.heading = (choices & 4U) != 0 ? NorthReference::Grid : NorthReference::True;
  if ((choices & 8U) != 0) format.epsg = 32632;
  format.time = static_cast<TimeScale>(choices >> 4U & 3U);
  if (choices >> 6U != 0) format.delimiter = " ;\t,"[choices >> 6U];
  return format;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(bytes), size);
  const std::string line = input.substr(0, input.find('\n'));
  const std::size_t rest = std::min(line.size() + 1, size);
  const FileInMemory text(bytes + rest, size - rest);
  try {
    auto poses = inTimeOrder(readTextTrajectory(text.path(), formatOf(line)).records);
    trajectoryColumns(poses.records, 32632);
  } catch (const Error&) {
    // refused
  }
  return 0;
}
