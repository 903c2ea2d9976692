// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>

#include "host/commands/Commands.h"

void addGeoreference(CLI::App& /*app*/) {}
