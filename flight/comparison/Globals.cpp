// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/comparison/Globals.h"

#include <array>
#include <numbers>

#include "platform/geomra/Degree.h"

namespace Velorn::Flights::Comparison {
namespace {

using Geomra::degreesPerRadian;

using Eigen::Vector3d;
using Velorn::SolverParameters;

constexpr double toMillionths = 1e6;

Simulation::MountingValues estimatedBy(const SolverParameters& parameters) {
  Simulation::MountingValues mounting;
  for (unsigned j = 0; j < 3; ++j) {
    mounting.offsets[j] = parameters.getRangeAngleOffset(j);
    mounting.scales[j] = parameters.getRangeAngleScale(j);
    mounting.misalignment[j] = parameters.getMisalignment(j);
    mounting.leverArm[j] = parameters.getLeverArm(j);
  }
  return mounting;
}

/// Correction of roll, pitch and yaw that the model has for a time [rad].
Vector3d attitudeCorrection(const SolverParameters& parameters, unsigned strip, double time) {
  Vector3d sum = Vector3d::Zero();
  const auto found = parameters.findSection(strip, time);
  if (!found) return sum;
  const double dt = time - found->section.t;
  for (unsigned j = 0; j < 3; ++j) {
    double power = 1.0;
    for (unsigned m = 0; m < 4; ++m, power *= dt) {
      sum[j] +=
          power * parameters.getTrajectoryAngleCorrection(found->section.sectionID, 4 * j + m);
    }
  }
  return sum;
}

/// Mean over the time of every strip, every strip counting the same.
/// @param correctionAt  of a strip's place and a time
template <typename Function>
Vector3d meanOverStrips(const Truth& truth, const Function& correctionAt) {
  constexpr int samples = 200;
  Vector3d sum = Vector3d::Zero();
  for (std::size_t i = 0; i < truth.strips.size(); ++i) {
    const double first = truth.strips[i].errors.firstTime, last = truth.strips[i].lastTime;
    for (int k = 0; k < samples; ++k) {
      sum += correctionAt(i, first + (k + 0.5) / samples * (last - first));
    }
  }
  return sum / (samples * static_cast<double>(truth.strips.size()));
}

/// About roll, pitch and yaw axis [rad].
Vector3d sumsOf(const Simulation::MountingValues& mounting, const ScanShape& shape,
                const Vector3d& meanAttitude) {
  constexpr double nadir = std::numbers::pi / 2.0;
  const Vector3d &o = mounting.offsets, &c = mounting.scales, &l = mounting.leverArm;
  const double depth = shape.meanDepth();
  const double forward = depth > 0.0 ? l[0] / depth : 0.0, right = depth > 0.0 ? l[1] / depth : 0.0;
  return mounting.misalignment + meanAttitude +
         Vector3d(o[2] + c[2] * nadir - right, o[1] + c[1] * shape.atNadir() + forward,
                  -c[1] * shape.slope());
}

}  // namespace

std::vector<GlobalFigure> globalsOf(const Truth& truth, const SolverParameters& parameters) {
  const Simulation::MountingValues found = estimatedBy(parameters);
  std::vector<GlobalFigure> figures;
  const auto add = [&](std::array<const char*, 3> names, std::array<const char*, 3> units,
                       const Vector3d& factor, Vector3d Simulation::MountingValues::*of) {
    for (unsigned j = 0; j < 3; ++j) {
      figures.push_back({names[j], units[j], factor[j] * (truth.real.*of)[j],
                         factor[j] * (truth.nominal.*of)[j], factor[j] * (found.*of)[j]});
    }
  };
  using M = Simulation::MountingValues;
  const Vector3d ones = Vector3d::Ones();
  add({"offset of range", "offset of angle 1", "offset of angle 2"}, {"m", "deg", "deg"},
      {1.0, degreesPerRadian, degreesPerRadian}, &M::offsets);
  add({"scale of range", "scale of angle 1", "scale of angle 2"}, {"1e-6", "1e-6", "1e-6"},
      toMillionths * ones, &M::scales);
  add({"misalignment roll", "misalignment pitch", "misalignment yaw"}, {"deg", "deg", "deg"},
      degreesPerRadian * ones, &M::misalignment);
  add({"lever arm forward", "lever arm right", "lever arm down"}, {"m", "m", "m"}, ones,
      &M::leverArm);
  return figures;
}

std::vector<GlobalFigure> separableSums(const Truth& truth, const ScanShape& shape,
                                        const SolverParameters& parameters) {
  const Vector3d attitude = meanOverStrips(truth, [&](std::size_t strip, double time) {
    const auto& errors = truth.strips[strip].errors;
    return errors.attitude.at(time - errors.firstTime);
  });
  const Vector3d found = meanOverStrips(truth, [&](std::size_t strip, double time) {
    return attitudeCorrection(parameters, static_cast<unsigned>(strip), time);
  });
  const Vector3d real = degreesPerRadian * sumsOf(truth.real, shape, attitude),
                 nominal = degreesPerRadian * sumsOf(truth.nominal, shape, Vector3d::Zero()),
                 estimated = degreesPerRadian * sumsOf(estimatedBy(parameters), shape, found);
  return {{"sum about roll", "deg", real[0], nominal[0], estimated[0]},
          {"sum about pitch", "deg", real[1], nominal[1], estimated[1]},
          {"sum about yaw", "deg", real[2], nominal[2], estimated[2]}};
}

}  // namespace Velorn::Flights::Comparison
