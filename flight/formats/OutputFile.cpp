// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/OutputFile.h"

#include <cerrno>

#include <fmt/format.h>

#include "flight/strips/OrFail.h"
#include "platform/plome/SystemFault.h"

namespace Velorn::Flights {

OutputFile::OutputFile(const std::filesystem::path& target) : target_(target), file_(target) {
  errno = 0;
  stream_.open(file_.temporary(), std::ios::binary);
  orFail();
}

void OutputFile::write(const char* bytes, std::uint64_t count) {
  stream_.write(bytes, static_cast<std::streamsize>(count));
  orFail();
}

void OutputFile::overwriteBegin(const std::string& bytes) {
  stream_.seekp(0);
  write(bytes);
}

void OutputFile::finish() {
  stream_.close();
  orFail();
  Flights::orFail(file_.replace(), Error::NoSpace);
}

void OutputFile::orFail() const {
  if (stream_) return;
  const std::string cause = errno != 0 ? Plome::systemFault(errno) : "unknown cause";
  throw Error(fmt::format("{}: cannot be written: {}", target_.string(), cause), Error::NoSpace);
}

}  // namespace Velorn::Flights
