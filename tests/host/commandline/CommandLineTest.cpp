// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <sstream>

#include <gmock/gmock.h>

#include "host/commandline/Completion.h"
#include "host/commandline/HelpText.h"
#include "host/commandline/ManPage.h"
#include "host/commandline/Misuse.h"

namespace CommandLine {

namespace {

using testing::HasSubstr;

/// A program whose texts hold what layouts and languages could stumble over.
struct Program : testing::Test {
  Program() {
    for (const char* name : {"fit", "join"}) {
      auto& command = *app.add_subcommand(name, "Fits [all] of it's \\parts");
      command.add_option("STRIP", files, ".kx files, in the order of the `line`")->required();
      command.add_option("--model", model, "which of the models of the trajectory is fitted")
          ->check(CLI::IsMember({"FLAT", "BENT"}))
          ->group("Shared")
          ->capture_default_str();
      command.add_option("--weights", weights, "'a' before b")->delimiter(',')->type_name("W,W");
      command.add_flag("--deep{50}", depth, "=N for less");
      command.footer(
          "Example: prog fit 'a  b.kx' --model FLAT \\\n  --weights 1,2 && prog fit "
          "c_of_a_very_long_name_that_fills_the_line.kx --model BENT --weights 3,4\n\nA note\n"
          "of two lines.");
    }
  }

  std::string misuse(const std::string& call) {
    try {
      app.parse(call);
    } catch (const CLI::ParseError& error) {
      return misuseText(app, error);
    }
    return "none";
  }

  CLI::App app{"Does: things", "prog"};
  std::vector<std::string> files;
  std::string model = "FLAT", depth;
  std::vector<double> weights{1, 2};
};

}  // namespace

TEST_F(Program, HelpFitsATerminalAndItsExampleCanBeCopied) {
  const std::string help = helpText(tableOf(app).commands[0], "prog fit");
  std::istringstream lines(help);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U) << line;
  EXPECT_THAT(help, HasSubstr("\nUsage: prog fit STRIP... [OPTIONS]\n"));
  EXPECT_THAT(help, HasSubstr("\n  --deep[=N]                =N for less\n"));
  EXPECT_THAT(help, HasSubstr("\n  --model FLAT|BENT         which of the models of the trajectory "
                              "is fitted\n                            (default FLAT)\n"));
  EXPECT_THAT(help, HasSubstr("\n  prog fit 'a  b.kx' --model FLAT --weights 1,2 &&\n  prog fit "
                              "c_of_a_very_long_name_that_fills_the_line.kx --model BENT \\\n"
                              "      --weights 3,4\n\nA note of two lines.\n"));
}

TEST_F(Program, ManPageTakesNoTextForACommandAndTellsSharedOptionsOnce) {
  const std::string page = manPage(tableOf(app), "1.2");
  EXPECT_THAT(page, HasSubstr("\nFits [all] of it's \\eparts.\n"));
  EXPECT_THAT(page, HasSubstr("\n\\&.kx files, in the order of the \\fBline\\fR\n"));
  EXPECT_THAT(page, HasSubstr("\n\\&'a' before b\n"));
  EXPECT_THAT(page, HasSubstr("\n.SS Shared\nOf fit and join.\n.TP\n\\fB\\-\\-model\\fR\\ "
                              "\\fIFLAT\\fR|\\fIBENT\\fR\n"));
  EXPECT_EQ(page.find("fB\\-\\-model"), page.rfind("fB\\-\\-model"));
}

TEST_F(Program, ScriptsQuoteWhatShellsWouldRead) {
  EXPECT_THAT(zshCompletion(tableOf(app)), HasSubstr("'fit:Fits [all] of it'\\''s \\parts'"));
  EXPECT_THAT(zshCompletion(tableOf(app)), HasSubstr("'--deep=-[=N for less]::N: '"));
  EXPECT_THAT(bashCompletion(tableOf(app)), HasSubstr("--model) value='one FLAT BENT' ;;"));
}

TEST_F(Program, MisuseNamesTheUnknownWordBeforeWhatIsMissing) {
  const std::pair<const char*, const char*> cases[] = {
      {"fti a", "fti: no such command; did you mean fit?"},
      {"fit --modle=FLAT", "--modle: no such option; did you mean --model?"},
      {"fit a --speed 3", "--speed: no such option; see `prog fit --help`"},
      {"--model FLAT fit a", "--model stands behind the command: prog fit --model"},
      {"fit", "STRIP is required; see `prog fit --help`"},
      {"--modle", "--modle: no such option; see `prog --help`"}};
  for (const auto& [call, said] : cases) EXPECT_EQ(misuse(call), said) << call;
}

}  // namespace CommandLine
