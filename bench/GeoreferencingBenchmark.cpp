// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Georeferencing a strip of points, and going back, against doing each operation of the platform
// for every point, with the trajectory in a std::map. All on one thread but the last case.
//
//     VELORN_BENCH_POINTS    points of the strip, 10000000 unless set
//     VELORN_BENCH_SECONDS   its length, 250 unless set: 200 points per record of the trajectory
#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <random>
#include <string>

#include <benchmark/benchmark.h>
#include <omp.h>

#include "bench/Settings.h"
#include "platform/tessaly/EarthCentredCoordinates.h"
#include "platform/tessaly/PolarCoordinates.h"
#include "tests/adjustment/georef/RestoredModel.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"
#include <velorn/Georeferencing.h>

namespace {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;
using Row = std::array<double, 3>;
using Matrix = std::array<Row, 3>;

constexpr unsigned week = 2318;
constexpr int start = 400000;

std::size_t pointCount() {
  return std::stoul(setting("VELORN_BENCH_POINTS", "10000000"));
}

double seconds() {
  return std::stod(setting("VELORN_BENCH_SECONDS", "250"));
}

std::vector<Record> records() {
  std::vector<Record> all;
  for (int i = 0; i <= static_cast<int>(200 * seconds()) + 1; ++i) {
    const double s = 0.005 * i;
    all.push_back({start + s,
                   {600000 + 48 * s, 5250000 + 36 * s, 800 + std::cos(0.7 * s)},
                   {5 * std::sin(0.9 * s), 3 + std::sin(1.3 * s), 53 + 2 * std::cos(s)}});
  }
  return all;
}

struct Strip {
  Velorn::Trajectory trajectory = imported();
  std::vector<point> scanner = std::vector<point>(pointCount()), world = scanner;
  std::vector<double> times = std::vector<double>(pointCount());
  std::vector<vector> directions = std::vector<vector>(pointCount());

  Strip() {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> angle(-0.44, 0.44), height(550, 650);
    for (std::size_t i = 0; i < times.size(); ++i) {
      const double right = angle(random), range = height(random) / std::cos(right);
      scanner[i] = {range * std::cos(right), 0.001 * range, range * std::sin(right)};
      times[i] =
          start + seconds() * (static_cast<double>(i) + 1) / static_cast<double>(times.size());
    }
  }
  static Velorn::Trajectory imported() {
    const auto file = benchmarkFile("georeferencing.kx");
    TrajectoryFile({records()}).save(file);
    Velorn::Trajectory trajectory({file});
    orThrow(trajectory.importTrajectory());
    std::filesystem::remove(file);
    return trajectory;
  }
};

enum class Order { ofTime, random };

/// The strip, its points in that order.
Strip& strip(Order order = Order::ofTime) {
  static Strip only;
  static Order now = Order::ofTime;
  if (order != now) {
    only = Strip();
    // Two shuffles with the same seed exchange the same places.
    if (order == Order::random) {
      std::shuffle(only.scanner.begin(), only.scanner.end(), std::mt19937_64(2));
      std::shuffle(only.times.begin(), only.times.end(), std::mt19937_64(2));
    }
    now = order;
  }
  return only;
}

/// Linear corrections of the trajectory and a mounting; offsets of range and angles, and scales of
/// the angles, on demand.
Velorn::SolverParameters parametersWith(bool offsets, bool scales) {
  std::vector<double> values(36);
  for (std::size_t i = 0; i < 24; i += 4) {
    values[i] = i < 12 ? 0.03 : 1e-4;
    values[i + 1] = i < 12 ? 1e-3 : 1e-6;
  }
  if (offsets) values[24] = 0.03, values[25] = values[26] = 1e-4, values[27] = 1e-4;
  if (scales) values[28] = values[29] = 1e-4;
  for (std::size_t i = 30; i < 36; ++i) values[i] = 0.01;
  return restoredModel({start}, values);
}

Matrix rotation(double x, double y, double z) {
  const double cx = std::cos(x), sx = std::sin(x), cy = std::cos(y), sy = std::sin(y);
  const double cz = std::cos(z), sz = std::sin(z);
  return {{{cz * cy, cz * sy * sx - sz * cx, cz * sy * cx + sz * sx},
           {sz * cy, sz * sy * sx + cz * cx, sz * sy * cx - cz * sx},
           {-sy, cy * sx, cy * cx}}};
}

Matrix transposed(const Matrix& m) {
  return {{{m[0][0], m[1][0], m[2][0]}, {m[0][1], m[1][1], m[2][1]}, {m[0][2], m[1][2], m[2][2]}}};
}

/// North, east, down at longitude and latitude, to earth-centred axes.
Matrix localLevel(const point& g) {
  const double sp = std::sin(g.y), cp = std::cos(g.y), sl = std::sin(g.x), cl = std::cos(g.x);
  return {{{-sp * cl, -sl, -cp * cl}, {-sp * sl, cl, -cp * sl}, {cp, 0, -sp}}};
}

point product(const Matrix& m, const point& v) {
  const auto row = [&](int i) {
    const auto& r = m[static_cast<std::size_t>(i)];
    return r[0] * v.x + r[1] * v.y + r[2] * v.z;
  };
  return {row(0), row(1), row(2)};
}

/// The baseline: what the model says, operation by operation.
class PointByPoint {
 public:
  explicit PointByPoint(const Velorn::SolverParameters& parameters)
      : parameters_(parameters),
        zone_(strip().trajectory.getMercator()),
        misalignment_(rotation(parameters.getMisalignment(0), parameters.getMisalignment(1),
                               parameters.getMisalignment(2))) {
    for (const auto& record : records()) poses_[record.time] = record;
  }

