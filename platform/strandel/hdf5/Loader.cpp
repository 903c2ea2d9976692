// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/Loader.h"

#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "platform/strandel/hdf5/AttributeFile.h"
#include "platform/strandel/hdf5/Format.h"
#include "platform/strandel/hdf5/StoredColumn.h"

namespace Strandel::Hdf5 {
namespace {

using FilePtr = std::shared_ptr<const StoredFile>;

[[noreturn]] void refuse(const std::string& object, const std::string& fault) {
  throw Fault(object + ": " + fault);
}

/// What lies in a group: groups and datasets by name. Soft and external links are refused: what
/// they point to could change or be missing, and would not be saved with the file.
struct Members {
  std::vector<std::string> groups;
  std::vector<std::string> datasets;
  std::vector<std::string> others;
};

std::vector<std::string> linkNames(hid_t group) {
  std::vector<std::string> names;
  const auto collect = [](hid_t, const char* name, const H5L_info_t*, void* all) -> herr_t {
    try {
      static_cast<std::vector<std::string>*>(all)->emplace_back(name);
      return 0;
    } catch (...) {
      return -1;
    }
  };
  hsize_t start = 0;
  checked(H5Literate(group, H5_INDEX_NAME, H5_ITER_NATIVE, &start, collect, &names), unreadable);
  return names;
}

Members membersOf(hid_t group, const std::string& object) {
  Members members;
  for (const auto& name : linkNames(group)) {
    H5L_info_t link{};
    H5O_info_t info{};
    if (H5Lget_info(group, name.c_str(), &link, H5P_DEFAULT) < 0)
      refuse(joined(object, name), unreadable);
    if (link.type != H5L_TYPE_HARD)
      refuse(joined(object, name), "is a soft or external link; only hard links are read");
    if (H5Oget_info_by_name2(group, name.c_str(), &info, H5O_INFO_BASIC, H5P_DEFAULT) < 0) {
      refuse(joined(object, name), unreadable + reason());
    }
    auto& kind = info.type == H5O_TYPE_GROUP     ? members.groups
                 : info.type == H5O_TYPE_DATASET ? members.datasets
                                                 : members.others;
    kind.push_back(name);
  }
  return members;
}

/// A group with its members, its attributes, and the note of where it lies that goes to the node
/// made from it.
struct OpenGroup {
  std::string object;
  Handle group;
  Members members;
  Attributes attributes;
  std::shared_ptr<StoredNode> stored;

  /// Objects that mean nothing at this place.
  void foreign(const std::vector<std::string>& names) {
    stored->foreignObjects.insert(stored->foreignObjects.end(), names.begin(), names.end());
  }
  /// Gives attributes and origin to a node.
  void handTo(Node& node) const {
    node.attributes() = attributes;
    node.setStored(stored);
  }
};

OpenGroup openGroup(const FilePtr& file, const std::string& object) {
  OpenGroup open{object, {}, {}, {}, std::make_shared<StoredNode>()};
  open.group = checked(H5Gopen2(file->id(), object.c_str(), H5P_DEFAULT), H5Gclose,
                       object + ": " + unreadable);
  open.members = membersOf(open.group.id(), object);
  try {
    auto read = readAttributes(open.group.id());
    open.attributes = std::move(read.attributes);
    *open.stored = {file, object, {}, std::move(read.foreign)};
  } catch (const Fault& fault) {
    refuse(object, fault.what());
  }
  open.foreign(open.members.others);
  return open;
}

/// Takes the format's own attributes out of those that the user sees.
template <std::size_t N>
void removeReserved(OpenGroup& open, const std::array<const char*, N>& names) {
  for (const char* name : names) {
    open.attributes.remove(name);
    std::erase(open.stored->foreignAttributes, name);
  }
}

FragmentId fragmentNamed(const std::string& name, const std::string& object) {
  FragmentId fragment;
  const auto [end, error] =
      std::from_chars(name.data(), name.data() + name.size(), fragment.number);
  if (error != std::errc() || name != std::to_string(fragment.number)) {
    refuse(object, "is not a fragment; fragments are named 0, 1, 2 and so on");
  }
  return fragment;
}

std::optional<ValueRange> storedRange(const Attributes& attributes, const Field& field) {
  const auto count = attributes.integer(rangeCountAttribute);
  if (!count || *count < 0 || static_cast<std::size_t>(*count) != field.size()) return {};
  const auto bounds = [&](const char* name) -> std::optional<std::array<double, 3>> {
    if (infoOf(field.valueType()).components == 1) {
      if (const auto value = attributes.real(name)) return std::array{*value, 0.0, 0.0};
    } else if (const auto value = attributes.point(name)) {
      return std::array{value->x, value->y, value->z};
    }
    return std::nullopt;
  };
  const auto minimum = bounds(minimumAttribute), maximum = bounds(maximumAttribute);
  if (!minimum || !maximum) return {};
  return ValueRange{*minimum, *maximum};
}

class Loader {
 public:
  explicit Loader(const std::filesystem::path& path)
      : file_(std::make_shared<const StoredFile>(path)) {}

