// A small table of employees for the tests of expressions, conditions, queries and DML,
// and helpers that read every column of a query as text.
#ifndef TESTS_OCIMEM_SQL_EXPR_FIXTURE_H
#define TESTS_OCIMEM_SQL_EXPR_FIXTURE_H

#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {

using Rows = std::vector<std::string>;

class ExprTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table emp (id number(4) primary key, name varchar2(10), dept number(2), "
             "sal number(7,2), hired date, code char(4))");
    MustExec("insert into emp values (1, 'ADA', 10, 1000, '01-JAN-20', 'A')");
    MustExec("insert into emp values (2, 'BOB', 20, 1500.5, '15-MAR-21', 'BB')");
    MustExec("insert into emp values (3, 'CY', 10, null, '31-DEC-19', null)");
    MustExec("insert into emp values (4, 'DAN', null, 2000, null, 'A')");
    MustExec("commit");
  }

  // The one value of a query on DUAL.
  std::string Eval(const std::string& expr) {
    Rows rows = Column("select " + expr + " from dual");
    EXPECT_EQ(1u, rows.size()) << expr;
    return rows.empty() ? std::string() : rows[0];
  }

  // The text of the error of a statement that must fail.
  std::string ErrorOf(const std::string& sql) {
    EXPECT_EQ(OCI_ERROR, Exec(sql)) << sql;
    return FirstError(err_);
  }

  // The text of the error of a query that fails while its rows are fetched or executed.
  std::string QueryError(const std::string& sql) {
    OCIStmt* stmt = Prepare(sql);
    char buf[4001];
    sb2 ind = 0;
    OCIDefine* def = nullptr;
    OCIDefineByPos(stmt, &def, err_, 1, buf, sizeof buf, SQLT_STR, &ind, nullptr, nullptr,
                   OCI_DEFAULT);
    sword rc = Execute(stmt, 0);
    while (rc == OCI_SUCCESS) rc = OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT);
    EXPECT_EQ(OCI_ERROR, rc) << sql;
    return rc == OCI_ERROR ? FirstError(err_) : std::string();
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

}  // namespace ocimem_test

#endif  // TESTS_OCIMEM_SQL_EXPR_FIXTURE_H
