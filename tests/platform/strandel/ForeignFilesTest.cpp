// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Files that others wrote, rightly or wrongly: each is a small strip with one thing changed.
#include <gmock/gmock.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/platform/strandel/Processes.h"
#include "tests/platform/strandel/Storages.h"
#include "tests/support/SmallStrip.h"

using namespace Strandel;
using testing::HasSubstr;

namespace {

/// What is changed, in Python: `file`, its slice `s`, grid `g`, world chart `w`, its field `t`
/// (GPSTime) with the values T and its field `p` (Positions) with the values P.
struct Change {
  const char* name;
  const char* python;
  const char* told;  ///< part of the message; nothing: the content is that of the unchanged strip
};

void PrintTo(const Change& change, std::ostream* out) {
  *out << change.python;
}

constexpr const char* strip = R"(
import h5py, numpy as np, sys, zlib
T = np.linspace(302400.0, 302500.0, 500)
P = np.outer(T, [1.0, -2.0, 0.5])
def field(chart, name, value_type, data, **how):
    group = chart.create_group(name)
    group.attrs['value_type'] = np.bytes_(value_type)
    group.create_dataset('0', data=data, **how)
    return group
def again(field, data=None, **how):
    del field['0']
    return field.create_dataset('0', data=data, **how)
def write(name, change):
    libver = None if name.startswith('default') else ('v110', 'v110')
    with h5py.File(name + '.kx', 'w', libver=libver) as file:
        file.attrs['format'] = np.bytes_('kx')
        file.attrs['version'] = 1
        s = file.create_group('0')
        s.attrs['time'] = 0.0
        g = s.create_group('strip')
        g.attrs['Comment'] = np.bytes_('Überflug'.encode())
        w = g.create_group('StandardCartesianChart3D')
        t = field(w, 'GPSTime', 'double', T, chunks=(70,), fletcher32=True)
        p = field(w, 'Positions', 'point', P, chunks=(70, 3), fletcher32=True)
        exec(change, dict(globals(), **locals()))
)";

