// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/FrameMotion.h"

#include "adjustment/georef/Lanes.h"

namespace Velorn {
namespace {

using namespace OnLanes;

/// Polynomials through values at Chebyshev's nodes u_i = cos((2i + 1) π / 2n) / 2: which
/// coefficients a value of one belongs to.
template <std::size_t count>
struct Nodes {
  alignas(64) double u[count] = {};
  alignas(64) double coefficients[count][count] = {};  // [node][power]

  constexpr explicit Nodes(const long double (&cosines)[count]) {
    for (std::size_t i = 0; i < count; ++i) u[i] = static_cast<double>(cosines[i] / 2);
    for (std::size_t i = 0; i < count; ++i) {
      long double product[count] = {1};  // of (x − u_j) / (u_i − u_j) over the others
      for (std::size_t j = 0; j < count; ++j) {
        if (j == i) continue;
        const long double uj = u[j], apart = u[i] - uj;
        for (std::size_t m = count; m-- > 0;) {
          product[m] = ((m > 0 ? product[m - 1] : 0) - uj * product[m]) / apart;
        }
      }
      for (std::size_t m = 0; m < count; ++m) coefficients[i][m] = static_cast<double>(product[m]);
    }
  }
};

constexpr Nodes<4> fewNodes({0.92387953251128675613L, 0.38268343236508977173L,
                             -0.38268343236508977173L, -0.92387953251128675613L});
constexpr Nodes<8> manyNodes({0.98078528040323044913L, 0.83146961230254523708L,
                              0.55557023301960222474L, 0.19509032201612826785L,
                              -0.19509032201612826785L, -0.55557023301960222474L,
                              -0.83146961230254523708L, -0.98078528040323044913L});

template <std::size_t count>
VELORN_INLINE void putCoefficients(double* to, const Lanes<count>& values,
                                   const Nodes<count>& nodes) {
  using L = Lanes<count>;
  L sum = load<L>(nodes.coefficients[0]) * values[0];
  for (std::size_t i = 1; i < count; ++i) sum += load<L>(nodes.coefficients[i]) * values[i];
  store(to, sum);
}

template <typename L>
struct Matrix {
  L at[3][3];
};

/// N, see rotation in Rotation.h.
template <typename L>
VELORN_INLINE Matrix<L> attitudeAt(const L& u, const FrameMounting& mounting) {
  Turn<L> turns[3];
  for (std::size_t j = 0; j < 3; ++j) {
    turns[j] = sum(Turn<L>{all<L>(mounting.sines[j]), all<L>(mounting.cosines[j])},
                   ofSmall(rising<3>(mounting.turning[j], u)));
  }
  const auto& [sx, cx] = turns[0];
  const auto& [sy, cy] = turns[1];
  const auto& [sz, cz] = turns[2];
  return {{{cz * cy, cz * sy * sx - sz * cx, cz * sy * cx + sz * sx},
           {sz * cy, sz * sy * sx + cz * cx, sz * sy * cx - cz * sx},
           {-sy, cy * sx, cy * cx}}};
}

/// C, see localLevelRotation in Rotation.h, of the unit vector upwards.
template <typename L>
VELORN_INLINE Matrix<L> localLevel(const L (&up)[3]) {
  const L cosine = squareRoot(L(up[0] * up[0] + up[1] * up[1]));
  const L sl = up[1] / cosine, cl = up[0] / cosine;
  return {{{-up[2] * cl, -sl, -up[0]}, {-up[2] * sl, cl, -up[1]}, {cosine, L{}, -up[2]}}};
}

template <std::size_t count>
VELORN_INLINE void setMotionAt(const Nodes<count>& nodes, IntervalFrame& frame,
                               const FrameMounting& mounting) {
  using L = Lanes<count>;
  const L u = load<L>(nodes.u);
  L position[3], place[3], up[3];
  for (std::size_t i = 0; i < 3; ++i) position[i] = rising<3>(frame.position[i], u);
  for (std::size_t i = 0; i < 3; ++i) {
    up[i] = falling<4>(frame.local->up[i], position[0], position[1]);
    place[i] =
        falling<4>(frame.local->earthCentred[i], position[0], position[1]) + position[2] * up[i];
  }
  const Matrix<L> c = localLevel(up), n = attitudeAt(u, mounting);
  for (std::size_t i = 0; i < 3; ++i) {
    L body[3];  // a row of C N
    for (std::size_t j = 0; j < 3; ++j) {
      body[j] = c.at[i][0] * n.at[0][j] + c.at[i][1] * n.at[1][j] + c.at[i][2] * n.at[2][j];
    }
    const auto inBody = [&](double x, double y, double z) VELORN_INLINE_LAMBDA {
      return L(body[0] * x + body[1] * y + body[2] * z);
    };
    const auto& [forward, right, down] = mounting.misalignment;
    const auto& l = mounting.leverArm;
    putCoefficients(frame.motion[i][0], L(place[i] + inBody(l[0], l[1], l[2])), nodes);
    for (std::size_t j = 0; j < 3; ++j) {
      putCoefficients(frame.motion[i][1 + j], inBody(forward[j], right[j], down[j]), nodes);
    }
  }
}

}  // namespace

void setMotion(IntervalFrame& frame, const FrameMounting& mounting) {
  // The lanes are the nodes here, whatever suits the processor.
  onBestLanes([&](auto) VELORN_INLINE_LAMBDA {
    if (frame.degree == IntervalFrame::lowDegree) {
      setMotionAt(fewNodes, frame, mounting);
    } else {
      setMotionAt(manyNodes, frame, mounting);
    }
  });
}

}  // namespace Velorn
