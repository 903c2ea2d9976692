// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <functional>
#include <limits>

#include <gmock/gmock.h>

#include "tests/adjustment/model/Strips.h"

using Strandel::ValueType;
using testing::ElementsAre, testing::HasSubstr, testing::IsEmpty, testing::StartsWith;
using Velorn::Sec_Type, Velorn::Section, Velorn::SolverParameters;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

double before(double t) {
  return std::nextafter(t, -infinity);
}

/// Words after `label`, by line of a section file.
std::string wordsAfter(const std::string& label, const std::string& file) {
  std::string words;
  for (auto at = file.find(label); at != std::string::npos; at = file.find(label, at + 1)) {
    const auto begin = at + label.size();
    words += file.substr(begin, file.find_first_of(",\n", begin) - begin) + " ";
  }
  return words;
}

/// The types of all sections of strips that last 300 s.
class Models : public Flight {
 protected:
  std::string typesOf(const std::string& word) {
    auto parameters = model();
    EXPECT_EQ(divide(parameters, word), "");
    return wordsAfter("type: ", sectionFile());
  }
  std::string stripsOf(const std::string& word) {
    typesOf(word);
    return wordsAfter("StripID: ", sectionFile());
  }
};

class Progress : public Kestrum::LoaderProgress {
 public:
  void report(const std::string& text, std::size_t current, std::size_t total) override {
    told.push_back(text + std::to_string(current) + "/" + std::to_string(total));
  }
  std::vector<std::string> told;
};

}  // namespace

using Sections = Flight;
using Ranges = Flight;

TEST_F(Sections, AreEqualAndNoLongerThanTheInterval) {
  addStrip("a.kx", {1250.0, 1000.0, 1100.0});
  addStrip("b.kx", {1000.0, 1300.0});
  configuration.DefaultInterval[1] = 100.0;
  auto parameters = model();
  ASSERT_EQ(divide(parameters, "LINEAR"), "");
  EXPECT_EQ(parameters.numberOfSectionsForAllStrips(), 6u);
  EXPECT_EQ(parameters.getNumberOfParameters(), 156u);
  EXPECT_EQ(sectionFile(),
            "StripID: 0, sectionID: 0, t: 1000.000000000000000, type: LINEAR\n"
            "StripID: 0, sectionID: 1, t: 1083.333333333333258, type: LINEAR\n"
            "StripID: 0, sectionID: 2, t: 1166.666666666666515, type: LINEAR\n"
            "StripID: 1, sectionID: 3, t: 1000.000000000000000, type: LINEAR\n"
            "StripID: 1, sectionID: 4, t: 1100.000000000000000, type: LINEAR\n"
            "StripID: 1, sectionID: 5, t: 1200.000000000000000, type: LINEAR\n");
  EXPECT_EQ(parameters.getSectionInStrip(1, 1150.0),
            (Section{Sec_Type::LINEAR, 4, 1100.0, 1, false, 0}));
  EXPECT_THAT(console, IsEmpty());
}

TEST_F(Sections, BeginExactlyAtAccumulatedTimes) {
  const double first = 259200.1, last = 262800.7, interval = 7.3;
  addStrip("a.kx", {first, last});
  configuration.DefaultInterval[1] = interval;
  auto parameters = model();
  ASSERT_EQ(divide(parameters, "LINEAR"), "");
  const unsigned count = parameters.numberOfSectionsForAllStrips();
  ASSERT_EQ(count, 494u);
  const double step = (last - first) / count;
  double start = first;
  int recomputedDiffers = 0;
  for (unsigned k = 0; k < count; ++k, start += step) {
    const auto section = parameters.getSectionInStrip(0, start);
    EXPECT_EQ(section.t, start);
    EXPECT_EQ(section.sectionID, k);
    EXPECT_EQ(parameters.getSectionInStrip(0, std::nextafter(start, infinity)).sectionID, k);
    const unsigned earlier = k > 0 ? k - 1 : Section().sectionID;
    EXPECT_EQ(parameters.getSectionInStrip(0, before(start)).sectionID, earlier);
    recomputedDiffers += start != first + k * step ? 1 : 0;
  }
  EXPECT_GT(recomputedDiffers, 100);  // or the case would not tell the two apart
}

