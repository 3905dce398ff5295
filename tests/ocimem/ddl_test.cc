// Type DDL through OCIStmtPrepare/OCIStmtExecute.
#include <gtest/gtest.h>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

using DdlTest = OciTest;

struct Accepted {
  const char* sql;
  const char* type_name;  // as stored
};

const Accepted kAccepted[] = {
    {"create type a1 as object (v varchar2(10))", "A1"},
    {"CREATE TYPE a2 IS OBJECT (v VARCHAR2(10 BYTE), w VARCHAR2(5 CHAR), c CHAR, d CHAR(3))",
     "A2"},
    {"create type a3 as object (n number, p number(5), s number(10,2), t number(*,0), "
     "u number(3,-2), i integer, j int, k smallint, f float, g float(63), h real, "
     "x double precision, y decimal(9,2), z numeric)",
     "A3"},
    {"create type a4 as object (d date, t timestamp, t3 timestamp(3), tz timestamp with time "
     "zone, ltz timestamp(9) with local time zone)",
     "A4"},
    {"create type a5 as object (ym interval year to month, ym4 interval year(4) to month, ds "
     "interval day to second, ds3 interval day(3) to second(0))",
     "A5"},
    {"create type a6 as object (r raw(16), c clob, b blob, f bfile, n nvarchar2(5), nc nchar, "
     "ncl nclob)",
     "A6"},
    {"create type a7 as object (a number) not final", "A7"},
    {"create type a8 as object (a number) final instantiable", "A8"},
    {"create type \"Mixed Case\" as object (\"lower\" number)", "Mixed Case"},
    {"create type a9 as table of number", "A9"},
    {"create type a10 as varray(3) of varchar2(10)", "A10"},
    {"create type a11 as varying array(5) of date", "A11"},
    {"create type a12 as table of number not null", "A12"},
    {"create type a13 as object (a number);", "A13"},  // a type definition may end in ';'
    {"create type scott.a14 as object (a number)", "A14"},
    {"create or replace type a15 force as object (a number)", "A15"},
    {"  create\n type /* comment */ a16 -- line\n as object (a number)", "A16"},
    {"create type a17 as object (next ref a17)", "A17"},  // a REF to itself
};

TEST_F(DdlTest, AcceptedTypeDefinitions) {
  for (const Accepted& c : kAccepted) {
    EXPECT_EQ(OCI_SUCCESS, Exec(c.sql)) << c.sql << ": " << FirstError(err_);
    OCIType* tdo = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCITypeByName(env_, err_, svc_, nullptr, 0, Text(c.type_name),
                                         Len(c.type_name), nullptr, 0, OCI_DURATION_DEFAULT,
                                         OCI_TYPEGET_ALL, &tdo))
        << c.sql << ": " << FirstError(err_);
  }
}

TEST_F(DdlTest, NamedAttributeAndElementTypes) {
  MustExec("create type addr_t as object (street varchar2(30), zip number(5))");
  MustExec("create type addr_list as table of addr_t");
  MustExec("create type num_tab as table of number");
  MustExec("create type matrix as table of num_tab");
  MustExec("create type person_t as object (name varchar2(30), home addr_t, others addr_list, "
           "boss ref addr_t, nums scott.num_tab)");
  MustExec("create type \"quoted\" as object (a number)");
  MustExec("create type uses_quoted as object (q \"quoted\")");
}

struct Refused {
  const char* sql;
  const char* error;
};

