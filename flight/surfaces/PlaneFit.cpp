// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/PlaneFit.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>

namespace Velorn::Flights {
namespace {

using Eigen::Matrix3d, Eigen::Vector3d;

constexpr double narrowest = 0.05;  // lesser spread in units of the greater one

/// Moments about the first point keep their digits whatever the size of the coordinates.
Vector3d from(const point& origin, const point& place) {
  return {place.x - origin.x, place.y - origin.y, place.z - origin.z};
}

double squaresAlong(const Vector3d& normal, std::span<const point> points, const Vector3d& mean) {
  double sum = 0.0;
  for (const point& place : points) {
    const double distance = normal.dot(from(points.front(), place) - mean);
    sum += distance * distance;
  }
  return sum;
}

}  // namespace

PlaneFit planeThrough(std::span<const point> points) {
  PlaneFit fit;
  if (points.size() < fewestForPlane) return fit;
  const auto n = static_cast<double>(points.size());
  Vector3d sum = Vector3d::Zero();
  Matrix3d squares = Matrix3d::Zero();
  for (const point& place : points) {
    const Vector3d d = from(points.front(), place);
    sum += d;
    squares += d * d.transpose();
  }
  const Vector3d mean = sum / n;
  Eigen::SelfAdjointEigenSolver<Matrix3d> moments;
  moments.computeDirect(squares / n - mean * mean.transpose());
  const Vector3d spread = moments.eigenvalues().cwiseMax(0.0).cwiseSqrt();
  Vector3d normal = moments.eigenvectors().col(0);
  const double roughness = std::sqrt(squaresAlong(normal, points, mean) / (n - 3.0));
  fit.thickness = roughness;
  if (!(spread[1] >= narrowest * spread[2]) || !(spread[1] > 2.0 * roughness)) return fit;
  if (normal[2] < 0.0) normal = -normal;
  const point& origin = points.front();
  fit.centroid = {origin.x + mean[0], origin.y + mean[1], origin.z + mean[2]};
  fit.normal = {normal[0], normal[1], normal[2]};
  fit.roughness = roughness;
  fit.spread = {spread[1], spread[2]};
  fit.points = points.size();
  return fit;
}

}  // namespace Velorn::Flights
