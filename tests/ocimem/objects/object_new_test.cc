// OCIObjectNew for collections and built-in type codes, as a host makes collection items.
#include <gtest/gtest.h>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

class ObjectNewTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create type obj_t as object (a number)");
    MustExec("create type nt_t as table of number");
    MustExec("create type va_t as varray(2) of number");
  }
  sword New(OCITypeCode code, OCIType* tdo, void** out) {
    return OCIObjectNew(env_, err_, svc_, code, tdo, nullptr, OCI_DURATION_DEFAULT, TRUE, out);
  }
};

TEST_F(ObjectNewTest, CollectionsByTheirCodesAndNamedCollection) {
  struct Case {
    OCITypeCode code;
    const char* type;
    sb4 max;
  };
  const Case cases[] = {{OCI_TYPECODE_NAMEDCOLLECTION, "NT_T", 0},
                        {OCI_TYPECODE_TABLE, "NT_T", 0},
                        {OCI_TYPECODE_NAMEDCOLLECTION, "VA_T", 2},
                        {OCI_TYPECODE_VARRAY, "VA_T", 2}};
  for (const Case& c : cases) {
    void* coll = nullptr;
    ASSERT_EQ(OCI_SUCCESS, New(c.code, TypeByName(c.type), &coll)) << c.type;
    sb4 size = -1;
    EXPECT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, static_cast<OCIColl*>(coll), &size));
    EXPECT_EQ(0, size);
    EXPECT_EQ(c.max, OCICollMax(env_, static_cast<OCIColl*>(coll)));
    // decision D2: a new collection has one indicator of its own, not null.
    void* ind = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, coll, &ind));
    EXPECT_EQ(OCI_IND_NOTNULL, *static_cast<OCIInd*>(ind));
    EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, coll, OCI_OBJECTFREE_FORCE));
  }
}

TEST_F(ObjectNewTest, TypeCodeMustFitTheTdo) {
  void* out = nullptr;
  EXPECT_EQ(OCI_ERROR, New(OCI_TYPECODE_VARRAY, TypeByName("NT_T"), &out));
  EXPECT_EQ("ORA-21560: argument 4 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, New(OCI_TYPECODE_NAMEDCOLLECTION, TypeByName("OBJ_T"), &out));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, New(OCI_TYPECODE_OBJECT, TypeByName("VA_T"), &out));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(nullptr, out);
}

TEST_F(ObjectNewTest, NamedTypesNeedATdo) {
  void* out = nullptr;
  for (OCITypeCode code : {OCI_TYPECODE_OBJECT, OCI_TYPECODE_NAMEDCOLLECTION, OCI_TYPECODE_TABLE,
                           OCI_TYPECODE_VARRAY}) {
    EXPECT_EQ(OCI_ERROR, New(code, nullptr, &out)) << code;
    EXPECT_EQ("ORA-21560: argument 5 is null, invalid, or out of range", FirstError(err_));
  }
  EXPECT_EQ(OCI_ERROR, New(OCI_TYPECODE_OBJECT, TypeByName("OBJ_T"), nullptr));
  EXPECT_EQ("ORA-21560: argument 9 is null, invalid, or out of range", FirstError(err_));
}

// Appends the value to a one-column collection of its type to show it is of that type.
class BuiltinTest : public ObjectNewTest {};

TEST_F(BuiltinTest, HandleKindsAreEmptyValues) {
  struct Case {
    OCITypeCode code;
    const char* collection;
  };
  MustExec("create type vc_tab as table of varchar2(10)");
  MustExec("create type ch_tab as table of char(10)");
  MustExec("create type raw_tab as table of raw(10)");
  MustExec("create type clob_tab as table of clob");
  MustExec("create type blob_tab as table of blob");
  MustExec("create type ts_tab as table of timestamp");
  MustExec("create type tz_tab as table of timestamp with time zone");
  MustExec("create type ltz_tab as table of timestamp with local time zone");
  MustExec("create type ym_tab as table of interval year to month");
  MustExec("create type ds_tab as table of interval day to second");
  MustExec("create type ref_tab as table of ref obj_t");
  const Case cases[] = {
      {OCI_TYPECODE_VARCHAR, "VC_TAB"},         {OCI_TYPECODE_VARCHAR2, "VC_TAB"},
      {OCI_TYPECODE_CHAR, "CH_TAB"},            {OCI_TYPECODE_RAW, "RAW_TAB"},
      {OCI_TYPECODE_CLOB, "CLOB_TAB"},          {OCI_TYPECODE_BLOB, "BLOB_TAB"},
      {OCI_TYPECODE_TIMESTAMP, "TS_TAB"},       {OCI_TYPECODE_TIMESTAMP_TZ, "TZ_TAB"},
      {OCI_TYPECODE_TIMESTAMP_LTZ, "LTZ_TAB"},  {OCI_TYPECODE_INTERVAL_YM, "YM_TAB"},
      {OCI_TYPECODE_INTERVAL_DS, "DS_TAB"},     {OCI_TYPECODE_REF, "REF_TAB"},
  };
  for (const Case& c : cases) {
    void* value = nullptr;
    ASSERT_EQ(OCI_SUCCESS, New(c.code, nullptr, &value)) << c.code;
    ASSERT_NE(nullptr, value);
    void* coll = nullptr;
    ASSERT_EQ(OCI_SUCCESS, New(OCI_TYPECODE_NAMEDCOLLECTION, TypeByName(c.collection), &coll));
    OCIInd ind = OCI_IND_NOTNULL;
    EXPECT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, value, &ind, static_cast<OCIColl*>(coll)))
        << c.code << " " << FirstError(err_);
    EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, value, OCI_OBJECTFREE_FORCE)) << c.code;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, coll, OCI_OBJECTFREE_FORCE));
  }
}

