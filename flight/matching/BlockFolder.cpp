// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/BlockFolder.h"

#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "flight/matching/Match.h"
#include "flight/strips/BlockName.h"
#include "flight/strips/OutputPlaces.h"
#include "platform/plome/ReplacedFile.h"
#include <velorn/CorrespondenceBlock.h>
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

using std::filesystem::path;

void orNotWritten(const std::string& fault) {
  if (!fault.empty()) throw Error(fault, Error::NoSpace);
}

void orNotWritten(const std::error_code& fault, const path& file, const char* what) {
  if (fault)
    throw Error(fmt::format("{}: {}: {}", file.string(), what, fault.message()), Error::NoSpace);
}

std::vector<path> blocksIn(const path& folder) {
  std::error_code fault;
  std::vector<path> blocks;
  std::filesystem::directory_iterator entries(folder, fault);
  for (; !fault && entries != std::filesystem::directory_iterator(); entries.increment(fault)) {
    const path& file = entries->path();
    if (blockNameIn(file.filename().string())) blocks.push_back(file);
  }
  orNotWritten(fault, folder, "the folder cannot be read");
  return blocks;
}

void removeFile(const path& file) {
  std::error_code fault;
  std::filesystem::remove(file, fault);
  orNotWritten(fault, file, "cannot be removed");
}

}  // namespace

BlockFolder::BlockFolder(path folder, std::shared_ptr<Strandel::MyStorage> storage)
    : folder_(std::move(folder)), storage_(std::move(storage)) {
  makeFolder(folder_);
  orNotWritten(Plome::replaceFile(folder_ / unfinishedName,
                                  "The matching that writes this folder has not come to its end; "
                                  "blocks are missing.\n"));
  for (const path& block : blocksIn(folder_)) removeFile(block);
}

void BlockFolder::write(const BlockTitle& title, const std::vector<BlockEntry>& entries) const {
  const auto name = fileNameOf({title.i, title.j, title.isGroundTruth});
  Velorn::CorrespondenceBlock block(folder_ / name, title.isGroundTruth, title.weekI, title.weekJ,
                                    storage_);
  for (const BlockEntry& entry : entries) block.add(entry.i, entry.j);
  orNotWritten(block.save());
}

void BlockFolder::finish() const {
  removeFile(folder_ / unfinishedName);
}

}  // namespace Velorn::Flights
