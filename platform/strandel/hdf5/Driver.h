// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The virtual file driver through which the HDF5 library reads and writes. It takes no locks (they
// fail on cluster file systems), and a failed write never makes the library's own close fail: with
// the stock driver the library is left in a state in which a second close, or the normal end of the
// process, crashes.
#pragma once

#include "platform/strandel/hdf5/Library.h"

namespace Strandel::Hdf5 {

/// What a file that is being written has suffered.
struct WriteState {
  int error = 0;  ///< the first error number of the system; later writes only claim to succeed
};

/// File access properties for reading.
Handle accessForReading();

/// File access properties for writing a new file; `state` must outlive the file.
Handle accessForWriting(WriteState& state);

}  // namespace Strandel::Hdf5
