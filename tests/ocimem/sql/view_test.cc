// Views through SQL: CREATE [OR REPLACE] VIEW and DROP VIEW with Oracle's errors, queries
// on a view with conditions of their own, INSERT, UPDATE and DELETE through a view, views
// over views and over object tables, and views whose table was dropped.
#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

using Rows = std::vector<std::string>;

class ViewTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table emp (id number(4) primary key, name varchar2(10) not null, "
             "dept number(2), note varchar2(20))");
    MustExec("insert into emp values (1, 'ADA', 10, 'first')");
    MustExec("insert into emp values (2, 'BOB', 20, null)");
    MustExec("insert into emp values (3, 'CY', 10, 'third')");
    MustExec("commit");
  }

  // The text of the first error record.
  std::string ErrorOf(const std::string& sql) {
    EXPECT_EQ(OCI_ERROR, Exec(sql)) << sql;
    return FirstError(err_);
  }

  // Rows changed by one DML statement.
  ub4 Changed(const std::string& sql) {
    OCIStmt* stmt = Prepare(sql);
    EXPECT_EQ(OCI_SUCCESS, Execute(stmt)) << sql << ": " << FirstError(err_);
    ub4 count = 0;
    EXPECT_EQ(OCI_SUCCESS,
              OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT, err_));
    return count;
  }
};

struct BadView {
  const char* sql;
  const char* error;
};

class BadViewTest : public ViewTest, public ::testing::WithParamInterface<BadView> {};

TEST_P(BadViewTest, GivesOraclesError) {
  MustExec("create view used_v as select id from emp");
  MustExec("create type used_t as object (a number)");
  EXPECT_EQ(GetParam().error, ErrorOf(GetParam().sql));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BadViewTest,
    ::testing::Values(
        BadView{"create view emp as select id from emp",
                "ORA-00955: name is already used by an existing object"},
        BadView{"create view used_t as select id from emp",
                "ORA-00955: name is already used by an existing object"},
        BadView{"create view used_v as select name from emp",
                "ORA-00955: name is already used by an existing object"},
        // OR REPLACE replaces views only.
        BadView{"create or replace view emp as select id from emp",
                "ORA-00955: name is already used by an existing object"},
        BadView{"create view v as select id from nowhere",
                "ORA-00942: table or view does not exist"},
        BadView{"create view v as select id from used_t",
                "ORA-00942: table or view does not exist"},
        BadView{"create view v as select salary from emp",
                "ORA-00904: \"SALARY\": invalid identifier"},
        BadView{"create view v as select e.id from emp x",
                "ORA-00904: \"E\".\"ID\": invalid identifier"},
        BadView{"create view v as select id from emp where salary = 1",
                "ORA-00904: \"SALARY\": invalid identifier"},
        BadView{"create view v (a) as select id, name from emp",
                "ORA-01730: invalid number of column names specified"},
        BadView{"create view v (a, b, c) as select id, name from emp",
                "ORA-01730: invalid number of column names specified"},
        BadView{"create view v (a, b, c, d, e) as select * from emp",
                "ORA-01730: invalid number of column names specified"},
        BadView{"create view v as select id, id from emp", "ORA-00957: duplicate column name"},
        BadView{"create view v as select id, name id from emp",
                "ORA-00957: duplicate column name"},
        BadView{"create view v (a, a) as select id, name from emp",
                "ORA-00957: duplicate column name"},
        BadView{"create view v as select id, 1 from emp",
                "ORA-00998: must name this expression with a column alias"},
        BadView{"create view v as select id from emp where dept = :d",
                "ORA-01027: bind variables not allowed for data definition operations"},
        BadView{"create view v select id from emp", "ORA-00905: missing keyword"},
        BadView{"create view v as id from emp", "ORA-00928: missing SELECT keyword"},
        BadView{"create view v (a as select id from emp", "ORA-00907: missing right parenthesis"},
        // Not taken: FOR UPDATE, and the restriction clauses WITH READ ONLY / CHECK OPTION.
        BadView{"create view v as select id from emp for update",
                "ORA-00933: SQL command not properly ended"},
        BadView{"create view v as select id from emp with read only",
                "ORA-00933: SQL command not properly ended"},
        BadView{"create force view v as select id from emp", "ORA-00901: invalid CREATE command"},
        BadView{"create or replace view used_v as select id from used_v",
                "ORA-01731: circular view definition encountered"},
        BadView{"create view v as select id from emp;", "ORA-00911: invalid character"},
        BadView{"drop view nowhere", "ORA-00942: table or view does not exist"},
        BadView{"drop view emp", "ORA-00942: table or view does not exist"},
        BadView{"drop table used_v", "ORA-00942: table or view does not exist"},
        BadView{"drop view used_v extra", "ORA-00933: SQL command not properly ended"},
        BadView{"create table used_v (a number)",
                "ORA-00955: name is already used by an existing object"},
        BadView{"create type used_v as object (a number)",
                "ORA-00955: name is already used by an existing object"}));

