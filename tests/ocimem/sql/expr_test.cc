// Expressions: literals, columns, unary and binary operators with Oracle's precedence,
// exact NUMBER arithmetic, concatenation, DATE arithmetic and the implicit conversions of
// comparisons, with Oracle's errors.
#include <string>

#include "expr_fixture.h"

namespace ocimem_test {
namespace {

TEST_F(ExprTest, ArithmeticFollowsOraclesPrecedence) {
  EXPECT_EQ("7", Eval("1 + 2 * 3"));
  EXPECT_EQ("9", Eval("(1 + 2) * 3"));
  EXPECT_EQ("-4", Eval("1 - 2 - 3"));
  EXPECT_EQ("1.5", Eval("2 * 3 / 4"));
  EXPECT_EQ("6", Eval("-2 * -3"));
  EXPECT_EQ("1", Eval("- -1"));
  EXPECT_EQ("-5", Eval("-(2 + 3)"));
  EXPECT_EQ("5", Eval("+(2 + 3)"));
  EXPECT_EQ("2.5", Eval("10 / 4"));
}

TEST_F(ExprTest, NumberArithmeticIsExactToFortyDigits) {
  EXPECT_EQ(".3333333333333333333333333333333333333333", Eval("1 / 3"));
  EXPECT_EQ(".6666666666666666666666666666666666666667", Eval("2 / 3"));
  EXPECT_EQ(".3", Eval("0.1 + 0.2"));
  EXPECT_EQ("123456789012345678901234567890", Eval("123456789012345 * 1000000000000000 + "
                                                   "678901234567890"));
  EXPECT_EQ("-.000001", Eval("0.000001 - 0.000002"));
  EXPECT_EQ("1" + std::string(100, '0'), Eval("1e50 * 1e50"));
}

TEST_F(ExprTest, DivisionByZeroIsAnError) {
  EXPECT_EQ("ORA-01476: divisor is equal to zero", QueryError("select 1 / 0 from dual"));
  EXPECT_EQ("ORA-01476: divisor is equal to zero",
            QueryError("select sal / (id - 1) from emp"));
  EXPECT_EQ("ORA-01426: numeric overflow", QueryError("select 1e100 * 1e100 from dual"));
}

TEST_F(ExprTest, NullMakesArithmeticNull) {
  EXPECT_EQ("<null>", Eval("1 + null"));
  EXPECT_EQ("<null>", Eval("null * 2"));
  EXPECT_EQ("<null>", Eval("-null"));
  EXPECT_EQ((Rows{"<null>"}), Column("select sal + 1 from emp where id = 3"));
}

TEST_F(ExprTest, ConcatenationTreatsNullAsEmpty) {
  EXPECT_EQ("ab", Eval("'a' || null || 'b'"));
  EXPECT_EQ("<null>", Eval("null || null"));
  EXPECT_EQ("<null>", Eval("'' || ''"));
  EXPECT_EQ("12", Eval("1 || 2"));
  EXPECT_EQ("x1.5", Eval("'x' || 1.5"));
  // || has the precedence of binary + and -: ('x' || 1) + 2.
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select 'x' || 1 + 2 from dual"));
  EXPECT_EQ("x3", Eval("'x' || (1 + 2)"));
  EXPECT_EQ("33", Eval("1 + 2 || 3"));
  EXPECT_EQ((Rows{"DAN-"}), Column("select name || '-' || dept from emp where id = 4"));
  EXPECT_EQ((Rows{"ADA:01-JAN-20"}), Column("select name || ':' || hired from emp where id = 1"));
}

TEST_F(ExprTest, TextMeetsNumbersAsANumber) {
  EXPECT_EQ("7", Eval("'3' + 4"));
  EXPECT_EQ("-2.5", Eval("'-5' / 2"));
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select 'abc' + 1 from dual"));
  EXPECT_EQ((Rows{"BOB"}), Column("select name from emp where id = '2'"));
  EXPECT_EQ((Rows{"BOB"}), Column("select name from emp where id = ' 2.0 '"));
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select name from emp where id = 'x'"));
  // A VARCHAR2 column compared with a number is read as a number.
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select id from emp where name = 5"));
}

TEST_F(ExprTest, ColumnsInExpressions) {
  EXPECT_EQ((Rows{"3001"}), Column("select sal * 2 from emp where id = 2"));
  EXPECT_EQ((Rows{"1001"}), Column("select e.sal + e.id from emp e where e.id = 1"));
  EXPECT_EQ((Rows{"1001"}), Column("select emp.sal + emp.id from emp where emp.id = 1"));
  EXPECT_EQ((Rows{"-1500.5"}), Column("select -sal from emp where id = 2"));
  EXPECT_EQ((Rows{"2", "3", "4", "5"}), Column("select id + 1 from emp"));
  EXPECT_EQ("ORA-00904: \"NOSUCH\": invalid identifier", ErrorOf("select nosuch + 1 from emp"));
  EXPECT_EQ("ORA-00904: \"X\".\"ID\": invalid identifier", ErrorOf("select x.id * 2 from emp e"));
}

TEST_F(ExprTest, DateArithmetic) {
  EXPECT_EQ((Rows{"02-JAN-20"}), Column("select hired + 1 from emp where id = 1"));
  EXPECT_EQ((Rows{"31-DEC-19"}), Column("select hired - 1 from emp where id = 1"));
  EXPECT_EQ((Rows{"02-JAN-20"}), Column("select 1 + hired from emp where id = 1"));
  EXPECT_EQ((Rows{"0"}), Column("select hired - hired from emp where id = 1"));
  EXPECT_EQ((Rows{"1"}), Column("select hired - to_date('2019-12-31', 'YYYY-MM-DD') "
                                "from emp where id = 1"));
  EXPECT_EQ((Rows{"2020-01-01 12:00:00"}),
            Column("select to_char(hired + 0.5, 'YYYY-MM-DD HH24:MI:SS') from emp where id = 1"));
  EXPECT_EQ((Rows{"2019-12-31 18:00:00"}),
            Column("select to_char(hired - 1/4, 'YYYY-MM-DD HH24:MI:SS') from emp where id = 1"));
  EXPECT_EQ((Rows{".25"}),
            Column("select (hired + 1/4) - hired from emp where id = 1"));
  EXPECT_EQ((Rows{"439"}), Column("select to_date('15-MAR-21') - hired from emp where id = 1"));
  EXPECT_EQ((Rows{"<null>"}), Column("select hired + 1 from emp where id = 4"));
}

TEST_F(ExprTest, DateArithmeticErrors) {
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got DATE",
            QueryError("select 1 - hired from emp where id = 1"));
  EXPECT_EQ("ORA-00975: date + date not allowed",
            QueryError("select hired + hired from emp where id = 1"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got DATE",
            QueryError("select hired * 2 from emp where id = 1"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got DATE",
            QueryError("select 2 / hired from emp where id = 1"));
}

TEST_F(ExprTest, DatesMeetTextInTheSessionDateFormat) {
  EXPECT_EQ((Rows{"ADA"}), Column("select name from emp where hired = '01-JAN-20'"));
  EXPECT_EQ((Rows{"ADA", "BOB"}), Column("select name from emp where hired > '31-DEC-19'"));
  MustExec("alter session set nls_date_format = 'YYYY-MM-DD'");
  EXPECT_EQ((Rows{"BOB"}), Column("select name from emp where hired = '2021-03-15'"));
  EXPECT_EQ((Rows{"2020-01-02"}), Column("select hired + 1 from emp where id = 1"));
  EXPECT_EQ("ORA-01830: date format picture ends before converting entire input string",
            QueryError("select name from emp where hired = '2021-03-15 10:00'"));
  EXPECT_EQ("ORA-01858: a non-numeric character was found where a numeric was expected",
            QueryError("select name from emp where hired = 'MAR-15-2021'"));
  EXPECT_EQ("ORA-01843: not a valid month",
            QueryError("select name from emp where hired = '2021-13-15'"));
  EXPECT_EQ("ORA-01847: day of month must be between 1 and last day of month",
            QueryError("select name from emp where hired = '2021-02-32'"));
  EXPECT_EQ("ORA-01839: date not valid for month specified",
            QueryError("select name from emp where hired = '2021-02-30'"));
  // A DATE does not meet a NUMBER.
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected DATE got NUMBER",
            QueryError("select name from emp where hired = 5"));
}

TEST_F(ExprTest, CharComparesBlankPaddedWithCharAndLiterals) {
  // code is CHAR(4): 'A' is stored as 'A   '.  A text literal is CHAR too, so the two
  // compare blank-padded.
  EXPECT_EQ((Rows{"1", "4"}), Column("select id from emp where code = 'A'"));
  EXPECT_EQ((Rows{"1", "4"}), Column("select id from emp where code = 'A  '"));
  EXPECT_EQ((Rows{"1"}), Column("select id from emp where 'a' = 'a  ' and id = 1"));
  // A VARCHAR2 value compares without padding.
  EXPECT_EQ(Rows{}, Column("select id from emp where code = name"));
  EXPECT_EQ(Rows{}, Column("select id from emp where code = 'A' || ''"));
  // decision EX1: a bind of SQLT_STR compares as VARCHAR2, without padding.
  OCIStmt* stmt = Prepare("select id from emp where code = :c");
  char value[] = "A";
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &bind, err_, 1, value, 2, SQLT_STR, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  char out[16];
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, out, sizeof out, SQLT_STR, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0)) << FirstError(err_);
  EXPECT_EQ(OCI_NO_DATA, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT))
      << FirstError(err_);
  // A bind of SQLT_AFC is CHAR, and compares blank-padded.
  stmt = Prepare("select id from emp where code = :c order by id");
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &bind, err_, 1, value, 1, SQLT_AFC, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, out, sizeof out, SQLT_STR, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  EXPECT_STREQ("1", out);
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_STREQ("4", out);
}

