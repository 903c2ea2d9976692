// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The kernel over any scalar that Lanes describes. A file that makes a kernel of it for one
// processor must use no other inline function on plain doubles: the linker might take its copy for
// all processors.
#pragma once

#include <utility>

#include "adjustment/engine/Batch.h"
#include "adjustment/engine/LocalEarth.h"

namespace Velorn {

/// How a scalar is read and written: `count` of its lanes, load, store, select, whether a condition
/// holds in all lanes, sum of the lanes, and sums of several.
template <typename T>
struct Lanes;

namespace Detail {

template <typename T>
Vector3<T> loaded(const std::array<BatchArray, 3>& arrays, std::size_t lane) {
  return {Lanes<T>::load(&arrays[0][lane]), Lanes<T>::load(&arrays[1][lane]),
          Lanes<T>::load(&arrays[2][lane])};
}

template <typename T>
Vector3<T> broadcast(const Vector3<double>& v) {
  return {T(v.data()[0]), T(v.data()[1]), T(v.data()[2])};
}

template <typename T>
SectionCorrections<T> broadcast(const SectionCorrections<double>& corrections) {
  SectionCorrections<T> all;
  for (std::size_t i = 0; i < 12; ++i) {
    all.position[i] = T(corrections.position[i]);
    all.angles[i] = T(corrections.angles[i]);
  }
  return all;
}

/// The setup of a batch, every number in all lanes.
template <typename T>
struct Unknowns {
  explicit Unknowns(const BatchSetup& setup)
      : offsets(broadcast<T>(setup.offsets)),
        scales(broadcast<T>(setup.scales)),
        leverArm(broadcast<T>(setup.leverArm)),
        misalignment(setup.misalignment),
        corrections{broadcast<T>(setup.corrections[0]), broadcast<T>(setup.corrections[1])} {}

  Vector3<T> offsets, scales, leverArm;
  Turn<T> misalignment;
  std::array<SectionCorrections<T>, 2> corrections;
};

/// Projected coordinates off the centre that the earth computes with.
template <typename T, typename Earth>
Vector3<T> offCentre(const Vector3<T>& projected, const Earth& earth) {
  const double* const centre = earth.centre();
  return projected - Vector3<T>(T(centre[0]), T(centre[1]), T(centre[2]));
}

/// One side of some correspondences.
template <typename T, typename Earth>
struct Side {
  Side(const BatchSetup& setup, const Unknowns<T>& unknowns, const Earth& earth, const Batch& batch,
       std::size_t side, std::size_t lane)
      : polar(loaded<T>(batch.sides[side].polar, lane)),
        dt(Lanes<T>::load(&batch.sides[side].dt[lane])),
        time(Lanes<T>::load(&batch.sides[side].time[lane])),
        isPositionAsked(setup.columns.isAsked[sectionBlocks + 2 * side]),
        chain(correctedPolarForm(polar, unknowns.offsets, unknowns.scales),
              correctedPose(Pose<T>{offCentre(loaded<T>(batch.sides[side].position, lane), earth),
                                    loaded<T>(batch.sides[side].attitude, lane)},
                            unknowns.corrections[side].position.data(),
                            unknowns.corrections[side].angles.data(), setup.used[side], dt),
              unknowns.misalignment, unknowns.leverArm, earth) {}

  SideDerivatives<T> derivatives(const Vector3<T>& by) const {
    return {chain.gradient(by, isPositionAsked), polar, time};
  }

  Vector3<T> polar;
  T dt, time;
  bool isPositionAsked;
  PointChain<T, Earth> chain;
};

/// Huber's function ρ with its corner at 1, of the square of a residual, and the square root of its
/// derivative, by which the solver's corrector multiplies residual and derivatives.
template <typename T>
struct Robust {
  T loss, factor;