TEST_F(ViewTest, QueryReadsTheRowsOfTheDefiningQuery) {
  MustExec("create view dept10 (ident, who) as select id, name from emp where dept = 10");
  EXPECT_EQ((Rows{"ADA", "CY"}), Column("select who from dept10"));
  EXPECT_EQ((Rows{"CY"}), Column("select who from dept10 where ident = 3"));
  EXPECT_EQ((Rows{"1"}), Column("select d.ident from dept10 d where d.who = 'ADA'"));
  EXPECT_EQ(Rows{}, Column("select who from dept10 where ident = 2"));
  // The view's own names, not the table's.
  EXPECT_EQ(904, ExecError("select name from dept10"));
  EXPECT_EQ("ORA-00904: \"DEPT10\".\"ID\": invalid identifier",
            ErrorOf("select dept10.id from dept10"));
  EXPECT_EQ("ORA-00904: \"X\".\"WHO\": invalid identifier", ErrorOf("select x.who from dept10 d"));
  EXPECT_EQ("ORA-00904: \"DEPT10\": invalid identifier",
            ErrorOf("select value(dept10) from dept10"));
  // A NUMBER column compared with a VARCHAR2 one reads the text as a number.
  EXPECT_EQ("ORA-01722: invalid number", ErrorOf("select who from dept10 where ident = who"));
  // `*`, `alias.*`, literals and binds.
  EXPECT_EQ((Rows{"1", "3"}), Column("select * from dept10"));
  EXPECT_EQ((Rows{"3"}), Column("select d.* from dept10 d where who = 'CY'"));
  EXPECT_EQ((Rows{"7", "7"}), Column("select 7 seven, who from dept10"));
  OCIStmt* stmt = Prepare("select who from dept10 where ident = :id");
  int id = 3;
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &bind, err_, Text(":id"), 3, &id, sizeof id,
                                       SQLT_INT, nullptr, nullptr, nullptr, 0, nullptr,
                                       OCI_DEFAULT));
  char who[11] = {0};
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, who, sizeof who, SQLT_STR, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_STREQ("CY", who);
}

TEST_F(ViewTest, QueriesTakeColumnAliases) {
  EXPECT_EQ((Rows{"ADA"}), Column("select name as who, id n from emp where id = 1"));
  EXPECT_EQ("ORA-00923: FROM keyword not found where expected",
            ErrorOf("select name who extra from emp"));
}

TEST_F(ViewTest, ViewSeesWhatTheSessionSeesOfItsTable) {
  MustExec("create view names as select name from emp");
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "insert into emp values (4, 'DI', 30, null)"));
  EXPECT_EQ((Rows{"ADA", "BOB", "CY"}), Column("select name from names"));
  EXPECT_EQ((Rows{"ADA", "BOB", "CY", "DI"}), Column("select name from names", other));
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "commit"));
  EXPECT_EQ((Rows{"ADA", "BOB", "CY", "DI"}), Column("select name from names"));
}

