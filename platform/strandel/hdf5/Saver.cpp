// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/Saver.h"

#include <algorithm>

#include <fmt/format.h>

#include "platform/plome/SystemFault.h"
#include "platform/strandel/hdf5/AttributeFile.h"
#include "platform/strandel/hdf5/Format.h"
#include "platform/strandel/hdf5/References.h"
#include "platform/strandel/hdf5/StoredColumn.h"

namespace Strandel::Hdf5 {
namespace {

template <typename Names>
void checkReserved(const Attributes& attributes, const Names& reserved) {
  for (const char* name : reserved) {
    if (attributes.holds(name))
      throw Fault(fmt::format("the attribute name \"{}\" is the format's own", name));
  }
}

void checkName(const std::string& name) {
  if (name.empty() || name == "." || name.find('/') != std::string::npos ||
      name.find('\0') != std::string::npos) {
    throw Fault(fmt::format("\"{}\" cannot be a name in a container file", name));
  }
}

/// What was in the file that a node came from and that a bundle cannot represent stays with it.
void copyForeign(const Node& node, hid_t group) {
  const auto& stored = node.stored();
  if (!stored) return;
  const Handle from = checked(H5Oopen(stored->file->id(), stored->object.c_str(), H5P_DEFAULT),
                              H5Oclose, notWritten);
  for (const auto& name : stored->foreignAttributes) {
    if (!node.attributes().holds(name)) copyAttribute(from.id(), group, name);
  }
  for (const auto& name : stored->foreignObjects) {
    if (H5Lexists(group, name.c_str(), H5P_DEFAULT) > 0) {
      throw Fault(fmt::format("\"{}\" is the name of something else that lies here", name));
    }
    refuseReferencesBelow(from.id(), name);
    checked(H5Ocopy(from.id(), name.c_str(), group, name.c_str(), H5P_DEFAULT, H5P_DEFAULT),
            name + ": cannot be copied from " + stored->file->path().string());
  }
}

void writeRange(hid_t group, const Field& field, const std::optional<ValueRange>& range) {
  if (!range) return;
  const auto write = [&](const char* name, const std::array<double, 3>& bound) {
    if (infoOf(field.valueType()).components == 1) {
      writeAttribute(group, name, bound[0]);
    } else {
      writeAttribute(group, name, Geomra::PhysicalSpace::point{bound[0], bound[1], bound[2]});
    }
  };
  write(minimumAttribute, range->minimum);
  write(maximumAttribute, range->maximum);
  writeAttribute(group, rangeCountAttribute, static_cast<std::int64_t>(field.size()));
}

bool isForeign(const Bundle& bundle, const std::string& name) {
  if (!bundle.stored()) return false;
  const auto& names = bundle.stored()->foreignObjects;
  return std::find(names.begin(), names.end(), name) != names.end();
}

class Saver {
 public:
  explicit Saver(const ColumnStyle& style) : style_(style) {}

  void save(const Bundle& bundle, const std::filesystem::path& path) {
    try {
      create(path);
      write(bundle);
    } catch (const Fault&) {
      throwSystemError();  // the real reason, when the disk is full
      throw;
    }
    if (!file_.reset()) throw Fault("cannot be closed" + reason());
    throwSystemError();
  }

 private:
  void create(const std::filesystem::path& path) {
    const Handle access = accessForWriting(state_);
    const Handle creation = checked(H5Pcreate(H5P_FILE_CREATE), H5Pclose, notWritten);
    setCommonProperties(creation.id());
    groupCreation_ = checked(H5Pcreate(H5P_GROUP_CREATE), H5Pclose, notWritten);
    setCommonProperties(groupCreation_.id());
    file_ = checked(H5Fcreate(path.c_str(), H5F_ACC_EXCL, creation.id(), access.id()), H5Fclose,
                    notWritten);
  }

  void write(const Bundle& bundle) {
    const Handle root = checked(H5Gopen2(file_.id(), "/", H5P_DEFAULT), H5Gclose, notWritten);
    writeAttribute(root.id(), formatAttribute, std::string(formatName));
    writeAttribute(root.id(), versionAttribute, std::int64_t{formatVersion});
    named("/", [&] { writeNode(root.id(), bundle, reservedOfRoot); });
    int number = 0;
    for (const auto& slice : bundle.slices()) {
      while (isForeign(bundle, std::to_string(number))) ++number;
      writeSlice(root.id(), *slice, std::to_string(number++));
    }
    named("/", [&] { copyForeign(bundle, root.id()); });
  }

