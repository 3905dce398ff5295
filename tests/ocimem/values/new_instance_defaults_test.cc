// The values a new object's datetime and interval attributes hold when the
// environment makes new objects not null, read as a host would read them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "oci.h"
#include "orid.h"

namespace {

const OraText* Text(const char* s) { return reinterpret_cast<const OraText*>(s); }
ub4 Len(const char* s) { return static_cast<ub4>(std::strlen(s)); }

class NewInstanceDefaults : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("ORA_SDTZ", "+00:00", 1);
    ASSERT_EQ(OCIEnvCreate(&env_, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr),
              OCI_SUCCESS);
    ASSERT_EQ(OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_), OCI_HTYPE_ERROR, 0, nullptr),
              OCI_SUCCESS);
    const char* db = "new_instance_defaults";
    ASSERT_EQ(OCILogon(env_, err_, &svc_, Text("scott"), 5, Text("tiger"), 5, Text(db), Len(db)),
              OCI_SUCCESS);
    Exec("CREATE TYPE stamp_t AS OBJECT (ts TIMESTAMP(6), tz TIMESTAMP WITH TIME ZONE, "
         "ym INTERVAL YEAR TO MONTH, ds INTERVAL DAY TO SECOND, d DATE)");
    ASSERT_EQ(OCITypeByName(env_, err_, svc_, nullptr, 0, Text("STAMP_T"), 7, nullptr, 0,
                            OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo_),
              OCI_SUCCESS);
  }

  void TearDown() override {
    if (instance_ != nullptr) OCIObjectFree(env_, err_, instance_, OCI_OBJECTFREE_FORCE);
    OCILogoff(svc_, err_);
    OCIHandleFree(err_, OCI_HTYPE_ERROR);
    OCIHandleFree(env_, OCI_HTYPE_ENV);
    unsetenv("ORA_SDTZ");
  }

  void Exec(const char* sql) {
    OCIStmt* stmt = nullptr;
    ASSERT_EQ(OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr),
              OCI_SUCCESS);
    ASSERT_EQ(OCIStmtPrepare(stmt, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX, OCI_DEFAULT),
              OCI_SUCCESS);
    EXPECT_EQ(OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT), OCI_SUCCESS);
    OCIHandleFree(stmt, OCI_HTYPE_STMT);
  }

  void NewNotNullObject() {
    boolean on = 1;
    ASSERT_EQ(OCIAttrSet(env_, OCI_HTYPE_ENV, &on, sizeof on, OCI_ATTR_OBJECT_NEWNOTNULL, err_),
              OCI_SUCCESS);
    ASSERT_EQ(OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, tdo_, nullptr,
                           OCI_DURATION_DEFAULT, 1, &instance_),
              OCI_SUCCESS);
    ASSERT_EQ(OCIObjectGetInd(env_, err_, instance_, &null_struct_), OCI_SUCCESS);
  }

  void* Attr(const char* name, OCIInd* ind) {
    const OraText* names[] = {Text(name)};
    ub4 lengths[] = {Len(name)};
    void* value = nullptr;
    void* attr_null_struct = nullptr;
    OCIType* attr_tdo = nullptr;
    EXPECT_EQ(OCIObjectGetAttr(env_, err_, instance_, null_struct_, tdo_, names, lengths, 1,
                               nullptr, 0, ind, &attr_null_struct, &value, &attr_tdo),
              OCI_SUCCESS);
    return value;
  }

  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  OCISvcCtx* svc_ = nullptr;
  OCIType* tdo_ = nullptr;
  void* instance_ = nullptr;
  void* null_struct_ = nullptr;
};

TEST_F(NewInstanceDefaults, TimestampAttributesHoldTheEarliestDate) {
  NewNotNullObject();
  for (const char* name : {"TS", "TZ"}) {
    SCOPED_TRACE(name);
    OCIInd ind = OCI_IND_NULL;
    auto* slot = static_cast<OCIDateTime**>(Attr(name, &ind));
    EXPECT_EQ(ind, OCI_IND_NOTNULL);
    ASSERT_NE(slot, nullptr);
    ASSERT_NE(*slot, nullptr);
    sb2 year = 0;
    ub1 month = 0, day = 0, hour = 9, minute = 9, second = 9;
    ub4 fsec = 9;
    ASSERT_EQ(OCIDateTimeGetDate(env_, err_, *slot, &year, &month, &day), OCI_SUCCESS);
    ASSERT_EQ(OCIDateTimeGetTime(env_, err_, *slot, &hour, &minute, &second, &fsec), OCI_SUCCESS);
    EXPECT_EQ(year, -4712);
    EXPECT_EQ(month, 1);
    EXPECT_EQ(day, 1);
    EXPECT_EQ(hour, 0);
    EXPECT_EQ(minute, 0);
    EXPECT_EQ(second, 0);
    EXPECT_EQ(fsec, 0u);
  }
  OCIInd ind = OCI_IND_NULL;
  auto* slot = static_cast<OCIDateTime**>(Attr("TZ", &ind));
  sb1 tz_hour = 9, tz_minute = 9;
  ASSERT_EQ(OCIDateTimeGetTimeZoneOffset(env_, err_, *slot, &tz_hour, &tz_minute), OCI_SUCCESS);
  EXPECT_EQ(tz_hour, 0);
  EXPECT_EQ(tz_minute, 0);
}

TEST_F(NewInstanceDefaults, IntervalAttributesHoldZero) {
  NewNotNullObject();
  OCIInd ind = OCI_IND_NULL;
  auto* ym = static_cast<OCIInterval**>(Attr("YM", &ind));
  EXPECT_EQ(ind, OCI_IND_NOTNULL);
  sb4 years = 9, months = 9;
  ASSERT_EQ(OCIIntervalGetYearMonth(env_, err_, &years, &months, *ym), OCI_SUCCESS);
  EXPECT_EQ(years, 0);
  EXPECT_EQ(months, 0);
  auto* ds = static_cast<OCIInterval**>(Attr("DS", &ind));
  sb4 d = 9, h = 9, mi = 9, s = 9, f = 9;
  ASSERT_EQ(OCIIntervalGetDaySecond(env_, err_, &d, &h, &mi, &s, &f, *ds), OCI_SUCCESS);
  EXPECT_EQ(d + h + mi + s + f, 0);
}

TEST_F(NewInstanceDefaults, DateAttributeHoldsJulianDayOne) {
  NewNotNullObject();
  OCIInd ind = OCI_IND_NULL;
  auto* date = static_cast<OCIDate*>(Attr("D", &ind));
  EXPECT_EQ(ind, OCI_IND_NOTNULL);
  ASSERT_NE(date, nullptr);
  EXPECT_EQ(date->OCIDateYYYY, -4712);
  EXPECT_EQ(date->OCIDateMM, 1);
  EXPECT_EQ(date->OCIDateDD, 1);
}

}  // namespace
