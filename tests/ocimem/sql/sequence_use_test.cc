// NEXTVAL and CURRVAL in statements: in VALUES, in SET and in select lists, once per row
// however often a row names them, per session, untouched by ROLLBACK, and refused where
// Oracle refuses them.
#include <algorithm>
#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

using Rows = std::vector<std::string>;

class SequenceUseTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table t (id number primary key, n number, note varchar2(10))");
    MustExec("create sequence s");
  }

  std::string ErrorOf(const std::string& sql) {
    EXPECT_EQ(OCI_ERROR, Exec(sql)) << sql;
    return FirstError(err_);
  }

  // The text of each row's columns of `sql`, joined with '|'.
  Rows Pairs(const std::string& sql) {
    Rows ids = Column("select id from t");
    Rows out;
    for (const std::string& id : ids) {
      Rows rest = Column(sql + " where id = " + id);
      out.push_back(id + "|" + (rest.empty() ? std::string("?") : rest[0]));
    }
    std::sort(out.begin(), out.end());
    return out;
  }
};

TEST_F(SequenceUseTest, SelectNextvalFromDualTakesTheNextValue) {
  EXPECT_EQ((Rows{"1"}), Column("select s.nextval from dual"));
  EXPECT_EQ((Rows{"2"}), Column("SELECT S.NEXTVAL AS id FROM DUAL"));
}

TEST_F(SequenceUseTest, NextvalIsANumberToTheProgram) {
  OCIStmt* stmt = Prepare("select s.nextval from dual");
  int value = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &value, sizeof value, SQLT_INT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ(1, value);
}

TEST_F(SequenceUseTest, CurrvalBeforeAnyNextvalGivesOra08002) {
  EXPECT_EQ("ORA-08002: sequence S.CURRVAL is not yet defined in this session",
            ErrorOf("select s.currval from dual"));
  EXPECT_EQ(8002, ExecError("insert into t values (s.currval, 1, 'x')"));
  EXPECT_EQ((Rows{}), Column("select id from t"));
}

TEST_F(SequenceUseTest, CurrvalGivesTheSessionsLastNextval) {
  Column("select s.nextval from dual");
  Column("select s.nextval from dual");
  EXPECT_EQ((Rows{"2"}), Column("select s.currval from dual"));
  EXPECT_EQ((Rows{"2"}), Column("select s.currval from dual"));
}

TEST_F(SequenceUseTest, InsertValuesTakesNextval) {
  MustExec("insert into t (id, note) values (s.nextval, 'a')");
  MustExec("insert into t (id, note) values (s.nextval, 'b')");
  EXPECT_EQ((Rows{"1|a", "2|b"}), Pairs("select note from t"));
}

TEST_F(SequenceUseTest, NextvalAdvancesOncePerRowWhenARowNamesItTwice) {
  MustExec("insert into t values (s.nextval, s.nextval, 'a')");
  MustExec("insert into t values (s.nextval, s.nextval, 'b')");
  EXPECT_EQ((Rows{"1|1", "2|2"}), Pairs("select n from t"));
  EXPECT_EQ((Rows{"2"}), Column("select s.currval from dual"));
}

TEST_F(SequenceUseTest, CurrvalInTheRowOfANextvalGivesTheNewValueWhateverTheOrder) {
  // Oracle: a statement naming both increments the sequence once and returns the same
  // value for both, whichever comes first.
  MustExec("insert into t (n, id) values (s.currval, s.nextval)");
  EXPECT_EQ((Rows{"1|1"}), Pairs("select n from t"));
}

TEST_F(SequenceUseTest, InsertWithArrayBindsTakesOneValuePerRow) {
  OCIStmt* stmt = Prepare("insert into t (id, note) values (s.nextval, :note)");
  char notes[3][2] = {"a", "b", "c"};
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &bind, err_, 1, notes, 2, SQLT_STR, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 3)) << FirstError(err_);
  EXPECT_EQ((Rows{"1|a", "2|b", "3|c"}), Pairs("select note from t"));
}

TEST_F(SequenceUseTest, UpdateSetTakesNextvalForEachRow) {
  MustExec("insert into t values (10, null, 'a')");
  MustExec("insert into t values (20, null, 'b')");
  MustExec("insert into t values (30, null, 'c')");
  MustExec("update t set n = s.nextval, note = 'x'");
  Rows n = Column("select n from t");
  std::sort(n.begin(), n.end());
  EXPECT_EQ((Rows{"1", "2", "3"}), n);
  MustExec("update t set n = s.currval where id = 10");
  EXPECT_EQ((Rows{"3"}), Column("select n from t where id = 10"));
}

TEST_F(SequenceUseTest, UpdateOfNoRowTakesNoValue) {
  MustExec("update t set n = s.nextval");
  EXPECT_EQ((Rows{"1"}), Column("select s.nextval from dual"));
}

