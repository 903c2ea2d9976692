// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>

#include <gmock/gmock.h>

#include "platform/orvek/Statistic.h"
#include "platform/orvek/StatisticFiles.h"
#include "tests/support/TemporaryFolder.h"

using namespace OrvekStatistic;
using testing::ElementsAre, testing::HasSubstr;

namespace {

std::size_t binOf(const Bins& empty, float value) {
  Bins bins = empty;
  countInto(bins, value);
  const auto hit = std::find(bins.counts.begin(), bins.counts.end(), 1u);
  return static_cast<std::size_t>(hit - bins.counts.begin());  // size() when beside the range
}

Statistic smallStatistic() {
  Statistic statistic(-1.0, 1.0, 0.5);
  for (const float value : {-3.0F, -1.0F, -0.25F, 0.0F, 0.1F, 1.0F, 2.5F}) {
    statistic.addValue(value);
  }
  statistic.compute();
  return statistic;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

}  // namespace

TEST(Bins, TakeAValueOnAnEdgeIntoTheBinAboveIt) {
  const Bins bins = emptyBins(-2.0, 2.0, 0.02);
  ASSERT_EQ(bins.counts.size(), 200u);
  for (int i = 0; i < 200; ++i) {
    const auto edge = static_cast<float>((i - 100) / 50.0);  // -2, -1.98, ... as one would write it
    EXPECT_EQ(binOf(bins, edge), static_cast<std::size_t>(i)) << edge;
    // Less than the range's lower end lies in no bin.
    const std::size_t under = i > 0 ? static_cast<std::size_t>(i - 1) : bins.counts.size();
    EXPECT_EQ(binOf(bins, std::nextafter(edge, -9.0F)), under) << edge;
  }
}

TEST(Bins, CloseTheRangeAtItsUpperEnd) {
  Bins bins = emptyBins(-2.0, 2.0, 0.02);
  for (const float value : {-HUGE_VALF, std::nextafter(-2.0F, -9.0F), NAN, 2.0F,
                            std::nextafter(2.0F, 9.0F), 1e30F, HUGE_VALF}) {
    countInto(bins, value);
  }
  EXPECT_EQ(bins.below, 2u);
  EXPECT_EQ(bins.above, 3u);
  EXPECT_EQ(bins.counts.back(), 1u);
  EXPECT_EQ(totalOf(bins), 6u);  // all but the NaN
}

TEST(Bins, FillTheRangeWhetherOrNotTheWidthDividesIt) {
  EXPECT_THAT(emptyBins(0.0, 0.3, 0.1).edges, ElementsAre(0.0F, 0.1F, 0.2F, 0.3F));
  EXPECT_THAT(emptyBins(0.0, 1.0, 0.3).edges, ElementsAre(0.0F, 0.3F, 0.6F, 0.9F, 1.0F));
  EXPECT_THAT(emptyBins(0.0, 1.0, 5.0).edges, ElementsAre(0.0F, 1.0F));
  EXPECT_EQ(emptyBins(0.0, 4.0, 0.1).counts.size(), 40u);
  EXPECT_EQ(emptyBins(0.0, 1.0, 1e-6).counts.size(), mostBins);
}

TEST(Bins, AgreeWithASearchAmongTheEdges) {
  std::mt19937 source(11);
  for (const Bins& bins : {emptyBins(-2.0, 2.0, 0.02), emptyBins(0.0, 1.0, 0.3),
                           emptyBins(100.0, 101.0, 1e-5), emptyBins(-1e30, 3e38, 7e36)}) {
    std::uniform_real_distribution<float> draw(bins.edges.front(), bins.edges.back());
    for (int i = 0; i < 2000; ++i) {
      // Every second value is an edge itself.
      const float value =
          i % 2 ? draw(source) : bins.edges[source() % static_cast<unsigned>(bins.counts.size())];
      const auto above = std::upper_bound(bins.edges.begin(), bins.edges.end() - 1, value);
      ASSERT_EQ(binOf(bins, value), static_cast<std::size_t>(above - bins.edges.begin() - 1))
          << value << ", seed 11";
    }
  }
}

TEST(Statistic, RefusesARangeThatMakesNoBinsAndNamesIt) {
  const double inf = std::numeric_limits<double>::infinity(), no = std::nan("");
  const double cases[][3] = {{2, -2, 0.1}, {1, 1, 0.1},  {0, 1, 0},      {0, 1, -0.1},
                             {0, 1, no},   {no, 1, 0.1}, {0, inf, 0.1},  {0, 1e300, 1e298},
                             {0, 1, inf},  {0, 1, 1e-7}, {0, 1, 5e-324}, {1e6, 1e6 + 1, 1e-3}};
  for (const auto& [lower, upper, width] : cases) {
    EXPECT_THROW(Statistic(lower, upper, width), std::invalid_argument)
        << lower << " " << upper << " " << width;
  }
  EXPECT_THAT([] { const Statistic refused(2.5, -2.5, 0.125); },
              testing::ThrowsMessage<std::invalid_argument>(
                  HasSubstr("2.5 to -2.5 in bins of 0.125: the lower bound must be")));
}

TEST(Statistic, TellsFiguresOfAllValuesAndBinsOfThoseInTheRange) {
  Statistic statistic = smallStatistic();
  EXPECT_EQ(statistic.size(), 7u);
  EXPECT_THAT(statistic.bins().counts, ElementsAre(1u, 1u, 2u, 1u));
  EXPECT_EQ(statistic.bins().below, 1u);
  EXPECT_EQ(statistic.bins().above, 1u);
  const Summary& summary = statistic.summary();
  EXPECT_EQ(summary.moments.minimum, -3.0);
  EXPECT_EQ(summary.moments.maximum, 2.5);
  EXPECT_EQ(summary.median, 0.0);
  EXPECT_DOUBLE_EQ(summary.nmad, 1.4826);  // median of 0, 0.1, 0.25, 1, 1, 2.5, 3
  EXPECT_DOUBLE_EQ(summary.quantiles[1], -0.625);
  EXPECT_DOUBLE_EQ(statistic.quantile(0.75), (0.1F + 1.0) / 2.0);
}

TEST(Statistic, CountsWhatIsNotFiniteApart) {
  Statistic statistic = smallStatistic();
  const Summary before = statistic.summary();
  for (const float value : {NAN, HUGE_VALF, -HUGE_VALF, -NAN, HUGE_VALF}) statistic.addValue(value);
  statistic.compute();
  EXPECT_EQ(statistic.size(), 7u);
  EXPECT_EQ(statistic.summary().moments.mean, before.moments.mean);
  EXPECT_EQ(statistic.summary().moments.maximum, 2.5);
  EXPECT_EQ(statistic.bins().above, 1u);
  EXPECT_EQ(statistic.summary().notNumbers, 2u);
  EXPECT_EQ(statistic.summary().infinite, 3u);
  EXPECT_THAT(summaryText(statistic.summary()), HasSubstr("\nnot_a_number        2\n"));
}

TEST(Statistic, OfNothingIsDefined) {
  Statistic statistic(-2.0, 2.0, 0.02);
  statistic.compute();
  EXPECT_EQ(statistic.size(), 0u);
  EXPECT_TRUE(std::isnan(statistic.summary().moments.mean));
  EXPECT_TRUE(std::isnan(statistic.summary().quantiles[0]));
  EXPECT_TRUE(std::isnan(statistic.quantile(0.9)));
  EXPECT_EQ(totalOf(statistic.bins()), 0u);
}

TEST(Statistic, WritesTextsThatReadBackToTheSameBits) {
  const TemporaryFolder folder;
  Statistic statistic(-2.0, 2.0, 0.02);
  std::mt19937 source(3);
  std::student_t_distribution<float> draw(2.0F);
  for (int i = 0; i < 1000; ++i) statistic.addValue(draw(source));
  ASSERT_EQ(statistic.write(folder / "stat.txt", folder / "hist.txt"), "");  // computes by itself

  Summary summary;
  Bins bins;
  ASSERT_EQ(readSummary(folder / "stat.txt", summary), "");
  ASSERT_EQ(readHistogram(folder / "hist.txt", bins), "");
  EXPECT_EQ(summaryText(summary), summaryText(statistic.summary()));
  EXPECT_EQ(summary.moments.mean, statistic.summary().moments.mean);
  EXPECT_EQ(summary.nmad, statistic.summary().nmad);
  EXPECT_EQ(bins.edges, statistic.bins().edges);
  EXPECT_EQ(bins.counts, statistic.bins().counts);
  EXPECT_EQ(totalOf(bins), 1000u);
  EXPECT_THAT(contentOf(folder / "hist.txt"), HasSubstr("\n-1.98 -1.96 "));

  EXPECT_THAT(statistic.write(folder / "no/stat.txt", folder / "hist.txt"),
              HasSubstr("Statistic::write: " + (folder / "no/stat.txt").string() + ": "));
}

TEST(StatisticFiles, OfAnotherKindAreRefusedByNameAndLine) {
  const TemporaryFolder folder;
  Statistic small = smallStatistic();
  const std::string stat = summaryText(small.summary()), hist = histogramText(small.bins());
  const auto summaryFault = [&](const std::string& content) {
    Summary summary;
    summary.median = 42.0;
    writeContent(folder / "s.txt", content);
    std::string fault = readSummary(folder / "s.txt", summary);
    EXPECT_EQ(summary.median, 42.0);
    return fault;
  };
  const auto histogramFault = [&](const std::string& content) {
    Bins bins;
    writeContent(folder / "h.txt", content);
    std::string fault = readHistogram(folder / "h.txt", bins);
    EXPECT_TRUE(bins.edges.empty());
    return fault;
  };
  EXPECT_EQ(summaryFault(""), (folder / "s.txt").string() + ": count is missing");
  EXPECT_THAT(summaryFault(replaced(stat, "nmad  ", "mad  ")), HasSubstr("nmad is missing"));
  EXPECT_THAT(summaryFault(replaced(stat, "1.4826\n", "1,4826\n")), HasSubstr("line 9: expected"));
  EXPECT_THAT(summaryFault(replaced(stat, " 7\n", " -7\n")), HasSubstr("line 4: expected \"count"));

  EXPECT_THAT(histogramFault(stat), HasSubstr("does not begin with"));
  EXPECT_THAT(histogramFault(hist.substr(0, hist.rfind("0.5 1"))), HasSubstr("4 bins and holds 3"));
  EXPECT_THAT(histogramFault(replaced(hist, "bins 4", "bins 99999999999999")),
              HasSubstr("holds 4"));
  EXPECT_THAT(histogramFault(replaced(hist, "0 0.5 2", "0.1 0.5 2")),
              HasSubstr("line 8: expected"));
  EXPECT_THAT(histogramFault(replaced(hist, "0.5 1 1", "0.5 inf 1")),
              HasSubstr("line 9: expected"));
  EXPECT_THAT(histogramFault(replaced(hist, "0.5 1 1", "0.5 0.5 1")),
              HasSubstr("line 9: expected"));
  EXPECT_THAT(histogramFault(replaced(hist, "0.5 1 1", "0.5 1 -1")), HasSubstr("line 9: expected"));
  EXPECT_THAT(histogramFault(replaced(hist, "0.5 1 1", "0.5 1 18446744073709551615")),
              HasSubstr("line 9: expected"));

  Bins bins;
  EXPECT_THAT(readHistogram(folder / "no.txt", bins),
              HasSubstr((folder / "no.txt").string() + ": "));
  EXPECT_THAT(readHistogram(folder.path(), bins), HasSubstr("is not a regular file"));
}
