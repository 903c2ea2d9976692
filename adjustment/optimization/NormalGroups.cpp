// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/NormalGroups.h"

#include <algorithm>
#include <cmath>

#include "adjustment/correspondence/ClassCode.h"
#include "adjustment/georef/TrajectoryCorrection.h"
#include "adjustment/model/Layout.h"
#include "adjustment/observability/SelectedInverse.h"
#include "adjustment/optimization/ParameterBlocks.h"
#include "adjustment/optimization/PlacedCorrespondences.h"

namespace Velorn {
namespace {

constexpr Eigen::Index sectionSize = localParameters, positionSize = positionParameters,
                       globalSize = globalBlock;

/// By place in the vector of unknowns.
std::vector<bool> estimatedUnknowns(const ProblemInputs& inputs) {
  const auto& parameters = inputs.parameters;
  std::vector<bool> isEstimated(parameters.getNumberOfParameters());
  for (const auto& strip : parameters.getStripSections()) {
    for (const auto& [start, section] : strip.sections) {
      if (isConstant(inputs, section)) continue;
      const auto [position, angles] = usedPowers(section.type);
      const auto first = isEstimated.begin() + sectionSize * std::ptrdiff_t{section.sectionID};
      for (std::ptrdiff_t j = 0; j < 3; ++j) {
        std::fill_n(first + 4 * j, position, true);
        std::fill_n(first + positionSize + 4 * j, angles, true);
      }
    }
  }
  const auto globals = estimatedGlobals(inputs.settings);
  const std::size_t first = isEstimated.size() - globalSize * globals.size();
  for (std::size_t i = 0; i < globalSize * globals.size(); ++i) {
    isEstimated[first + i] = globals[i / globalSize];
  }
  return isEstimated;
}

/// A sum that what is held has no part in.
class EstimatedSum {
 public:
  explicit EstimatedSum(const std::vector<bool>& isEstimated)
      : isEstimated_(isEstimated), sum_(static_cast<Eigen::Index>(isEstimated.size())) {}

  /// @param unknowns  places of the rows and columns
  void add(const std::vector<Eigen::Index>& unknowns, const Eigen::MatrixXd& normals) {
    std::vector<Eigen::Index> taken, places;
    for (std::size_t i = 0; i < unknowns.size(); ++i) {
      if (!isEstimated_[static_cast<std::size_t>(unknowns[i])]) continue;
      taken.push_back(static_cast<Eigen::Index>(i));
      places.push_back(unknowns[i]);
    }
    if (!places.empty()) sum_.add(places, normals(taken, taken));
  }
  NormalMatrix matrix() const { return sum_.matrix(); }