  Robust(const T& residual, bool hasHuber) : loss(residual * residual), factor(T(1.0)) {
    using std::abs, std::sqrt;
    if (!hasHuber) return;
    const T size = abs(residual);
    const auto isBeyond = size > T(1.0);
    loss = Lanes<T>::select(isBeyond, 2.0 * size - 1.0, loss);
    factor = Lanes<T>::select(isBeyond, 1.0 / sqrt(size), factor);
  }
};

/// Distance along the weighted normal.
template <typename T>
T residual(const Vector3<T>& normal, const Vector3<T>& first, const Vector3<T>& second) {
  return normal[0] * (second[0] - first[0]) + normal[1] * (second[1] - first[1]) +
         normal[2] * (second[2] - first[2]);
}

template <typename T>
Vector3<T> weightedNormal(const BatchSetup& setup, const Batch& batch, std::size_t lane) {
  return loaded<T>(batch.normal, lane) * T(setup.weight);
}

/// Σ ρ(r²) of some lanes, and whether the earth was good for all of them.
template <typename T>
struct LanesCost {
  T loss;
  bool isServed;
};

template <typename T, typename Earth>
bool isServed(const Side<T, Earth>& side) {
  if constexpr (Earth::isLocal) return Lanes<T>::all(side.chain.isNear());
  return true;
}

template <typename T, typename Earth>
LanesCost<T> costOfLanes(const BatchSetup& setup, const Unknowns<T>& unknowns, const Earth& earth,
                         const Batch& batch, std::size_t lane) {
  const Vector3<T> normal = weightedNormal<T>(setup, batch, lane);
  const Side<T, Earth> first(setup, unknowns, earth, batch, 0, lane);
  const auto loss = [&](const Vector3<T>& second) {
    return Robust<T>(residual(normal, first.chain.world(), second), setup.hasHuber).loss;
  };
  if (setup.isGroundTruth) {
    return {loss(offCentre(loaded<T>(batch.sides[1].polar, lane), earth)), isServed(first)};
  }
  const Side<T, Earth> second(setup, unknowns, earth, batch, 1, lane);
  return {loss(second.chain.world()), isServed(first) && isServed(second)};
}

/// Writes the rows' entries from a lane on.
template <typename T>
class RowWriter {
 public:
  RowWriter(BatchRows& rows, std::size_t lane) : rows_(rows), lane_(lane) {}

  void put(const T& value) { Lanes<T>::store(value, &rows_.rows[row_++][lane_]); }

