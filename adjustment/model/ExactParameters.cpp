// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/model/ExactParameters.h"

#include <bit>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string_view>

#include <fmt/format.h>

#include "adjustment/model/Scanner.h"

namespace Velorn {
namespace {

constexpr std::string_view magic = "VELORNEX";
constexpr std::uint32_t version = 1;
constexpr std::size_t headerBytes = 20, valueBytes = 8, checksumBytes = 8;

template <typename Unsigned>
void append(std::string& bytes, Unsigned value) {
  for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
    bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
  }
}

template <typename Unsigned>
Unsigned numberAt(std::string_view bytes, std::size_t place) {
  Unsigned value = 0;
  for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
    value |= static_cast<Unsigned>(static_cast<unsigned char>(bytes[place + i])) << (8 * i);
  }
  return value;
}

/// FNV-1a; see http://www.isthe.com/chongo/tech/comp/fnv
std::uint64_t checksum(std::string_view bytes) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char byte : bytes) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
  }
  return hash;
}

std::string faultOfHeader(std::string_view bytes, std::size_t count) {
  if (bytes.size() < headerBytes || !bytes.starts_with(magic)) return "holds no exact parameters";
  const auto found = numberAt<std::uint32_t>(bytes, magic.size());
  if (found != version) {
    return fmt::format("has format version {}; this program reads version {}", found, version);
  }
  const auto claimed = numberAt<std::uint64_t>(bytes, magic.size() + sizeof(version));
  if (claimed == count) return {};
  return fmt::format("holds {} parameters, the parameter file {}", claimed, count);
}

/// The first `size` bytes of a file, fewer when it has not as many.
std::string beginningOf(const std::filesystem::path& path, std::size_t size) {
  std::string bytes(size, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(bytes.data(), static_cast<std::streamsize>(size));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return bytes;
}

std::string faultOfContent(std::string_view bytes, std::size_t size) {
  if (bytes.size() < size)
    return fmt::format("is cut off, {} bytes are missing", size - bytes.size());
  if (bytes.size() > size) return "goes on after its end";
  const std::string_view sum = bytes.substr(size - checksumBytes);
  if (checksum(bytes.substr(0, size - checksumBytes)) != numberAt<std::uint64_t>(sum, 0)) {
    return "is damaged, its checksum does not fit";
  }
  return {};
}

/// The number that the parameter file shows for `exact`; nothing unless it is finite.
std::optional<double> shown(double exact) {
  const std::string text = fmt::format("{:.15f}", exact);
  return Scanner(text).takeNumber();
}

}  // namespace

std::filesystem::path companionOf(const std::filesystem::path& parameterFile) {
  std::filesystem::path companion = parameterFile;
  companion += ".exact";
  return companion;
}

std::string exactContent(const std::vector<double>& parameters) {
  std::string bytes(magic);
  bytes.reserve(headerBytes + valueBytes * parameters.size() + checksumBytes);
  append(bytes, version);
  append(bytes, std::uint64_t{parameters.size()});
  for (const double value : parameters) append(bytes, std::bit_cast<std::uint64_t>(value));
  append(bytes, checksum(bytes));
  return bytes;
}

std::string readExactParameters(const std::filesystem::path& companion,
                                std::vector<double>& parameters) {
  const auto refused = [&](const std::string& fault) { return companion.string() + ": " + fault; };
  const std::size_t size = headerBytes + valueBytes * parameters.size() + checksumBytes;
  const std::string bytes = beginningOf(companion, size + 1);  // one more than there should be
  for (const auto& fault : {faultOfHeader(bytes, parameters.size()), faultOfContent(bytes, size)}) {
    if (!fault.empty()) return refused(fault);
  }
  std::vector<double> read(parameters.size());
  for (std::size_t i = 0; i < read.size(); ++i) {
    read[i] = std::bit_cast<double>(numberAt<std::uint64_t>(bytes, headerBytes + valueBytes * i));
    if (shown(read[i]) != parameters[i]) {
      return refused(
          fmt::format("parameter {} is {}, in the parameter file {}: the two do not "
                      "belong together",
                      i, read[i], parameters[i]));
    }
  }
  parameters.swap(read);
  return {};
}

}  // namespace Velorn
