#include "interface/err_lookup.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(ErrLookup, TableHasExactlyTheThreeAdapterRows) {
  ASSERT_EQ(ADP_ERR_LOOKUP_COUNT, 3u);
  EXPECT_EQ(gAdpErrLookup[0].nCode, -1101);
  EXPECT_STREQ(gAdpErrLookup[0].pszText, "Unsupported data type");
  EXPECT_EQ(gAdpErrLookup[1].nCode, -1102);
  EXPECT_STREQ(gAdpErrLookup[1].pszText, "Invalid relese character position");
  EXPECT_EQ(gAdpErrLookup[2].nCode, -1103);
  EXPECT_STREQ(gAdpErrLookup[2].pszText, "Bad format string");
}

TEST(ErrLookup, ReleasePositionExceptionCarriesAdapterText) {
  CKelException e(-1102, "CAdpReleaseParser::Parse", gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
  EXPECT_EQ(e.GetRC(), -1102);
  EXPECT_STREQ(e.GetText(), "Invalid relese character position");
  EXPECT_STREQ(e.GetFunc(), "CAdpReleaseParser::Parse");
}

TEST(ErrLookup, EveryAdapterCodeFindsItsText) {
  for (unsigned long i = 0; i < ADP_ERR_LOOKUP_COUNT; ++i) {
    CKelException e(gAdpErrLookup[i].nCode, "f", gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
    EXPECT_STREQ(e.GetText(), gAdpErrLookup[i].pszText) << gAdpErrLookup[i].nCode;
  }
}

TEST(ErrLookup, HostCodeRaisedWithAdapterTableTakesHostText) {
  CKelException withTable(-8, "CAdp::_Init", gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
  CKelException plain(-8, "CAdp::_Init");
  EXPECT_EQ(withTable.GetRC(), -8);
  ASSERT_NE(withTable.GetText(), nullptr);
  EXPECT_GT(std::strlen(withTable.GetText()), 0u);
  EXPECT_STREQ(withTable.GetText(), plain.GetText());
  for (unsigned long i = 0; i < ADP_ERR_LOOKUP_COUNT; ++i)
    EXPECT_STRNE(withTable.GetText(), gAdpErrLookup[i].pszText);
}

}  // namespace
