// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <locale>
#include <regex>
#include <sstream>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "platform/plome/Clock.h"
#include "platform/plome/FlagList.h"
#include "platform/plome/Printable.h"
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

TEST(Printable, ShowsWhatATerminalWouldObeyAndLeavesUtf8) {
  using Plome::printable;
  EXPECT_EQ(printable("Zürich €\t\U0001F6E9 ~\n"), "Zürich €\t\U0001F6E9 ~\n");
  EXPECT_EQ(printable("\x1b[2Ja\rb\x7f"), "\\x1b[2Ja\\x0db\\x7f");
  EXPECT_EQ(Plome::printableOnOneLine("ü\na\t"), "ü\\x0aa\\x09");
  EXPECT_EQ(printable(std::string_view("a\0b", 3)), "a\\x00b");
  EXPECT_EQ(printable("\u009b31m\u00a0"), "\\xc2\\x9b31m\u00a0");  // CSI in two bytes
  // Bytes alone, characters cut off, a slash in two bytes, half of a pair, beyond the last plane.
  for (const char* const none :
       {"\x9b", "\xe2\x82", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80"}) {
    std::string escaped;
    for (const char* byte = none; *byte; ++byte) {
      escaped += fmt::format("\\x{:02x}", static_cast<unsigned char>(*byte));
    }
    EXPECT_EQ(printable(none), escaped);
    EXPECT_EQ(printable(std::string(none) + "ü"), escaped + "ü");
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
