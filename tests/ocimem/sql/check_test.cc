// CHECK constraints: a condition on the row's columns, which a row passes when it is TRUE
// or UNKNOWN, at INSERT and UPDATE.
#include <gtest/gtest.h>

#include <string>

#include "constraint_fixture.h"

namespace ocimem_test {
namespace {

using CheckTest = ConstraintFixture;

TEST_F(CheckTest, RowsPassWhenTheConditionIsTrueOrUnknown) {
  MustExec("create table t (id number, status char(1) constraint t_status check (status = 'A'))");
  MustExec("insert into t values (1, 'A')");
  MustExec("insert into t values (2, null)");  // UNKNOWN passes
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.T_STATUS) violated",
            ErrorOf("insert into t values (3, 'B')"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.T_STATUS) violated",
            ErrorOf("update t set status = 'B'"));
  EXPECT_EQ((Rows{"A", "<null>"}), Column("select status from t"));
  EXPECT_EQ(2u, Changed("update t set status = null"));
}

TEST_F(CheckTest, ConditionsJoinedByAndFailWhenOneIsFalse) {
  MustExec("create table t (a number, b varchar2(3), constraint t_ab check (a = 1 and b = 'x'))");
  MustExec("insert into t values (1, 'x')");
  MustExec("insert into t values (null, 'x')");  // UNKNOWN and TRUE
  MustExec("insert into t values (1, null)");
  MustExec("insert into t values (null, null)");
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.T_AB) violated",
            ErrorOf("insert into t values (2, 'x')"));
  // FALSE and UNKNOWN is FALSE.
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.T_AB) violated",
            ErrorOf("insert into t values (null, 'y')"));
  EXPECT_EQ(4u, Column("select a from t").size());
}

TEST_F(CheckTest, ValuesOnBothSidesAndColumnsOnTheRight) {
  MustExec("create table t (a number, check (1 = a), check (1 = 1), check (null = 2))");
  MustExec("insert into t values (1)");
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.SYS_C007131) violated",
            ErrorOf("insert into t values (2)"));
  MustExec("create table u (a number, constraint never check (1 = 2))");
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.NEVER) violated",
            ErrorOf("insert into u values (1)"));
}

TEST_F(CheckTest, EveryCheckOfTheTableApplies) {
  MustExec("create table t (a number constraint a_one check (a = 1), "
           "b number constraint b_two check (b = 2))");
  MustExec("insert into t values (1, 2)");
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.A_ONE) violated",
            ErrorOf("insert into t values (3, 2)"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.B_TWO) violated",
            ErrorOf("insert into t values (1, 3)"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.B_TWO) violated",
            ErrorOf("update t set b = 3 where a = 1"));
  EXPECT_EQ((Rows{"2"}), Column("select b from t"));
}

// The value is converted to the column's type when a row is checked, as a WHERE clause's.
TEST_F(CheckTest, TheComparedValueTakesTheColumnsType) {
  MustExec("create table t (n number check (n = '5'))");
  MustExec("insert into t values (5)");
  EXPECT_EQ(2290, ExecError("insert into t values (6)"));
  MustExec("create table u (n number check (n = 'five'))");
  EXPECT_EQ("ORA-01722: invalid number", ErrorOf("insert into u values (5)"));
}

// A CHECK condition is any condition a WHERE clause takes, on the row's own columns.
TEST_F(CheckTest, AnyConditionOfTheRow) {
  MustExec("create table t (a number constraint a_pos check (a > 0), b number, "
           "constraint a_b check (a <= b or b is null), "
           "constraint b_in check (b in (1, 2, 3, 10) and mod(b, 2) = 1 or b = 10))");
  MustExec("insert into t values (1, 3)");
  MustExec("insert into t values (5, null)");
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.A_POS) violated",
            ErrorOf("insert into t values (0, 3)"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.A_B) violated",
            ErrorOf("insert into t values (4, 3)"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.B_IN) violated",
            ErrorOf("insert into t values (1, 2)"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.A_POS) violated",
            ErrorOf("update t set a = a - 1"));
  MustExec("create table w (s varchar2(10) check (s like 'X%' and length(s) > 1))");
  MustExec("insert into w values ('XY')");
  EXPECT_EQ(2290, ExecError("insert into w values ('X')"));
}

TEST_F(CheckTest, WhatAConditionCannotRead) {
  EXPECT_EQ("ORA-02436: date or system variable wrongly specified in CHECK constraint",
            ErrorOf("create table t (d date check (d > sysdate))"));
  EXPECT_EQ("ORA-02436: date or system variable wrongly specified in CHECK constraint",
            ErrorOf("create table t (n number check (n > rownum))"));
  EXPECT_EQ("ORA-00934: group function is not allowed here",
            ErrorOf("create table t (n number check (n > max(n)))"));
  EXPECT_EQ("ORA-02438: Column check constraint cannot reference other columns",
            ErrorOf("create table t (a number, b number check (b > a + 1))"));
  EXPECT_EQ("ORA-02287: sequence number not allowed here",
            ErrorOf("create table t (a number check (a = s.nextval))"));
  EXPECT_EQ("ORA-00920: invalid relational operator",
            ErrorOf("create table t (a number check (a + 1))"));
}

}  // namespace
}  // namespace ocimem_test
