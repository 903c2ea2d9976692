// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Marks what the platform's shared library offers; everything else in it is hidden.
#pragma once

#define VELORN_PLATFORM_EXPORT __attribute__((visibility("default")))