TEST_F(ViewTest, InsertUpdateAndDeleteThroughAView) {
  MustExec("create view ids as select id from emp");
  MustExec("create view staff (ident, who, unit) as select id, name, dept from emp "
           "where dept = 10");
  MustExec("insert into staff values (5, 'EVE', 10)");
  MustExec("insert into staff (who, ident) values ('FAY', 6)");
  // Without a check option a row the view does not show goes in all the same.
  MustExec("insert into staff values (7, 'GUS', 99)");
  EXPECT_EQ((Rows{"ADA", "CY", "EVE"}), Column("select who from staff"));
  EXPECT_EQ((Rows{"ADA", "BOB", "CY", "EVE", "FAY", "GUS"}), Column("select name from emp"));
  // Columns the view leaves out are NULL in its new rows; a NOT NULL one is refused under
  // the table's name.
  EXPECT_EQ((Rows{"<null>"}), Column("select note from emp where id = 5"));
  EXPECT_EQ((Rows{"<null>"}), Column("select dept from emp where id = 6"));
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"EMP\".\"NAME\")",
            ErrorOf("insert into ids values (8)"));
  // UPDATE and DELETE change only the rows the view shows.
  EXPECT_EQ(3u, Changed("update staff set unit = 10, who = 'X' where unit = 10"));
  EXPECT_EQ((Rows{"X", "BOB", "X", "X", "FAY", "GUS"}), Column("select name from emp"));
  EXPECT_EQ(1u, Changed("update staff s set s.who = 'ZED' where s.ident = 3"));
  EXPECT_EQ(0u, Changed("update staff set who = 'NO' where ident = 2"));
  EXPECT_EQ(0u, Changed("delete from staff where ident = 7"));
  EXPECT_EQ(3u, Changed("delete staff"));
  EXPECT_EQ((Rows{"BOB", "FAY", "GUS"}), Column("select name from emp"));
  EXPECT_EQ("ORA-00904: \"NAME\": invalid identifier", ErrorOf("update staff set name = 'A'"));
  EXPECT_EQ("ORA-00957: duplicate column name",
            ErrorOf("insert into staff (who, who) values ('A', 'B')"));
  EXPECT_EQ("ORA-00947: not enough values", ErrorOf("insert into staff values (8, 'A')"));
  // The table's key (the first system-named constraint of this database).
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.SYS_C007131) violated",
            ErrorOf("insert into staff values (2, 'DUP', 10)"));
  MustExec("rollback");
  EXPECT_EQ((Rows{"ADA", "BOB", "CY"}), Column("select name from emp"));
}

TEST_F(ViewTest, ReturningThroughAView) {
  MustExec("create view staff (ident, who) as select id, name from emp where dept = 10");
  OCIStmt* stmt = Prepare("update staff set who = 'NEW' where ident = 3 returning who into :w");
  char who[11] = {0};
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &bind, err_, Text(":w"), 2, who, sizeof who,
                                       SQLT_STR, nullptr, nullptr, nullptr, 0, nullptr,
                                       OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_STREQ("NEW", who);
  // The view's names, not the table's.
  stmt = Prepare("delete from staff returning name into :w");
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &bind, err_, Text(":w"), 2, who, sizeof who,
                                       SQLT_STR, nullptr, nullptr, nullptr, 0, nullptr,
                                       OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ("ORA-00904: \"NAME\": invalid identifier", FirstError(err_));
}

TEST_F(ViewTest, ColumnsThatReadNoTableColumnCannotBeChanged) {
  MustExec("create view tagged as select id, name, 'T' tag from emp");
  EXPECT_EQ("ORA-01733: virtual column not allowed here",
            ErrorOf("insert into tagged values (9, 'N', 'T')"));
  EXPECT_EQ("ORA-01733: virtual column not allowed here",
            ErrorOf("insert into tagged (id, tag) values (9, 'T')"));
  EXPECT_EQ("ORA-01733: virtual column not allowed here",
            ErrorOf("update tagged set tag = 'U'"));
  // The other columns can, and rows can be deleted.
  MustExec("insert into tagged (id, name) values (9, 'NINE')");
  EXPECT_EQ((Rows{"T"}), Column("select tag from tagged where id = 9"));
  EXPECT_EQ(1u, Changed("update tagged set name = 'N9' where tag = 'T' and id = 9"));
  EXPECT_EQ(1u, Changed("delete from tagged where id = 9"));
  EXPECT_EQ(0u, Changed("delete from tagged where tag = 'U'"));
}

