// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <bit>
#include <limits>
#include <stdexcept>

#include <gmock/gmock.h>

#include "platform/plome/StringList.h"
#include "tests/adjustment/model/ParameterTexts.h"
#include "tests/adjustment/model/Strips.h"
#include <velorn/FileContainer.h>

namespace fs = std::filesystem;
using testing::AllOf, testing::HasSubstr, testing::StartsWith;
using Velorn::Section, Velorn::SolverParameters;

namespace {

/// Everything that a model of strips from 1000 s on answers, its doubles bit by bit.
std::vector<std::uint64_t> answersOf(const SolverParameters& model) {
  std::vector<std::uint64_t> answers{model.numberOfSectionsForAllStrips(),
                                     model.getNumberOfParameters()};
  const auto add = [&](double value) { answers.push_back(std::bit_cast<std::uint64_t>(value)); };
  for (unsigned s = 0; s < model.numberOfSectionsForAllStrips(); ++s) {
    for (unsigned k = 0; k < 12; ++k) {
      add(model.getTrajectoryPositionCorrection(s, k));
      add(model.getTrajectoryAngleCorrection(s, k));
    }
  }
  for (unsigned i = 0; i < 12; ++i) add(model.getRangeAngleOffset(i));
  for (unsigned strip = 0; strip < 2; ++strip) {
    for (int i = 0; i < 240; ++i) {
      const double t = 1000.0 + 1.7 * i;
      const auto section = model.getSectionInStrip(strip, t);
      answers.push_back(section.sectionID);
      answers.push_back(static_cast<std::uint64_t>(section.type));
      answers.push_back(section.stripIndex + (section.invalid ? 100 : 0));
      add(section.t);
    }
  }
  return answers;
}

/// Two strips of three SPLINE sections and four LINEAR ones, and the files of their adjustment.
class Restore : public Flight {
 protected:
  Restore() {
    addStrip("a.kx", {1000.1, 1300.4});
    addStrip("b.kx", {1000.7, 1400.2});
    configuration.DefaultInterval = {1.0, 100.0, 150.0};
    configuration.OverwriteToSpline = {{0, 120.0}};
    written = model();
    EXPECT_EQ(divide(written, "LINEAR"), "");
    for (const auto* other : {"ground.kx", "flight.kx"}) writeContent(folder / other, "");
    Velorn::FileContainer files;
    EXPECT_EQ(files.add(std::make_shared<Plome::StringList>(
                            Plome::StringList{strips[0].string(), strips[1].string()}),
                        folder / "ground.kx", folder / "flight.kx"),
              "");
    files.writeStripID(ids, false);
    writeContent(unknowns, parameterText(values));
    writeContent(companion, companionBytes(values));
  }

  std::string restore(SolverParameters& model) const {
    return model.restore(sections, unknowns, ids);
  }

  std::vector<double> values = randomUnknowns(7);
  fs::path sections = folder / "00_parameter/Sections.txt", ids = folder / "StripID.txt",
           unknowns = folder / "00_parameter/Parameter.txt",
           companion = folder / "00_parameter/Parameter.txt.exact";
  SolverParameters written;
};

}  // namespace

TEST_F(Restore, GivesBackWhatWasWritten) {
  ASSERT_EQ(restore(written), "");
  fs::remove(unknowns);
  fs::remove(companion);
  written.setLeverArm(0.1 + 0.2, 1.0 / 3.0, -2e-17);  // more digits than the text holds
  written.writeSectionFile(".txt");
  written.writeParameterFile(".txt");
  EXPECT_EQ(written.writeExactParameters(unknowns), "");

  auto exact = model();
  EXPECT_EQ(restore(exact), "");
  EXPECT_EQ(answersOf(exact), answersOf(written));
  EXPECT_EQ(exact.getTrajectoryPositionCorrection(6, 5), values[24 * 6 + 5]);
  exact.writeSectionFile("2.txt");
  EXPECT_EQ(contentOf(folder / "00_parameter/Sections2.txt"), sectionFile());

  fs::remove(companion);
  auto rounded = model();
  EXPECT_EQ(restore(rounded), "");
  EXPECT_NE(answersOf(rounded), answersOf(written));
  EXPECT_NEAR(rounded.getLeverArm(1), 1.0 / 3.0, 5e-16);
  EXPECT_EQ(rounded.getLeverArm(2), 0.0);
}

