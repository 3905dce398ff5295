// Sessions of several threads inserting, locking, writing LOBs and committing rows of one
// shared table at the same time.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

constexpr int kRows = 100;

struct Session {
  OCIEnv* env = nullptr;
  OCIError* err = nullptr;
  OCISvcCtx* svc = nullptr;
  int failures = 0;

  void Check(bool ok) { failures += ok ? 0 : 1; }

  void Open(const std::string& user, const std::string& db) {
    Check(OCIEnvCreate(&env, OCI_OBJECT | OCI_THREADED, nullptr, nullptr, nullptr, nullptr, 0,
                       nullptr) == OCI_SUCCESS);
    Check(OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 0, nullptr) ==
          OCI_SUCCESS);
    Check(OCILogon(env, err, &svc, Text(user.c_str()), Len(user.c_str()), Text("pw"), 2,
                   Text(db.c_str()), Len(db.c_str())) == OCI_SUCCESS);
  }

  sword Run(const std::string& sql, int iters = 1, OCILobLocator** lob = nullptr) {
    OCIStmt* stmt = nullptr;
    Check(OCIHandleAlloc(env, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr) ==
          OCI_SUCCESS);
    Check(OCIStmtPrepare(stmt, err, Text(sql.c_str()), Len(sql.c_str()), OCI_NTV_SYNTAX,
                         OCI_DEFAULT) == OCI_SUCCESS);
    OCIDefine* def = nullptr;
    if (lob != nullptr) {
      Check(OCIDefineByPos(stmt, &def, err, 1, lob, 0, SQLT_CLOB, nullptr, nullptr, nullptr,
                           OCI_DEFAULT) == OCI_SUCCESS);
    }
    sword rc =
        OCIStmtExecute(svc, stmt, err, static_cast<ub4>(iters), 0, nullptr, nullptr, OCI_DEFAULT);
    Check(OCIHandleFree(stmt, OCI_HTYPE_STMT) == OCI_SUCCESS);
    return rc;
  }

  void Close() { Check(OCIHandleFree(env, OCI_HTYPE_ENV) == OCI_SUCCESS); }
};

void Writer(int id, const std::string& db, int* failures) {
  Session s;
  s.Open("writer" + std::to_string(id), db);
  OCILobLocator* lob = nullptr;
  s.Check(OCIDescriptorAlloc(s.env, reinterpret_cast<void**>(&lob), OCI_DTYPE_LOB, 0, nullptr) ==
          OCI_SUCCESS);
  for (int i = 0; i < kRows; ++i) {
    std::string key = std::to_string(id * 1000 + i);
    s.Check(s.Run("insert into owner.log values (" + key + ", " + std::to_string(id) +
                  ", empty_clob())") == OCI_SUCCESS);
    s.Check(s.Run("select body from owner.log where id = " + key + " for update", 1, &lob) ==
            OCI_SUCCESS);
    std::string text = "row " + key;
    ub4 amount = static_cast<ub4>(text.size());
    s.Check(OCILobWrite(s.svc, s.err, lob, &amount, 1, &text[0], amount, OCI_ONE_PIECE, nullptr,
                        nullptr, 0, SQLCS_IMPLICIT) == OCI_SUCCESS);
    s.Check(OCITransCommit(s.svc, s.err, OCI_DEFAULT) == OCI_SUCCESS);
  }
  s.Close();
  *failures = s.failures;
}

TEST(DmlThreadTest, WritersOfOneTableRunTogether) {
  const std::string db = "DmlThreadTest";
  Session owner;
  owner.Open("owner", db);
  ASSERT_EQ(OCI_SUCCESS,
            owner.Run("create table log (id number primary key, who number, body clob)"));
  std::vector<int> failures(4, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) threads.emplace_back(Writer, t + 1, db, &failures[t]);
  for (std::thread& t : threads) t.join();
  for (int f : failures) EXPECT_EQ(0, f);
  // Every row and its LOB arrived.
  OCILobLocator* lob = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(owner.env, reinterpret_cast<void**>(&lob),
                                            OCI_DTYPE_LOB, 0, nullptr));
  for (int t = 1; t <= 4; ++t) {
    for (int i = 0; i < kRows; i += 33) {
      std::string key = std::to_string(t * 1000 + i);
      ASSERT_EQ(OCI_SUCCESS, owner.Run("select body from log where id = " + key, 1, &lob)) << key;
      char buf[32];
      ub4 amount = sizeof buf;
      ASSERT_EQ(OCI_SUCCESS, OCILobRead(owner.svc, owner.err, lob, &amount, 1, buf, sizeof buf,
                                        nullptr, nullptr, 0, SQLCS_IMPLICIT));
      EXPECT_EQ("row " + key, std::string(buf, amount));
    }
  }
  EXPECT_EQ(0, owner.failures);
  owner.Close();
}

}  // namespace
}  // namespace ocimem_test
