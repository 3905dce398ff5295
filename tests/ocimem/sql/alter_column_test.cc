// ALTER TABLE ADD column, MODIFY, RENAME COLUMN and RENAME TO.
#include <gtest/gtest.h>

#include <string>

#include "constraint_fixture.h"

namespace ocimem_test {
namespace {

using AlterColumnTest = ConstraintFixture;

TEST_F(AlterColumnTest, AddedColumnsTakeTheirDefaultInExistingRows) {
  MustExec("create table t (id number)");
  MustExec("insert into t values (1)");
  MustExec("insert into t values (2)");
  MustExec("alter table t add (note varchar2(10) default 'new', n number)");
  MustExec("alter table t add flag varchar2(1) default 'Y' not null");
  EXPECT_EQ((Rows{"new", "new"}), Column("select note from t"));
  EXPECT_EQ((Rows{"<null>", "<null>"}), Column("select n from t"));
  EXPECT_EQ((Rows{"Y", "Y"}), Column("select flag from t"));
  MustExec("insert into t (id) values (3)");
  EXPECT_EQ((Rows{"Y", "Y", "Y"}), Column("select flag from t"));
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"T\".\"FLAG\")",
            ErrorOf("insert into t (id, flag) values (4, null)"));
}

TEST_F(AlterColumnTest, AddColumnErrors) {
  MustExec("create table t (id number)");
  MustExec("insert into t values (1)");
  MustExec("insert into t values (2)");
  EXPECT_EQ("ORA-01430: column being added already exists in table",
            ErrorOf("alter table t add id number"));
  EXPECT_EQ("ORA-01758: table must be empty to add mandatory (NOT NULL) column",
            ErrorOf("alter table t add x number not null"));
  // decision AT4: a primary-key column is mandatory as well.
  EXPECT_EQ("ORA-01758: table must be empty to add mandatory (NOT NULL) column",
            ErrorOf("alter table t add x number primary key"));
  EXPECT_EQ("ORA-00957: duplicate column name", ErrorOf("alter table t add (x number, x number)"));
  // A failed ADD adds nothing: neither the columns nor a constraint that held.
  EXPECT_EQ("ORA-02299: cannot validate (SCOTT.T_Y) - duplicate keys found",
            ErrorOf("alter table t add (x number, y number default 6, "
                    "constraint t_x unique (x), constraint t_y unique (y))"));
  EXPECT_EQ("ORA-00913: too many values", ErrorOf("insert into t values (3, 3)"));
  MustExec("alter table t add constraint t_x unique (id)");
  MustExec("delete from t");
  MustExec("alter table t add z number not null");
  MustExec("insert into t values (1, 3)");
  EXPECT_EQ((Rows{"3"}), Column("select z from t"));
}

TEST_F(AlterColumnTest, ObjectTablesTakeNoColumns) {
  MustExec("create type pt as object (x number)");
  MustExec("create table pts of pt");
  EXPECT_EQ("ORA-22856: cannot add columns to object tables",
            ErrorOf("alter table pts add y number"));
  EXPECT_EQ("ORA-22857: cannot modify columns of object tables",
            ErrorOf("alter table pts modify x number(3)"));
  MustExec("alter table pts add constraint pts_x check (x = 1)");
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.PTS_X) violated",
            ErrorOf("insert into pts values (2)"));
}

TEST_F(AlterColumnTest, ModifyNullability) {
  MustExec("create table t (id number, name varchar2(10))");
  MustExec("insert into t values (1, null)");
  EXPECT_EQ("ORA-02296: cannot enable (SCOTT.T_NN) - null values found",
            ErrorOf("alter table t modify name constraint t_nn not null"));
  // decision AT3: a system-named NOT NULL is shown without its name.
  EXPECT_EQ("ORA-02296: cannot enable (SCOTT.) - null values found",
            ErrorOf("alter table t modify (name not null)"));
  MustExec("update t set name = 'a'");
  MustExec("alter table t modify name constraint t_nn not null");
  EXPECT_EQ("ORA-01442: column to be modified to NOT NULL is already NOT NULL",
            ErrorOf("alter table t modify name not null"));
  EXPECT_EQ("ORA-01407: cannot update (\"SCOTT\".\"T\".\"NAME\") to NULL",
            ErrorOf("update t set name = null"));
  MustExec("alter table t modify (name null)");
  MustExec("update t set name = null");
  EXPECT_EQ("ORA-01451: column to be modified to NULL cannot be modified to NULL",
            ErrorOf("alter table t modify name null"));
  // The name came free with the constraint.
  MustExec("alter table t add constraint t_nn check (id = 1)");
}

TEST_F(AlterColumnTest, ModifyDefaultAndLength) {
  MustExec("create table t (id number(3), name varchar2(5))");
  MustExec("insert into t values (1, 'abcd')");
  MustExec("alter table t modify (name varchar2(20) default 'zz')");
  MustExec("insert into t (id) values (2)");
  MustExec("insert into t values (3, 'abcdefghijkl')");
  EXPECT_EQ((Rows{"abcd", "zz", "abcdefghijkl"}), Column("select name from t"));
  EXPECT_EQ("ORA-01441: cannot decrease column length because some value is too big",
            ErrorOf("alter table t modify name varchar2(10)"));
  MustExec("alter table t modify name varchar2(12)");
  MustExec("alter table t modify id number(10)");
  MustExec("insert into t values (123456, 'x')");
  EXPECT_EQ("ORA-01440: column to be modified must be empty to decrease precision or scale",
            ErrorOf("alter table t modify id number(4)"));
  EXPECT_EQ("ORA-01439: column to be modified must be empty to change datatype",
            ErrorOf("alter table t modify id varchar2(10)"));
  EXPECT_EQ("ORA-00904: \"NOPE\": invalid identifier", ErrorOf("alter table t modify nope null"));
  MustExec("alter table t add (doc clob)");
  EXPECT_EQ("ORA-22859: invalid modification of columns",
            ErrorOf("alter table t modify doc varchar2(10)"));
  MustExec("alter table t add (empty_col number)");
  MustExec("alter table t modify empty_col varchar2(3)");
  MustExec("insert into t (id, empty_col) values (7, 'abc')");
  EXPECT_EQ("ORA-12899: value too large for column \"SCOTT\".\"T\".\"EMPTY_COL\" (actual: 4, maximum: 3)",
            ErrorOf("insert into t (id, empty_col) values (8, 'abcd')"));
}

TEST_F(AlterColumnTest, RenameColumnAndTable) {
  MustExec("create table t (id number, name varchar2(5) check (name = 'a'))");
  MustExec("insert into t values (1, 'a')");
  MustExec("create view v as select id from t");
  MustExec("alter table t rename column name to label");
  EXPECT_EQ((Rows{"a"}), Column("select label from t"));
  EXPECT_EQ(2290, ExecError("insert into t values (2, 'b')"));
  EXPECT_EQ("ORA-00957: duplicate column name", ErrorOf("alter table t rename column id to label"));
  EXPECT_EQ("ORA-00904: \"NAME\": invalid identifier",
            ErrorOf("alter table t rename column name to x"));
  MustExec("create table u (x number)");
  EXPECT_EQ("ORA-00955: name is already used by an existing object",
            ErrorOf("alter table t rename to u"));
  MustExec("alter table t rename to w");
  EXPECT_EQ((Rows{"1"}), Column("select id from w"));
  EXPECT_EQ("ORA-00942: table or view does not exist", ErrorOf("select id from t"));
  // The view read the old name.
  EXPECT_EQ(4063, ExecError("select id from v"));
}

}  // namespace
}  // namespace ocimem_test
