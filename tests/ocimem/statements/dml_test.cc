// INSERT, SELECT, UPDATE and DELETE with binds by position and by name, scalar binds and
// defines of the usual external types, row counts, and the statement errors (fetching is in
// dml_fetch_test.cc).
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class DmlTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec(
        "create table emp (id number(6) primary key, name varchar2(10) not null, "
        "sal number(8,2), hired date, badge raw(4))");
  }
};

TEST_F(DmlTest, InsertWithPositionalBindsOfIntStrAndFloat) {
  OCIStmt* stmt = Prepare("insert into emp (id, name, sal) values (:1, :2, :3)");
  int id = 10;
  char name[] = "Ada";
  double sal = 1234.5;
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  OCIBind* b3 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, name, sizeof name, SQLT_STR, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b3, err_, 3, &sal, sizeof sal, SQLT_FLT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  ub4 count = 0;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT, err_));
  EXPECT_EQ(1u, count);
  EXPECT_EQ(std::vector<std::string>{"Ada"}, Column("select name from emp where id = 10"));
  EXPECT_EQ(std::vector<std::string>{"1234.5"}, Column("select sal from emp"));
}

TEST_F(DmlTest, BindValuesAreReadAtEachExecute) {
  OCIStmt* stmt = Prepare("insert into emp (id, name) values (:id, 'x')");
  int id = 1;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b, err_, Text(":id"), 3, &id, sizeof id, SQLT_INT,
                                       nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  id = 2;
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ((std::vector<std::string>{"1", "2"}), Column("select id from emp"));
}

