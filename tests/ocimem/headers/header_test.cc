// The declarations of oci.h: Oracle's values and layouts.
#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

#include "oci.h"
#include "orid.h"

extern "C" int ocimem_c_header_check(void);

namespace {

template <typename A, typename B>
constexpr bool Same() {
  return std::is_same<A, B>::value;
}

// The prototypes that differ from what Oracle's prose documentation shows.
static_assert(Same<decltype(&OCIErrorGet),
                   sword (*)(void*, ub4, OraText*, sb4*, OraText*, ub4, ub4)>(),
              "error code is sb4*");
static_assert(Same<decltype(&OCILobRead),
                   sword (*)(OCISvcCtx*, OCIError*, OCILobLocator*, ub4*, ub4, void*, ub4, void*,
                             OCICallbackLobRead, ub2, ub1)>(),
              "amount before offset");
static_assert(Same<decltype(&OCILogon),
                   sword (*)(OCIEnv*, OCIError*, OCISvcCtx**, const OraText*, ub4,
                             const OraText*, ub4, const OraText*, ub4)>(),
              "OCILogon");
static_assert(Same<decltype(&OCIHandleAlloc),
                   sword (*)(const void*, void**, const ub4, const size_t, void**)>(),
              "OCIHandleAlloc");
static_assert(Same<decltype(&OCIObjectSetAttr),
                   sword (*)(OCIEnv*, OCIError*, void*, void*, OCIType*, const oratext**,
                             const ub4*, const ub4, const ub4*, const ub4, const OCIInd,
                             const void*, const void*)>(),
              "OCIObjectSetAttr");
static_assert(Same<decltype(&OCITypeByName),
                   sword (*)(OCIEnv*, OCIError*, const OCISvcCtx*, const oratext*, ub4,
                             const oratext*, ub4, const oratext*, ub4, OCIDuration,
                             OCITypeGetOpt, OCIType**)>(),
              "OCITypeByName");
static_assert(Same<decltype(&OCICollMax), sb4 (*)(OCIEnv*, const OCIColl*)>(), "OCICollMax");
static_assert(Same<decltype(&OCIStringPtr), oratext* (*)(OCIEnv*, const OCIString*)>(),
              "OCIStringPtr");
static_assert(Same<decltype(&OCIRawPtr), ub1* (*)(OCIEnv*, const OCIRaw*)>(), "OCIRawPtr");
static_assert(Same<decltype(&OCIDateTimeGetTime),
                   sword (*)(void*, OCIError*, OCIDateTime*, ub1*, ub1*, ub1*, ub4*)>(),
              "non-const datetime");

TEST(OciHeader, UsableFromC) { EXPECT_EQ(1, ocimem_c_header_check()); }

TEST(OciHeader, ValueStructLayouts) {
  EXPECT_EQ(22u, sizeof(OCINumber));
  EXPECT_EQ(1u, alignof(OCINumber));
  EXPECT_EQ(3u, sizeof(OCITime));
  EXPECT_EQ(8u, sizeof(OCIDate));
  EXPECT_EQ(2u, alignof(OCIDate));
  EXPECT_EQ(4u, offsetof(OCIDate, OCIDateTime));
}

TEST(OciHeader, BaseTypes) {
  EXPECT_TRUE((std::is_same<ub4, unsigned int>::value));
  EXPECT_TRUE((std::is_same<sb4, int>::value));
  EXPECT_TRUE((std::is_same<ub8, unsigned long>::value));
  EXPECT_TRUE((std::is_same<OCIInd, short>::value));
  EXPECT_TRUE((std::is_same<OCIDuration, unsigned short>::value));
  EXPECT_TRUE((std::is_same<OCIArray, OCIColl>::value));
  EXPECT_TRUE((std::is_same<OCIClobLocator, OCILobLocator>::value));
}

// Indicator and duration constants must work as case labels.
TEST(OciHeader, ConstantsAreConstantExpressions) {
  OCIInd ind = -1;
  int seen = 0;
  switch (ind) {
    case OCI_IND_NOTNULL:
      seen = 1;
      break;
    case OCI_IND_NULL:
      seen = 2;
      break;
    default:
      break;
  }
  EXPECT_EQ(2, seen);
  static_assert(OCI_DURATION_DEFAULT == 8, "duration");
  static_assert(OCI_TYPEGET_HEADER == 0 && OCI_TYPEGET_ALL == 1, "get option");
  static_assert(OCI_TRANS_OTHRMASK == 4293918720u, "mask");
  static_assert(OCI_INVALID_HANDLE == -2 && OCI_NO_DATA == 100, "status");
}

TEST(OciHeader, DateMacros) {
  OCIDate d;
  OCIDateSetDate(&d, 2024, 2, 29);
  OCIDateSetTime(&d, 13, 14, 15);
  sb2 y;
  ub1 mo, dd, h, mi, s;
  OCIDateGetDate(&d, &y, &mo, &dd);
  OCIDateGetTime(&d, &h, &mi, &s);
  EXPECT_EQ(2024, y);
  EXPECT_EQ(2, mo);
  EXPECT_EQ(29, dd);
  EXPECT_EQ(13, h);
  EXPECT_EQ(14, mi);
  EXPECT_EQ(15, s);
}

}  // namespace
