// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Points go through in blocks of as many as there are lanes, the last one filled up, so that each
// gets the same operations wherever it stands in a list.
#include "adjustment/georef/FrameKernel.h"

#include "adjustment/georef/Lanes.h"

namespace Velorn {
namespace {

using namespace OnLanes;

template <typename L>
struct Triple {
  L x, y, z;
};

/// As many points as there are lanes, three doubles each.
/// @{
template <typename L>
VELORN_INLINE Triple<L> loadPoints(const double* from) {
  Triple<L> p;
  for (std::size_t i = 0; i < lanesOf<L>; ++i) {
    p.x[i] = from[3 * i];
    p.y[i] = from[3 * i + 1];
    p.z[i] = from[3 * i + 2];
  }
  return p;
}

template <>
[[maybe_unused]] VELORN_INLINE Triple<Lanes<8>> loadPoints(const double* from) {
  using L = Lanes<8>;
  const L a = load<L>(from), b = load<L>(from + 8), c = load<L>(from + 16);
  const L x = __builtin_shufflevector(a, b, 0, 3, 6, 9, 12, 15, 0, 0);
  const L y = __builtin_shufflevector(a, b, 1, 4, 7, 10, 13, 0, 0, 0);
  const L z = __builtin_shufflevector(a, b, 2, 5, 8, 11, 14, 0, 0, 0);
  return {__builtin_shufflevector(x, c, 0, 1, 2, 3, 4, 5, 10, 13),
          __builtin_shufflevector(y, c, 0, 1, 2, 3, 4, 8, 11, 14),
          __builtin_shufflevector(z, c, 0, 1, 2, 3, 4, 9, 12, 15)};
}

template <typename L>
VELORN_INLINE void storePoints(double* to, const Triple<L>& p) {
  for (std::size_t i = 0; i < lanesOf<L>; ++i) {
    to[3 * i] = p.x[i];
    to[3 * i + 1] = p.y[i];
    to[3 * i + 2] = p.z[i];
  }
}

template <>
[[maybe_unused]] VELORN_INLINE void storePoints(double* to, const Triple<Lanes<8>>& p) {
  using L = Lanes<8>;
  const L first = __builtin_shufflevector(p.x, p.y, 0, 8, 0, 1, 9, 0, 2, 10);
  const L second = __builtin_shufflevector(p.x, p.y, 0, 3, 11, 0, 4, 12, 0, 5);
  const L third = __builtin_shufflevector(p.x, p.y, 13, 0, 6, 14, 0, 7, 15, 0);
  store(to, __builtin_shufflevector(first, p.z, 0, 1, 8, 3, 4, 9, 6, 7));
  store(to + 8, __builtin_shufflevector(second, p.z, 10, 1, 2, 11, 4, 5, 12, 7));
  store(to + 16, __builtin_shufflevector(third, p.z, 0, 13, 2, 3, 14, 5, 6, 15));
}
/// @}

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

template <typename L>
VELORN_INLINE L absolute(const L& a) {
  return a < 0.0 ? -a : a;
}

/// atan2 of finite numbers that are not both zero.
template <typename L>
VELORN_INLINE L angleOf(const L& y, const L& x) {
  constexpr double quarter = 0.785398163397448309616, half = 2 * quarter, whole = 4 * quarter;
  const L up = absolute(y), along = absolute(x);
  const auto isSteep = up > along;
  const L shorter = isSteep ? along : up, longer = isSteep ? up : along;
  // Beyond an eighth of π, turned back by a quarter of it.
  const auto isWide = shorter > 0.4142135623730950 * longer;
  const L t = (isWide ? shorter - longer : shorter) / (isWide ? shorter + longer : longer);
  L angle = t * rising<Arctangent::terms - 1>(arctangent.k, L(t * t));
  angle = isWide ? angle + quarter : angle;
  angle = isSteep ? half - angle : angle;
  angle = x < 0.0 ? whole - angle : angle;
  for (std::size_t i = 0; i < lanesOf<L>; ++i) angle[i] = __builtin_copysign(angle[i], y[i]);
  return angle;
}

/// s(q'). NaN for a measurement without an angle in the scan plane.
template <PolarCorrection::Kind kind, typename L>
VELORN_INLINE Triple<L> corrected(const Triple<L>& s, const PolarCorrection& c) {
  if constexpr (kind == PolarCorrection::Kind::none) {
    return s;
  } else {
    const L inPlane = squareRoot(L(s.x * s.x + s.z * s.z));
    const L range = squareRoot(L(s.x * s.x + s.y * s.y + s.z * s.z));
    const L both = 1.0 / (inPlane * range);
    const L perRange = inPlane * both, perInPlane = range * both;
    Turn<L> turns[2] = {{all<L>(c.sines[1]), all<L>(c.cosines[1])},
                        {all<L>(c.sines[2]), all<L>(c.cosines[2])}};
    if constexpr (kind == PolarCorrection::Kind::scaledAngles) {
      turns[0] = ofSmall(L(c.scales[1] * angleOf(s.y, inPlane) + c.offsets[1]));
      turns[1] = ofSmall(L(c.scales[2] * angleOf(s.x, s.z) + c.offsets[2]));
    }
    const Turn<L> forward = sum(Turn<L>{s.y * perRange, inPlane * perRange}, turns[0]);
    const Turn<L> right = sum(Turn<L>{s.x * perInPlane, s.z * perInPlane}, turns[1]);
    const L r = range + (c.scales[0] * range + c.offsets[0]);
    const L across = r * forward.cosine;
    return {across * right.sine, r * forward.sine, across * right.cosine};
  }
}

template <typename L>
using Mask = decltype(L{} < L{});

/// @return all ones where the points have been served
template <std::size_t degree, PolarCorrection::Kind kind, typename L>
VELORN_INLINE Mask<L> blockToWorld(const IntervalFrame& f, const PolarCorrection& correction,
                                   double directionLength, const PointBatch& block) {
  const L u = (load<L>(block.times) - f.first) * f.perSecond - 0.5;
  const Triple<L> s = corrected<kind>(loadPoints<L>(block.points), correction);
  L d[3];
  for (std::size_t i = 0; i < 3; ++i) {
    d[i] = rising<degree>(f.motion[i][0], u) + rising<degree>(f.motion[i][1], u) * s.x +
           rising<degree>(f.motion[i][2], u) * s.y + rising<degree>(f.motion[i][3], u) * s.z;
  }
  const Mask<L> isServed = d[0] * d[0] + d[1] * d[1] + d[2] * d[2] < reach * reach;
  const LocalPolynomials& local = *f.local;
  L w[3], direction[3];
  for (std::size_t i = 0; i < 3; ++i) {
    w[i] = falling<4>(local.projected[i], d[0], d[1], d[2]) + local.centre[i];
    direction[i] = rising<3>(f.position[i], u) + local.centre[i] - w[i];
  }
  w[0] = isServed ? w[0] : all<L>(__builtin_nan(""));
  storePoints(block.results, Triple<L>{w[0], w[1], w[2]});
  if (directionLength != 0.0) {
    const L squared =
        direction[0] * direction[0] + direction[1] * direction[1] + direction[2] * direction[2];
    const L factor = directionLength / squareRoot(squared);
    for (L& component : direction) component *= factor;
  }
  storePoints(block.directions, Triple<L>{direction[0], direction[1], direction[2]});
  return isServed;
}

/// s = A(u)ᵀ (X − X0(u)) with the motion's X0 and A, whose columns are orthogonal and of unit
/// length.
template <std::size_t degree, typename L>
VELORN_INLINE Mask<L> blockToScanner(const IntervalFrame& f, const PointBatch& block) {
  const LocalPolynomials& local = *f.local;
  const Triple<L> w = loadPoints<L>(block.points);
  const L east = w.x - local.centre[0], north = w.y - local.centre[1];
  const L higher = w.z - local.centre[2];
  const Mask<L> isServed = east * east + north * north + higher * higher < reach * reach;
  const L u = (load<L>(block.times) - f.first) * f.perSecond - 0.5;
  L s[3] = {};
  for (std::size_t i = 0; i < 3; ++i) {
    const L d = falling<4>(local.earthCentred[i], east, north) +
                higher * falling<4>(local.up[i], east, north) - rising<degree>(f.motion[i][0], u);
    for (std::size_t j = 0; j < 3; ++j) s[j] += rising<degree>(f.motion[i][j + 1], u) * d;
  }
  s[0] = isServed ? s[0] : all<L>(__builtin_nan(""));
  storePoints(block.results, Triple<L>{s[0], s[1], s[2]});
  return isServed;
}

template <typename L>
VELORN_INLINE bool isAll(const Mask<L>& mask) {
  long long both = -1;
  for (std::size_t i = 0; i < lanesOf<L>; ++i) both &= mask[i];
  return both != 0;
}

/// The last points of a batch, filled up to a block with copies of the last one.
template <std::size_t lanes>
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

/// Calls `block(points)`, which says which of them have been served, for all of a batch.
/// @return whether all have
template <typename L, typename Block>
VELORN_INLINE bool inBlocks(PointBatch batch, const Block& block) {
  constexpr std::size_t lanes = lanesOf<L>;
  Mask<L> areServed = ~Mask<L>{};
  FilledBlock<lanes> filled;
  while (batch.count > 0) {
    const bool isWhole = batch.count >= lanes;
    areServed &= block(isWhole ? batch : filled.of(batch));
    if (!isWhole) {
      filled.copyTo(batch);
      break;
    }
    batch = partOf(batch, lanes, batch.count);
  }
  return isAll<L>(areServed);
}

template <std::size_t degree, PolarCorrection::Kind kind, std::size_t lanes>
VELORN_INLINE bool batchToWorld(const IntervalFrame& frame, const PolarCorrection& correction,
                                double directionLength, const PointBatch& batch) {
  using L = Lanes<lanes>;
  return inBlocks<L>(batch, [&](const PointBatch& block) VELORN_INLINE_LAMBDA {
    return blockToWorld<degree, kind, L>(frame, correction, directionLength, block);
  });
}

template <std::size_t degree, std::size_t lanes>
VELORN_INLINE bool batchToWorld(const IntervalFrame& frame, const PolarCorrection& correction,
                                double directionLength, const PointBatch& batch) {
  using Kind = PolarCorrection::Kind;
  switch (correction.kind) {
    case Kind::none:
      return batchToWorld<degree, Kind::none, lanes>(frame, correction, directionLength, batch);
    case Kind::offsets:
      return batchToWorld<degree, Kind::offsets, lanes>(frame, correction, directionLength, batch);
    default:
      return batchToWorld<degree, Kind::scaledAngles, lanes>(frame, correction, directionLength,
                                                             batch);
  }
}

template <std::size_t lanes>
VELORN_INLINE bool toWorldOn(const IntervalFrame& frame, const PolarCorrection& correction,
                             double directionLength, const PointBatch& batch) {
  if (frame.degree == IntervalFrame::lowDegree) {
    return batchToWorld<IntervalFrame::lowDegree, lanes>(frame, correction, directionLength, batch);
  }
  return batchToWorld<IntervalFrame::highDegree, lanes>(frame, correction, directionLength, batch);
}

template <std::size_t lanes>
VELORN_INLINE bool toScannerOn(const IntervalFrame& frame, const PointBatch& batch) {
  using L = Lanes<lanes>;
  return inBlocks<L>(batch, [&](const PointBatch& block) VELORN_INLINE_LAMBDA {
    return frame.degree == IntervalFrame::lowDegree
               ? blockToScanner<IntervalFrame::lowDegree, L>(frame, block)
               : blockToScanner<IntervalFrame::highDegree, L>(frame, block);
  });
}

}  // namespace

bool toWorld(const IntervalFrame& frame, const PolarCorrection& correction, double directionLength,
             const PointBatch& batch) {
  return onBestLanes([&](auto lanes) VELORN_INLINE_LAMBDA {
    return toWorldOn<lanes>(frame, correction, directionLength, batch);
  });
}

bool toScanner(const IntervalFrame& frame, const PointBatch& batch) {
  return onBestLanes([&](auto lanes)
                         VELORN_INLINE_LAMBDA { return toScannerOn<lanes>(frame, batch); });
}

}  // namespace Velorn
