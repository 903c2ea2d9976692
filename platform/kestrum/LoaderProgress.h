// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How long-running operations tell their caller how far they are.
#pragma once

#include <cstddef>
#include <string>

#include "platform/Visibility.h"
#include "platform/kestrum/Ownership.h"

namespace Kestrum {

/// Receives the progress of a long-running operation, on the thread that runs it.
class VELORN_PLATFORM_EXPORT LoaderProgress : public InterfaceBase {
 public:
  LoaderProgress();
  ~LoaderProgress() override;

  /// @param text     what is being counted, for example "setSection #"
  /// @param current  items begun before this one, from 0
  /// @param total    items in all; 0 when unknown
  virtual void report(const std::string& text, std::size_t current, std::size_t total) = 0;
};

}  // namespace Kestrum
