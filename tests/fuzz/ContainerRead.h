// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Reads a container as far as the library does, and writes it again.
#pragma once

#include <cstdlib>

#include "platform/strandel/MyStorage.h"
#include "tests/support/SmallStrip.h"

/// Loads a file with all its values and saves it in the folder. What was read whole and saved must
/// be read again with the same content.
inline void readAndSave(const std::filesystem::path& file, const std::filesystem::path& copy) {
  const Strandel::MyStorage storage(0, 0, 1, 1);
  Strandel::Bundle read, again;
  if (!storage.load(file, read).empty()) return;
  std::string fault;
  const std::string content = contentOf(read, fault);
  if (!storage.save(read, copy, "wd").empty() || !fault.empty()) return;
  if (!storage.load(copy, again).empty()) std::abort();
  if (contentOf(again, fault) != content || !fault.empty()) std::abort();
}
