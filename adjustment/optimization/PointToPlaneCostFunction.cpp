// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/PointToPlaneCostFunction.h"

#include <fmt/format.h>

#include "adjustment/correspondence/ClassCode.h"
#include "adjustment/georef/PhysicalSpace.h"

namespace Velorn {
namespace {

GeoTransformationCeresReborn prepared(const pointToPlaneCostFunction::Run& run,
                                      const pointToPlaneCostFunction::Side& side) {
  return {run.trajectory,        side.being,    side.week, side.section,
          run.interpolationFlag, run.projection};
}

}  // namespace

pointToPlaneCostFunction::pointToPlaneCostFunction(const Run& run, const Side& first,
                                                   const Side& second)
    : first_(prepared(run, first)),
      second_(prepared(run, second)),
      normal_(vectorOf(first.being.normal)),
      weights_(&run.weights),
      weightIndex_(classIndex(first.being.classification)) {}

pointToPlaneCostFunction::pointToPlaneCostFunction(const Run& run, const Side& first,
                                                   const Geomra::PhysicalSpace::point& groundTruth)
    : first_(prepared(run, first)),
      groundTruth_(vectorOf(groundTruth)),
      normal_(vectorOf(first.being.normal)),
      weights_(&run.weights),
      weightIndex_(classIndex(first.being.classification)) {}

std::vector<int> pointToPlaneCostFunction::blockSizes() const {
  std::vector<int> sizes{3, 3, 3, 3, 12, 12};
  if (second_) sizes.insert(sizes.end(), {12, 12});
  return sizes;
}

bool pointToPlaneCostFunction::refuseClass() const {
  Morvane::Console::writeLine(
      fmt::format("pointToPlaneCostFunction: no weight for the class; there are {} for the codes "
                  "from {} on",
                  weights_->size(), firstClassCode));
  return false;
}

}  // namespace Velorn
