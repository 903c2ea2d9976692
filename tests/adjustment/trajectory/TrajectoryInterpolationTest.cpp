// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <random>
#include <thread>

#include <gmock/gmock.h>

#include "platform/geomra/Degree.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"
#include "tests/support/ConsoleLines.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/Trajectory.h>

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using testing::ElementsAre, testing::IsEmpty;
using Velorn::Trajectory;

namespace {

using Geomra::degree;

struct Answer {
  bool good;
  point position;
  vector attitude;
  friend bool operator==(const Answer&, const Answer&) = default;
};

const Answer untouched{false, {1, 2, 3}, {4, 5, 6}};

Answer ask(const Trajectory& trajectory, double t, bool report = false, unsigned inWeek = gpsWeek) {
  Answer answer = untouched;
  answer.good =
      trajectory.interpolateTrajectory(t, inWeek, answer.position, answer.attitude, report);
  return answer;
}

Answer record(bool good, const Record& r) {
  const double k = degree;
  return {good, r.position, {r.degrees.x * k, r.degrees.y * k, r.degrees.z * k}};
}

class TrajectoryInterpolation : public testing::Test {
 protected:
  Trajectory imported(const std::vector<Record>& records, std::int64_t inWeek = gpsWeek) const {
    Trajectory trajectory({TrajectoryFile({records}, inWeek).save(folder / "t.kx")});
    EXPECT_EQ(trajectory.importTrajectory(), "");
    return trajectory;
  }

  TemporaryFolder folder;
  ConsoleLines console;
};

/// The slow twin: the two records found by walking from the start.
Answer walked(std::map<double, Record>& records, double t) {
  if (t > records.rbegin()->first) return record(true, records.rbegin()->second);
  auto b = std::next(records.begin());
  while (b->first < t) ++b;
  if (b->first == t) return record(true, b->second);
  const auto first = record(true, std::prev(b)->second), second = record(true, b->second);
  const double f = (t - std::prev(b)->first) / (b->first - std::prev(b)->first);
  const auto& [p, q] = std::pair(first.position, second.position);
  const auto& [u, v] = std::pair(first.attitude, second.attitude);
  return {true,
          {p.x + f * (q.x - p.x), p.y + f * (q.y - p.y), p.z + f * (q.z - p.z)},
          {u.x + f * (v.x - u.x), u.y + f * (v.y - u.y), u.z + f * (v.z - u.z)}};
}

}  // namespace

TEST_F(TrajectoryInterpolation, IsLinearBetweenRecordsAndExactOnThem) {
  const auto records = recordsAt({100, 101, 102});
  const auto trajectory = imported(records);
  EXPECT_EQ(ask(trajectory, 100.25).position, (point{2.5, 5, 7.5}));
  EXPECT_DOUBLE_EQ(ask(trajectory, 101.5).attitude.x, 1.5 * degree);
  for (const auto& r : records) EXPECT_EQ(ask(trajectory, r.time), record(true, r)) << r.time;
  EXPECT_EQ(ask(trajectory, 101, true), record(true, records[1]));
  EXPECT_THAT(console, IsEmpty());
}

TEST_F(TrajectoryInterpolation, GoesOnBeforeTheStartAndSaysSoWhenAsked) {
  const auto trajectory = imported(recordsAt({100, 101, 102.5}));
  const auto early = ask(trajectory, 99);
  EXPECT_TRUE(early.good);
  EXPECT_EQ(early.position, (point{-10, -20, -30}));
  EXPECT_DOUBLE_EQ(early.attitude.x, -1 * degree);
  EXPECT_TRUE(ask(trajectory, 100).good);
  EXPECT_THAT(console, IsEmpty());

  const auto reported = ask(trajectory, 99, true);
  EXPECT_FALSE(reported.good);
  EXPECT_EQ(reported.position, early.position);
  EXPECT_EQ(reported.attitude, early.attitude);
  EXPECT_EQ(ask(trajectory, 100, true), record(false, recordOf(100, 0)));
  EXPECT_TRUE(ask(trajectory, std::nextafter(100.0, HUGE_VAL), true).good);
  EXPECT_THAT(console,
              ElementsAre("Trajectory::interpolateTrajectory, Error, time (99) with weeknumber "
                          "(2318) > is lower min-range of trajectory (102.5)",
                          "Trajectory::interpolateTrajectory, Error, time (100) with weeknumber "
                          "(2318) > is lower min-range of trajectory (102.5)"));
}

