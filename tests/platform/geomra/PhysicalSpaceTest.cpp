// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <concepts>

#include <gtest/gtest.h>

#include "platform/geomra/PhysicalSpace.h"

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;

template <typename A, typename B>
concept Addable = requires(A a, B b) {
  a + b;
};

TEST(PhysicalSpace, TypesKeepPlacesAndDirectionsApart) {
  static_assert(std::same_as<decltype(point{} - point{}), vector>);
  static_assert(std::same_as<decltype(point{} - vector{}), point>);
  static_assert(!Addable<point, point>);
  static_assert(!Addable<vector, point>);
}

TEST(PhysicalSpace, ArithmeticIsPerComponent) {
  const point a{1, 20, 300}, b{4, 50, 600};
  EXPECT_EQ(b - a, (vector{3, 30, 300}));
  EXPECT_EQ(a + (b - a), b);
  EXPECT_EQ(b - (b - a), a);
  const vector u{1, 2, 3}, v{0, 1, 5};
  EXPECT_EQ(2.0 * (u - v) + u, (vector{3, 4, -1}));
  EXPECT_EQ(dot(u, v), 17.0);
}
