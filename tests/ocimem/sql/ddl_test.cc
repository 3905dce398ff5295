// Type DDL through OCIStmtPrepare/OCIStmtExecute.
#include <gtest/gtest.h>

#include <string>

#include "describe_fixture.h"

namespace ocimem_test {
namespace {

class DdlTest : public DescribeFixture {
 protected:
  // Every attribute of a type as describe reports it, one "NAME typecode size precision
  // scale" line each, or the element of a collection type as "ELEMENT ...".
  std::string Shape(const char* type_name) {
    OCIParam* top = Describe(type_name, OCI_PTYPE_TYPE);
    std::string shape;
    auto line = [&](const std::string& name, OCIParam* p) {
      shape += name + " " + std::to_string(Attr<OCITypeCode>(p, OCI_ATTR_TYPECODE)) + " " +
               std::to_string(Attr<ub2>(p, OCI_ATTR_DATA_SIZE)) + " " +
               std::to_string(Attr<ub1>(p, OCI_ATTR_PRECISION)) + " " +
               std::to_string(Attr<sb1>(p, OCI_ATTR_SCALE)) + "\n";
    };
    if (Attr<OCITypeCode>(top, OCI_ATTR_TYPECODE) == OCI_TYPECODE_NAMEDCOLLECTION) {
      OCIParam* elem = Attr<OCIParam*>(top, OCI_ATTR_COLLECTION_ELEMENT);
      line("ELEMENT", elem);
      return shape;
    }
    OCIParam* list = Attr<OCIParam*>(top, OCI_ATTR_LIST_TYPE_ATTRS);
    const ub2 count = Attr<ub2>(top, OCI_ATTR_NUM_TYPE_ATTRS);
    for (ub4 i = 1; i <= count; ++i) {
      OCIParam* a = Item(list, i);
      line(TextAttr(a, OCI_ATTR_NAME), a);
    }
    return shape;
  }
};

struct Accepted {
  const char* sql;
  const char* type_name;  // as stored
  const char* shape;      // what describe reports of it (see DdlTest::Shape)
};

// The shapes follow what the describe sheet says Oracle reports; its UNCONFIRMED rows (the
// typecodes of INTEGER, SMALLINT, FLOAT, REAL, DOUBLE PRECISION and DECIMAL, the sizes of
// DATE, datetime, interval and LOB attributes, the precisions of datetimes and intervals)
// are pinned here as the in-memory OCI reads them.
const Accepted kAccepted[] = {
    {"create type a1 as object (v varchar2(10))", "A1",
     "V 9 10 0 0\n"},
    {"CREATE TYPE a2 IS OBJECT (v VARCHAR2(10 BYTE), w VARCHAR2(5 CHAR), c CHAR, d CHAR(3))",
     "A2",
     "V 9 10 0 0\n"
     "W 9 20 0 0\n"
     "C 96 1 0 0\n"
     "D 96 3 0 0\n"},
    {"create type a3 as object (n number, p number(5), s number(10,2), t number(*,0), "
     "u number(3,-2), i integer, j int, k smallint, f float, g float(63), h real, "
     "x double precision, y decimal(9,2), z numeric)",
     "A3",
     "N 2 22 0 -127\n"
     "P 2 22 5 0\n"
     "S 2 22 10 2\n"
     "T 2 22 38 0\n"
     "U 2 22 3 -2\n"
     "I 3 22 38 0\n"
     "J 3 22 38 0\n"
     "K 246 22 38 0\n"
     "F 4 22 126 -127\n"
     "G 4 22 63 -127\n"
     "H 21 22 63 -127\n"
     "X 22 22 126 -127\n"
     "Y 7 22 9 2\n"
     "Z 7 22 38 0\n"},
    {"create type a4 as object (d date, t timestamp, t3 timestamp(3), tz timestamp with time "
     "zone, ltz timestamp(9) with local time zone)",
     "A4",
     "D 12 7 0 0\n"
     "T 187 11 0 6\n"
     "T3 187 11 0 3\n"
     "TZ 188 13 0 6\n"
     "LTZ 232 11 0 9\n"},
    {"create type a5 as object (ym interval year to month, ym4 interval year(4) to month, ds "
     "interval day to second, ds3 interval day(3) to second(0))",
     "A5",
     "YM 189 5 2 0\n"
     "YM4 189 5 4 0\n"
     "DS 190 11 2 6\n"
     "DS3 190 11 3 0\n"},
    {"create type a6 as object (r raw(16), c clob, b blob, f bfile, n nvarchar2(5), nc nchar, "
     "ncl nclob)",
     "A6",
     "R 95 16 0 0\n"
     "C 112 0 0 0\n"
     "B 113 0 0 0\n"
     "F 114 0 0 0\n"
     "N 9 10 0 0\n"
     "NC 96 2 0 0\n"
     "NCL 112 0 0 0\n"},
    {"create type a7 as object (a number) not final", "A7",
     "A 2 22 0 -127\n"},
    {"create type a8 as object (a number) final instantiable", "A8",
     "A 2 22 0 -127\n"},
    {"create type \"Mixed Case\" as object (\"lower\" number)", "Mixed Case",
     "lower 2 22 0 -127\n"},
    {"create type a9 as table of number", "A9",
     "ELEMENT 2 22 0 -127\n"},
    {"create type a10 as varray(3) of varchar2(10)", "A10",
     "ELEMENT 9 10 0 0\n"},
    {"create type a11 as varying array(5) of date", "A11",
     "ELEMENT 12 7 0 0\n"},
    {"create type a12 as table of number not null", "A12",
     "ELEMENT 2 22 0 -127\n"},
    {"create type a13 as object (a number);", "A13",
     "A 2 22 0 -127\n"},  // a type definition may end in ';'
    {"create type scott.a14 as object (a number)", "A14",
     "A 2 22 0 -127\n"},
    {"create or replace type a15 force as object (a number)", "A15",
     "A 2 22 0 -127\n"},
    {"  create\n type /* comment */ a16 -- line\n as object (a number)", "A16",
     "A 2 22 0 -127\n"},
    {"create type a17 as object (next ref a17)", "A17",
     "NEXT 110 0 0 0\n"},  // a REF to itself
};

TEST_F(DdlTest, AcceptedTypeDefinitions) {
  for (const Accepted& c : kAccepted) {
    EXPECT_EQ(OCI_SUCCESS, Exec(c.sql)) << c.sql << ": " << FirstError(err_);
    EXPECT_EQ(c.shape, Shape(c.type_name)) << c.sql;
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
  EXPECT_EQ(
      "NAME 9 30 0 0\n"
      "HOME 108 0 0 0\n"
      "OTHERS 122 0 0 0\n"
      "BOSS 110 0 0 0\n"
      "NUMS 122 0 0 0\n",
      Shape("PERSON_T"));
  EXPECT_EQ("ELEMENT 122 0 0 0\n", Shape("MATRIX"));
  EXPECT_EQ("ELEMENT 108 0 0 0\n", Shape("ADDR_LIST"));
  EXPECT_EQ("Q 108 0 0 0\n", Shape("USES_QUOTED"));
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
  EXPECT_EQ("A 2 22 0 -127\nB 12 7 0 0\n", Shape("REP_T"));
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
