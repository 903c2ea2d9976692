// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/MyStorage.h"

#include <new>
#include <system_error>

#include <fmt/format.h>

#include "platform/plome/ReplacedFile.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/hdf5/Loader.h"
#include "platform/strandel/hdf5/Saver.h"

namespace Strandel {
namespace {

namespace fs = std::filesystem;

/// Runs one operation on a file; whatever goes wrong becomes one text.
template <typename Action>
std::string guarded(const char* operation, const fs::path& path, const Action& action) {
  const auto refused = [&](const std::string& fault) {
    return fmt::format("Strandel::MyStorage::{}: {}: {}", operation, path.string(), fault);
  };
  try {
    return action();
  } catch (const Hdf5::Fault& fault) {
    return refused(fault.what());
  } catch (const std::bad_alloc&) {
    return refused("not enough memory");
  } catch (const fs::filesystem_error& error) {
    return refused(error.code().message());
  }
}

void checkMode(const std::string& mode, const fs::path& path) {
  if (mode != "w" && mode != "wd") {
    throw Hdf5::Fault("unknown open mode \"" + mode + "\"; \"w\" and \"wd\" are known");
  }
  if (mode == "w" && fs::exists(path)) {
    throw Hdf5::Fault("exists already; the mode \"wd\" replaces it");
  }
}

void clearTouched(const Bundle& bundle) {
  for (const auto& grid : bundle.grids()) {
    for (const auto& [chartName, chart] : grid->charts()) {
      for (const auto& [fieldName, field] : chart->fields()) field->clearTouched();
    }
  }
}

}  // namespace

StorageInterface::StorageInterface() = default;
StorageInterface::~StorageInterface() = default;

MyStorage::MyStorage(int compression, int protection, int flushing, int version)
    : compression_(compression), protection_(protection), flushing_(flushing), version_(version) {}

MyStorage::~MyStorage() = default;

std::string MyStorage::unknownSetting() const {
  const auto oneOf = [](const char* name, int value, int low, int high) {
    if (value >= low && value <= high) return std::string();
    return fmt::format("storage setting {} is {}, known are {} to {}", name, value, low, high);
  };
  for (const auto& fault :
       {oneOf("compression", compression_, 0, 1), oneOf("protection", protection_, 0, 1),
        oneOf("flushing", flushing_, 0, 1), oneOf("version", version_, 1, 1)}) {
    if (!fault.empty()) return fault;
  }
  return {};
}

std::string MyStorage::load(const fs::path& path, Bundle& bundle) const {
  return guarded("load", path, [&] {
    if (const auto fault = unknownSetting(); !fault.empty()) throw Hdf5::Fault(fault);
    bundle = Hdf5::loadBundle(path);
    return std::string();
  });
}

std::string MyStorage::save(Bundle& bundle, const fs::path& path, const std::string& mode) const {
  return guarded("save", path, [&] {
    if (const auto fault = unknownSetting(); !fault.empty()) throw Hdf5::Fault(fault);
    checkMode(mode, path);
    Plome::ReplacedFile file(path);
    Hdf5::saveBundle(bundle, file.temporary(), {compression_ == 1, protection_ == 0});
    auto fault = file.replace(flushing_ == 0);
    if (fault.empty()) clearTouched(bundle);
    return fault.empty() ? fault : "Strandel::MyStorage::save: " + fault;
  });
}

}  // namespace Strandel
