// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How this room calls the HDF5 library: one call at a time, quietly, with handles that close
// themselves and with faults as exceptions that never leave the room.
#pragma once

#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

#include <hdf5.h>

namespace Strandel::Hdf5 {

/// A text for the user, without the file's name; whoever knows the file catches it.
class Fault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Keeps the library to itself and silent for one scope. The library is not safe to call from two
/// threads at once; scopes may nest on one thread.
class Session {
 public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

 private:
  std::unique_lock<std::recursive_mutex> lock_;
  H5E_auto2_t report_ = nullptr;
  void* reportData_ = nullptr;
};

/// The innermost message of the library's last failure: " (<message>)", or nothing.
std::string reason();

/// An HDF5 identifier, closed at the end of its life.
class Handle {
 public:
  Handle() = default;
  Handle(hid_t id, herr_t (*close)(hid_t)) : id_(id), close_(close) {}
  ~Handle() { reset(); }
  Handle(Handle&& other) noexcept
      : id_(std::exchange(other.id_, -1)), close_(std::exchange(other.close_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    reset();
    id_ = std::exchange(other.id_, -1);
    close_ = std::exchange(other.close_, nullptr);
    return *this;
  }

  hid_t id() const { return id_; }

  /// Closes now. @return false when the library says that it failed
  bool reset() {
    const hid_t id = std::exchange(id_, -1);
    return id < 0 || !close_ || close_(id) >= 0;
  }

 private:
  hid_t id_ = -1;
  herr_t (*close_)(hid_t) = nullptr;
};

/// @throws Fault with `what` and the library's reason when `id` is not valid
Handle checked(hid_t id, herr_t (*close)(hid_t), const std::string& what);

/// @throws Fault when `status` tells a failure
template <typename Status>
Status checked(Status status, const std::string& what) {
  if (status < 0) throw Fault(what + reason());
  return status;
}

}  // namespace Strandel::Hdf5