  /// The way back, without corrections.
  point measurementOf(const point& world, double t) const {
    const auto after = poses_.lower_bound(t), before = std::prev(after);
    const double f = (t - before->first) / (after->first - before->first);
    const auto &p = before->second.position, &q = after->second.position;
    const auto &a = before->second.degrees, &b = after->second.degrees;
    const auto at = [f](double from, double to) { return from + f * (to - from); };
    constexpr double degree = 3.14159265358979 / 180;
    const Matrix n = rotation(at(a.x, b.x) * degree, at(a.y, b.y) * degree, at(a.z, b.z) * degree);
    const point g = Tessaly::inverseTransverseMercatorProjection(
        {at(p.x, q.x), at(p.y, q.y), at(p.z, q.z)}, zone_, false);
    const point x = Tessaly::ellipsoidalToCartesian(g, zone_.getEllipsoid(), false);
    const point w = Tessaly::ellipsoidalToCartesian(
        Tessaly::inverseTransverseMercatorProjection(world, zone_, true), zone_.getEllipsoid(),
        true);
    const point level = product(transposed(localLevel(g)), {w.x - x.x, w.y - x.y, w.z - x.z});
    const point body = product(transposed(n), level);
    const point s = product(transposed(misalignment_), {body.x - parameters_.getLeverArm(0),
                                                        body.y - parameters_.getLeverArm(1),
                                                        body.z - parameters_.getLeverArm(2)});
    return {s.z, s.x, s.y};
  }

  std::pair<point, vector> georeference(const point& scanner, double t) const {
    const auto after = poses_.lower_bound(t), before = std::prev(after);
    const double f = (t - before->first) / (after->first - before->first);
    const auto section = parameters_.getSectionInStrip(0, t);
    const double dt = t - section.t;
    const auto &p = before->second.position, &q = after->second.position;
    const auto &a = before->second.degrees, &b = after->second.degrees;
    const auto moved = [&](unsigned j, double from, double to) {
      const auto c = [&](unsigned m) {
        return parameters_.getTrajectoryPositionCorrection(section.sectionID, 4 * j + m);
      };
      return from + f * (to - from) + c(0) + c(1) * dt + c(2) * dt * dt + c(3) * dt * dt * dt;
    };
    const auto turned = [&](unsigned j, double from, double to) {
      const auto c = [&](unsigned m) {
        return parameters_.getTrajectoryAngleCorrection(section.sectionID, 4 * j + m);
      };
      return (from + f * (to - from)) * (3.14159265358979 / 180) + c(0) + c(1) * dt +
             c(2) * dt * dt + c(3) * dt * dt * dt;
    };
    const point sensor{moved(0, p.x, q.x), moved(1, p.y, q.y), moved(2, p.z, q.z)};
    const Matrix n = rotation(turned(0, a.x, b.x), turned(1, a.y, b.y), turned(2, a.z, b.z));
    point polar = Tessaly::polarCoordinatesFromCartesian(scanner);
    polar = {corrected(0, polar.x), corrected(1, polar.y), corrected(2, polar.z)};
    const point s = Tessaly::cartesianCoordinatesFromPolar(polar);
    const point body = product(misalignment_, {s.y, s.z, s.x});
    const point level =
        product(n, {body.x + parameters_.getLeverArm(0), body.y + parameters_.getLeverArm(1),
                    body.z + parameters_.getLeverArm(2)});
    const point g = Tessaly::inverseTransverseMercatorProjection(sensor, zone_, false);
    const point x = Tessaly::ellipsoidalToCartesian(g, zone_.getEllipsoid(), false);
    const point d = product(localLevel(g), level);
    const auto place = Tessaly::cartesianToEllipsoidalWithConvergedInfo(
        {x.x + d.x, x.y + d.y, x.z + d.z}, zone_.getEllipsoid(), true);
    const point world = Tessaly::transverseMercatorProjection(place.first, zone_, true);
    return {world, sensor - world};
  }

