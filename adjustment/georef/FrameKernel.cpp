// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Points go through in blocks of eight, the last one filled up, so that each gets the same
// operations wherever it stands in a list.
#include "adjustment/georef/FrameKernel.h"

#include "adjustment/georef/Lanes.h"

namespace Velorn {
namespace {

using namespace OnLanes;

/// Eight points, three doubles each.
VELORN_INLINE Triple loadPoints(const double* from) {
  const Lanes a = load(from), b = load(from + lanes), c = load(from + 2 * lanes);
  const Lanes x = __builtin_shufflevector(a, b, 0, 3, 6, 9, 12, 15, 0, 0);
  const Lanes y = __builtin_shufflevector(a, b, 1, 4, 7, 10, 13, 0, 0, 0);
  const Lanes z = __builtin_shufflevector(a, b, 2, 5, 8, 11, 14, 0, 0, 0);
  return {__builtin_shufflevector(x, c, 0, 1, 2, 3, 4, 5, 10, 13),
          __builtin_shufflevector(y, c, 0, 1, 2, 3, 4, 8, 11, 14),
          __builtin_shufflevector(z, c, 0, 1, 2, 3, 4, 9, 12, 15)};
}

VELORN_INLINE void storePoints(double* to, const Triple& p) {
  const Lanes first = __builtin_shufflevector(p.x, p.y, 0, 8, 0, 1, 9, 0, 2, 10);
  const Lanes second = __builtin_shufflevector(p.x, p.y, 0, 3, 11, 0, 4, 12, 0, 5);
  const Lanes third = __builtin_shufflevector(p.x, p.y, 13, 0, 6, 14, 0, 7, 15, 0);
  const Lanes a = __builtin_shufflevector(first, p.z, 0, 1, 8, 3, 4, 9, 6, 7);
  const Lanes b = __builtin_shufflevector(second, p.z, 10, 1, 2, 11, 4, 5, 12, 7);
  const Lanes c = __builtin_shufflevector(third, p.z, 0, 13, 2, 3, 14, 5, 6, 15);
  store(to, a);
  store(to + lanes, b);
  store(to + 2 * lanes, c);
}

/// atan(x) for |x| ≤ tan(π/8), by the Chebyshev series
///   atan(2p / (1 − p²) x) = 2 Σ (−1)^k p^(2k+1) / (2k+1) T_{2k+1}(x),  p = tan(π/16)
/// up to k = 10; the next term is below 1e-17. Here as powers of x², times x.
struct Arctangent {
  static constexpr int terms = 11;
  double k[terms] = {};

