// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/PairEvaluation.h"

#include <algorithm>
#include <cmath>

#include "adjustment/engine/PivotedFactor.h"

namespace Velorn {
namespace {

// Pieces hang on the data alone. More of them would only take memory.
constexpr std::size_t shortestPiece = 4096, mostPieces = 32;

static_assert(mostRows % 4 == 0);
using Products = Eigen::Matrix<double, mostRows, mostRows, Eigen::RowMajor>;

Vector3<double> triple(const double* values) {
  return {values[0], values[1], values[2]};
}

SectionCorrections<double> correctionsAt(const double* position, const double* angles) {
  SectionCorrections<double> corrections;
  std::copy_n(position, 12, corrections.position.begin());
  std::copy_n(angles, 12, corrections.angles.begin());
  return corrections;
}

void set(std::array<BatchArray, 3>& arrays, std::size_t lane, const auto& triple) {
  for (std::size_t i = 0; i < 3; ++i) arrays[i][lane] = triple[i];
}

void loadSide(const MeasurementRecord& record, const PoseInterval& interval, double start,
              double middle, std::size_t lane, BatchSide& side) {
  const Pose<double> pose = interval.at(record.time);
  set(side.polar, lane, record.polar);
  for (std::size_t i = 0; i < 3; ++i) {
    side.position[i][lane] = pose.position[static_cast<Eigen::Index>(i)];
    side.attitude[i][lane] = pose.attitude[static_cast<Eigen::Index>(i)];
  }
  side.dt[lane] = record.time - start;
  side.time[lane] = side.dt[lane] - middle;
}

void completeUpper(Eigen::MatrixXd& symmetric) {
  symmetric.triangularView<Eigen::StrictlyUpper>() = symmetric.transpose();
}

/// The first records that make a batch: those near one place.
std::span<const CorrespondenceRecord> batchOf(std::span<const CorrespondenceRecord> records) {
  const std::size_t most = std::min(batchSize, records.size());
  std::size_t count = 1;
  while (count < most && records[count].place == records.front().place) ++count;
  return records.first(count);
}

/// Lanes beyond the count are like the last one, without a normal.
void fillUp(Batch& batch) {
  for (std::size_t lane = batch.count; lane < batch.filled(); ++lane) {
    const std::size_t last = batch.count - 1;
    for (auto& side : batch.sides) {
      for (auto* arrays : {&side.polar, &side.position, &side.attitude}) {
        for (auto& array : *arrays) array[lane] = array[last];
      }
      side.dt[lane] = side.dt[last];
      side.time[lane] = side.time[last];
    }
    for (auto& array : batch.normal) array[lane] = 0.0;
  }
}

}  // namespace

/// A part of a run that one thread sums up.
struct PairEvaluation::Piece {
  const ClassRun* run;
  std::span<const CorrespondenceRecord> records;
};

struct PairEvaluation::Totals {
  Eigen::MatrixXd products;  // [J~ r]' [J~ r]
  double twiceCost;
};

PairEvaluation::PairEvaluation(const CorrespondenceStore& store, const SectionPair& pair,
                               const double* const* unknowns, const BatchKernel& kernel)
    : store_(store),
      pair_(pair),
      kernel_(kernel),
      setup_{.offsets = triple(unknowns[0]),
             .scales = triple(unknowns[1]),
             .leverArm = triple(unknowns[3]),
             .misalignment = Turn<double>(triple(unknowns[2])),
             .corrections = {correctionsAt(unknowns[4], unknowns[5]),
                             pair.second ? correctionsAt(unknowns[6], unknowns[7])
                                         : SectionCorrections<double>{}},
             .used = {usedPowers(pair.first.type),
                      pair.second ? usedPowers(pair.second->type) : UsedPowers{0, 0}},
             .projection = &store.projection(),
             .isGroundTruth = !pair.second,
             .weight = 0.0,
             .hasHuber = false,
             .columns = {}} {}

BatchSetup PairEvaluation::setupOf(const ClassRun& run, const Asked& asked) const {
  BatchSetup setup = setup_;
  setup.weight = run.weight;
  setup.hasHuber = run.hasHuber;
  setup.columns = {asked, setup_.used};
  return setup;
}

/// Whether several threads are worth waking up. The sums are the same either way.
bool PairEvaluation::isLong() const {
  return pair_.size() > shortestPiece;
}

std::vector<PairEvaluation::Piece> PairEvaluation::pieces() const {
  const std::size_t share = (pair_.size() / mostPieces + batchSize - 1) / batchSize * batchSize;
  const std::size_t length = std::max(shortestPiece, share);
  std::vector<Piece> all;
  for (const auto& run : pair_.runs) {
    const std::span records(run.records);
    for (std::size_t first = 0; first < records.size(); first += length) {
      all.push_back({&run, records.subspan(first, std::min(length, records.size() - first))});
    }
  }
  return all;
}

void PairEvaluation::load(std::span<const CorrespondenceRecord> records, Batch& batch) const {
  batch.count = records.size();
  batch.place = store_.places()[records.front().place];
  const auto& intervals = store_.intervals();
  for (std::size_t lane = 0; lane < records.size(); ++lane) {
    const auto& record = records[lane];
    loadSide(record.first, intervals[record.firstInterval], pair_.first.t, pair_.middles[0], lane,
             batch.sides[0]);
    if (pair_.second) {
      loadSide(record.second, intervals[record.secondInterval], pair_.second->t, pair_.middles[1],
               lane, batch.sides[1]);
    } else {
      set(batch.sides[1].polar, lane, record.second.polar);
    }
    set(batch.normal, lane, record.normal);
  }
  fillUp(batch);
}

double PairEvaluation::twiceCost(const Piece& piece) const {
  const BatchSetup setup = setupOf(*piece.run, {});
  Batch batch;
  double sum = 0.0;
  for (auto left = piece.records; !left.empty(); left = left.subspan(batch.count)) {
    load(batchOf(left), batch);
    sum += kernel_.cost(setup, batch);
  }
  return sum * piece.run->factor;
}

double PairEvaluation::twiceCost(int threads) const {
  const auto all = pieces();
  std::vector<double> sums(all.size());
  const auto count = static_cast<int>(all.size());
#pragma omp parallel for schedule(dynamic) num_threads(threads) if (isLong())
  for (int i = 0; i < count; ++i) {
    const auto k = static_cast<std::size_t>(i);
    sums[k] = twiceCost(all[k]);
  }
  double sum = 0.0;
  for (const double part : sums) sum += part;
  return sum;
}

/// @param products  rows and columns of the products that are asked for; the lower triangle counts
/// @return Σ ρ(r²)
double PairEvaluation::addTo(Eigen::MatrixXd& products, const BatchSetup& setup,
                             std::span<const CorrespondenceRecord> records, std::size_t columns,
                             std::span<const double> further) const {
  const std::size_t taken = columns + (further.empty() ? 1 : 2);
  const std::size_t filledUp = (taken + 3) / 4 * 4;
  Batch batch;
  BatchRows rows;
  for (std::size_t row = taken; row < filledUp; ++row) rows.rows[row].fill(0.0);
  Products sums = Products::Zero();
  double twiceCost = 0.0;
  for (std::size_t first = 0; first < records.size(); first += batch.count) {
    load(batchOf(records.subspan(first)), batch);
    twiceCost += kernel_.rows(setup, batch, rows);
    if (!further.empty()) {
      auto& row = rows.rows[columns + 1];
      for (std::size_t lane = 0; lane < batch.filled(); ++lane) {
        const bool isThere = lane < batch.count;
        row[lane] = isThere ? further[first + lane] * setup.weight * rows.factor[lane] : 0.0;
      }
    }
    kernel_.addProducts(rows, filledUp, batch.filled(), sums.data());
  }
  const auto n = static_cast<Eigen::Index>(taken);
  products = sums.topLeftCorner(n, n);
  return twiceCost;
}

PairEvaluation::Totals PairEvaluation::totals(const Asked& asked, int threads) const {
  const auto all = pieces();
  const std::size_t columns = Columns{asked, setup_.used}.places().size();
  const auto size = static_cast<Eigen::Index>(columns) + 1;
  std::vector<Totals> parts(all.size(), Totals{Eigen::MatrixXd::Zero(size, size), 0.0});
  const auto count = static_cast<int>(all.size());
#pragma omp parallel for schedule(dynamic) num_threads(threads) if (isLong())
  for (int i = 0; i < count; ++i) {
    const auto k = static_cast<std::size_t>(i);
    parts[k].twiceCost =
        addTo(parts[k].products, setupOf(*all[k].run, asked), all[k].records, columns, {});
    parts[k].products *= all[k].run->factor;
    parts[k].twiceCost *= all[k].run->factor;
  }
  Totals total = std::move(parts.front());
  for (std::size_t k = 1; k < parts.size(); ++k) {
    total.products += parts[k].products;
    total.twiceCost += parts[k].twiceCost;
  }
  completeUpper(total.products);
  return total;
}

CondensedRows PairEvaluation::condensed(const Asked& asked, int threads) const {
  Totals total = totals(asked, threads);
  const Columns columns{asked, setup_.used};
  CondensedRows condensed{columns.places(), {}, total.twiceCost};
  if (!total.products.allFinite() || !std::isfinite(total.twiceCost)) return condensed;
  const auto size = static_cast<Eigen::Index>(condensed.columns.size());
  total.products(size, size) = total.twiceCost;
  condensed.rows = pivotedFactor(total.products);
  columns.moveToStarts(pair_.middles, condensed.rows);
  return condensed;
}

NormalSums PairEvaluation::sums(const ClassRun& run, const Chunk& chunk, const Asked& asked,
                                std::span<const double> further) const {
  const Columns columns{asked, setup_.used};
  NormalSums total{columns.places(), {}, 0.0, chunk.count};
  total.twiceCost = addTo(total.products, setupOf(run, asked),
                          std::span(run.records).subspan(chunk.first, chunk.count),
                          total.columns.size(), further);
  total.products *= run.factor;
  total.twiceCost *= run.factor;
  completeUpper(total.products);
  columns.moveToStarts(pair_.middles, total.products);
  total.products.transposeInPlace();
  columns.moveToStarts(pair_.middles, total.products);
  return total;
}

}  // namespace Velorn
