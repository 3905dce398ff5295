// CREATE TABLE constraints: their column and table forms, the names the system gives, and
// the errors Oracle gives for bad ones.
#include <gtest/gtest.h>

#include <string>

#include "constraint_fixture.h"

namespace ocimem_test {
namespace {

using ConstraintTest = ConstraintFixture;

TEST_F(ConstraintTest, UnnamedConstraintsAreNumberedInTheOrderWritten) {
  MustExec(
      "create table t (a number primary key, b number not null, c number unique, "
      "d number check (d = 1), constraint named_u unique (b), e number references t)");
  MustExec("insert into t values (1, 1, 1, 1, 1)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.SYS_C007131) violated",
            ErrorOf("insert into t values (1, 2, 2, 1, null)"));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.NAMED_U) violated",
            ErrorOf("insert into t values (2, 1, 2, 1, null)"));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.SYS_C007133) violated",
            ErrorOf("insert into t values (2, 2, 1, 1, null)"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.SYS_C007134) violated",
            ErrorOf("insert into t values (2, 2, 2, 2, null)"));
  EXPECT_EQ("ORA-02291: integrity constraint (SCOTT.SYS_C007135) violated - parent key not found",
            ErrorOf("insert into t values (2, 2, 2, 1, 9)"));
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"T\".\"B\")",
            ErrorOf("insert into t values (2, null, 2, 1, null)"));
  EXPECT_EQ(1u, Changed("insert into t values (2, 2, 2, 1, 1)"));
}

// decision CN2: the numbers of system names run on through the database, table after table.
TEST_F(ConstraintTest, SystemNamesAreUniqueInTheDatabase) {
  MustExec("create table t1 (a number primary key)");
  MustExec("create table t2 (a number unique, b number constraint b_pos check (b = 1))");
  MustExec("create table t3 (a number references t1)");
  MustExec("insert into t1 values (1)");
  MustExec("insert into t2 values (1, 1)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.SYS_C007131) violated",
            ErrorOf("insert into t1 values (1)"));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.SYS_C007132) violated",
            ErrorOf("insert into t2 values (1, 1)"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.B_POS) violated",
            ErrorOf("insert into t2 values (2, 2)"));
  EXPECT_EQ("ORA-02291: integrity constraint (SCOTT.SYS_C007133) violated - parent key not found",
            ErrorOf("insert into t3 values (2)"));
}

TEST_F(ConstraintTest, ConstraintNamesAreUniqueInTheSchemaUntilTheTableGoes) {
  MustExec("create table t1 (a number constraint k primary key)");
  EXPECT_EQ("ORA-02264: name already used by an existing constraint",
            ErrorOf("create table t2 (a number constraint k unique)"));
  EXPECT_EQ("ORA-02264: name already used by an existing constraint",
            ErrorOf("create table t2 (a number constraint k2 not null, constraint k2 unique (a))"));
  // A failed CREATE TABLE leaves no table behind.
  EXPECT_EQ("ORA-00942: table or view does not exist", ErrorOf("select * from t2"));
  MustExec("drop table t1");
  MustExec("create table t2 (a number constraint k unique)");
  MustExec("insert into t2 values (1)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.K) violated", ErrorOf("insert into t2 values (1)"));
}

TEST_F(ConstraintTest, TableConstraintsNameTheirColumns) {
  MustExec(
      "create table t (a number, b varchar2(3), c number, constraint t_pk primary key (a, b), "
      "constraint t_c unique (c), check (c = 5))");
  MustExec("insert into t values (1, 'x', 5)");
  MustExec("insert into t values (1, 'y', null)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_PK) violated",
            ErrorOf("insert into t values (1, 'x', null)"));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_C) violated",
            ErrorOf("insert into t values (2, 'x', 5)"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.SYS_C007131) violated",
            ErrorOf("insert into t values (2, 'x', 6)"));
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"T\".\"B\")",
            ErrorOf("insert into t values (2, null, null)"));
}

TEST_F(ConstraintTest, NullAndNotNullAreColumnConstraints) {
  MustExec("create table t (a number null, b number constraint b_nn not null)");
  MustExec("insert into t values (null, 1)");
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"T\".\"B\")",
            ErrorOf("insert into t (a) values (1)"));
  EXPECT_EQ("ORA-01407: cannot update (\"SCOTT\".\"T\".\"B\") to NULL",
            ErrorOf("update t set b = null"));
  // NOT NULL constraints have names of their own.
  EXPECT_EQ("ORA-02264: name already used by an existing constraint",
            ErrorOf("create table u (a number constraint b_nn unique)"));
}

TEST_F(ConstraintTest, StatesOfEnforcedConstraintsAreTaken) {
  MustExec("create table t (a number constraint t_a unique enable validate not deferrable "
           "initially immediate norely not null, b number, "
           "constraint t_b check (b = 1) enable)");
  MustExec("insert into t values (1, 1)");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.T_A) violated",
            ErrorOf("insert into t values (1, 1)"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.T_B) violated",
            ErrorOf("insert into t values (2, 2)"));
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"T\".\"A\")",
            ErrorOf("insert into t values (null, 1)"));
  // Constraints that would not be enforced at once are not made.
  EXPECT_EQ("ORA-00907: missing right parenthesis",
            ErrorOf("create table u (a number unique disable)"));
  EXPECT_EQ("ORA-00907: missing right parenthesis",
            ErrorOf("create table u (a number, unique (a) deferrable)"));
  EXPECT_EQ("ORA-00907: missing right parenthesis",
            ErrorOf("create table u (a number primary key using index)"));
}

