// SQL functions in expressions: NULL handling, CASE and DECODE, numbers, text, and
// conversions and dates, with Oracle's errors for unknown names and wrong argument counts.
#include <string>
#include <utility>

#include "expr_fixture.h"

namespace ocimem_test {
namespace {

using FunctionTest = ExprTest;

TEST_F(FunctionTest, NullHandling) {
  EXPECT_EQ((Rows{"1000", "1500.5", "0", "2000"}), Column("select nvl(sal, 0) from emp"));
  EXPECT_EQ((Rows{"y", "y", "n", "y"}), Column("select nvl2(sal, 'y', 'n') from emp"));
  EXPECT_EQ("3", Eval("coalesce(null, null, 3, 4)"));
  EXPECT_EQ("<null>", Eval("coalesce(null, null)"));
  EXPECT_EQ((Rows{"10", "20", "10", "4"}), Column("select coalesce(dept, id) from emp"));
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select nvl(sal, 'none') from emp"));
}

TEST_F(FunctionTest, DecodeAndCase) {
  EXPECT_EQ((Rows{"ten", "twenty", "ten", "other"}),
            Column("select decode(dept, 10, 'ten', 20, 'twenty', 'other') from emp"));
  EXPECT_EQ((Rows{"ten", "<null>", "ten", "<null>"}),
            Column("select decode(dept, 10, 'ten') from emp"));
  // DECODE matches NULL with NULL.
  EXPECT_EQ("match", Eval("decode(null, null, 'match', 'no')"));
  EXPECT_EQ((Rows{"x", "x", "x", "none"}),
            Column("select decode(dept, null, 'none', 'x') from emp"));
  EXPECT_EQ((Rows{"low", "mid", "unknown", "high"}),
            Column("select case when sal < 1200 then 'low' when sal < 1800 then 'mid' "
                   "when sal >= 1800 then 'high' else 'unknown' end from emp"));
  EXPECT_EQ((Rows{"ten", "twenty", "ten", "<null>"}),
            Column("select case dept when 10 then 'ten' when 20 then 'twenty' end from emp"));
  // A simple CASE does not match NULL with NULL.
  EXPECT_EQ("no", Eval("case null when null then 'yes' else 'no' end"));
  EXPECT_EQ((Rows{"2", "4"}),
            Column("select id from emp where case when sal > 1200 then 1 else 0 end = 1"));
  EXPECT_EQ("ORA-00905: missing keyword", ErrorOf("select case when 1 = 1 then 2 from dual"));
  EXPECT_EQ("ORA-00920: invalid relational operator",
            ErrorOf("select case when 1 then 2 end from dual"));
}

TEST_F(FunctionTest, Numbers) {
  EXPECT_EQ("2.5", Eval("abs(-2.5)"));
  EXPECT_EQ("3", Eval("mod(11, 4)"));
  EXPECT_EQ("3", Eval("mod(11, -4)"));
  EXPECT_EQ("-3", Eval("mod(-11, 4)"));
  EXPECT_EQ("-3", Eval("mod(-11, -4)"));
  EXPECT_EQ("5", Eval("mod(5, 0)"));
  EXPECT_EQ("1.5", Eval("mod(7.5, 2)"));
  EXPECT_EQ("-3", Eval("floor(-2.5)"));
  EXPECT_EQ("2", Eval("floor(2.5)"));
  EXPECT_EQ("-2", Eval("ceil(-2.5)"));
  EXPECT_EQ("3", Eval("ceil(2.1)"));
  EXPECT_EQ("2.57", Eval("round(2.567, 2)"));
  EXPECT_EQ("2.5", Eval("trunc(2.567, 1)"));
  EXPECT_EQ("-3", Eval("round(-2.5)"));
  EXPECT_EQ("-2", Eval("trunc(-2.5)"));
  EXPECT_EQ("1200", Eval("round(1234, -2)"));
  EXPECT_EQ("-1", Eval("sign(-7)"));
  EXPECT_EQ("<null>", Eval("abs(null)"));
  EXPECT_EQ("<null>", Eval("mod(null, 2)"));
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select abs('x') from dual"));
}

TEST_F(FunctionTest, Text) {
  EXPECT_EQ("ABC", Eval("upper('abc')"));
  EXPECT_EQ("abc", Eval("lower('ABC')"));
  EXPECT_EQ("5", Eval("length('hello')"));
  EXPECT_EQ("<null>", Eval("length('')"));
  EXPECT_EQ("4", Eval("length(1000)"));
  EXPECT_EQ((Rows{"4"}), Column("select length(code) from emp where id = 1"));
  EXPECT_EQ("bcd", Eval("substr('abcdef', 2, 3)"));
  EXPECT_EQ("ef", Eval("substr('abcdef', -2)"));
  EXPECT_EQ("a", Eval("substr('abc', 0, 1)"));
  EXPECT_EQ("<null>", Eval("substr('abc', 5)"));
  EXPECT_EQ("<null>", Eval("substr('abc', 1, 0)"));
  EXPECT_EQ("3", Eval("instr('hello', 'l')"));
  EXPECT_EQ("4", Eval("instr('hello', 'l', 1, 2)"));
  EXPECT_EQ("4", Eval("instr('hello', 'l', -1)"));
  EXPECT_EQ("0", Eval("instr('hello', 'z')"));
  EXPECT_EQ("ORA-01428: argument '0' is out of range",
            QueryError("select instr('hello', 'l', 1, 0) from dual"));
  EXPECT_EQ("007", Eval("lpad('7', 3, '0')"));
  EXPECT_EQ("ab", Eval("lpad('abc', 2)"));
  EXPECT_EQ("  x", Eval("lpad('x', 3)"));
  EXPECT_EQ("axy", Eval("rpad('a', 3, 'xy')"));
  EXPECT_EQ("a", Eval("trim('  a  ')"));
  EXPECT_EQ("axx", Eval("trim(leading 'x' from 'xxaxx')"));
  EXPECT_EQ("xxa", Eval("trim(trailing 'x' from 'xxaxx')"));
  EXPECT_EQ("a", Eval("trim(both 'x' from 'xxaxx')"));
  EXPECT_EQ("a  ", Eval("trim(leading from '  a  ')"));
  EXPECT_EQ("a", Eval("trim('x' from 'xax')"));
  EXPECT_EQ("<null>", Eval("trim('  ')"));
  EXPECT_EQ("ORA-30001: trim set should have only one character",
            QueryError("select trim('xy' from 'x') from dual"));
  EXPECT_EQ("yx", Eval("ltrim('xyx', 'x')"));
  EXPECT_EQ("xy", Eval("rtrim('xyx', 'x')"));
  EXPECT_EQ("aXcaXc", Eval("replace('abcabc', 'b', 'X')"));
  EXPECT_EQ("ac", Eval("replace('abc', 'b')"));
  EXPECT_EQ("abc", Eval("replace('abc', null)"));
  EXPECT_EQ("<null>", Eval("replace(null, 'a', 'b')"));
  EXPECT_EQ("ab", Eval("concat('a', 'b')"));
  EXPECT_EQ("a", Eval("concat(null, 'a')"));
  EXPECT_EQ("<null>", Eval("upper(null)"));
  EXPECT_EQ((Rows{"ADA"}), Column("select name from emp where lower(name) = 'ada'"));
}

TEST_F(FunctionTest, ConversionsAndDates) {
  EXPECT_EQ(" 1,234.50", Eval("to_char(1234.5, '9,999.99')"));
  EXPECT_EQ("1234.5", Eval("to_char(1234.5)"));
  EXPECT_EQ((Rows{"2020-01-01"}),
            Column("select to_char(hired, 'YYYY-MM-DD') from emp where id = 1"));
  EXPECT_EQ("13.5", Eval("to_number('12.5') + 1"));
  EXPECT_EQ("1234.5", Eval("to_number('1,234.50', '9,999.99')"));
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select to_number('x') from dual"));
  EXPECT_EQ("2020-02-29", Eval("to_char(to_date('2020-02-29', 'YYYY-MM-DD'), 'YYYY-MM-DD')"));
  EXPECT_EQ("ORA-01839: date not valid for month specified",
            QueryError("select to_date('2021-02-29', 'YYYY-MM-DD') from dual"));
  EXPECT_EQ("2020-02-29",
            Eval("to_char(add_months(to_date('2020-01-31', 'YYYY-MM-DD'), 1), 'YYYY-MM-DD')"));
  EXPECT_EQ("2019-11-30",
            Eval("to_char(add_months(to_date('2020-02-29', 'YYYY-MM-DD'), -3), 'YYYY-MM-DD')"));
  EXPECT_EQ("2020-02-29",
            Eval("to_char(last_day(to_date('2020-02-10', 'YYYY-MM-DD')), 'YYYY-MM-DD')"));
  EXPECT_EQ("1", Eval("months_between(to_date('2020-03-31', 'YYYY-MM-DD'), "
                      "to_date('2020-02-29', 'YYYY-MM-DD'))"));
  EXPECT_EQ("1.4516129032258064516129032258064516129",
            Eval("months_between(to_date('2020-03-15', 'YYYY-MM-DD'), "
                 "to_date('2020-02-01', 'YYYY-MM-DD'))"));
  EXPECT_EQ("-2", Eval("months_between(to_date('2020-01-15', 'YYYY-MM-DD'), "
                       "to_date('2020-03-15', 'YYYY-MM-DD'))"));
  EXPECT_EQ("2020-01-01 00:00:00",
            Eval("to_char(trunc(to_date('2020-01-01 18:30', 'YYYY-MM-DD HH24:MI')), "
                 "'YYYY-MM-DD HH24:MI:SS')"));
  EXPECT_EQ("2020-01-02 00:00:00",
            Eval("to_char(round(to_date('2020-01-01 18:30', 'YYYY-MM-DD HH24:MI')), "
                 "'YYYY-MM-DD HH24:MI:SS')"));
  // decision EX4 (UNCONFIRMED): SYSDATE and CURRENT_DATE read the same clock.
  EXPECT_EQ("1", Eval("case when sysdate - current_date between -1 and 1 then 1 end"));
  EXPECT_EQ("1", Eval("case when sysdate > to_date('2020-01-01', 'YYYY-MM-DD') then 1 end"));
}

TEST_F(FunctionTest, RoundAndTruncOfDates) {
  MustExec("alter session set nls_date_format = 'YYYY-MM-DD HH24:MI:SS'");
  const std::string d = "to_date('2024-05-17 13:45:50')";  // a Friday
  const std::pair<const char*, const char*> trunc[] = {
      {"YYYY", "2024-01-01 00:00:00"}, {"Q", "2024-04-01 00:00:00"},
      {"MM", "2024-05-01 00:00:00"},   {"DD", "2024-05-17 00:00:00"},
      {"HH24", "2024-05-17 13:00:00"}, {"MI", "2024-05-17 13:45:00"},
      {"DAY", "2024-05-12 00:00:00"},  {"IW", "2024-05-13 00:00:00"},
      {"WW", "2024-05-13 00:00:00"},   {"W", "2024-05-15 00:00:00"},
      {"CC", "2001-01-01 00:00:00"},
  };
  for (const auto& [unit, expected] : trunc) {
    EXPECT_EQ(expected, Eval("trunc(" + d + ", '" + unit + "')")) << unit;
  }
  const std::pair<const char*, const char*> round[] = {
      {"YYYY", "2024-01-01 00:00:00"}, {"Q", "2024-07-01 00:00:00"},
      {"MM", "2024-06-01 00:00:00"},   {"DD", "2024-05-18 00:00:00"},
      {"HH24", "2024-05-17 14:00:00"}, {"MI", "2024-05-17 13:46:00"},
      {"CC", "2001-01-01 00:00:00"},
  };
  for (const auto& [unit, expected] : round) {
    EXPECT_EQ(expected, Eval("round(" + d + ", '" + unit + "')")) << unit;
  }
  EXPECT_EQ("2025-01-01 00:00:00", Eval("round(to_date('2024-07-01 00:00:00'), 'YEAR')"));
  EXPECT_EQ("2024-05-01 00:00:00", Eval("round(to_date('2024-05-15 23:59:59'), 'MON')"));
  EXPECT_EQ("2024-05-17 00:00:00", Eval("trunc(" + d + ")"));
  EXPECT_EQ("ORA-01899: bad precision specifier",
            QueryError("select trunc(" + d + ", 'XX') from dual"));
}

TEST_F(FunctionTest, Timestamps) {
  EXPECT_EQ("2024-05-01 10:20:30.123",
            Eval("to_char(to_timestamp('2024-05-01 10:20:30.123456', 'YYYY-MM-DD HH24:MI:SS.FF'),"
                 " 'YYYY-MM-DD HH24:MI:SS.FF3')"));
  // decision EX9: FF without digits shows six.
  EXPECT_EQ("10:20:30.500000",
            Eval("to_char(to_timestamp('2024-05-01 10:20:30.5', 'YYYY-MM-DD HH24:MI:SS.FF'), "
                 "'HH24:MI:SS.FF')"));
  // Without a mask, NLS_TIMESTAMP_FORMAT reads the text.
  MustExec("alter session set nls_timestamp_format = 'YYYY-MM-DD HH24:MI:SS.FF'");
  EXPECT_EQ("2024-05-01 10:20:30.123",
            Eval("to_char(to_timestamp('2024-05-01 10:20:30.123'), 'YYYY-MM-DD HH24:MI:SS.FF3')"));
  EXPECT_EQ("ORA-01843: not a valid month",
            QueryError("select to_timestamp('2024-13-01 10:20:30', 'YYYY-MM-DD HH24:MI:SS') "
                       "from dual"));
  EXPECT_EQ("1", Eval("case when systimestamp > to_timestamp('2020-01-01 00:00:00.0') then 1 end"));
  EXPECT_EQ("1", Eval("case when current_timestamp > to_timestamp('2020-01-01 00:00:00.0') "
                      "then 1 end"));
  EXPECT_EQ("1", Eval("case when localtimestamp > sysdate - 1 then 1 end"));
  // A TIMESTAMP WITH TIME ZONE into a TIMESTAMP column, and a DATE into one.
  MustExec("create table ev (id number, at timestamp(6))");
  MustExec("insert into ev values (1, systimestamp)");
  MustExec("insert into ev values (2, to_date('2020-01-01', 'YYYY-MM-DD'))");
  MustExec("update ev set at = to_timestamp('2021-06-01 12:00:00.25') where id = 1");
  EXPECT_EQ((Rows{"2", "1"}), Column("select id from ev order by at"));
  // Text meets a TIMESTAMP in NLS_TIMESTAMP_FORMAT, when compared and when stored.
  MustExec("insert into ev values (3, '2022-02-02 02:02:02.5')");
  EXPECT_EQ((Rows{"3"}), Column("select id from ev where at = '2022-02-02 02:02:02.500'"));
  EXPECT_EQ((Rows{"1", "3"}), Column("select id from ev where at > '2021-01-01 00:00:00' "
                                     "order by id"));
  EXPECT_EQ("ORA-01843: not a valid month",
            QueryError("select id from ev where at > '2021-13-01 00:00:00'"));
  EXPECT_EQ((Rows{"2021-06-01 12:00:00.25"}),
            Column("select to_char(at, 'YYYY-MM-DD HH24:MI:SS.FF2') from ev where id = 1"));
  EXPECT_EQ((Rows{"2020-01-01 00:00:00"}),
            Column("select to_char(at, 'YYYY-MM-DD HH24:MI:SS') from ev where id = 2"));
}

TEST_F(FunctionTest, TimestampArithmetic) {
  const std::string ts = "to_timestamp('2024-05-01 10:00:00.5', 'YYYY-MM-DD HH24:MI:SS.FF')";
  // Plus or minus days is a DATE.
  EXPECT_EQ("2024-05-02 10:00:00", Eval("to_char(" + ts + " + 1, 'YYYY-MM-DD HH24:MI:SS')"));
  EXPECT_EQ("2024-04-30 22:00:00", Eval("to_char(" + ts + " - 0.5, 'YYYY-MM-DD HH24:MI:SS')"));
  EXPECT_EQ("2024-05-03 10:00:00", Eval("to_char(2 + " + ts + ", 'YYYY-MM-DD HH24:MI:SS')"));
  EXPECT_EQ("1", Eval("case when systimestamp - 1 < systimestamp then 1 end"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got TIMESTAMP",
            QueryError("select 1 - " + ts + " from dual"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got TIMESTAMP",
            QueryError("select " + ts + " * 2 from dual"));
  // Minus a TIMESTAMP or a DATE is an INTERVAL DAY TO SECOND.
  OCIStmt* stmt = Prepare("select " + ts + " - to_date('2024-04-29 09:00:00', "
                          "'YYYY-MM-DD HH24:MI:SS') from dual");
  OCIInterval* iv = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&iv),
                                            OCI_DTYPE_INTERVAL_DS, 0, nullptr));
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &iv, sizeof iv, SQLT_INTERVAL_DS,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  sb4 dd = 0, hh = 0, mi = 0, ss = 0, fs = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIIntervalGetDaySecond(env_, err_, &dd, &hh, &mi, &ss, &fs, iv));
  EXPECT_EQ(2, dd);
  EXPECT_EQ(1, hh);
  EXPECT_EQ(0, mi);
  EXPECT_EQ(0, ss);
  EXPECT_EQ(500000000, fs);
  OCIDescriptorFree(iv, OCI_DTYPE_INTERVAL_DS);
  EXPECT_EQ("1", Eval("case when " + ts + " - " + ts + " < " + ts +
                      " - to_date('2024-05-01', 'YYYY-MM-DD') then 1 end"));
}

