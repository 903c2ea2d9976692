// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Eigen/Dense>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "adjustment/observability/NormalSum.h"
#include "adjustment/stochastics/GaussMarkov.h"
#include "adjustment/stochastics/GlobalPriors.h"

/// A flight of some strips over hills, linear in its unknowns, which are those of an
/// adjustment: 24 per section, of type LINEAR, and 12 global ones. The scan plane is upright, so
/// that nothing tells of the scale of the forward angle.
struct LinearFlight {
  static constexpr Eigen::Index strips = 4, perStrip = 3, sections = strips * perStrip;
  static constexpr Eigen::Index unknowns = 24 * sections + 12;
  static constexpr double length = 10.0, turn = 90.0, noise = 0.02, step = 1e-4;
  static constexpr double tc = 60.0;
  static constexpr std::array<double, 4> headings{0.2, 0.2 + std::numbers::pi, 1.7, 0.25};

  std::vector<double> sigmas{0.05, 0.05, 0.08, 1e-4, 1e-4, 2e-4};  ///< of the trajectory
  std::vector<std::vector<Velorn::StripCorrection>> corrections;   ///< by component, strip
  std::vector<Velorn::LinearSum> observations;                     ///< residuals, of weight 1
  Velorn::NormalMatrix observed, prior;

  explicit LinearFlight(unsigned seed) {
    for (std::size_t c = 0; c < 6; ++c) {
      corrections.emplace_back();
      for (Eigen::Index s = 0; s < strips; ++s) corrections[c].push_back(strip(s, c));
    }
    std::mt19937 random(seed);
    for (int i = 0; i < 1500; ++i) observations.push_back(randomPair(random, i % 50 == 0));
    Velorn::NormalSum sum(unknowns), priorSum(unknowns);
    for (const auto& observation : observations) {
      sum.add(std::vector{Velorn::rowsOf({observation})});
    }
    observed = sum.matrix();
    for (const auto& component : corrections) {
      const auto rows = Velorn::gaussMarkovRows(component, {tc, step * component[0].sigma});
      priorSum.add(rows.process);
      priorSum.add(rows.joints);
    }
    for (std::size_t b = 0; b < 4; ++b) {
      priorSum.add(std::vector{Velorn::globalPriorRows(
          globalSigmas[b], {0, 0, 0}, Velorn::firstUnknownOf(Velorn::globalBlocks[b], sections))});
    }
    prior = priorSum.matrix();
  }

  static double startOf(Eigen::Index strip) {
    return 1000.0 + static_cast<double>(strip) * (perStrip * length + turn);
  }

  /// Displacement of a point along a normal. It is measured at a time under an angle from nadir
  /// from a height.
  Velorn::LinearSum displacement(Eigen::Index strip, double time, double angle, double height,
                                 const Eigen::Vector3d& normal) const {
    const double heading = headings[static_cast<std::size_t>(strip)];
    const Eigen::Vector3d forward(std::sin(heading), std::cos(heading), 0.0), down(0, 0, -1);
    const Eigen::Vector3d right(std::cos(heading), -std::sin(heading), 0.0);
    const Eigen::Vector3d beam = height * (std::tan(angle) * right + down);
    const Eigen::Vector3d turned = forward.cross(beam);  // by roll
    const Eigen::Vector3d attitude[] = {turned, right.cross(beam), down.cross(beam)};
    Velorn::LinearSum sum;
    const auto add = [&](Eigen::Index global, const Eigen::Vector3d& by) {
      sum[24 * sections + global] = normal.dot(by);
    };
    add(0, beam.normalized());
    add(1, beam.norm() * forward);
    add(2, turned);
    add(3, beam);
    add(5, angle * turned);
    for (Eigen::Index i = 0; i < 3; ++i) add(6 + i, attitude[i]);
    add(9, forward);
    add(10, right);
    add(11, down);
    for (std::size_t c = 0; c < 6; ++c) {
      const double by = c < 3 ? normal[static_cast<Eigen::Index>(c)] : normal.dot(attitude[c - 3]);
      sum = Velorn::sumOf(sum, Velorn::correctionAt(corrections[c], tc, time).sum, by);
    }
    return sum;
  }

  /// Unknowns as they are known before: global ones as drawn, the trajectory a Gauss-Markov process
  /// at the borders of sections, straight between them.
  Eigen::VectorXd drawnUnknowns(std::mt19937& random) const {
    std::normal_distribution<double> normal;
    Eigen::VectorXd x = Eigen::VectorXd::Zero(unknowns);
    for (std::size_t i = 0; i < 12; ++i) {
      x[24 * sections + static_cast<Eigen::Index>(i)] = globalSigmas[i / 3][i % 3] * normal(random);
    }
    for (const auto& component : corrections) {
      double value = normal(random), since = 0.0;
      const auto walk = [&](double to) {
        const double rho = std::exp(-(to - since) / tc);
        value = rho * value + std::sqrt(1.0 - rho * rho) * normal(random);
        since = to;
      };
      for (const auto& strip : component) {
        walk(strip.start());
        for (const auto& piece : strip.pieces) {
          const double before = value;
          walk(piece.end());
          x[piece.firstUnknown] = strip.sigma * before;
          x[piece.firstUnknown + 1] = strip.sigma * (value - before) / piece.length;
        }
      }
    }
    return x;
  }

 private:
  // Loose where the flight tells much.
  const Velorn::GlobalSigmas globalSigmas{
      {{0.05, 3e-4, 3e-4}, {1e-4, 5e-4, 5e-4}, {8e-3, 8e-3, 8e-3}, {0.02, 0.02, 0.02}}};

  Velorn::StripCorrection strip(Eigen::Index s, std::size_t component) const {
    Velorn::StripCorrection correction{{}, sigmas[component]};
    for (Eigen::Index k = 0; k < perStrip; ++k) {
      correction.pieces.push_back(
          {24 * (s * perStrip + k) + 4 * static_cast<Eigen::Index>(component), 2,
           startOf(s) + length * static_cast<double>(k), length});
    }
    return correction;
  }

  Velorn::LinearSum randomPair(std::mt19937& random, bool isControl) const {
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    const Eigen::Vector3d normal =
        Eigen::Vector3d(0.6 * uniform(random), 0.6 * uniform(random), 1.0).normalized();
    const auto point = [&](Eigen::Index strip) {
      const double time = startOf(strip) + (0.5 + 0.5 * uniform(random)) * perStrip * length;
      return displacement(strip, time, 0.44 * uniform(random), 600.0 + 200.0 * uniform(random),
                          normal);
    };
    const auto first = static_cast<Eigen::Index>(random() % strips);
    Velorn::LinearSum sum = point(first);
    if (!isControl) {
      const auto second = (first + 1 + static_cast<Eigen::Index>(random() % (strips - 1))) % strips;
      sum = Velorn::sumOf(sum, point(second), -1.0);
    }
    return Velorn::sumOf({}, sum, 1.0 / noise);
  }
};
