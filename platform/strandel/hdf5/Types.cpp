// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/Types.h"

#include <bit>

namespace Strandel::Hdf5 {

static_assert(std::endian::native == std::endian::little);

hid_t componentType(ValueType type) {
  switch (type) {
    case ValueType::Double:
    case ValueType::Point:
    case ValueType::Vector:
      return H5T_IEEE_F64LE;
    case ValueType::UInt8:
      return H5T_STD_U8LE;
    case ValueType::UInt16:
      return H5T_STD_U16LE;
    case ValueType::UInt32:
      return H5T_STD_U32LE;
    case ValueType::UInt64:
      return H5T_STD_U64LE;
    case ValueType::Int8:
      return H5T_STD_I8LE;
    case ValueType::Int16:
      return H5T_STD_I16LE;
    case ValueType::Int32:
      return H5T_STD_I32LE;
    case ValueType::Int64:
      return H5T_STD_I64LE;
  }
  throw Fault("unknown value type");
}

bool holdsComponents(hid_t type, ValueType wanted) {
  const auto& info = infoOf(wanted);
  if (H5Tget_size(type) != info.bytes) return false;
  if (info.floating) {
    const Handle bigEndian(H5Tcopy(H5T_IEEE_F64BE), H5Tclose);
    return H5Tequal(type, H5T_IEEE_F64LE) > 0 || H5Tequal(type, bigEndian.id()) > 0;
  }
  // Padded integers (a precision below the size) would not be what their size says.
  return H5Tget_class(type) == H5T_INTEGER && H5Tget_precision(type) == 8 * info.bytes &&
         H5Tget_sign(type) == (info.isSigned ? H5T_SGN_2 : H5T_SGN_NONE);
}

std::string describe(hid_t type) {
  const std::string bits = std::to_string(8 * H5Tget_size(type)) + "-bit ";
  switch (H5Tget_class(type)) {
    case H5T_FLOAT:
      return bits + "float";
    case H5T_INTEGER:
      return (H5Tget_sign(type) == H5T_SGN_NONE ? "unsigned " : "signed ") + bits + "integer";
    case H5T_STRING:
      return "text";
    case H5T_COMPOUND:
      return "compound values";
    case H5T_ENUM:
      return "enumerated values";
    case H5T_ARRAY:
      return "arrays";
    case H5T_VLEN:
      return "lists";
    default:
      return "another type";
  }
}

}  // namespace Strandel::Hdf5
