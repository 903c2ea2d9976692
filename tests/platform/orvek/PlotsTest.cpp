// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The pages as a reader sees them: their text is taken out of the PDF again.
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <random>
#include <regex>

#include <gmock/gmock.h>

#include "platform/orvek/HistogramPdf.h"
#include "platform/orvek/HistogramPlot.h"
#include "platform/orvek/Statistic.h"
#include "platform/orvek/VectorToPDF.h"
#include "tests/support/ConsoleLines.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using namespace OrvekPDF;
using OrvekStatistic::Statistic;
using testing::AllOf, testing::ElementsAre, testing::HasSubstr, testing::Not;

namespace {

const double notANumber = std::nan("");

/// The page's text, runs of blanks as one.
std::string textOf(const fs::path& pdf) {
  const std::string text = outputOf("pdftotext -layout '" + pdf.string() + "' -");
  return std::regex_replace(text, std::regex("[ \\n\\f]+"), " ");
}

/// Folder of a test, the console's lines, and what lies in the folder in the end.
class Plots : public testing::Test {
 protected:
  std::string draw(Statistic& statistic, const std::string& title, int width = 0, int height = 0) {
    EXPECT_EQ(statistic.write(folder_ / "stat.txt", folder_ / "hist.txt"), "");
    return hist(folder_ / "stat.txt", folder_ / "hist.txt", pdf_, "differences [m]", title, width,
                height);
  }

  TemporaryFolder folder_;
  fs::path pdf_ = folder_ / "page.pdf";
  ConsoleLines lines_;
};

Statistic normalDifferences(int count) {
  Statistic statistic(-2.0, 2.0, 0.02);
  std::mt19937 source(5);
  std::normal_distribution<float> draw(0.003F, 0.021F);
  for (int i = 0; i < count; ++i) statistic.addValue(draw(source));
  return statistic;
}

std::string sizeOf(const fs::path& pdf) {
  const std::string information = outputOf("pdfinfo '" + pdf.string() + "'");
  std::smatch size;
  std::regex_search(information, size, std::regex("Page size: +(\\d+)[.\\d]* x (\\d+)"));
  return size.str(1) + " x " + size.str(2) + " pt";
}

}  // namespace

TEST_F(Plots, OfAHistogramTellTheFiguresInTheUnitOfTheLabel) {
  Statistic statistic(-2.0, 2.0, 0.02);
  for (int i = -500; i <= 500; ++i) statistic.addValue(static_cast<float>(i - 20) * 1e-4F);
  EXPECT_EQ(draw(statistic, "Strips_After adjustment"), "");
  const std::string text = textOf(pdf_);
  for (const char* const part :
       {"Strips_After adjustment", "differences [m]", "count 1 001", "mean −0.0020 m",
        "std. deviation 0.0289 m", "RMS 0.0290 m", "median −0.0020 m", "NMAD 0.0371 m",
        "5 % quantile −0.0470 m", "95 % quantile 0.0430 m", "minimum −0.0520 m",
        "maximum 0.0480 m"}) {
    EXPECT_THAT(text, HasSubstr(part));
  }
  EXPECT_THAT(text, Not(HasSubstr("outside")));
  EXPECT_EQ(sizeOf(pdf_), "595 x 419 pt");  // A5
  EXPECT_TRUE(lines_.empty());
}

TEST_F(Plots, OfAHistogramShowWhereTheValuesAreAndTellHowManyAreElsewhere) {
  Statistic statistic = normalDifferences(20000);
  for (const float far : {1.9F, 1.95F, 50.0F, -3.0F, std::nanf("")}) statistic.addValue(far);
  EXPECT_EQ(draw(statistic, "Bulk", 297, 210), "");
  EXPECT_THAT(textOf(pdf_), AllOf(HasSubstr("outside the plot 0.02 %"), HasSubstr("to its left 1 "),
                                  HasSubstr("to its right 3 "), HasSubstr("not finite 1 "),
                                  HasSubstr("0.05"), Not(HasSubstr("1.5"))));
  EXPECT_EQ(sizeOf(pdf_), "841 x 595 pt");
}

