// CREATE INDEX, DROP INDEX and COMMENT ON.
#include <gtest/gtest.h>

#include <string>

#include "constraint_fixture.h"

namespace ocimem_test {
namespace {

using IndexTest = ConstraintFixture;

TEST_F(IndexTest, PlainIndexChangesNoResult) {
  MustExec("create table t (id number, name varchar2(10))");
  MustExec("insert into t values (1, 'a')");
  MustExec("create index t_name on t (name desc, id asc) tablespace users pctfree 10");
  MustExec("insert into t values (1, 'a')");
  EXPECT_EQ((Rows{"a", "a"}), Column("select name from t"));
  MustExec("drop index t_name");
  EXPECT_EQ("ORA-01418: specified index does not exist", ErrorOf("drop index t_name"));
}

TEST_F(IndexTest, IndexNamesShareTheNamespace) {
  MustExec("create table t (id number constraint t_pk primary key, name varchar2(10))");
  MustExec("create index t_i on t (name)");
  EXPECT_EQ("ORA-00955: name is already used by an existing object",
            ErrorOf("create index t on t (name)"));
  EXPECT_EQ("ORA-00955: name is already used by an existing object",
            ErrorOf("create table t_i (x number)"));
  EXPECT_EQ("ORA-00955: name is already used by an existing object",
            ErrorOf("create index t_pk on t (id, name)"));
  EXPECT_EQ("ORA-01408: such column list already indexed", ErrorOf("create index x on t (name)"));
  EXPECT_EQ("ORA-01408: such column list already indexed", ErrorOf("create index x on t (id)"));
  EXPECT_EQ("ORA-02429: cannot drop index used for enforcement of unique/primary key",
            ErrorOf("drop index t_pk"));
  EXPECT_EQ("ORA-00942: table or view does not exist", ErrorOf("drop table t_i"));
  EXPECT_EQ("ORA-00942: table or view does not exist", ErrorOf("create index y on nope (a)"));
  EXPECT_EQ("ORA-00904: \"NOPE\": invalid identifier", ErrorOf("create index y on t (nope)"));
  // Dropping the table drops its indexes: the name is free.
  MustExec("drop table t");
  MustExec("create table t_i (x number)");
}

TEST_F(IndexTest, UniqueIndexEnforcesUniqueness) {
  MustExec("create table t (id number, code varchar2(5))");
  MustExec("insert into t values (1, 'a')");
  MustExec("insert into t values (2, 'a')");
  EXPECT_EQ("ORA-01452: cannot CREATE UNIQUE INDEX; duplicate keys found",
            ErrorOf("create unique index t_code on t (code)"));
  MustExec("update t set code = 'b' where id = 2");
  MustExec("create unique index t_code on t (code)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_CODE) violated",
            ErrorOf("insert into t values (3, 'a')"));
  MustExec("insert into t values (3, null)");
  MustExec("insert into t values (4, null)");
  // An index is no key a foreign key can refer to.
  EXPECT_EQ("ORA-02270: no matching unique or primary key for this column-list",
            ErrorOf("create table c (code varchar2(5) references t (code))"));
  MustExec("drop index t_code");
  MustExec("insert into t values (5, 'a')");
}

// A key added over an indexed column list takes that index over: the index cannot be
// dropped while the key is there, and stays when the key goes.
TEST_F(IndexTest, KeyAddedOverAnIndexedColumnList) {
  MustExec("create table t (id number, code varchar2(5))");
  MustExec("create unique index t_code_i on t (code)");
  MustExec("alter table t add constraint t_code unique (code)");
  MustExec("insert into t values (1, 'a')");
  // decision AT1: the constraint is checked first and named.
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_CODE) violated",
            ErrorOf("insert into t values (2, 'a')"));
  EXPECT_EQ("ORA-02429: cannot drop index used for enforcement of unique/primary key",
            ErrorOf("drop index t_code_i"));
  // The key made no index of its own name.
  EXPECT_EQ("ORA-01418: specified index does not exist", ErrorOf("drop index t_code"));
  MustExec("alter table t drop constraint t_code");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_CODE_I) violated",
            ErrorOf("insert into t values (2, 'a')"));
  MustExec("drop index t_code_i");
  MustExec("insert into t values (2, 'a')");
  MustExec("alter table t add constraint t_id primary key (id)");
  EXPECT_EQ("ORA-02429: cannot drop index used for enforcement of unique/primary key",
            ErrorOf("drop index t_id"));
  EXPECT_EQ("ORA-01408: such column list already indexed", ErrorOf("create index t_i on t (id)"));
  MustExec("create index t_code_id on t (code, id)");
  MustExec("create index t_id_code on t (id, code)");
}

TEST_F(IndexTest, IndexOfAnotherSessionsRowsIsBusy) {
  MustExec("create table t (id number, doc clob)");
  EXPECT_EQ("ORA-02327: cannot create index on expression with datatype LOB",
            ErrorOf("create index t_doc on t (doc)"));
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "insert into t (id) values (1)")) << FirstError(err_);
  EXPECT_EQ("ORA-00054: resource busy and acquire with NOWAIT specified or timeout expired",
            ErrorOf("create unique index t_id on t (id)"));
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "commit"));
  MustExec("create unique index t_id on t (id)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_ID) violated",
            ErrorOf("insert into t (id) values (1)"));
  MustExec("truncate table t");
  MustExec("insert into t (id) values (1)");
}

TEST_F(IndexTest, SyntaxErrors) {
  MustExec("create table t (id number)");
  EXPECT_EQ("ORA-00969: missing ON keyword", ErrorOf("create index i t (id)"));
  EXPECT_EQ("ORA-00922: missing or invalid option", ErrorOf("create index i on t (id) storage"));
  EXPECT_EQ("ORA-00933: SQL command not properly ended", ErrorOf("drop index i x"));
}

TEST_F(IndexTest, CommentOnTableAndColumn) {
  MustExec("create table t (id number)");
  MustExec("comment on table t is 'the table'");
  MustExec("comment on column t.id is 'the key'");
  MustExec("comment on column scott.t.id is ''");
  EXPECT_EQ("ORA-00942: table or view does not exist", ErrorOf("comment on table nope is 'x'"));
  EXPECT_EQ("ORA-00904: \"NOPE\": invalid identifier",
            ErrorOf("comment on column t.nope is 'x'"));
  EXPECT_EQ("ORA-01780: string literal required", ErrorOf("comment on table t is 5"));
  // decision AT11
  EXPECT_EQ(kBadColumnName, ErrorOf("comment on column id is 'x'"));
  EXPECT_EQ(kBadColumnName, ErrorOf("comment on column scott.t.id.x is 'x'"));
  EXPECT_EQ("ORA-00905: missing keyword", ErrorOf("comment on index t is 'x'"));
  // decision AT10: a view's comments are checked and taken.
  MustExec("create view v as select id from t");
  MustExec("comment on table v is 'the view'");
  MustExec("comment on column v.id is 'its key'");
  EXPECT_EQ("ORA-00904: \"NOPE\": invalid identifier",
            ErrorOf("comment on column v.nope is 'x'"));
  EXPECT_EQ("ORA-00942: table or view does not exist",
            ErrorOf("comment on column nope.id is 'x'"));
}

}  // namespace
}  // namespace ocimem_test