TEST_F(ExprTest, BindsInExpressions) {
  OCIStmt* stmt = Prepare("select sal * :f + :a from emp where id = :id");
  int f = 2;
  int a = 1;
  int id = 2;
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  OCIBind* b3 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, &f, sizeof f, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, &a, sizeof a, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b3, err_, 3, &id, sizeof id, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  char buf[64];
  sb2 ind = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, buf, sizeof buf, SQLT_STR, &ind,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  EXPECT_STREQ("3002", buf);
}

TEST_F(ExprTest, LobsAndObjectsCannotBeCompared) {
  MustExec("create table docs (id number, body clob)");
  MustExec("insert into docs values (1, 'text')");
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected - got CLOB",
            ErrorOf("select id from docs where body = 'text'"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected - got CLOB",
            ErrorOf("select id from docs where body in ('a', 'b')"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected - got CLOB",
            ErrorOf("delete from docs where body is not null and body > 'a'"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected - got CLOB",
            ErrorOf("select id from docs where body like 't%'"));
  EXPECT_EQ((Rows{"1"}), Column("select id from docs where body is not null"));
}

TEST_F(ExprTest, TimestampsCompareAndSort) {
  MustExec("create table ev (id number, at timestamp(3))");
  OCIDateTime* t = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&t),
                                            OCI_DTYPE_TIMESTAMP, 0, nullptr));
  auto put = [&](int id, int day, ub4 ns) {
    ASSERT_EQ(OCI_SUCCESS,
              OCIDateTimeConstruct(env_, err_, t, 2024, 5, static_cast<ub1>(day), 10, 0, 0, ns,
                                   nullptr, 0));
    OCIStmt* stmt = Prepare("insert into ev values (:1, :2)");
    OCIBind* b1 = nullptr;
    OCIBind* b2 = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                        nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, &t, sizeof t, SQLT_TIMESTAMP,
                                        nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  };
  put(1, 3, 0);
  put(2, 1, 500000000);
  put(3, 1, 0);
  EXPECT_EQ((Rows{"3", "2", "1"}), Column("select id from ev order by at"));
  EXPECT_EQ((Rows{"1", "2", "3"}), Column("select id from ev order by at desc"));
  EXPECT_EQ((Rows{"3"}), Column("select count(*) from ev where at >= "
                                "to_date('2024-05-01 10:00:00', 'YYYY-MM-DD HH24:MI:SS')"));
  ASSERT_EQ(OCI_SUCCESS,
            OCIDateTimeConstruct(env_, err_, t, 2024, 5, 1, 10, 0, 0, 0, nullptr, 0));
  OCIStmt* stmt = Prepare("select id from ev where at > :t order by id");
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &bind, err_, 1, &t, sizeof t, SQLT_TIMESTAMP,
                                      nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  int id = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  EXPECT_EQ(1, id);
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(2, id);
  EXPECT_EQ(OCI_NO_DATA, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  // A TIMESTAMP meets a DATE on one time line.
  EXPECT_EQ((Rows{"1"}),
            Column("select id from ev where at > to_date('2024-05-02', 'YYYY-MM-DD')"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected TIMESTAMP got NUMBER",
            QueryError("select id from ev where at > 5"));
  OCIDescriptorFree(t, OCI_DTYPE_TIMESTAMP);
}

TEST_F(ExprTest, MisplacedOperatorsAreSyntaxErrors) {
  EXPECT_EQ("ORA-00936: missing expression", ErrorOf("select 1 + from dual"));
  EXPECT_EQ("ORA-00923: FROM keyword not found where expected", ErrorOf("select * 2 from dual"));
  EXPECT_EQ("ORA-00936: missing expression", ErrorOf("select 2 * from dual"));
  EXPECT_EQ("ORA-00907: missing right parenthesis", ErrorOf("select (1 + 2 from dual"));
  EXPECT_EQ("ORA-00923: FROM keyword not found where expected", ErrorOf("select 1 2 3 from dual"));
  EXPECT_EQ("ORA-00907: missing right parenthesis", ErrorOf("select (1 = 1) from dual"));
  EXPECT_EQ("ORA-00911: invalid character", ErrorOf("select 1 ^ 2 from dual"));
}

// decision EX2 (UNCONFIRMED): deeper than 1000 levels is ORA-00036, never a stack overflow.
TEST_F(ExprTest, DeepExpressionsStopAtTheNestingLimit) {
  // Just inside the limit, every kind of nesting works.
  std::string ok = std::string(990, '(') + "1" + std::string(990, ')');
  EXPECT_EQ("1", Eval(ok));
  std::string calls;
  for (int i = 0; i < 990; ++i) calls += "abs(";
  EXPECT_EQ("1", Eval(calls + "-1" + std::string(990, ')')));
  std::string cases;
  for (int i = 0; i < 990; ++i) cases += "case when 1 = 1 then ";
  for (int i = 0; i < 990; ++i) cases += (i == 0 ? "2" : "") + std::string(" end");
  EXPECT_EQ("2", Eval(cases));
  std::string even_nots;
  for (int i = 0; i < 990; ++i) even_nots += "not ";
  EXPECT_EQ((Rows{"1"}), Column("select id from emp where " + even_nots + "id = 1"));
  std::string deep = std::string(5000, '(') + "1" + std::string(5000, ')');
  EXPECT_EQ("ORA-00036: maximum number of recursive SQL levels (1000) exceeded",
            ErrorOf("select " + deep + " from dual"));
  std::string sum = "1";
  for (int i = 0; i < 5000; ++i) sum += "+1";
  EXPECT_EQ("ORA-00036: maximum number of recursive SQL levels (1000) exceeded",
            ErrorOf("select " + sum + " from dual"));
  std::string minus(5000, '-');
  std::string negations;
  for (int i = 0; i < 5000; ++i) negations += "- ";
  EXPECT_EQ("ORA-00036: maximum number of recursive SQL levels (1000) exceeded",
            ErrorOf("select " + negations + "1 from dual"));
  std::string nots;
  for (int i = 0; i < 5000; ++i) nots += "not ";
  EXPECT_EQ("ORA-00036: maximum number of recursive SQL levels (1000) exceeded",
            ErrorOf("select id from emp where " + nots + "id = 1"));
  std::string ors = "id = 0";
  for (int i = 0; i < 5000; ++i) ors += " or id = " + std::to_string(i);
  EXPECT_EQ("ORA-00036: maximum number of recursive SQL levels (1000) exceeded",
            ErrorOf("select id from emp where " + ors));
}

}  // namespace
}  // namespace ocimem_test
