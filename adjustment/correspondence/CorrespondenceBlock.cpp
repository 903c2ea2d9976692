// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>

#include <fmt/format.h>

#include "adjustment/correspondence/FieldColumns.h"
#include "adjustment/correspondence/LoadedBundle.h"
#include "adjustment/correspondence/SideFile.h"
#include <velorn/CorrespondenceBlock.h>

namespace Velorn {
namespace {

constexpr double sliceTime = 0.0;
constexpr const char* gridI = "Grid_I";
constexpr const char* gridJ = "Grid_J";
constexpr const char* gridOfGroundTruth = "GroundTruth";

}  // namespace

CorrespondenceBlock::CorrespondenceBlock(std::filesystem::path path, bool groundTruth,
                                         const std::uint32_t& weekNumberI,
                                         const std::uint32_t& weekNumberJ,
                                         std::shared_ptr<Strandel::MyStorage> storage)
    : path_(std::move(path)),
      groundTruth_(groundTruth),
      storage_(std::move(storage)),
      bundle_(std::make_shared<Strandel::Bundle>()) {
  const auto slice = bundle_->makeSlice(sliceTime);
  sideI_ = SphericalBeingData(slice->makeGrid(gridI), false, weekNumberI);
  sideJ_ = SphericalBeingData(slice->makeGrid(groundTruth ? gridOfGroundTruth : gridJ), groundTruth,
                              weekNumberJ);
}

CorrespondenceBlock::CorrespondenceBlock(std::filesystem::path path,
                                         std::shared_ptr<Strandel::MyStorage> storage)
    : path_(std::move(path)),
      storage_(std::move(storage)),
      bundle_(loadedBundle(path_, storage_.get())) {
  if (!bundle_) {
    error_ = "CorrespondenceBlock::load: cannot load file " + path_.string();
    return;
  }
  const auto slice = bundle_->slice(sliceTime);
  const auto gridOf = [&](const char* name) { return slice ? slice->grid(name) : nullptr; };
  error_ = loadSide(gridOf(gridI), path_, sideI_);
  loadSideJ(gridOf(gridJ), gridOf(gridOfGroundTruth));
}

void CorrespondenceBlock::loadSideJ(const Strandel::GridPtr& strip,
                                    const Strandel::GridPtr& groundTruth) {
  groundTruth_ = !strip && groundTruth;
  sideJ_.groundTruth = groundTruth_;
  const bool found = strip || groundTruth;
  const auto fault = found
                         ? loadSide(strip ? strip : groundTruth, path_, sideJ_)
                         : "CorrespondenceBlock::load: cannot load grid for file " + path_.string();
  if (!fault.empty()) error_ = fault;
}

void CorrespondenceBlock::add(const SphericalBeing& i, const SphericalBeing& j) {
  sideI_.add(i);
  sideJ_.add(j);
}

std::pair<SphericalBeing, SphericalBeing> CorrespondenceBlock::get(
    const std::uint32_t& index) const {
  if (index >= sideI_.completeEntries() || index >= sideJ_.completeEntries()) {
    throw std::out_of_range(
        fmt::format("CorrespondenceBlock::get: {}: index {}, the sides hold {} and {}",
                    path_.string(), index, sideI_.completeEntries(), sideJ_.completeEntries()));
  }
  return {sideI_[index], sideJ_[index]};
}

std::uint32_t CorrespondenceBlock::size() const {
  return static_cast<std::uint32_t>(sideI_.size());
}

std::string CorrespondenceBlock::save() {
  const auto refused = [this](const std::string& fault) {
    return fmt::format("CorrespondenceBlock::save: {}: {}", path_.string(), fault);
  };
  if (!error_.empty()) return refused("not saved, since loading it failed: " + error_);
  if (size() == 0) return {};
  if (!bundle_ || !storage_) return refused("the block has no file or no storage");
  return firstFault([&] { return storeSide(sideI_); }, [&] { return storeSide(sideJ_); },
                    [&] { return storage_->save(*bundle_, path_, "wd"); });
}

}  // namespace Velorn
