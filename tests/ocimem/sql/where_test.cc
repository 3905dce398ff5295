// WHERE conditions under three-valued logic: comparisons, IS NULL, IN, BETWEEN, LIKE,
// AND, OR, NOT and parentheses, ROWNUM, and their errors.
#include <string>

#include "expr_fixture.h"

namespace ocimem_test {
namespace {

class WhereTest : public ExprTest {
 protected:
  Rows Ids(const std::string& where) { return Column("select id from emp where " + where); }
};

TEST_F(WhereTest, Comparisons) {
  EXPECT_EQ((Rows{"2", "4"}), Ids("sal > 1000"));
  EXPECT_EQ((Rows{"1", "2", "4"}), Ids("sal >= 1000"));
  EXPECT_EQ((Rows{"1"}), Ids("sal < 1500"));
  EXPECT_EQ((Rows{"1", "2"}), Ids("sal <= 1500.5"));
  EXPECT_EQ((Rows{"2", "4"}), Ids("sal <> 1000"));
  EXPECT_EQ((Rows{"2", "4"}), Ids("sal != 1000"));
  EXPECT_EQ((Rows{"2", "4"}), Ids("sal ^= 1000"));
  EXPECT_EQ((Rows{"1"}), Ids("1000 = sal"));
  EXPECT_EQ((Rows{"2"}), Ids("sal - 500 = 1000.5"));
  EXPECT_EQ((Rows{"3"}), Ids("name < 'D' and name > 'BZ'"));
  EXPECT_EQ((Rows{"1", "2", "3"}), Ids("dept = id * 10 or dept = 10"));
  // A comparison with NULL is never true.
  EXPECT_EQ(Rows{}, Ids("sal = null"));
  EXPECT_EQ(Rows{}, Ids("sal <> null"));
  EXPECT_EQ(Rows{}, Ids("null = null"));
}

TEST_F(WhereTest, IsNull) {
  EXPECT_EQ((Rows{"3"}), Ids("sal is null"));
  EXPECT_EQ((Rows{"1", "2", "3"}), Ids("dept is not null"));
  EXPECT_EQ((Rows{"4"}), Ids("dept + 1 is null"));
  EXPECT_EQ((Rows{"1", "2", "3", "4"}), Ids("'' is null"));
}

TEST_F(WhereTest, InLists) {
  EXPECT_EQ((Rows{"1", "3"}), Ids("dept in (10, 30)"));
  EXPECT_EQ((Rows{"2"}), Ids("dept not in (10, 30)"));
  EXPECT_EQ((Rows{"2"}), Ids("dept in (20, null)"));
  // x NOT IN (.., NULL) is never true.
  EXPECT_EQ(Rows{}, Ids("dept not in (10, null)"));
  EXPECT_EQ((Rows{"1", "2"}), Ids("name in ('ADA', 'BOB', 'X')"));
  EXPECT_EQ((Rows{"2", "3"}), Ids("id in (id * 0 + 2, 3)"));
}

TEST_F(WhereTest, Between) {
  EXPECT_EQ((Rows{"1", "2"}), Ids("sal between 1000 and 1500.5"));
  EXPECT_EQ((Rows{"2", "4"}), Ids("sal not between 1000 and 1500"));
  EXPECT_EQ(Rows{}, Ids("sal between 2000 and 1000"));
  EXPECT_EQ((Rows{"1", "2"}), Ids("hired between '01-JAN-20' and '31-DEC-21'"));
  // Unknown when a bound is NULL, unless the other bound already decides.
  EXPECT_EQ(Rows{}, Ids("sal between null and 5000"));
  EXPECT_EQ((Rows{"1", "2", "4"}), Ids("sal not between 5000 and null"));
}

TEST_F(WhereTest, Like) {
  MustExec("create table words (w varchar2(20))");
  for (const char* w : {"abc", "a_c", "a%c", "ABC", "abcabc"}) {
    MustExec(std::string("insert into words values ('") + w + "')");
  }
  MustExec("insert into words values (null)");
  auto words = [&](const std::string& where) {
    return Column("select w from words where " + where);
  };
  EXPECT_EQ((Rows{"abc", "a_c", "a%c", "abcabc"}), words("w like 'a%'"));
  EXPECT_EQ((Rows{"abc", "a_c", "a%c"}), words("w like 'a_c'"));
  EXPECT_EQ((Rows{"a_c"}), words("w like 'a\\_c' escape '\\'"));
  EXPECT_EQ((Rows{"a%c"}), words("w like 'a!%%' escape '!'"));
  EXPECT_EQ((Rows{"ABC"}), words("w not like 'a%'"));
  EXPECT_EQ((Rows{"abc", "a_c", "a%c", "ABC", "abcabc"}), words("w like '%'"));
  EXPECT_EQ((Rows{"abcabc"}), words("w like '%c%c'"));
  EXPECT_EQ((Rows{"abc", "abcabc"}), words("w like 'ab%c'"));
  EXPECT_EQ(Rows{}, words("w like null"));
  EXPECT_EQ("ORA-01425: escape character must be character string of length 1",
            QueryError("select w from words where w like 'a%' escape 'xy'"));
  EXPECT_EQ("ORA-01424: missing or illegal character following the escape character",
            QueryError("select w from words where w like 'a\\' escape '\\'"));
  EXPECT_EQ("ORA-01424: missing or illegal character following the escape character",
            QueryError("select w from words where w like 'a\\b' escape '\\'"));
  // Numbers and dates are matched as their text.
  EXPECT_EQ((Rows{"2"}), Ids("sal like '15%'"));
}

TEST_F(WhereTest, AndBindsTighterThanOr) {
  EXPECT_EQ((Rows{"1", "2", "3"}), Ids("dept = 10 or dept = 20 and sal > 1200"));
  EXPECT_EQ((Rows{"2"}), Ids("(dept = 10 or dept = 20) and sal > 1200"));
  EXPECT_EQ((Rows{"2"}), Ids("not dept = 10"));
  EXPECT_EQ((Rows{"1"}), Ids("not (sal > 1000)"));
  EXPECT_EQ((Rows{"1"}), Ids("((id = 1))"));
  EXPECT_EQ((Rows{"1", "2"}), Ids("(id) in (1, 2)"));
}

TEST_F(WhereTest, ThreeValuedLogic) {
  // row 3: dept 10, sal NULL (unknown); row 4: dept NULL (unknown), sal 2000.
  EXPECT_EQ((Rows{"1", "2", "4"}), Ids("not (dept = 10 and sal > 5000)"));
  EXPECT_EQ((Rows{"1", "3", "4"}), Ids("dept = 10 or sal > 1800"));
  EXPECT_EQ((Rows{"1", "2"}), Ids("not (dept is null or sal is null)"));
  EXPECT_EQ(Rows{}, Ids("not (sal > 0 or dept > 0) "));
  EXPECT_EQ(Rows{}, Ids("dept = 10 and not (sal = 1000)"));
}

TEST_F(WhereTest, KeyLookupsStillUseTheWholeKey) {
  EXPECT_EQ((Rows{"BOB"}), Column("select name from emp where id = 2"));
  EXPECT_EQ((Rows{"BOB"}), Column("select name from emp where 2 = id and name = 'BOB'"));
  EXPECT_EQ(Rows{}, Column("select name from emp where id = 2 and name = 'ADA'"));
  EXPECT_EQ((Rows{"BOB"}), Column("select name from emp where id = '2'"));
  EXPECT_EQ((Rows{"ADA", "BOB"}), Column("select name from emp where id = 2 or id = 1"));
}

TEST_F(WhereTest, Rownum) {
  EXPECT_EQ((Rows{"1", "2"}), Ids("rownum <= 2"));
  EXPECT_EQ((Rows{"1"}), Ids("rownum < 2"));
  EXPECT_EQ((Rows{"1"}), Ids("rownum = 1"));
  // A row failing the test does not take the number, so no row ever reaches 2.
  EXPECT_EQ(Rows{}, Ids("rownum > 1"));
  EXPECT_EQ(Rows{}, Ids("rownum = 2"));
  EXPECT_EQ((Rows{"2", "4"}), Ids("sal > 1000 and rownum <= 5"));
  EXPECT_EQ((Rows{"1", "2", "3"}),
            Column("select rownum from emp where dept = 10 or dept = 20 and rownum < 10"));
  EXPECT_EQ((Rows{"1", "2", "3"}), Column("select rownum from emp where dept is not null"));
  EXPECT_EQ((Rows{"2|1", "3|2"}),
            Fetch("select id, rownum from emp where id > 1 and rownum < 3", 2));
}

TEST_F(WhereTest, Errors) {
  EXPECT_EQ("ORA-00936: missing expression", ErrorOf("select id from emp where sal >"));
  EXPECT_EQ("ORA-00920: invalid relational operator", ErrorOf("select id from emp where sal"));
  EXPECT_EQ("ORA-00936: missing expression", ErrorOf("select id from emp where sal = 1 and"));
  EXPECT_EQ("ORA-00934: group function is not allowed here",
            ErrorOf("select id from emp where count(*) > 1"));
  EXPECT_EQ("ORA-00904: \"NOSUCH\": invalid identifier",
            ErrorOf("select id from emp where nosuch = 1"));
  EXPECT_EQ("ORA-00907: missing right parenthesis", ErrorOf("select id from emp where (sal = 1"));
  EXPECT_EQ("ORA-00906: missing left parenthesis", ErrorOf("select id from emp where sal in 1"));
  EXPECT_EQ("ORA-00905: missing keyword", ErrorOf("select id from emp where sal between 1"));
  EXPECT_EQ("ORA-00908: missing NULL keyword", ErrorOf("select id from emp where sal is 1"));
  EXPECT_EQ("ORA-00920: invalid relational operator",
            ErrorOf("select id from emp where sal not 1"));
  EXPECT_EQ("ORA-00920: invalid relational operator",
            ErrorOf("select id from emp where sal = 1 and dept"));
  EXPECT_EQ("ORA-00933: SQL command not properly ended",
            ErrorOf("select id from emp where sal = 1 = 2"));
  EXPECT_EQ("ORA-02287: sequence number not allowed here",
            ErrorOf("select id from emp where id = s.nextval"));
}

}  // namespace
}  // namespace ocimem_test
