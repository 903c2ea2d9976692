// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/Field.h"

#include <new>

#include <fmt/format.h>

#include "platform/strandel/ColumnSource.h"
#include "platform/strandel/RangeOfRows.h"

namespace Strandel {

std::vector<FragmentId> Field::fragments() const {
  std::vector<FragmentId> known;
  known.reserve(chunks_.size());
  for (const auto& [fragment, source] : chunks_) known.push_back(fragment);
  return known;
}

const ColumnSource* Field::chunk(FragmentId fragment) const {
  const auto found = chunks_.find(fragment);
  return found == chunks_.end() ? nullptr : found->second.get();
}

std::size_t Field::size(FragmentId fragment) const {
  const auto* source = chunk(fragment);
  return source ? source->rows() : 0;
}

std::size_t Field::size() const {
  std::size_t rows = 0;
  for (const auto& [fragment, source] : chunks_) rows += source ? source->rows() : 0;
  return rows;
}

std::string Field::faultOf(FragmentId fragment, ValueType asked) const {
  const auto refused = [&](const std::string& fault) {
    return fmt::format("Strandel::Field::values: {}: fragment {}: {}", name(), fragment.number,
                       fault);
  };
  if (asked != type_) {
    return refused(fmt::format("holds {}, not {}", infoOf(type_).name, infoOf(asked).name));
  }
  if (!chunks_.contains(fragment)) return refused("missing");
  if (!hasChunk(fragment)) return refused("its chunk is absent");
  return {};
}

std::string Field::readRows(FragmentId fragment, std::size_t first, std::size_t count,
                            void* rows) const {
  return chunk(fragment)->read(first, count, rows);
}

template <Value T>
Read<T> Field::values(FragmentId fragment, std::size_t first, std::size_t count) const {
  if (auto fault = faultOf(fragment, valueTypeOf<T>()); !fault.empty()) return {{}, fault};
  const auto& source = chunks_.at(fragment);
  if (first > source->rows() || count > source->rows() - first) {
    return {
        {},
        fmt::format("Strandel::Field::values: {}: rows {} and {} more reach beyond its {} values",
                    name(), first, count, source->rows())};
  }
  if (const auto memory = std::dynamic_pointer_cast<const MemoryColumn<T>>(source);
      memory && count == source->rows()) {
    return {memory->values(), {}};
  }
  if (auto fault = source->check(first, count); !fault.empty()) return {{}, fault};
  try {
    auto rows = std::make_shared<std::vector<T>>(count);
    if (auto fault = source->read(first, count, rows->data()); !fault.empty()) return {{}, fault};
    return {std::move(rows), {}};
  } catch (const std::bad_alloc&) {
    return {
        {},
        fmt::format("Strandel::Field::values: {}: not enough memory for {} values", name(), count)};
  }
}

template <Value T>
std::string Field::setValues(FragmentId fragment, std::shared_ptr<const std::vector<T>> values) {
  if (valueTypeOf<T>() != type_) {
    return fmt::format("Strandel::Field::setValues: {} holds {}, not {}", name(),
                       infoOf(type_).name, infoOf(valueTypeOf<T>()).name);
  }
  if (!values) return fmt::format("Strandel::Field::setValues: {}: no array given", name());
  chunks_[fragment] = std::make_shared<const MemoryColumn<T>>(std::move(values));
  storedRange_.reset();
  touch();
  return {};
}

void Field::setAbsent(FragmentId fragment) {
  chunks_[fragment] = nullptr;
  storedRange_.reset();
  touch();
}

void Field::addStoredChunk(FragmentId fragment, std::shared_ptr<const ColumnSource> source) {
  chunks_[fragment] = std::move(source);
}

RangeRead Field::range() const {
  if (storedRange_) return {storedRange_, {}};
  try {
    RangeOfRows range(type_);
    for (const auto& [fragment, source] : chunks_) {
      if (!source) continue;
      if (auto fault = range.add(*source); !fault.empty()) return {{}, fault};
    }
    return {range.result(), {}};
  } catch (const std::bad_alloc&) {
    return {{}, fmt::format("Strandel::Field::range: {}: not enough memory", name())};
  }
}

// NOLINTBEGIN(bugprone-macro-parentheses): T is a type
#define VELORN_FIELD_OF(T)                                                       \
  template Read<T> Field::values<T>(FragmentId, std::size_t, std::size_t) const; \
  template std::string Field::setValues<T>(FragmentId, std::shared_ptr<const std::vector<T>>)
VELORN_FIELD_OF(double);
VELORN_FIELD_OF(Geomra::PhysicalSpace::point);
VELORN_FIELD_OF(Geomra::PhysicalSpace::vector);
VELORN_FIELD_OF(std::uint8_t);
VELORN_FIELD_OF(std::uint16_t);
VELORN_FIELD_OF(std::uint32_t);
VELORN_FIELD_OF(std::uint64_t);
VELORN_FIELD_OF(std::int8_t);
VELORN_FIELD_OF(std::int16_t);
VELORN_FIELD_OF(std::int32_t);
VELORN_FIELD_OF(std::int64_t);
// NOLINTEND(bugprone-macro-parentheses)
#undef VELORN_FIELD_OF

}  // namespace Strandel
