// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/LasBytes.h"

#include <algorithm>

namespace {

std::uint8_t byte(unsigned value) {
  return static_cast<std::uint8_t>(value);
}

std::size_t headerSize(unsigned minorVersion) {
  return minorVersion < 3 ? 227 : minorVersion == 3 ? 235 : 375;
}

bool hasTime(unsigned format) {
  return format != 0 && format != 2;
}

std::size_t recordLength(const LasSample& sample) {
  const unsigned format = sample.format;
  const auto among = [&](std::initializer_list<unsigned> formats) {
    return std::find(formats.begin(), formats.end(), format) != formats.end();
  };
  std::size_t length = format < 6 ? 20 + (hasTime(format) ? 8U : 0U) : 30;
  if (among({2, 3, 5, 7, 8, 10})) length += 6;  // red, green, blue
  if (among({8, 10})) length += 2;              // near infrared
  if (among({4, 5, 9, 10})) length += 29;       // waveform
  return length + sample.extraBytes;
}

std::string pointBytes(const LasSample& sample, std::size_t index) {
  const LasSamplePoint& point = sample.points[index];
  std::string bytes(recordLength(sample), '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(37 * index + i);
  for (std::size_t axis = 0; axis < 3; ++axis) putAt(bytes, 4 * axis, point.numbers[axis]);
  putAt(bytes, 12, point.intensity);
  if (sample.format < 6) {
    putAt(bytes, 14, byte(point.returnNumber | point.numberOfReturns << 3U));
    putAt(bytes, 15, byte(point.classification | (point.isWithheld ? 0x80U : 0U)));
    putAt(bytes, 18, point.sourceId);
    if (hasTime(sample.format)) putAt(bytes, 20, point.time);
  } else {
    putAt(bytes, 14, byte(point.returnNumber | point.numberOfReturns << 4U));
    putAt(bytes, 15, byte(point.isWithheld ? 4U : 0U));
    putAt(bytes, 16, byte(point.classification));
    putAt(bytes, 20, point.sourceId);
    putAt(bytes, 22, point.time);
  }
  return bytes;
}

std::string vlrBytes(const LasSampleVlr& record, bool isExtended) {
  std::string bytes(isExtended ? 60 : 54, '\0');
  bytes.replace(2, record.userId.size(), record.userId);
  putAt(bytes, 18, record.recordId);
  if (isExtended) {
    putAt(bytes, 20, std::uint64_t{record.content.size()});
  } else {
    putAt(bytes, 20, static_cast<std::uint16_t>(record.content.size()));
  }
  return bytes + record.content;
}

void putCounts(const LasSample& sample, std::string& head) {
  std::array<std::uint32_t, 16> byReturn{};
  for (const auto& point : sample.points) ++byReturn.at(point.returnNumber);
  const auto count = static_cast<std::uint32_t>(sample.points.size());
  if (sample.format < 6) {
    putAt(head, 107, count);
    for (std::size_t i = 1; i <= 5; ++i) putAt(head, 107 + 4 * i, byReturn[i]);
  }
  if (sample.minorVersion < 4) return;
  putAt(head, 247, std::uint64_t{count});
  for (std::size_t i = 1; i <= 15; ++i) putAt(head, 247 + 8 * i, std::uint64_t{byReturn[i]});
}

void putCoordinates(const LasSample& sample, std::string& head) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    putAt(head, 131 + 8 * axis, sample.scale[axis]);
    putAt(head, 155 + 8 * axis, sample.offset[axis]);
    double low = 0.0, high = 0.0;
    for (std::size_t i = 0; i < sample.points.size(); ++i) {
      const double value =
          sample.scale[axis] * sample.points[i].numbers[axis] + sample.offset[axis];
      low = i == 0 ? value : std::min(low, value);
      high = i == 0 ? value : std::max(high, value);
    }
    putAt(head, 179 + 16 * axis, high);
    putAt(head, 187 + 16 * axis, low);
  }
}