  constexpr Arctangent() {
    constexpr long double p = 0.198912367379658006911597622644676229L;
    constexpr long double widest = 0.414213562373095048801688724209698079L;  // 2p / (1 − p²)
    long double chebyshev[2 * terms + 1][2 * terms + 1] = {};                // powers of x in T_n
    chebyshev[0][0] = chebyshev[1][1] = 1;
    for (int n = 2; n < 2 * terms; ++n) {  // T_n = 2 x T_{n−1} − T_{n−2}
      for (int i = 0; i <= n; ++i) {
        chebyshev[n][i] = (i > 0 ? 2 * chebyshev[n - 1][i - 1] : 0) - chebyshev[n - 2][i];
      }
    }
    long double sums[terms] = {}, factor = 2 * p;
    for (int n = 1; n < 2 * terms; n += 2, factor *= -p * p) {
      for (int i = 0; i < terms; ++i) sums[i] += factor / n * chebyshev[n][2 * i + 1];
    }
    long double scale = 1 / widest;
    for (int i = 0; i < terms; ++i, scale /= widest * widest) {
      k[i] = static_cast<double>(sums[i] * scale);
    }
  }
};
constexpr Arctangent arctangent;

VELORN_INLINE Lanes absolute(const Lanes& a) {
  return a < 0.0 ? -a : a;
}

/// atan2 of finite numbers that are not both zero.
VELORN_INLINE Lanes angleOf(const Lanes& y, const Lanes& x) {
  constexpr double quarter = 0.785398163397448309616, half = 2 * quarter, whole = 4 * quarter;
  const Lanes up = absolute(y), along = absolute(x);
  const Mask isSteep = up > along;
  const Lanes shorter = isSteep ? along : up, longer = isSteep ? up : along;
  // Beyond an eighth of π, turned back by a quarter of it.
  const Mask isWide = shorter > 0.4142135623730950 * longer;
  const Lanes t = (isWide ? shorter - longer : shorter) / (isWide ? shorter + longer : longer);
  Lanes angle = t * rising<Arctangent::terms - 1>(arctangent.k, t * t);
  angle = isWide ? angle + quarter : angle;
  angle = isSteep ? half - angle : angle;
  angle = x < 0.0 ? whole - angle : angle;
  Lanes sign;
  for (std::size_t i = 0; i < lanes; ++i) sign[i] = __builtin_copysign(1.0, y[i]);
  return sign * angle;
}

/// s(q'). NaN for a measurement without an angle in the scan plane.
template <PolarCorrection::Kind kind>
VELORN_INLINE Triple corrected(const Triple& s, const PolarCorrection& c) {
  if constexpr (kind == PolarCorrection::Kind::none) {
    return s;
  } else {
    const Lanes inPlane = squareRoot(s.x * s.x + s.z * s.z);
    const Lanes range = squareRoot(s.x * s.x + s.y * s.y + s.z * s.z);
    const Lanes both = 1.0 / (inPlane * range);
    const Lanes perRange = inPlane * both, perInPlane = range * both;
    Turn turns[2] = {{all(c.sines[1]), all(c.cosines[1])}, {all(c.sines[2]), all(c.cosines[2])}};
    if constexpr (kind == PolarCorrection::Kind::scaledAngles) {
      turns[0] = ofSmall(c.scales[1] * angleOf(s.y, inPlane) + c.offsets[1]);
      turns[1] = ofSmall(c.scales[2] * angleOf(s.x, s.z) + c.offsets[2]);
    }
    const Turn forward = sum({s.y * perRange, inPlane * perRange}, turns[0]);
    const Turn right = sum({s.x * perInPlane, s.z * perInPlane}, turns[1]);
    const Lanes r = range + (c.scales[0] * range + c.offsets[0]);
    const Lanes across = r * forward.cosine;
    return {across * right.sine, r * forward.sine, across * right.cosine};
  }
}

VELORN_INLINE Lanes normedTo(double length, const Triple& d) {
  return length / squareRoot(d.x * d.x + d.y * d.y + d.z * d.z);
}

/// @return all ones where the points have been served
template <std::size_t degree, PolarCorrection::Kind kind>
VELORN_INLINE Mask blockToWorld(const IntervalFrame& f, const PolarCorrection& correction,
                                double directionLength, const PointBatch& block) {
  const Lanes u = (load(block.times) - f.first) * f.perSecond - 0.5;
  const Triple s = corrected<kind>(loadPoints(block.points), correction);
  Lanes d[3];
  for (std::size_t i = 0; i < 3; ++i) {
    d[i] = rising<degree>(f.motion[i][0], u) + rising<degree>(f.motion[i][1], u) * s.x +
           rising<degree>(f.motion[i][2], u) * s.y + rising<degree>(f.motion[i][3], u) * s.z;
  }
  const Mask isServed = d[0] * d[0] + d[1] * d[1] + d[2] * d[2] < reach * reach;
  const LocalPolynomials& local = *f.local;
  Lanes w[3], difference[3];
  for (std::size_t i = 0; i < 3; ++i) {
    w[i] = falling<4>(local.projected[i], d[0], d[1], d[2]) + local.centre[i];
    difference[i] = rising<3>(f.position[i], u) + local.centre[i] - w[i];
  }
  w[0] = isServed ? w[0] : all(__builtin_nan(""));
  storePoints(block.results, {w[0], w[1], w[2]});
  Triple direction{difference[0], difference[1], difference[2]};
  if (directionLength != 0.0) {
    const Lanes factor = normedTo(directionLength, direction);
    direction = {factor * direction.x, factor * direction.y, factor * direction.z};
  }
  storePoints(block.directions, direction);
  return isServed;
}

VELORN_INLINE bool isAll(const Mask& mask) {
  long long both = -1;
  for (std::size_t i = 0; i < lanes; ++i) both &= mask[i];
  return both != 0;
}

/// The last points of a batch, filled up to a block of eight with copies of the last one.
struct FilledBlock {
  double points[3 * lanes], times[lanes], results[3 * lanes], directions[3 * lanes];

  VELORN_INLINE PointBatch of(const PointBatch& batch) {
    for (std::size_t i = 0; i < lanes; ++i) {
      const std::size_t from = i < batch.count ? i : batch.count - 1;
      for (std::size_t k = 0; k < 3; ++k) points[3 * i + k] = batch.points[3 * from + k];
      times[i] = batch.times[from];
    }
    return {points, times, results, directions, lanes};
  }