TEST_F(FunctionTest, GreatestLeastNullifExtract) {
  EXPECT_EQ("9", Eval("greatest(3, 9, '4')"));
  EXPECT_EQ("-1", Eval("least(3, -1, 2)"));
  EXPECT_EQ("pear", Eval("greatest('apple', 'pear', 'fig')"));
  EXPECT_EQ("<null>", Eval("greatest(1, null, 3)"));
  // The first argument's type decides: '10' and '9' compare as numbers.
  EXPECT_EQ("10", Eval("greatest(1, '10', '9')"));
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select least(1, 'x') from dual"));
  EXPECT_EQ((Rows{"31-DEC-19"}), Column("select least(hired, '01-JAN-20') from emp where id = 3"));
  EXPECT_EQ("<null>", Eval("nullif(5, 5)"));
  EXPECT_EQ("5", Eval("nullif(5, 6)"));
  EXPECT_EQ("5", Eval("nullif(5, null)"));
  EXPECT_EQ((Rows{"1000", "1500.5", "<null>", "<null>"}),
            Column("select nullif(sal, 2000) from emp"));
  EXPECT_EQ((Rows{"2020|1|1"}),
            Fetch("select extract(year from hired), extract(month from hired), "
                  "extract(day from hired) from emp where id = 1",
                  3));
  EXPECT_EQ("30.25", Eval("extract(second from to_timestamp('2024-05-01 10:20:30.25', "
                          "'YYYY-MM-DD HH24:MI:SS.FF'))"));
  EXPECT_EQ("20", Eval("extract(minute from to_timestamp('2024-05-01 10:20:30', "
                       "'YYYY-MM-DD HH24:MI:SS'))"));
  EXPECT_EQ("ORA-30076: invalid extract field for extract source",
            QueryError("select extract(hour from hired) from emp"));
  EXPECT_EQ("ORA-00905: missing keyword", ErrorOf("select extract(week from hired) from emp"));
  EXPECT_EQ("ORA-00905: missing keyword", ErrorOf("select extract(year hired) from emp"));
}

