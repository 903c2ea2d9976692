// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The names that the file format fixes; docs/kx-format.md describes it.
#pragma once

#include <array>
#include <string>

namespace Strandel::Hdf5 {

inline constexpr const char* formatAttribute = "format";
inline constexpr const char* formatName = "kx";
inline constexpr const char* versionAttribute = "version";
inline constexpr int formatVersion = 1;
inline constexpr const char* timeAttribute = "time";

/// What is said of an object that the file names and the HDF5 library cannot read.
inline constexpr const char* unreadable = "unreadable, the file is damaged";
/// What is said of an object that the HDF5 library cannot write.
inline constexpr const char* notWritten = "cannot be written";

/// Absolute name of a member of an object.
inline std::string joined(std::string object, const std::string& name) {
  if (object != "/") object += '/';
  return object += name;
}

// Of a field: what its values are, and the stored range with the number of values that it was
// computed from.
inline constexpr const char* valueTypeAttribute = "value_type";
inline constexpr const char* minimumAttribute = "minimum";
inline constexpr const char* maximumAttribute = "maximum";
inline constexpr const char* rangeCountAttribute = "range_count";

inline constexpr std::array reservedOfRoot{formatAttribute, versionAttribute};
inline constexpr std::array reservedOfSlice{timeAttribute};
inline constexpr std::array reservedOfField{valueTypeAttribute, minimumAttribute, maximumAttribute,
                                            rangeCountAttribute};

}  // namespace Strandel::Hdf5
