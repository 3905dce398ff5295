// Column DEFAULT values: taken by INSERT for the columns its list leaves out and for the
// word DEFAULT in VALUES, and by UPDATE ... SET column = DEFAULT.
#include <gtest/gtest.h>

#include <string>

#include "constraint_fixture.h"

namespace ocimem_test {
namespace {

class DefaultTest : public ConstraintFixture {
 protected:
  void SetUp() override {
    ConstraintFixture::SetUp();
    MustExec("create table t (id number, status varchar2(5) default 'NEW', "
             "qty number default 0 not null, note varchar2(5) default null)");
  }
};

TEST_F(DefaultTest, ColumnsLeftOutTakeTheirDefault) {
  MustExec("insert into t (id) values (1)");
  EXPECT_EQ((Rows{"NEW"}), Column("select status from t"));
  EXPECT_EQ((Rows{"0"}), Column("select qty from t"));
  EXPECT_EQ((Rows{"<null>"}), Column("select note from t"));
  // A NULL written is kept: the default is only for what is left out.
  MustExec("insert into t (id, status) values (2, null)");
  EXPECT_EQ((Rows{"<null>"}), Column("select status from t where id = 2"));
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"T\".\"QTY\")",
            ErrorOf("insert into t (id, qty) values (3, null)"));
}

TEST_F(DefaultTest, TheWordDefaultInValuesTakesTheDefault) {
  MustExec("insert into t values (1, default, 5, default)");
  MustExec("insert into t (note, id) values (default, 2)");
  EXPECT_EQ((Rows{"NEW", "NEW"}), Column("select status from t"));
  EXPECT_EQ((Rows{"5", "0"}), Column("select qty from t"));
  // A column without DEFAULT takes NULL.
  MustExec("insert into t values (default, 'X', 1, 'Y')");
  EXPECT_EQ((Rows{"1", "2", "<null>"}), Column("select id from t"));
  EXPECT_EQ("ORA-00913: too many values", ErrorOf("insert into t (id) values (1, default)"));
  EXPECT_EQ("ORA-00947: not enough values", ErrorOf("insert into t (id, qty) values (default)"));
}

TEST_F(DefaultTest, UpdateSetsTheDefault) {
  MustExec("insert into t values (1, 'OLD', 5, 'N')");
  EXPECT_EQ(1u, Changed("update t set qty = default, status = default, note = default"));
  EXPECT_EQ((Rows{"NEW"}), Column("select status from t"));
  EXPECT_EQ((Rows{"0"}), Column("select qty from t"));
  EXPECT_EQ((Rows{"<null>"}), Column("select note from t"));
  EXPECT_EQ(1u, Changed("update t set id = default"));
  EXPECT_EQ((Rows{"<null>"}), Column("select id from t"));
}

TEST_F(DefaultTest, ViewsLeaveColumnsToTheirDefault) {
  MustExec("create view v as select id, status from t");
  MustExec("insert into v values (1, 'A')");
  MustExec("insert into v (id) values (2)");
  EXPECT_EQ((Rows{"A", "NEW"}), Column("select status from t"));
  EXPECT_EQ((Rows{"0", "0"}), Column("select qty from t"));
  EXPECT_EQ(1u, Changed("update v set status = default where id = 1"));
  EXPECT_EQ((Rows{"NEW", "NEW"}), Column("select status from t"));
}

// decision CN6: a sequence's NEXTVAL (or CURRVAL) may be a default, as from Oracle 12c.
TEST_F(DefaultTest, SequenceDefaultsAdvanceOnlyWhenTaken) {
  MustExec("create sequence s");
  MustExec("create table u (id number default s.nextval, v varchar2(3))");
  MustExec("insert into u (v) values ('a')");
  MustExec("insert into u (v) values ('b')");
  MustExec("insert into u values (10, 'c')");
  MustExec("insert into u values (default, 'd')");
  EXPECT_EQ((Rows{"1", "2", "10", "3"}), Column("select id from u"));
  EXPECT_EQ("ORA-02289: sequence does not exist",
            ErrorOf("create table w (id number default nope.nextval)"));
}

TEST_F(DefaultTest, CurrvalIsTheSessionsLastValue) {
  MustExec("create sequence s start with 5");
  MustExec("create table u (id number default s.nextval, same number default s.currval)");
  EXPECT_EQ("ORA-08002: sequence S.CURRVAL is not yet defined in this session",
            ErrorOf("insert into u (id) values (1)"));
  MustExec("insert into u (same) values (0)");
  MustExec("insert into u (id) values (1)");
  MustExec("insert into u values (default, default)");
  EXPECT_EQ((Rows{"5", "1", "6"}), Column("select id from u"));
  EXPECT_EQ((Rows{"0", "5", "6"}), Column("select same from u"));
}

// The default's value is converted, and its size checked, by each INSERT that takes it.
TEST_F(DefaultTest, DefaultsAreConvertedWhenTaken) {
  MustExec("create table u (n number default '42', s varchar2(2) default 'abc', m number)");
  EXPECT_EQ(12899, ExecError("insert into u (n, m) values (1, 1)"));
  MustExec("insert into u (s, m) values ('ab', 1)");
  EXPECT_EQ((Rows{"42"}), Column("select n from u"));
  MustExec("create table w (n number default 'x', m number)");
  EXPECT_EQ("ORA-01722: invalid number", ErrorOf("insert into w (m) values (1)"));
}

TEST_F(DefaultTest, BadDefaultsAreRefusedAtCreate) {
  EXPECT_EQ("ORA-00984: column not allowed here",
            ErrorOf("create table u (a number, b number default a)"));
  // decision CN5: a number where no number converts.
  EXPECT_EQ("ORA-02262: ORA-932 occurs while type-checking column default value expression",
            ErrorOf("create table u (d date default 1)"));
  EXPECT_EQ("ORA-01027: bind variables not allowed for data definition operations",
            ErrorOf("create table u (a number default :x)"));
  // DEFAULT comes before the column's constraints.
  EXPECT_EQ("ORA-00907: missing right parenthesis",
            ErrorOf("create table u (a number not null default 1)"));
  EXPECT_EQ("ORA-00936: missing expression", ErrorOf("create table u (a number default)"));
  // An object table's attributes take no DEFAULT here.
  MustExec("create type pt as object (x number)");
  EXPECT_EQ("ORA-00907: missing right parenthesis",
            ErrorOf("create table u of pt (x default 1)"));
}

// Parsing a default or a CHECK condition stops at 1000 nested levels with an error, far
// from the end of the stack.
TEST_F(DefaultTest, DeeplyNestedValuesAreRefused) {
  constexpr size_t kDepth = 200000;
  std::string nested;
  for (size_t i = 0; i < kDepth; ++i) nested += "f(";
  nested += "1";
  nested.append(kDepth, ')');
  const char kTooDeep[] = "ORA-00036: maximum number of recursive SQL levels (1000) exceeded";
  EXPECT_EQ(kTooDeep, ErrorOf("create table u (a number default " + nested + ")"));
  EXPECT_EQ(kTooDeep, ErrorOf("create table u (a number check (a = " + nested + "))"));
}

}  // namespace
}  // namespace ocimem_test
