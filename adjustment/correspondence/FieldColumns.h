// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Values of fields as arrays of one's own.
#pragma once

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "platform/strandel/Bundle.h"

namespace Velorn {

/// The field of that name and type; one of another type holds something else.
inline Strandel::FieldPtr fieldOf(const Strandel::ChartPtr& chart, const char* name,
                                  Strandel::ValueType type) {
  const auto field = chart ? chart->field(name) : nullptr;
  return field && field->valueType() == type ? field : nullptr;
}

/// Values that nobody else holds, or why there are none.
template <Strandel::Value T>
struct OwnColumn {
  std::shared_ptr<std::vector<T>> values;  ///< empty pointer exactly when `error` is not empty
  std::string error;
};

/// The values of one fragment; copied only when they are the field's own, in memory.
template <Strandel::Value T>
OwnColumn<T> ownValues(const Strandel::Field& field, Strandel::FragmentId fragment) {
  auto read = field.values<T>(fragment);
  if (!read) return {{}, read.error};
  if (read.values.use_count() > 1) return {std::make_shared<std::vector<T>>(*read.values), {}};
  // Just read from the file, into a vector that was made without const.
  return {std::const_pointer_cast<std::vector<T>>(std::move(read.values)), {}};
}

/// Those that hold data, in ascending number.
inline std::vector<Strandel::FragmentId> fragmentsWithChunk(const Strandel::Field& field) {
  auto fragments = field.fragments();
  std::erase_if(fragments, [&](auto fragment) { return !field.hasChunk(fragment); });
  return fragments;
}

/// The values of all fragments that hold data, one after the other in ascending number.
template <Strandel::Value T>
OwnColumn<T> allValues(const Strandel::Field& field) {
  try {
    OwnColumn<T> all{std::make_shared<std::vector<T>>(), {}};
    for (const auto fragment : fragmentsWithChunk(field)) {
      auto piece = ownValues<T>(field, fragment);
      if (!piece.values || piece.values->size() == field.size()) return piece;
      all.values->reserve(field.size());
      all.values->insert(all.values->end(), piece.values->begin(), piece.values->end());
    }
    return all;
  } catch (const std::bad_alloc&) {
    return {{}, field.name() + ": not enough memory"};
  }
}

/// Takes one step after the other up to the first that returns a fault.
template <typename... Steps>
std::string firstFault(const Steps&... steps) {
  std::string fault;
  static_cast<void>(((fault = steps()).empty() && ...));
  return fault;
}

}  // namespace Velorn