TEST_F(FunctionTest, Cast) {
  EXPECT_EQ("123.46", Eval("cast(123.456 as number(5, 2))"));
  EXPECT_EQ("12", Eval("cast('12' as number) * 1"));
  EXPECT_EQ("ORA-01438: value larger than specified precision allowed for this column",
            QueryError("select cast(12345 as number(3)) from dual"));
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select cast('x' as number) from dual"));
  EXPECT_EQ("1500.5", Eval("cast(1500.5 as varchar2(10))"));
  EXPECT_EQ("ab  |", Eval("cast('ab' as char(4)) || '|'"));
  EXPECT_EQ("ORA-25137: Data value out of range",
            QueryError("select cast('abcdef' as varchar2(3)) from dual"));
  EXPECT_EQ((Rows{"1", "4"}), Column("select id from emp where cast(code as char(2)) = 'A'"));
  EXPECT_EQ((Rows{"2020-01-01"}),
            Column("select to_char(cast(hired as date), 'YYYY-MM-DD') from emp where id = 1"));
  EXPECT_EQ("2024-05-01 10:20:30",
            Eval("to_char(cast(to_timestamp('2024-05-01 10:20:30.7', 'YYYY-MM-DD HH24:MI:SS.FF')"
                 " as date), 'YYYY-MM-DD HH24:MI:SS')"));
  EXPECT_EQ("2020-01-01 00:00:00.000",
            Eval("to_char(cast(to_date('2020-01-01', 'YYYY-MM-DD') as timestamp), "
                 "'YYYY-MM-DD HH24:MI:SS.FF3')"));
  EXPECT_EQ("<null>", Eval("cast(null as number)"));
  EXPECT_EQ("ORA-00905: missing keyword", ErrorOf("select cast(1 number) from dual"));
  EXPECT_EQ("ORA-00902: invalid datatype", ErrorOf("select cast(1 as 5) from dual"));
}

TEST_F(FunctionTest, UnknownNamesAndArgumentCounts) {
  EXPECT_EQ("ORA-00904: \"FOO\": invalid identifier", QueryError("select foo(1) from dual"));
  EXPECT_EQ("ORA-00909: invalid number of arguments", QueryError("select nvl(1) from dual"));
  EXPECT_EQ("ORA-00909: invalid number of arguments",
            QueryError("select substr('a') from dual"));
  EXPECT_EQ("ORA-00909: invalid number of arguments",
            QueryError("select upper('a', 'b') from dual"));
  EXPECT_EQ("ORA-00909: invalid number of arguments",
            QueryError("select decode(1, 2) from dual"));
  EXPECT_EQ("ORA-00923: FROM keyword not found where expected",
            ErrorOf("select sysdate() from dual"));
}

}  // namespace
}  // namespace ocimem_test