TEST_F(Restore, ReadsAndWritesTheCompanionAsItIsDocumented) {
  auto parameters = model();
  ASSERT_EQ(restore(parameters), "");
  EXPECT_EQ(parameters.writeExactParameters(folder / "copy"), "");
  EXPECT_EQ(contentOf(folder / "copy.exact"), companionBytes(values));
  EXPECT_THAT(
      parameters.writeExactParameters(folder / "none/copy"),
      AllOf(StartsWith("SolverParameters::writeExactParameters: "), HasSubstr("none/copy")));
  EXPECT_THAT(SolverParameters().writeExactParameters(folder / "copy"),
              HasSubstr("no parameters for the file:"));
  EXPECT_EQ(contentOf(folder / "copy.exact"), companionBytes(values));
}

TEST_F(Restore, KnowsTheStripsByTheirFileNamesAndNumbersTheSectionsAnew) {
  SolverParameters elsewhere({"/other/b.kx", "c/a.kx"}, configuration);
  ASSERT_EQ(restore(elsewhere), "");
  ASSERT_EQ(restore(written), "");
  for (int i = 0; i < 20; ++i) {
    const double t = 1000.8 + 20 * i;
    for (const unsigned strip : {0u, 1u}) {
      const Section here = written.getSectionInStrip(strip, t);
      const Section there = elsewhere.getSectionInStrip(1 - strip, t);
      EXPECT_EQ(there.t, here.t);
      EXPECT_EQ(there.type, here.type);
      EXPECT_EQ(there.stripIndex, 1 - strip);
      EXPECT_EQ(there.sectionID, (here.sectionID + 4) % 7);  // b has four of the seven
      for (unsigned k = 0; k < 24; ++k) {
        EXPECT_EQ(elsewhere.getTrajectoryPositionCorrection(there.sectionID, k),
                  written.getTrajectoryPositionCorrection(here.sectionID, k));
      }
    }
  }
  for (unsigned i = 0; i < 12; ++i) {
    EXPECT_EQ(elsewhere.getRangeAngleOffset(i), written.getRangeAngleOffset(i));
  }
}

TEST_F(Restore, TakesTheModelOfOneEmptySectionPerStrip) {
  auto empty = model();
  ASSERT_EQ(empty.setEmptySections(leverArm, misalignment), "");
  empty.writeSectionFile(".txt");
  empty.writeParameterFile(".txt");
  ASSERT_EQ(empty.writeExactParameters(unknowns), "");
  auto again = model();
  EXPECT_EQ(restore(again), "");
  EXPECT_EQ(answersOf(again), answersOf(empty));
}

namespace {

/// One text of one of the files replaced by another (an empty one stands for the file's end), and
/// what is told about it.
struct Damage {
  fs::path file;
  std::string from, to, told;
};

std::string replaced(std::string content, const std::string& from, const std::string& to) {
  const auto at = from.empty() ? content.size() : content.find(from);
  if (at == std::string::npos) throw std::runtime_error("not there: " + from);
  return content.replace(at, from.size(), to);
}

}  // namespace