// UNCONFIRMED: name without colon, any case, -1 length
TEST_F(DmlTest, BindByNameIgnoresCaseAndColon) {
  OCIStmt* stmt = Prepare("insert into emp (id, name) values (:Id, :NAME)");
  int id = 5;
  char name[] = "Bo";
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b1, err_, Text("ID"), -1, &id, sizeof id, SQLT_INT,
                                       nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS,
            OCIBindByName(stmt, &b2, err_, Text(":name"), 5, name, sizeof name, SQLT_STR, nullptr,
                          nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ(std::vector<std::string>{"Bo"}, Column("select name from emp where id = 5"));
}

TEST_F(DmlTest, RepeatedNameIsBoundOnce) {
  MustExec("insert into emp (id, name) values (3, 'c')");
  OCIStmt* stmt = Prepare("update emp set sal = :v where id = :v");
  int v = 3;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b, err_, Text(":v"), 2, &v, sizeof v, SQLT_INT,
                                       nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ(std::vector<std::string>{"3"}, Column("select sal from emp"));
}

TEST_F(DmlTest, UnknownBindNameIsRefusedByTheBindCall) {
  OCIStmt* stmt = Prepare("insert into emp (id, name) values (:a, :b)");
  int v = 0;
  OCIBind* b = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIBindByName(stmt, &b, err_, Text(":c"), 2, &v, sizeof v, SQLT_INT, nullptr,
                                     nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ("ORA-01036: illegal variable name/number", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCIBindByPos(stmt, &b, err_, 3, &v, sizeof v, SQLT_INT, nullptr, nullptr,
                                    nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(1036, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIBindByPos(stmt, &b, err_, 0, &v, sizeof v, SQLT_INT, nullptr, nullptr,
                                    nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(1036, FirstCode(err_));
}

TEST_F(DmlTest, MissingBindIsNotAllVariablesBound) {
  OCIStmt* stmt = Prepare("insert into emp (id, name) values (:1, :2)");
  int id = 1;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &id, sizeof id, SQLT_INT, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ("ORA-01008: not all variables bound", FirstError(err_));
  EXPECT_TRUE(Column("select id from emp").empty());
}

TEST_F(DmlTest, NullIndicatorBindsNull) {
  OCIStmt* stmt = Prepare("insert into emp (id, name, sal) values (1, 'n', :1)");
  int sal = 99;
  sb2 ind = OCI_IND_NULL;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &sal, sizeof sal, SQLT_INT, &ind, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ(std::vector<std::string>{"<null>"}, Column("select sal from emp"));
}

TEST_F(DmlTest, NullIntoNotNullColumn) {
  EXPECT_EQ(1400, ExecError("insert into emp (id, name) values (1, null)"));
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"EMP\".\"NAME\")", FirstError(err_));
}

// UNCONFIRMED: a zero-length string is NULL
TEST_F(DmlTest, EmptyStringIsNull) {
  EXPECT_EQ(1400, ExecError("insert into emp (id, name) values (1, '')"));
}

TEST_F(DmlTest, ColumnLeftOutOfTheListIsNull) {
  EXPECT_EQ(1400, ExecError("insert into emp (id) values (1)"));
  MustExec("insert into emp (name, id) values ('z', 2)");
  EXPECT_EQ(std::vector<std::string>{"<null>"}, Column("select sal from emp"));
}

TEST_F(DmlTest, PrimaryKeyIsNotNull) {
  EXPECT_EQ(1400, ExecError("insert into emp (name) values ('k')"));
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"EMP\".\"ID\")", FirstError(err_));
}

TEST_F(DmlTest, DuplicateKeyNamesTheConstraint) {
  MustExec("create table named (k number constraint named_pk primary key)");
  MustExec("insert into named values (1)");
  EXPECT_EQ(1, ExecError("insert into named values (1)"));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.NAMED_PK) violated", FirstError(err_));
  MustExec("insert into emp (id, name) values (1, 'a')");
  EXPECT_EQ(1, ExecError("insert into emp (id, name) values (1, 'b')"));
  EXPECT_EQ(0u, FirstError(err_).find("ORA-00001: unique constraint (SCOTT.SYS_C"));
}

TEST_F(DmlTest, KeyFreedByDeleteCanBeUsedAgain) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  MustExec("delete from emp where id = 1");
  MustExec("insert into emp (id, name) values (1, 'b')");
  EXPECT_EQ(std::vector<std::string>{"b"}, Column("select name from emp where id = 1"));
}

TEST_F(DmlTest, UpdateToAnExistingKeyIsRefused) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  MustExec("insert into emp (id, name) values (2, 'b')");
  EXPECT_EQ(1, ExecError("update emp set id = 1 where id = 2"));
  EXPECT_EQ(1, ExecError("update emp set id = 5"));
  EXPECT_EQ((std::vector<std::string>{"1", "2"}), Column("select id from emp"));
}

TEST_F(DmlTest, UpdateSetsColumnsAndCountsRows) {
  MustExec("insert into emp (id, name, sal) values (1, 'a', 10)");
  MustExec("insert into emp (id, name, sal) values (2, 'b', 10)");
  MustExec("insert into emp (id, name, sal) values (3, 'c', 20)");
  OCIStmt* stmt = Prepare("update emp set sal = 15, name = 'x' where sal = 10");
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  ub4 count = 0;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT, err_));
  EXPECT_EQ(2u, count);
  EXPECT_EQ((std::vector<std::string>{"x", "x", "c"}), Column("select name from emp"));
}

// decision D15: DML that touches no row succeeds with row count 0
TEST_F(DmlTest, UpdateAndDeleteOfNoRowSucceedWithCountZero) {
  for (const char* sql :
       {"update emp set sal = 1 where id = 42", "delete from emp where id = 42"}) {
    OCIStmt* stmt = Prepare(sql);
    ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
    ub4 count = 7;
    ASSERT_EQ(OCI_SUCCESS,
              OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT, err_));
    EXPECT_EQ(0u, count) << sql;
  }
}

TEST_F(DmlTest, UpdateToNullOfNotNullColumn) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  EXPECT_EQ(1407, ExecError("update emp set name = null"));
  EXPECT_EQ("ORA-01407: cannot update (\"SCOTT\".\"EMP\".\"NAME\") to NULL", FirstError(err_));
}