  VELORN_INLINE void copyTo(const PointBatch& batch) const {
    std::memcpy(batch.results, results, 3 * batch.count * sizeof(double));
    if (batch.directions) {
      std::memcpy(batch.directions, directions, 3 * batch.count * sizeof(double));
    }
  }
};

/// Calls `block(eight points)`, which says which of them have been served, for all of a batch.
/// @return whether all have
template <typename Block>
VELORN_INLINE bool inBlocks(PointBatch batch, const Block& block) {
  Mask areServed = ~Mask{};
  FilledBlock filled;
  while (batch.count > 0) {
    const bool isWhole = batch.count >= lanes;
    areServed &= block(isWhole ? batch : filled.of(batch));
    if (!isWhole) {
      filled.copyTo(batch);
      break;
    }
    batch.points += 3 * lanes;
    batch.times += lanes;
    batch.results += 3 * lanes;
    if (batch.directions) batch.directions += 3 * lanes;
    batch.count -= lanes;
  }
  return isAll(areServed);
}

template <std::size_t degree, PolarCorrection::Kind kind>
VELORN_INLINE bool batchToWorld(const IntervalFrame& frame, const PolarCorrection& correction,
                                double directionLength, const PointBatch& batch) {
  return inBlocks(batch, [&](const PointBatch& block) VELORN_INLINE_LAMBDA {
    return blockToWorld<degree, kind>(frame, correction, directionLength, block);
  });
}

template <std::size_t degree>
VELORN_INLINE bool batchToWorld(const IntervalFrame& frame, const PolarCorrection& correction,
                                double directionLength, const PointBatch& batch) {
  using Kind = PolarCorrection::Kind;
  switch (correction.kind) {
    case Kind::none:
      return batchToWorld<degree, Kind::none>(frame, correction, directionLength, batch);
    case Kind::offsets:
      return batchToWorld<degree, Kind::offsets>(frame, correction, directionLength, batch);
    default:
      return batchToWorld<degree, Kind::scaledAngles>(frame, correction, directionLength, batch);
  }
}

/// s = axes(u)ᵀ (X − origin(u)): the axes are orthogonal and of unit length.
template <std::size_t degree>
VELORN_INLINE Mask blockToScanner(const IntervalFrame& f, const PointBatch& block) {
  const LocalPolynomials& local = *f.local;
  const Triple w = loadPoints(block.points);
  const Lanes east = w.x - local.centre[0], north = w.y - local.centre[1];
  const Lanes higher = w.z - local.centre[2];
  const Mask isServed = east * east + north * north + higher * higher < reach * reach;
  const Lanes u = (load(block.times) - f.first) * f.perSecond - 0.5;
  Lanes s[3] = {};
  for (std::size_t i = 0; i < 3; ++i) {
    const Lanes d = falling<4>(local.earthCentred[i], east, north) +
                    higher * falling<4>(local.up[i], east, north) -
                    rising<degree>(f.motion[i][0], u);
    for (std::size_t j = 0; j < 3; ++j) s[j] += rising<degree>(f.motion[i][j + 1], u) * d;
  }
  s[0] = isServed ? s[0] : all(__builtin_nan(""));
  storePoints(block.results, {s[0], s[1], s[2]});
  return isServed;
}

template <std::size_t degree>
VELORN_INLINE bool batchToScanner(const IntervalFrame& frame, const PointBatch& batch) {
  return inBlocks(batch, [&](const PointBatch& block)
                             VELORN_INLINE_LAMBDA { return blockToScanner<degree>(frame, block); });
}

}  // namespace

VELORN_FOR_SEVERAL_PROCESSORS bool toWorld(const IntervalFrame& frame,
                                           const PolarCorrection& correction,
                                           double directionLength, const PointBatch& batch) {
  if (frame.degree == IntervalFrame::lowDegree) {
    return batchToWorld<IntervalFrame::lowDegree>(frame, correction, directionLength, batch);
  }
  return batchToWorld<IntervalFrame::highDegree>(frame, correction, directionLength, batch);
}

VELORN_FOR_SEVERAL_PROCESSORS bool toScanner(const IntervalFrame& frame, const PointBatch& batch) {
  if (frame.degree == IntervalFrame::lowDegree) {
    return batchToScanner<IntervalFrame::lowDegree>(frame, batch);
  }
  return batchToScanner<IntervalFrame::highDegree>(frame, batch);
}

}  // namespace Velorn