TEST_F(Plots, WithoutValuesSaySo) {
  Statistic none(-2.0, 2.0, 0.02);
  EXPECT_EQ(draw(none, "GroundTruth_After adjustment"), "");
  EXPECT_THAT(textOf(pdf_), AllOf(HasSubstr("GroundTruth_After adjustment"), HasSubstr("no data")));

  Statistic elsewhere(-2.0, 2.0, 0.02);
  elsewhere.addValue(7.5F);
  EXPECT_EQ(draw(elsewhere, "Elsewhere"), "");
  EXPECT_THAT(textOf(pdf_), AllOf(HasSubstr("no values from -2 to 2"), HasSubstr("mean 7.50 m"),
                                  HasSubstr("std. deviation – "), HasSubstr("to its right 1 ")));

  const VectorToPDF plot("StripID [-]", "Offset [m]", "Nothing", {}, {}, pdf_);
  EXPECT_EQ(plot.write2Pdf(false), "");
  EXPECT_THAT(textOf(pdf_), AllOf(HasSubstr("Nothing"), HasSubstr("no data")));
}

TEST_F(Plots, AreDrawnForOneValueEqualValuesAndExtremes) {
  for (const float value : {0.0F, 0.031F, -2.0F, 2.0F, 1e30F}) {
    Statistic statistic(-2.0, 2.0, 0.02);
    statistic.addValue(value);
    EXPECT_EQ(draw(statistic, "One"), "") << value;
    statistic.addValue(value);
    EXPECT_EQ(draw(statistic, "Equal"), "") << value;
  }
  const std::vector<double> places{0.0, 1.0, 2.0};
  for (const std::vector<double>& values :
       {std::vector{0.0, 0.0, 0.0}, {-1.0, -1.0, -1.0}, {-1e100, 0.0, 1e100}, {5e-324, 0.0, 0.0}}) {
    const VectorToPDF plot("x", "y", "Extremes", places, values, pdf_);
    EXPECT_EQ(plot.write2Pdf(true), "") << values[0];
    const VectorToPDF turned("x", "y", "Extremes", values, places, pdf_);
    EXPECT_EQ(turned.write2Pdf(false), "") << values[0];
  }
}

TEST_F(Plots, AgainstStripsHaveWholeNumbersForTicks) {
  const auto ticksOf = [&](std::size_t count) {
    std::vector<double> strips(count), offsets(count, 0.0);
    std::iota(strips.begin(), strips.end(), 0.0);
    offsets.back() = 0.3;
    const VectorToPDF plot("StripID [-]", "Offset [m]", "Offset along z (quantile 90%)", strips,
                           offsets, pdf_);
    EXPECT_EQ(plot.write2Pdf(false), "");
    const std::string text = textOf(pdf_);
    EXPECT_THAT(text, AllOf(HasSubstr("Offset along z (quantile 90%)"), HasSubstr("Offset [m]")));
    // The last line but one of the page, between the lowest tick of the y axis and the label.
    std::smatch ticks;
    std::regex_search(text, ticks, std::regex(" 0 (0[ 0-9]*) StripID \\[-\\]"));
    return ticks.str(1);
  };
  EXPECT_EQ(ticksOf(1), "0");
  EXPECT_EQ(ticksOf(10), "0 1 2 3 4 5 6 7 8 9");
  EXPECT_EQ(ticksOf(500), "0 50 100 150 200 250 300 350 400 450 500");
}

