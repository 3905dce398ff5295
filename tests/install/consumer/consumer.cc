// A host program built against the installed package: it reads the version
// symbols, uses a host stream and opens an in-memory OCI environment; built
// through the CMake package it also derives a Column_Def list with coldef.
#include <varnadp.h>
#include <host/kel.h>
#ifdef CONSUMER_USES_COLDEF
#include <coldef.h>
#endif

#include <cstdio>
#include <cstring>

int main() {
  CKelStream stream(0, nullptr, nullptr, 0);
  stream.Write("a|b", 3);
  stream.Seek(0, 0);
  char buf[4] = {};
  if (stream.Read(buf, 3) != 3 || std::strcmp(buf, "a|b") != 0) return 1;

  OCIEnv* env = nullptr;
  if (OCIEnvCreate(&env, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) != OCI_SUCCESS)
    return 2;
#ifdef CONSUMER_USES_COLDEF
  OCIError* err = nullptr;
  OCISvcCtx* svc = nullptr;
  OCIStmt* stmt = nullptr;
  const char sql[] = "CREATE TYPE POINT_T AS OBJECT (X NUMBER, Y NUMBER)";
  Column_Def* list = nullptr;
  if (OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 0, nullptr) ||
      OCILogon(env, err, &svc, reinterpret_cast<const OraText*>("scott"), 5,
               reinterpret_cast<const OraText*>("tiger"), 5, nullptr, 0) ||
      OCIHandleAlloc(env, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr) ||
      OCIStmtPrepare(stmt, err, reinterpret_cast<const OraText*>(sql), sizeof sql - 1,
                     OCI_NTV_SYNTAX, OCI_DEFAULT) ||
      OCIStmtExecute(svc, stmt, err, 1, 0, nullptr, nullptr, OCI_DEFAULT) ||
      coldefDescribe(env, err, svc, "POINT_T", &list) != COLDEF_OK || list == nullptr ||
      std::strcmp(list->Next->ColumnName, "Y") != 0)
    return 3;
  coldefFree(list);
#endif
  OCIHandleFree(env, OCI_HTYPE_ENV);

  std::printf("%s %s consumer ok\n", szMainProductName, szVersion);
  return 0;
}
