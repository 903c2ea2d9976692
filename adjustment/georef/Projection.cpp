// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/Projection.h"

#include <cmath>

namespace Velorn {
namespace {

/// n^j (k[0] + k[1] n + k[2] n² + ...)
template <std::size_t terms>
double power(double n, int j, const std::array<double, terms>& k) {
  double sum = 0.0;
  for (std::size_t i = terms; i-- > 0;) sum = sum * n + k[i];
  return sum * std::pow(n, j);
}

std::array<double, 6> alpha(double n) {
  return {power<6>(n, 1, {1.0 / 2, -2.0 / 3, 5.0 / 16, 41.0 / 180, -127.0 / 288, 7891.0 / 37800}),
          power<5>(n, 2, {13.0 / 48, -3.0 / 5, 557.0 / 1440, 281.0 / 630, -1983433.0 / 1935360}),
          power<4>(n, 3, {61.0 / 240, -103.0 / 140, 15061.0 / 26880, 167603.0 / 181440}),
          power<3>(n, 4, {49561.0 / 161280, -179.0 / 168, 6601661.0 / 7257600}),
          power<2>(n, 5, {34729.0 / 80640, -3418889.0 / 1995840}),
          power<1>(n, 6, {212378941.0 / 319334400})};
}

std::array<double, 6> beta(double n) {
  return {power<6>(n, 1, {1.0 / 2, -2.0 / 3, 37.0 / 96, -1.0 / 360, -81.0 / 512, 96199.0 / 604800}),
          power<5>(n, 2, {1.0 / 48, 1.0 / 15, -437.0 / 1440, 46.0 / 105, -1118711.0 / 3870720}),
          power<4>(n, 3, {17.0 / 480, -37.0 / 840, -209.0 / 4480, 5569.0 / 90720}),
          power<3>(n, 4, {4397.0 / 161280, -11.0 / 504, -830251.0 / 7257600}),
          power<2>(n, 5, {4583.0 / 161280, -108847.0 / 3991680}),
          power<1>(n, 6, {20648693.0 / 638668800})};
}

/// A: the meridian's length over 2π.
double rectifyingRadius(double a, double n) {
  const double n2 = n * n;
  return a / (1.0 + n) * (1.0 + n2 * (1.0 / 4 + n2 * (1.0 / 64 + n2 / 256)));
}

}  // namespace

Projection projectionOf(const Tessaly::TransverseMercatorProjectionParameter& parameter) {
  const auto ellipsoid = parameter.getEllipsoid();
  const double a = ellipsoid.getSemiMajorAxis(), f = ellipsoid.getFlattening();
  const double n = f / (2.0 - f);
  return {a,
          a * (1.0 - f),
          ellipsoid.getFirstSquaredEccentricity(),
          parameter.getScaleAtCentralMeridian() * rectifyingRadius(a, n),
          parameter.getFalseEasting(),
          parameter.getFalseNorthing(),
          parameter.getCentralMeridian(),
          alpha(n),
          beta(n)};
}

}  // namespace Velorn
