// ALTER TABLE ADD and DROP of constraints: existing rows validated, names, CASCADE, a failed
// statement changing nothing, DDL ending the open transaction and meeting other sessions'.
#include <gtest/gtest.h>

#include <string>

#include "constraint_fixture.h"

namespace ocimem_test {
namespace {

using AlterTableTest = ConstraintFixture;

TEST_F(AlterTableTest, AddPrimaryKeyIsEnforcedAfterwards) {
  MustExec("create table t (id number, name varchar2(10))");
  MustExec("insert into t values (1, 'a')");
  MustExec("insert into t values (2, 'b')");
  MustExec("alter table t add constraint t_pk primary key (id)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_PK) violated",
            ErrorOf("insert into t values (1, 'c')"));
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"T\".\"ID\")",
            ErrorOf("insert into t values (null, 'c')"));
  EXPECT_EQ("ORA-02260: table can have only one primary key",
            ErrorOf("alter table t add primary key (name)"));
  EXPECT_EQ("ORA-02261: such unique or primary key already exists in the table",
            ErrorOf("alter table t add unique (id)"));
}

TEST_F(AlterTableTest, AddPrimaryKeyOverDuplicatesOrNulls) {
  MustExec("create table t (id number, name varchar2(10))");
  MustExec("insert into t values (1, 'a')");
  MustExec("insert into t values (1, 'b')");
  EXPECT_EQ("ORA-02437: cannot validate (SCOTT.T_PK) - primary key violated",
            ErrorOf("alter table t add constraint t_pk primary key (id)"));
  MustExec("update t set id = null where name = 'b'");
  EXPECT_EQ("ORA-01449: column contains NULL values; cannot alter to NOT NULL",
            ErrorOf("alter table t add constraint t_pk primary key (id)"));
  // Nothing was added: the name is free and duplicates still go in.
  MustExec("insert into t values (1, 'c')");
  EXPECT_EQ(3u, Column("select id from t").size());
}

TEST_F(AlterTableTest, AddUniqueOverDuplicates) {
  MustExec("create table t (a number, b number)");
  MustExec("insert into t values (1, null)");
  MustExec("insert into t values (null, null)");
  MustExec("insert into t values (null, null)");
  MustExec("alter table t add constraint t_ab unique (a, b)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_AB) violated",
            ErrorOf("insert into t values (1, null)"));
  MustExec("insert into t values (2, 1)");
  MustExec("insert into t values (2, 2)");
  EXPECT_EQ("ORA-02299: cannot validate (SCOTT.T_B) - duplicate keys found",
            ErrorOf("alter table t add constraint t_b unique (a)"));
  MustExec("insert into t values (3, 3)");
}

TEST_F(AlterTableTest, AddCheckValidatesRows) {
  MustExec("create table t (id number, status varchar2(1))");
  MustExec("insert into t values (1, 'A')");
  MustExec("insert into t values (2, null)");
  MustExec("alter table t add constraint t_ck check (status = 'A')");
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.T_CK) violated",
            ErrorOf("insert into t values (3, 'B')"));
  MustExec("alter table t drop constraint t_ck");
  MustExec("insert into t values (3, 'B')");
  EXPECT_EQ("ORA-02293: cannot validate (SCOTT.T_CK) - check constraint violated",
            ErrorOf("alter table t add constraint t_ck check (status = 'A')"));
  EXPECT_EQ("ORA-00904: \"NOPE\": invalid identifier",
            ErrorOf("alter table t add check (nope = 1)"));
}

// A CHECK added later takes any condition, as one written in CREATE TABLE does.
TEST_F(AlterTableTest, AddCheckTakesAnyCondition) {
  MustExec("create table t (n number, code varchar2(3))");
  MustExec("insert into t values (5, 'A')");
  MustExec("insert into t values (null, 'B')");
  MustExec("alter table t add constraint t_n check (n between 1 and 10 and code in ('A', 'B'))");
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.T_N) violated",
            ErrorOf("insert into t values (11, 'A')"));
  MustExec("insert into t values (null, 'A')");
  EXPECT_EQ("ORA-02293: cannot validate (SCOTT.T_M) - check constraint violated",
            ErrorOf("alter table t add constraint t_m check (n is not null or code = 'B')"));
  EXPECT_EQ("ORA-02436: date or system variable wrongly specified in CHECK constraint",
            ErrorOf("alter table t add check (n < sysdate - sysdate)"));
  MustExec("delete from t where n is null and code = 'A'");
  MustExec("alter table t add constraint t_m check (n is not null or code = 'B')");
  MustExec("alter table t rename column n to m");
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.T_N) violated",
            ErrorOf("insert into t values (11, 'A')"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.T_M) violated",
            ErrorOf("insert into t values (null, 'A')"));
}