TEST_F(SequenceUseTest, SelectListTakesNextvalForEachRow) {
  MustExec("insert into t values (10, null, 'a')");
  MustExec("insert into t values (20, null, 'b')");
  MustExec("insert into t values (30, null, 'c')");
  Rows values = Column("select s.nextval, id from t");
  std::sort(values.begin(), values.end());
  EXPECT_EQ((Rows{"1", "2", "3"}), values);
  EXPECT_EQ((Rows{"3", "3", "3"}), Column("select s.currval from t"));
}

TEST_F(SequenceUseTest, ConstructorArgumentsTakeNextval) {
  MustExec("create type pt as object (x number, y number)");
  MustExec("create table pts (id number, p pt)");
  MustExec("insert into pts values (s.nextval, pt(s.nextval, s.currval))");
  EXPECT_EQ((Rows{"1"}), Column("select id from pts"));
  EXPECT_EQ((Rows{"1"}), Column("select s.currval from dual"));
}

TEST_F(SequenceUseTest, SchemaQualifiedNextval) {
  MustExec("insert into t (id) values (scott.s.nextval)");
  EXPECT_EQ((Rows{"1"}), Column("select scott.s.currval from dual"));
  EXPECT_EQ((Rows{"1"}), Column("select id from t"));
}

TEST_F(SequenceUseTest, UnknownSequenceGivesOra02289) {
  EXPECT_EQ("ORA-02289: sequence does not exist", ErrorOf("select nosuch.nextval from dual"));
  EXPECT_EQ(2289, ExecError("insert into t (id) values (nosuch.nextval)"));
  EXPECT_EQ(2289, ExecError("update t set n = nosuch.currval"));
  EXPECT_EQ(2289, ExecError("select t.nextval from dual"));
  EXPECT_EQ(2289, ExecError("select other.s.nextval from dual"));
}

TEST_F(SequenceUseTest, RollbackKeepsTheValuesTaken) {
  MustExec("insert into t (id) values (s.nextval)");
  MustExec("insert into t (id) values (s.nextval)");
  MustExec("rollback");
  EXPECT_EQ((Rows{}), Column("select id from t"));
  EXPECT_EQ((Rows{"2"}), Column("select s.currval from dual"));
  EXPECT_EQ((Rows{"3"}), Column("select s.nextval from dual"));
}

TEST_F(SequenceUseTest, CurrvalIsPerSessionAndNextvalSharedByAll) {
  EXPECT_EQ((Rows{"1"}), Column("select s.nextval from dual"));
  OCISvcCtx* other = OtherSession();
  EXPECT_EQ(OCI_ERROR, ExecOn(other, "select s.currval from dual"));
  EXPECT_EQ(8002, FirstCode(err_));
  EXPECT_EQ((Rows{"2"}), Column("select s.nextval from dual", other));
  EXPECT_EQ((Rows{"2"}), Column("select s.currval from dual", other));
  EXPECT_EQ((Rows{"1"}), Column("select s.currval from dual"));
}

TEST_F(SequenceUseTest, FailedInsertKeepsTheValueItTook) {
  MustExec("insert into t (id, note) values (s.nextval, 'a')");
  // 'toolongvalue' does not fit: the row is refused, its sequence value is gone all the same.
  EXPECT_EQ(12899, ExecError("insert into t (id, note) values (s.nextval, 'toolongvalue')"));
  EXPECT_EQ((Rows{"2"}), Column("select s.currval from dual"));
}

TEST_F(SequenceUseTest, WhereClauseGivesOra02287) {
  EXPECT_EQ("ORA-02287: sequence number not allowed here",
            ErrorOf("select id from t where id = s.nextval"));
  EXPECT_EQ(2287, ExecError("delete from t where s.currval = id"));
  EXPECT_EQ(2287, ExecError("update t set n = 1 where id = s.nextval"));
}

TEST_F(SequenceUseTest, ViewQueryGivesOra02287) {
  EXPECT_EQ(2287, ExecError("create view v as select s.nextval n, id from t"));
  EXPECT_EQ(942, ExecError("select * from v"));
}

TEST_F(SequenceUseTest, ReturningGivesOra02287) {
  // decision SQ2: RETURNING takes no sequence values.
  EXPECT_EQ(2287, ExecError("insert into t (id) values (1) returning s.nextval into :x"));
}

TEST_F(SequenceUseTest, ThroughAView) {
  MustExec("create view v as select id, note from t");
  MustExec("insert into v values (s.nextval, 'a')");
  EXPECT_EQ((Rows{"1|a"}), Pairs("select note from t"));
  EXPECT_EQ((Rows{"2"}), Column("select s.nextval from v"));
  MustExec("update v set id = s.nextval where id = 1");
  EXPECT_EQ((Rows{"3|a"}), Pairs("select note from t"));
}

}  // namespace
}  // namespace ocimem_test