struct BadTable {
  const char* sql;
  const char* error;
};

class BadConstraintTest : public ConstraintFixture,
                          public ::testing::WithParamInterface<BadTable> {};

TEST_P(BadConstraintTest, GivesOraclesError) {
  MustExec("create table p (id number primary key, code varchar2(5) unique, x number)");
  MustExec("create table nokey (id number)");
  EXPECT_EQ(GetParam().error, ErrorOf(GetParam().sql));
  EXPECT_EQ(942, ExecError("select * from t"));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BadConstraintTest,
    ::testing::Values(
        BadTable{"create table t (a number primary key, b number primary key)",
                 "ORA-02260: table can have only one primary key"},
        BadTable{"create table t (a number primary key, b number, primary key (b))",
                 "ORA-02260: table can have only one primary key"},
        BadTable{"create table t (a number, b number, primary key (a, b), unique (b, a))",
                 "ORA-02261: such unique or primary key already exists in the table"},
        BadTable{"create table t (a number unique, b number, unique (a))",
                 "ORA-02261: such unique or primary key already exists in the table"},
        BadTable{"create table t (a number constraint k unique, b number constraint k check (b = 1))",
                 "ORA-02264: name already used by an existing constraint"},
        BadTable{"create table t (a number, unique (z))", "ORA-00904: \"Z\": invalid identifier"},
        BadTable{"create table t (a number, primary key (a, a))",
                 "ORA-00957: duplicate column name"},
        BadTable{"create table t (a number, check (z = 1))", "ORA-00904: \"Z\": invalid identifier"},
        BadTable{"create table t (a number, check (x.a = 1))",
                 "ORA-00904: \"X\".\"A\": invalid identifier"},
        BadTable{"create table t (a number check (b = 1), b number)",
                 "ORA-02438: Column check constraint cannot reference other columns"},
        BadTable{"create table t (a varchar2(64) check (a = sessiontimezone))",
                 "ORA-02436: date or system variable wrongly specified in CHECK constraint"},
        // decision CN3: NOT NULL written as a table constraint.
        BadTable{"create table t (a number, constraint c not null (a))",
                 "ORA-02253: constraint specification not allowed here"},
        BadTable{"create table t (a clob unique)",
                 "ORA-02329: column of datatype LOB cannot be unique or a primary key"},
        // decision CN8: datetime and interval keys are not kept.
        BadTable{"create table t (a timestamp primary key)",
                 "ORA-02329: column of datatype TIMESTAMP cannot be unique or a primary key"},
        BadTable{"create table t (a interval year to month unique)",
                 "ORA-02329: column of datatype INTERVAL YEAR TO MONTH cannot be unique or a "
                 "primary key"},
        BadTable{"create table t (a number references nope)",
                 "ORA-00942: table or view does not exist"},
        BadTable{"create table t (a number references p (x))",
                 "ORA-02270: no matching unique or primary key for this column-list"},
        BadTable{"create table t (a number references p (id, code))",
                 "ORA-02256: number of referencing columns must match referenced columns"},
        BadTable{"create table t (a number, b number, foreign key (a, b) references p)",
                 "ORA-02256: number of referencing columns must match referenced columns"},
        BadTable{"create table t (a varchar2(5) references p)",
                 "ORA-02267: column type incompatible with referenced column type"},
        BadTable{"create table t (a number references p (code))",
                 "ORA-02267: column type incompatible with referenced column type"},
        // decision CN4: CHAR does not refer to VARCHAR2.
        BadTable{"create table t (a char(5) references p (code))",
                 "ORA-02267: column type incompatible with referenced column type"},
        BadTable{"create table t (a number references nokey)",
                 "ORA-02268: referenced table does not have a primary key"},
        BadTable{"create table t (a number references p (nope))",
                 "ORA-00904: \"NOPE\": invalid identifier"},
        BadTable{"create table t (a number, foreign key (b) references p)",
                 "ORA-00904: \"B\": invalid identifier"},
        BadTable{"create table t (a number references p on update cascade)",
                 "ORA-00905: missing keyword"},
        BadTable{"create table t (a number references p on delete restrict)",
                 "ORA-00905: missing keyword"},
        BadTable{"create table t (a number, foreign key (a) p)", "ORA-00905: missing keyword"},
        BadTable{"create table t (a number, unique a)", "ORA-00906: missing left parenthesis"},
        BadTable{"create table t (a number check a = 1)", "ORA-00906: missing left parenthesis"},
        // decision CN7: CONSTRAINT name without its constraint.
        BadTable{"create table t (a number constraint k)", "ORA-00905: missing keyword"},
        BadTable{"create table t (a number, constraint k)", "ORA-00905: missing keyword"}));

TEST_F(ConstraintTest, ObjectTablesTakeConstraintsOnAttributes) {
  MustExec("create type pt as object (x number, y number)");
  MustExec("create table pts of pt (x primary key, y unique, constraint y_one check (y = 1))");
  MustExec("insert into pts values (pt(1, 1))");
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.SYS_C007132) violated",
            ErrorOf("insert into pts values (pt(2, 1))"));
  EXPECT_EQ("ORA-02290: check constraint (SCOTT.Y_ONE) violated",
            ErrorOf("insert into pts values (pt(2, 2))"));
  MustExec("insert into pts values (pt(2, null))");
  EXPECT_EQ((Rows{"1", "2"}), Column("select x from pts"));
}

}  // namespace
}  // namespace ocimem_test
