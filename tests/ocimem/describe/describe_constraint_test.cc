// OCI_ATTR_IS_NULL of table columns under the constraints of CREATE TABLE: only NOT NULL
// and primary-key columns are described as not nullable.
#include <gtest/gtest.h>

#include "describe_fixture.h"

namespace ocimem_test {
namespace {

using DescribeConstraintTest = DescribeFixture;

TEST_F(DescribeConstraintTest, OnlyNotNullAndKeyColumnsAreNotNullable) {
  MustExec("CREATE TABLE P (ID NUMBER PRIMARY KEY)");
  MustExec(
      "CREATE TABLE T (A NUMBER, B NUMBER, C NUMBER UNIQUE, D NUMBER CHECK (D = 1), "
      "E NUMBER REFERENCES P, F NUMBER DEFAULT 1, G NUMBER CONSTRAINT G_NN NOT NULL, "
      "H NUMBER NULL, PRIMARY KEY (A, B))");
  OCIParam* columns = Attr<OCIParam*>(Describe("T", OCI_PTYPE_TABLE), OCI_ATTR_LIST_COLUMNS);
  const ub1 expected[] = {0, 0, 1, 1, 1, 1, 0, 1};
  for (ub4 i = 0; i < 8; ++i) {
    EXPECT_EQ(expected[i], Attr<ub1>(Item(columns, i + 1), OCI_ATTR_IS_NULL)) << "column " << i + 1;
  }
}

}  // namespace
}  // namespace ocimem_test
