// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What happens when gnuplot is missing, fails, hangs or writes nonsense: shell scripts stand in its
// place.
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>

#include <gmock/gmock.h>
#include <sys/wait.h>

#include "platform/orvek/Gnuplot.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using namespace OrvekPDF;
using namespace std::chrono_literals;
using testing::AllOf, testing::HasSubstr, testing::SizeIs, testing::StartsWith;

namespace {

/// A folder with a program `gnuplot` that is first in PATH for as long as this lives.
class FakeGnuplot {
 public:
  explicit FakeGnuplot(const std::string& shellScript) : path_(variable("PATH")) {
    writeContent(folder_ / "gnuplot", "#!/bin/sh\n" + shellScript);
    fs::permissions(folder_ / "gnuplot", fs::perms::owner_all);
    setenv("PATH", (folder_.path().string() + ":" + path_).c_str(), 1);
  }
  ~FakeGnuplot() { setenv("PATH", path_.c_str(), 1); }
  FakeGnuplot(const FakeGnuplot&) = delete;
  FakeGnuplot& operator=(const FakeGnuplot&) = delete;

 private:
  TemporaryFolder folder_;
  std::string path_;
};

/// A folder with an old page; afterwards the page must be as it was, nothing may lie beside it and
/// no process may wait to be reaped.
class FailingGnuplot : public testing::Test {
 protected:
  void SetUp() override { writeContent(pdf_, "old"); }
  void TearDown() override {
    EXPECT_EQ(contentOf(pdf_), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()), 1);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  }

  /// @return the fault without the page's name
  std::string faultOf(const std::string& shellScript, std::chrono::milliseconds limit = 60s,
                      const std::string& input = "plot x\n") {
    const FakeGnuplot gnuplot(shellScript);
    const std::string fault = drawPdf(input, pdf_, limit);
    EXPECT_THAT(fault, StartsWith(pdf_.string() + ": "));
    return fault.substr(std::min(fault.size(), pdf_.string().size() + 2));
  }

  TemporaryFolder folder_;
  fs::path pdf_ = folder_ / "page.pdf";
};

}  // namespace

TEST_F(FailingGnuplot, IsNamedWithWhatItSaid) {
  EXPECT_EQ(faultOf("echo 'line 0: no such' >&2; echo '  terminal' >&2; exit 3"),
            "gnuplot ended with status 3: line 0: no such terminal");
  EXPECT_EQ(faultOf("kill -SEGV $$"), "gnuplot was ended by signal 11");
  EXPECT_EQ(faultOf("sleep 600", 100ms), "gnuplot did not finish within 0.1 s and was ended");
}

TEST_F(FailingGnuplot, ThatIsMissingIsToldApart) {
  const TemporaryFolder empty;
  const std::string path = variable("PATH");
  setenv("PATH", empty.path().c_str(), 1);
  const std::string fault = drawPdf("plot x\n", pdf_);
  setenv("PATH", path.c_str(), 1);
  EXPECT_THAT(fault, StartsWith(pdf_.string() + ": gnuplot cannot be started: "));
}

TEST_F(FailingGnuplot, ThatWritesNoWholePageIsNoSuccess) {
  const std::string none = "gnuplot wrote no whole PDF";
  EXPECT_EQ(faultOf("exit 0"), none);
  EXPECT_EQ(faultOf("echo 'no font' >&2; echo Hello; exit 0"), none + ": no font");
  EXPECT_EQ(faultOf("printf '%%PDF-1.5 half'"), none);
  EXPECT_EQ(faultOf("printf '%%PDF-1.5 half'; exit 1"), "gnuplot ended with status 1");
  EXPECT_EQ(faultOf("printf 'x%%PDF-1.5 %%%%EOF'"), none);
}

TEST_F(FailingGnuplot, ThatDoesNotReadItsScriptBlocksNothing) {
  const std::string longScript(std::size_t{1} << 20U, '#');
  EXPECT_EQ(faultOf("exec <&-; exit 2", 60s, longScript), "gnuplot ended with status 2");
}

TEST_F(FailingGnuplot, ThatSaysTooMuchIsReadToItsEnd) {
  const std::string flood = "head -c 20000000 /dev/zero | tr '\\0' x >&2; exit 1";
  EXPECT_THAT(faultOf(flood, 60s, std::string(1'000'000, '#')),
              AllOf(StartsWith("gnuplot ended with status 1: xxx"), SizeIs(testing::Lt(4200u))));
}

TEST_F(FailingGnuplot, WhoseChildKeepsRunningIsNotWaitedFor) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(faultOf("sleep 60 & exit 4"), "gnuplot ended with status 4");  // it holds the pipe
  EXPECT_LT(std::chrono::steady_clock::now() - start, 50s);
}

TEST_F(FailingGnuplot, IsNotStartedWhereItsPageCannotBeWritten) {
  const fs::path nowhere = folder_ / "no/page.pdf";
  const FakeGnuplot gnuplot("exit 0");
  EXPECT_THAT(drawPdf("plot x\n", nowhere), StartsWith(nowhere.string() + ": cannot be written: "));
  EXPECT_THAT(drawPdf("plot x\n", folder_.path()), HasSubstr(folder_.path().string() + ": "));
}

TEST(Gnuplot, IsBelievedByItsPageWhereTheHostReapsEveryChild) {
  const TemporaryFolder folder;
  const auto before = signal(SIGCHLD, SIG_IGN);
  const std::string fault = drawPdf("set terminal pdfcairo\nplot x\n", folder / "page.pdf");
  signal(SIGCHLD, before);
  EXPECT_EQ(fault, "");
  EXPECT_THAT(contentOf(folder / "page.pdf"), StartsWith("%PDF-"));
}

TEST(Quoted, HoldsNoCharacterThatMeansSomething) {
  EXPECT_EQ(quoted("Offset z", 80), "\"Offset z\"");
  // Digits too: after an octal number gnuplot would take them for its continuation.
  EXPECT_EQ(quoted("\".5`", 80), "\"\\042\\056\\065\\140\"");
  EXPECT_EQ(quoted(std::string("a\nb\0c\x7F", 6), 80), "\"a b c \"");
  EXPECT_EQ(quoted("°", 80), "\"\\302\\260\"");
}

TEST(Quoted, ReplacesWhatIsNoUtf8AndCutsBetweenCharacters) {
  const std::string replacement = "\\357\\277\\275", dots = "\\342\\200\\246";
  for (const char* const broken : {"\xFF", "\xC0", "\x80", "\xED", "\xF5"}) {
    EXPECT_EQ(quoted(broken, 80), "\"" + replacement + "\"");
  }
  EXPECT_EQ(quoted("\xC2", 80), "\"" + replacement + "\"");  // ends too early
  EXPECT_EQ(quoted("\xED\xA0\x80", 80), "\"" + replacement + replacement + replacement + "\"");
  EXPECT_EQ(quoted("°°°", 3), "\"\\302\\260\\302\\260\\302\\260\"");
  EXPECT_EQ(quoted("°°°°", 3), "\"\\302\\260\\302\\260" + dots + "\"");
}

TEST(Numbers, AreRoundAndGrouped) {
  EXPECT_EQ(grouped(0), "0");
  EXPECT_EQ(grouped(999), "999");
  EXPECT_EQ(grouped(1000), "1 000");
  EXPECT_EQ(grouped(1234567), "1 234 567");
  EXPECT_DOUBLE_EQ(roundStep(0.0031), 0.005);
  EXPECT_DOUBLE_EQ(roundStep(1.0), 1.0);
  EXPECT_DOUBLE_EQ(roundStep(51.0), 100.0);
}
