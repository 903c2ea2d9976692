// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/stochastics/StochasticModel.h"

#include <algorithm>
#include <cmath>

#include "adjustment/stochastics/VarianceComponents.h"

namespace Velorn {
namespace {

constexpr double huber = 3.0;  // in units of the standard deviation
constexpr double settled = 0.05;

void tell(const GroupSums& sums, double effect, GroupDeviation& group) {
  group.count = sums.count;
  group.designEffect = effect;
}

/// @return by what σ changes
double estimateClass(const GroupSums& sums, double effect, double& sigma, GroupDeviation& group) {
  tell(sums, effect, group);
  const auto factor =
      varianceFactorOf({sums.sumOfSquares, static_cast<double>(sums.count) / effect, sums.trace});
  const double change = factor.isEstimated ? factor.standardDeviation() : 1.0;
  sigma *= change;
  group.redundancy = factor.redundancy;
  group.isEstimated = factor.isEstimated;
  group.sigma = sigma;
  return change;
}

/// A standard deviation of a data sheet is a guess itself, as if of ten observations: the mean of
/// its inverse gamma distribution after those of this flight. A gross error so loosens what it
/// contradicts.
/// @param factor  of the expected σ
/// @return by what it changes
double estimatePrior(const GroupSums& sums, double& factor, GroupDeviation& group) {
  constexpr double known = 10.0;
  tell(sums, 1.0, group);
  group.redundancy = std::max(0.0, static_cast<double>(sums.count) - sums.trace);
  const double squares = factor * factor * sums.sumOfSquares;  // in units of the expected variance
  const double next = std::sqrt((known + squares) / (known + group.redundancy));
  const double change = next / factor;
  factor = next;
  group.isEstimated = group.redundancy >= 1.0;
  group.sigma = factor;
  return change;
}

}  // namespace

StochasticModel::StochasticModel(const APrioriKnowledge& knowledge, std::size_t classes)
    : sigmas_(classes, knowledge.pairs), effects_(classes, 1.0) {
  if (classes > 0) sigmas_.front() = knowledge.control;
  factors_.fill(1.0);
  for (const double sigma : sigmas_)
    deviations_.classes.push_back({.apriori = sigma, .sigma = sigma});
  for (auto& prior : deviations_.priors) prior.apriori = prior.sigma = 1.0;
  update();
}

void StochasticModel::update() {
  weights_.clear();
  costFactors_.clear();
  for (const double sigma : sigmas_) weights_.push_back(1.0 / (huber * sigma));
  for (const double effect : effects_) costFactors_.push_back(huber * huber / effect);
}

void StochasticModel::setDesignEffect(std::size_t ofClass, const DesignEffect& effect) {
  effects_.at(ofClass) = effect.factor;
  update();
}

void StochasticModel::estimate(const std::vector<GroupSums>& classes,
                               const std::array<GroupSums, priorGroups>& priors) {
  ++deviations_.rounds;
  double largest = 0.0;
  const auto note = [&](double change) { largest = std::max(largest, std::abs(std::log(change))); };
  for (std::size_t k = 0; k < sigmas_.size(); ++k) {
    if (classes.at(k).count == 0) continue;
    note(estimateClass(classes[k], effects_[k], sigmas_[k], deviations_.classes[k]));
  }
  for (std::size_t k = 0; k < priorGroups; ++k) {
    if (priors[k].count == 0) continue;
    note(estimatePrior(priors[k], factors_[k], deviations_.priors[k]));
  }
  deviations_.isSettled = largest < settled;
  update();
}

}  // namespace Velorn
