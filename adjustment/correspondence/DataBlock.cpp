// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include <fmt/format.h>

#include "adjustment/correspondence/FieldColumns.h"
#include <velorn/DataBlock.h>

namespace Velorn {
namespace {

template <typename T>
using Column = DataBlock::Column<T>;

std::string refused(const std::string& fault) {
  return "DataBlock::getData: " + fault;
}

/// Calls use(name, array, other's array) for all arrays that every fragment has or none.
template <typename Block, typename Other, typename Use>
void forEachRequired(Block& block, Other& other, const Use& use) {
  use("normals", block.normals, other.normals);
  use("GPS times", block.times, other.times);
  use("scanner positions", block.scanner, other.scanner);
  use("return numbers", block.returnNumbers, other.returnNumbers);
  use("numbers of returns", block.numbersOfReturns, other.numbersOfReturns);
  use("direction deltas", block.directionDeltas, other.directionDeltas);
  use("amplitudes", block.amplitudes, other.amplitudes);
  use("rigorous classes", block.rigorousClasses, other.rigorousClasses);
}

template <typename Block, typename Other, typename Use>
void forEachColumn(Block& block, Other& other, const Use& use) {
  use("positions", block.world, other.world);
  use("classes", block.classes, other.classes);
  forEachRequired(block, other, use);
}

std::string nameOf(const Strandel::Grid& grid) {
  const auto file = grid.sourceFile();
  return file.empty() ? grid.name() : file.string();
}

/// The fields of one fragment in one chart.
class FragmentReader {
 public:
  FragmentReader(Strandel::ChartPtr chart, const std::shared_ptr<Strandel::FragmentId>& fragment,
                 std::size_t points)
      : chart_(std::move(chart)), fragment_(fragment), points_(points) {}

  template <Strandel::Value T>
  bool holds(const char* name) const {
    const auto field = fieldOf(chart_, name, Strandel::valueTypeOf<T>());
    return field && fragment_ && field->hasChunk(*fragment_);
  }

  /// @return empty, or `missing`, or why the values cannot be used
  template <Strandel::Value T>
  std::string read(const char* name, Column<T>& column, const std::string& missing) const {
    if (!holds<T>(name)) return refused(missing);
    const auto& field = *chart_->field(name);
    if (field.size(*fragment_) != points_) {
      return refused(
          fmt::format("{} has {} values, {} points", name, field.size(*fragment_), points_));
    }
    auto values = ownValues<T>(field, *fragment_);
    if (!values.values) return refused(values.error);
    column = std::move(values.values);
    return {};
  }

 private:
  Strandel::ChartPtr chart_;
  const std::shared_ptr<Strandel::FragmentId>& fragment_;
  std::size_t points_;
};

std::string readMeasured(const FragmentReader& world, const FragmentReader& scanner,
                         DataBlock& block) {
  return firstFault(
      [&] { return world.read("GPSTime", block.times, "no world GPSTime"); },
      [&] { return scanner.read("Positions", block.scanner, "no scaner Positions"); },
      [&] { return world.read("ReturnNumber", block.returnNumbers, "no world ReturnNumber"); },
      [&] {
        return world.read("NumberOfReturns", block.numbersOfReturns, "no world NumberOfReturns");
      },
      [&] { return world.read("Classification", block.classes, "no world Classification"); },
      [&] {
        return scanner.read("Waveforms.DirectionDelta", block.directionDeltas,
                            "no scanner  Waveforms.DirectionDelta");
      },
      [&] { return world.read("Amplitude", block.amplitudes, "no world Amplitude"); });
}

std::string readClassesIfAny(const FragmentReader& world, DataBlock& block) {
  const char* const name = "Classification";
  return world.holds<std::uint8_t>(name) ? world.read(name, block.classes, "") : "";
}

std::string readRigorous(const FragmentReader& world, DataBlock& block) {
  const char* const missing = "no world RigorousClassification_C";
  auto fault = world.read("RigorousClassification", block.rigorousClasses, missing);
  if (fault.empty() && block.rigorousClasses->empty()) return refused(missing);
  return fault;
}

/// Which array only one of two blocks with points has.
std::string heldByOne(const DataBlock& block, const DataBlock& other) {
  std::string fault;
  forEachRequired(block, other, [&](const char* name, const auto& held, const auto& added) {
    if (held->empty() == added->empty() || !fault.empty()) return;
    fault = refused(fmt::format("{} were read of the fragments {} only", name,
                                held->empty() ? "to append" : "before"));
  });
  return fault;
}

/// Class 0 for all points when only the other block has classes.
void fillClasses(DataBlock& block, const DataBlock& other) {
  if (block.classes->empty() && !other.classes->empty()) block.classes->resize(block.world->size());
}

/// Grows as push_back does, so that many fragments are appended in linear time.
template <typename T>
void makeRoom(std::vector<T>& held, std::size_t more) {
  const auto needed = held.size() + more;
  if (needed > held.capacity()) held.reserve(std::max(needed, 2 * held.capacity()));
}

/// First takes all memory that may be refused.
void append(DataBlock& block, const DataBlock& piece) {
  forEachColumn(block, piece, [](const char*, const auto& held, const auto& added) {
    makeRoom(*held, added->size());
  });
  forEachColumn(block, piece, [](const char*, const auto& held, const auto& added) {
    held->insert(held->end(), added->begin(), added->end());
  });
}

}  // namespace

DataBlock::DataBlock() {
  forEachColumn(*this, *this, []<typename T>(const char*, Column<T>& column, const Column<T>&) {
    column = std::make_shared<std::vector<T>>();
  });
}

std::string DataBlock::getData(const Strandel::Grid& grid,
                               const std::shared_ptr<Strandel::FragmentId>& fragment,
                               const bool& worldOnly, const bool& rigorous) {
  *this = DataBlock();
  const auto chart = grid.chart(Strandel::worldChartName);
  if (!chart) return refused("no WorldChart");
  const auto positions = chart->field("Positions");
  const auto points = positions && fragment ? positions->size(*fragment) : 0;
  const FragmentReader onWorld(chart, fragment, points);
  const FragmentReader onScanner(grid.chart(Strandel::scannerChartName), fragment, points);
  return firstFault(
      [&] {
        return onWorld.read("Positions", world, "no world Positions for file " + nameOf(grid));
      },
      [&] { return onWorld.read("NormalVector", normals, "no world NormalVector"); },
      [&] {
        return worldOnly ? readClassesIfAny(onWorld, *this)
                         : readMeasured(onWorld, onScanner, *this);
      },
      [&] { return rigorous ? readRigorous(onWorld, *this) : ""; });
}

std::string DataBlock::appendData(const Strandel::Grid& grid,
                                  const std::shared_ptr<Strandel::FragmentId>& fragment,
                                  const bool& worldOnly, const bool& rigorous) {
  DataBlock piece;
  if (auto fault = piece.getData(grid, fragment, worldOnly, rigorous); !fault.empty()) return fault;
  if (world->empty()) {
    *this = std::move(piece);
  } else if (!piece.world->empty()) {
    if (auto fault = heldByOne(*this, piece); !fault.empty()) return fault;
    fillClasses(*this, piece);
    fillClasses(piece, *this);
    append(*this, piece);
  }
  return {};
}

}  // namespace Velorn
