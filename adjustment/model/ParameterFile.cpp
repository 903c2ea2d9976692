// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/model/ParameterFile.h"

#include <iterator>
#include <optional>

#include <fmt/format.h>

#include "adjustment/model/Layout.h"
#include "adjustment/model/LineReader.h"
#include "adjustment/model/Scanner.h"

namespace Velorn {
namespace {

/// A text goes to the stream as it is; the stream formats nothing.
void put(std::ostream& file, const fmt::memory_buffer& text) {
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
}

/// Sections that the header announces.
std::string readHeader(LineReader& lines, std::size_t& sections) {
  std::string_view line;
  if (!lines.next(line)) return lines.refusedWhole("is empty");
  Scanner scanner(line);
  const bool labelled = scanner.take("#Number of local parameters: ");
  const auto locals = scanner.takeUnsigned();
  if (!labelled || !locals || !scanner.rest().empty()) {
    return lines.refused(fmt::format("is not the number of local parameters: {}", line));
  }
  sections = *locals / localParameters;
  if (*locals % localParameters != 0 || sections == 0 || sections > mostSections) {
    return lines.refused(fmt::format("{} local parameters are no number of sections", *locals));
  }
  if (!lines.next(line) || line != "#Number of global parameters: 12 (see last line)") {
    return lines.refused("is not the number of global parameters");
  }
  if (!lines.next(line) || !line.empty()) return lines.refused("is not empty");
  return {};
}

/// Appends the `count` numbers of the next line.
std::string readValues(LineReader& lines, std::size_t count, std::vector<double>& values) {
  std::string_view line;
  if (!lines.next(line)) {
    if (!lines.fault().empty()) return lines.fault();
    return lines.refused(fmt::format("{} more values are missing", count));
  }
  Scanner scanner(line);
  for (std::size_t i = 0; i < count; ++i) {
    const auto value = scanner.takeNumber();
    if (!value || !scanner.take(" ")) {
      return lines.refused(
          fmt::format("value {} of {} is no number with 15 decimals and a blank", i + 1, count));
    }
    values.push_back(*value);
  }
  if (scanner.rest().empty()) return {};
  return lines.refused(fmt::format("more than {} values: {}", count, scanner.rest()));
}

}  // namespace

void writeParameters(std::ostream& file, const std::vector<double>& parameters) {
  fmt::memory_buffer text;
  fmt::format_to(std::back_inserter(text),
                 "#Number of local parameters: {}\n"
                 "#Number of global parameters: {} (see last line)\n",
                 parameters.size() - globalParameters, globalParameters);
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (i % localParameters == 0) {
      text.push_back('\n');
      put(file, text);
      text.clear();
    }
    fmt::format_to(std::back_inserter(text), "{:.15f} ", parameters[i]);
  }
  put(file, text);
}

std::string readParameterFile(const std::filesystem::path& path, std::vector<double>& parameters) {
  LineReader lines(path);
  if (!lines.fault().empty()) return lines.fault();
  std::size_t sections = 0;
  if (auto fault = readHeader(lines, sections); !fault.empty()) return fault;
  std::vector<double> read;  // grows with the lines: the header's number is only a claim
  for (std::size_t s = 0; s < sections; ++s) {
    if (auto fault = readValues(lines, localParameters, read); !fault.empty()) return fault;
  }
  if (auto fault = readValues(lines, globalParameters, read); !fault.empty()) return fault;
  if (std::string_view line; lines.next(line)) return lines.refused("follows the last line");
  if (!lines.fault().empty()) return lines.fault();
  parameters.swap(read);
  return {};
}

}  // namespace Velorn
