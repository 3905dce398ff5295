// A session's NLS settings as a host program meets them: dates read and shown through the
// session's NLS_DATE_FORMAT (DD-MON-RR until ALTER SESSION changes it), the formats and the
// time zone set with ALTER SESSION, and SESSIONTIMEZONE and DBTIMEZONE.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class SessionNlsTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table events (id number primary key, at date)");
  }

  // The year of the DATE of the row with this id, fetched in its internal form.
  int YearOf(int id) {
    OCIStmt* stmt = Prepare("select at from events where id = " + std::to_string(id));
    OCIDate date;
    OCIDefine* def = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &date, sizeof date, SQLT_ODT,
                                          nullptr, nullptr, nullptr, OCI_DEFAULT));
    EXPECT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
    return date.OCIDateYYYY;
  }

  std::string One(const std::string& sql, OCISvcCtx* svc = nullptr) {
    std::vector<std::string> rows = Column(sql, svc);
    EXPECT_EQ(1u, rows.size()) << sql;
    return rows.empty() ? std::string() : rows[0];
  }
};

// Two-digit years of the default format fall in the 50-year window around the current year.
TEST_F(SessionNlsTest, DefaultDateFormatReadsTwoDigitYearsInTheRrWindow) {
  MustExec("insert into events values (1, '15-MAR-49')");
  MustExec("insert into events values (2, '15-MAR-50')");
  MustExec("insert into events values (3, '01-jan-2001')");
  EXPECT_EQ(2049, YearOf(1));
  EXPECT_EQ(1950, YearOf(2));
  EXPECT_EQ(2001, YearOf(3));
  EXPECT_EQ("15-MAR-50", One("select at from events where id = 2"));
}

TEST_F(SessionNlsTest, NlsDateFormatChangesHowDatesAreReadAndShown) {
  MustExec("alter session set nls_date_format = 'YYYY-MM-DD HH24:MI:SS'");
  MustExec("insert into events values (1, '2001-02-03 04:05:06')");
  EXPECT_EQ("2001-02-03 04:05:06", One("select at from events"));
  MustExec("alter session set nls_date_format = 'DD.MM.YYYY'");
  EXPECT_EQ("03.02.2001", One("select at from events"));
  EXPECT_EQ(1830, ExecError("insert into events values (2, '2001-02-03 04:05:06')"));
}

TEST_F(SessionNlsTest, SettingsBelongToTheSessionThatMadeThem) {
  MustExec("insert into events values (1, '03-FEB-01')");
  MustExec("commit");
  MustExec("alter session set nls_date_format = 'YYYY/MM/DD'");
  OCISvcCtx* other = OtherSession();
  EXPECT_EQ("2001/02/03", One("select at from events"));
  EXPECT_EQ("03-FEB-01", One("select at from events", other));
}

TEST_F(SessionNlsTest, AStatementKeepsTheFormatItWasExecutedUnder) {
  MustExec("insert into events values (1, '03-FEB-01')");
  OCIStmt* stmt = Prepare("select at from events");
  char buf[64];
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, buf, sizeof buf, SQLT_STR, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0)) << FirstError(err_);
  MustExec("alter session set nls_date_format = 'YYYY'");
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_STREQ("03-FEB-01", buf);
}

TEST_F(SessionNlsTest, AFormatThatIsNoDateFormatIsRefused) {
  EXPECT_EQ(1821, ExecError("alter session set nls_date_format = 'YYYY-BOGUS'"));
  EXPECT_EQ(1821, ExecError("alter session set nls_timestamp_format = 'HH24:ZZ'"));
}

TEST_F(SessionNlsTest, TimestampFormatsAreTakenWhenValid) {
  MustExec("alter session set nls_timestamp_format = 'YYYY-MM-DD HH24:MI:SS.FF'");
  MustExec("alter session set nls_timestamp_tz_format = 'YYYY-MM-DD HH24:MI:SS.FF TZH:TZM'");
}

TEST_F(SessionNlsTest, UnknownParameterIsRefused) {
  EXPECT_EQ(2248, ExecError("alter session set nls_bogus = 'x'"));
}

TEST_F(SessionNlsTest, LanguageAndTerritoryOnlyAsTheSessionHasThem) {
  MustExec("alter session set nls_language = AMERICAN");
  MustExec("alter session set nls_territory = 'america'");
  EXPECT_EQ(12705, ExecError("alter session set nls_language = FRENCH"));
}

TEST_F(SessionNlsTest, AFailingSettingLeavesEveryOtherAsItWas) {
  EXPECT_EQ(1882, ExecError("alter session set nls_date_format = 'YYYY' time_zone = 'Mars/Base'"));
  MustExec("insert into events values (1, '03-FEB-01')");
  EXPECT_EQ("03-FEB-01", One("select at from events"));
}

TEST_F(SessionNlsTest, AlterSessionIsNoStatementOfAnyOtherKind) {
  EXPECT_EQ(922, ExecError("alter session nls_date_format = 'YYYY'"));
  EXPECT_EQ(940, ExecError("alter index events_i rebuild"));
  OCIStmt* stmt = Prepare("alter session set time_zone = '+01:00'");
  ub2 type = 0;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrGet(stmt, OCI_HTYPE_STMT, &type, nullptr, OCI_ATTR_STMT_TYPE, err_));
  EXPECT_EQ(OCI_STMT_ALTER, type);
}

TEST_F(SessionNlsTest, TimeZoneIsShownBySessionTimeZone) {
  const std::string original = One("select sessiontimezone from dual");
  MustExec("alter session set time_zone = '+05:30'");
  EXPECT_EQ("+05:30", One("select sessiontimezone from dual"));
  MustExec("alter session set time_zone = '-3:00'");
  EXPECT_EQ("-03:00", One("select sessiontimezone from dual"));
  MustExec("alter session set time_zone = 'Europe/Oslo'");
  EXPECT_EQ("Europe/Oslo", One("select sessiontimezone from dual"));
  MustExec("alter session set time_zone = dbtimezone");
  EXPECT_EQ("+00:00", One("select sessiontimezone from dual"));
  MustExec("alter session set time_zone = local");
  EXPECT_EQ(original, One("select sessiontimezone from dual"));
}

TEST_F(SessionNlsTest, ABadTimeZoneIsRefused) {
  EXPECT_EQ(1882, ExecError("alter session set time_zone = 'Mars/Base'"));
  EXPECT_EQ(1874, ExecError("alter session set time_zone = '+16:00'"));
  EXPECT_EQ(922, ExecError("alter session set time_zone = somewhere"));
}

TEST_F(SessionNlsTest, DbTimeZoneIsUtc) {
  EXPECT_EQ("+00:00", One("select dbtimezone from dual"));
}

}  // namespace
}  // namespace ocimem_test
