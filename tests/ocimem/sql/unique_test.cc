// UNIQUE constraints: NULLs, composite keys, UPDATE checked on the statement's result,
// transactions and other sessions, and a lookup through the key's index.
#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <string>

#include "constraint_fixture.h"

namespace ocimem_test {
namespace {

using UniqueTest = ConstraintFixture;

TEST_F(UniqueTest, RowsWithTheKeyNullAreNotCompared) {
  MustExec("create table t (id number, code varchar2(5) constraint t_code unique)");
  MustExec("insert into t values (1, 'A')");
  MustExec("insert into t values (2, null)");
  MustExec("insert into t values (3, null)");
  MustExec("insert into t (id) values (4)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_CODE) violated",
            ErrorOf("insert into t values (5, 'A')"));
  EXPECT_EQ((Rows{"1", "2", "3", "4"}), Column("select id from t"));
}

// Oracle compares composite keys with some NULL columns on their other columns: two rows
// NULL in the same columns and equal in the rest collide.
TEST_F(UniqueTest, PartlyNullCompositeKeysCompareTheirOtherColumns) {
  MustExec("create table t (a number, b number, constraint t_ab unique (a, b))");
  MustExec("insert into t values (1, null)");
  MustExec("insert into t values (null, 1)");
  MustExec("insert into t values (null, null)");
  MustExec("insert into t values (null, null)");
  MustExec("insert into t values (1, 1)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_AB) violated",
            ErrorOf("insert into t values (1, null)"));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_AB) violated",
            ErrorOf("insert into t values (null, 1)"));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_AB) violated",
            ErrorOf("insert into t values (1, 1)"));
  MustExec("insert into t values (2, null)");
  EXPECT_EQ(6u, Column("select a from t").size());
}

TEST_F(UniqueTest, UpdateIsCheckedOnTheRowsItLeaves) {
  MustExec("create table t (id number primary key, grp number, code number, "
           "constraint t_gc unique (grp, code))");
  MustExec("insert into t values (1, 1, 10)");
  MustExec("insert into t values (2, 2, 10)");
  MustExec("insert into t values (3, 1, 20)");
  // Two rows that would take one key: the statement fails and changes nothing.
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_GC) violated",
            ErrorOf("update t set grp = 1"));
  EXPECT_EQ((Rows{"1", "2", "1"}), Column("select grp from t"));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_GC) violated",
            ErrorOf("update t set code = 20 where id = 1"));
  // A row keeps its own key.
  EXPECT_EQ(1u, Changed("update t set code = 10 where id = 1"));
  EXPECT_EQ(1u, Changed("update t set code = 30 where id = 3"));
  // Rows of different groups may take one code.
  EXPECT_EQ(2u, Changed("update t set code = 40 where code = 10"));
  EXPECT_EQ((Rows{"40", "40", "30"}), Column("select code from t"));
  // A key freed by one row can be taken by another.
  EXPECT_EQ(1u, Changed("update t set code = 50 where id = 3"));
  EXPECT_EQ(1u, Changed("update t set code = 30 where id = 1"));
}

TEST_F(UniqueTest, DeletedKeysCanBeInsertedAgain) {
  MustExec("create table t (code number unique)");
  MustExec("insert into t values (1)");
  EXPECT_EQ(1u, Changed("delete from t where code = 1"));
  MustExec("insert into t values (1)");
  MustExec("commit");
  EXPECT_EQ(1u, Changed("delete from t"));
  MustExec("insert into t values (1)");
  MustExec("rollback");
  EXPECT_EQ((Rows{"1"}), Column("select code from t"));
}

TEST_F(UniqueTest, ConstraintsSeeTheSessionsUncommittedRowsAndRollbackRestores) {
  MustExec("create table t (code number constraint t_u unique)");
  MustExec("insert into t values (1)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_U) violated",
            ErrorOf("insert into t values (1)"));
  MustExec("rollback");
  MustExec("insert into t values (1)");
  MustExec("commit");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_U) violated",
            ErrorOf("insert into t values (1)"));
}

// decision CN1: where Oracle would wait for another transaction that holds a row with the
// same key, ocimem answers ORA-00054 at once, as for primary keys.
TEST_F(UniqueTest, AnotherSessionsUncommittedKeyIsBusy) {
  MustExec("create table t (id number, code number constraint t_u unique)");
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "insert into t values (1, 7)")) << FirstError(err_);
  EXPECT_EQ("ORA-00054: resource busy and acquire with NOWAIT specified or timeout expired",
            ErrorOf("insert into t values (2, 7)"));
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "commit"));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_U) violated",
            ErrorOf("insert into t values (2, 7)"));
  // A key another session is deleting is busy too; free once it commits.
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "delete from t where code = 7"));
  EXPECT_EQ(54, ExecError("insert into t values (2, 7)"));
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "commit"));
  MustExec("insert into t values (2, 7)");
}

// Each insert finds its key through the key's index, so an insert costs the same
// whatever the table holds: a batch of rows inserted into a table of 4,000 rows takes
// about as long as the first batch did, where a pass over the table per insert would
// make it about nine times as long. Process CPU time, so that other programs running
// beside the test do not count.
TEST_F(UniqueTest, InsertingManyRowsStaysLinear) {
  MustExec("create table t (id number, code varchar2(10) unique, n number unique)");
  OCIStmt* stmt = Prepare("insert into t values (:1, :2, :3)");
  int id = 0;
  char code[16] = {0};
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  OCIBind* b3 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, code, sizeof code, SQLT_STR, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b3, err_, 3, &id, sizeof id, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  constexpr int kBatch = 1000;
  auto insert = [&](int from, int to) {
    const std::clock_t start = std::clock();
    for (id = from; id < to; ++id) {
      std::snprintf(code, sizeof code, "C%d", id);
      EXPECT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
    }
    return static_cast<double>(std::clock() - start);
  };
  const double first = insert(0, kBatch);
  insert(kBatch, 4 * kBatch);
  const double later = insert(4 * kBatch, 5 * kBatch);
  EXPECT_LT(later, 4.0 * first) << "first " << first << ", later " << later;
  id = 4999;
  std::snprintf(code, sizeof code, "new");
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.SYS_C007132) violated", FirstError(err_));
  MustExec("commit");
  EXPECT_EQ((Rows{"C1234"}), Column("select code from t where n = 1234"));
}

}  // namespace
}  // namespace ocimem_test
