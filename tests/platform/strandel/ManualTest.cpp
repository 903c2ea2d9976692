// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What docs/kx-format.md says, with h5py as the other program.
#include <numeric>
#include <random>
#include <thread>

#include <gmock/gmock.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/platform/strandel/Processes.h"
#include "tests/platform/strandel/Storages.h"
#include "tests/support/SmallStrip.h"

using namespace Strandel;
using testing::HasSubstr;

namespace {

/// The lines of contentOf with values: those of every fragment of every field of every chart.
std::string valuesOf(const Bundle& bundle) {
  std::string fault, values;
  std::istringstream lines(contentOf(bundle, fault));
  EXPECT_EQ(fault, "");
  for (std::string line; std::getline(lines, line);) {
    if (line.find(" values ") != std::string::npos) values += line + "\n";
  }
  return values;
}

/// The same, as h5py reads them, with its own check of the checksums.
std::string valuesByH5py(const std::filesystem::path& folder, const std::string& name) {
  return runPython(folder, "import h5py\nfile = h5py.File('" + name + R"(', 'r')
def members(group):
    return [group[name] for name in sorted(group)]
for chart in members(file['0/strip']):
    for field in members(chart):
        for name in sorted(field, key=int):
            data = field[name][()]
            print(f'      {name}: {len(data)} values {data.tobytes().hex()}')
)");
}

/// Everything that h5py sees in a file: groups, attributes, datasets.
std::string allByH5py(const std::filesystem::path& folder, const std::string& name) {
  return runPython(folder, "import h5py\nfile = h5py.File('" + name + R"(', 'r')
def show(name, object):
    print(name, type(object).__name__)
    for key in sorted(object.attrs):
        print('  ', key, repr(object.attrs[key]))
    if isinstance(object, h5py.Dataset):
        print('  ', object.dtype, object.shape, object[()].tobytes().hex())
show('/', file)
file.visititems(show)
for slice in file.values():
    if isinstance(slice, h5py.Group):
        print([sorted(chart) for chart in slice['strip'].values()])
)");
}

}  // namespace

TEST(Manual, ItsExampleIsAStripWithEveryValueThatItWrote) {
  const TemporaryFolder folder;
  runPython(folder.path(), exampleOfTheManual());
  const Bundle strip = loaded(folder / "strip.kx");
  const std::string values = valuesOf(strip);
  EXPECT_GT(values.size(), 5000u * 2 * (24 * 4 + 8 * 3 + 5));
  EXPECT_TRUE(values == valuesByH5py(folder.path(), "strip.kx"));

  const auto grid = strip.slice(0.0)->uniqueGrid();
  EXPECT_EQ(grid->attributes().unsigned32("WeekNumber"), 2318u);
  EXPECT_EQ(grid->attributes().text("Comment"), "Überflug 3");
  EXPECT_EQ(grid->waveforms()->attributes().integer("WaveformSampleInterval"), 1);
  const auto times = fieldOf(strip, worldChartName, "GPSTime");
  EXPECT_EQ(times, fieldOf(strip, scannerChartName, "GPSTime"));
  ASSERT_TRUE(times->storedRange());
  EXPECT_EQ(times->storedRange()->lowest(), 302400.0);
  EXPECT_TRUE(fieldOf(strip, worldChartName, "Positions")->storedRange());
}

TEST(Manual, WhatMeansNothingToAContainerStaysWhenItIsSavedInPlace) {
  const TemporaryFolder folder;
  runPython(folder.path(), exampleOfTheManual() + R"(
with h5py.File("strip.kx", "r+") as file:
    w = file["0/strip/StandardCartesianChart3D"]
    w.attrs["matrix"] = np.arange(6.0).reshape(2, 3)
    w["Positions"].attrs["flag"] = True
    w["Positions/0"].attrs["unit"] = "m"
    w["GPSTime"].attrs["lists"] = np.array(["a", "bb"], dtype=object)
    file.attrs["nothing"] = h5py.Empty("f4")
    file["quality"] = np.arange(7)
    file.move("0", "1")
    file["0"] = np.arange(3)           # where a slice would get its name
    file["1/strip/Waveforms/shapes"] = np.eye(3)
    file.create_group("1/strip/StandardCartesianChart3D/GPSTime/drift")["model"] = [1.0, 2.0]
)");
  const std::string before = allByH5py(folder.path(), "strip.kx");
  Bundle strip = loaded(folder / "strip.kx");
  ASSERT_EQ(storage.save(strip, folder / "strip.kx", "wd"), "");
  EXPECT_EQ(allByH5py(folder.path(), "strip.kx"), before);
  EXPECT_THAT(before, HasSubstr("quality Dataset"));
}

