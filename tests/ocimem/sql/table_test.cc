// Tables: DUAL, CREATE TABLE in its relational and object forms, DROP TABLE, and the
// errors Oracle gives for bad table DDL.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

using TableTest = SqlTest;

TEST_F(TableTest, SelectOneFromDualWithoutFetchSucceeds) {
  OCIStmt* stmt = Prepare("select 1 from dual");
  EXPECT_EQ(OCI_SUCCESS, Execute(stmt, 0)) << FirstError(err_);
}

TEST_F(TableTest, SelectOneFromDualFetchesTheNumberOne) {
  OCIStmt* stmt = Prepare("select 1 from dual");
  int value = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &value, sizeof value, SQLT_INT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  EXPECT_EQ(1, value);
  ub4 rows = 0;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrGet(stmt, OCI_HTYPE_STMT, &rows, nullptr, OCI_ATTR_ROW_COUNT, err_));
  EXPECT_EQ(1u, rows);
}

// UNCONFIRMED: DUAL's column DUMMY holds 'X'
TEST_F(TableTest, DualHasOneRowWithDummyX) {
  EXPECT_EQ(std::vector<std::string>{"X"}, Column("select * from dual"));
  EXPECT_EQ(std::vector<std::string>{"X"}, Column("select dummy from sys.dual"));
}

TEST_F(TableTest, DualRefusesChanges) {
  EXPECT_EQ(1031, ExecError("insert into dual values ('Y')"));
  EXPECT_EQ(1031, ExecError("delete from dual"));
}

TEST_F(TableTest, RelationalTableStoresEachColumnType) {
  MustExec(
      "create table t (n number(5,2), s varchar2(10), c char(3), d date, r raw(4), "
      "i integer not null primary key, f float)");
  MustExec("insert into t values (12.345, 'abc', 'xy', null, '0aFF', 7, 1.5e3)");
  EXPECT_EQ(std::vector<std::string>{"12.35"}, Column("select n from t"));
  EXPECT_EQ(std::vector<std::string>{"abc"}, Column("select s from t"));
  EXPECT_EQ(std::vector<std::string>{"<null>"}, Column("select d from t"));
  EXPECT_EQ(std::vector<std::string>{"0AFF"}, Column("select r from t"));
  EXPECT_EQ(std::vector<std::string>{"7"}, Column("select t.i from t"));
  EXPECT_EQ(std::vector<std::string>{"1500"}, Column("select f from t where i = 7"));
  EXPECT_EQ(std::vector<std::string>{"xy "}, Column("select c from t where c = 'xy'"));
}

TEST_F(TableTest, UnquotedNamesAreUpperCase) {
  MustExec("create table Mixed (Col number)");
  MustExec("insert into MIXED (COL) values (1)");
  EXPECT_EQ(std::vector<std::string>{"1"}, Column("select col from mixed"));
  EXPECT_EQ(942, ExecError("select * from \"mixed\""));
}

TEST_F(TableTest, SchemaQualifiedTable) {
  MustExec("create table scott.q (a number)");
  MustExec("insert into q values (3)");
  EXPECT_EQ(std::vector<std::string>{"3"}, Column("select a from scott.q"));
}

TEST_F(TableTest, ObjectTableHasTheAttributesAsColumns) {
  MustExec("create type pt as object (x number, y varchar2(5))");
  MustExec("create table pts of pt (x primary key)");
  MustExec("insert into pts values (1, 'one')");
  EXPECT_EQ(std::vector<std::string>{"one"}, Column("select y from pts where x = 1"));
  EXPECT_EQ(1, ExecError("insert into pts values (1, 'again')"));
}

TEST_F(TableTest, NameAlreadyUsedByTableOrType) {
  MustExec("create type used_t as object (a number)");
  MustExec("create table used (a number)");
  EXPECT_EQ(955, ExecError("create table used (b number)"));
  EXPECT_EQ(955, ExecError("create table used_t (b number)"));
  EXPECT_EQ(955, ExecError("create type used as object (a number)"));
}

TEST_F(TableTest, DropTableRemovesItAndItsRows) {
  MustExec("create table gone (a number)");
  MustExec("insert into gone values (1)");
  MustExec("drop table gone");
  EXPECT_EQ(942, ExecError("select * from gone"));
  MustExec("create table gone (a number)");
  EXPECT_TRUE(Column("select a from gone").empty());
}

TEST_F(TableTest, DropUnknownTable) {
  EXPECT_EQ(942, ExecError("drop table nowhere"));
  EXPECT_EQ("ORA-00942: table or view does not exist", FirstError(err_));
}

TEST_F(TableTest, DropTypeUsedByTableIsRefused) {
  MustExec("create type row_t as object (a number)");
  MustExec("create table rows_of of row_t");
  EXPECT_EQ(2303, ExecError("drop type row_t"));
  MustExec("drop table rows_of");
  MustExec("drop type row_t");
}

TEST_F(TableTest, NestedTableColumnNeedsStorage) {
  MustExec("create type nums as table of number");
  EXPECT_EQ(22913, ExecError("create table nt (id number, vals nums)"));
  EXPECT_EQ("ORA-22913: must specify table name for nested table column or attribute",
            FirstError(err_));
  MustExec("create table nt (id number, vals nums) nested table vals store as nt_vals");
}

TEST_F(TableTest, NestedTableAttributeOfObjectTableNeedsStorage) {
  MustExec("create type nums as table of number");
  MustExec("create type holder as object (id number, vals nums)");
  EXPECT_EQ(22913, ExecError("create table holders of holder"));
  MustExec("create table holders of holder nested table vals store as holder_vals");
}

TEST_F(TableTest, StorageClauseForAColumnThatIsNoNestedTable) {
  EXPECT_EQ(22912, ExecError("create table bad (a number) nested table a store as bad_a"));
  EXPECT_EQ(904, ExecError("create table bad (a number) nested table b store as bad_b"));
}

TEST_F(TableTest, VarrayColumnNeedsNoStorage) {
  MustExec("create type few as varray(3) of number");
  MustExec("create table va (id number, f few)");
}

struct BadDdl {
  const char* sql;
  sb4 code;
};

class BadTableDdlTest : public SqlTest, public ::testing::WithParamInterface<BadDdl> {};

TEST_P(BadTableDdlTest, GivesOraclesError) {
  MustExec("create type some_t as object (a number)");
  EXPECT_EQ(GetParam().code, ExecError(GetParam().sql)) << GetParam().sql;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BadTableDdlTest,
    ::testing::Values(BadDdl{"create table t (a number, a number)", 957},
                      BadDdl{"create table t of no_such_t", 902},
                      BadDdl{"create table t a number", 906},
                      BadDdl{"create table t (a number", 907},
                      BadDdl{"create table t (a blob primary key)", 2329},
                      BadDdl{"create table t (a some_t primary key)", 2329},
                      BadDdl{"create table t (a number primary key, b number primary key)", 2260},
                      BadDdl{"create table t (a number, primary key (b))", 904},
                      BadDdl{"create table t of some_t (b primary key)", 904},
                      BadDdl{"create table t (a varchar2)", 906},
                      BadDdl{"create table t (a number) x", 922},
                      BadDdl{"drop table t extra", 933}));

}  // namespace
}  // namespace ocimem_test
