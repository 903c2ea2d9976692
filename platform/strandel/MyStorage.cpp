// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/MyStorage.h"
namespace Strandel {
StorageInterface::StorageInterface() = default;
StorageInterface::~StorageInterface() = default;
MyStorage::MyStorage(int a, int b, int c, int d)
    : compression_(a), protection_(b), flushing_(c), version_(d) {}
MyStorage::~MyStorage() = default;
std::string MyStorage::load(const std::filesystem::path&, Bundle&) const {
  return unknownSetting();
}
std::string MyStorage::save(Bundle&, const std::filesystem::path&, const std::string&) const {
  return unknownSetting();
}
std::string MyStorage::unknownSetting() const {
  return compression_ + protection_ + flushing_ + version_ == 1 ? "" : "x";
}
}  // namespace Strandel