TEST_F(Restore, RefusesDamagedTextsByFileLineAndValueAndChangesNothing) {
  auto parameters = model();
  ASSERT_EQ(restore(parameters), "");
  const auto before = answersOf(parameters);
  const std::string text = parameterText(values), row = text.substr(text.find("\n\n") + 2);
  const std::string number = row.substr(0, row.find(' ')), last = text.substr(text.rfind('\n'));
  const std::string none = "describes no section: ",
                    noNumber = "line 4: value 1 of 24 is no number";
  for (const Damage& damage : {
           Damage{sections, "sectionID: 1", "sectionID: 2", "line 2: sectionID 2 where 1 follows"},
           Damage{sections, "sectionID: 1", "sectionID: 4294967297", "line 2: " + none},
           Damage{sections, "t: 1200.", "t: 1000.", "line 3: t 1000."},
           Damage{sections, "t: 1000.", "t: -1000.", "line 1: t -1000.1 is negative"},
           Damage{sections, "t: 1100.", "t: 1.1e3", "line 2: " + none},
           Damage{sections, "t: 1100.", "t: nan", "line 2: " + none},
           Damage{sections, "1, sectionID: 3", "0, sectionID: 3", "line 4: t 1000.7 is not after"},
           Damage{sections, "1, sectionID: 6", "0, sectionID: 6", "line 7: StripID 0 after 1"},
           Damage{sections, "1, sectionID: 6", "9, sectionID: 6",
                  "line 7: StripID 9: is no strip of the strip id file"},
           Damage{sections, "SPLINE", "Unknown", "line 2: " + none},
           Damage{sections, "", "\n", "line 8: " + none},
           Damage{sections, "", std::string(70000, ' '), "line 8: is too long"},
           Damage{sections, "", "StripID: 1, sectionID: 7, t: 1400.000000000000000, type: LINEAR\n",
                  unknowns.string() + ": 180 parameters, 8 sections have 204"},
           Damage{unknowns, "local", "lokal", "line 1: is not the number of local"},
           Damage{unknowns, "168", "143", "line 1: 143 local parameters are no number of sections"},
           Damage{unknowns, "168", "4294967280", "line 1: 4294967280 local parameters"},
           Damage{unknowns, "12 (", "13 (", "line 2: is not the number of global"},
           Damage{unknowns, "\n\n", "\n", "line 3: is not empty"},
           Damage{unknowns, "168", "144", "line 10: more than 12 values"},
           Damage{unknowns, "168", "192", "line 11: value 13 of 24"},
           Damage{unknowns, last, "", "line 11: 12 more values are missing"},
           Damage{unknowns, last, last.substr(0, last.size() - 2), "line 11: value 12 of 12"},
           Damage{unknowns, "", "x", "line 11: more than 12 values: x"},
           Damage{unknowns, "", "\nx", "line 12: follows the last line"},
           Damage{unknowns, number, "inf", noNumber},
           Damage{unknowns, number, "1,000000000000000", noNumber},
           Damage{unknowns, number, "+1.000000000000000", noNumber},
           Damage{unknowns, number, number.substr(0, number.size() - 1), noNumber},
           Damage{ids, "type: strip", "type: Strip", "line 1: names no file: id: 0 file: "},
           Damage{ids, "id: 1", "id: 0", "line 2: id 0 again"},
           Damage{ids, "id: 1", "id: 7", "line 4: StripID 1: is no strip of the strip id file"},
           Damage{ids, "b.kx", "a.kx", "line 2: a second strip named a.kx"},
           Damage{ids, "b.kx", "c.kx", "line 4: StripID 1: c.kx is not among the strips"},
       }) {
    const std::string good = contentOf(damage.file);
    writeContent(damage.file, replaced(good, damage.from, damage.to));
    EXPECT_THAT(restore(parameters),
                AllOf(StartsWith("SolverParameters::restore: " + folder.path().string()),
                      HasSubstr(damage.told)));
    EXPECT_EQ(answersOf(parameters), before) << damage.told;
    writeContent(damage.file, good);
  }
  EXPECT_EQ(restore(parameters), "");
}