 private:
  BatchRows& rows_;
  std::size_t lane_, row_ = 0;
};

template <typename T, typename Earth>
LanesCost<T> rowsOfLanes(const BatchSetup& setup, const Unknowns<T>& unknowns, const Earth& earth,
                         const Batch& batch, std::size_t lane, BatchRows& rows) {
  const Vector3<T> normal = weightedNormal<T>(setup, batch, lane);
  const Side<T, Earth> first(setup, unknowns, earth, batch, 0, lane);
  RowWriter<T> writer(rows, lane);
  const auto put = [&](const T& value) { writer.put(value); };
  const auto finish = [&](const T& r, const Robust<T>& robust) {
    put(r * robust.factor);
    Lanes<T>::store(robust.factor, &rows.factor[lane]);
    return robust.loss;
  };
  if (setup.isGroundTruth) {
    const T r = residual(normal, first.chain.world(),
                         offCentre(loaded<T>(batch.sides[1].polar, lane), earth));
    const Robust<T> robust(r, setup.hasHuber);
    putDerivatives<T>(setup.columns, first.derivatives(normal * T(-robust.factor)), nullptr, put);
    return {finish(r, robust), isServed(first)};
  }
  const Side<T, Earth> second(setup, unknowns, earth, batch, 1, lane);
  const T r = residual(normal, first.chain.world(), second.chain.world());
  const Robust<T> robust(r, setup.hasHuber);
  const auto ofSecond = second.derivatives(normal * robust.factor);
  putDerivatives<T>(setup.columns, first.derivatives(normal * T(-robust.factor)), &ofSecond, put);
  return {finish(r, robust), isServed(first) && isServed(second)};
}

/// Σ of what `ofLanes` gives for the lanes of a batch; ends where the earth was not good for one.
/// @return whether it was for all
template <typename T, typename OfLanes>
bool sumOver(const Batch& batch, double& total, const OfLanes& ofLanes) {
  T sum(0.0);
  for (std::size_t lane = 0; lane < batch.filled(); lane += Lanes<T>::count) {
    const LanesCost<T> cost = ofLanes(lane);
    if (!cost.isServed) return false;
    sum += cost.loss;
  }
  total = Lanes<T>::sum(sum);
  return true;
}

/// By the polynomials about the batch's place, or where they are not good, by the formulas.
/// @param work  called with the earth, and as often as needed
template <typename Work>
void onEarth(const BatchSetup& setup, const Batch& batch, const Work& work) {
  if (batch.place && work(LocalEarth(*batch.place))) return;
  work(ExactEarth(*setup.projection));
}

template <typename T>
double cost(const BatchSetup& setup, const Batch& batch) {
  const Unknowns<T> unknowns(setup);
  double total = 0.0;
  onEarth(setup, batch, [&](const auto& earth) {
    return sumOver<T>(batch, total, [&](std::size_t lane) {
      return costOfLanes(setup, unknowns, earth, batch, lane);
    });
  });
  return total;
}

template <typename T>
double rows(const BatchSetup& setup, const Batch& batch, BatchRows& rows) {
  const Unknowns<T> unknowns(setup);
  double total = 0.0;
  onEarth(setup, batch, [&](const auto& earth) {
    return sumOver<T>(batch, total, [&](std::size_t lane) {
      return rowsOfLanes(setup, unknowns, earth, batch, lane, rows);
    });
  });
  return total;
}

/// How many rows a tile of products takes four others with: its sums fill half of the registers.
template <typename T>
inline constexpr std::size_t tileWidth = Lanes<T>::count > 4 ? 4 : 2;

/// The products of four rows with some others. Every index is a constant, so that all sums stay in
/// registers.
template <typename T, std::size_t... entry>
VELORN_INLINE void addTile(const BatchRows& rows, std::size_t i, std::size_t j, std::size_t lanes,
                           double* matrix, std::index_sequence<entry...> /*of the tile*/) {
  constexpr std::size_t width = tileWidth<T>;
  T sums[] = {(static_cast<void>(entry), T(0.0))...};
  for (std::size_t lane = 0; lane < lanes; lane += Lanes<T>::count) {
    const auto load = [&](std::size_t row)
                          VELORN_INLINE_LAMBDA { return Lanes<T>::load(&rows.rows[row][lane]); };
    const T left[] = {load(i), load(i + 1), load(i + 2), load(i + 3)};
    ((sums[entry] += left[entry / width] * load(j + entry % width)), ...);
  }
  alignas(64) double added[sizeof...(entry)];
  Lanes<T>::sums(sums, added);
  for (std::size_t a = 0; a < 4; ++a) {
    for (std::size_t b = 0; b < width; ++b) {
      matrix[(i + a) * mostRows + j + b] += added[width * a + b];
    }
  }
}

template <typename T>
void addProducts(const BatchRows& rows, std::size_t count, std::size_t lanes, double* matrix) {
  constexpr std::size_t width = tileWidth<T>;
  for (std::size_t i = 0; i < count; i += 4) {
    for (std::size_t j = 0; j < i + 4; j += width) {
      addTile<T>(rows, i, j, lanes, matrix, std::make_index_sequence<4 * width>());
    }
  }
}

}  // namespace Detail

template <typename T>
BatchKernel batchKernel(const char* name) {
  return {name, Detail::cost<T>, Detail::rows<T>, Detail::addProducts<T>};
}

}  // namespace Velorn