constexpr Change changes[] = {
    {"unchanged", "", ""},
    // The head of the file
    {"formatMissing", "del file.attrs['format']", "is an HDF5 file, but not a container"},
    {"formatOther", "file.attrs['format'] = np.bytes_('las')", "but not a container"},
    {"formatNumber", "file.attrs['format'] = 3", "but not a container"},
    {"versionMissing", "del file.attrs['version']", "has no attribute \"version\""},
    {"versionNewer", "file.attrs['version'] = 2",
     "has format version 2; this program reads version 1"},
    {"versionText", "file.attrs['version'] = np.bytes_('1')", "has no attribute \"version\""},
    {"versionSmall", "file.attrs['version'] = np.uint8(1)", ""},
    // Slices
    {"timeMissing", "del s.attrs['time']", "/0: has no attribute \"time\" with a finite number"},
    {"timeNan", "s.attrs['time'] = np.nan", "/0: has no attribute \"time\""},
    {"timeText", "s.attrs['time'] = np.bytes_('0')", "/0: has no attribute \"time\""},
    {"timeInteger", "s.attrs['time'] = 0", ""},
    {"timeTwice", "file.create_group('b').attrs['time'] = 0.0", "/b: is a second slice of time 0"},
    // Value types
    {"valueTypeMissing", "del t.attrs['value_type']", "GPSTime: has no attribute \"value_type\""},
    {"valueTypeNumber", "t.attrs['value_type'] = 8", "GPSTime: has no attribute \"value_type\""},
    {"valueTypeUnknown", "t.attrs['value_type'] = np.bytes_('float')",
     "GPSTime: has the unknown value type \"float\""},
    {"valueTypeOther", "t.attrs['value_type'] = np.bytes_('uint64')",
     "GPSTime/0: expected unsigned 64-bit integer, found 64-bit float"},
    {"typeFloat", "again(t, T.astype('f4'))",
     "GPSTime/0: expected 64-bit float, found 32-bit float"},
    {"typeLongDouble", "again(t, T.astype('longdouble'))",
     "expected 64-bit float, found 128-bit float"},
    {"typeInteger", "again(t, T.astype('i8'))",
     "expected 64-bit float, found signed 64-bit integer"},
    {"typeText", "again(t, T.astype('S8'))", "expected 64-bit float, found text"},
    {"typeLists", "again(t, shape=500, dtype=h5py.vlen_dtype('f8'))",
     "expected 64-bit float, found lists"},
    {"typeCompound", "again(t, np.zeros(500, dtype=[('x', 'f8')]))", "found compound values"},
    {"typeArrays", "again(t, shape=500, dtype=np.dtype(('f8', 3)))", "found arrays"},
    {"typeBoolean", "field(w, 'x', 'int8', T > 0)",
     "/x/0: expected signed 8-bit integer, found enumerated values"},
    {"typeReferences", "again(t, [g.ref] * 500, dtype=h5py.ref_dtype)", "found another type"},
    {"typePadded",
     "i = h5py.h5t.STD_I64LE.copy(); i.set_precision(60); t.attrs['value_type'] = "
     "np.bytes_('int64'); del t['0']; h5py.h5d.create(t.id, b'0', i, "
     "h5py.h5s.create_simple((500,)))",
     "GPSTime/0: expected signed 64-bit integer, found signed 64-bit integer"},
    // Shapes
    {"rankOne", "again(p, T)", "Positions/0: expected [n][3], found [500]"},
    {"rankTwo", "again(t, P)", "GPSTime/0: expected [n], found [500][3]"},
    {"rankThree", "again(p, P.reshape(500, 1, 3))", "expected [n][3], found [500][1][3]"},
    {"rankZero", "again(t, 3.0)", "GPSTime/0: expected [n], found a single value"},
    {"columnsTwo", "again(p, P[:, :2])", "expected [n][3], found [500][2]"},
    {"lengths", "again(t, T[:499])",
     "/0/strip: fragment 0: StandardCartesianChart3D/GPSTime holds 499 values, "
     "StandardCartesianChart3D/Positions 500"},
    {"fragmentNamed", "t['first'] = T", "GPSTime/first: is not a fragment"},
    {"fragmentZeros", "t['01'] = T", "GPSTime/01: is not a fragment"},
    {"fragmentLarge", "t['4294967296'] = T", "GPSTime/4294967296: is not a fragment"},
    // Claims
    {"claimNeverWritten", "again(t, shape=10**15, dtype='f8', chunks=(1000,))",
     "GPSTime/0: claims 1000000000000000 values"},
    {"claimInOnePiece", "again(t, shape=10**15, dtype='f8')", "claims 1000000000000000 values"},
    {"claimOneChunk",
     "again(t, shape=10**15, maxshape=(None,), dtype='f8', chunks=(1000,), compression=1)[:1000] = "
     "1",
     "claims 1000000000000000 values"},
    {"defaultClaimOneChunk",
     "again(t, shape=10**15, dtype='f8', chunks=(1000,), compression=1)[:1000] = 1",
     "claims 1000000000000000 values"},
    {"claimInLargeFile",
     "file['pad'] = np.random.bytes(2 * 10**6).hex(); again(field(w, 'x', 'uint8', [1]), "
     "shape=10**9, dtype='u1', chunks=(1000,), compression=1); del w['GPSTime'], w['Positions']",
     "/x/0: the values from row 0 on were never written"},
    {"missingChunk",
     "again(p, shape=(500, 3), dtype='f8', chunks=(70, 3))[:210] = 1; file['pad'] = P",
     "Positions/0: the values from row 210 on are missing"},
    {"missingColumn",
     "again(p, shape=(500, 3), dtype='f8', chunks=(70, 1))[:, :2] = 1; file['pad'] = P",
     "Positions/0: the values from row 0 on are missing"},
    {"missingPiece", "again(t, shape=500, dtype='f8')", "GPSTime/0: holds 0 bytes of 4000"},
    {"hugeChunk",
     "d = again(t, shape=500, maxshape=(None,), dtype='f8', chunks=(5 * 10**8,), compression=1); "
     "d.id.write_direct_chunk((0,), zlib.compress(T.tobytes()))",
     "claim to be a chunk of 4000000000 bytes"},
    {"hugeChunkPlain", "again(t, shape=500, maxshape=(None,), dtype='f8', chunks=(5 * 10**8,))",
     "GPSTime/0: the values from row 0 on were never written"},
    // Filters
    {"chunkShort",
     "again(t, T, chunks=(500,), compression=1).id.write_direct_chunk((0,), "
     "zlib.compress(T[:400].tobytes()))",
     "GPSTime/0: the values from row 0 on are damaged (3200 bytes instead of 4000)"},
    {"chunkLong",
     "again(t, T, chunks=(500,), compression=1).id.write_direct_chunk((0,), "
     "zlib.compress(bytes(10**8)))",
     "GPSTime/0: the values from row 0 on are damaged (deflate)"},
    {"chunkTiny",
     "again(t, T, chunks=(500,), fletcher32=True, compression=1).id.write_direct_chunk((0,), "
     "b'xyz')",
     "bytes from row 0 on claim to be a chunk"},
    {"filterLzf", "again(t, T, compression='lzf')", "GPSTime/0: stored with the filter 32000"},
    {"filterScaleOffset", "field(w, 'x', 'int32', T.astype('i4'), scaleoffset=0)",
     "/x/0: stored with the filter 6"},
    // Links
    {"linkSoft", "w['x'] = h5py.SoftLink('/0/strip')",
     "StandardCartesianChart3D/x: is a soft or external link"},
    {"linkExternal", "w['x'] = h5py.ExternalLink('unchanged.kx', '/')",
     "StandardCartesianChart3D/x: is a soft or external link"},
    {"linkFragment", "t['1'] = h5py.SoftLink('0')", "GPSTime/1: is a soft or external link"},
    {"linkAtTop", "file['x'] = h5py.SoftLink('/nowhere')", "/x: is a soft or external link"},
    {"linkRenamed", "w['Time'] = t", "is the same field as GPSTime under another name"},
    {"circleTop", "file['x'] = file['/']", "/x: has no attribute \"time\""},
    {"circleSlice", "s['x'] = s", "has no attribute \"value_type\""},
    {"circleGrid", "g['x'] = g", "has no attribute \"value_type\""},
    {"circleChart", "w['x'] = w", "/x: has no attribute \"value_type\""},
    {"circleField", "t['x'] = file['/']", ""},
    {"valuesExternal", "again(t, shape=500, dtype='f8', external=[('unchanged.kx', 0, 4000)])",
     "GPSTime/0: its values lie in another file"},
    {"valuesVirtual",
     "l = h5py.VirtualLayout((500,), 'f8'); l[:] = h5py.VirtualSource('unchanged.kx', t.name + "
     "'/0', (500,)); del t['0']; t.create_virtual_dataset('0', l)",
     "GPSTime/0: its values lie in another file"},
    // Other ways to store the same
    {"defaultBounds", "", ""},
    {"defaultTexts",
     "file.attrs['format'] = 'kx'; t.attrs['value_type'] = 'double'; g.attrs['Comment'] = "
     "'Überflug'",
     ""},
    {"texts",
     "file.attrs['format'] = 'kx'; t.attrs['value_type'] = 'double'; g.attrs['Comment'] = "
     "'Überflug'",
     ""},
    {"bigEndian",
     "again(t, T.astype('>f8')); again(p, P.astype('>f8'), chunks=(70, 3), compression=4, "
     "shuffle=True, fletcher32=True)",
     ""},
    {"onePiece", "again(t, T); again(p, P)", ""},
    {"compact",
     "c = h5py.h5p.create(h5py.h5p.DATASET_CREATE); c.set_layout(h5py.h5d.COMPACT); del t['0']; "
     "h5py.h5d.create(t.id, b'0', h5py.h5t.IEEE_F64LE, h5py.h5s.create_simple((500,)), "
     "c).write(h5py.h5s.ALL, h5py.h5s.ALL, T)",
     ""},
    {"deflate", "again(t, T, compression=9); again(p, P, compression=1, shuffle=True)", ""},
    {"defaultDeflate",
     "again(t, T, compression=9); again(p, P, compression=1, shuffle=True, fletcher32=True)", ""},
    {"chunksOfOneColumn", "again(p, P, chunks=(70, 1), fletcher32=True)", ""},
    {"chunksOfTwoColumns", "again(p, P, chunks=(70, 2), compression=1)", ""},
    {"chunksOfFourColumns", "again(p, P, chunks=(70, 4), maxshape=(None, None), shuffle=True)", ""},
    {"chunksUnlimited", "again(t, T, chunks=(7,), maxshape=(None,), fletcher32=True)", ""},
    {"filtersSkipped",
     "again(t, T, chunks=(500,), compression=1).id.write_direct_chunk((0,), T.tobytes(), 1)", ""},
    {"namedType", "file['type'] = np.dtype('f8'); again(t, T, dtype=file['type'], chunks=(70,))",
     ""},
    // What means nothing to a container
    {"foreign",
     "file['note'] = 'hello'; w['table'] = P; t.create_group('more')['x'] = T; t.attrs['array'] = "
     "np.arange(6).reshape(2, 3); t['0'].attrs['unit'] = np.bytes_('s'); file.attrs['flag'] = "
     "True; p.attrs['minimum'] = np.arange(3)",
     ""},
    {"numbered", "file.move('0', 'first'); file['0'] = T", ""},
};