TEST_F(ViewTest, ViewOverAView) {
  MustExec("create view dept10 as select id, name, note from emp where dept = 10");
  MustExec("create view noted (who, what) as select name, note from dept10 where note = 'third'");
  EXPECT_EQ((Rows{"CY"}), Column("select who from noted"));
  EXPECT_EQ(1u, Changed("update noted set what = 'changed'"));
  EXPECT_EQ(Rows{}, Column("select who from noted"));
  EXPECT_EQ((Rows{"first", "changed"}), Column("select note from dept10"));
}

// ADDR_T as the object type translator lays it out.
struct Addr {
  OCIString* street;
  OCINumber zip;
};
struct AddrInd {
  OCIInd atomic;
  OCIInd street;
  OCIInd zip;
};

TEST_F(ViewTest, ViewOverAnObjectTable) {
  MustExec("create type addr_t as object (street varchar2(30), zip number(5))");
  MustExec("create table homes of addr_t (zip primary key)");
  MustExec("insert into homes values ('Elm St', 12345)");
  MustExec("insert into homes values (addr_t('Oak Ave', 54321))");
  MustExec("create view home_v as select h.zip code, h.street, value(h) home from homes h "
           "where h.street = 'Oak Ave'");
  EXPECT_EQ((Rows{"54321"}), Column("select code from home_v"));
  EXPECT_EQ((Rows{"Oak Ave"}), Column("select street from home_v where code = 54321"));
  // The row object, fetched as an instance of the table's type.
  OCIStmt* stmt = Prepare("select home from home_v");
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  Addr* home = nullptr;
  AddrInd* ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineObject(def, err_, TypeByName("ADDR_T"),
                                         reinterpret_cast<void**>(&home), nullptr,
                                         reinterpret_cast<void**>(&ind), nullptr));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  ASSERT_NE(nullptr, home);
  EXPECT_EQ(OCI_IND_NOTNULL, ind->atomic);
  EXPECT_EQ("Oak Ave", std::string(reinterpret_cast<const char*>(OCIStringPtr(env_, home->street)),
                                   OCIStringSize(env_, home->street)));
  sb4 zip = 0;
  ASSERT_EQ(OCI_SUCCESS, OCINumberToInt(err_, &home->zip, sizeof zip, OCI_NUMBER_SIGNED, &zip));
  EXPECT_EQ(54321, zip);
  // The row object is compared as an object column is, and cannot be changed.
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected - got SCOTT.ADDR_T",
            ErrorOf("select code from home_v where home = 1"));
  EXPECT_EQ("ORA-01733: virtual column not allowed here",
            ErrorOf("update home_v set home = null"));
  // The attributes are the table's columns.
  MustExec("insert into home_v (street, code) values ('Oak Ave', 11111)");
  EXPECT_EQ((Rows{"54321", "11111"}), Column("select code from home_v"));
  EXPECT_EQ(2u, Changed("update home_v set street = 'Ash Rd'"));
  EXPECT_EQ((Rows{"Elm St", "Ash Rd", "Ash Rd"}), Column("select street from homes"));
}

TEST_F(ViewTest, ViewDdlCommitsTheOpenTransaction) {
  MustExec("insert into emp values (4, 'DI', 30, null)");
  MustExec("create view v as select id from emp");
  MustExec("insert into emp values (5, 'ED', 30, null)");
  MustExec("drop view v");
  MustExec("rollback");
  EXPECT_EQ((Rows{"ADA", "BOB", "CY", "DI", "ED"}), Column("select name from emp"));
}

TEST_F(ViewTest, SelectForUpdateThroughAViewLocksTheTableRows) {
  MustExec("create view dept20 as select id from emp where dept = 20");
  EXPECT_EQ((Rows{"2"}), Column("select id from dept20 for update"));
  OCISvcCtx* other = OtherSession();
  EXPECT_EQ(OCI_ERROR, ExecOn(other, "update emp set note = 'x' where id = 2"));
  EXPECT_EQ(54, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, ExecOn(other, "update emp set note = 'x' where id = 1"));
}

