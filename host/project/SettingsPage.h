// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The page of the manual about settings, which `velorn help settings` prints, too.
#pragma once

#include <string>

/// Markdown, made from the table of settings.
std::string settingsPage();
