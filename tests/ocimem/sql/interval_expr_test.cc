// Datetime and interval literals and arithmetic in SQL: DATE, TIMESTAMP and INTERVAL
// literals, a datetime plus or minus an interval, intervals added, scaled and compared,
// with Oracle's result types, month-end rules, NULLs and errors.
#include <string>

#include "describe_fixture.h"
#include "expr_fixture.h"

namespace ocimem_test {
namespace {

class IntervalExprTest : public ExprTest {
 protected:
  void SetUp() override {
    ExprTest::SetUp();
    MustExec("alter session set time_zone = '+00:00'");
  }

  // A DATE or TIMESTAMP expression as text, to the second.
  std::string Day(const std::string& expr) {
    return Eval("to_char(" + expr + ", 'YYYY-MM-DD HH24:MI:SS')");
  }
};

TEST_F(IntervalExprTest, DateLiterals) {
  EXPECT_EQ("2024-02-29 00:00:00", Day("date '2024-02-29'"));
  EXPECT_EQ("1999-12-31 00:00:00", Day("date '1999-12-31'"));
  EXPECT_EQ("ORA-01839: date not valid for month specified",
            ErrorOf("select date '2023-02-29' from dual"));
  EXPECT_EQ("ORA-01843: not a valid month", ErrorOf("select date '2024-13-01' from dual"));
  // The literal has no time of day.
  EXPECT_EQ("ORA-01861: literal does not match format string",
            ErrorOf("select date '2024-01-01 10:00:00' from dual"));
  // The text is read when the statement is, whatever rows it meets.
  EXPECT_EQ("ORA-01839: date not valid for month specified",
            ErrorOf("select id from emp where 1 = 0 and hired = date '2023-02-30'"));
  EXPECT_EQ((Rows{"1"}), Column("select id from emp where hired = date '2020-01-01'"));
}

TEST_F(IntervalExprTest, TimestampLiterals) {
  EXPECT_EQ("2024-01-31 10:20:30.123456789",
            Eval("to_char(timestamp '2024-01-31 10:20:30.123456789', "
                 "'YYYY-MM-DD HH24:MI:SS.FF9')"));
  EXPECT_EQ("2024-01-31 10:20:30.000", Eval("to_char(timestamp '2024-01-31 10:20:30', "
                                            "'YYYY-MM-DD HH24:MI:SS.FF3')"));
  // With a zone it is a TIMESTAMP WITH TIME ZONE.
  EXPECT_EQ("2024-01-31 10:20:30 +02:00",
            Eval("to_char(timestamp '2024-01-31 10:20:30 +02:00', "
                 "'YYYY-MM-DD HH24:MI:SS TZH:TZM')"));
  EXPECT_EQ("ORA-01839: date not valid for month specified",
            ErrorOf("select timestamp '2023-02-29 00:00:00' from dual"));
  EXPECT_EQ("ORA-01850: hour must be between 0 and 23",
            ErrorOf("select timestamp '2024-01-01 24:00:00' from dual"));
  EXPECT_EQ("ORA-01882: timezone region not found",
            ErrorOf("select timestamp '2024-01-01 10:00:00 Nowhere/City' from dual"));
}

TEST_F(IntervalExprTest, YearToMonthLiterals) {
  EXPECT_EQ("+01-02", Eval("interval '1-2' year to month"));
  EXPECT_EQ("+123-02", Eval("interval '123-2' year(3) to month"));
  EXPECT_EQ("+04-00", Eval("interval '4' year"));
  EXPECT_EQ("+00-05", Eval("interval '5' month"));
  EXPECT_EQ("+02-06", Eval("interval '30' month"));
  EXPECT_EQ("-01-06", Eval("interval '-1-6' year to month"));
  EXPECT_EQ("ORA-01873: the leading precision of the interval is too small",
            ErrorOf("select interval '123' year from dual"));
  EXPECT_EQ("ORA-01873: the leading precision of the interval is too small",
            ErrorOf("select interval '100' month from dual"));
  EXPECT_EQ("ORA-01843: not a valid month",
            ErrorOf("select interval '1-12' year to month from dual"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            ErrorOf("select interval '1' year to month from dual"));
  EXPECT_EQ("ORA-01867: the interval is invalid", ErrorOf("select interval 'x' year from dual"));
}

TEST_F(IntervalExprTest, DayToSecondLiterals) {
  EXPECT_EQ("+04 05:12:10.222", Eval("interval '4 5:12:10.222' day to second(3)"));
  EXPECT_EQ("+04 05:12:00.000000", Eval("interval '4 5:12' day to minute"));
  EXPECT_EQ("+400 05:00:00.000000", Eval("interval '400 5' day(3) to hour"));
  EXPECT_EQ("+400 00:00:00.000000", Eval("interval '400' day(3)"));
  EXPECT_EQ("+00 11:12:10.2222222", Eval("interval '11:12:10.2222222' hour to second(7)"));
  EXPECT_EQ("+00 11:20:00.000000", Eval("interval '11:20' hour to minute"));
  EXPECT_EQ("+01 01:00:00.000000", Eval("interval '25' hour"));
  EXPECT_EQ("+00 00:10:22.000000", Eval("interval '10:22' minute to second"));
  EXPECT_EQ("+00 00:40:00.000000", Eval("interval '40' minute"));
  // decision IV6: the days are padded to the literal's leading precision.
  EXPECT_EQ("+005 00:00:00.000000", Eval("interval '120' hour(3)"));
  // The fraction is rounded to the literal's precision.
  EXPECT_EQ("+00 00:00:30.1235", Eval("interval '30.12345' second(2,4)"));
  EXPECT_EQ("-01 02:00:00.000000", Eval("interval '-1 2' day to hour"));
  EXPECT_EQ("ORA-01873: the leading precision of the interval is too small",
            ErrorOf("select interval '400' day from dual"));
  EXPECT_EQ("ORA-01850: hour must be between 0 and 23",
            ErrorOf("select interval '1 24' day to hour from dual"));
  EXPECT_EQ("ORA-01851: minutes must be between 0 and 59",
            ErrorOf("select interval '1 2:60' day to minute from dual"));
  EXPECT_EQ("ORA-01852: seconds must be between 0 and 59",
            ErrorOf("select interval '10:60' minute to second from dual"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            ErrorOf("select interval '1 2' day to second from dual"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            ErrorOf("select interval '1-2' day to hour from dual"));
  EXPECT_EQ("ORA-30089: missing or invalid <datetime field>",
            ErrorOf("select interval '1' days from dual"));
  // decision IV7: an end field of the other kind, or more significant than the start.
  EXPECT_EQ("ORA-30089: missing or invalid <datetime field>",
            ErrorOf("select interval '1-1' month to year from dual"));
  EXPECT_EQ("ORA-30089: missing or invalid <datetime field>",
            ErrorOf("select interval '1 1' day to month from dual"));
  EXPECT_EQ("ORA-30088: datetime/interval precision is out of range",
            ErrorOf("select interval '1' day(10) from dual"));
}

TEST_F(IntervalExprTest, DatePlusInterval) {
  EXPECT_EQ("2024-02-01 00:00:00", Day("date '2024-01-31' + interval '1' day"));
  EXPECT_EQ("2024-01-02 00:00:00", Day("interval '1' day + date '2024-01-01'"));
  EXPECT_EQ("2024-01-01 01:02:03", Day("date '2024-01-01' + interval '1:2:3' hour to second"));
  EXPECT_EQ("2024-02-29 00:00:00", Day("date '2024-03-01' + interval '-1' day"));
  EXPECT_EQ("2024-02-29 00:00:00", Day("date '2024-03-01' - interval '1' day"));
  EXPECT_EQ("2024-02-29 00:00:00", Day("date '2024-01-29' + interval '1' month"));
  EXPECT_EQ("2028-02-29 00:00:00", Day("date '2024-02-29' + interval '4' year"));
  EXPECT_EQ("2024-01-31 00:00:00", Day("date '2024-03-31' - interval '2' month"));
  EXPECT_EQ("2025-03-31 00:00:00", Day("date '2024-01-31' + interval '1-2' year to month"));
  // decision IV2: a DATE loses the fraction of a second.
  EXPECT_EQ("2024-01-01 00:00:01", Day("date '2024-01-01' + interval '1.9' second"));
  EXPECT_EQ("2023-12-31 23:59:59", Day("date '2024-01-01' - interval '0.5' second"));
  EXPECT_EQ((Rows{"2020-02-01", "2021-04-15", "2020-01-31", "<null>"}),
            Column("select to_char(hired + interval '1' month, 'YYYY-MM-DD') from emp"));
}

TEST_F(IntervalExprTest, MonthEndIsNotMoved) {
  // decision IV4: a month the day does not exist in is ORA-01839, where ADD_MONTHS moves
  // the day to the month's last.
  EXPECT_EQ("ORA-01839: date not valid for month specified",
            QueryError("select date '2024-01-31' + interval '1' month from dual"));
  EXPECT_EQ("ORA-01839: date not valid for month specified",
            QueryError("select date '2024-02-29' + interval '1' year from dual"));
  EXPECT_EQ("ORA-01839: date not valid for month specified",
            QueryError("select date '2024-03-31' - interval '1' month from dual"));
  EXPECT_EQ("ORA-01839: date not valid for month specified",
            QueryError("select timestamp '2024-05-31 10:00:00' + interval '1' month from dual"));
  EXPECT_EQ("2024-02-29 00:00:00", Day("add_months(date '2024-01-31', 1)"));
  EXPECT_EQ("ORA-01841: (full) year must be between -4713 and +9999, and not be 0",
            QueryError("select date '9999-12-31' + interval '1' day from dual"));
}

TEST_F(IntervalExprTest, TimestampPlusInterval) {
  EXPECT_EQ("2024-02-01 12:03:04.75",
            Eval("to_char(timestamp '2024-01-31 10:00:00.5' + "
                 "interval '1 2:03:04.25' day to second, 'YYYY-MM-DD HH24:MI:SS.FF2')"));
  EXPECT_EQ("2024-01-31 09:59:59.50",
            Eval("to_char(timestamp '2024-01-31 10:00:00' - interval '0.5' second, "
                 "'YYYY-MM-DD HH24:MI:SS.FF2')"));
  EXPECT_EQ("2025-03-31 10:00:00",
            Day("timestamp '2024-01-31 10:00:00' + interval '1-2' year to month"));
  EXPECT_EQ("2024-02-01 10:00:00", Day("interval '1' day + timestamp '2024-01-31 10:00:00'"));
  // Zoned values move as UTC instants and keep their zone: one day after noon on the eve
  // of the change to summer time is 13:00.
  EXPECT_EQ("2024-03-31 13:00:00 +02:00",
            Eval("to_char(timestamp '2024-03-30 12:00:00 Europe/Paris' + interval '1' day, "
                 "'YYYY-MM-DD HH24:MI:SS TZH:TZM')"));
  EXPECT_EQ("2024-03-31 13:00:00 +02:00",
            Eval("to_char(timestamp '2024-03-30 12:00:00 Europe/Paris' + interval '24' hour, "
                 "'YYYY-MM-DD HH24:MI:SS TZH:TZM')"));
  // decision IV5: months are added to the UTC instant (04:00 on 1 February).
  EXPECT_EQ("2024-02-29 23:00:00 -05:00",
            Eval("to_char(timestamp '2024-01-31 23:00:00 -05:00' + interval '1' month, "
                 "'YYYY-MM-DD HH24:MI:SS TZH:TZM')"));
  // LOCAL TIME ZONE: moved, then shown in the session's time zone.
  MustExec("alter session set time_zone = '+03:00'");
  EXPECT_EQ("2024-01-01 11:00:00",
            Day("cast(timestamp '2024-01-01 10:00:00' as timestamp with local time zone) + "
                "interval '1' hour"));
}

TEST_F(IntervalExprTest, IntervalsAddAndScale) {
  EXPECT_EQ("+000000002-01",
            Eval("interval '1-6' year to month + interval '0-7' year to month"));
  EXPECT_EQ("-000000000-01", Eval("interval '1' year - interval '13' month"));
  EXPECT_EQ("+000000000 23:59:59.000000000", Eval("interval '1' day - interval '1' second"));
  EXPECT_EQ("+000000001 01:00:00.500000000",
            Eval("interval '1' day + interval '3600.5' second(4)"));
  EXPECT_EQ("+000000002-02", Eval("interval '1-1' year to month * 2"));
  EXPECT_EQ("+000000000 01:30:00.000000000", Eval("interval '1' hour * 1.5"));
  EXPECT_EQ("+000000002 00:00:00.000000000", Eval("2 * interval '1' day"));
  EXPECT_EQ("+000000000 08:00:00.000000000", Eval("interval '1' day / 3"));
  EXPECT_EQ("+000000000 00:00:00.333333333", Eval("interval '1' second / 3"));
  EXPECT_EQ("-000000000 12:00:00.000000000", Eval("interval '1' day * -0.5"));
  // decision IV3: a fraction of a month is cut.
  EXPECT_EQ("+000000000-01", Eval("interval '1' month * 1.9"));
  EXPECT_EQ("+000000000-06", Eval("interval '1' year / 2"));
  // Minus an interval keeps its type.
  EXPECT_EQ("-01 00:00:00.000000", Eval("-interval '1' day"));
  EXPECT_EQ("ORA-01476: divisor is equal to zero",
            QueryError("select interval '1' day / 0 from dual"));
  EXPECT_EQ("ORA-01873: the leading precision of the interval is too small",
            QueryError("select interval '999999999' day(9) + interval '1' day from dual"));
  EXPECT_EQ("ORA-01873: the leading precision of the interval is too small",
            QueryError("select interval '999999999' year(9) * 2 from dual"));
}

TEST_F(IntervalExprTest, NullsMakeNull) {
  EXPECT_EQ("<null>", Eval("interval '1' day + null"));
  EXPECT_EQ("<null>", Eval("null - interval '1' year"));
  EXPECT_EQ("<null>", Eval("null * interval '1' day"));
  EXPECT_EQ("<null>", Eval("interval '1' day / null"));
  EXPECT_EQ("<null>", Eval("cast(null as date) + interval '1' day"));
  EXPECT_EQ("<null>", Eval("to_char(date '2024-01-01' + cast(null as interval day to second))"));
  EXPECT_EQ((Rows{"4"}), Column("select id from emp where hired + interval '1' day is null"));
}

TEST_F(IntervalExprTest, Misuse) {
  // decision IV1: an interval with a number in + and -, intervals of two kinds, and an
  // interval minus a datetime.
  const std::string not_for = "ORA-30081: invalid data type for datetime/interval arithmetic";
  EXPECT_EQ(not_for, QueryError("select interval '1' day + 1 from dual"));
  EXPECT_EQ(not_for, QueryError("select 1 - interval '1' day from dual"));
  EXPECT_EQ(not_for, QueryError("select interval '1' year + interval '1' day from dual"));
  EXPECT_EQ(not_for, QueryError("select interval '1' day - interval '1' month from dual"));
  EXPECT_EQ(not_for, QueryError("select interval '1' day - date '2024-01-01' from dual"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got DATE",
            QueryError("select date '2024-01-01' * interval '1' day from dual"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got TIMESTAMP",
            QueryError("select timestamp '2024-01-01 00:00:00' / interval '1' day from dual"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got INTERVAL DAY TO SECOND",
            QueryError("select 3 / interval '1' day from dual"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got INTERVAL DAY TO SECOND",
            QueryError("select interval '1' day * interval '1' day from dual"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got INTERVAL YEAR TO MONTH",
            QueryError("select interval '1' year / interval '1' year from dual"));
  EXPECT_EQ("ORA-01722: invalid number", QueryError("select interval '1' day * 'x' from dual"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected INTERVAL DAY TO SECOND got "
            "INTERVAL YEAR TO MONTH",
            QueryError("select 1 from dual where interval '1' day = interval '1' month"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected INTERVAL DAY TO SECOND got NUMBER",
            QueryError("select 1 from dual where 1 = interval '1' day"));
}

TEST_F(IntervalExprTest, Comparisons) {
  EXPECT_EQ("1", Eval("case when interval '1' day > interval '23' hour then 1 end"));
  EXPECT_EQ("1", Eval("case when interval '12' month = interval '1' year then 1 end"));
  EXPECT_EQ("1", Eval("case when interval '-1' day < interval '0' second then 1 end"));
  EXPECT_EQ("1", Eval("case when timestamp '2024-01-01 00:00:00' < "
                      "date '2024-01-01' + interval '1' second then 1 end"));
  EXPECT_EQ((Rows{"3", "1"}),
            Column("select id from emp where hired < date '2020-06-01' - interval '0-1' "
                   "year to month order by hired"));
}

TEST_F(IntervalExprTest, IntervalFunctions) {
  EXPECT_EQ("+000000004 04:00:00.000000000", Eval("numtodsinterval(100, 'hour')"));
  EXPECT_EQ("+000000000 00:01:30.000000000", Eval("numtodsinterval(1.5, ' Minute ')"));
  EXPECT_EQ("+000000000 00:00:00.000000001", Eval("numtodsinterval(0.000000001, 'SECOND')"));
  EXPECT_EQ("+000000001-06", Eval("numtoyminterval(1.5, 'year')"));
  EXPECT_EQ("-000000000-03", Eval("numtoyminterval(-3, 'MONTH')"));
  EXPECT_EQ("ORA-01760: illegal argument for function",
            QueryError("select numtoyminterval(1, 'day') from dual"));
  EXPECT_EQ("ORA-01760: illegal argument for function",
            QueryError("select numtodsinterval(1, 'month') from dual"));
  EXPECT_EQ("+000000001 02:03:04.500000000", Eval("to_dsinterval('1 02:03:04.5')"));
  EXPECT_EQ("-000000001-06", Eval("to_yminterval('-1-6')"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            QueryError("select to_dsinterval('90') from dual"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            QueryError("select to_yminterval('1 02:00:00') from dual"));
  EXPECT_EQ("<null>", Eval("numtodsinterval(null, 'DAY')"));
  EXPECT_EQ("<null>", Eval("to_yminterval(null)"));
  EXPECT_EQ("2024-01-02 12:00:00", Day("date '2024-01-01' + numtodsinterval(36, 'HOUR')"));
}

TEST_F(IntervalExprTest, IsoDurations) {
  EXPECT_EQ("+000000100 05:00:00.000000000", Eval("to_dsinterval('P100DT05H')"));
  EXPECT_EQ("+000000000 01:30:02.500000000", Eval("to_dsinterval('PT1H30M2.5S')"));
  EXPECT_EQ("+000000001 12:00:00.000000000", Eval("to_dsinterval('PT36H')"));
  EXPECT_EQ("-000000001 00:00:00.000000000", Eval("to_dsinterval('-P1D')"));
  EXPECT_EQ("+000000001-02", Eval("to_yminterval('P1Y2M')"));
  // decision IV9: the day and time of a duration are left out of a YEAR TO MONTH.
  EXPECT_EQ("+000000001-02", Eval("to_yminterval('P1Y2M3DT4H')"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            QueryError("select to_dsinterval('P1Y') from dual"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            QueryError("select to_dsinterval('P1H') from dual"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            QueryError("select to_yminterval('P') from dual"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            QueryError("select to_yminterval('P2M1Y') from dual"));
}

TEST_F(IntervalExprTest, CastToIntervals) {
  EXPECT_EQ("+01 02:03:04.500000",
            Eval("cast('1 2:3:4.5' as interval day to second)"));
  EXPECT_EQ("+001 02:03:04.57",
            Eval("cast(interval '1 2:3:4.567' day to second(3) as interval day(3) to second(2))"));
  EXPECT_EQ("+01-06", Eval("cast(numtoyminterval(18, 'month') as interval year to month)"));
  EXPECT_EQ("ORA-01873: the leading precision of the interval is too small",
            QueryError("select cast(interval '100' day(3) as interval day to second) from dual"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected INTERVAL DAY TO SECOND got NUMBER",
            QueryError("select cast(1 as interval day to second) from dual"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected INTERVAL YEAR TO MONTH got "
            "INTERVAL DAY TO SECOND",
            QueryError("select cast(interval '1' day as interval year to month) from dual"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            QueryError("select cast('1-2' as interval day to second) from dual"));
}

TEST_F(IntervalExprTest, IntervalsInQueries) {
  MustExec("create table spans (id number, ds interval day to second)");
  MustExec("insert into spans values (1, interval '2' hour)");
  MustExec("insert into spans values (2, interval '-1' day)");
  MustExec("insert into spans values (3, null)");
  MustExec("insert into spans values (4, interval '1 0:0:0.5' day to second)");
  EXPECT_EQ((Rows{"2", "1", "4", "3"}), Column("select id from spans order by ds"));
  EXPECT_EQ((Rows{"+01 00:00:00.500000"}), Column("select max(ds) from spans"));
  EXPECT_EQ((Rows{"-01 00:00:00.000000"}), Column("select min(ds) from spans"));
  EXPECT_EQ((Rows{"4"}), Column("select id from spans where ds between interval '3' hour "
                                "and interval '2' day"));
  EXPECT_EQ((Rows{"1"}), Column("select id from spans where ds in (interval '120' minute(3))"));
  // Text meeting an interval is read as one of its kind.
  EXPECT_EQ((Rows{"1"}), Column("select id from spans where ds = '0 02:00:00'"));
  EXPECT_EQ((Rows{"4"}), Column("select id from spans where '0 03:00:00' < ds"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            QueryError("select id from spans where ds = '1-2'"));
  EXPECT_EQ((Rows{"-01 00:00:00.000000", "+00 02:00:00.000000", "+01 00:00:00.500000",
                  "<null>"}),
            Column("select distinct ds from spans order by ds"));
  EXPECT_EQ((Rows{"1|-01 00:00:00.000000", "1|+00 02:00:00.000000"}),
            Fetch("select count(*), ds from spans where ds < interval '1' day group by ds "
                  "order by ds", 2));
  // Oracle's SUM and AVG take numbers.
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected NUMBER got INTERVAL DAY TO SECOND",
            QueryError("select sum(ds) from spans"));
}

TEST_F(IntervalExprTest, ExtractAndText) {
  EXPECT_EQ("3", Eval("extract(day from interval '3 4:05:06.7' day to second)"));
  EXPECT_EQ("4", Eval("extract(hour from interval '3 4:05:06.7' day to second)"));
  EXPECT_EQ("5", Eval("extract(minute from interval '3 4:05:06.7' day to second)"));
  EXPECT_EQ("6.7", Eval("extract(second from interval '3 4:05:06.7' day to second)"));
  EXPECT_EQ("-1", Eval("extract(year from interval '-1-6' year to month)"));
  EXPECT_EQ("-6", Eval("extract(month from interval '-1-6' year to month)"));
  EXPECT_EQ("-2", Eval("extract(hour from interval '-1 2' day to hour)"));
  EXPECT_EQ("ORA-30076: invalid extract field for extract source",
            QueryError("select extract(hour from interval '1-6' year to month) from dual"));
  EXPECT_EQ("ORA-30076: invalid extract field for extract source",
            QueryError("select extract(year from interval '1' day) from dual"));
  EXPECT_EQ("+01 02:00:00.000000", Eval("to_char(interval '1 2' day to hour)"));
  // decision IV10: the mask is not used.
  EXPECT_EQ("+01-02", Eval("to_char(interval '1-2' year to month, 'YYYY')"));
  EXPECT_EQ("x+01-02", Eval("'x' || interval '1-2' year to month"));
}

TEST_F(IntervalExprTest, StoredFetchedAndUpdated) {
  MustExec("create table ev (id number, ym interval year to month, "
           "ds interval day(3) to second(2), ts timestamp(3), tz timestamp with time zone)");
  MustExec("insert into ev values (1, interval '1-2' year to month, "
           "interval '100 1:02:03.456' day(3) to second, "
           "timestamp '2024-01-31 10:20:30.1234', timestamp '2024-01-31 10:20:30 +02:00')");
  MustExec("insert into ev (id, ds) values (2, '5 00:00:00')");
  MustExec("insert into ev (id) values (3)");
  MustExec("alter session set nls_timestamp_format = 'YYYY-MM-DD HH24:MI:SS.FF'");
  MustExec("alter session set nls_timestamp_tz_format = 'YYYY-MM-DD HH24:MI:SS.FF TZH:TZM'");
  // Fetched as text with the column's precisions; the fraction was rounded when stored.
  EXPECT_EQ((Rows{"1|+01-02|+100 01:02:03.46|2024-01-31 10:20:30.123|"
                  "2024-01-31 10:20:30.000000 +02:00",
                  "2|<null>|+005 00:00:00.00|<null>|<null>", "3|<null>|<null>|<null>|<null>"}),
            Fetch("select id, ym, ds, ts, tz from ev order by id", 5));
  EXPECT_EQ(2u, Changed("update ev set ds = ds + interval '1' day, ym = ym * 2 "
                        "where ds is not null"));
  EXPECT_EQ((Rows{"1|+02-04|+101 01:02:03.46", "2|<null>|+006 00:00:00.00"}),
            Fetch("select id, ym, ds from ev where ds is not null order by id", 3));
  EXPECT_EQ((Rows{"1"}), Column("select id from ev where ds > interval '100' day(3)"));
  EXPECT_EQ((Rows{"2024-01-31 10:20:31.123000000"}),
            Column("select ts + interval '1' second from ev where id = 1"));
  EXPECT_EQ("ORA-01873: the leading precision of the interval is too small",
            ErrorOf("insert into ev (id, ds) values (4, interval '1000' day(4))"));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected INTERVAL DAY TO SECOND got "
            "INTERVAL YEAR TO MONTH",
            ErrorOf("insert into ev (id, ds) values (4, interval '1' year)"));
  EXPECT_EQ("ORA-01867: the interval is invalid",
            ErrorOf("insert into ev (id, ym) values (4, '5')"));
}

TEST_F(IntervalExprTest, BoundIntervalsAndDates) {
  OCIInterval* iv = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&iv),
                                            OCI_DTYPE_INTERVAL_DS, 0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIIntervalSetDaySecond(env_, err_, 1, 2, 30, 0, 0, iv));
  OCIStmt* stmt = Prepare("select to_char(date '2024-02-28' + :iv, 'YYYY-MM-DD HH24:MI:SS'), "
                          "to_char(:iv * 2), :iv - interval '30' minute from dual");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b, err_, Text(":iv"), 3, &iv, sizeof iv,
                                       SQLT_INTERVAL_DS, nullptr, nullptr, nullptr, 0, nullptr,
                                       OCI_DEFAULT));
  char bufs[3][64];
  sb2 inds[3] = {0, 0, 0};
  for (ub4 i = 0; i < 3; ++i) {
    OCIDefine* d = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, i + 1, bufs[i], sizeof bufs[i],
                                          SQLT_STR, &inds[i], nullptr, nullptr, OCI_DEFAULT));
  }
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ("2024-02-29 02:30:00", std::string(bufs[0]));
  EXPECT_EQ("+000000002 05:00:00.000000000", std::string(bufs[1]));
  EXPECT_EQ("+000000001 02:00:00.000000000", std::string(bufs[2]));
  OCIDescriptorFree(iv, OCI_DTYPE_INTERVAL_DS);
  // decision IV8: TO_CHAR without a mask of a TIMESTAMP whose precision the value does not
  // carry shows six digits.
  EXPECT_EQ("01-JAN-24 10.00.00.000000 AM",
            Eval("to_char(to_timestamp('2024-01-01 10:00:00', 'YYYY-MM-DD HH24:MI:SS'))"));
}

TEST_F(IntervalExprTest, DatetimesStoredInDateAndTextColumns) {
  MustExec("create table note (id number, d date, txt varchar2(40))");
  MustExec("insert into note values (1, timestamp '2024-01-01 10:20:30.9', "
           "interval '1 2' day to hour)");
  MustExec("insert into note values (2, timestamp '2024-01-01 10:20:30 +05:00', "
           "date '2024-01-01' + interval '1' day)");
  // A TIMESTAMP in a DATE column keeps the fields it shows without the fraction, as CAST.
  EXPECT_EQ((Rows{"1|2024-01-01 10:20:30|+01 02:00:00.000000", "2|2024-01-01 10:20:30|02-JAN-24"}),
            Fetch("select id, to_char(d, 'YYYY-MM-DD HH24:MI:SS'), txt from note order by id",
                  3));
  EXPECT_EQ(1u, Changed("update note set d = d + interval '1-1' year to month where id = 1"));
  EXPECT_EQ((Rows{"2025-02-01"}), Column("select to_char(d, 'YYYY-MM-DD') from note where id = 1"));
}

TEST_F(IntervalExprTest, LiteralsInDefaultsAndChecks) {
  MustExec("create table plan (id number, starts date default date '2024-01-01' "
           "check (starts >= date '2000-01-01'), lasts interval day to second "
           "default interval '1' hour check (lasts > interval '0' second))");
  MustExec("insert into plan (id) values (1)");
  EXPECT_EQ((Rows{"1|2024-01-01|+00 01:00:00.000000"}),
            Fetch("select id, to_char(starts, 'YYYY-MM-DD'), lasts from plan", 3));
  EXPECT_EQ(2290, ExecError("insert into plan values (2, date '1999-12-31', null)"));
  EXPECT_EQ(2290, ExecError("insert into plan (id, lasts) values (3, interval '-1' second)"));
  EXPECT_EQ((Rows{"2024-01-01 01:00:00"}),
            Column("select to_char(starts + lasts, 'YYYY-MM-DD HH24:MI:SS') from plan"));
}

class IntervalDescribeTest : public DescribeFixture {};

TEST_F(IntervalDescribeTest, ResultTypesOfTheArithmetic) {
  MustExec("CREATE TABLE T (D DATE, TS TIMESTAMP, TZ TIMESTAMP WITH TIME ZONE, "
           "LTZ TIMESTAMP WITH LOCAL TIME ZONE, YM INTERVAL YEAR TO MONTH, "
           "DS INTERVAL DAY TO SECOND)");
  MustExec("CREATE VIEW V AS SELECT d + ds a, ds + d b, d - ym c, ts + ym e, ts - ds f, "
           "tz + ds g, ltz - ym h, ym + ym i, ds - ds j, ds * 2 k, 2 * ym l, ds / 2 m, "
           "ts - ts n, interval '1' day o, interval '1' year p, date '2024-01-01' q, "
           "timestamp '2024-01-01 00:00:00' r, timestamp '2024-01-01 00:00:00 +01:00' s, "
           "numtodsinterval(1, 'DAY') u, to_yminterval('1-1') w, -ds x FROM t");
  OCIParam* list = Attr<OCIParam*>(Describe("V", OCI_PTYPE_VIEW), OCI_ATTR_LIST_COLUMNS);
  // Oracle's internal codes, as for table columns (decision DS6): TIMESTAMP 180,
  // WITH TIME ZONE 181, WITH LOCAL TIME ZONE 231, YEAR TO MONTH 182, DAY TO SECOND 183.
  const ub2 kTs = 180, kTz = 181, kLtz = 231, kYm = 182, kDs = 183;
  const ub2 expected[] = {SQLT_DAT, SQLT_DAT, SQLT_DAT, kTs, kTs, kTz, kLtz,
                          kYm,      kDs,      kDs,      kYm, kDs, kDs, kDs,
                          kYm,      SQLT_DAT, kTs,      kTz, kDs, kYm, kDs};
  for (ub4 pos = 1; pos <= sizeof expected / sizeof expected[0]; ++pos) {
    SCOPED_TRACE(pos);
    EXPECT_EQ(expected[pos - 1], Attr<ub2>(Item(list, pos), OCI_ATTR_DATA_TYPE));
  }
}

}  // namespace
}  // namespace ocimem_test