TEST_F(Sections, AreMissedBeforeTheFirstStartButNotAfterTheLastTime) {
  addStrip("a.kx", {1000.0, 1300.0});
  configuration.DefaultInterval[1] = 100.0;
  auto parameters = model();
  EXPECT_EQ(parameters.getSectionInStrip(0, 1000.0), Section());
  ASSERT_EQ(divide(parameters, "LINEAR"), "");
  EXPECT_EQ(parameters.getSectionInStrip(0, 1e300).sectionID, 2u);
  EXPECT_EQ(parameters.getSectionInStrip(0, infinity).sectionID, 2u);
  for (const double t : {999.5, before(1000.0), -infinity, notANumber}) {
    EXPECT_EQ(parameters.getSectionInStrip(0, t), Section()) << t;
  }
  EXPECT_EQ(parameters.getSectionInStrip(7, 1000.0), Section());
  const std::string begin = "SolverParameters::getNewSection:: ";
  EXPECT_THAT(console,
              ElementsAre(begin + "StripID 0 >= size of newsections:0",
                          begin + "For StripID 0 and time t 999.5 no section was found",
                          begin + "For StripID 0 and time t 999.9999999999999 no section was found",
                          begin + "For StripID 0 and time t -inf no section was found",
                          begin + "For StripID 0 and time t nan no section was found",
                          begin + "StripID 7 >= size of newsections:1"));
}

TEST_F(Models, OfSplinesEndLinear) {
  addStrip("a.kx", {1000.0, 1300.0});
  for (const auto& [interval, types] : std::map<double, std::string>{
           {100.0, "LINEAR SPLINE LINEAR "}, {150.0, "LINEAR LINEAR "}, {300.0, "LINEAR "}}) {
    configuration.DefaultInterval = {1.0, 1.0, interval};
    EXPECT_EQ(typesOf("SPLINE"), types) << interval;
  }
}

TEST_F(Models, TakeTheirOwnIntervalUnlessAStripHasOne) {
  for (const auto* name : {"a.kx", "b.kx", "c.kx"}) addStrip(name, {1000.0, 1300.0});
  configuration.DefaultInterval = {300.0, 150.0, 100.0};
  EXPECT_EQ(typesOf("BIAS"), "BIAS BIAS BIAS ");
  EXPECT_EQ(stripsOf("LINEAR"), "0 0 1 1 2 2 ");
  EXPECT_EQ(typesOf("HYBRID"), "HYBRID HYBRID HYBRID HYBRID HYBRID HYBRID ");

  configuration.SplitBackStrips = true;
  EXPECT_EQ(typesOf("BIAS"), "BIAS LINEAR SPLINE LINEAR BIAS ");
  EXPECT_EQ(stripsOf("HYBRID"), "0 0 1 1 1 2 2 ");
  EXPECT_EQ(typesOf("HYBRID"), "HYBRID HYBRID HYBRID HYBRID HYBRID HYBRID HYBRID ");

  configuration.OverwriteToLinear = {{1, 300.0}, {2, 300.0}, {-1, 0.0}, {3, 0.0}};
  configuration.OverwriteToSpline = {{2, 75.0}};
  EXPECT_EQ(typesOf("BIAS"), "BIAS LINEAR LINEAR SPLINE SPLINE LINEAR ");
  EXPECT_EQ(stripsOf("HYBRID"), "0 0 1 2 2 2 2 ");
}

TEST_F(Sections, OfASecondCallGoOnWithTheNumbersAndKeepTheUnknowns) {
  addStrip("a.kx", {1000.0, 1300.0});
  configuration.DefaultInterval[1] = 150.0;
  auto parameters = model();
  ASSERT_EQ(divide(parameters, "LINEAR"), "");
  ASSERT_EQ(divide(parameters, "LINEAR"), "");
  EXPECT_EQ(wordsAfter("sectionID: ", sectionFile()), "2 3 ");
  EXPECT_EQ(parameters.numberOfSectionsForAllStrips(), 4u);
  EXPECT_EQ(parameters.getNumberOfParameters(), 108u);
  EXPECT_EQ(parameters.getTrajectoryPositionCorrection(2, 9), leverArm.x);  // where it stood
  EXPECT_EQ(parameters.getLeverArm(0), leverArm.x);
}

