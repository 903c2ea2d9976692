// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The main of every test program. It takes the locale of the environment, as a host with a window
// may do, so that the whole suite can be run under one that writes decimal commas.
#include <clocale>
#include <locale>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  std::locale::global(std::locale(""));
  testing::InitGoogleTest(&argc, argv);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  return RUN_ALL_TESTS();
}
