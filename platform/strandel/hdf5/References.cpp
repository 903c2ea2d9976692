// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/References.h"

#include <fmt/format.h>

#include "platform/strandel/hdf5/Format.h"

namespace Strandel::Hdf5 {
namespace {

bool holdsReferences(hid_t type) {
  return checked(H5Tdetect_class(type, H5T_REFERENCE), unreadable) > 0;
}

bool attributeHoldsReferences(hid_t object, const char* name) {
  const Handle attribute = checked(H5Aopen(object, name, H5P_DEFAULT), H5Aclose, unreadable);
  return holdsReferences(checked(H5Aget_type(attribute.id()), H5Tclose, unreadable).id());
}

bool valuesHoldReferences(hid_t group, const char* name) {
  const Handle dataset = checked(H5Dopen2(group, name, H5P_DEFAULT), H5Dclose, unreadable);
  return holdsReferences(checked(H5Dget_type(dataset.id()), H5Tclose, unreadable).id());
}

/// What a visit of the library's finds; no exception may pass through its C code.
struct Finding {
  std::string where;
  std::string fault;
};

template <typename Action>
herr_t guarded(void* finding, const Action& action) {
  auto& found = *static_cast<Finding*>(finding);
  try {
    action(found);
    return found.where.empty() ? 0 : 1;
  } catch (const std::exception& fault) {
    found.fault = fault.what();
    return -1;
  }
}

herr_t visitAttribute(hid_t object, const char* name, const H5A_info_t*, void* finding) {
  return guarded(finding, [&](Finding& found) {
    if (attributeHoldsReferences(object, name)) found.where = fmt::format("attribute {}", name);
  });
}

herr_t visitObject(hid_t start, const char* name, const H5O_info_t* info, void* finding) {
  return guarded(finding, [&](Finding& found) {
    if (info->type == H5O_TYPE_DATASET && valuesHoldReferences(start, name)) found.where = "values";
    hsize_t first = 0;
    H5Aiterate_by_name(start, name, H5_INDEX_NAME, H5_ITER_NATIVE, &first, visitAttribute, finding,
                       H5P_DEFAULT);
  });
}

[[noreturn]] void refuse(const std::string& where) {
  throw Fault(where + ": refers to other places of the file, which cannot be kept in a copy");
}

}  // namespace

void refuseReferences(hid_t object, const std::string& attribute) {
  if (attributeHoldsReferences(object, attribute.c_str())) refuse("attribute " + attribute);
}

void refuseReferencesBelow(hid_t group, const std::string& name) {
  Finding found;
  const herr_t status = H5Ovisit_by_name2(group, name.c_str(), H5_INDEX_NAME, H5_ITER_NATIVE,
                                          visitObject, &found, H5O_INFO_BASIC, H5P_DEFAULT);
  if (!found.where.empty()) refuse(name + ": " + found.where);
  if (!found.fault.empty()) throw Fault(name + ": " + found.fault);
  checked(status, name + ": " + unreadable);
}

}  // namespace Strandel::Hdf5