TEST_F(Restore, TakesStripsThatTheFilesDoNotNameOnlyWhenAskedTo) {
  ASSERT_EQ(restore(written), "");
  SolverParameters more({"new.kx", "a.kx", "other.kx", "b.kx"}, configuration);
  std::vector<fs::path> unknown{"as before"};
  EXPECT_NE(restore(more), "");
  writeContent(companion, "damaged");
  EXPECT_NE(more.restore(sections, unknowns, ids, &unknown), "");
  EXPECT_THAT(unknown, testing::ElementsAre("as before"));
  EXPECT_EQ(more.getNumberOfParameters(), 0u);
  writeContent(companion, companionBytes(values));

  ASSERT_EQ(more.restore(sections, unknowns, ids, &unknown), "");
  EXPECT_THAT(unknown, testing::ElementsAre("new.kx", "other.kx"));
  EXPECT_EQ(more.getNumberOfParameters(), 9u * 24 + 12);
  for (const unsigned strip : {0u, 2u}) {
    const Section only = more.getSectionInStrip(strip, 1234.5);
    EXPECT_EQ(only,
              (Section{Velorn::Sec_Type::LINEAR, strip == 0 ? 0u : 4u, 0.0, strip, false, 0}));
    for (unsigned k = 0; k < 12; ++k) {
      EXPECT_EQ(more.getTrajectoryPositionCorrection(only.sectionID, k), 0.0);
      EXPECT_EQ(more.getTrajectoryAngleCorrection(only.sectionID, k), 0.0);
    }
  }
  const Section here = written.getSectionInStrip(1, 1300.0),
                there = more.getSectionInStrip(3, 1300);
  for (unsigned k = 0; k < 12; ++k) {
    EXPECT_EQ(more.getTrajectoryAngleCorrection(there.sectionID, k),
              written.getTrajectoryAngleCorrection(here.sectionID, k));
  }
  EXPECT_EQ(more.getRangeAngleScale(2), written.getRangeAngleScale(2));

  writeContent(sections, replaced(contentOf(sections), "1, sectionID: 6", "9, sectionID: 6"));
  EXPECT_THAT(more.restore(sections, unknowns, ids, &unknown),
              HasSubstr("StripID 9: is no strip of the strip id file"));
}

TEST_F(Restore, RefusesACompanionOfOtherUnknowns) {
  const std::string good = companionBytes(values);
  const auto told = [&](const std::string& bytes) {
    auto parameters = model();
    writeContent(companion, bytes);
    std::string fault = restore(parameters);
    EXPECT_THAT(fault, StartsWith("SolverParameters::restore: " + companion.string() + ": "));
    EXPECT_EQ(parameters.getNumberOfParameters(), 0u);
    return fault;
  };
  const auto changed = [&](std::size_t place) {
    std::string bytes = good;
    bytes[place] = static_cast<char>(bytes[place] ^ 4);
    return bytes;
  };
  EXPECT_THAT(told(""), HasSubstr("holds no exact parameters"));
  EXPECT_THAT(told(changed(0)), HasSubstr("holds no exact parameters"));
  EXPECT_THAT(told(changed(8)), HasSubstr("has format version 5; this program reads version 1"));
  EXPECT_THAT(told(changed(12)), HasSubstr("holds 176 parameters, the parameter file 180"));
  EXPECT_THAT(told(changed(100)), HasSubstr("is damaged"));
  EXPECT_THAT(told(changed(good.size() - 1)), HasSubstr("is damaged"));
  EXPECT_THAT(told(good.substr(0, good.size() - 3)), HasSubstr("is cut off, 3 bytes are missing"));
  EXPECT_THAT(told(good + "x"), HasSubstr("goes on after its end"));

  auto others = values;
  others[179] += 2e-15;
  EXPECT_THAT(told(companionBytes(others)), HasSubstr("parameter 179 is "));
  others[3] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THAT(told(companionBytes(others)), HasSubstr("parameter 3 is nan, in the parameter file"));
}

TEST_F(Restore, RefusesFilesOfOtherStripsAndFilesThatAreMissing) {
  const auto told = [&](const std::vector<fs::path>& others) {
    SolverParameters parameters(others, configuration);
    return restore(parameters);
  };
  EXPECT_THAT(told({}), HasSubstr("restore: stripFiles.size() == 0 !"));
  EXPECT_THAT(told({"a.kx", "b.kx", "new.kx"}), HasSubstr(": no section for strip new.kx"));
  EXPECT_THAT(told({"a.kx"}), HasSubstr("line 4: StripID 1: b.kx is not among the strips"));
  EXPECT_THAT(told({"a.kx", "1/b.kx", "2/b.kx"}), HasSubstr("2/b.kx: a second strip named b.kx"));
  for (const auto& file : {ids, sections, unknowns}) {
    const std::string good = contentOf(file);
    fs::remove(file);
    EXPECT_EQ(told({"a.kx", "b.kx"}),
              "SolverParameters::restore: " + file.string() + ": is no file");
    writeContent(file, "");
    EXPECT_THAT(told({"a.kx", "b.kx"}),
                StartsWith("SolverParameters::restore: " + folder.path().string()));
    writeContent(file, good);
  }
}
