// Transactions: what other sessions see, commit, rollback, row locks between sessions,
// commit on success, DDL and session end, and a FOR UPDATE cursor after commit.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class TransTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table acct (id number primary key, bal number)");
    MustExec("insert into acct values (1, 100)");
    ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
    other_ = OtherSession();
  }
  OCISvcCtx* other_ = nullptr;
};

TEST_F(TransTest, OtherSessionSeesCommittedRowsOnly) {
  MustExec("insert into acct values (2, 5)");
  EXPECT_EQ((std::vector<std::string>{"1", "2"}), Column("select id from acct"));
  EXPECT_EQ(std::vector<std::string>{"1"}, Column("select id from acct", other_));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ((std::vector<std::string>{"1", "2"}), Column("select id from acct", other_));
}

TEST_F(TransTest, UncommittedUpdateAndDeleteAreTheSessionsOwn) {
  MustExec("update acct set bal = 50 where id = 1");
  EXPECT_EQ(std::vector<std::string>{"50"}, Column("select bal from acct"));
  EXPECT_EQ(std::vector<std::string>{"100"}, Column("select bal from acct", other_));
  MustExec("delete from acct where id = 1");
  EXPECT_TRUE(Column("select bal from acct").empty());
  EXPECT_EQ(std::vector<std::string>{"100"}, Column("select bal from acct", other_));
}

TEST_F(TransTest, RollbackUndoesInsertUpdateAndDelete) {
  MustExec("insert into acct values (2, 5)");
  MustExec("update acct set bal = 0 where id = 1");
  MustExec("delete from acct where id = 2");
  MustExec("insert into acct values (3, 7)");
  ASSERT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(std::vector<std::string>{"100"}, Column("select bal from acct"));
  EXPECT_EQ(std::vector<std::string>{"1"}, Column("select id from acct"));
}

// UNCONFIRMED: commit with no open transaction
TEST_F(TransTest, CommitAndRollbackWithNothingOpen) {
  EXPECT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT));
}

TEST_F(TransTest, CommitAndRollbackStatements) {
  MustExec("insert into acct values (2, 5)");
  MustExec("commit");
  MustExec("insert into acct values (3, 5)");
  MustExec("rollback work");
  EXPECT_EQ((std::vector<std::string>{"1", "2"}), Column("select id from acct", other_));
}

// decision D14: a row locked by another session fails at once with ORA-00054
TEST_F(TransTest, LockedRowFailsAtOnce) {
  ASSERT_EQ(OCI_SUCCESS, Execute(Prepare("select id from acct where id = 1 for update"), 0));
  EXPECT_EQ(OCI_ERROR, ExecOn(other_, "update acct set bal = 1 where id = 1"));
  EXPECT_EQ("ORA-00054: resource busy and acquire with NOWAIT specified or timeout expired",
            FirstError(err_));
  EXPECT_EQ(OCI_ERROR, Execute(Prepare("select id from acct for update"), 0, other_));
  EXPECT_EQ(54, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, ExecOn(other_, "delete from acct"));
  EXPECT_EQ(54, FirstCode(err_));
  // Plain reads are not blocked.
  EXPECT_EQ(std::vector<std::string>{"100"}, Column("select bal from acct", other_));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, ExecOn(other_, "update acct set bal = 1 where id = 1"))
      << FirstError(err_);
}

// decision D14
TEST_F(TransTest, DuplicateOfAnotherSessionsUncommittedKeyIsBusy) {
  MustExec("insert into acct values (2, 5)");
  EXPECT_EQ(OCI_ERROR, ExecOn(other_, "insert into acct values (2, 6)"));
  EXPECT_EQ(54, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, ExecOn(other_, "insert into acct values (2, 6)")) << FirstError(err_);
}

TEST_F(TransTest, RollbackReleasesLocks) {
  MustExec("update acct set bal = 1 where id = 1");
  ASSERT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, ExecOn(other_, "update acct set bal = 2 where id = 1"));
}

TEST_F(TransTest, CommitOnSuccessMode) {
  OCIStmt* stmt = Prepare("insert into acct values (2, 5)");
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1, nullptr, OCI_COMMIT_ON_SUCCESS));
  EXPECT_EQ((std::vector<std::string>{"1", "2"}), Column("select id from acct", other_));
}

// UNCONFIRMED: nothing is committed when the statement fails
TEST_F(TransTest, CommitOnSuccessModeCommitsNothingOnFailure) {
  MustExec("insert into acct values (2, 5)");
  OCIStmt* stmt = Prepare("insert into acct values (1, 5)");
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 1, nullptr, OCI_COMMIT_ON_SUCCESS));
  EXPECT_EQ(std::vector<std::string>{"1"}, Column("select id from acct", other_));
}

