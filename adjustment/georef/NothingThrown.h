// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// For operations that promise to throw nothing and to report every failure by the returned text.
#pragma once

#include <exception>
#include <new>
#include <string>

namespace Velorn {

/// The text that `operation` returns, or one about what it threw.
template <typename Operation>
std::string withoutThrowing(const Operation& operation) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return "scanner2world: not enough memory";
  } catch (const std::exception& error) {
    return std::string("scanner2world: ") + error.what();
  } catch (...) {  // a host's own, out of its progress
    return "scanner2world: an exception of unknown kind";
  }
}

}  // namespace Velorn
