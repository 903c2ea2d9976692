// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/AttributeFile.h"

#include <limits>
#include <optional>

#include <fmt/format.h>

#include "platform/strandel/hdf5/References.h"

namespace Strandel::Hdf5 {
namespace {

using Geomra::PhysicalSpace::point;

/// Iterates with an exception-free callback: no exception may pass through the library's C code.
std::vector<std::string> attributeNames(hid_t object) {
  std::vector<std::string> names;
  const auto collect = [](hid_t, const char* name, const H5A_info_t*, void* all) -> herr_t {
    try {
      static_cast<std::vector<std::string>*>(all)->emplace_back(name);
      return 0;
    } catch (...) {
      return -1;
    }
  };
  checked(H5Aiterate2(object, H5_INDEX_NAME, H5_ITER_NATIVE, nullptr, collect, &names),
          "its attributes are unreadable, the file is damaged");
  return names;
}

struct OpenAttribute {
  std::string name;
  Handle attribute;
  Handle type;
  Handle space;

  std::string fault() const { return "attribute " + name + ": unreadable, the file is damaged"; }
};

OpenAttribute opened(hid_t object, const std::string& name) {
  const std::string fault = "attribute " + name + ": unreadable, the file is damaged";
  OpenAttribute open{
      name, checked(H5Aopen(object, name.c_str(), H5P_DEFAULT), H5Aclose, fault), {}, {}};
  open.type = checked(H5Aget_type(open.attribute.id()), H5Tclose, fault);
  open.space = checked(H5Aget_space(open.attribute.id()), H5Sclose, fault);
  return open;
}

template <typename T>
T readAs(const OpenAttribute& open, hid_t memoryType) {
  T value{};
  checked(H5Aread(open.attribute.id(), memoryType, &value), open.fault());
  return value;
}

std::optional<Attribute> readInteger(const OpenAttribute& open) {
  if (H5Tget_sign(open.type.id()) == H5T_SGN_NONE) {
    const auto value = readAs<std::uint64_t>(open, H5T_NATIVE_UINT64);
    if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return {};
    return static_cast<std::int64_t>(value);
  }
  return readAs<std::int64_t>(open, H5T_NATIVE_INT64);
}

std::string readFixedText(const OpenAttribute& open) {
  std::string text(H5Tget_size(open.type.id()), '\0');
  checked(H5Aread(open.attribute.id(), open.type.id(), text.data()), open.fault());
  text.resize(std::min(text.find('\0'), text.size()));
  return text;
}

std::string readVariableText(const OpenAttribute& open) {
  char* stored = nullptr;
  checked(H5Aread(open.attribute.id(), open.type.id(), static_cast<void*>(&stored)), open.fault());
  std::string text = stored ? stored : "";
  H5free_memory(stored);
  return text;
}

/// @return nothing for a type that this platform cannot represent
std::optional<Attribute> readAttribute(const OpenAttribute& open) {
  const H5T_class_t kind = H5Tget_class(open.type.id());
  const H5S_class_t shape = H5Sget_simple_extent_type(open.space.id());
  const bool fits = H5Tget_size(open.type.id()) <= 8;
  if (shape == H5S_SIMPLE && kind == H5T_FLOAT && fits) {
    const int rank = H5Sget_simple_extent_ndims(open.space.id());
    if (rank != 1 || H5Sget_simple_extent_npoints(open.space.id()) != 3) return {};
    return readAs<point>(open, H5T_NATIVE_DOUBLE);
  }
  if (shape != H5S_SCALAR) return {};
  if (kind == H5T_INTEGER && fits) return readInteger(open);
  if (kind == H5T_FLOAT && fits) return readAs<double>(open, H5T_NATIVE_DOUBLE);
  if (kind == H5T_STRING) {
    return H5Tis_variable_str(open.type.id()) > 0 ? readVariableText(open) : readFixedText(open);
  }
  return {};
}

void write(hid_t object, const std::string& name, hid_t type, hid_t space, const void* value) {
  const std::string fault = "attribute " + name + ": cannot be written";
  const Handle attribute = checked(
      H5Acreate2(object, name.c_str(), type, space, H5P_DEFAULT, H5P_DEFAULT), H5Aclose, fault);
  checked(H5Awrite(attribute.id(), type, value), fault);
}

/// What a header with a checksum can hold besides the attribute's name.
constexpr std::size_t longestText = 60000;
constexpr std::size_t longestName = 4000;

struct Writer {
  hid_t object;
  const std::string& name;
  Handle scalar = checked(H5Screate(H5S_SCALAR), H5Sclose, "no memory for an attribute");