std::string headBytes(const LasSample& sample, std::size_t pointsStart) {
  std::string head(headerSize(sample.minorVersion), '\0');
  head.replace(0, 4, "LASF");
  putAt(head, 4, std::uint16_t{7});
  putAt(head, 6, sample.globalEncoding);
  head.replace(8, 16, "the project's id");
  putAt(head, 24, byte(1));
  putAt(head, 25, byte(sample.minorVersion));
  head.replace(26, 7, "scanner");
  head.replace(58, 32, "software with a name of 32 bytes");
  putAt(head, 90, std::uint16_t{200});
  putAt(head, 92, std::uint16_t{2019});
  putAt(head, 94, static_cast<std::uint16_t>(head.size()));
  putAt(head, 96, static_cast<std::uint32_t>(pointsStart));
  putAt(head, 100, static_cast<std::uint32_t>(sample.vlrs.size()));
  putAt(head, 104, byte(sample.format));
  putAt(head, 105, static_cast<std::uint16_t>(recordLength(sample)));
  putCounts(sample, head);
  putCoordinates(sample, head);
  return head;
}

}  // namespace

std::string lasBytes(const LasSample& sample) {
  std::string records, points;
  for (const auto& record : sample.vlrs) records += vlrBytes(record, false);
  records += sample.gap;
  for (std::size_t i = 0; i < sample.points.size(); ++i) points += pointBytes(sample, i);
  const std::size_t pointsStart = headerSize(sample.minorVersion) + records.size();
  std::string head = headBytes(sample, pointsStart);
  if (!sample.evlrs.empty()) {
    putAt(head, 235, std::uint64_t{pointsStart + points.size()});
    putAt(head, 243, static_cast<std::uint32_t>(sample.evlrs.size()));
  }
  std::string bytes = head + records + points;
  for (const auto& record : sample.evlrs) bytes += vlrBytes(record, true);
  return bytes;
}

LasSample lasSample(unsigned minorVersion, unsigned format, std::size_t points) {
  LasSample sample;
  sample.minorVersion = minorVersion;
  sample.format = format;
  for (std::size_t i = 0; i < points; ++i) {
    const auto n = static_cast<std::int32_t>(i);
    const unsigned returns = 1 + static_cast<unsigned>(i) % 5;
    sample.points.push_back({{1000 * n - 1500, -70000 * (n % 1000), 12345 + n},
                             static_cast<std::uint16_t>(40000 + 3 * i),
                             1 + static_cast<unsigned>(i) % returns,
                             returns,
                             static_cast<unsigned>(i) % 31,
                             i % 3 == 2,
                             static_cast<std::uint16_t>(600 + i),
                             345678.25 + 0.5 * n});
  }
  return sample;
}

LasSample lasOverZone32(std::size_t points) {
  LasSample made = lasSample(4, 6, points);
  made.globalEncoding = 1;
  made.offset = {500000.0, 5341000.0, 0.0};
  made.vlrs = {geoKeys({{1024, 0, 1, 1}, {3072, 0, 1, 32632}})};
  std::int32_t k = 0;
  for (auto& one : made.points) {
    one.numbers = {100 * (k % 17), 300 * (k % 31), 100 * (k % 5)};
    one.sourceId = 7;
    ++k;
  }
  return made;
}

LasSampleVlr geoKeys(const std::vector<std::array<std::uint16_t, 4>>& keys) {
  std::string content(8 * (keys.size() + 1), '\0');
  putAt(content, 0, std::uint16_t{1});
  putAt(content, 2, std::uint16_t{1});
  putAt(content, 6, static_cast<std::uint16_t>(keys.size()));
  for (std::size_t i = 0; i < keys.size(); ++i) {
    for (std::size_t j = 0; j < 4; ++j) putAt(content, 8 * (i + 1) + 2 * j, keys[i][j]);
  }
  return {"LASF_Projection", 34735, content};
}
