// Line-oriented driver over SQL arithmetic, for the differential test of NUMBER arithmetic
// against PostgreSQL. Each input line is `a<TAB>op<TAB>b` (plain decimal text, op one of
// + - * /); each output line is the value of `SELECT a op b FROM DUAL` as text, or
// "ERR <ORA number>".
#include <cstdio>
#include <iostream>
#include <string>

#include "oci.h"

namespace {

OCIEnv* g_env = nullptr;
OCIError* g_err = nullptr;
OCISvcCtx* g_svc = nullptr;

const OraText* T(const std::string& s) { return reinterpret_cast<const OraText*>(s.c_str()); }

std::string Error() {
  sb4 code = 0;
  OraText buf[512];
  OCIErrorGet(g_err, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR);
  return "ERR " + std::to_string(code);
}

std::string Run(const std::string& a, const std::string& op, const std::string& b) {
  const std::string sql = "select (" + a + ") " + op + " (" + b + ") from dual";
  OCIStmt* stmt = nullptr;
  OCIHandleAlloc(g_env, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  std::string result;
  char buf[256];
  sb2 ind = 0;
  OCIDefine* def = nullptr;
  if (OCIStmtPrepare(stmt, g_err, T(sql), static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX,
                     OCI_DEFAULT) != OCI_SUCCESS ||
      OCIDefineByPos(stmt, &def, g_err, 1, buf, sizeof buf, SQLT_STR, &ind, nullptr, nullptr,
                     OCI_DEFAULT) != OCI_SUCCESS ||
      OCIStmtExecute(g_svc, stmt, g_err, 1, 0, nullptr, nullptr, OCI_DEFAULT) != OCI_SUCCESS) {
    result = Error();
  } else {
    result = ind == OCI_IND_NULL ? "NULL" : std::string(buf);
  }
  OCIHandleFree(stmt, OCI_HTYPE_STMT);
  return result;
}

}  // namespace

int main() {
  if (OCIEnvCreate(&g_env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) !=
          OCI_SUCCESS ||
      OCIHandleAlloc(g_env, reinterpret_cast<void**>(&g_err), OCI_HTYPE_ERROR, 0, nullptr) !=
          OCI_SUCCESS ||
      OCILogon(g_env, g_err, &g_svc, T("scott"), 5, T("tiger"), 5, T("arith"), 5) !=
          OCI_SUCCESS) {
    std::fprintf(stderr, "cannot log on to the in-memory database\n");
    return 2;
  }
  std::string line;
  while (std::getline(std::cin, line)) {
    const std::size_t t1 = line.find('\t');
    const std::size_t t2 = t1 == std::string::npos ? t1 : line.find('\t', t1 + 1);
    if (t2 == std::string::npos) {
      std::cout << "ERR usage\n";
      continue;
    }
    std::cout << Run(line.substr(0, t1), line.substr(t1 + 1, t2 - t1 - 1), line.substr(t2 + 1))
              << '\n';
  }
  OCILogoff(g_svc, g_err);
  OCIHandleFree(g_err, OCI_HTYPE_ERROR);
  OCIHandleFree(g_env, OCI_HTYPE_ENV);
  return 0;
}