TEST_F(TrajectoryInterpolation, HoldsTheLastRecordAfterTheEnd) {
  const auto trajectory = imported(recordsAt({100, 101, 102}));
  const auto last = record(true, recordOf(102, 20));
  for (const double t : {102.0, std::nextafter(102.0, HUGE_VAL), 1e9, HUGE_VAL}) {
    EXPECT_EQ(ask(trajectory, t, true), last) << t;
  }
  EXPECT_THAT(console, IsEmpty());
}

TEST_F(TrajectoryInterpolation, RefusesMissingWeeksAndLessThanThreeTimes) {
  EXPECT_EQ(ask(imported(recordsAt({1, 2, 3})), 2, false, 7), untouched);
  EXPECT_EQ(ask(imported(recordsAt({1, 2})), 1.5), untouched);
  EXPECT_EQ(ask(imported(recordsAt({1, 2, 2, 1, 2}), 0), 1.5, true, 0), untouched);
  EXPECT_THAT(console,
              ElementsAre(" Trajectory::interpolateTrajectory: Error, found no week number "
                          "7 in trajectory",
                          " Trajectory::interpolateTrajectory: Error, number of time "
                          "stamps for weeknumber 2318 is zero!",
                          " Trajectory::interpolateTrajectory: Error, number of time "
                          "stamps for weeknumber 0 is zero!"));
}

TEST_F(TrajectoryInterpolation, RefusesTimesThatAreNone) {
  const auto trajectory = imported(recordsAt({1, 2, 3}));
  EXPECT_EQ(ask(trajectory, std::nan("")), untouched);
  EXPECT_EQ(ask(trajectory, -HUGE_VAL), untouched);
  EXPECT_THAT(console, ElementsAre(" Trajectory::interpolateTrajectory: Error, time (nan) with "
                                   "weeknumber (2318) is no time",
                                   " Trajectory::interpolateTrajectory: Error, time (-inf) with "
                                   "weeknumber (2318) is no time"));
}

TEST_F(TrajectoryInterpolation, TakesAnglesAsPlainNumbers) {
  const auto trajectory = imported({{0, {}, {0, 0, 179}}, {2, {}, {0, 0, -179}}, {3, {}, {}}});
  EXPECT_NEAR(ask(trajectory, 1).attitude.z, 0.0, 1e-15);  // not ±π
}

TEST_F(TrajectoryInterpolation, AgreesWithAWalkThroughRecordsInDisorderFromSeveralThreads) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> second(0, 600), metre(-5e6, 5e6), degree(-180, 180);
  std::vector<Record> records;
  std::map<double, Record> byTime;
  for (int i = 0; i < 1000; ++i) {
    const double time = i % 3 ? std::floor(second(random)) : second(random);
    const auto of = [&](auto& values) { return values(random); };
    records.push_back(
        {time, {of(metre), of(metre), of(metre)}, {of(degree), of(degree), of(degree)}});
    byTime.insert_or_assign(time, records.back());
  }
  const auto trajectory = imported(records);
  std::vector<double> times;
  for (const auto& [time, r] : byTime) {
    for (const double t : {time, std::nextafter(time, -HUGE_VAL), std::nextafter(time, HUGE_VAL)}) {
      times.push_back(t);
    }
    times.push_back(second(random));
  }
  std::atomic<int> wrong = 0;
  const auto compare = [&] {
    for (const double t : times) {
      const auto expected = walked(byTime, t);
      if (!(ask(trajectory, t) == expected)) ++wrong;
    }
  };
  std::thread other(compare);
  compare();
  other.join();
  EXPECT_EQ(wrong, 0);
}
