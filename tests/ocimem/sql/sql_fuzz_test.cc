// Statement texts put together at random from SQL words, names, literals and punctuation
// (fixed seed): every one either runs or fails with an ORA- error, none crashes.
#include <random>
#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class SqlFuzzTest : public SqlTest {};

TEST_F(SqlFuzzTest, RandomStatementsRunOrFailWithAnError) {
  MustExec("CREATE TYPE A_T AS OBJECT (N NUMBER, S VARCHAR2(5))");
  MustExec("CREATE TYPE A_TAB AS TABLE OF A_T");
  MustExec("CREATE TABLE T (ID NUMBER PRIMARY KEY, A A_T, L A_TAB, C CLOB) "
           "NESTED TABLE L STORE AS T_L");
  MustExec("CREATE TABLE O OF A_T");
  const std::vector<std::string> words = {
      "SELECT", "INSERT", "INTO", "VALUES", "UPDATE", "SET", "DELETE", "FROM", "WHERE",
      "AND", "CREATE", "TABLE", "TYPE", "AS", "OBJECT", "OF", "DROP", "FOR", "UPDATE",
      "VALUE", "NULL", "NUMBER", "VARCHAR2", "CLOB", "EMPTY_CLOB", "PRIMARY", "KEY",
      "NESTED", "STORE", "VARRAY", "REF", "COMMIT", "ROLLBACK", "DUAL", "T", "O", "A_T",
      "A_TAB", "ID", "A", "L", "C", "N", "S", "X", "(", ")", ",", ".", "=", "*", ";", ":1",
      ":B", "1", "2.5", "-3", "'x'", "''", "'unterminated", "\"Q\"", "\"", "--", "/*",
      "1e400", "99999999999999999999999999999999999999999", "DATE", "TIMESTAMP", "(((", ")))"};
  std::mt19937 random(20261122);
  int failed = 0;
  for (int i = 0; i < 20000; ++i) {
    std::string sql;
    int n = 1 + static_cast<int>(random() % 14);
    for (int k = 0; k < n; ++k) {
      sql += words[random() % words.size()];
      sql += ' ';
    }
    OCIStmt* stmt = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT,
                                          0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt, err_, Text(sql.c_str()),
                                          static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX,
                                          OCI_DEFAULT));
    int value = 1;
    OCIBind* b = nullptr;
    OCIBindByPos(stmt, &b, err_, 1, &value, sizeof value, SQLT_INT, nullptr, nullptr, nullptr,
                 0, nullptr, OCI_DEFAULT);
    char out[64];
    sb2 ind = 0;
    OCIDefine* d = nullptr;
    OCIDefineByPos(stmt, &d, err_, 1, out, sizeof out, SQLT_STR, &ind, nullptr, nullptr,
                   OCI_DEFAULT);
    sword rc = OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT);
    if (rc == OCI_ERROR) {
      ++failed;
      EXPECT_NE(0, FirstCode(err_)) << sql;
    } else {
      EXPECT_TRUE(rc == OCI_SUCCESS || rc == OCI_NO_DATA || rc == OCI_SUCCESS_WITH_INFO)
          << rc << " " << sql;
    }
    EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
  }
  EXPECT_GT(failed, 0);
}

}  // namespace
}  // namespace ocimem_test
