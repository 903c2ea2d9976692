// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
// "a comment that quotes some words" is no message.
std::string faultOf(int strip) {
  if (strip == 0) return fmt::format("{}: strip {} is {} of them",  // an explained one
                                     path, strip, "one");
  return ": nobody has ever explained "
         "this \"fault\" of " +
         name;
}
