// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Containers that other programs wrote. Whole HDF5 files with sound checksums, but with any
// objects, types, shapes, filters and links at any place: the bytes of an input are the choices of
// a writer.
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>
#include <hdf5.h>

#include "flight/strips/GridFile.h"
#include "platform/morvane/Console.h"
#include "tests/fuzz/ContainerRead.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/Trajectory.h>

using namespace Velorn::Flights;

namespace {

constexpr const char* chart = "/0/g/StandardCartesianChart3D";

/// Writes what the choices say; the HDF5 library refuses what cannot be, which is then left out.
class ForeignWriter {
 public:
  ForeignWriter(const std::filesystem::path& path, FuzzedDataProvider& choices)
      : choices_(choices), access_(H5Pcreate(H5P_FILE_ACCESS)), links_(H5Pcreate(H5P_LINK_CREATE)) {
    if (choices_.ConsumeBool()) H5Pset_libver_bounds(access_, H5F_LIBVER_V110, H5F_LIBVER_V110);
    H5Pset_create_intermediate_group(links_, 1);
    file_ = H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, access_);
  }
  ~ForeignWriter() {
    H5Pclose(links_);
    H5Pclose(access_);
    H5Fclose(file_);
  }
  ForeignWriter(const ForeignWriter&) = delete;
  ForeignWriter& operator=(const ForeignWriter&) = delete;

  void writeAll() {
    writeTrajectory();
    for (int i = 0; i < 24 && choices_.remaining_bytes() > 0; ++i) writeOne();
  }

 private:
  /// A trajectory of three records. Without most of it nothing behind would be looked at.
  void writeTrajectory() {
    writeText("/", "format", "kx");
    writeNumber("/", "version", 1);
    makeGroup(chart);
    writeNumber("/0", "time", 0);
    writeNumber(chart, "EPSG_SPATIAL", 32632);
    writeNumber(chart, "EPSG_HEIGHT", 4979);
    writeNumber(chart, "WeekNumber", 2318);
    const hsize_t three = 3;
    const hid_t point = H5Screate_simple(1, &three, nullptr);
    for (const char* name : {"LeverArm", "Misalignment"}) {
      write(chart, name, H5T_IEEE_F64LE, point, std::array{0.1, 0.2, 0.3}.data());
    }
    H5Sclose(point);
    writeField("Positions", "point", 3);
    for (const char* name : {"GPSTime", "Roll", "Pitch", "Yaw"}) writeField(name, "double", 1);
  }

  void writeField(const std::string& name, const char* type, hsize_t components) {
    const std::string field = std::string(chart) + "/" + name;
    makeGroup(field);
    writeText(field, "value_type", type);
    const std::array<double, 9> values{10, 20, 30, 11, 21, 31, 12, 22, 32};
    const std::array<hsize_t, 2> sizes{3, components};
    const hid_t extents = H5Screate_simple(components == 1 ? 1 : 2, sizes.data(), nullptr);
    const hid_t dataset = H5Dcreate2(file_, (field + "/0").c_str(), H5T_IEEE_F64LE, extents, links_,
                                     H5P_DEFAULT, H5P_DEFAULT);
    H5Dwrite(dataset, H5T_IEEE_F64LE, H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data());
    H5Dclose(dataset);
    H5Sclose(extents);
  }

  void writeOne() {
    switch (choices_.ConsumeIntegralInRange(0, 6)) {
      case 0:
        return makeGroup(place());
      case 1:
      case 2:
        return writeDataset();
      case 3:
      case 4:
        return writeAttribute();
      case 5:
        return link();
      default:
        H5Ldelete(file_, place().c_str(), H5P_DEFAULT);
    }
  }

  std::string place() {
    static constexpr std::array places{"/0",
                                       "/0/g",
                                       "/0/g/StandardCartesianChart3D",
                                       "/0/g/StandardCartesianChart3D/Positions",
                                       "/0/g/StandardCartesianChart3D/GPSTime",
                                       "/0/g/StandardCartesianChart3D/Yaw",
                                       "/0/g/StandardCartesianChart3D/Classification",
                                       "/0/g/ScannerCoordinateSystem",
                                       "/0/g/Waveforms",
                                       "/0/h",
                                       "/1",
                                       ""};
    static constexpr std::array members{"",         "/0",         "/1", "/7",          "/007",
                                        "/-1",      "/Positions", "/g", "/4294967296", "/double",
                                        "/GPSTime", "/ "};
    return std::string(choices_.PickValueInArray(places)) + choices_.PickValueInArray(members);
  }

  void makeGroup(const std::string& name) const {
    H5Gclose(H5Gcreate2(file_, name.c_str(), links_, H5P_DEFAULT, H5P_DEFAULT));
  }