// decision D15: DDL commits the open transaction
TEST_F(TransTest, DdlCommits) {
  MustExec("insert into acct values (2, 5)");
  MustExec("create table other_table (a number)");
  ASSERT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ((std::vector<std::string>{"1", "2"}), Column("select id from acct", other_));
}

// Ending the session commits its transaction.
TEST_F(TransTest, LogoffCommits) {
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other_, "insert into acct values (3, 1)"));
  ASSERT_EQ(OCI_SUCCESS, OCILogoff(other_, err_));
  EXPECT_EQ((std::vector<std::string>{"1", "3"}), Column("select id from acct"));
}

// Fetching from a FOR UPDATE cursor after commit is ORA-01002.
TEST_F(TransTest, FetchFromForUpdateCursorAfterCommit) {
  MustExec("insert into acct values (2, 5)");
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  OCIStmt* stmt = Prepare("select id from acct for update");
  int id = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ("ORA-01002: fetch out of sequence", FirstError(err_));
}

// UNCONFIRMED: a query sees the data as of its start
TEST_F(TransTest, OpenQueryKeepsTheRowsItFound) {
  OCIStmt* stmt = Prepare("select bal from acct");
  int bal = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &bal, sizeof bal, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0));
  MustExec("update acct set bal = 1");
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(100, bal);
}

TEST_F(TransTest, DropTableWithRowsLockedByAnotherSession) {
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other_, "update acct set bal = 3"));
  EXPECT_EQ(54, ExecError("drop table acct"));
}

TEST_F(TransTest, ChangedKeyIsFoundByTheNewKeyInTheSessionAndTheOldKeyElsewhere) {
  MustExec("update acct set id = 9 where id = 1");
  EXPECT_EQ(std::vector<std::string>{"100"}, Column("select bal from acct where id = 9"));
  EXPECT_TRUE(Column("select bal from acct where id = 1").empty());
  EXPECT_EQ(std::vector<std::string>{"100"}, Column("select bal from acct where id = 1", other_));
  EXPECT_TRUE(Column("select bal from acct where id = 9", other_).empty());
  MustExec("insert into acct values (1, 7)");  // the old key is free for this session
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(std::vector<std::string>{"7"}, Column("select bal from acct where id = 1", other_));
  EXPECT_EQ(std::vector<std::string>{"100"}, Column("select bal from acct where id = 9", other_));
}

TEST_F(TransTest, RolledBackKeyChangeRestoresTheIndex) {
  MustExec("update acct set id = 9 where id = 1");
  ASSERT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(std::vector<std::string>{"100"}, Column("select bal from acct where id = 1"));
  EXPECT_TRUE(Column("select bal from acct where id = 9").empty());
  EXPECT_EQ(1, ExecError("insert into acct values (1, 0)"));
  MustExec("insert into acct values (9, 0)");
}

TEST_F(TransTest, ManyRowsAreFoundByKey) {
  OCIStmt* ins = Prepare("insert into acct values (:1, :1)");
  int id = 0;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &b, err_, 1, &id, sizeof id, SQLT_INT, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &b2, err_, 2, &id, sizeof id, SQLT_INT, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  for (id = 2; id <= 3000; ++id) ASSERT_EQ(OCI_SUCCESS, Execute(ins)) << id;
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(std::vector<std::string>{"2999"}, Column("select bal from acct where id = 2999"));
  MustExec("delete from acct where id = 1500");
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_TRUE(Column("select bal from acct where id = 1500", other_).empty());
  EXPECT_EQ(std::vector<std::string>{"1501"},
            Column("select bal from acct where id = 1501", other_));
}

TEST_F(TransTest, TransactionCallsNeedAHandle) {
  EXPECT_EQ(OCI_INVALID_HANDLE, OCITransCommit(nullptr, err_, OCI_DEFAULT));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCITransRollback(svc_, nullptr, OCI_DEFAULT));
}

TEST_F(TransTest, ArrayInsertUsesEachElement) {
  OCIStmt* stmt = Prepare("insert into acct values (:1, :2)");
  int ids[3] = {10, 11, 12};
  int bals[3] = {1, 2, 3};
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, ids, sizeof ids[0], SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, bals, sizeof bals[0], SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 3)) << FirstError(err_);
  ub4 count = 0;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT, err_));
  EXPECT_EQ(3u, count);
  EXPECT_EQ(std::vector<std::string>{"2"}, Column("select bal from acct where id = 11"));
}

}  // namespace
}  // namespace ocimem_test