std::string pythonOfAll() {
  std::string script = strip;
  for (const auto& change : changes) {
    script += std::string("write('") + change.name + "', r'''\n" + change.python + "\n''')\n";
  }
  return script;
}

class ForeignFiles : public testing::TestWithParam<Change> {
 protected:
  static void SetUpTestSuite() {
    folder_ = std::make_unique<TemporaryFolder>();
    runPython(folder_->path(), pythonOfAll());
  }
  static void TearDownTestSuite() { folder_.reset(); }

  static std::filesystem::path fileOf(const std::string& name) { return *folder_ / (name + ".kx"); }

  static std::string readWhole(const std::string& name, std::string& fault) {
    Bundle bundle;
    fault = storage.load(fileOf(name), bundle);
    return fault.empty() ? contentOf(bundle, fault) : "";
  }

  static inline std::unique_ptr<TemporaryFolder> folder_;
};

}  // namespace

TEST_P(ForeignFiles, GiveTheStripOrAMessage) {
  const auto& [name, python, words] = GetParam();
  std::string fault, intactFault;
  const auto content = readWhole(name, fault);
  if (*words != '\0') {
    EXPECT_THAT(fault, HasSubstr(fileOf(name).string() + ": "));
    EXPECT_THAT(fault, HasSubstr(words));
  } else {
    EXPECT_EQ(fault, "");
    EXPECT_EQ(content, readWhole("unchanged", intactFault));
  }
}

// Twice: what the first save kept, the second must keep, too.
TEST_P(ForeignFiles, GiveTheSameOnceTheyAreSavedAgain) {
  const std::string name = GetParam().name;
  std::string fault;
  const auto content = readWhole(name, fault);
  const auto copy = fileOf(name + ".copy");
  for (int i = 0; i < 2; ++i) {
    Bundle bundle;
    if (!storage.load(i == 0 ? fileOf(name) : copy, bundle).empty()) return;
    const auto refused = storage.save(bundle, copy, "wd");
    if (!fault.empty() && !refused.empty()) return;
    ASSERT_EQ(refused, "");
    std::string faultOfCopy;
    const auto contentOfCopy = readWhole(name + ".copy", faultOfCopy);
    EXPECT_EQ(faultOfCopy.empty(), fault.empty()) << faultOfCopy;
    EXPECT_TRUE(!fault.empty() || contentOfCopy == content);
  }
}

INSTANTIATE_TEST_SUITE_P(Changes, ForeignFiles, testing::ValuesIn(changes),
                         [](const auto& test) { return test.param.name; });

TEST(ForeignFile, AllThisPassesInHalfAGibibyteToo) {
  runWithLittleMemory("'*ForeignFile*'");
}
