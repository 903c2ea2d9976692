// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The flags of what is estimated, which are keys of a project file, too.
#pragma once

#include "flight/settings/ModelSettings.h"

namespace CLI {
class App;
}

void addModelOptions(CLI::App& command, Velorn::Flights::Model& model);