TEST_F(Plots, ShowSeveralVectorsByNameAndRefuseBrokenOnes) {
  const std::string broken = "VectorToPDF::addVector: broken data";
  VectorToPDF plot("time [s]", "height [m]", "Two", pdf_);
  const std::vector<double> x{0.5, 1.5}, y{1.0, 2.0}, z{2.0, 1.0};
  EXPECT_EQ(plot.addVector(x, y, "first"), "");
  EXPECT_EQ(plot.addVector(x, z, "second – °"), "");
  for (const double wrong : {notANumber, HUGE_VAL, -HUGE_VAL, 1e101}) {
    EXPECT_EQ(plot.addVector(x, std::vector{1.0, wrong}, "wrong"), broken);
    EXPECT_EQ(plot.addVector(std::vector{wrong, 1.0}, y, "wrong"), broken);
  }
  EXPECT_EQ(plot.addVector(x, std::vector{1.0}, "short"), broken);
  EXPECT_EQ(plot.write2Pdf(true), "");
  EXPECT_THAT(textOf(pdf_),
              AllOf(HasSubstr("first"), HasSubstr("second – °"), Not(HasSubstr("wrong"))));

  const fs::path other = folder_ / "other.pdf";
  EXPECT_EQ(VectorToPDF("x", "y", "t", x, std::vector{1.0, notANumber}, other).write2Pdf(true),
            broken);
  EXPECT_FALSE(fs::exists(other));
  EXPECT_THAT(lines_, ElementsAre("Warning: " + broken));
}

TEST_F(Plots, ShowEveryTextAsItIsAndExecuteNone) {
  const std::string trap = (folder_ / "trap").string();
  const std::vector<double> x{1.0}, y{1.0};
  for (const std::string& text :
       {"\"; system \"touch " + trap + "\" #", "'; system 'touch " + trap + "' #",
        "`touch " + trap + "`", "$(touch " + trap + ") @trap \\", "\n!touch " + trap + "\n"}) {
    VectorToPDF plot(text, text, text, pdf_);
    EXPECT_EQ(plot.addVector(x, y, text), "");
    EXPECT_EQ(plot.write2Pdf(true), "");
    Statistic statistic = normalDifferences(10);
    EXPECT_EQ(draw(statistic, text), "");
  }
  EXPECT_FALSE(fs::exists(trap));

  const std::string odd = "5°–µ “ü” \"q\" 'q' `q` \\n %d $x @y _{a}^2 <b>&amp; 100%";
  Statistic statistic = normalDifferences(10);
  EXPECT_EQ(draw(statistic, odd), "");
  EXPECT_THAT(textOf(pdf_), HasSubstr(odd));
}

TEST_F(Plots, AreWrittenUnderAnyName) {
  const std::vector<double> x{1.0}, y{1.0};
  for (const char* const name : {"a b.pdf", "\"q\" `q` $x.pdf", "| cat", "~", "a\nb", "°ü\\.pdf"}) {
    EXPECT_EQ(VectorToPDF("x", "y", "t", x, y, folder_ / name).write2Pdf(false), "");
    EXPECT_THAT(contentOf(folder_ / name), testing::StartsWith("%PDF-")) << name;
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()), 6);
}

TEST_F(Plots, RefuseWhatIsNoPairOfFilesAndNoSizeOfPaper) {
  Statistic statistic = normalDifferences(10);
  EXPECT_EQ(draw(statistic, "Old"), "");
  const std::string old = contentOf(pdf_);
  for (const auto& [width, height] : {std::pair{119, 0}, {0, 99}, {2001, 0}, {-210, 148}}) {
    EXPECT_THAT(draw(statistic, "New", width, height),
                HasSubstr(pdf_.string() + ": a page of " + std::to_string(width) + " x "));
  }
  const auto histOf = [&](const fs::path& summary, const fs::path& histogram) {
    return hist(summary, histogram, pdf_, "x", "New", 0, 0);
  };
  const fs::path stat = folder_ / "stat.txt", bins = folder_ / "hist.txt";
  EXPECT_THAT(histOf(folder_ / "no", bins),
              HasSubstr("OrvekPDF::hist: " + (folder_ / "no").string() + ": "));
  EXPECT_THAT(histOf(stat, stat), HasSubstr(stat.string() + ": does not begin with"));
  Statistic another = normalDifferences(11);
  EXPECT_EQ(another.write(stat, folder_ / "ignored.txt"), "");
  EXPECT_THAT(histOf(stat, bins), HasSubstr("counts 10 values, but " + stat.string()));
  EXPECT_EQ(contentOf(pdf_), old);
  EXPECT_EQ(lines_.size(), 7u);
}

