// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The commands of the program. Each function adds one subcommand, with what it does when it is
// called.
#pragma once

namespace CLI {
class App;
}

void addSimulate(CLI::App& app);
void addGeoreference(CLI::App& app);
void addAdjust(CLI::App& app);
void addInfo(CLI::App& app);
void addCompare(CLI::App& app);
void addRun(CLI::App& app);
void addImport(CLI::App& app);
void addExport(CLI::App& app);
void addInit(CLI::App& app);
void addRasterize(CLI::App& app);
void addMatch(CLI::App& app);
void addCorrespondences(CLI::App& app);
void addHelp(CLI::App& app);
void addCompletion(CLI::App& app);
void addManPage(CLI::App& app);
