// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Work that may find too little memory.
#pragma once

#include <new>
#include <string>

#include <velorn/flight/Error.h>

namespace Velorn::Flights {

/// Does the work.
/// @param what  that is too large then: a file or a folder
/// @throws Error, naming it, when there is not enough memory, on whatever thread of a loop
template <typename Work>
auto withMemoryFor(const std::string& what, const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    throw Error(what + ": not enough memory");
  }
}

}  // namespace Velorn::Flights