  Bundle bundle() {
    Bundle bundle;
    OpenGroup root = openGroup(file_, "/");
    checkFormat(root.attributes);
    removeReserved(root, reservedOfRoot);
    root.foreign(root.members.datasets);
    for (const auto& name : root.members.groups) addSlice(bundle, "/" + name);
    root.handTo(bundle);
    return bundle;
  }

 private:
  static void checkFormat(const Attributes& attributes) {
    if (attributes.text(formatAttribute) != formatName) {
      throw Fault("is an HDF5 file, but not a container (its attribute \"format\" is not \"kx\")");
    }
    const auto version = attributes.integer(versionAttribute);
    if (!version) throw Fault("has no attribute \"version\"");
    if (*version != formatVersion) {
      throw Fault(fmt::format("has format version {}; this program reads version {}", *version,
                              formatVersion));
    }
  }

  void addSlice(Bundle& bundle, const std::string& object) {
    OpenGroup open = openGroup(file_, object);
    const auto time = open.attributes.real(timeAttribute);
    if (!time || !std::isfinite(*time))
      refuse(object, "has no attribute \"time\" with a finite number");
    if (bundle.slice(*time)) refuse(object, fmt::format("is a second slice of time {}", *time));
    removeReserved(open, reservedOfSlice);
    open.foreign(open.members.datasets);
    const auto slice = bundle.makeSlice(*time);
    for (const auto& name : open.members.groups) addGrid(*slice, name, joined(object, name));
    open.handTo(*slice);
  }

  void addGrid(Slice& slice, const std::string& name, const std::string& object) {
    OpenGroup open = openGroup(file_, object);
    open.foreign(open.members.datasets);
    const auto grid = slice.makeGrid(name);
    for (const auto& member : open.members.groups) {
      if (member == waveformsName) {
        addWaveforms(*grid, joined(object, member));
      } else {
        addChart(*grid, member, joined(object, member));
      }
    }
    open.handTo(*grid);
    if (const auto fault = grid->unequalLengths(); !fault.empty()) refuse(object, fault);
  }

  void addWaveforms(Grid& grid, const std::string& object) {
    OpenGroup open = openGroup(file_, object);
    open.foreign(open.members.groups);
    open.foreign(open.members.datasets);
    open.handTo(*grid.makeWaveforms());
  }

  void addChart(Grid& grid, const std::string& name, const std::string& object) {
    OpenGroup open = openGroup(file_, object);
    open.foreign(open.members.datasets);
    const auto chart = grid.makeChart(name);
    for (const auto& member : open.members.groups) addField(*chart, member, joined(object, member));
    open.handTo(*chart);
  }

  /// Two links to one group are one field.
  void addField(Chart& chart, const std::string& name, const std::string& object) {
    OpenGroup open = openGroup(file_, object);
    H5O_info_t info{};
    if (H5Oget_info2(open.group.id(), &info, H5O_INFO_BASIC) < 0) refuse(object, unreadable);
    auto& known = fields_[info.addr];
    if (!known) known = readField(name, open);
    if (known->name() != name)
      refuse(object, "is the same field as " + known->name() + " under another name");
    chart.shareField(known);
  }

  FieldPtr readField(const std::string& name, OpenGroup& open) const {
    const auto typeName = open.attributes.text(valueTypeAttribute);
    const auto type = valueTypeNamed(typeName.value_or(""));
    if (!typeName) refuse(open.object, "has no attribute \"value_type\"");
    if (!type) refuse(open.object, "has the unknown value type \"" + *typeName + "\"");
    auto field = std::make_shared<Field>(name, *type);
    for (const auto& member : open.members.datasets)
      addFragment(*field, member, joined(open.object, member));
    field->setStoredRange(storedRange(open.attributes, *field));
    removeReserved(open, reservedOfField);
    open.foreign(open.members.groups);
    open.handTo(*field);
    return field;
  }

  void addFragment(Field& field, const std::string& name, const std::string& object) const {
    const FragmentId fragment = fragmentNamed(name, object);
    try {
      field.addStoredChunk(fragment, openColumn(file_, object, field.valueType()));
    } catch (const Fault& fault) {
      refuse(object, fault.what());
    }
  }

  FilePtr file_;
  std::map<haddr_t, FieldPtr> fields_;
};

}  // namespace

Bundle loadBundle(const std::filesystem::path& path) {
  const Session session;
  return Loader(path).bundle();
}

}  // namespace Strandel::Hdf5
