// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/InnerOrdering.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <unordered_map>
#include <vector>

namespace Velorn {
namespace {

/// Estimated blocks in the order in which the problem got them, and those that share a residual.
class Neighbourhoods {
 public:
  explicit Neighbourhoods(const ceres::Problem& problem) {
    std::vector<ceres::ResidualBlockId> residuals;
    problem.GetResidualBlocks(&residuals);
    std::vector<double*> ofThis, ofLast;
    for (const auto& residual : residuals) {
      problem.GetParameterBlocksForResidualBlock(residual, &ofThis);
      if (ofThis != ofLast) add(problem, ofThis);
      ofLast.swap(ofThis);
    }
  }

  std::size_t size() const { return blocks_.size(); }
  double* block(std::size_t number) const { return blocks_[number]; }

  /// Takes blocks of which no two are neighbours out of those left, those with few neighbours left
  /// before others.
  std::vector<std::size_t> takeIndependent(std::vector<std::size_t>& left) {
    std::stable_sort(left.begin(), left.end(), [this](std::size_t a, std::size_t b) {
      return neighbours_[a].size() < neighbours_[b].size();
    });
    std::vector<std::size_t> taken;
    std::vector<char> isNext(size());
    for (const std::size_t number : left) {
      if (isNext[number] != 0) continue;
      taken.push_back(number);
      for (const std::size_t other : neighbours_[number]) isNext[other] = 1;
    }
    for (const std::size_t number : taken) remove(number);
    std::erase_if(left, [&](std::size_t number) { return isNext[number] == 0; });
    std::sort(left.begin(), left.end());
    return taken;
  }

 private:
  void add(const ceres::Problem& problem, const std::vector<double*>& blocks) {
    std::vector<std::size_t> numbers;
    for (double* block : blocks) {
      if (problem.IsParameterBlockConstant(block)) continue;
      const auto [entry, isNew] = numbers_.emplace(block, blocks_.size());
      if (isNew) {
        blocks_.push_back(block);
        neighbours_.emplace_back();
      }
      numbers.push_back(entry->second);
    }
    for (const std::size_t number : numbers) {
      neighbours_[number].insert(numbers.begin(), numbers.end());
      neighbours_[number].erase(number);
    }
  }

  void remove(std::size_t number) {
    for (const std::size_t other : neighbours_[number]) neighbours_[other].erase(number);
    neighbours_[number].clear();
  }

  std::unordered_map<double*, std::size_t> numbers_;
  std::vector<double*> blocks_;
  std::vector<std::set<std::size_t>> neighbours_;
};

}  // namespace

std::shared_ptr<ceres::ParameterBlockOrdering> innerOrderingOf(const ceres::Problem& problem) {
  Neighbourhoods neighbourhoods(problem);
  if (neighbourhoods.size() < 2) return nullptr;
  std::vector<std::size_t> left(neighbourhoods.size());
  for (std::size_t number = 0; number < left.size(); ++number) left[number] = number;
  auto ordering = std::make_shared<ceres::ParameterBlockOrdering>();
  for (int round = 0; !left.empty(); ++round) {
    for (const std::size_t number : neighbourhoods.takeIndependent(left)) {
      ordering->AddElementToGroup(neighbourhoods.block(number), round);
    }
  }
  ordering->Reverse();
  return ordering;
}

}  // namespace Velorn
