// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the library says on its console, shown where a progress bar may stand.
//
//     Progress progress(quiet);
//     const LibraryMessages messages(progress, quiet);
#pragma once

#include "host/terminal/Progress.h"
#include "platform/morvane/Console.h"

/// Shows the console's lines as messages of a progress, for one scope.
class LibraryMessages {
 public:
  /// @param quiet  leaves out the lines that only tell how far the library is; warnings stay
  LibraryMessages(Progress& progress, bool quiet);

 private:
  Morvane::ConsoleRedirection redirection_;
};
