// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How the program ends when somebody presses Ctrl-C.
#pragma once

/// From here on SIGINT and SIGTERM end the process at once, wherever it is: half-written files are
/// removed, the bar is taken off the terminal, "velorn: interrupted" is said, and the exit status
/// is 130 or 143. A signal that is ignored when the program starts, as in the background of a
/// script, stays ignored. To be called before the program starts a thread.
void endWhenInterrupted();
