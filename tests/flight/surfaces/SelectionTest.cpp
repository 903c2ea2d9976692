// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <clocale>
#include <limits>
#include <locale>

#include <gmock/gmock.h>

#include "flight/surfaces/Selection.h"
#include "tests/support/Refusal.h"

using namespace Velorn::Flights;

namespace {

using testing::ElementsAre, testing::HasSubstr;

bool selects(const std::string& text, const std::vector<double>& values) {
  return Selection(text).selects(values);
}

std::string faultOf(const std::string& text) {
  return refusalOf([&] { const Selection parsed(text); }, Error::BadSettings);
}

TEST(Selection, KnowsComparisonsAndWords) {
  EXPECT_THAT(Selection("b > 1 and a < 2 or b == c").names(), ElementsAre("a", "b", "c"));
  EXPECT_TRUE(selects("a > 1 and b == 3", {2, 3}));
  EXPECT_FALSE(selects("a > 1 and b == 3", {1, 3}));
  EXPECT_TRUE(selects("a > 1 or b == 3", {1, 3}));
  EXPECT_TRUE(selects("a > 1 or b > 1 and c > 1", {2, 0, 0}));  // `and` first
  EXPECT_FALSE(selects("(a > 1 or b > 1) and c > 1", {2, 0, 0}));
  EXPECT_TRUE(selects("a >= 0.5 && (b != 2 || a <= 7)", {0.5, 1}));
  EXPECT_TRUE(selects("min(a, b) < 1", {0, 5}));
}

TEST(Selection, NegatesWholeComparisonsAndNoNames) {
  EXPECT_FALSE(selects("not a == 2", {2}));
  EXPECT_TRUE(selects("not a == 2 and b == 1", {3, 1}));
  EXPECT_FALSE(selects("not (a == 2 or b == 1)", {3, 1}));
  EXPECT_THAT(Selection("note > 1 and order == 2").names(), ElementsAre("note", "order"));
}

TEST(Selection, OfNothingSelectsAllAndOfNaNNothing) {
  EXPECT_TRUE(selects("", {}));
  EXPECT_TRUE(selects(" \n", {}));
  EXPECT_FALSE(selects("not a > 1", {std::numeric_limits<double>::quiet_NaN()}));
  EXPECT_FALSE(selects("a / a", {0}));
}

TEST(Selection, ShowsThePlaceOfAFault) {
  EXPECT_THAT(faultOf("a > 1 and"), HasSubstr("\n  a > 1 and\n           ^"));
  EXPECT_THAT(faultOf("a > 1)"), HasSubstr("\n  a > 1)\n       ^"));
  EXPECT_THAT(faultOf("(a > 1"), HasSubstr("parenthesis is not closed"));
  EXPECT_THAT(faultOf("a > 1 b"), HasSubstr("\n        ^"));
  EXPECT_THAT(faultOf("über > 1"), HasSubstr("\n  ^"));
}

TEST(Selection, RefusesWhatWouldMeanSomethingElse) {
  EXPECT_THAT(faultOf("a > 1 and b = 2"),
              HasSubstr("written ==\n  a > 1 and b = 2\n              ^"));
  EXPECT_THAT(faultOf("1 < a < 5"), HasSubstr("joined by"));
  EXPECT_THAT(faultOf("a > 0,5"), HasSubstr("not a list"));
}

TEST(Selection, DoesNotHangOnTheLanguage) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  const std::locale global = std::locale::global(std::locale("de_DE.UTF-8"));
  EXPECT_TRUE(selects("a > 0.5 and a < 1000.5", {0.75}));
  EXPECT_FALSE(selects("a > 0.5", {0.25}));
  std::locale::global(global);
  std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