TEST_F(DmlTest, DeleteWithAndConditions) {
  MustExec("insert into emp (id, name, sal) values (1, 'a', 10)");
  MustExec("insert into emp (id, name, sal) values (2, 'a', 20)");
  OCIStmt* stmt = Prepare("delete from emp e where e.name = 'a' and sal = 20");
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  ub4 count = 0;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT, err_));
  EXPECT_EQ(1u, count);
  EXPECT_EQ(std::vector<std::string>{"1"}, Column("select id from emp"));
  MustExec("delete emp");
  EXPECT_TRUE(Column("select id from emp").empty());
}

TEST_F(DmlTest, WhereWithNullMatchesNothing) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  EXPECT_TRUE(Column("select id from emp where sal = null").empty());
}

TEST_F(DmlTest, WhereComparesNumbersByValue) {
  MustExec("insert into emp (id, name, sal) values (1, 'a', 2.5)");
  EXPECT_EQ(std::vector<std::string>{"1"}, Column("select id from emp where sal = 2.50"));
  EXPECT_EQ(std::vector<std::string>{"1"}, Column("select id from emp where sal = '2.5'"));
  EXPECT_EQ(std::vector<std::string>{"1"}, Column("select id from emp where 1 = id"));
}

TEST_F(DmlTest, ExternalTypesRoundTrip) {
  OCIStmt* ins = Prepare("insert into emp values (:1, :2, :3, :4, :5)");
  ub1 vnu[22] = {0};
  OCINumber n;
  int id = 77;
  ASSERT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &id, sizeof id, OCI_NUMBER_SIGNED, &n));
  std::memcpy(vnu, n.OCINumberPart, sizeof vnu);
  char name[3] = {'h', 'i', '!'};
  ub2 name_len = 2;
  ub1 num[21];
  double sal = 42.25;
  OCINumber s;
  ASSERT_EQ(OCI_SUCCESS, OCINumberFromReal(err_, &sal, sizeof sal, &s));
  std::memcpy(num, s.OCINumberPart + 1, s.OCINumberPart[0]);
  ub2 num_len = s.OCINumberPart[0];
  ub1 dat[7] = {120, 124, 3, 14, 16, 10, 1};  // 2024-03-14 15:09:00
  ub1 badge[2] = {0xde, 0xad};
  OCIBind* b[5] = {};
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &b[0], err_, 1, vnu, sizeof vnu, SQLT_VNU, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &b[1], err_, 2, name, sizeof name, SQLT_CHR, nullptr,
                                      &name_len, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &b[2], err_, 3, num, sizeof num, SQLT_NUM, nullptr,
                                      &num_len, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &b[3], err_, 4, dat, sizeof dat, SQLT_DAT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &b[4], err_, 5, badge, sizeof badge, SQLT_BIN, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(ins)) << FirstError(err_);

  OCIStmt* sel = Prepare("select id, name, sal, hired, hired, badge from emp");
  OCINumber got_id;
  char got_name[11] = {};
  ub2 got_name_len = 0;
  float got_sal = 0;
  OCIDate got_date;
  ub1 got_dat[7] = {};
  ub1 got_badge[4] = {};
  ub2 got_badge_len = 0;
  OCIDefine* d[6] = {};
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d[0], err_, 1, &got_id, sizeof got_id, SQLT_VNU,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d[1], err_, 2, got_name, 10, SQLT_CHR, nullptr,
                                        &got_name_len, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d[2], err_, 3, &got_sal, sizeof got_sal, SQLT_FLT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d[3], err_, 4, &got_date, sizeof got_date, SQLT_ODT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d[4], err_, 5, got_dat, sizeof got_dat, SQLT_DAT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d[5], err_, 6, got_badge, sizeof got_badge, SQLT_BIN,
                                        nullptr, &got_badge_len, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(sel, 1)) << FirstError(err_);
  sword cmp = 1;
  ASSERT_EQ(OCI_SUCCESS, OCINumberCmp(err_, &got_id, &n, &cmp));
  EXPECT_EQ(0, cmp);
  EXPECT_EQ("hi", std::string(got_name, got_name_len));
  EXPECT_FLOAT_EQ(42.25f, got_sal);
  EXPECT_EQ(2024, got_date.OCIDateYYYY);
  EXPECT_EQ(3, got_date.OCIDateMM);
  EXPECT_EQ(14, got_date.OCIDateDD);
  EXPECT_EQ(15, got_date.OCIDateTime.OCITimeHH);
  EXPECT_EQ(9, got_date.OCIDateTime.OCITimeMI);
  EXPECT_EQ(0, std::memcmp(dat, got_dat, 7));
  EXPECT_EQ(2, got_badge_len);
  EXPECT_EQ(0xde, got_badge[0]);
  EXPECT_EQ(0xad, got_badge[1]);
}

