// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "tests/adjustment/georef/ExactModel.h"

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace Exact {
namespace {

using Complex = std::complex<Real>;
using Zone = Tessaly::TransverseMercatorProjectionParameter;

constexpr int rounds = 12;  // of Newton's and other iterations; all are at rest before
constexpr Real pi = std::numbers::pi_v<Real>;

/// Constants of the ellipsoid, from the inverse flattening in its nine defining decimals.
struct Ellipsoid {
  Real a, e2 = 0, e = 0;
  explicit Ellipsoid(const Zone& zone) : a(zone.getEllipsoid().getSemiMajorAxis()) {
    const Real inverse = std::round(1e9L / Real(zone.getEllipsoid().getFlattening())) / 1e9L;
    e2 = (2 - 1 / inverse) / inverse;
    e = std::sqrt(e2);
  }
};

/// Nodes and weights on (-1, 1), by Newton's iteration for the roots of Legendre's polynomial.
std::vector<std::array<Real, 2>> gaussLegendre(int n) {
  std::vector<std::array<Real, 2>> rule;
  for (int i = 0; i < n; ++i) {
    Real x = std::cos(pi * (static_cast<Real>(i) + 0.75L) / (static_cast<Real>(n) + 0.5L));
    Real slope = 1;
    for (int round = 0; round < rounds; ++round) {
      Real p = 1, before = 0;
      for (int k = 1; k <= n; ++k) {
        const Real next = ((2 * k - 1) * x * p - (k - 1) * before) / static_cast<Real>(k);
        before = p;
        p = next;
      }
      slope = static_cast<Real>(n) * (x * p - before) / (x * x - 1);
      x -= p / slope;
    }
    rule.push_back({x, 2 / ((1 - x * x) * slope * slope)});
  }
  return rule;
}

Complex arcPerRadian(const Complex& latitude, const Ellipsoid& ell) {
  const Complex s = std::sin(latitude), w = Real(1) - ell.e2 * s * s;
  return ell.a * (1 - ell.e2) / (w * std::sqrt(w));
}

/// Length of the meridian from the equator, an analytic function of the latitude.
Complex meridianArc(const Complex& latitude, const Ellipsoid& ell) {
  static const auto rule = gaussLegendre(30);
  Complex sum = 0;
  for (const auto& [x, weight] : rule) {
    sum += weight * arcPerRadian(latitude * ((1 + x) / 2), ell);
  }
  return sum * latitude / Real(2);
}

Complex isometricLatitude(const Complex& latitude, const Ellipsoid& ell) {
  return std::asinh(std::tan(latitude)) - ell.e * std::atanh(ell.e * std::sin(latitude));
}

/// Of isometric latitude and longitude, q + iλ; λ may be 0.
Complex latitudeOfIsometric(const Complex& q, const Ellipsoid& ell) {
  Complex latitude = std::atan(std::sinh(q));
  for (int round = 0; round < rounds; ++round) {
    latitude = std::atan(std::sinh(q + ell.e * std::atanh(ell.e * std::sin(latitude))));
  }
  return latitude;
}

std::array<Triple, 3> product(const std::array<Triple, 3>& a, const std::array<Triple, 3>& b) {
  std::array<Triple, 3> c{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      for (std::size_t k = 0; k < 3; ++k) c[i][j] += a[i][k] * b[k][j];
    }
  }
  return c;
}

Triple product(const std::array<Triple, 3>& a, const Triple& b) {
  Triple c{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t k = 0; k < 3; ++k) c[i] += a[i][k] * b[k];
  }
  return c;
}

std::array<Triple, 3> rotation(Real x, Real y, Real z) {
  const Real cx = std::cos(x), sx = std::sin(x), cy = std::cos(y), sy = std::sin(y);
  const Real cz = std::cos(z), sz = std::sin(z);
  const std::array<Triple, 3> rx{{{1, 0, 0}, {0, cx, -sx}, {0, sx, cx}}};
  const std::array<Triple, 3> ry{{{cy, 0, sy}, {0, 1, 0}, {-sy, 0, cy}}};
  const std::array<Triple, 3> rz{{{cz, -sz, 0}, {sz, cz, 0}, {0, 0, 1}}};
  return product(rz, product(ry, rx));
}

Triple earthCentred(const Triple& g, const Ellipsoid& ell) {
  const Real n = ell.a / std::sqrt(1 - ell.e2 * std::sin(g[1]) * std::sin(g[1]));
  return {(n + g[2]) * std::cos(g[1]) * std::cos(g[0]),
          (n + g[2]) * std::cos(g[1]) * std::sin(g[0]), (n * (1 - ell.e2) + g[2]) * std::sin(g[1])};
}