TEST_F(AlterTableTest, AddForeignKeyValidatesRows) {
  MustExec("create table p (id number primary key)");
  MustExec("create table c (id number, pid number)");
  MustExec("insert into p values (1)");
  MustExec("insert into c values (1, 1)");
  MustExec("insert into c values (2, null)");
  MustExec("insert into c values (3, 9)");
  EXPECT_EQ("ORA-02298: cannot validate (SCOTT.C_P) - parent keys not found",
            ErrorOf("alter table c add constraint c_p foreign key (pid) references p"));
  MustExec("delete from c where id = 3");
  MustExec("alter table c add constraint c_p foreign key (pid) references p on delete cascade");
  EXPECT_EQ("ORA-02291: integrity constraint (SCOTT.C_P) violated - parent key not found",
            ErrorOf("insert into c values (4, 5)"));
  EXPECT_EQ(1u, Changed("delete from p"));
  EXPECT_EQ((Rows{"2"}), Column("select id from c"));
  EXPECT_EQ("ORA-02270: no matching unique or primary key for this column-list",
            ErrorOf("alter table c add foreign key (id) references c (pid)"));
  EXPECT_EQ("ORA-00942: table or view does not exist",
            ErrorOf("alter table c add foreign key (id) references nope"));
}

TEST_F(AlterTableTest, ParenthesisedListIsAllOrNothing) {
  MustExec("create table p (id number, code varchar2(3))");
  MustExec("insert into p values (1, 'x')");
  MustExec("insert into p values (2, 'x')");
  EXPECT_EQ("ORA-02299: cannot validate (SCOTT.P_CODE) - duplicate keys found",
            ErrorOf("alter table p add (constraint p_pk primary key (id), "
                    "constraint p_code unique (code))"));
  // The primary key was not kept.
  MustExec("insert into p values (1, 'y')");
  MustExec("delete from p where code = 'y'");
  MustExec("alter table p add (constraint p_pk primary key (id), "
           "constraint c_fk foreign key (id) references p (id))");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.P_PK) violated",
            ErrorOf("insert into p values (1, 'z')"));
  EXPECT_EQ("ORA-02264: name already used by an existing constraint",
            ErrorOf("alter table p add constraint p_pk check (id = 1)"));
  EXPECT_EQ("ORA-02264: name already used by an existing constraint",
            ErrorOf("alter table p add (constraint x1 check (id = 1), constraint x1 check (id = 2))"));
}

TEST_F(AlterTableTest, DropPrimaryKeyReferencedByForeignKeys) {
  MustExec("create table p (id number constraint p_pk primary key)");
  MustExec("create table c (pid number constraint c_fk references p)");
  MustExec("insert into p values (1)");
  MustExec("insert into c values (1)");
  EXPECT_EQ("ORA-02273: this unique/primary key is referenced by some foreign keys",
            ErrorOf("alter table p drop primary key"));
  EXPECT_EQ("ORA-02273: this unique/primary key is referenced by some foreign keys",
            ErrorOf("alter table p drop constraint p_pk"));
  MustExec("alter table p drop constraint p_pk cascade");
  // Both keys went: duplicates and orphans go in; the names are free again.
  MustExec("insert into p values (1)");
  MustExec("insert into c values (7)");
  MustExec("create table d (x number constraint c_fk check (x = 1))");
  EXPECT_EQ("ORA-02441: Cannot drop nonexistent primary key",
            ErrorOf("alter table p drop primary key"));
}

TEST_F(AlterTableTest, DropUniqueAndOtherConstraints) {
  MustExec("create table t (a number constraint t_nn not null, b number, "
           "constraint t_b unique (b))");
  EXPECT_EQ("ORA-02442: Cannot drop nonexistent unique key",
            ErrorOf("alter table t drop unique (a)"));
  MustExec("alter table t drop unique (b)");
  MustExec("insert into t values (1, 1)");
  MustExec("insert into t values (2, 1)");
  MustExec("alter table t drop constraint t_nn");
  MustExec("insert into t values (null, 1)");
  // decision AT2
  EXPECT_EQ("ORA-02443: Cannot drop constraint  - nonexistent constraint",
            ErrorOf("alter table t drop constraint t_nn"));
  EXPECT_EQ("ORA-00942: table or view does not exist",
            ErrorOf("alter table nope drop constraint t_nn"));
}

TEST_F(AlterTableTest, DropForeignKey) {
  MustExec("create table p (id number primary key)");
  MustExec("create table c (pid number, constraint c_fk foreign key (pid) references p)");
  MustExec("insert into p values (1)");
  MustExec("insert into c values (1)");
  MustExec("alter table c drop constraint c_fk");
  EXPECT_EQ(1u, Changed("delete from p"));
  MustExec("drop table p");
}

TEST_F(AlterTableTest, CommitsTheOpenTransaction) {
  MustExec("create table t (id number)");
  MustExec("insert into t values (1)");
  MustExec("alter table t add constraint t_ck check (id = 1)");
  MustExec("rollback");
  EXPECT_EQ((Rows{"1"}), Column("select id from t"));
}

