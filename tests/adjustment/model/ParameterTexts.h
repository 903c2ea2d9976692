// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The files of the parameter model as another program would write and read them.
#pragma once

#include <charconv>
#include <cmath>
#include <cstdint>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

/// Unknowns of all sizes that have more digits than a parameter file shows.
inline std::vector<double> randomUnknowns(std::size_t sections, unsigned seed = 3) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> mantissa(-1, 1);
  std::vector<double> values(24 * sections + 12);
  for (std::size_t i = 0; i < values.size(); ++i) {
    values[i] = std::ldexp(mantissa(random), 10 - static_cast<int>(i % 40));
  }
  return values;
}

inline std::string parameterText(const std::vector<double>& values) {
  std::string text = "#Number of local parameters: " + std::to_string(values.size() - 12) +
                     "\n#Number of global parameters: 12 (see last line)\n";
  for (std::size_t i = 0; i < values.size(); ++i) {
    char number[400];
    const auto end =
        std::to_chars(number, number + sizeof(number), values[i], std::chars_format::fixed, 15).ptr;
    text += (i % 24 == 0 ? "\n" : "") + std::string(number, end) + " ";
  }
  return text;
}

/// All numbers after the two lines of the head.
inline std::vector<double> valuesOf(const std::string& parameterFile) {
  std::istringstream stream(parameterFile);
  stream.imbue(std::locale::classic());
  std::string head;
  std::getline(stream, head);
  std::getline(stream, head);
  std::vector<double> values;
  for (double value = 0.0; stream >> value;) values.push_back(value);
  return values;
}

/// The exact companion, on a machine with little-endian numbers.
inline std::string companionBytes(const std::vector<double>& values) {
  std::string bytes = "VELORNEX";
  const auto add = [&bytes](const auto& value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof(value));
  };
  add(std::uint32_t{1});
  add(std::uint64_t{values.size()});
  for (const double value : values) add(value);
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char byte : bytes) {
    hash ^= static_cast<unsigned char>(byte);
    hash *= 0x100000001b3U;
  }
  add(hash);
  return bytes;
}
