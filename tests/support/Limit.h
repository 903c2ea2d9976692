// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <csignal>

#include <sys/resource.h>

/// Limits what the process may take, for one scope: with RLIMIT_FSIZE no file grows beyond so many
/// bytes, as on a full disk.
class Limit {
 public:
  Limit(decltype(RLIMIT_FSIZE) what, rlim_t bytes) : what_(what) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(what_, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    setrlimit(what_, &limit);
  }
  ~Limit() { setrlimit(what_, &before_); }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;

 private:
  decltype(RLIMIT_FSIZE) what_;
  rlimit before_{};
};
