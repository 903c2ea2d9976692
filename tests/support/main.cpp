// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The main of every test program. It takes the locale of the environment, as a host with a window
// may do, so that the whole suite can be run under one that writes decimal commas. With the name of
// a source file as its argument, a program of several files runs the tests of that one.
#include <clocale>
#include <iostream>
#include <locale>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

/// The filter for the tests of a file, empty if there are none.
std::string testsOf(const std::string& file) {
  std::string names;
  const auto& all = *testing::UnitTest::GetInstance();
  for (int i = 0; i < all.total_test_suite_count(); ++i) {
    const auto& suite = *all.GetTestSuite(i);
    for (int k = 0; k < suite.total_test_count(); ++k) {
      const auto& test = *suite.GetTestInfo(k);
      if (!std::string_view(test.file()).ends_with("/" + file)) continue;
      names += std::string(suite.name()) + "." + test.name() + ":";
    }
  }
  return names;
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  std::locale::global(std::locale(""));
  testing::InitGoogleTest(&argc, argv);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  if (argc > 1 && GTEST_FLAG_GET(filter) == "*") {  // a death test has one of its own
    const std::string tests = testsOf(argv[1]);
    if (tests.empty()) {
      std::cerr << argv[1] << ": no tests of that file\n";
      return 1;
    }
    GTEST_FLAG_SET(filter, tests);
  }
  return RUN_ALL_TESTS();
}
