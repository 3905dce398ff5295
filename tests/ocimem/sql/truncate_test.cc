// TRUNCATE TABLE: every row goes, the session's transaction ends as with other DDL, the
// table stays usable, and what is no table of the session's is refused.
#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

using Rows = std::vector<std::string>;

class TruncateTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table t (id number primary key, note varchar2(10))");
    MustExec("insert into t values (1, 'a')");
    MustExec("insert into t values (2, 'b')");
    MustExec("insert into t values (3, 'c')");
    MustExec("commit");
  }

  std::string ErrorOf(const std::string& sql) {
    EXPECT_EQ(OCI_ERROR, Exec(sql)) << sql;
    return FirstError(err_);
  }
};

TEST_F(TruncateTest, RemovesEveryRow) {
  MustExec("truncate table t");
  EXPECT_EQ((Rows{}), Column("select id from t"));
}

TEST_F(TruncateTest, SchemaQualifiedName) {
  MustExec("TRUNCATE TABLE scott.t");
  EXPECT_EQ((Rows{}), Column("select id from t"));
}

TEST_F(TruncateTest, OtherSessionsSeeTheTableEmpty) {
  OCISvcCtx* other = OtherSession();
  MustExec("truncate table t");
  EXPECT_EQ((Rows{}), Column("select id from t", other));
}

TEST_F(TruncateTest, RollbackDoesNotBringTheRowsBack) {
  MustExec("truncate table t");
  MustExec("rollback");
  EXPECT_EQ((Rows{}), Column("select id from t"));
}

TEST_F(TruncateTest, CommitsTheOpenTransaction) {
  MustExec("create table u (id number)");
  MustExec("insert into u values (7)");
  MustExec("insert into t values (4, 'd')");
  MustExec("truncate table t");
  MustExec("rollback");
  EXPECT_EQ((Rows{"7"}), Column("select id from u"));
  EXPECT_EQ((Rows{}), Column("select id from t"));
}

TEST_F(TruncateTest, TheTableTakesNewRowsWithTheOldKeys) {
  MustExec("truncate table t");
  MustExec("insert into t values (1, 'again')");
  MustExec("commit");
  EXPECT_EQ((Rows{"again"}), Column("select note from t where id = 1"));
}

TEST_F(TruncateTest, AnOpenQueryKeepsTheRowsItFound) {
  OCIStmt* stmt = Prepare("select id from t");
  char buf[8];
  sb2 ind = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, buf, sizeof buf, SQLT_STR, &ind,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0)) << FirstError(err_);
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "truncate table t")) << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ("1", std::string(buf));
}

TEST_F(TruncateTest, StatementTypeIsUnknown) {
  // decision SQ4: Oracle's statement types have none for TRUNCATE.
  OCIStmt* stmt = Prepare("truncate table t");
  ub2 type = 99;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrGet(stmt, OCI_HTYPE_STMT, &type, nullptr, OCI_ATTR_STMT_TYPE, err_));
  EXPECT_EQ(OCI_STMT_UNKNOWN, type);
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ((Rows{}), Column("select id from t"));
}

TEST_F(TruncateTest, UnknownTableGivesOra00942) {
  EXPECT_EQ("ORA-00942: table or view does not exist", ErrorOf("truncate table nosuch"));
  EXPECT_EQ(942, ExecError("truncate table other.t"));
}

TEST_F(TruncateTest, ViewGivesOra00942) {
  // decision SQ3: a view (or sequence, or type) is no table to truncate.
  MustExec("create view v as select id from t");
  MustExec("create sequence s");
  EXPECT_EQ("ORA-00942: table or view does not exist", ErrorOf("truncate table v"));
  EXPECT_EQ(942, ExecError("truncate table s"));
  EXPECT_EQ((Rows{"1", "2", "3"}), Column("select id from v"));
}

TEST_F(TruncateTest, DualGivesOra01031) {
  EXPECT_EQ(1031, ExecError("truncate table dual"));
  EXPECT_EQ((Rows{"X"}), Column("select dummy from dual"));
}

TEST_F(TruncateTest, RowsAnotherSessionHoldsGiveOra00054) {
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "update t set note = 'x' where id = 2"))
      << FirstError(err_);
  EXPECT_EQ(54, ExecError("truncate table t"));
  EXPECT_EQ((Rows{"1", "2", "3"}), Column("select id from t"));
}

TEST_F(TruncateTest, WithoutTheTableKeywordGivesOra03290) {
  EXPECT_EQ("ORA-03290: Invalid truncate command - missing CLUSTER or TABLE keyword",
            ErrorOf("truncate t"));
  EXPECT_EQ((Rows{"1", "2", "3"}), Column("select id from t"));
}

TEST_F(TruncateTest, StorageClausesAreTakenAndChangeNothingElse) {
  MustExec("truncate table t reuse storage");
  EXPECT_EQ((Rows{}), Column("select id from t"));
  MustExec("insert into t values (1, 'a')");
  MustExec("truncate table t drop storage");
  MustExec("insert into t values (1, 'a')");
  MustExec("truncate table t drop all storage");
  EXPECT_EQ((Rows{}), Column("select id from t"));
}

}  // namespace
}  // namespace ocimem_test