TEST(Manual, WhatACopyCannotKeepIsRefusedAndTheFileStays) {
  const TemporaryFolder folder;
  const auto path = folder / "strip.kx";
  const auto refusal = [&](const std::string& python, const auto& change) {
    runPython(folder.path(), exampleOfTheManual() + R"(
file = h5py.File("strip.kx", "r+")
w = file["0/strip/StandardCartesianChart3D"]
)" + python);
    const std::string before = contentOf(path);
    Bundle strip = loaded(path);
    change(*strip.slice(0.0)->uniqueGrid());
    auto fault = storage.save(strip, path, "wd");
    EXPECT_TRUE(contentOf(path) == before);
    return fault;
  };
  const auto nothing = [](Grid&) {};
  EXPECT_THAT(refusal("w['GPSTime'].attrs['see'] = w.ref", nothing),
              HasSubstr("GPSTime: attribute see: refers to other places of the file"));
  EXPECT_THAT(
      refusal("w.create_group('Positions/x')['y'] = np.array([w.ref], dtype=h5py.ref_dtype)",
              nothing),
      HasSubstr("Positions: x: values: refers to other places"));
  EXPECT_THAT(refusal("file['axis'] = time; file['axis'].make_scale(); "
                      "w['GPSTime/0'].dims[0].attach_scale(file['axis'])",
                      nothing),
              HasSubstr("GPSTime: attribute DIMENSION_LIST: refers to other places"));
  EXPECT_THAT(refusal("w['table'] = [1]",
                      [](Grid& grid) { grid.cartesian()->makeField("table", ValueType::Double); }),
              HasSubstr("\"table\" is the name of something else that lies here"));
  EXPECT_THAT(refusal("", [](Grid& grid) { grid.makeChart("Waveforms"); }),
              HasSubstr("/0/strip: a chart cannot be named \"Waveforms\""));
  EXPECT_THAT(refusal("", [](Grid& grid) { grid.attributes().set("a", std::string("b\0c", 3)); }),
              HasSubstr("attribute a: a text with a zero byte"));
  EXPECT_THAT(refusal("", [](Grid& grid) { grid.attributes().set("a", std::string(60001, 'x')); }),
              HasSubstr("attribute a: a text of 60001 bytes; 60000 fit"));
  EXPECT_THAT(refusal("", [](Grid& grid) { grid.attributes().set("", 1.0); }),
              HasSubstr("\"\" cannot be the name of an attribute"));
}

// Our checksums are not computed by the library; it checks them here. Odd sizes, and sizes around
// the steps in which they are summed.
TEST(Manual, TheHdf5LibraryAgreesWithEveryChecksum) {
  const TemporaryFolder folder;
  std::vector<std::size_t> sizes(400);
  std::iota(sizes.begin(), sizes.end(), 1);
  for (const std::size_t step : {8192u, 65536u, 1u << 20}) {
    for (const std::size_t size : {step - 1, step, step + 1, 2 * step + 3}) sizes.push_back(size);
  }
  std::mt19937 random(3);
  Bundle bundle;
  const auto field =
      bundle.makeSlice(0)->makeGrid("strip")->makeChart("c")->makeField("f", ValueType::UInt8);
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    std::vector<std::uint8_t> values(sizes[i], i % 3 == 0 ? 0xFF : 0);
    if (i % 3 == 2)
      for (auto& value : values) value = static_cast<std::uint8_t>(random());
    ASSERT_EQ(field->setValues<std::uint8_t>({static_cast<std::uint32_t>(i)}, std::move(values)),
              "");
  }
  ASSERT_EQ(storage.save(bundle, folder / "a.kx", "w"), "");
  EXPECT_TRUE(valuesByH5py(folder.path(), "a.kx") == valuesOf(bundle));
}

TEST(Manual, FieldsAreReadFromSeveralThreadsAtOnce) {
  const TemporaryFolder folder;
  Bundle strip = smallStrip(20000);
  ASSERT_EQ(MyStorage(1, 0, 1, 1).save(strip, folder / "a.kx", "w"), "");
  const Bundle read = loaded(folder / "a.kx");
  const std::vector<std::string> names{"Positions", "GPSTime", "ReturnNumber", "I64"};
  std::vector<std::string> faults(names.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < names.size(); ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < 5 && faults[i].empty(); ++round) {
        Bundle mine, other;
        const auto chart = mine.makeSlice(0)->makeGrid("g")->makeChart("c");
        chart->shareField(fieldOf(read, worldChartName, names[i]));
        std::string fault = storage.load(folder / "a.kx", other);
        const auto field = fieldOf(read, worldChartName, names[i]);
        const std::string now = contentOf(mine, fault);
        Bundle wanted;
        wanted.makeSlice(0)->makeGrid("g")->makeChart("c")->shareField(
            fieldOf(strip, worldChartName, names[i]));
        if (now != contentOf(wanted, fault)) faults[i] = "another content";
        if (!fault.empty()) faults[i] = fault;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_THAT(faults, testing::Each(""));
}
