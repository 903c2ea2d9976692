// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The flags of what is estimated, which are keys of a project file, too.
#pragma once

#include <velorn/flight/Settings.h>

namespace CLI {
class App;
}

void addModelOptions(CLI::App& command, Velorn::Flights::ModelSettings& model);