  void writeSlice(hid_t root, const Slice& slice, const std::string& name) {
    named("/" + name, [&] {
      const Handle group = makeGroup(root, name);
      writeNode(group.id(), slice, reservedOfSlice);
      writeAttribute(group.id(), timeAttribute, slice.time());
      for (const auto& [gridName, grid] : slice.grids())
        writeGrid(group.id(), *grid, joined("/" + name, gridName));
      copyForeign(slice, group.id());
    });
  }

  void writeGrid(hid_t slice, const Grid& grid, const std::string& object) {
    named(object, [&] {
      if (const auto fault = grid.unequalLengths(); !fault.empty()) throw Fault(fault);
      if (grid.chart(waveformsName)) {
        throw Fault(fmt::format("a chart cannot be named \"{}\"", waveformsName));
      }
      const Handle group = makeGroup(slice, grid.name());
      writeNode(group.id(), grid, none);
      for (const auto& [name, chart] : grid.charts())
        writeChart(group.id(), *chart, joined(object, name));
      if (grid.waveforms()) {
        const Handle waveforms = makeGroup(group.id(), waveformsName);
        writeNode(waveforms.id(), *grid.waveforms(), none);
        copyForeign(*grid.waveforms(), waveforms.id());
      }
      copyForeign(grid, group.id());
    });
  }

  void writeChart(hid_t grid, const Chart& chart, const std::string& object) {
    named(object, [&] {
      const Handle group = makeGroup(grid, chart.name());
      writeNode(group.id(), chart, none);
      for (const auto& [name, field] : chart.fields())
        linkOrWriteField(group.id(), field, joined(object, name));
      copyForeign(chart, group.id());
    });
  }

  /// A field that several charts share is written once and linked.
  void linkOrWriteField(hid_t chart, const FieldPtr& field, const std::string& object) {
    named(object, [&] {
      const auto [place, isNew] = written_.try_emplace(field.get(), object);
      if (isNew) return writeField(chart, *field);
      checkName(field->name());
      checked(H5Lcreate_hard(file_.id(), place->second.c_str(), chart, field->name().c_str(),
                             H5P_DEFAULT, H5P_DEFAULT),
              notWritten);
    });
  }

  void writeField(hid_t chart, const Field& field) {
    const Handle group = makeGroup(chart, field.name());
    writeNode(group.id(), field, reservedOfField);
    writeAttribute(group.id(), valueTypeAttribute, std::string(infoOf(field.valueType()).name));
    RangeOfRows range(field.valueType());
    bool copied = false;
    for (const auto fragment : field.fragments()) {
      copied |= writeFragment(group.id(), field, fragment, range);
      if (state_.error != 0) throw Fault(notWritten);
    }
    // The range of copied values is known only if it was stored and nothing else was written.
    writeRange(group.id(), field, copied ? field.storedRange() : range.result());
    copyForeign(field, group.id());
  }

  /// @return whether the values were copied as they lie in their file, without being decoded
  bool writeFragment(hid_t group, const Field& field, FragmentId fragment, RangeOfRows& range) {
    const std::string name = std::to_string(fragment.number);
    const auto* column = field.chunk(fragment);
    const auto* stored = dynamic_cast<const StoredColumn*>(column);
    const bool copied = stored && stored->copyChunks(group, name);
    if (!copied) writeColumn(group, name, field.valueType(), column, style_, state_, range);
    if (stored) stored->copyAttributesTo(group, name);
    return copied;
  }

  Handle makeGroup(hid_t parent, const std::string& name) const {
    checkName(name);
    return checked(H5Gcreate2(parent, name.c_str(), H5P_DEFAULT, groupCreation_.id(), H5P_DEFAULT),
                   H5Gclose, notWritten);
  }

  template <typename Names>
  static void writeNode(hid_t group, const Node& node, const Names& reserved) {
    checkReserved(node.attributes(), reserved);
    writeAttributes(group, node.attributes());
  }

  /// Puts the object's name before a fault, once.
  template <typename Action>
  void named(const std::string& object, const Action& action) {
    try {
      action();
    } catch (const Fault& fault) {
      if (faultIsNamed_) throw;
      faultIsNamed_ = true;
      throw Fault(object + ": " + fault.what());
    }
  }

  void throwSystemError() const {
    if (state_.error != 0) throw Fault(Plome::systemFault(state_.error));
  }

  static constexpr std::array<const char*, 0> none{};

  // The state outlives the file, which is closed first.
  WriteState state_;
  ColumnStyle style_;
  Handle file_;
  Handle groupCreation_;
  std::map<const Field*, std::string> written_;
  bool faultIsNamed_ = false;
};

}  // namespace

void saveBundle(const Bundle& bundle, const std::filesystem::path& path, const ColumnStyle& style) {
  const Session session;
  Saver(style).save(bundle, path);
}

}  // namespace Strandel::Hdf5