TEST_F(Sections, TellTheirProgressWhileSomebodyListens) {
  for (const auto* name : {"a.kx", "b.kx"}) addStrip(name, {1000.0, 1300.0});
  auto progress = std::make_shared<Progress>();
  configuration.progress = progress;
  auto parameters = model();
  EXPECT_EQ(divide(parameters, "LINEAR"), "");
  EXPECT_THAT(progress->told, ElementsAre("setSection #0/2", "setSection #1/2"));
  progress.reset();
  EXPECT_EQ(divide(parameters, "LINEAR"), "");
}

TEST_F(Sections, AreSavedInAFreshRootOrTold) {
  const auto made = folder / "00_parameter";
  std::filesystem::remove(made);
  addStrip("a.kx", {1000.0, 1250.0});
  auto parameters = model();
  EXPECT_EQ(divide(parameters, "LINEAR"), "");
  EXPECT_THAT(sectionFile(), StartsWith("StripID: 0, sectionID: 0, t: 1000."));
  EXPECT_THAT(console, IsEmpty());
  std::filesystem::remove_all(made);
  writeContent(made, "in the way");
  EXPECT_EQ(divide(parameters, "LINEAR"), "");
  parameters.saveParameterFile(".txt");
  EXPECT_THAT(console,
              ElementsAre(HasSubstr("open the file:" + (made / "Sections.txt").string()),
                          HasSubstr("open the file:" + (made / "Parameter.txt").string())));
}

TEST_F(Sections, OfAnEmptyModelAreOnePerStrip) {
  strips = {"a.kx", "b.kx"};  // nobody reads them
  auto parameters = model();
  EXPECT_EQ(parameters.readSectionsAndParameter("", "", leverArm, misalignment), "");
  EXPECT_EQ(parameters.numberOfSectionsForAllStrips(), 2u);
  EXPECT_EQ(parameters.getNumberOfParameters(), 60u);
  EXPECT_EQ(parameters.getSectionInStrip(1, 345600.0),
            (Section{Sec_Type::LINEAR, 1, 0.0, 1, false, 0}));
  EXPECT_EQ(parameters.getLeverArm(2), leverArm.z);
  EXPECT_FALSE(std::filesystem::exists(folder / "00_parameter/Sections.txt"));
  const std::string noStrips = "Section::setSections: stripFiles.size() == 0 !";
  EXPECT_EQ(SolverParameters().setEmptySections(leverArm, misalignment), noStrips);
  EXPECT_EQ(SolverParameters().setSections("", {}, leverArm, misalignment, "", {}, {}), noStrips);
}

TEST(SectionsDeathTest, NamedFilesEndTheProcess) {
  const auto readNamed = [](const std::string& sections, const std::string& parameters) {
    Morvane::Console::redirect(
        [](std::string_view line) { std::fprintf(stderr, "<%s>", std::string(line).c_str()); });
    SolverParameters().readSectionsAndParameter(sections, parameters, {}, {});
  };
  EXPECT_EXIT(readNamed("s", ""), testing::ExitedWithCode(1), "< STOP HERE NEED TO IMPLEMENT >");
  EXPECT_EXIT(readNamed("", "p"), testing::ExitedWithCode(1), "< STOP HERE NEED TO IMPLEMENT >");
}

namespace {

/// A setting that cannot be carried out for the second of two strips from 1000 s to 1300 s.
struct Refusal {
  std::string word;
  std::vector<double> intervals;
  std::map<int, double> toLinear;
  std::string told;
};

}  // namespace