TEST_F(DmlTest, BindsThatCannotBeRead) {
  struct Case {
    ub2 dty;
    sb4 size;
    const char* text;
  };
  const Case cases[] = {
      {SQLT_INT, 3, "ORA-01460: unimplemented or unreasonable conversion requested"},
      {SQLT_FLT, 2, "ORA-01460: unimplemented or unreasonable conversion requested"},
      {SQLT_RDD, 4, "ORA-03115: unsupported network datatype or representation"},
  };
  for (const Case& c : cases) {
    OCIStmt* stmt = Prepare("insert into emp (id, name) values (:1, 'a')");
    long long value = 1;
    OCIBind* b = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &value, c.size, c.dty, nullptr,
                                        nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
    EXPECT_EQ(OCI_ERROR, Execute(stmt)) << c.dty;
    EXPECT_EQ(c.text, FirstError(err_)) << c.dty;
  }
}

TEST_F(DmlTest, BindModesOtherThanDefaultAndDataAtExecuteAreRefused) {
  OCIStmt* stmt = Prepare("insert into emp (id, name) values (:1, 'a')");
  int v = 1;
  OCIBind* b = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIBindByPos(stmt, &b, err_, 1, &v, sizeof v, SQLT_INT, nullptr, nullptr,
                                    nullptr, 0, nullptr, 0x10));
  EXPECT_EQ("ORA-24300: bad value for mode", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &v, sizeof v, SQLT_INT, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
}

TEST_F(DmlTest, IntegerDefineTooSmallForTheValue) {
  MustExec("insert into emp (id, name) values (300, 'a')");
  OCIStmt* stmt = Prepare("select id from emp");
  signed char small = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &small, sizeof small, SQLT_INT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 1));
  EXPECT_EQ("ORA-01455: converting column overflows integer datatype", FirstError(err_));
}

TEST_F(DmlTest, VarrayBeyondItsLimit) {
  MustExec("create type two as varray(2) of number");
  MustExec("create table vt (v two)");
  EXPECT_EQ(22909, ExecError("insert into vt values (two(1, 2, 3))"));
  MustExec("insert into vt values (two(1, 2))");
}

TEST_F(DmlTest, OdtBindAndTextOfADate) {
  OCIStmt* ins = Prepare("insert into emp (id, name, hired) values (1, 'd', :1)");
  OCIDate d;
  std::memset(&d, 0, sizeof d);
  OCIDateSetDate(&d, 2001, 2, 3);
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &b, err_, 1, &d, sizeof d, SQLT_ODT, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(ins)) << FirstError(err_);
  EXPECT_EQ(std::vector<std::string>{"03-FEB-01"}, Column("select hired from emp"));
}