Triple geographic(const Triple& x, const Ellipsoid& ell) {
  const Real fromAxis = std::hypot(x[0], x[1]);
  Real latitude = std::atan2(x[2], fromAxis * (1 - ell.e2)), n = 0;
  for (int round = 0; round < rounds; ++round) {
    const Real s = std::sin(latitude);
    n = ell.a / std::sqrt(1 - ell.e2 * s * s);
    latitude = std::atan2(x[2] + ell.e2 * n * s, fromAxis);
  }
  const Real s = std::sin(latitude);
  return {std::atan2(x[1], x[0]), latitude,
          fromAxis * std::cos(latitude) + x[2] * s - ell.a * std::sqrt(1 - ell.e2 * s * s)};
}

Real cubic(const Unknowns& u, std::size_t first, Real dt) {
  return u[first] + u[first + 1] * dt + u[first + 2] * dt * dt + u[first + 3] * dt * dt * dt;
}

}  // namespace

Triple projected(const Triple& g, const Zone& zone) {
  const Ellipsoid ell(zone);
  const Complex q(isometricLatitude(g[1], ell).real(), g[0] - Real(zone.getCentralMeridian()));
  const Complex arc =
      Real(zone.getScaleAtCentralMeridian()) * meridianArc(latitudeOfIsometric(q, ell), ell);
  return {zone.getFalseEasting() + arc.imag(), zone.getFalseNorthing() + arc.real(), g[2]};
}

Triple geographicOfProjected(const Triple& point, const Zone& zone) {
  const Ellipsoid ell(zone);
  const Complex arc =
      Complex(point[1] - zone.getFalseNorthing(), point[0] - zone.getFalseEasting()) /
      Real(zone.getScaleAtCentralMeridian());
  Complex latitude = arc / ell.a;
  for (int round = 0; round < rounds; ++round) {
    latitude -= (meridianArc(latitude, ell) - arc) / arcPerRadian(latitude, ell);
  }
  const Complex q = isometricLatitude(latitude, ell);
  return {Real(zone.getCentralMeridian()) + q.imag(), latitudeOfIsometric(q.real(), ell).real(),
          point[2]};
}

Triple worldPoint(const Measurement& m, const Unknowns& u, const Zone& zone) {
  const auto& s = m.scanner;
  const Real range = std::sqrt(s[0] * s[0] + s[1] * s[1] + s[2] * s[2]);
  const Triple q{range, std::asin(s[1] / range), std::atan2(s[0], s[2])};
  Triple c{}, position{}, attitude{};
  for (std::size_t i = 0; i < 3; ++i) {
    c[i] = (1 + u[3 + i]) * q[i] + u[i];
    position[i] = m.position[i] + cubic(u, 12 + 4 * i, m.dt);
    attitude[i] = m.attitude[i] + cubic(u, 24 + 4 * i, m.dt);
  }
  // The scanner's axes are down, forward, right; the body's forward, right, down.
  const Triple corrected{c[0] * std::sin(c[1]), c[0] * std::cos(c[1]) * std::cos(c[2]),
                         c[0] * std::cos(c[1]) * std::sin(c[2])};
  Triple body = product(rotation(u[6], u[7], u[8]), corrected);
  for (std::size_t i = 0; i < 3; ++i) body[i] += u[9 + i];
  const Triple level = product(rotation(attitude[0], attitude[1], attitude[2]), body);

  const Ellipsoid ell(zone);
  const Triple g = geographicOfProjected(position, zone);
  // North, east, down to earth-centred: down the vertical, then up the meridian, then about the
  // axis.
  const auto c2e = product(rotation(0, 0, g[0]), rotation(0, -g[1] - pi / 2, 0));
  Triple x = earthCentred(g, ell);
  const Triple offset = product(c2e, level);
  for (std::size_t i = 0; i < 3; ++i) x[i] += offset[i];
  return projected(geographic(x, ell), zone);
}

std::array<Triple, unknowns> derivatives(const Measurement& m, const Unknowns& u,
                                         const Zone& zone) {
  std::array<Triple, unknowns> all{};
  for (std::size_t i = 0; i < unknowns; ++i) {
    const auto slope = [&](Real width) {
      Unknowns above = u, below = u;
      above[i] += width;
      below[i] -= width;
      const Triple a = worldPoint(m, above, zone), b = worldPoint(m, below, zone);
      return Triple{(a[0] - b[0]) / (2 * width), (a[1] - b[1]) / (2 * width),
                    (a[2] - b[2]) / (2 * width)};
    };
    // Steps of the pose are what counts, and dt³ reaches 2e5: metres are wide, angles narrow.
    const bool ofSection = i >= 12, length = i == 0 || (i >= 9 && i < 24);
    const Real power = ofSection ? std::pow(std::max<Real>(1, m.dt), Real(i % 4)) : 1;
    const Real width = (length ? 1 : 1e-3L) / power;
    const Triple wide = slope(width), narrow = slope(width / 2);
    for (std::size_t k = 0; k < 3; ++k) all[i][k] = (4 * narrow[k] - wide[k]) / 3;
  }
  return all;
}

}  // namespace Exact
