// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A file written bit by bit beside its target, which it replaces at the end:
//
//     OutputFile out("strip.las");
//     out.write(bytes);
//     out.finish();
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/plome/ReplacedFile.h"

namespace Velorn::Flights {

/// What is made in memory before it is written, about.
inline constexpr std::size_t outputBlockBytes = std::size_t{1} << 20U;

/// Without finish() the target stays as it was. All that fails throws an Error of NoSpace that
/// names the target.
class OutputFile {
 public:
  explicit OutputFile(const std::filesystem::path& target);

  const std::filesystem::path& target() const { return target_; }
  void write(const char* bytes, std::uint64_t count);
  void write(std::string_view bytes) { write(bytes.data(), bytes.size()); }
  void overwriteBegin(const std::string& bytes);
  void finish();

 private:
  void orFail() const;

  std::filesystem::path target_;
  Plome::ReplacedFile file_;
  std::ofstream stream_;
};

}  // namespace Velorn::Flights
