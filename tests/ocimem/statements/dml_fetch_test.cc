// Fetching: no rows and fewer rows than asked, the fetch calls and their sequence, NULLs and
// truncation in defines, defines that do not fit the select list, and a query that outlives
// its session.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class DmlFetchTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec(
        "create table emp (id number(6) primary key, name varchar2(10) not null, "
        "sal number(8,2), hired date, badge raw(4))");
  }
};

// decision D15: no row is OCI_NO_DATA with ORA-01403
TEST_F(DmlFetchTest, QueryWithoutRowIsNoData) {
  OCIStmt* stmt = Prepare("select id from emp where id = 1");
  int id = -1;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_NO_DATA, Execute(stmt));
  EXPECT_EQ("ORA-01403: no data found", FirstError(err_));
  EXPECT_EQ(-1, id);
}

// decision D15: fewer rows than iters is OCI_NO_DATA with the rows that came
TEST_F(DmlFetchTest, ArrayFetchOfFewerRowsThanIters) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  MustExec("insert into emp (id, name) values (2, 'b')");
  OCIStmt* stmt = Prepare("select id, name from emp");
  int ids[3] = {0, 0, 0};
  char names[3][11] = {};
  ub2 lens[3] = {0, 0, 0};
  OCIDefine* d1 = nullptr;
  OCIDefine* d2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d1, err_, 1, ids, sizeof ids[0], SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d2, err_, 2, names, sizeof names[0], SQLT_CHR,
                                        nullptr, lens, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_NO_DATA, Execute(stmt, 3));
  EXPECT_EQ(1, ids[0]);
  EXPECT_EQ(2, ids[1]);
  EXPECT_EQ(0, ids[2]);
  EXPECT_EQ(1, lens[0]);
  EXPECT_EQ('b', names[1][0]);
  ub4 count = 0;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT, err_));
  EXPECT_EQ(2u, count);
}

TEST_F(DmlFetchTest, FetchAndFetch2DeliverTheRest) {
  for (int i = 1; i <= 4; ++i) {
    MustExec("insert into emp (id, name) values (" + std::to_string(i) + ", 'n')");
  }
  OCIStmt* stmt = Prepare("select id from emp");
  int id = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1));
  EXPECT_EQ(1, id);
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch(stmt, err_, 1, OCI_FETCH_NEXT, OCI_DEFAULT));
  EXPECT_EQ(2, id);
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(3, id);
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(4, id);
  EXPECT_EQ(OCI_NO_DATA, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(1403, FirstCode(err_));
  ub4 count = 0;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT, err_));
  EXPECT_EQ(4u, count);
}

// UNCONFIRMED: ORA-01002, not OCI_NO_DATA again, after ORA-01403
TEST_F(DmlFetchTest, FetchAfterTheEndIsOutOfSequence) {
  OCIStmt* stmt = Prepare("select id from emp");
  int id = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_NO_DATA, Execute(stmt, 1));
  EXPECT_EQ(OCI_ERROR, OCIStmtFetch(stmt, err_, 1, OCI_FETCH_NEXT, OCI_DEFAULT));
  EXPECT_EQ("ORA-01002: fetch out of sequence", FirstError(err_));
}

TEST_F(DmlFetchTest, FetchBeforeExecute) {
  OCIStmt* stmt = Prepare("select id from emp");
  EXPECT_EQ(OCI_ERROR, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ("ORA-24338: statement handle not executed", FirstError(err_));
}

// UNCONFIRMED: code of another orientation on a non-scrollable cursor
TEST_F(DmlFetchTest, FetchWithAnotherOrientation) {
  OCIStmt* stmt = Prepare("select id from emp");
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0));
  EXPECT_EQ(OCI_ERROR, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_LAST, 0, OCI_DEFAULT));
  EXPECT_EQ(24391, FirstCode(err_));
}

// UNCONFIRMED: ORA-24374 text
TEST_F(DmlFetchTest, QueryWithItersButNoDefine) {
  OCIStmt* stmt = Prepare("select id from emp");
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 1));
  EXPECT_EQ(24374, FirstCode(err_));
}

TEST_F(DmlFetchTest, DmlWithZeroIters) {
  OCIStmt* stmt = Prepare("delete from emp");
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 0));
  EXPECT_EQ("ORA-24333: zero iteration count", FirstError(err_));
}

// UNCONFIRMED: a NULL without indicator fails with OCI_ERROR
TEST_F(DmlFetchTest, NullFetchedWithAndWithoutIndicator) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  OCIStmt* stmt = Prepare("select sal from emp");
  int sal = 5;
  sb2 ind = 0;
  ub2 rcode = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &sal, sizeof sal, SQLT_INT, &ind,
                                        nullptr, &rcode, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  EXPECT_EQ(OCI_IND_NULL, ind);
  OCIStmt* bare = Prepare("select sal from emp");
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(bare, &def, err_, 1, &sal, sizeof sal, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(bare, 1));
  EXPECT_EQ("ORA-01405: fetched column value is NULL", FirstError(err_));
}

// UNCONFIRMED: indicator and length after truncation
TEST_F(DmlFetchTest, TruncatedFetchIsSuccessWithInfo) {
  MustExec("insert into emp (id, name) values (1, 'abcdefgh')");
  OCIStmt* stmt = Prepare("select name from emp");
  char buf[4];
  sb2 ind = 0;
  ub2 len = 0;
  ub2 rcode = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, buf, sizeof buf, SQLT_STR, &ind, &len,
                                        &rcode, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS_WITH_INFO, Execute(stmt, 1));
  EXPECT_EQ("ORA-24345: A Truncation or null fetch error occurred", FirstError(err_));
  EXPECT_STREQ("abc", buf);
  EXPECT_EQ(8, ind);
  EXPECT_EQ(1406, rcode);
  EXPECT_EQ(3, len);
}

// UNCONFIRMED: truncation without indicator or code is OCI_ERROR
TEST_F(DmlFetchTest, TruncationWithoutIndicatorOrCodeIsAnError) {
  MustExec("insert into emp (id, name) values (1, 'abcdefgh')");
  OCIStmt* stmt = Prepare("select name from emp");
  char buf[4];
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, buf, sizeof buf, SQLT_STR, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 1));
  EXPECT_EQ(1406, FirstCode(err_));
}

TEST_F(DmlFetchTest, DefineOfAnIncompatibleType) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  OCIStmt* stmt = Prepare("select id from emp");
  OCIDate date;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &date, sizeof date, SQLT_ODT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 1));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected DATE got NUMBER", FirstError(err_));
}

TEST_F(DmlFetchTest, DefineBeyondTheSelectList) {
  OCIStmt* stmt = Prepare("select id from emp");
  int v = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 2, &v, sizeof v, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 1));
  EXPECT_EQ("ORA-01007: variable not in select list", FirstError(err_));
}

TEST_F(DmlFetchTest, DefinesMadeAfterTheExecuteAreCheckedAtFetch) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  OCIStmt* stmt = Prepare("select id from emp");
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0));
  EXPECT_EQ(OCI_ERROR, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(24374, FirstCode(err_));
  int v = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 3, &v, sizeof v, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(1007, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &v, sizeof v, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 3, &v, sizeof v, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(1007, FirstCode(err_));
}

TEST_F(DmlFetchTest, OpenQueryOutlivesItsSession) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  OCISvcCtx* other = OtherSession();
  OCIStmt* stmt = Prepare("select id from emp");
  int v = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &v, sizeof v, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0, other));
  ASSERT_EQ(OCI_SUCCESS, OCILogoff(other, err_));
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(1, v);
}

}  // namespace
}  // namespace ocimem_test