TEST_F(DmlTest, SelectStarAndLiteralItems) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  OCIStmt* stmt = Prepare("select 'lit', e.*, 42 from emp e");
  char lit[8] = {};
  int id = 0;
  int answer = 0;
  OCIDefine* d[3] = {};
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d[0], err_, 1, lit, sizeof lit, SQLT_STR, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d[1], err_, 2, &id, sizeof id, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d[2], err_, 7, &answer, sizeof answer, SQLT_INT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  EXPECT_STREQ("lit", lit);
  EXPECT_EQ(1, id);
  EXPECT_EQ(42, answer);
}

// UNCONFIRMED: the type is known after prepare
TEST_F(DmlTest, StatementTypeIsKnownAfterPrepare) {
  struct Case {
    const char* sql;
    ub2 type;
  };
  const Case cases[] = {{"select 1 from dual", OCI_STMT_SELECT},
                        {"insert into emp values (1)", OCI_STMT_INSERT},
                        {"update emp set id = 1", OCI_STMT_UPDATE},
                        {"delete from emp", OCI_STMT_DELETE},
                        {"create table x (a number)", OCI_STMT_CREATE},
                        {"drop table x", OCI_STMT_DROP}};
  for (const Case& c : cases) {
    OCIStmt* stmt = Prepare(c.sql);
    ub2 type = 0;
    ASSERT_EQ(OCI_SUCCESS,
              OCIAttrGet(stmt, OCI_HTYPE_STMT, &type, nullptr, OCI_ATTR_STMT_TYPE, err_));
    EXPECT_EQ(c.type, type) << c.sql;
  }
}

// UNCONFIRMED: statement-level atomicity
TEST_F(DmlTest, FailingStatementLeavesEarlierWorkOfTheTransaction) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  EXPECT_EQ(1, ExecError("insert into emp (id, name) values (1, 'b')"));
  EXPECT_EQ(std::vector<std::string>{"a"}, Column("select name from emp"));
}

// Many programs pass strlen(sql) + 1 as the length: the NUL is no part of the statement.
TEST_F(DmlTest, StatementLengthThatCountsTheTerminatingNulIsAccepted) {
  const char sql[] = "insert into emp (id, name) values (7, 'Nul')";
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr));
  stmts_.push_back(stmt);
  ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt, err_, Text(sql), static_cast<ub4>(sizeof sql),
                                        OCI_NTV_SYNTAX, OCI_DEFAULT));
  ub2 type = 0;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrGet(stmt, OCI_HTYPE_STMT, &type, nullptr, OCI_ATTR_STMT_TYPE, err_));
  EXPECT_EQ(OCI_STMT_INSERT, type);
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ(std::vector<std::string>{"Nul"}, Column("select name from emp where id = 7"));
}

// An input indicator below -1 means NULL as -1 does, whatever the buffer holds.
TEST_F(DmlTest, InputIndicatorBelowMinusOneBindsNull) {
  for (sb2 ind : {static_cast<sb2>(-1), static_cast<sb2>(-2), static_cast<sb2>(-100)}) {
    MustExec("delete from emp");
    OCIStmt* stmt = Prepare("insert into emp (id, name, sal) values (1, 'Ind', :1)");
    double sal = 99.5;
    OCIBind* b = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &sal, sizeof sal, SQLT_FLT, &ind,
                                        nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
    EXPECT_EQ(std::vector<std::string>{"<null>"}, Column("select sal from emp")) << ind;
  }
}

struct BadSql {
  const char* sql;
  const char* text;
};

class BadDmlTest : public DmlTest, public ::testing::WithParamInterface<BadSql> {};