TEST_F(ViewTest, OrReplaceChangesTheColumns) {
  MustExec("create view v as select id, name from emp where dept = 20");
  MustExec("create view w as select * from v");
  EXPECT_EQ((Rows{"2"}), Column("select id from w"));
  MustExec("create or replace view v (name, id) as select note, name from emp where dept = 10");
  EXPECT_EQ((Rows{"first", "third"}), Column("select name from v"));
  EXPECT_EQ((Rows{"ADA", "CY"}), Column("select id from v"));
  // W keeps the column names it was made with and reads the new V.
  EXPECT_EQ((Rows{"first", "third"}), Column("select name from w"));
  EXPECT_EQ((Rows{"ADA", "CY"}), Column("select id from w"));
  // A replacement W cannot give does not break V's statement.
  EXPECT_EQ("ORA-01731: circular view definition encountered",
            ErrorOf("create or replace view v as select * from w"));
  EXPECT_EQ((Rows{"ADA", "CY"}), Column("select id from w"));
}

TEST_F(ViewTest, DroppedTableLeavesTheViewInvalid) {
  MustExec("create view v as select * from emp where dept = 10");
  MustExec("create view w as select name from v");
  MustExec("drop table emp");
  // decision VW2: a statement on W, which reads the invalid V, names W.
  struct Use {
    const char* sql;
    const char* error;
  };
  const Use uses[] = {
      {"select * from v", "ORA-04063: view \"SCOTT.V\" has errors"},
      {"insert into v (id) values (1)", "ORA-04063: view \"SCOTT.V\" has errors"},
      {"delete from v", "ORA-04063: view \"SCOTT.V\" has errors"},
      {"select name from w", "ORA-04063: view \"SCOTT.W\" has errors"},
      {"update w set name = 'A'", "ORA-04063: view \"SCOTT.W\" has errors"},
  };
  for (const Use& use : uses) EXPECT_EQ(use.error, ErrorOf(use.sql)) << use.sql;
  // A table of the name again: the views compile on their next use; `*` stands for the
  // columns the view was made with.
  MustExec("create table emp (name varchar2(5), note char(2), dept number, id number, "
           "extra number)");
  MustExec("insert into emp values ('NEW', 'n', 10, 7, 1)");
  EXPECT_EQ((Rows{"NEW"}), Column("select name from w"));
  EXPECT_EQ((Rows{"7"}), Column("select * from v"));
  EXPECT_EQ(904, ExecError("select extra from v"));
  // A table that lacks a column the view reads leaves it invalid.
  MustExec("drop table emp");
  MustExec("create table emp (id number, dept number)");
  EXPECT_EQ("ORA-04063: view \"SCOTT.W\" has errors", ErrorOf("select name from w"));
}

TEST_F(ViewTest, DropView) {
  MustExec("create view v as select id from emp");
  MustExec("create view w as select id from v");
  MustExec("drop view v");
  EXPECT_EQ("ORA-00942: table or view does not exist", ErrorOf("select id from v"));
  EXPECT_EQ("ORA-04063: view \"SCOTT.W\" has errors", ErrorOf("select id from w"));
  MustExec("create view v as select id from emp where id = 2");
  EXPECT_EQ((Rows{"2"}), Column("select id from w"));
  MustExec("drop view w cascade constraints");
  EXPECT_EQ((Rows{"1", "2", "3"}), Column("select id from emp"));
}

TEST_F(ViewTest, ViewOfAnotherSchemaReadsItsOwnersTables) {
  MustExec("create table scott2_t (a number)");
  MustExec("create view other.v as select dummy from dual");
  EXPECT_EQ((Rows{"X"}), Column("select dummy from other.v"));
  EXPECT_EQ("ORA-00942: table or view does not exist",
            ErrorOf("create view other.w as select a from scott2_t"));
  MustExec("create view other.w as select a from scott.scott2_t");
  EXPECT_EQ(1031, ExecError("delete from other.v"));
}

}  // namespace
}  // namespace ocimem_test
