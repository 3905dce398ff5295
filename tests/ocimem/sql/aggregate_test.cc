// Aggregates over the whole result and over groups: COUNT(*), COUNT(expr),
// COUNT(DISTINCT expr), MIN, MAX, SUM, AVG, GROUP BY and HAVING, with Oracle's errors.
#include <string>

#include "expr_fixture.h"

namespace ocimem_test {
namespace {

using AggregateTest = ExprTest;

TEST_F(AggregateTest, OverTheWholeResult) {
  EXPECT_EQ((Rows{"4"}), Column("select count(*) from emp"));
  EXPECT_EQ((Rows{"3"}), Column("select count(sal) from emp"));
  EXPECT_EQ((Rows{"2"}), Column("select count(distinct dept) from emp"));
  EXPECT_EQ((Rows{"3"}), Column("select count(all dept) from emp"));
  EXPECT_EQ((Rows{"4500.5"}), Column("select sum(sal) from emp"));
  EXPECT_EQ((Rows{"1500.166666666666666666666666666666666667"}),
            Column("select avg(sal) from emp"));
  EXPECT_EQ((Rows{"1000|2000"}), Fetch("select min(sal), max(sal) from emp", 2));
  EXPECT_EQ((Rows{"ADA|DAN"}), Fetch("select min(name), max(name) from emp", 2));
  EXPECT_EQ((Rows{"31-DEC-19|15-MAR-21"}), Fetch("select min(hired), max(hired) from emp", 2));
  EXPECT_EQ((Rows{"30"}), Column("select sum(distinct dept) from emp"));
  EXPECT_EQ((Rows{"5"}), Column("select count(*) + 1 from emp"));
  EXPECT_EQ((Rows{"1500.166666666666666666666666666666666667"}),
            Column("select sum(sal) / count(sal) from emp"));
  EXPECT_EQ((Rows{"2"}), Column("select count(*) from emp where rownum <= 2"));
  EXPECT_EQ((Rows{"2"}), Column("select count(*) from emp where dept = 10"));
}

TEST_F(AggregateTest, NoRows) {
  EXPECT_EQ((Rows{"0|0|<null>|<null>|<null>|<null>"}),
            Fetch("select count(*), count(sal), sum(sal), avg(sal), min(sal), max(name) "
                  "from emp where id > 100",
                  6));
  EXPECT_EQ((Rows{"<null>"}), Column("select sum(sal) from emp where id = 3"));
  EXPECT_EQ((Rows{"0"}), Column("select count(sal) from emp where id = 3"));
}

TEST_F(AggregateTest, GroupByAndHaving) {
  EXPECT_EQ((Rows{"10|2|1000", "20|1|1500.5", "<null>|1|2000"}),
            Fetch("select dept, count(*), sum(sal) from emp group by dept order by dept", 3));
  EXPECT_EQ((Rows{"10|2"}),
            Fetch("select dept, count(*) from emp group by dept having count(*) > 1", 2));
  EXPECT_EQ((Rows{"20", "<null>"}),
            Column("select dept from emp group by dept having max(sal) > 1200 order by 1"));
  EXPECT_EQ((Rows{"11|2"}),
            Fetch("select dept + 1, count(*) from emp where dept = 10 group by dept + 1", 2));
  EXPECT_EQ((Rows{"10|2", "<null>|1", "20|1"}),
            Fetch("select dept, count(*) from emp group by dept order by count(*) desc, dept "
                  "nulls first",
                  2));
  // No rows, GROUP BY: no groups.
  EXPECT_EQ(Rows{}, Column("select count(*) from emp where id > 100 group by dept"));
}

TEST_F(AggregateTest, Errors) {
  EXPECT_EQ("ORA-00937: not a single-group group function",
            ErrorOf("select id, count(*) from emp"));
  EXPECT_EQ("ORA-00937: not a single-group group function",
            ErrorOf("select sum(sal) + id from emp"));
  EXPECT_EQ("ORA-00979: not a GROUP BY expression",
            ErrorOf("select name, count(*) from emp group by dept"));
  EXPECT_EQ("ORA-00979: not a GROUP BY expression",
            ErrorOf("select dept from emp group by dept order by name"));
  EXPECT_EQ("ORA-00934: group function is not allowed here",
            ErrorOf("select id from emp where sum(sal) > 1"));
  EXPECT_EQ("ORA-00934: group function is not allowed here",
            ErrorOf("select count(*) from emp group by count(*)"));
  EXPECT_EQ("ORA-00934: group function is not allowed here",
            ErrorOf("update emp set sal = max(sal)"));
  EXPECT_EQ("ORA-00978: nested group function without GROUP BY",
            ErrorOf("select max(count(*)) from emp"));
  // decision EX5: one aggregate over the groups of another is not taken.
  EXPECT_EQ("ORA-00935: group function is nested too deeply",
            ErrorOf("select max(count(*)) from emp group by dept"));
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select sum(name) from emp"));
  EXPECT_EQ("ORA-00937: not a single-group group function",
            ErrorOf("select rownum, count(*) from emp"));
}

// An aggregate takes exactly one argument (found by fuzzing: COUNT() read an
// argument that was not there).
TEST_F(AggregateTest, AnAggregateWithoutItsArgumentOrWithTwoIsRefused) {
  for (const char* sql : {"select count() from emp", "select count(), max(sal) from emp",
                          "select max() from emp",
                          "select min(sal, id) from emp", "select avg(all sal, 1) from emp",
                          "select dept, count() from emp group by dept"}) {
    EXPECT_EQ("ORA-00909: invalid number of arguments", ErrorOf(sql)) << sql;
  }
  EXPECT_EQ((Rows{"3|2000"}), Fetch("select count(sal), max(sal) from emp", 2));
}

}  // namespace
}  // namespace ocimem_test
