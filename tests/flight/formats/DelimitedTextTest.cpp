// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gmock/gmock.h>

#include "flight/formats/DelimitedText.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

using testing::ElementsAre, testing::HasSubstr, testing::ThrowsMessage;

TEST(DelimitedText, LinesComeWithoutEndsAndCommentsAndWithTheirNumbers) {
  const TemporaryFolder folder;
  writeContent(folder / "a.txt",
               "\xEF\xBB\xBF"
               "first line\r\n \t\r\n# no\n  % nor this\n\t5\n" +
                   std::string(16382, 'x') + "\nlast");
  DelimitedText text(folder / "a.txt");
  ASSERT_TRUE(text.next());
  EXPECT_EQ(text.line(), "first line");
  ASSERT_TRUE(text.next());
  EXPECT_EQ(text.line(), "\t5");  // the first of two columns is empty
  EXPECT_EQ(text.number(), 5u);
  ASSERT_TRUE(text.next());
  EXPECT_EQ(text.line().size(), 16382u);
  ASSERT_TRUE(text.next());
  EXPECT_EQ(text.line(), "last");
  EXPECT_FALSE(text.next());

  writeContent(folder / "long.txt", std::string("1\n2") + std::string(20000, '\0') + "\n3\n");
  DelimitedText binary(folder / "long.txt");
  EXPECT_TRUE(binary.next());
  EXPECT_THAT([&] { binary.next(); }, ThrowsMessage<Error>(HasSubstr("long.txt: line 2: ")));
  EXPECT_THAT([&] { DelimitedText none(folder / "none.txt"); },
              ThrowsMessage<Error>(HasSubstr("none.txt: no such file")));
  EXPECT_THAT([&] { DelimitedText none(folder.path()); },
              ThrowsMessage<Error>(HasSubstr("is not a text file")));
}

TEST(DelimitedText, WordsArePartedByOneDelimiterOrAnyNumberOfBlanks) {
  EXPECT_THAT(wordsOf("  1 \t2  3", ' '), ElementsAre("1", "2", "3"));
  EXPECT_THAT(wordsOf("\t2\t a b ", '\t'), ElementsAre("", "2", "a b"));
  EXPECT_THAT(wordsOf("1 ,,3,", ','), ElementsAre("1", "", "3", ""));
  EXPECT_EQ(delimiterOf("1,5; 2"), ';');
  EXPECT_EQ(delimiterOf("1, 2"), ',');
  EXPECT_EQ(delimiterOf("1  2"), ' ');
}

TEST(DelimitedText, ANumberIsAWholeWordWithAPoint) {
  EXPECT_EQ(numberIn("+1.5e-3"), 1.5e-3);
  EXPECT_EQ(numberIn("-.25"), -0.25);
  for (const char* const word : {"", "1,5", "1.5m", "+-1", "++1", "0x10", "1e999", "one"}) {
    EXPECT_FALSE(numberIn(word)) << word;
  }
  EXPECT_TRUE(holdsANumber("Zone,32"));
  EXPECT_FALSE(holdsANumber("Time[s]; UTM32 n/a"));
}
