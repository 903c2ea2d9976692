// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How an operation on a flight gives up.
//
//     try {
//       Velorn::Flights::importFlight(settings, watch);
//     } catch (const Velorn::Flights::Error& error) {
//       if (error.kind() == Velorn::Flights::Error::Interrupted) return;
//       show(error.what());
//     }
#pragma once

#include <stdexcept>
#include <string>

#include <velorn/flight/Visibility.h>

namespace Velorn::Flights {

/// The one exception of this library. The message names the file, the strip or the value, and says
/// what to do. Whatever else leaves an operation was thrown by a callback.
class VELORN_FLIGHT_EXPORT Error : public std::runtime_error {
 public:
  enum Kind {
    BadInput,          ///< a file that is damaged, does not belong there, or holds what cannot be
    BadSettings,       ///< settings out of their bounds, or that contradict each other
    MissingFile,       ///< a file or folder that is not there
    NoSpace,           ///< a file or folder that cannot be written: full, read-only, not permitted
    Interrupted,       ///< the caller's wish
    NoConvergence,     ///< the solver ran out of steps
    TooLittleControl,  ///< fewer correspondences with ground truth than are needed
    SolverFailed,      ///< the solver ended in another way than by converging
    Internal           ///< a fault of this library
  };

  explicit Error(const std::string& message, Kind kind = BadInput);
  ~Error() override;

  Kind kind() const { return kind_; }

 private:
  Kind kind_;
};

}  // namespace Velorn::Flights
