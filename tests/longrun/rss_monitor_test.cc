// The memory verdict of the long run: samples before the warm-up are left
// out, growth is measured from the first sample after it, and the slope is
// the least-squares fit in bytes per 1,000 calls.
#include "rss_monitor.h"

#include <gtest/gtest.h>

namespace longrun {
namespace {

TEST(RssMonitorTest, GrowthDuringWarmUpIsNotCounted) {
  const RssVerdict v = JudgeRss({{0, 1000, 10}, {50, 9000, 20}, {100, 9100, 30}, {200, 9100, 40}},
                                100, 2048);
  EXPECT_EQ(1000, v.nFirstKb);
  EXPECT_EQ(9100, v.nWarmKb);
  EXPECT_EQ(9100, v.nMaxKb);
  EXPECT_EQ(9100, v.nLastKb);
  EXPECT_EQ(30, v.nWarmHeapKb);
  EXPECT_EQ(40, v.nLastHeapKb);
  EXPECT_DOUBLE_EQ(0.0, v.dSlope);
  EXPECT_TRUE(v.bFlat);
}

TEST(RssMonitorTest, GrowthBeyondTheBoundAfterWarmUpIsNotFlat) {
  const RssVerdict v =
      JudgeRss({{0, 1000, 0}, {100, 5000, 0}, {200, 6000, 0}, {300, 7049, 0}}, 100, 2048);
  EXPECT_EQ(7049, v.nMaxKb);
  EXPECT_FALSE(v.bFlat);
  const RssVerdict w =
      JudgeRss({{0, 1000, 0}, {100, 5000, 0}, {200, 6000, 0}, {300, 7048, 0}}, 100, 2048);
  EXPECT_TRUE(w.bFlat);
}

TEST(RssMonitorTest, SlopeIsBytesPerThousandCalls) {
  // 1 kB more every 1,000 calls: 1,024 bytes per 1,000 calls.
  const RssVerdict v =
      JudgeRss({{0, 50, 0}, {1000, 100, 0}, {2000, 101, 0}, {3000, 102, 0}, {4000, 103, 0}},
               1000, 2048);
  EXPECT_NEAR(1024.0, v.dSlope, 1e-6);
  EXPECT_EQ(100, v.nWarmKb);
  EXPECT_EQ(103, v.nMaxKb);
}

TEST(RssMonitorTest, MaximumIsTakenAnywhereAfterWarmUp) {
  const RssVerdict v = JudgeRss({{10, 100, 0}, {20, 4000, 0}, {30, 100, 0}}, 10, 2048);
  EXPECT_EQ(4000, v.nMaxKb);
  EXPECT_FALSE(v.bFlat);
}

TEST(RssMonitorTest, ResidentMemoryOfThisProcessIsRead) {
  EXPECT_GT(CurrentRssKb(), 0);
}

}  // namespace
}  // namespace longrun