TEST_F(Sections, RefuseSettingsByNameAndValue) {
  for (const auto* name : {"a.kx", "b.kx"}) addStrip(name, {1000.0, 1300.0});
  const std::string notPositive = "Section::setSections: defaultIntervalTime <= 0.0!";
  const std::string none =
      "Section::setSections: secType is none of BIAS, LINEAR, SPLINE, HYBRID: ";
  const std::string tooSmall = "Section::setSections: defaultIntervalTime too small ";
  const std::string path = strips[1].string();
  for (const Refusal& refusal : {
           Refusal{"linear", {1, 1, 1}, {}, none + "linear"},
           Refusal{"Unknown", {1, 1, 1}, {}, none + "Unknown"},
           Refusal{
               "BIAS", {1, 1}, {}, "Section::setSections: Size of DefaultInterval is not 3 (2)"},
           Refusal{"LINEAR", {1, 0.0, 1}, {}, notPositive},
           Refusal{"HYBRID", {1, notANumber, 1}, {}, notPositive},
           Refusal{"LINEAR", {1, 100, 1}, {{1, 0.0}}, notPositive},
           Refusal{"LINEAR", {1, 100, 1}, {{1, -3.0}}, notPositive},
           Refusal{"LINEAR", {1, 100, 1}, {{1, infinity}}, "is not finite (inf): " + path},
           Refusal{"LINEAR", {1, 100, 1}, {{1, 1e-9}}, tooSmall + "(1e-09): "},
           Refusal{"LINEAR", {1, 100, 1}, {{1, 5e-324}}, tooSmall + "(5e-324): inf more"},
           Refusal{"LINEAR", {1, 100, 1}, {{1, 3e-5}}, "9999997 are possible: " + path},
       }) {
    configuration.DefaultInterval = refusal.intervals;
    configuration.OverwriteToLinear = refusal.toLinear;
    auto parameters = model();
    EXPECT_THAT(divide(parameters, refusal.word), HasSubstr(refusal.told));
    EXPECT_EQ(parameters.getNumberOfParameters(), 0u) << refusal.told;
    if (!refusal.toLinear.empty()) {  // the first strip stays divided
      EXPECT_EQ(parameters.getSectionInStrip(0, 1299.0).sectionID, 2u) << refusal.told;
    }
  }
}

TEST_F(Sections, RefuseTimesBetweenWhichNoOtherLies) {
  addStrip("a.kx", {1e15, 1e15 + 1000.0});
  configuration.DefaultInterval[1] = 0.01;
  auto parameters = model();
  EXPECT_THAT(divide(parameters, "LINEAR"), HasSubstr("no time lies between 1000000000000000"));
}

TEST_F(Sections, RefuseAMountingThatIsNotFinite) {
  addStrip("a.kx", {1000.0, 1300.0});
  misalignment.y = notANumber;
  auto parameters = model();
  EXPECT_EQ(divide(parameters, "LINEAR"),
            "SolverParameters::setLeverarmAndMisalignment: misalignment is not finite (0.3, nan, "
            "90)");
  EXPECT_EQ(parameters.getLeverArm(0), 0.0);
}

TEST_F(Ranges, ThatAreNoneAreRefusedWithTheFile) {
  const auto faultOf = [this](Strandel::Bundle bundle) {
    strips = {save("a.kx", bundle)};
    auto parameters = model();
    std::string fault = divide(parameters, "LINEAR");
    EXPECT_EQ(parameters.numberOfSectionsForAllStrips(), 0u);
    const std::string name = "SolveParameters::getGPSRange: ", path = strips[0].string();
    EXPECT_THAT(fault, AllOf(StartsWith(name), testing::EndsWith(path)));
    return fault.substr(name.size(), fault.size() - name.size() - path.size());
  };
  EXPECT_EQ(faultOf(bundleOf({})), "Have no TimeRange: ");
  EXPECT_EQ(faultOf(bundleOf({-1e-9, 5})), "Have negative MinTime: ");
  EXPECT_EQ(faultOf(bundleOf({-infinity, 5})), "Have negative MinTime: ");
  EXPECT_EQ(faultOf(bundleOf({1000, 1000 + 9e-7})), "Max-Min time is zerso for: ");
  EXPECT_EQ(faultOf(bundleOf({1000, notANumber, 1300})), "TimeRange is not finite (nan to nan): ");
  EXPECT_EQ(faultOf(bundleOf({1000, infinity})), "TimeRange is not finite (1000 to inf): ");

  auto twoGrids = bundleOf({1000, 1300});
  twoGrids.makeSlice(1)->makeGrid("other");
  EXPECT_EQ(faultOf(twoGrids), "getNumberOfGrids > 1 for File: ");
  EXPECT_EQ(faultOf({}), "getNumberOfGrids > 1 for File: ");
  auto noChart = bundleOf({1000, 1300});
  noChart.grids()[0]->removeChart(Strandel::scannerChartName);
  EXPECT_EQ(faultOf(noChart), "Have no GPSTime: ");
  auto noTimes = bundleOf({1000, 1300});
  const auto chart = noTimes.grids()[0]->chart(Strandel::scannerChartName);
  chart->removeField("GPSTime");
  EXPECT_EQ(faultOf(noTimes), "Have no GPSTime: ");
  chart->makeField("GPSTime", ValueType::Point)
      ->setValues<Geomra::PhysicalSpace::point>({0}, {{1, 0, 0}, {9, 0, 0}});
  EXPECT_EQ(faultOf(noTimes), "Have no GPSTime: ");
}