TEST_F(Plots, WithoutGnuplotWarnAndKeepTheOldPage) {
  writeContent(pdf_, "old");
  const std::string path = variable("PATH");
  setenv("PATH", folder_.path().c_str(), 1);
  Statistic statistic = normalDifferences(10);
  const std::string histogramFault = draw(statistic, "New");
  const std::string vectorFault = VectorToPDF("x", "y", "t", pdf_).write2Pdf(false);
  setenv("PATH", path.c_str(), 1);
  EXPECT_THAT(histogramFault,
              testing::StartsWith("OrvekPDF::hist: " + pdf_.string() + ": gnuplot"));
  EXPECT_THAT(vectorFault,
              testing::StartsWith("VectorToPDF::write2Pdf: " + pdf_.string() + ": gnuplot"));
  EXPECT_THAT(lines_, ElementsAre("Warning: " + histogramFault, "Warning: " + vectorFault));
  EXPECT_EQ(contentOf(pdf_), "old");
}

TEST(ShownBins, HoldTheBulkAndLeaveTheSingleOutlier) {
  Statistic statistic = normalDifferences(20000);
  statistic.addValue(1.9F);
  statistic.compute();
  const ShownBins bulk = shownBins(statistic.bins());
  EXPECT_LE(statistic.bins().edges[bulk.first], 0.003F - 3 * 0.021F);  // three sigmas to each side
  EXPECT_GE(statistic.bins().edges[bulk.end], 0.003F + 3 * 0.021F);
  EXPECT_LT(bulk.end - bulk.first, 20u);

  for (int i = -200; i < 200; ++i) {  // a plateau from end to end
    for (int k = 0; k < 100; ++k) statistic.addValue(static_cast<float>(i) / 100.0F);
  }
  statistic.compute();
  EXPECT_EQ(shownBins(statistic.bins()).first, 0u);
  EXPECT_EQ(shownBins(statistic.bins()).end, 200u);
}

TEST(ShownBins, StayInTheRangeAtItsEnds) {
  for (const float value : {-2.0F, 2.0F}) {
    OrvekStatistic::Bins bins = OrvekStatistic::emptyBins(-2.0, 2.0, 0.02);
    OrvekStatistic::countInto(bins, value);
    const ShownBins shown = shownBins(bins);
    EXPECT_EQ(shown.first, value < 0 ? 0u : 190u);
    EXPECT_EQ(shown.end, value < 0 ? 10u : 200u);
  }
}

TEST(FigureText, HasTheDecimalsOfTheSpread) {
  EXPECT_EQ(figureText(-0.00031, 0.0213, "m"), "−0.0003 m");
  EXPECT_EQ(figureText(-0.00001, 0.0213, "m"), "0.0000 m");  // no minus zero
  EXPECT_EQ(figureText(1234.5, 250.0, ""), "1234");
  EXPECT_EQ(figureText(1.5e30, 1e30, "m"), "1.5e+30 m");
  EXPECT_EQ(figureText(notANumber, 1.0, "m"), "–");
  EXPECT_EQ(figureText(0.0, notANumber, "m"), "0 m");
  EXPECT_EQ(unitOf("differences [m]"), "m");
  EXPECT_EQ(unitOf("StripID [-]"), "");
  EXPECT_EQ(unitOf("[m] differences"), "");
}