TEST_F(AlterTableTest, AnotherSessionsRowsAreBusy) {
  MustExec("create table t (id number)");
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "insert into t values (1)")) << FirstError(err_);
  EXPECT_EQ("ORA-00054: resource busy and acquire with NOWAIT specified or timeout expired",
            ErrorOf("alter table t add primary key (id)"));
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "commit"));
  MustExec("alter table t add primary key (id)");
}

TEST_F(AlterTableTest, SystemNamesAndDropTableOfTheParent) {
  MustExec("create table p (id number)");
  MustExec("create table c (pid number)");
  MustExec("alter table p add primary key (id)");
  MustExec("alter table c add foreign key (pid) references p on delete set null");
  MustExec("insert into p values (1)");
  MustExec("insert into c values (1)");
  std::string e = ErrorOf("insert into p values (1)");
  // decision CN2: system names SYS_Cnnnnnn, numbered through the database.
  EXPECT_EQ(0u, e.find("ORA-00001: unique constraint (SCOTT.SYS_C")) << e;
  EXPECT_EQ("ORA-02449: unique/primary keys in table referenced by foreign keys",
            ErrorOf("drop table p"));
  EXPECT_EQ(1u, Changed("delete from p"));
  EXPECT_EQ((Rows{"<null>"}), Column("select pid from c"));
  MustExec("drop table p cascade constraints");
  MustExec("insert into c values (5)");
}

TEST_F(AlterTableTest, ForeignKeyToItsOwnTable) {
  MustExec("create table emp (id number, boss number)");
  MustExec("insert into emp values (1, null)");
  MustExec("insert into emp values (2, 1)");
  MustExec("alter table emp add (constraint emp_pk primary key (id), "
           "constraint emp_boss foreign key (boss) references emp on delete cascade)");
  EXPECT_EQ("ORA-02291: integrity constraint (SCOTT.EMP_BOSS) violated - parent key not found",
            ErrorOf("insert into emp values (3, 9)"));
  // The row count is the statement's own rows; the cascade takes employee 2 as well.
  EXPECT_EQ(1u, Changed("delete from emp where id = 1"));
  EXPECT_EQ(0u, Column("select id from emp").size());
  MustExec("alter table emp drop primary key cascade");
  MustExec("insert into emp values (3, 9)");
}

TEST_F(AlterTableTest, ColumnConstraintsOfAnAddedColumn) {
  MustExec("create table p (id number primary key)");
  MustExec("create table c (id number)");
  MustExec("insert into p values (1)");
  MustExec("insert into c values (1)");
  MustExec("alter table c add (pid constraint c_p references p, "
           "code varchar2(3) default 'A' constraint c_code check (code = 'A'))");
  EXPECT_EQ((Rows{"<null>"}), Column("select pid from c"));
  EXPECT_EQ((Rows{"A"}), Column("select code from c"));
  EXPECT_EQ("ORA-02291: integrity constraint (SCOTT.C_P) violated - parent key not found",
            ErrorOf("insert into c values (2, 2, 'A')"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.C_CODE) violated",
            ErrorOf("insert into c values (2, 1, 'B')"));
  EXPECT_EQ("ORA-02438: Column check constraint cannot reference other columns",
            ErrorOf("alter table c add (x number check (id = 1))"));
}

TEST_F(AlterTableTest, ViewsSeeAddedConstraintsAndColumns) {
  MustExec("create table t (id number)");
  MustExec("create view v as select id from t");
  MustExec("alter table t add (constraint t_ck check (id = 1), note varchar2(5))");
  MustExec("insert into v values (1)");
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.T_CK) violated",
            ErrorOf("insert into v values (2)"));
  EXPECT_EQ((Rows{"1"}), Column("select id from v"));
}

TEST_F(AlterTableTest, BindVariablesAreRefused) {
  MustExec("create table t (id number)");
  EXPECT_EQ("ORA-01027: bind variables not allowed for data definition operations",
            ErrorOf("alter table t add (x number default :v)"));
}

TEST_F(AlterTableTest, SyntaxErrors) {
  MustExec("create table t (id number)");
  EXPECT_EQ("ORA-01735: invalid ALTER TABLE option", ErrorOf("alter table t frobnicate"));
  EXPECT_EQ("ORA-01735: invalid ALTER TABLE option",
            ErrorOf("alter table t add primary key (id) nonsense"));
  EXPECT_EQ("ORA-00905: missing keyword", ErrorOf("alter table t drop primary"));
  EXPECT_EQ("ORA-00906: missing left parenthesis", ErrorOf("alter table t add unique id"));
  EXPECT_EQ("ORA-00940: invalid ALTER command", ErrorOf("alter view t compile"));
  MustExec("create view v as select id from t");
  EXPECT_EQ("ORA-00942: table or view does not exist",
            ErrorOf("alter table v add constraint v_ck check (id = 1)"));
  // decision AT9: columns are not dropped.
  EXPECT_EQ("ORA-01735: invalid ALTER TABLE option", ErrorOf("alter table t drop column id"));
}

}  // namespace
}  // namespace ocimem_test
