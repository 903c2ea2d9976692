// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The storages of the container tests. Most tests need no file on the disk; those that do are
// flushed.
#pragma once

#include <filesystem>

#include <gtest/gtest.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"

inline const Strandel::MyStorage storage(0, 0, 1, 1), compressed(1, 0, 1, 1);
inline const Strandel::MyStorage unprotected(0, 1, 1, 1);
inline const Strandel::MyStorage flushed(0, 0, 0, 1), flushedCompressed(1, 0, 0, 1);

/// What a sound file holds.
inline Strandel::Bundle loaded(const std::filesystem::path& path) {
  Strandel::Bundle bundle;
  EXPECT_EQ(storage.load(path, bundle), "");
  return bundle;
}

/// A field of the only grid, of the slice at 0 s.
inline Strandel::FieldPtr fieldOf(const Strandel::Bundle& bundle, const std::string& chart,
                                  const std::string& name) {
  return bundle.slice(0.0)->uniqueGrid()->chart(chart)->field(name);
}