const Refused kRefused[] = {
    {"foo bar", "ORA-00900: invalid SQL statement"},
    {"create type body t as member function f return number", "ORA-00900: invalid SQL statement"},
    {"create widget w", "ORA-00901: invalid CREATE command"},
    {"drop widget w", "ORA-00950: invalid DROP option"},
    {"create or type t as object (a number)", "ORA-00922: missing or invalid option"},
    {"create type t object (a number)", "ORA-00905: missing keyword"},
    {"create type t as thing (a number)", "ORA-00905: missing keyword"},
    {"create type t as object a number", "ORA-00906: missing left parenthesis"},
    {"create type t as object (a number", "ORA-00907: missing right parenthesis"},
    {"create type t as object (a number b date)", "ORA-00907: missing right parenthesis"},
    {"create type t as object ()", "ORA-00904: : invalid identifier"},
    {"create type t as object (a 5)", "ORA-00902: invalid datatype"},
    {"create type t as object (a long)", "ORA-00902: invalid datatype"},
    {"create type t as object (a varchar2)", "ORA-00906: missing left parenthesis"},
    {"create type t as object (a varchar2(4001))",
     "ORA-00910: specified length too long for its datatype"},
    {"create type t as object (a varchar2(0))", "ORA-01723: zero-length columns are not allowed"},
    {"create type t as object (a char(2001))",
     "ORA-00910: specified length too long for its datatype"},
    {"create type t as object (a raw(2001))",
     "ORA-00910: specified length too long for its datatype"},
    {"create type t as object (a number(39))",
     "ORA-01727: numeric precision specifier is out of range (1 to 38)"},
    {"create type t as object (a number(0))",
     "ORA-01727: numeric precision specifier is out of range (1 to 38)"},
    {"create type t as object (a number(5,128))",
     "ORA-01728: numeric scale specifier is out of range (-84 to 127)"},
    {"create type t as object (a number(5,-85))",
     "ORA-01728: numeric scale specifier is out of range (-84 to 127)"},
    {"create type t as object (a float(127))",
     "ORA-01724: floating point precision is out of range (1 to 126)"},
    {"create type t as object (a timestamp(10))",
     "ORA-30088: datetime/interval precision is out of range"},
    {"create type t as object (a interval day(10) to second)",
     "ORA-30088: datetime/interval precision is out of range"},
    {"create type t as object (a interval month)", "ORA-00905: missing keyword"},
    {"create type t as object (a timestamp with zone)", "ORA-00905: missing keyword"},
    {"create type t as object (a no_such_t)", "ORA-22303: type \"SCOTT\".\"NO_SUCH_T\" not found"},
    {"create type t as object (a other.no_such_t)",
     "ORA-22303: type \"OTHER\".\"NO_SUCH_T\" not found"},
    {"create type t as object (a ref no_such_t)",
     "ORA-22303: type \"SCOTT\".\"NO_SUCH_T\" not found"},
    {"create type t as object (self t)", "ORA-22303: type \"SCOTT\".\"T\" not found"},
    {"create type t as table of no_such_t", "ORA-22303: type \"SCOTT\".\"NO_SUCH_T\" not found"},
    {"create type t as object (a number, a date)", "ORA-00957: duplicate column name"},
    {"create type t as varray(0) of number", "ORA-02017: integer value required"},
    {"create type t as varray(x) of number", "ORA-02017: integer value required"},
    {"create type t as varray 3 of number", "ORA-00906: missing left parenthesis"},
    {"create type t as table number", "ORA-00905: missing keyword"},
    {"create type t as object (a number) extra", "ORA-00922: missing or invalid option"},
    {"drop type t extra", "ORA-00933: SQL command not properly ended"},
    {"drop type no_such_t;", "ORA-00911: invalid character"},
    {"create type t as object (a number) # x", "ORA-00911: invalid character"},
    {"create type \"unterminated as object (a number)",
     "ORA-01740: missing double quote in identifier"},
    {"create type \"\" as object (a number)", "ORA-01741: illegal zero-length identifier"},
    {"create type a23456789012345678901234567890123456789012345678901234567890123456789012345678"
     "9012345678901234567890123456789012345678901234567890 as object (a number)",
     "ORA-00972: identifier is too long"},
    {"create type t as object (a varchar2('x'))",
     "ORA-00910: specified length too long for its datatype"},
    {"create type t as object (a number) 'text", "ORA-01756: quoted string not properly terminated"},
};

TEST_F(DdlTest, RefusedStatements) {
  for (const Refused& c : kRefused) {
    EXPECT_EQ(OCI_ERROR, Exec(c.sql)) << c.sql;
    EXPECT_EQ(c.error, FirstError(err_)) << c.sql;
  }
  // None of them left a type behind.
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_ERROR, OCITypeByName(env_, err_, svc_, nullptr, 0, Text("T"), 1, nullptr, 0,
                                     OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo));
}

TEST_F(DdlTest, NameAlreadyUsed) {
  MustExec("create type dup_t as object (a number)");
  EXPECT_EQ(OCI_ERROR, Exec("create type DUP_T as table of number"));
  EXPECT_EQ("ORA-00955: name is already used by an existing object", FirstError(err_));
  // A quoted lower-case name is another name.
  MustExec("create type \"dup_t\" as object (a number)");
}

TEST_F(DdlTest, OrReplaceReplacesAType) {
  MustExec("create type rep_t as object (a number)");
  OCIType* before = TypeByName("REP_T");
  MustExec("create or replace type rep_t as object (a number, b date)");
  OCIType* after = TypeByName("REP_T");
  EXPECT_NE(before, after);
  // The TDO handed out before stays usable.
  void* obj = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, before, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &obj));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_DEFAULT));
}

TEST_F(DdlTest, TypesWithDependentsCannotBeReplacedOrDropped) {
  MustExec("create type inner_t as object (a number)");
  MustExec("create type outer_t as object (i inner_t)");
  MustExec("create type ref_t as object (r ref inner_t)");
  EXPECT_EQ(OCI_ERROR, Exec("create or replace type inner_t as object (a date)"));
  EXPECT_EQ("ORA-02303: cannot drop or replace a type with type or table dependents",
            FirstError(err_));
  EXPECT_EQ(OCI_ERROR, Exec("drop type inner_t"));
  EXPECT_EQ(2303, FirstCode(err_));
  MustExec("create or replace type inner_t force as object (a date)");
  MustExec("drop type inner_t force");
  EXPECT_EQ(OCI_ERROR, Exec("drop type inner_t"));
  EXPECT_EQ("ORA-04043: object INNER_T does not exist", FirstError(err_));
}

