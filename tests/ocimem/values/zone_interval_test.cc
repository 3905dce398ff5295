// Time zone rules from zoneinfo, zone texts, interval text and descriptors.
#include <gtest/gtest.h>

#include <string>

#include "objects/value_descriptors.h"
#include "calendar.h"
#include "datetime.h"
#include "descriptor.h"
#include "interval_text.h"
#include "timezone.h"

namespace {

using ocimem::values::IntervalKind;
using ocimem::values::IntervalValue;

std::int64_t Unix(int y, int mo, int d, int h, int mi, int s) {
  return ocimem::values::ToUnixSeconds(y, mo, d, h, mi, s);
}

TEST(ZoneTest, RegionLookupIgnoresCase) {
  EXPECT_NE(ocimem::values::FindRegion("America/Los_Angeles"), nullptr);
  EXPECT_EQ(ocimem::values::FindRegion("america/los_angeles"),
      ocimem::values::FindRegion("AMERICA/LOS_ANGELES"));
  EXPECT_NE(ocimem::values::FindRegion("america/los_angeles"), nullptr);
  EXPECT_NE(ocimem::values::FindRegion("UTC"), nullptr);
  EXPECT_EQ(ocimem::values::FindRegion("Mars/Base"), nullptr);
}

TEST(ZoneTest, TransitionsOfThePast) {
  const auto* z = ocimem::values::FindRegion("America/Los_Angeles");
  ASSERT_NE(z, nullptr);
  EXPECT_EQ(z->At(Unix(1999, 10, 1, 8, 30, 10)).offset_seconds, -7 * 3600);
  EXPECT_EQ(z->At(Unix(1999, 10, 1, 8, 30, 10)).abbreviation, "PDT");
  EXPECT_EQ(z->At(Unix(1999, 12, 1, 9, 30, 10)).abbreviation, "PST");
}

TEST(ZoneTest, FarFutureUsesTheFooterRule) {
  const auto* z = ocimem::values::FindRegion("America/New_York");
  ASSERT_NE(z, nullptr);
  EXPECT_EQ(z->At(Unix(2150, 7, 1, 12, 0, 0)).abbreviation, "EDT");
  EXPECT_EQ(z->At(Unix(2150, 1, 1, 12, 0, 0)).abbreviation, "EST");
  EXPECT_EQ(z->At(Unix(9999, 7, 1, 12, 0, 0)).offset_seconds, -4 * 3600);
}

TEST(ZoneTest, GapHasNoInstantOverlapHasTwo) {
  const auto* z = ocimem::values::FindRegion("America/Los_Angeles");
  ASSERT_NE(z, nullptr);
  EXPECT_TRUE(z->FromLocal(Unix(2000, 4, 2, 2, 30, 0)).empty());
  EXPECT_EQ(z->FromLocal(Unix(1999, 10, 31, 1, 30, 10)).size(), 2U);
  EXPECT_EQ(z->FromLocal(Unix(1999, 10, 31, 3, 30, 10)).size(), 1U);
  // Gaps of the footer rule too.
  EXPECT_TRUE(z->FromLocal(Unix(2200, 3, 9, 2, 30, 0)).empty());
}

TEST(ZoneTest, MalformedTzifIsRejected) {
  EXPECT_EQ(ocimem::values::ZoneRules::FromTzif(""), nullptr);
  EXPECT_EQ(ocimem::values::ZoneRules::FromTzif("TZxx" + std::string(60, '\0')), nullptr);
  EXPECT_EQ(ocimem::values::ZoneRules::FromTzif("TZif2" + std::string(20, '\0')), nullptr);
}

struct OffsetCase {
  const char* text;
  int rc;
  int minutes;
};

TEST(ZoneTest, OffsetTexts) {
  const OffsetCase cases[] = {{"+05:30", 0, 330}, {"-8:00", 0, -480}, {"00:00", 0, 0},
                              {"+15:00", 0, 900},  {"+16:00", 1874, 0}, {"+01:60", 1875, 0},
                              {"-03:-30", 1875, 0}, {"America/Los_Angeles", -1, 0}, {"+5", -1, 0}};
  for (const OffsetCase& c : cases) {
    int minutes = 0;
    EXPECT_EQ(ocimem::values::ParseOffset(c.text, &minutes), c.rc) << c.text;
    if (c.rc == 0) {
      EXPECT_EQ(minutes, c.minutes) << c.text;
    }
  }
}

// Twenty minute digits would overflow an int if they were all accumulated.
TEST(ZoneTest, OverlongOffsetMinutesAreRefusedWithoutOverflow) {
  int minutes = 0;
  EXPECT_EQ(ocimem::values::ParseOffset("+05:99999999999999999999", &minutes), 1875);
  EXPECT_EQ(ocimem::values::ParseOffset("-05:00000000000000000000", &minutes), 1875);
  ocimem::values::Zone z;
  EXPECT_EQ(ocimem::values::ResolveZoneText("+01:12345678901234567890", &z), 1875);
}

TEST(ZoneTest, SessionZoneSettings) {
  ocimem::values::Zone z;
  ASSERT_EQ(ocimem::values::ResolveSessionZone("+02:00", &z), 0);
  EXPECT_EQ(z.offset_minutes, 120);
  ASSERT_EQ(ocimem::values::ResolveSessionZone("America/Los_Angeles", &z), 0);
  EXPECT_TRUE(z.is_region);
  ASSERT_EQ(ocimem::values::ResolveSessionZone("DB_TZ", &z), 0);
  EXPECT_EQ(z.offset_minutes, 0);
  EXPECT_FALSE(z.is_region);
  EXPECT_EQ(ocimem::values::ResolveSessionZone("Nowhere/Land", &z), 1882);
}

// ---- intervals ----

TEST(IntervalTextTest, FormatsAndParses) {
  IntervalValue v;
  ASSERT_EQ(ocimem::values::MakeDaySecond(1, 2, 2, 2, 980000000, &v), 0);
  std::string text;
  ASSERT_EQ(ocimem::values::FormatInterval(IntervalKind::DaySecond, v, 2, 6, &text), 0);
  EXPECT_EQ(text, "+01 02:02:02.980000");
  IntervalValue back;
  ASSERT_EQ(ocimem::values::ParseInterval(IntervalKind::DaySecond, text, &back), 0);
  EXPECT_EQ(back.seconds, v.seconds);
  EXPECT_EQ(back.nanos, v.nanos);
}

TEST(IntervalTextTest, PrecisionOutOfRange) {
  std::string text;
  EXPECT_EQ(ocimem::values::FormatInterval(IntervalKind::YearMonth, IntervalValue{}, 10, 0, &text),
            30088);
  EXPECT_EQ(ocimem::values::FormatInterval(IntervalKind::DaySecond, IntervalValue{}, 2, 10, &text),
            30088);
}

TEST(IntervalTextTest, LargestValuesRoundTrip) {
  IntervalValue v;
  ASSERT_EQ(ocimem::values::MakeYearMonth(-999999999, -11, &v), 0);
  std::string text;
  ASSERT_EQ(ocimem::values::FormatInterval(IntervalKind::YearMonth, v, 9, 0, &text), 0);
  EXPECT_EQ(text, "-999999999-11");
  ASSERT_EQ(ocimem::values::MakeDaySecond(999999999, 23, 59, 59, 999999999, &v), 0);
  ASSERT_EQ(ocimem::values::FormatInterval(IntervalKind::DaySecond, v, 9, 9, &text), 0);
  EXPECT_EQ(text, "+999999999 23:59:59.999999999");
  EXPECT_EQ(ocimem::values::MakeDaySecond(999999999, 24, 0, 0, 0, &v), 1873);
}

TEST(IntervalTextTest, NanosecondsCarryIntoSeconds) {
  IntervalValue v;
  ASSERT_EQ(ocimem::values::MakeDaySecond(0, 0, 0, 1, -1, &v), 0);
  EXPECT_EQ(v.seconds, 0);
  EXPECT_EQ(v.nanos, 999999999);
  ASSERT_EQ(ocimem::values::MakeDaySecond(0, 0, 0, 0, 2500000000, &v), 0);
  EXPECT_EQ(v.seconds, 2);
  EXPECT_EQ(v.nanos, 500000000);
}

// ---- descriptors ----

TEST(DescriptorTest, AllocFreeAndRecognise) {
  void* ts = nullptr;
  void* ym = nullptr;
  ASSERT_EQ(ocimem::AllocValueDescriptor(nullptr, OCI_DTYPE_TIMESTAMP_TZ, &ts), OCI_SUCCESS);
  ASSERT_EQ(ocimem::AllocValueDescriptor(nullptr, OCI_DTYPE_INTERVAL_YM, &ym), OCI_SUCCESS);
  EXPECT_TRUE(ocimem::IsValueDescriptor(ts, OCI_DTYPE_TIMESTAMP_TZ));
  EXPECT_FALSE(ocimem::IsValueDescriptor(ts, OCI_DTYPE_TIMESTAMP));
  EXPECT_TRUE(ocimem::IsValueDescriptor(ym, OCI_DTYPE_INTERVAL_YM));
  EXPECT_EQ(ocimem::values::AsInterval(ts), nullptr);
  EXPECT_NE(ocimem::values::AsDateTime(ts), nullptr);
  ocimem::FreeValueDescriptor(ts);
  EXPECT_FALSE(ocimem::IsValueDescriptor(ts, OCI_DTYPE_TIMESTAMP_TZ));
  ocimem::FreeValueDescriptor(ts);  // a second free is ignored
  ocimem::FreeValueDescriptor(ym);
}

TEST(DescriptorTest, UnknownTypeIsInvalidHandle) {
  void* d = nullptr;
  EXPECT_EQ(ocimem::AllocValueDescriptor(nullptr, OCI_DTYPE_LOB, &d), OCI_INVALID_HANDLE);
  EXPECT_EQ(d, nullptr);
  EXPECT_EQ(ocimem::AllocValueDescriptor(nullptr, OCI_DTYPE_TIMESTAMP, nullptr), OCI_ERROR);
}

TEST(DescriptorTest, CopyIsDeep) {
  void* a = nullptr;
  void* b = nullptr;
  ASSERT_EQ(ocimem::AllocValueDescriptor(nullptr, OCI_DTYPE_TIMESTAMP_TZ, &a), OCI_SUCCESS);
  ASSERT_EQ(ocimem::AllocValueDescriptor(nullptr, OCI_DTYPE_TIMESTAMP_TZ, &b), OCI_SUCCESS);
  auto* da = ocimem::values::AsDateTime(a);
  da->value.year = 2001;
  da->value.region = "America/Los_Angeles";
  ocimem::CopyValueDescriptor(a, b);
  da->value.region = "UTC";
  auto* db = ocimem::values::AsDateTime(b);
  EXPECT_EQ(db->value.year, 2001);
  EXPECT_EQ(db->value.region, "America/Los_Angeles");
  ocimem::FreeValueDescriptor(a);
  ocimem::FreeValueDescriptor(b);
}

TEST(DescriptorTest, FreshIntervalIsZero) {
  void* d = nullptr;
  ASSERT_EQ(ocimem::AllocValueDescriptor(nullptr, OCI_DTYPE_INTERVAL_DS, &d), OCI_SUCCESS);
  EXPECT_EQ(ocimem::values::AsInterval(d)->value.seconds, 0);
  EXPECT_EQ(ocimem::values::AsInterval(d)->kind, IntervalKind::DaySecond);
  ocimem::FreeValueDescriptor(d);
}

}  // namespace