TEST_F(BuiltinTest, StringsAndRawsStartEmpty) {
  void* s = nullptr;
  ASSERT_EQ(OCI_SUCCESS, New(OCI_TYPECODE_VARCHAR2, nullptr, &s));
  EXPECT_EQ(0u, OCIStringSize(env_, static_cast<OCIString*>(s)));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, s, OCI_DEFAULT));
  void* r = nullptr;
  ASSERT_EQ(OCI_SUCCESS, New(OCI_TYPECODE_RAW, nullptr, &r));
  EXPECT_EQ(0u, OCIRawSize(env_, static_cast<OCIRaw*>(r)));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, r, OCI_DEFAULT));
}

// decision D5: the number codes, 23 (OCI_TYPECODE_UNSIGNED8) included, make an OCINumber.
TEST_F(BuiltinTest, NumberCodesMakeZero) {
  for (OCITypeCode code :
       {OCI_TYPECODE_NUMBER, OCI_TYPECODE_INTEGER, OCI_TYPECODE_FLOAT, OCI_TYPECODE_DECIMAL,
        OCI_TYPECODE_SMALLINT, OCI_TYPECODE_REAL, OCI_TYPECODE_DOUBLE, OCI_TYPECODE_UNSIGNED8}) {
    void* n = nullptr;
    ASSERT_EQ(OCI_SUCCESS, New(code, nullptr, &n)) << code;
    int v = -1;
    EXPECT_EQ(OCI_SUCCESS, OCINumberToInt(err_, static_cast<OCINumber*>(n), sizeof v,
                                          OCI_NUMBER_SIGNED, &v));
    EXPECT_EQ(0, v) << code;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, n, OCI_DEFAULT));
  }
}

TEST_F(BuiltinTest, DateStartsAtTheFirstJulianDay) {
  void* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, New(OCI_TYPECODE_DATE, nullptr, &d));
  auto* date = static_cast<OCIDate*>(d);
  EXPECT_EQ(-4712, date->OCIDateYYYY);
  EXPECT_EQ(1, date->OCIDateMM);
  EXPECT_EQ(1, date->OCIDateDD);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, d, OCI_DEFAULT));
}

// decision D5: 8, 24 and 94 are SQLT codes, not type codes.
TEST_F(BuiltinTest, CodesThatAreNoTypeCodes) {
  for (OCITypeCode code : {8, 24, 94, 0, 999}) {
    void* out = nullptr;
    EXPECT_EQ(OCI_ERROR, New(code, nullptr, &out));
    EXPECT_EQ("ORA-22161: type code [" + std::to_string(code) + "] is not valid",
              FirstError(err_));
    EXPECT_EQ(nullptr, out);
  }
}

// decision D2 covers collections only: a built-in value has no null struct.
TEST_F(BuiltinTest, GetIndRefusesValues) {
  void* n = nullptr;
  ASSERT_EQ(OCI_SUCCESS, New(OCI_TYPECODE_NUMBER, nullptr, &n));
  void* ind = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIObjectGetInd(env_, err_, n, &ind));
  EXPECT_EQ(21710, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, n, OCI_DEFAULT));
}

// decision D9: a string instance moved by a resize is still the same instance.
TEST_F(BuiltinTest, ResizedStringIsStillFreed) {
  void* s = nullptr;
  ASSERT_EQ(OCI_SUCCESS, New(OCI_TYPECODE_VARCHAR2, nullptr, &s));
  auto* str = static_cast<OCIString*>(s);
  ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 4000, &str));
  EXPECT_NE(s, static_cast<void*>(str));
  EXPECT_EQ(OCI_ERROR, OCIObjectFree(env_, err_, s, OCI_DEFAULT));  // the old address
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, str, OCI_DEFAULT));
  void* r = nullptr;
  ASSERT_EQ(OCI_SUCCESS, New(OCI_TYPECODE_RAW, nullptr, &r));
  auto* raw = static_cast<OCIRaw*>(r);
  ASSERT_EQ(OCI_SUCCESS, OCIRawResize(env_, err_, 100, &raw));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, raw, OCI_DEFAULT));
  // Resized to 0, the value is gone (decision D6) and nothing is left to free.
  ASSERT_EQ(OCI_SUCCESS, New(OCI_TYPECODE_VARCHAR2, nullptr, &s));
  str = static_cast<OCIString*>(s);
  ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &str));
  EXPECT_EQ(nullptr, str);
  EXPECT_EQ(OCI_ERROR, OCIObjectFree(env_, err_, s, OCI_DEFAULT));
}

TEST_F(BuiltinTest, NeedsObjectModeAndHandles) {
  OCIEnv* plain = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIEnvCreate(&plain, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
  void* out = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIObjectNew(plain, err_, svc_, OCI_TYPECODE_NUMBER, nullptr, nullptr,
                                    OCI_DURATION_DEFAULT, TRUE, &out));
  EXPECT_EQ(21301, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(plain, OCI_HTYPE_ENV));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIObjectNew(nullptr, err_, svc_, OCI_TYPECODE_NUMBER, nullptr,
                                             nullptr, OCI_DURATION_DEFAULT, TRUE, &out));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIObjectNew(env_, nullptr, svc_, OCI_TYPECODE_NUMBER, nullptr,
                                             nullptr, OCI_DURATION_DEFAULT, TRUE, &out));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIObjectNew(reinterpret_cast<OCIEnv*>(err_), err_, svc_, OCI_TYPECODE_NUMBER,
                         nullptr, nullptr, OCI_DURATION_DEFAULT, TRUE, &out));
}

}  // namespace
}  // namespace ocimem_test
