// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "flight/chain/ControlFit.h"
#include "flight/chain/Sufficiency.h"
#include "flight/report/ControlText.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// Patches with twelve correspondences each that an adjustment leaves these misfits [m].
RoundReport roundOf(const std::vector<double>& misfits) {
  RoundReport round;
  round.matching.emplace();
  round.adjustment.emplace();
  round.adjustment->after.pairs.rms = round.adjustment->after.pairs.nmad = 0.01;
  for (std::uint32_t id = 0; id < misfits.size(); ++id) {
    ControlItem item;
    item.id = id;
    item.place = {1000.25 + id, 2000.5, 30.0};
    item.correspondences = 12;
    round.matching->control.push_back(item);
    round.adjustment->control.push_back({id, 12, 0.3, misfits[id]});
  }
  return round;
}

std::vector<std::string> warningsOf(const std::vector<RoundReport>& rounds) {
  DatumReport datum;
  addControlWarnings(rounds, "HYBRID", datum);
  return datum.warnings;
}

const std::vector<double> good{0.002, -0.004, 0.006, -0.001, 0.003, 0.005, -0.004, 0.002};

TEST(ControlWarnings, NameAWrongPatchWithItsPlaceAndSize) {
  EXPECT_THAT(warningsOf({roundOf(good)}), IsEmpty());
  auto misfits = good;
  misfits[3] = -0.098;
  auto wrong = roundOf(misfits);
  wrong.matching->control[3].weight = 0.09;
  EXPECT_THAT(warningsOf({roundOf(good), wrong}),
              ElementsAre(HasSubstr("3 (E 1003.25, N 2000.50): -9.8 cm, weight 0.09.")));
  wrong.matching->control[3].weight = 1.0;
  EXPECT_THAT(warningsOf({wrong}), ElementsAre(HasSubstr("N 2000.50): -9.8 cm."))) << "one round";
  auto weak = roundOf(good);  // its weight was found before the others moved
  weak.matching->control[5].weight = 0.5;
  EXPECT_THAT(warningsOf({weak}), ElementsAre(HasSubstr("+0.5 cm, weight 0.50")));
}

TEST(ControlWarnings, NameTheModelWhereControlFitsWorseThanThePairsOrTheRoundBefore) {
  auto bent = good;
  for (double& misfit : bent) misfit *= 5.0;
  EXPECT_THAT(warningsOf({roundOf(bent), roundOf(bent)}),
              ElementsAre(AllOf(HasSubstr("The HYBRID model"), HasSubstr("by 1.9 cm"),
                                HasSubstr("Worst: 2 (E 1002.25"))));
  auto noisy = roundOf(bent);
  noisy.adjustment->after.pairs.rms = 0.08;
  EXPECT_THAT(warningsOf({noisy}), IsEmpty());
  auto later = good;
  for (double& misfit : later) misfit *= 3.0;
  EXPECT_THAT(warningsOf({roundOf(good), roundOf(later)}),
              ElementsAre(HasSubstr("worse than in the round before: 1.1 cm, and 0.4 cm")));
  auto coarse = roundOf(good);
  coarse.scale = 2.0;
  EXPECT_THAT(warningsOf({coarse, roundOf(later)}), IsEmpty());
  later[0] = unknownFigure;
  RoundReport unknown;
  unknown.adjustment.emplace();
  EXPECT_THAT(warningsOf({unknown}), IsEmpty());
}

TEST(ControlTable, HasEachPatchAndWhyOneIsLeftOut) {
  auto round = roundOf(good);
  round.matching->control[1].leftOut = "no surface in reach";
  const auto text = controlTable(*round.matching, &*round.adjustment);
  EXPECT_THAT(text, HasSubstr("  left out: no surface in reach\n"));
  EXPECT_THAT(text, HasSubstr("30.00       -0.10    1.00\n"));
  EXPECT_THAT(controlTable(*round.matching, nullptr), HasSubstr("-           -    1.00\n"));
  const auto many = roundOf(std::vector<double>(250, 0.001));
  EXPECT_THAT(controlTable(*many.matching, &*many.adjustment), HasSubstr("and 150 more"));
}

/// Ten strips of a hundred seconds with enough of everything.
struct Enough {
  RoundReport round;
  std::vector<StripFacts> strips;

  Enough() {
    round.matching.emplace();
    round.adjustment.emplace();
    auto& solver = round.adjustment->solver;
    solver.residuals = 3000;
    solver.estimated = 132;
    for (std::uint32_t id = 0; id < 10; ++id) {
      const auto name = "strip_" + std::to_string(id) + ".kx";
      strips.push_back({id, name, 1000, 2300, 0.0, 100.0, {}, 0.0});
      round.matching->support.push_back({id, 600, 8.0, 90.0, 40.0});
      round.adjustment->redundancy.push_back({name, 600, 12});
    }
  }
  std::vector<std::string> warnings(const std::set<int>& locked = {}) const {
    DatumReport datum;
    addSufficiencyWarnings(round, strips, locked, datum);
    return datum.warnings;
  }
};

TEST(SufficiencyWarnings, NameWhatHasTooFewTooNarrowAndTooFlat) {
  Enough flight;
  EXPECT_THAT(flight.warnings(), IsEmpty());
  flight.round.adjustment->redundancy[4].correspondences = 239;
  flight.round.adjustment->solver.residuals = 2639;
  flight.round.matching->support[5].last = 50.0;
  flight.round.matching->support[6].weakestAspect = 0.5;
  PairReport pair{0, 1, false, {}};
  pair.classes[1].candidates = 70;
  pair.classes[1].kept = 19;
  flight.round.matching->pairs.push_back(pair);
  EXPECT_THAT(flight.warnings(),
              ElementsAre(HasSubstr("2639 correspondences for 132 estimated unknowns"),
                          HasSubstr("strip_4.kx: only 239 correspondences for its 12"),
                          HasSubstr("19 correspondences of the class roof, of 70"),
                          HasSubstr("strip_5.kx (42.0 of 100.0 s)."), HasSubstr(": strip_6.kx.")));
  flight.round.adjustment->redundancy[4].unknowns = 0;  // locked strips have none
  EXPECT_THAT(flight.warnings({4, 5, 6}), testing::SizeIs(2));
}

TEST(RequireEnough, RefusesWhatNoNoiseCouldBeToldFrom) {
  const auto refuses = [](int residuals, int estimated) {
    Velorn::SolverEnd end;
    end.residuals = residuals;
    end.estimated = estimated;
    try {
      requireEnough(end, "blocks");
      return false;
    } catch (const Error& error) {
      EXPECT_THAT(error.what(), HasSubstr("blocks: only " + std::to_string(residuals)));
      return true;
    }
  };
  EXPECT_TRUE(refuses(10, 3));
  EXPECT_TRUE(refuses(239, 48));
  EXPECT_FALSE(refuses(240, 48));
  EXPECT_FALSE(refuses(10, 0)) << "nothing is estimated";
}

}  // namespace