  void link() {
    const std::string from = place(), to = place();
    switch (choices_.ConsumeIntegralInRange(0, 2)) {
      case 0:
        H5Lcreate_hard(file_, from.c_str(), file_, to.c_str(), links_, H5P_DEFAULT);
        return;
      case 1:
        H5Lcreate_soft(from.c_str(), file_, to.c_str(), links_, H5P_DEFAULT);
        return;
      default:
        H5Lcreate_external("no_such.kx", from.c_str(), file_, to.c_str(), links_, H5P_DEFAULT);
    }
  }

  /// A type; the caller closes it.
  hid_t type() {
    const std::array known{H5T_IEEE_F64LE, H5T_IEEE_F64BE, H5T_IEEE_F32LE, H5T_STD_U8LE,
                           H5T_STD_I64LE,  H5T_STD_I64BE,  H5T_STD_U16LE,  H5T_STD_B32LE,
                           H5T_C_S1,       H5T_STD_REF_OBJ};
    const hid_t chosen = H5Tcopy(choices_.PickValueInArray(known));
    switch (choices_.ConsumeIntegralInRange(0, 9)) {
      case 0:
        return replaced(chosen, H5Tvlen_create(chosen));
      case 1:
        return replaced(chosen, H5Tenum_create(chosen));
      case 2: {
        const hsize_t three = 3;
        return replaced(chosen, H5Tarray_create2(chosen, 1, &three));
      }
      case 3:
        H5Tset_size(chosen, choices_.ConsumeIntegralInRange<std::size_t>(1, 40));
        break;
      case 4:
        H5Tset_size(chosen, H5T_VARIABLE);  // of texts
        break;
      case 5:
        H5Tset_precision(chosen, choices_.ConsumeIntegralInRange<std::size_t>(1, 64));
        break;
      default:
        break;
    }
    return chosen;
  }

  static hid_t replaced(hid_t old, hid_t made) {
    if (made < 0) return old;
    H5Tclose(old);
    return made;
  }

  /// The number of values along an axis: mostly small, sometimes more than any file holds.
  hsize_t extent() {
    const hsize_t huge = hsize_t{1} << choices_.ConsumeIntegralInRange(20, 62);
    return choices_.ConsumeIntegralInRange(0, 15) == 0
               ? huge
               : choices_.ConsumeIntegralInRange<hsize_t>(0, 9);
  }

  hid_t space(std::vector<hsize_t>& sizes) {
    const int rank = choices_.ConsumeIntegralInRange(-2, 3);
    if (rank == -2) return H5Screate(H5S_NULL);
    if (rank == -1) return H5Screate(H5S_SCALAR);
    for (int i = 0; i < rank; ++i) sizes.push_back(i == 1 && choices_.ConsumeBool() ? 3 : extent());
    return H5Screate_simple(rank, sizes.data(), nullptr);
  }

