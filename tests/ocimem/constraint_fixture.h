// Helpers for the tests of constraints and defaults: the error text of a statement that
// must fail, the row count of one that must succeed.
#ifndef TESTS_OCIMEM_CONSTRAINT_FIXTURE_H
#define TESTS_OCIMEM_CONSTRAINT_FIXTURE_H

#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {

using Rows = std::vector<std::string>;

class ConstraintFixture : public SqlTest {
 protected:
  // "ORA-nnnnn: text" of a statement that must fail.
  std::string ErrorOf(const std::string& sql, OCISvcCtx* svc = nullptr) {
    OCIStmt* stmt = Prepare(sql);
    EXPECT_EQ(OCI_ERROR, Execute(stmt, 1, svc)) << sql;
    return FirstError(err_);
  }

  // Rows changed by one DML statement, which must succeed.
  ub4 Changed(const std::string& sql, OCISvcCtx* svc = nullptr) {
    OCIStmt* stmt = Prepare(sql);
    EXPECT_EQ(OCI_SUCCESS, Execute(stmt, 1, svc)) << sql << ": " << FirstError(err_);
    ub4 count = 0;
    EXPECT_EQ(OCI_SUCCESS,
              OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT, err_));
    return count;
  }
};

}  // namespace ocimem_test

#endif  // TESTS_OCIMEM_CONSTRAINT_FIXTURE_H