TEST_F(Ranges, OfFilesThatCannotBeOpenedAreToldWithTheReasonOnTheConsole) {
  strips = {folder / "missing.kx"};
  const std::string told =
      "SolveParameters::getGPSRange: BP for File: " + strips[0].string() + " is null";
  auto parameters = model();
  EXPECT_EQ(divide(parameters, "LINEAR"), told);
  EXPECT_THAT(console, ElementsAre(HasSubstr("missing.kx")));
  configuration.Storage.reset();
  auto withoutStorage = model();
  EXPECT_EQ(divide(withoutStorage, "LINEAR"), told);
}

namespace {

/// Flips a bit of the place in a file where the bytes of `value` stand first; the ends of a range
/// stand in the head, too.
void damage(const std::filesystem::path& path, double value) {
  std::string bytes = contentOf(path);
  const auto at = bytes.find(std::string(reinterpret_cast<const char*>(&value), sizeof(value)));
  ASSERT_NE(at, std::string::npos);
  bytes[at] = static_cast<char>(bytes[at] ^ 1);
  writeContent(path, bytes);
}

}  // namespace

TEST_F(Ranges, AreReadFromTheStripWithoutItsPoints) {
  auto strip = bundleOf({1000.0, 1234.5, 1300.0});
  const auto chart = strip.grids()[0]->chart(Strandel::scannerChartName);
  chart->field("Positions")
      ->setValues<Geomra::PhysicalSpace::point>({0}, {{0, 0, 0}, {7.25, 0, 0}, {9, 0, 0}});
  strips = {save("a.kx", strip)};
  Strandel::Bundle loaded;
  ASSERT_EQ(configuration.Storage->load(strips[0], loaded), "");
  const auto fields = loaded.grids()[0]->chart(Strandel::scannerChartName);
  fields->field("GPSTime")->setStoredRange(std::nullopt);
  strips.push_back(save("b.kx", loaded));
  for (const auto& path : strips) damage(path, 7.25);
  EXPECT_FALSE(fields->field("Positions")->values<Geomra::PhysicalSpace::point>({0}));

  auto parameters = model();
  EXPECT_EQ(divide(parameters, "LINEAR"), "");  // nobody saw the damage of the positions
  EXPECT_EQ(parameters.getSectionInStrip(1, 1250.0).t, 1000.0);

  strips = {strips[1]};
  damage(strips[0], 1234.5);
  auto fromDamagedTimes = model();
  EXPECT_THAT(divide(fromDamagedTimes, "LINEAR"), HasSubstr("Have no TimeRange: "));
  EXPECT_THAT(console, ElementsAre(HasSubstr("b.kx")));
}

TEST_F(Ranges, ThatRunBackwardsInAFilesHeadAreRefused) {
  auto strip = bundleOf({1000.0, 1300.0});
  save("a.kx", strip);
  Strandel::Bundle loaded;
  ASSERT_EQ(configuration.Storage->load(folder / "a.kx", loaded), "");
  loaded.grids()[0]
      ->chart(Strandel::scannerChartName)
      ->field("GPSTime")
      ->setStoredRange(Strandel::ValueRange{{1300.0}, {1000.0}});
  strips = {save("b.kx", loaded)};
  auto parameters = model();
  EXPECT_EQ(divide(parameters, "LINEAR"),
            "SolveParameters::getGPSRange: Max-Min time is -300 for: " + strips[0].string());
}
