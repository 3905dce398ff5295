// One environment per thread: separate environments run concurrently, on their own
// databases and on one shared database.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

// Each thread builds, walks and frees collections on its own environment; returns the
// number of failures.
int Worker(int id, const std::string& db, bool own_types) {
  int failures = 0;
  auto check = [&failures](bool ok) { failures += ok ? 0 : 1; };
  OCIEnv* env = nullptr;
  check(OCIEnvCreate(&env, OCI_OBJECT | OCI_THREADED, nullptr, nullptr, nullptr, nullptr, 0,
                     nullptr) == OCI_SUCCESS);
  OCIError* err = nullptr;
  check(OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 0, nullptr) ==
        OCI_SUCCESS);
  OCISvcCtx* svc = nullptr;
  std::string user = "user" + std::to_string(id);
  check(OCILogon(env, err, &svc, Text(user.c_str()), Len(user.c_str()), Text("pw"), 2,
                 Text(db.c_str()), Len(db.c_str())) == OCI_SUCCESS);
  std::string type = own_types ? "T" + std::to_string(id) : "SHARED_NT";
  if (own_types) {
    std::string sql = "create type " + type + " as table of varchar2(20)";
    OCIStmt* stmt = nullptr;
    check(OCIHandleAlloc(env, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr) ==
          OCI_SUCCESS);
    check(OCIStmtPrepare(stmt, err, Text(sql.c_str()), Len(sql.c_str()), OCI_NTV_SYNTAX,
                         OCI_DEFAULT) == OCI_SUCCESS);
    check(OCIStmtExecute(svc, stmt, err, 1, 0, nullptr, nullptr, OCI_DEFAULT) == OCI_SUCCESS);
    check(OCIHandleFree(stmt, OCI_HTYPE_STMT) == OCI_SUCCESS);
  }
  const char* schema = own_types ? nullptr : "OWNER";
  for (int round = 0; round < 200; ++round) {
    OCIType* tdo = nullptr;
    check(OCITypeByName(env, err, svc, schema != nullptr ? Text(schema) : nullptr,
                        schema != nullptr ? Len(schema) : 0, Text(type.c_str()),
                        Len(type.c_str()), nullptr, 0, OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER,
                        &tdo) == OCI_SUCCESS);
    void* coll = nullptr;
    check(OCIObjectNew(env, err, svc, OCI_TYPECODE_NAMEDCOLLECTION, tdo, nullptr,
                       OCI_DURATION_DEFAULT, TRUE, &coll) == OCI_SUCCESS);
    OCIString* s = nullptr;
    for (int i = 0; i < 5; ++i) {
      std::string text = std::to_string(id) + ":" + std::to_string(i);
      check(OCIStringAssignText(env, err, Text(text.c_str()), Len(text.c_str()), &s) ==
            OCI_SUCCESS);
      check(OCICollAppend(env, err, s, nullptr, static_cast<OCIColl*>(coll)) == OCI_SUCCESS);
    }
    OCIIter* iter = nullptr;
    check(OCIIterCreate(env, err, static_cast<OCIColl*>(coll), &iter) == OCI_SUCCESS);
    boolean eoc = FALSE;
    void* elem = nullptr;
    int seen = 0;
    while (OCIIterNext(env, err, iter, &elem, nullptr, &eoc) == OCI_SUCCESS && !eoc) {
      std::string expected = std::to_string(id) + ":" + std::to_string(seen++);
      OCIString* got = *static_cast<OCIString**>(elem);
      check(expected == std::string(reinterpret_cast<char*>(OCIStringPtr(env, got)),
                                    OCIStringSize(env, got)));
    }
    check(seen == 5);
    check(OCIStringResize(env, err, 0, &s) == OCI_SUCCESS);
    check(OCIObjectFree(env, err, coll, OCI_OBJECTFREE_FORCE) == OCI_SUCCESS);
    check(OCIObjectUnpin(env, err, tdo) == OCI_SUCCESS);
  }
  check(OCILogoff(svc, err) == OCI_SUCCESS);
  check(OCIHandleFree(env, OCI_HTYPE_ENV) == OCI_SUCCESS);
  return failures;
}

TEST(Threads, OneEnvironmentAndDatabasePerThread) {
  std::vector<std::thread> threads;
  std::atomic<int> failures{0};
  for (int id = 0; id < 4; ++id) {
    threads.emplace_back([id, &failures] {
      failures += Worker(id, "thread_db_" + std::to_string(id), true);
    });
  }
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(0, failures.load());
}

TEST(Threads, OneEnvironmentPerThreadOnASharedDatabase) {
  // The shared type is made first; the database lives while this session is attached.
  OCIEnv* env = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIEnvCreate(&env, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
  OCIError* err = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 0, nullptr));
  OCISvcCtx* svc = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCILogon(env, err, &svc, Text("owner"), 5, Text("pw"), 2,
                                  Text("threads_shared"), 14));
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr));
  const char* sql = "create type shared_nt as table of varchar2(20)";
  ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt, err, Text(sql), Len(sql), OCI_NTV_SYNTAX, 0));
  ASSERT_EQ(OCI_SUCCESS, OCIStmtExecute(svc, stmt, err, 1, 0, nullptr, nullptr, OCI_DEFAULT));
  std::vector<std::thread> threads;
  std::atomic<int> failures{0};
  for (int id = 0; id < 4; ++id) {
    threads.emplace_back([id, &failures] { failures += Worker(id, "threads_shared", false); });
  }
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(0, failures.load());
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(svc, err));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env, OCI_HTYPE_ENV));
}

}  // namespace
}  // namespace ocimem_test
