// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Other processes that the container tests need: this very test program again, and h5py.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include <dlfcn.h>

#include "tests/support/TemporaryFolder.h"

#ifdef VELORN_SANITIZED
/// For the leak sanitizer: the HDF5 library forgets some hundred bytes with every object whose
/// checksum is wrong.
// NOLINTBEGIN(bugprone-reserved-identifier, misc-definitions-in-headers): its name, one file each
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libhdf5";
}
// NOLINTEND(bugprone-reserved-identifier, misc-definitions-in-headers)
#endif

/// As in a program that uses the HDF5 library itself and did so first: the library then has
/// handlers for the end of the process.
inline void letHdf5EndWithTheProcess() {
  reinterpret_cast<int (*)()>(dlsym(RTLD_DEFAULT, "H5open"))();
}

/// Runs one test of this program, a disabled one too, in a process of its own, which ends by
/// returning from main.
/// @param before  shell commands to precede it: limits, variables
/// @throws std::runtime_error with its output when it does not pass, or does not end with 0
inline void runInOwnProcess(const std::string& test, const std::string& before = "") {
  const auto program = std::filesystem::read_symlink("/proc/self/exe").string();
  outputOf(before + " '" + program + "' --gtest_also_run_disabled_tests --gtest_filter=" + test +
           " 2>&1");
}

/// Runs tests of this program again in a process that has little memory, so that it shows when a
/// header makes memory be taken, and whose end goes through the handlers of the HDF5 library. Not
/// under sanitizers, which take more.
inline void runWithLittleMemory([[maybe_unused]] const std::string& tests) {
  constexpr const char* inside = "VELORN_TEST_LITTLE_MEMORY";
  if (std::getenv(inside)) return letHdf5EndWithTheProcess();
#ifndef VELORN_SANITIZED
  runInOwnProcess(tests, std::string("ulimit -S -v 524288; ") + inside + "=1");
#endif
}

/// Runs a Python script that may use h5py, in `folder`.
/// @return what it prints; throws with that when it does not end with 0
inline std::string runPython(const std::filesystem::path& folder, const std::string& script) {
  writeContent(folder / "script.py", script);
  return outputOf("ulimit -S -v unlimited; cd '" + folder.string() +
                  "' && /usr/bin/python3 script.py 2>&1");
}

#ifdef VELORN_FORMAT_PAGE
/// The example of docs/kx-format.md, a Python script that writes strip.kx.
inline std::string exampleOfTheManual() {
  const std::string manual = contentOf(VELORN_FORMAT_PAGE);
  const std::string opening = "```python\n";
  const auto begin = manual.find(opening) + opening.size();
  return manual.substr(begin, manual.find("```\n", begin) - begin);
}
#endif