  /// @return how the values of a dataset lie; the caller closes it
  hid_t layout(const std::vector<hsize_t>& sizes) {
    const hid_t properties = H5Pcreate(H5P_DATASET_CREATE);
    const int kind = choices_.ConsumeIntegralInRange(0, 5);
    if (kind == 0) H5Pset_layout(properties, H5D_COMPACT);
    if (kind == 1) H5Pset_external(properties, "/dev/null/no_such.bytes", 0, 100);
    if (kind < 3) return properties;
    std::vector<hsize_t> chunk;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      chunk.push_back(choices_.ConsumeIntegralInRange<hsize_t>(1, 1000));
    }
    H5Pset_chunk(properties, static_cast<int>(chunk.size()), chunk.data());
    for (int i = choices_.ConsumeIntegralInRange(0, 3); i > 0; --i) addFilter(properties);
    return properties;
  }

  void addFilter(hid_t properties) {
    switch (choices_.ConsumeIntegralInRange(0, 3)) {
      case 0:
        H5Pset_shuffle(properties);
        return;
      case 1:
        H5Pset_deflate(properties, 1);
        return;
      case 2:
        H5Pset_fletcher32(properties);
        return;
      default:
        H5Pset_nbit(properties);
    }
  }

  void writeDataset() {
    const std::string name = place();
    std::vector<hsize_t> sizes;
    const hid_t stored = type(), extents = space(sizes), properties = layout(sizes);
    const hid_t dataset =
        H5Dcreate2(file_, name.c_str(), stored, extents, links_, properties, H5P_DEFAULT);
    if (dataset >= 0) {
      writeValues(dataset, stored, extents);
      H5Dclose(dataset);
    }
    H5Pclose(properties);
    H5Sclose(extents);
    H5Tclose(stored);
  }

  static bool isSmall(hid_t extents) {
    hsize_t sizes[H5S_MAX_RANK] = {};
    const int rank = H5Sget_simple_extent_dims(extents, sizes, nullptr);
    return rank >= 0 &&
           std::all_of(sizes, sizes + rank, [](hsize_t size) { return size > 0 && size < 10; });
  }

  void writeValues(hid_t dataset, hid_t stored, hid_t extents) {
    // The index of more chunks than fit into any memory is more than the library can write.
    if (!isSmall(extents)) return;
    if (choices_.ConsumeBool()) return writeRawChunk(dataset);
    const auto bytes = values(stored, extents);
    if (!bytes.empty()) H5Dwrite(dataset, stored, H5S_ALL, H5S_ALL, H5P_DEFAULT, bytes.data());
  }

  /// Whatever bytes, past the filters.
  void writeRawChunk(hid_t dataset) {
    const hsize_t begin[3] = {0, 0, 0};
    const auto skipped = choices_.ConsumeIntegral<std::uint8_t>();
    const auto bytes =
        choices_.ConsumeBytes<std::uint8_t>(choices_.ConsumeIntegralInRange<std::size_t>(1, 300));
    if (bytes.empty()) return;
    H5Dwrite_chunk(dataset, H5P_DEFAULT, skipped, begin, bytes.size(), bytes.data());
  }

  /// Bytes of all values; none of types that hold pointers.
  std::vector<char> values(hid_t stored, hid_t extents) {
    const hssize_t count = H5Sget_simple_extent_npoints(extents);
    const bool points = H5Tdetect_class(stored, H5T_VLEN) > 0 || H5Tis_variable_str(stored) > 0 ||
                        H5Tdetect_class(stored, H5T_REFERENCE) > 0;
    if (points || count <= 0) return {};
    std::vector<char> bytes(static_cast<std::size_t>(count) * H5Tget_size(stored));
    choices_.ConsumeData(bytes.data(), bytes.size());
    return bytes;
  }

  void writeAttribute() {
    static constexpr std::array names{"format",  "version", "time",        "value_type",
                                      "minimum", "maximum", "range_count", "Comment"};
    static constexpr std::array words{"double", "point", "vector", "uint8", "int64", "kx", ""};
    const std::string object = place(), name = choices_.PickValueInArray(names);
    switch (choices_.ConsumeIntegralInRange(0, 3)) {
      case 0:
        return writeText(object, name, choices_.PickValueInArray(words));
      case 1:
        return writeNumber(object, name, choices_.ConsumeIntegralInRange<std::int64_t>(-1, 100));
      case 2:
        return writeAnyAttribute(object, name);
      default:
        H5Adelete_by_name(file_, object.c_str(), name.c_str(), H5P_DEFAULT);
    }
  }

  void writeAnyAttribute(const std::string& object, const std::string& name) {
    std::vector<hsize_t> sizes;
    const hid_t stored = type(), extents = space(sizes);
    if (isSmall(extents)) {
      const auto bytes = values(stored, extents);
      write(object, name, stored, extents, bytes.empty() ? nullptr : bytes.data());
    }
    H5Sclose(extents);
    H5Tclose(stored);
  }

  void writeText(const std::string& object, const std::string& name, const std::string& text) {
    const hid_t stored = H5Tcopy(H5T_C_S1), scalar = H5Screate(H5S_SCALAR);
    H5Tset_size(stored, text.size() + 1);
    write(object, name, stored, scalar, text.c_str());
    H5Sclose(scalar);
    H5Tclose(stored);
  }

  void writeNumber(const std::string& object, const std::string& name, std::int64_t number) {
    const hid_t scalar = H5Screate(H5S_SCALAR);
    write(object, name, H5T_STD_I64LE, scalar, &number);
    H5Sclose(scalar);
  }

  void write(const std::string& object, const std::string& name, hid_t stored, hid_t extents,
             const void* value) const {
    H5Adelete_by_name(file_, object.c_str(), name.c_str(), H5P_DEFAULT);
    const hid_t attribute = H5Acreate_by_name(file_, object.c_str(), name.c_str(), stored, extents,
                                              H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT);
    if (attribute < 0) return;
    if (value) H5Awrite(attribute, stored, value);
    H5Aclose(attribute);
  }

  FuzzedDataProvider& choices_;
  hid_t access_, links_;
  hid_t file_ = -1;
};

/// As the library and the program read their input.
void readAsInput(const std::filesystem::path& file) {
  Velorn::Trajectory trajectory({file});
  trajectory.importTrajectory();
  for (const auto& [week, range] : trajectory.timeRanges()) {
    Geomra::PhysicalSpace::point position;
    Geomra::PhysicalSpace::vector attitude;
    trajectory.interpolateTrajectory(0.5 * range.first + 0.5 * range.last, week, position, attitude,
                                     true);
  }
  try {
    const GridFile grid(file);
    grid.world<Geomra::PhysicalSpace::point>("Positions").whole();
    grid.world<double>("GPSTime").whole();
    grid.world<std::uint8_t>("Classification").whole();
  } catch (const Error&) {
    // refused
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const TemporaryFolder folder;
  static const Morvane::ConsoleRedirection silence([](std::string_view) {});
  H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
  FuzzedDataProvider choices(bytes, size);
  const auto file = folder / "foreign.kx";
  ForeignWriter(file, choices).writeAll();
  readAsInput(file);
  readAndSave(file, folder / "copy.kx");
  return 0;
}
