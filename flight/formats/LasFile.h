// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Reads LAS files of version 1.0 to 1.4 with points of format 0 to 10:
//
//     const LasFile file("strip.las");
//     file.read([&](std::uint64_t first, std::span<const LasPoint> points) { ... });
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "flight/formats/LasCrs.h"
#include "flight/formats/LasHeader.h"
#include "flight/formats/LasPoint.h"
#include "flight/formats/LasVlr.h"

namespace Velorn::Flights {

/// The header and the records before and behind the points are read at once and are checked against
/// the size of the file, the points whenever they are asked for.
class LasFile {
 public:
  /// Takes the points `first`, `first` + 1, ... of the file, counted from 0.
  using Take = std::function<void(std::uint64_t first, std::span<const LasPoint> points)>;
  /// Takes `count` point records as they stand, header().recordLength bytes each.
  using TakeBytes =
      std::function<void(std::uint64_t first, std::uint64_t count, const char* records)>;

  /// @throws Error that names the file, what is wrong and what to do: no regular file, no LAS
  ///         file, compressed (LAZ), cut off, contradicting itself
  explicit LasFile(std::filesystem::path path);

  const std::filesystem::path& path() const { return path_; }
  const LasHeader& header() const { return header_; }
  const std::vector<LasVlr>& vlrs() const { return vlrs_; }

  /// EPSG code of the projected system, of a compound one its horizontal part; none where the file
  /// tells none that EPSG knows.
  std::optional<unsigned> epsg() const { return crs_.epsg; }
  /// What the file says of its coordinate system, for messages; empty when it says nothing.
  const std::string& crsText() const { return crs_.text; }

  /// Hands all points to `take`, block by block in the order of the file; some thousand of them are
  /// in memory at a time.
  /// @throws Error when the file cannot be read on
  void read(const Take& take) const;
  void readBytes(const TakeBytes& take) const;

  /// Of the file as it is now [bytes].
  /// @throws Error when there is none
  std::uint64_t size() const;
  /// The file, opened anew for reading from a byte on.
  /// @throws Error when it cannot be opened
  std::ifstream open(std::uint64_t position) const;

 private:
  [[noreturn]] void refuse(const std::string& fault) const;
  void readHeader();
  void refuseCompressed() const;
  std::string contentOf(const LasVlr& record) const;
  std::string content(const char* userId, unsigned recordId) const;
  LasCrs findCrs() const;

  std::filesystem::path path_;
  LasHeader header_;
  std::vector<LasVlr> vlrs_;
  LasCrs crs_;
};

}  // namespace Velorn::Flights
