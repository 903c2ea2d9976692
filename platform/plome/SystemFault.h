// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the operating system calls a fault.
#pragma once

#include <string>
#include <system_error>

namespace Plome {

/// @param code  as errno says it
inline std::string systemFault(int code) {
  return std::generic_category().message(code);
}

}  // namespace Plome