TEST_F(DdlTest, DropType) {
  MustExec("create type drop_t as table of number");
  MustExec("drop type drop_t");
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_ERROR, OCITypeByName(env_, err_, svc_, nullptr, 0, Text("DROP_T"), 6, nullptr, 0,
                                     OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo));
  MustExec("create type drop_t as object (a number)");
  MustExec("drop type scott.drop_t validate");
  EXPECT_EQ(OCI_ERROR, Exec("drop type other.drop_t"));
  EXPECT_EQ("ORA-04043: object OTHER.DROP_T does not exist", FirstError(err_));
}

TEST_F(DdlTest, PrepareKeepsTextAndClassifiesIt) {
  struct Case {
    const char* sql;
    ub2 type;
  };
  const Case cases[] = {
      {"select 1 from dual", OCI_STMT_SELECT}, {"  WITH x as (select 1 from dual) select", 1},
      {"insert into t values (1)", OCI_STMT_INSERT}, {"update t set a = 1", OCI_STMT_UPDATE},
      {"delete from t", OCI_STMT_DELETE}, {"create type t as object (a number)", OCI_STMT_CREATE},
      {"drop type t", OCI_STMT_DROP}, {"alter session set x = 1", OCI_STMT_ALTER},
      {"begin null; end;", OCI_STMT_BEGIN}, {"declare x number; begin null; end;", 9},
      {"commit", OCI_STMT_COMMIT}, {"rollback", OCI_STMT_ROLLBACK}, {"frobnicate", 0},
  };
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0,
                                        nullptr));
  for (const Case& c : cases) {
    ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt, err_, Text(c.sql), Len(c.sql), OCI_NTV_SYNTAX,
                                          OCI_DEFAULT));
    ub2 type = 99;
    EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(stmt, OCI_HTYPE_STMT, &type, nullptr, OCI_ATTR_STMT_TYPE,
                                      err_));
    EXPECT_EQ(c.type, type) << c.sql;
  }
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
}

TEST_F(DdlTest, StatementAttributesBeforePrepare) {
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0,
                                        nullptr));
  ub2 type = 99;
  ub4 rows = 99;
  ub4 size = 0;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(stmt, OCI_HTYPE_STMT, &type, &size, OCI_ATTR_STMT_TYPE, err_));
  EXPECT_EQ(OCI_STMT_UNKNOWN, type);
  EXPECT_EQ(sizeof(ub2), size);
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(stmt, OCI_HTYPE_STMT, &rows, &size, OCI_ATTR_ROW_COUNT, err_));
  EXPECT_EQ(0u, rows);
  EXPECT_EQ(sizeof(ub4), size);
  EXPECT_EQ(OCI_ERROR, OCIAttrGet(stmt, OCI_HTYPE_STMT, &rows, &size, OCI_ATTR_USERNAME, err_));
  EXPECT_EQ(24315, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
}

TEST_F(DdlTest, PrepareAndExecuteErrors) {
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0,
                                        nullptr));
  EXPECT_EQ(OCI_ERROR, OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ("ORA-24337: statement handle not prepared", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCIStmtPrepare(stmt, err_, Text(""), 0, OCI_NTV_SYNTAX, OCI_DEFAULT));
  EXPECT_EQ("ORA-24373: invalid length specified for statement", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCIStmtPrepare(stmt, err_, nullptr, 5, OCI_NTV_SYNTAX, OCI_DEFAULT));
  EXPECT_EQ(21560, FirstCode(err_));
  const char* sql = "create type z_t as object (a number)";
  // A text that is not SQL passes prepare; execute finds the error.
  EXPECT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt, err_, Text("nonsense"), 8, OCI_NTV_SYNTAX, 0));
  EXPECT_EQ(OCI_ERROR, OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(900, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX, 0));
  EXPECT_EQ(OCI_ERROR, OCIStmtExecute(svc_, stmt, err_, 0, 0, nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ("ORA-24333: zero iteration count", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT));
  ub4 rows = 99;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(stmt, OCI_HTYPE_STMT, &rows, nullptr, OCI_ATTR_ROW_COUNT,
                                    err_));
  EXPECT_EQ(0u, rows);
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIStmtExecute(nullptr, stmt, err_, 1, 0, nullptr, nullptr, 0));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIStmtExecute(svc_, reinterpret_cast<OCIStmt*>(err_), err_, 1, 0, nullptr, nullptr, 0));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIStmtExecute(svc_, stmt, nullptr, 1, 0, nullptr, nullptr, 0));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIStmtPrepare(nullptr, err_, Text(sql), Len(sql), 1, 0));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
}

}  // namespace
}  // namespace ocimem_test