TEST_P(BadDmlTest, GivesOraclesError) {
  MustExec("create type obj_t as object (a number)");
  MustExec("create table objs of obj_t");
  MustExec("create table lobs (id number, c clob)");
  EXPECT_EQ(OCI_ERROR, Exec(GetParam().sql)) << GetParam().sql;
  EXPECT_EQ(GetParam().text, FirstError(err_)) << GetParam().sql;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BadDmlTest,
    ::testing::Values(
        BadSql{"foo bar", "ORA-00900: invalid SQL statement"},
        BadSql{"select nope from emp", "ORA-00904: \"NOPE\": invalid identifier"},
        BadSql{"select x.id from emp e", "ORA-00904: \"X\".\"ID\": invalid identifier"},
        BadSql{"select id from emp where nope = 1", "ORA-00904: \"NOPE\": invalid identifier"},
        BadSql{"update emp set nope = 1", "ORA-00904: \"NOPE\": invalid identifier"},
        BadSql{"insert into emp (nope) values (1)", "ORA-00904: \"NOPE\": invalid identifier"},
        BadSql{"select id from nowhere", "ORA-00942: table or view does not exist"},
        BadSql{"insert into nowhere values (1)", "ORA-00942: table or view does not exist"},
        BadSql{"update nowhere set a = 1", "ORA-00942: table or view does not exist"},
        BadSql{"delete from nowhere", "ORA-00942: table or view does not exist"},
        BadSql{"select from emp", "ORA-00936: missing expression"},
        BadSql{"select id from emp where id =", "ORA-00936: missing expression"},
        BadSql{"insert into emp values ()", "ORA-00936: missing expression"},
        BadSql{"select id from emp e x", "ORA-00933: SQL command not properly ended"},
        BadSql{"select id from emp where id = 1 b", "ORA-00933: SQL command not properly ended"},
        BadSql{"select id from emp;", "ORA-00911: invalid character"},
        BadSql{"insert into emp (id, name) values (1)", "ORA-00947: not enough values"},
        BadSql{"insert into emp (id) values (1, 2)", "ORA-00913: too many values"},
        BadSql{"insert into emp values (1, 'a', 3, null)", "ORA-00947: not enough values"},
        BadSql{"insert into emp (id, name) values ('x1', 'a')", "ORA-01722: invalid number"},
        BadSql{"insert into emp (id, name) values (1234567, 'a')",
               "ORA-01438: value larger than specified precision allowed for this column"},
        BadSql{"insert into emp (id, name) values (1, 'abcdefghijk')",
               "ORA-12899: value too large for column \"SCOTT\".\"EMP\".\"NAME\" (actual: 11, "
               "maximum: 10)"},
        BadSql{"insert into emp (id, name, badge) values (1, 'a', 'xyz')",
               "ORA-01465: invalid hex number"},
        BadSql{"insert into emp (id, name, hired) values (1, 'a', 5)",
               "ORA-00932: inconsistent datatypes: expected DATE got NUMBER"},
        BadSql{"insert into emp (id, id) values (1, 2)", "ORA-00957: duplicate column name"},
        BadSql{"insert emp values (1)", "ORA-00925: missing INTO keyword"},
        BadSql{"insert into emp (id) select 1", "ORA-00900: invalid SQL statement"},
        BadSql{"insert into emp (id) vals (1)", "ORA-00926: missing VALUES keyword"},
        BadSql{"update emp id = 1", "ORA-00971: missing SET keyword"},
        BadSql{"select id emp", "ORA-00923: FROM keyword not found where expected"},
        BadSql{"select id from emp where id", "ORA-00920: invalid relational operator"},
        BadSql{"select value(e) from emp e", "ORA-00904: \"E\": invalid identifier"},
        BadSql{"select value(x) from objs o", "ORA-00904: \"X\": invalid identifier"},
        BadSql{"select id from lobs where c = 'x'",
               "ORA-00932: inconsistent datatypes: expected - got CLOB"},
        BadSql{"insert into lobs values (1, empty_blob())",
               "ORA-00932: inconsistent datatypes: expected CLOB got BLOB"},
        BadSql{"select id from emp for update of", "ORA-00904: : invalid identifier"}));

}  // namespace
}  // namespace ocimem_test
