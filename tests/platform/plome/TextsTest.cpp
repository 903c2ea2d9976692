// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <locale>
#include <regex>
#include <sstream>

#include <gmock/gmock.h>

#include "platform/plome/Clock.h"
#include "platform/plome/FlagList.h"
#include "platform/plome/StringList.h"

using testing::ElementsAre;

TEST(FlagList, HoldsWordsOnceInTheirOrder) {
  const Plome::FlagList flags("  +rasterize +optimization  +rasterize ", ' ');
  EXPECT_THAT(flags.words(), ElementsAre("+rasterize", "+optimization"));
  EXPECT_EQ(flags.text(), "+rasterize +optimization");
  EXPECT_TRUE(flags.isSet("+optimization"));
  EXPECT_FALSE(flags.isSet("optimization"));
  EXPECT_FALSE(flags.isSet("+opt"));
  EXPECT_EQ(Plome::FlagList("a,b c", ',').text(), "a,b c");
  EXPECT_EQ(Plome::FlagList("", ' ').text(), "");
  EXPECT_FALSE(Plome::FlagList().isSet(""));
}

TEST(StringList, KeepsOrderAndDuplicatesAndChecksItsIndex) {
  Plome::StringList list{"b.kx", "a.kx"};
  list.add("b.kx");
  EXPECT_THAT(list, ElementsAre("b.kx", "a.kx", "b.kx"));
  EXPECT_THROW(list.at(3), std::out_of_range);
}

TEST(Clock, IsSafeInAFileNameWhateverTheSeparator) {
  EXPECT_TRUE(std::regex_match(Plome::currentDateAndTime('_'), std::regex("\\d{4}(_\\d\\d){5}")));
  EXPECT_TRUE(std::regex_match(Plome::currentDateAndTime('-'), std::regex("\\d{4}(-\\d\\d){5}")));
  for (const char unsafe : {'/', ':', ' ', '\\', '*', '\n', '\0'}) {
    EXPECT_TRUE(
        std::regex_match(Plome::currentDateAndTime(unsafe), std::regex("\\d{4}(_\\d\\d){5}")));
  }
}

// Makes the run under a German locale able to fail: were the locale not in force there, this test
// would say so.
TEST(Locale, APlainStreamFollowsTheEnvironment) {
  const char* const wanted = std::getenv("LC_ALL");
  std::ostringstream stream;
  stream << 1.5;
  EXPECT_EQ(stream.str(), wanted && std::string(wanted).starts_with("de_DE") ? "1,5" : "1.5");
}