  void operator()(std::int64_t value) const {
    write(object, name, H5T_STD_I64LE, scalar.id(), &value);
  }
  void operator()(double value) const { write(object, name, H5T_IEEE_F64LE, scalar.id(), &value); }
  void operator()(const std::string& value) const {
    if (value.find('\0') != std::string::npos) {
      throw Fault("attribute " + name + ": a text with a zero byte cannot be written");
    }
    if (value.size() > longestText) {
      throw Fault(fmt::format("attribute {}: a text of {} bytes; {} fit into an attribute", name,
                              value.size(), longestText));
    }
    // Fixed length: texts of variable length lie in a heap without checksums.
    const Handle type = checked(H5Tcopy(H5T_C_S1), H5Tclose, "no memory for an attribute");
    checked(H5Tset_size(type.id(), std::max<std::size_t>(value.size(), 1)),
            "attribute " + name + ": too long");
    H5Tset_cset(type.id(), H5T_CSET_UTF8);
    H5Tset_strpad(type.id(), H5T_STR_NULLPAD);
    write(object, name, type.id(), scalar.id(), value.c_str());
  }
  void operator()(const point& value) const {
    const hsize_t three = 3;
    const Handle space =
        checked(H5Screate_simple(1, &three, nullptr), H5Sclose, "no memory for an attribute");
    write(object, name, H5T_IEEE_F64LE, space.id(), &value);
  }
};

}  // namespace

AttributesRead readAttributes(hid_t object) {
  AttributesRead read;
  for (const auto& name : attributeNames(object)) {
    if (auto value = readAttribute(opened(object, name))) {
      read.attributes.set(name, std::move(*value));
    } else {
      read.foreign.push_back(name);
    }
  }
  return read;
}

void writeAttribute(hid_t object, const std::string& name, const Attribute& value) {
  if (name.empty() || name.size() > longestName || name.find('\0') != std::string::npos) {
    throw Fault(fmt::format("\"{}\" cannot be the name of an attribute", name));
  }
  std::visit(Writer{object, name}, value);
}

void writeAttributes(hid_t object, const Attributes& attributes) {
  for (const auto& [name, value] : attributes.all()) writeAttribute(object, name, value);
}

void copyAttribute(hid_t from, hid_t to, const std::string& name) {
  refuseReferences(from, name);
  const OpenAttribute open = opened(from, name);
  const auto count = checked(H5Sget_simple_extent_npoints(open.space.id()), open.fault());
  std::vector<char> bytes(static_cast<std::size_t>(count) * H5Tget_size(open.type.id()) + 1);
  checked(H5Aread(open.attribute.id(), open.type.id(), bytes.data()), open.fault());
  write(to, name, open.type.id(), open.space.id(), bytes.data());
  H5Dvlen_reclaim(open.type.id(), open.space.id(), H5P_DEFAULT, bytes.data());
}

void copyAttributes(hid_t from, hid_t to) {
  for (const auto& name : attributeNames(from)) copyAttribute(from, to, name);
}

void setCommonProperties(hid_t creation) {
  checked(H5Pset_obj_track_times(creation, false), "cannot prepare the HDF5 library");
  checked(H5Pset_attr_phase_change(creation, 65535, 0), "cannot prepare the HDF5 library");
}

}  // namespace Strandel::Hdf5