 private:
  const std::vector<bool>& isEstimated_;
  NormalSum sum_;
};

Eigen::Index unknownOf(const Columns::Place& place, const SectionPair& pair, std::size_t sections) {
  const auto block = static_cast<Eigen::Index>(place.block);
  if (place.block < sectionBlocks) {
    return sectionSize * static_cast<Eigen::Index>(sections) + globalSize * block + place.entry;
  }
  const Section& section = place.block < sectionBlocks + 2 ? pair.first : *pair.second;
  return sectionSize * Eigen::Index{section.sectionID} + positionSize * (block % 2) + place.entry;
}

Chunk wholeOf(const ClassRun& run) {
  return {0, static_cast<std::uint32_t>(run.records.size())};
}

/// Calls use(evaluation, pair) for every pair of sections.
template <typename Use>
void forEachPair(const ProblemInputs& inputs, const CondensedRun& run, const Use& use) {
  for (const SectionPair& pair : run.store.pairs()) {
    std::vector<Section> sections{pair.first};
    if (pair.second) sections.push_back(*pair.second);
    const auto blocks = parameterBlocks(inputs.parameters, sections);
    use(PairEvaluation(run.store, pair, blocks.data()), pair);
  }
}

void addCorrespondences(const ProblemInputs& inputs, const CondensedRun& run,
                        const std::vector<bool>& isEstimated, NormalGroups& groups) {
  const std::size_t classes = inputs.weights().size();
  const std::size_t sections = inputs.parameters.numberOfSectionsForAllStrips();
  std::vector<EstimatedSum> sums(classes, EstimatedSum(isEstimated));
  groups.classes.resize(classes);
  forEachPair(inputs, run, [&](const PairEvaluation& evaluation, const SectionPair& pair) {
    for (const ClassRun& its : pair.runs) {
      const auto found = evaluation.sums(its, wholeOf(its), PairEvaluation::everyBlock);
      std::vector<Eigen::Index> unknowns;
      for (const auto& place : found.columns) unknowns.push_back(unknownOf(place, pair, sections));
      const std::size_t k = classIndex(its.classCode);
      sums.at(k).add(unknowns, found.normalMatrix());
      groups.classes[k].sums.count += found.count;
      groups.classes[k].sums.sumOfSquares += found.sumOfSquares();
    }
  });
  for (std::size_t k = 0; k < classes; ++k) groups.classes[k].normals = sums[k].matrix();
}

void addKnown(const ProblemInputs& inputs, const std::vector<bool>& isEstimated,
              NormalGroups& groups) {
  const auto unknowns = unknownsOf(inputs.parameters);
  const Eigen::VectorXd values =
      Eigen::VectorXd::Map(unknowns.data(), static_cast<Eigen::Index>(unknowns.size()));
  std::vector<EstimatedSum> sums(priorGroups, EstimatedSum(isEstimated));
  EstimatedSum joints(isEstimated);
  for (const auto& prior :
       rescaled(inputs.knowledge->priors, inputs.knowledge->model.priorFactors())) {
    const auto group = static_cast<std::size_t>(prior.group);
    auto& its = groups.priors[group].sums;
    its.count += prior.degreesOfFreedom;
    for (const auto& rows : prior.rows) {
      sums[group].add(rows.unknowns, rows.rows.transpose() * rows.rows);
      its.sumOfSquares += rows.residuals(values).squaredNorm();
    }
    for (const auto& rows : prior.joints) {
      joints.add(rows.unknowns, rows.rows.transpose() * rows.rows);
    }
  }
  for (std::size_t k = 0; k < priorGroups; ++k) groups.priors[k].normals = sums[k].matrix();
  groups.joints = joints.matrix();
}

}  // namespace

NormalMatrix NormalGroups::prior() const {
  NormalMatrix all = joints;
  for (const auto& group : priors) all += group.normals;
  return all;
}

NormalMatrix NormalGroups::sum() const {
  NormalMatrix all = prior();
  for (const auto& group : classes) all += group.normals;
  return all;
}

NormalGroups normalGroups(const ProblemInputs& inputs, const CondensedRun& run) {
  NormalGroups groups;
  const auto isEstimated = estimatedUnknowns(inputs);
  addCorrespondences(inputs, run, isEstimated, groups);
  addKnown(inputs, isEstimated, groups);
  return groups;
}

std::vector<DesignEffect> designEffects(const ProblemInputs& inputs, const CondensedRun& run,
                                        const NormalGroups& groups) {
  const std::size_t sections = inputs.parameters.numberOfSectionsForAllStrips();
  const NormalMatrix all = groups.sum();
  const Eigen::VectorXd diagonal = all.diagonal();
  std::vector<ChunkScatter> scatters(inputs.weights().size());
  forEachPair(inputs, run, [&](const PairEvaluation& evaluation, const SectionPair& pair) {
    for (const ClassRun& its : pair.runs) {
      auto& scatter = scatters.at(classIndex(its.classCode));
      for (const Chunk& chunk : its.chunks) {
        const auto found = evaluation.sums(its, chunk, PairEvaluation::everyBlock);
        Eigen::VectorXd weights(static_cast<Eigen::Index>(found.columns.size()));
        for (Eigen::Index i = 0; i < weights.size(); ++i) {
          const double size =
              diagonal[unknownOf(found.columns[static_cast<std::size_t>(i)], pair, sections)];
          weights[i] = size > 0.0 ? 1.0 / size : 0.0;
        }
        scatter.count += found.count;
        scatter.squares += found.sumOfSquares();
        scatter.gradients += found.gradient().cwiseAbs2().dot(weights);
        scatter.expectations += found.normalMatrix().diagonal().dot(weights);
      }
    }
  });
  std::vector<DesignEffect> effects;
  effects.reserve(scatters.size());
  for (const auto& scatter : scatters) effects.push_back(designEffectOf(scatter));
  return effects;
}

void estimateDeviations(const ProblemInputs& inputs, CondensedRun& run, Knowledge& knowledge) {
  auto& model = knowledge.model;
  NormalGroups groups = normalGroups(inputs, run);
  const auto effects = designEffects(inputs, run, groups);
  for (std::size_t k = 0; k < effects.size(); ++k) {
    const double before = model.costFactors()[k];
    model.setDesignEffect(k, effects[k]);
    const double change = model.costFactors()[k] / before;
    groups.classes[k].normals *= change;
    groups.classes[k].sums.sumOfSquares *= change;
  }
  const SelectedInverse inverse(Cofactors(groups.sum()));
  const auto sumsOf = [&](const NormalGroup& group) {
    GroupSums sums = group.sums;
    sums.trace = std::max(0.0, inverse.traceWith(group.normals));
    return sums;
  };
  std::vector<GroupSums> classes;
  std::array<GroupSums, priorGroups> priors;
  for (const auto& group : groups.classes) classes.push_back(sumsOf(group));
  for (std::size_t k = 0; k < priorGroups; ++k) priors[k] = sumsOf(groups.priors[k]);
  model.estimate(classes, priors);
  run.store.weigh(model.weights(), model.costFactors());
}

void addPrecision(const ProblemInputs& inputs, const CondensedRun& run, AdjustmentResult& result) {
  const NormalGroups groups = normalGroups(inputs, run);
  const Cofactors cofactors(groups.sum());
  const SelectedInverse inverse(cofactors);
  const Eigen::VectorXd shares = inverse.sharesOf(groups.prior());
  const Eigen::VectorXd variances = inverse.diagonal();
  constexpr auto globals = static_cast<Eigen::Index>(globalParameters);
  for (Eigen::Index i = variances.size() - globals; i < variances.size(); ++i) {
    result.globals.push_back({std::sqrt(variances[i]), shares[i]});
  }
  for (const auto& sum : inputs.settings.sums) {
    result.sums.push_back(cofactors.standardDeviation({sum.begin(), sum.end()}));
  }
}

}  // namespace Velorn
