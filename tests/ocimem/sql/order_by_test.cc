// Select lists with expressions and aliases, DISTINCT, and ORDER BY by expressions,
// positions and aliases with ASC, DESC, NULLS FIRST and NULLS LAST.
#include <string>

#include "expr_fixture.h"

namespace ocimem_test {
namespace {

using OrderByTest = ExprTest;

TEST_F(OrderByTest, SelectListExpressionsAndAliases) {
  EXPECT_EQ((Rows{"1|ADA!|2000", "2|BOB!|3001"}),
            Fetch("select id, name || '!' shout, sal * 2 as twice from emp where sal < 2000", 3));
  EXPECT_EQ((Rows{"3|CY|<null>"}),
            Fetch("select e.id, e.name, e.sal / 2 from emp e where id = 3", 3));
  EXPECT_EQ((Rows{"1|x|1"}), Fetch("select id, 'x', 1 from emp where id = 1", 3));
}

TEST_F(OrderByTest, NullsSortAsTheLargestValue) {
  EXPECT_EQ((Rows{"1", "2", "4", "3"}), Column("select id from emp order by sal"));
  EXPECT_EQ((Rows{"1", "2", "4", "3"}), Column("select id from emp order by sal asc"));
  EXPECT_EQ((Rows{"3", "4", "2", "1"}), Column("select id from emp order by sal desc"));
  EXPECT_EQ((Rows{"3", "1", "2", "4"}), Column("select id from emp order by sal nulls first"));
  EXPECT_EQ((Rows{"4", "2", "1", "3"}),
            Column("select id from emp order by sal desc nulls last"));
}

TEST_F(OrderByTest, PositionsAliasesAndExpressions) {
  EXPECT_EQ((Rows{"1|ADA", "2|BOB", "3|CY", "4|DAN"}),
            Fetch("select id, name from emp order by 2", 2));
  EXPECT_EQ((Rows{"DAN", "CY", "BOB", "ADA"}), Column("select name from emp order by 1 desc"));
  EXPECT_EQ((Rows{"3", "4", "2", "1"}),
            Column("select id, sal * 2 double_sal from emp order by double_sal desc"));
  EXPECT_EQ((Rows{"4", "3", "2", "1"}), Column("select id from emp order by -id"));
  EXPECT_EQ((Rows{"3", "1", "2", "4"}), Column("select id from emp order by dept, name desc"));
  EXPECT_EQ((Rows{"2", "1", "3", "4"}),
            Column("select id from emp order by hired desc nulls last"));
  // Ordered by a column that is not selected.
  EXPECT_EQ((Rows{"ADA", "CY", "BOB", "DAN"}), Column("select name from emp order by dept, id"));
}

TEST_F(OrderByTest, BadPositions) {
  EXPECT_EQ("ORA-01785: ORDER BY item must be the number of a SELECT-list expression",
            ErrorOf("select id, name from emp order by 3"));
  EXPECT_EQ("ORA-01785: ORDER BY item must be the number of a SELECT-list expression",
            ErrorOf("select id from emp order by 0"));
  EXPECT_EQ("ORA-00904: \"NOSUCH\": invalid identifier",
            ErrorOf("select id from emp order by nosuch"));
  EXPECT_EQ("ORA-00924: missing BY keyword", ErrorOf("select id from emp order sal"));
  EXPECT_EQ("ORA-00933: SQL command not properly ended",
            ErrorOf("select id from emp order by sal nulls"));
}

TEST_F(OrderByTest, RownumIsTakenBeforeOrdering) {
  EXPECT_EQ((Rows{"BOB", "ADA"}),
            Column("select name from emp where rownum <= 2 order by name desc"));
  EXPECT_EQ((Rows{"4|4", "3|3", "2|2", "1|1"}),
            Fetch("select id, rownum from emp order by id desc", 2));
}

TEST_F(OrderByTest, Distinct) {
  EXPECT_EQ((Rows{"10", "20", "<null>"}), Column("select distinct dept from emp order by dept"));
  EXPECT_EQ(3u, Column("select distinct dept from emp").size());
  EXPECT_EQ((Rows{"A   ", "BB  ", "<null>"}), Column("select distinct code from emp order by 1"));
  EXPECT_EQ((Rows{"10|ADA", "10|CY", "20|BOB", "<null>|DAN"}),
            Fetch("select distinct dept, name from emp order by dept, name", 2));
  EXPECT_EQ((Rows{"1"}), Column("select distinct 1 from emp"));
  EXPECT_EQ((Rows{"0", "1"}), Column("select unique mod(id, 2) from emp order by 1"));
  EXPECT_EQ("ORA-01791: not a SELECTed expression",
            ErrorOf("select distinct dept from emp order by name"));
}

TEST_F(OrderByTest, LobsCannotBeSortedOrCompared) {
  MustExec("create table docs (id number, body clob)");
  MustExec("insert into docs values (1, 'a')");
  MustExec("insert into docs values (2, 'b')");
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected - got CLOB",
            ErrorOf("select id from docs order by body"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected - got CLOB",
            ErrorOf("select id, body from docs order by 2"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected - got CLOB",
            ErrorOf("select body b from docs order by b"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected - got CLOB",
            ErrorOf("select distinct body from docs"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected - got CLOB",
            ErrorOf("select count(*) from docs group by body"));
  EXPECT_EQ((Rows{"2", "1"}), Column("select id from docs order by id desc"));
}

TEST_F(OrderByTest, SubqueriesAreNotTaken) {
  // decision EX7: refused where the subquery starts.
  EXPECT_EQ("ORA-00936: missing expression",
            ErrorOf("select id from emp where id in (select id from emp)"));
  EXPECT_EQ("ORA-00936: missing expression", ErrorOf("select (select 1 from dual) from emp"));
  EXPECT_EQ("ORA-00936: missing expression",
            ErrorOf("select id from emp where not exists (select 1 from dual)"));
}

}  // namespace
}  // namespace ocimem_test
