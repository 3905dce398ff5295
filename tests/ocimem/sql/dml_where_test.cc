// UPDATE and DELETE of many rows under any WHERE condition, SET expressions reading the
// row's old values, INSERT with expressions, the row counts, locks and visibility.
#include <string>

#include "expr_fixture.h"

namespace ocimem_test {
namespace {

using DmlWhereTest = ExprTest;

TEST_F(DmlWhereTest, UpdateSetsExpressionsOfTheOldRow) {
  EXPECT_EQ(2u, Changed("update emp set sal = sal * 1.1 where dept = 10"));
  EXPECT_EQ((Rows{"1|1100", "3|<null>"}), Fetch("select id, sal from emp where dept = 10", 2));
  // Every SET expression reads the row as it was.
  EXPECT_EQ(4u, Changed("update emp set id = id + 10, dept = id"));
  EXPECT_EQ((Rows{"11|1", "12|2", "13|3", "14|4"}), Fetch("select id, dept from emp", 2));
  EXPECT_EQ(3u, Changed("update emp set sal = sal + 1, name = lower(name) || '!' "
                        "where sal > 1000"));
  EXPECT_EQ((Rows{"ada!|1101", "bob!|1501.5", "dan!|2001"}),
            Fetch("select name, sal from emp where name like '%!'", 2));
  EXPECT_EQ(0u, Changed("update emp set sal = 0 where 1 = 2"));
}

TEST_F(DmlWhereTest, UpdateErrorsChangeNothing) {
  EXPECT_EQ("ORA-01476: divisor is equal to zero",
            ErrorOf("update emp set sal = sal / (id - 2) where sal is not null"));
  EXPECT_EQ("ORA-01438: value larger than specified precision allowed for this column",
            ErrorOf("update emp set sal = sal * 10000"));
  EXPECT_EQ("ORA-01407: cannot update (\"SCOTT\".\"EMP\".\"ID\") to NULL",
            ErrorOf("update emp set id = null where id = 1"));
  EXPECT_EQ(1, ExecError("update emp set id = id + 1 where sal >= 1000 and id < 3"));
  EXPECT_EQ((Rows{"1|1000", "2|1500.5", "3|<null>", "4|2000"}),
            Fetch("select id, sal from emp", 2));
  EXPECT_EQ("ORA-00904: \"NOSUCH\": invalid identifier",
            ErrorOf("update emp set sal = nosuch + 1"));
  EXPECT_EQ("ORA-00934: group function is not allowed here",
            ErrorOf("update emp set sal = count(*)"));
}

TEST_F(DmlWhereTest, DeleteUnderAnyCondition) {
  EXPECT_EQ(2u, Changed("delete from emp where sal is null or dept is null"));
  EXPECT_EQ((Rows{"1", "2"}), Column("select id from emp"));
  EXPECT_EQ(1u, Changed("delete emp where name like 'A%'"));
  EXPECT_EQ(0u, Changed("delete from emp where id not in (2)"));
  EXPECT_EQ(1u, Changed("delete from emp where rownum <= 5"));
  EXPECT_EQ(Rows{}, Column("select id from emp"));
  MustExec("rollback");
  EXPECT_EQ(2u, Changed("delete from emp where rownum <= 2"));
  EXPECT_EQ((Rows{"3", "4"}), Column("select id from emp"));
}

TEST_F(DmlWhereTest, InsertTakesExpressions) {
  EXPECT_EQ(1u,
            Changed("insert into emp (id, name, sal, hired) values "
                    "(2 * 5, 'E' || 'VE', 100 + 0.5, to_date('2022-02-02', 'YYYY-MM-DD') + 1)"));
  EXPECT_EQ((Rows{"10|EVE|100.5|03-FEB-22"}),
            Fetch("select id, name, sal, hired from emp where id = 10", 4));
  EXPECT_EQ(1u, Changed("insert into emp (id, name) values (nvl(null, 11), upper('x'))"));
  EXPECT_EQ((Rows{"X"}), Column("select name from emp where id = 11"));
  EXPECT_EQ("ORA-00984: column not allowed here",
            ErrorOf("insert into emp (id, name) values (12, name)"));
  // Constructor arguments are expressions too.
  MustExec("create type pair_t as object (a number, b varchar2(10))");
  MustExec("create table pairs (id number, p pair_t)");
  EXPECT_EQ(1u, Changed("insert into pairs values (1, pair_t(2 * 3, 'x' || 'y'))"));
  EXPECT_EQ("ORA-00984: column not allowed here",
            ErrorOf("insert into pairs values (2, pair_t(id + 1, 'z'))"));
  EXPECT_EQ("ORA-01476: divisor is equal to zero", ErrorOf("insert into emp (id) values (1 / 0)"));
  EXPECT_EQ("ORA-00934: group function is not allowed here",
            ErrorOf("insert into emp (id) values (count(*))"));
}

TEST_F(DmlWhereTest, ReturningTakesExpressions) {
  OCIStmt* stmt = Prepare(
      "update emp set sal = sal * 2 where id = 1 returning sal, sal / 4, name || '!' into :a, "
      ":b, :c");
  int sal = 0;
  int quarter = 0;
  char name[16] = {0};
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  OCIBind* b3 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, &sal, sizeof sal, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, &quarter, sizeof quarter, SQLT_INT,
                                      nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b3, err_, 3, name, sizeof name, SQLT_STR, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ(2000, sal);
  EXPECT_EQ(500, quarter);
  EXPECT_STREQ("ADA!", name);
  // DELETE returns the row as it was; INSERT as stored.
  stmt = Prepare("delete from emp where id = 2 returning upper(lower(name)) || dept into :n");
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, name, sizeof name, SQLT_STR, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_STREQ("BOB20", name);
  stmt = Prepare("insert into emp (id, sal) values (7, 10) returning id * 100 + sal into :v");
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, &sal, sizeof sal, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ(710, sal);
  // An error in a returned value leaves the table as it was.
  stmt = Prepare("update emp set sal = 0 where id = 1 returning 1 / sal into :v");
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, &sal, sizeof sal, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ("ORA-01476: divisor is equal to zero", FirstError(err_));
  EXPECT_EQ((Rows{"2000"}), Column("select sal from emp where id = 1"));
  // decision EX8: aggregates and ROWNUM are not taken here.
  EXPECT_EQ("ORA-00936: missing expression",
            ErrorOf("update emp set sal = 1 where id = 1 returning max(sal) into :s"));
  EXPECT_EQ("ORA-00936: missing expression",
            ErrorOf("delete from emp where id = 1 returning rownum into :s"));
}

TEST_F(DmlWhereTest, LocksAndVisibility) {
  EXPECT_EQ(2u, Changed("update emp set sal = 0 where dept = 10"));
  OCISvcCtx* other = OtherSession();
  // The other session sees the committed values and cannot change the locked rows.
  EXPECT_EQ((Rows{"1000"}), Column("select sal from emp where id = 1", other));
  EXPECT_EQ(OCI_ERROR, ExecOn(other, "update emp set sal = 1 where sal > 500"));
  EXPECT_EQ(54, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, ExecOn(other, "delete from emp where name = 'CY'"));
  EXPECT_EQ(54, FirstCode(err_));
  // Rows that nobody holds can be changed.
  EXPECT_EQ(OCI_SUCCESS, ExecOn(other, "update emp set sal = sal + 1 where id = 2"));
  EXPECT_EQ((Rows{"0", "1500.5", "0", "2000"}), Column("select sal from emp"));
  MustExec("commit");
  // The other session sees the commit, and its own change to row 2.
  EXPECT_EQ((Rows{"0", "1501.5", "0", "2000"}), Column("select sal from emp", other));
}

}  // namespace
}  // namespace ocimem_test