 private:
  double corrected(unsigned i, double q) const {
    return (1 + parameters_.getRangeAngleScale(i)) * q + parameters_.getRangeAngleOffset(i);
  }

  const Velorn::SolverParameters& parameters_;
  Tessaly::TransverseMercatorProjectionParameter zone_;
  Matrix misalignment_;
  std::map<double, Record> poses_;
};

void countPoints(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(pointCount()));
}

/// What is georeferenced, and what with.
struct Task {
  std::string group;
  bool offsets, scales;
  Order order = Order::ofTime;
};

void pointByPoint(benchmark::State& state, const Task& task) {
  const auto parameters = parametersWith(task.offsets, task.scales);
  auto& s = strip(task.order);
  const PointByPoint model(parameters);
  for (auto _ : state) {
    for (std::size_t i = 0; i < s.times.size(); ++i) {
      std::tie(s.world[i], s.directions[i]) = model.georeference(s.scanner[i], s.times[i]);
    }
  }
  countPoints(state);
}

void scanner2world(benchmark::State& state, const Task& task, int threads) {
  const auto parameters = parametersWith(task.offsets, task.scales);
  auto& s = strip(task.order);
  omp_set_num_threads(threads);
  for (auto _ : state) {
    orThrow(Velorn::scanner2world(parameters, s.trajectory, s.scanner, s.times, week, 0, s.world,
                                  s.directions, 0.0, false));
  }
  countPoints(state);
}

/// The strip in order of time with its world points.
Strip& georeferenced(const Velorn::SolverParameters& parameters) {
  auto& s = strip();
  orThrow(Velorn::scanner2world(parameters, s.trajectory, s.scanner, s.times, week, 0, s.world,
                                s.directions, 0.0, false));
  return s;
}

void backPointByPoint(benchmark::State& state) {
  const auto parameters = parametersWith(false, false);
  auto& s = georeferenced(parameters);
  const PointByPoint model(parameters);
  for (auto _ : state) {
    for (std::size_t i = 0; i < s.times.size(); ++i) {
      s.scanner[i] = model.measurementOf(s.world[i], s.times[i]);
    }
  }
  countPoints(state);
}

void world2scanner(benchmark::State& state, int threads) {
  const auto parameters = parametersWith(false, false);
  auto& s = georeferenced(parameters);
  omp_set_num_threads(threads);
  for (auto _ : state) {
    orThrow(Velorn::world2scanner(parameters, s.trajectory, s.scanner, s.times, week, 0, s.world));
  }
  countPoints(state);
}

template <typename... Case>
void add(const std::string& name, Case... what) {
  benchmark::RegisterBenchmark(name.c_str(), what...)->Unit(benchmark::kMillisecond)->UseRealTime();
}

const bool added = [] {
  // The baseline of a group first.
  for (const Task& task :
       {Task{"GeoreferenceMounting", false, false}, Task{"GeoreferenceOffsets", true, false},
        Task{"GeoreferenceScaledAngles", true, true},
        Task{"GeoreferenceShuffled", true, false, Order::random}}) {
    add(task.group + "/pointByPoint", pointByPoint, task);
    add(task.group + "/scanner2world1", scanner2world, task, 1);
    add(task.group + "/scanner2world2", scanner2world, task, 2);
  }
  add("GeoreferenceBack/pointByPoint", backPointByPoint);
  add("GeoreferenceBack/world2scanner1", world2scanner, 1);
  add("GeoreferenceBack/world2scanner2", world2scanner, 2);
  return true;
}();

}  // namespace
