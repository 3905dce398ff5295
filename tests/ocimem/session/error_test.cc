// OCIErrorGet and the lifetime of diagnostics.
#include <gtest/gtest.h>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

using ErrorGetTest = OciTest;

TEST_F(ErrorGetTest, RecordTextCodeAndEnd) {
  ASSERT_EQ(OCI_ERROR, Exec("drop type missing_t"));
  sb4 code = 0;
  OraText buf[512];
  ASSERT_EQ(OCI_SUCCESS, OCIErrorGet(err_, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR));
  EXPECT_EQ(4043, code);  // positive, as Oracle gives it
  // decision D17: "ORA-%05d: %s\n"
  EXPECT_STREQ("ORA-04043: object MISSING_T does not exist\n", reinterpret_cast<char*>(buf));
  code = 7;
  buf[0] = 'q';
  EXPECT_EQ(OCI_NO_DATA, OCIErrorGet(err_, 2, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR));
  EXPECT_EQ(7, code);  // untouched
  EXPECT_EQ('q', buf[0]);
}

TEST_F(ErrorGetTest, RecordCanBeReadAgain) {
  ASSERT_EQ(OCI_ERROR, Exec("drop type missing_t"));
  EXPECT_EQ(4043, FirstCode(err_));
  EXPECT_EQ(4043, FirstCode(err_));
}

// decision D17: a call that takes the error handle clears it on entry.
TEST_F(ErrorGetTest, NextCallClearsRecords) {
  ASSERT_EQ(OCI_ERROR, Exec("drop type missing_t"));
  MustExec("create type cleared_t as object (a number)");
  EXPECT_EQ("none", FirstError(err_));
}

TEST_F(ErrorGetTest, HandleWithoutRecordsAnswersNoData) {
  sb4 code = 0;
  OraText buf[64];
  EXPECT_EQ(OCI_NO_DATA, OCIErrorGet(err_, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR));
  EXPECT_EQ(OCI_NO_DATA, OCIErrorGet(err_, 0, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR));
}

// decision D17: a NULL handle answers OCI_NO_DATA, so a loop until OCI_NO_DATA ends.
TEST_F(ErrorGetTest, NullHandleAnswersNoData) {
  sb4 code = 0;
  OraText buf[64];
  EXPECT_EQ(OCI_NO_DATA, OCIErrorGet(nullptr, 1, nullptr, &code, buf, sizeof buf,
                                     OCI_HTYPE_ERROR));
  EXPECT_EQ(OCI_NO_DATA, OCIErrorGet(nullptr, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ENV));
}

// UNCONFIRMED: a handle of another kind than `type` says.
TEST_F(ErrorGetTest, WrongHandleKindIsInvalid) {
  sb4 code = 0;
  OraText buf[64];
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIErrorGet(env_, 1, nullptr, &code, buf, sizeof buf,
                                            OCI_HTYPE_ERROR));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIErrorGet(err_, 1, nullptr, &code, buf, sizeof buf,
                                            OCI_HTYPE_ENV));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIErrorGet(err_, 1, nullptr, &code, buf, sizeof buf,
                                            OCI_HTYPE_SVCCTX));
}

// UNCONFIRMED: a short buffer gets the text cut and NUL-terminated.
TEST_F(ErrorGetTest, ShortBufferTruncates) {
  ASSERT_EQ(OCI_ERROR, Exec("drop type missing_t"));
  sb4 code = 0;
  OraText buf[10];
  ASSERT_EQ(OCI_SUCCESS, OCIErrorGet(err_, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR));
  EXPECT_STREQ("ORA-04043", reinterpret_cast<char*>(buf));
}

TEST_F(ErrorGetTest, CodeOnlyAndSqlstateUntouched) {
  ASSERT_EQ(OCI_ERROR, Exec("drop type missing_t"));
  sb4 code = 0;
  OraText state[6] = {'x', 0};
  EXPECT_EQ(OCI_SUCCESS, OCIErrorGet(err_, 1, state, &code, nullptr, 0, OCI_HTYPE_ERROR));
  EXPECT_EQ(4043, code);
  EXPECT_EQ('x', state[0]);
}

TEST_F(ErrorGetTest, SeveralRecordsFromAFault) {
  const sb4 codes[] = {6550, 6553};
  const char* messages[] = {"line 1, column 7:", "PLS-306: wrong number or types of arguments"};
  ocimemFaultArm("OCIStmtExecute", 1, OCI_ERROR, codes, messages, 2);
  ASSERT_EQ(OCI_ERROR, Exec("create type several_t as object (a number)"));
  sb4 code = 0;
  OraText buf[512];
  ASSERT_EQ(OCI_SUCCESS, OCIErrorGet(err_, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR));
  EXPECT_EQ(6550, code);
  EXPECT_STREQ("ORA-06550: line 1, column 7:\n", reinterpret_cast<char*>(buf));
  ASSERT_EQ(OCI_SUCCESS, OCIErrorGet(err_, 2, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR));
  EXPECT_EQ(6553, code);
  EXPECT_STREQ("ORA-06553: PLS-306: wrong number or types of arguments\n",
               reinterpret_cast<char*>(buf));
  EXPECT_EQ(OCI_NO_DATA, OCIErrorGet(err_, 3, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR));
}

}  // namespace
}  // namespace ocimem_test
