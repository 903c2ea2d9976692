// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/Library.h"

namespace Strandel::Hdf5 {
namespace {

/// Never destroyed: a bundle that lives until the process ends still closes its file under it.
///
/// The library is told not to clean up at the end of the process. Everything that is written is
/// closed long before; and after it has met a damaged object it cannot clean up, but complains on
/// the standard error. (Without effect where the program itself uses the library and did so first.)
std::recursive_mutex& mutex() {
  static auto* const instance = [] {
    H5dont_atexit();
    return new std::recursive_mutex;
  }();
  return *instance;
}

herr_t keepDescription(unsigned, const H5E_error2_t* error, void* text) {
  if (error->desc) *static_cast<const char**>(text) = error->desc;
  return 0;
}

}  // namespace

Session::Session() : lock_(mutex()) {
  H5Eget_auto2(H5E_DEFAULT, &report_, &reportData_);
  H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
}

Session::~Session() {
  H5Eset_auto2(H5E_DEFAULT, report_, reportData_);
}

std::string reason() {
  const char* innermost = nullptr;
  H5Ewalk2(H5E_DEFAULT, H5E_WALK_DOWNWARD, keepDescription, static_cast<void*>(&innermost));
  return innermost && *innermost ? " (" + std::string(innermost) + ")" : "";
}

Handle checked(hid_t id, herr_t (*close)(hid_t), const std::string& what) {
  if (id < 0) throw Fault(what + reason());
  return {id, close};
}

}  // namespace Strandel::Hdf5
