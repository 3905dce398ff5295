// Statement helpers for the tests of tables, queries, LOBs and transactions, written with
// standard OCI calls as a host would use them.
#ifndef TESTS_OCIMEM_SQL_FIXTURE_H
#define TESTS_OCIMEM_SQL_FIXTURE_H

#include <string>
#include <vector>

#include "oci_fixture.h"

namespace ocimem_test {

// Oracle's text of ORA-01747, which several statements give for a bad column name.
inline constexpr char kBadColumnName[] =
    "ORA-01747: invalid user.table.column, table.column, or column specification";

class SqlTest : public OciTest {
 protected:
  void TearDown() override {
    for (OCIStmt* s : stmts_) OCIHandleFree(s, OCI_HTYPE_STMT);
    stmts_.clear();
    OciTest::TearDown();
  }

  // A prepared statement, freed at the end of the test.
  OCIStmt* Prepare(const std::string& sql) {
    OCIStmt* stmt = nullptr;
    EXPECT_EQ(OCI_SUCCESS,
              OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr));
    EXPECT_EQ(OCI_SUCCESS,
              OCIStmtPrepare(stmt, err_, Text(sql.c_str()), static_cast<ub4>(sql.size()),
                             OCI_NTV_SYNTAX, OCI_DEFAULT))
        << FirstError(err_);
    stmts_.push_back(stmt);
    return stmt;
  }

  sword Execute(OCIStmt* stmt, ub4 iters = 1, OCISvcCtx* svc = nullptr, ub4 mode = OCI_DEFAULT) {
    return OCIStmtExecute(svc != nullptr ? svc : svc_, stmt, err_, iters, 0, nullptr, nullptr,
                          mode);
  }

  // Runs a statement on another service context.
  sword ExecOn(OCISvcCtx* svc, const std::string& sql) {
    OCIStmt* stmt = Prepare(sql);
    return Execute(stmt, 1, svc);
  }

  // The ORA code of an execute that must fail with OCI_ERROR.
  sb4 ExecError(const std::string& sql) {
    sword rc = Exec(sql);
    EXPECT_EQ(OCI_ERROR, rc) << sql;
    return FirstCode(err_);
  }

  // Text of the first column of every row of a query (NULL as "<null>").
  std::vector<std::string> Column(const std::string& sql, OCISvcCtx* svc = nullptr) {
    OCIStmt* stmt = Prepare(sql);
    char buf[4001];
    sb2 ind = 0;
    OCIDefine* def = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, buf, sizeof buf, SQLT_STR, &ind,
                                          nullptr, nullptr, OCI_DEFAULT));
    std::vector<std::string> rows;
    sword rc = Execute(stmt, 0, svc);
    EXPECT_EQ(OCI_SUCCESS, rc) << sql << ": " << FirstError(err_);
    if (rc != OCI_SUCCESS) return rows;
    for (;;) {
      rc = OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT);
      if (rc == OCI_NO_DATA) break;
      EXPECT_EQ(OCI_SUCCESS, rc) << FirstError(err_);
      if (rc != OCI_SUCCESS) break;
      rows.push_back(ind == OCI_IND_NULL ? std::string("<null>") : std::string(buf));
    }
    return rows;
  }

  // Every row of a query of `columns` columns, the columns' text joined by '|' (NULL as
  // "<null>").
  std::vector<std::string> Fetch(const std::string& sql, size_t columns) {
    OCIStmt* stmt = Prepare(sql);
    std::vector<std::vector<char>> bufs(columns, std::vector<char>(4001));
    std::vector<sb2> inds(columns);
    for (size_t i = 0; i < columns; ++i) {
      OCIDefine* def = nullptr;
      EXPECT_EQ(OCI_SUCCESS,
                OCIDefineByPos(stmt, &def, err_, static_cast<ub4>(i + 1), bufs[i].data(), 4001,
                               SQLT_STR, &inds[i], nullptr, nullptr, OCI_DEFAULT));
    }
    std::vector<std::string> rows;
    sword rc = Execute(stmt, 0);
    EXPECT_EQ(OCI_SUCCESS, rc) << sql << ": " << FirstError(err_);
    if (rc != OCI_SUCCESS) return rows;
    for (;;) {
      rc = OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT);
      if (rc == OCI_NO_DATA) break;
      EXPECT_EQ(OCI_SUCCESS, rc) << sql << ": " << FirstError(err_);
      if (rc != OCI_SUCCESS) break;
      std::string row;
      for (size_t i = 0; i < columns; ++i) {
        if (i > 0) row += "|";
        row += inds[i] == OCI_IND_NULL ? std::string("<null>") : std::string(bufs[i].data());
      }
      rows.push_back(row);
    }
    return rows;
  }

  // A second session on the same database, logged off by the environment at the end.
  OCISvcCtx* OtherSession() {
    OCISvcCtx* svc = nullptr;
    std::string db = DatabaseName();
    EXPECT_EQ(OCI_SUCCESS, OCILogon(env_, err_, &svc, Text("scott"), 5, Text("tiger"), 5,
                                    Text(db.c_str()), Len(db.c_str())))
        << FirstError(err_);
    return svc;
  }

  std::vector<OCIStmt*> stmts_;
};

}  // namespace ocimem_test

#endif  // TESTS_OCIMEM_SQL_FIXTURE_H
