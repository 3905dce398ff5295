#include "oci_session.h"

#include <cstring>

#include "schema_script.h"

namespace varnadp {
namespace {

const OraText* Text(const std::string& s) { return reinterpret_cast<const OraText*>(s.data()); }
ub4 Len(const std::string& s) { return static_cast<ub4>(s.size()); }

// The in-memory databases are opened by the user the schema scripts expect
// when they name no schema: the default one of the examples.
constexpr char kUser[] = "SCOTT";
constexpr char kPassword[] = "tiger";

}  // namespace

OciSession::~OciSession() {
  if (svc_ != nullptr) OCILogoff(svc_, err_);
  if (env_ != nullptr) OCIHandleFree(env_, OCI_HTYPE_ENV);
}

bool OciSession::Open(const std::string& database) {
  if (OCIEnvCreate(&env_, OCI_OBJECT | OCI_THREADED, nullptr, nullptr, nullptr, nullptr, 0,
                   nullptr) != OCI_SUCCESS) {
    error_ = "the OCI environment cannot be created";
    return false;
  }
  if (OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_), OCI_HTYPE_ERROR, 0, nullptr) !=
      OCI_SUCCESS) {
    error_ = "an OCI error handle cannot be allocated";
    return false;
  }
  const std::string user = kUser;
  const std::string password = kPassword;
  return Check(OCILogon(env_, err_, &svc_, Text(user), Len(user), Text(password), Len(password),
                        Text(database), Len(database)),
               "OCILogon");
}

std::string OciSession::OracleError() const {
  OraText message[1024] = {0};
  sb4 code = 0;
  if (OCIErrorGet(err_, 1, nullptr, &code, message, sizeof message, OCI_HTYPE_ERROR) !=
      OCI_SUCCESS) {
    return "unknown Oracle error";
  }
  std::string text(reinterpret_cast<char*>(message));
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

bool OciSession::Check(sword status, const char* call) {
  if (status == OCI_SUCCESS) return true;
  error_ = std::string(call) + ": " + OracleError();
  return false;
}

bool OciSession::Execute(const std::string& sql) {
  OCIStmt* stmt = nullptr;
  if (!Check(OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr),
             "OCIHandleAlloc")) {
    return false;
  }
  const sword prepared = OCIStmtPrepare(stmt, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX, OCI_DEFAULT);
  const sword status = prepared == OCI_SUCCESS
                           ? OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT)
                           : prepared;
  if (status != OCI_SUCCESS) error_ = OracleError();
  OCIHandleFree(stmt, OCI_HTYPE_STMT);
  return status == OCI_SUCCESS;
}

bool OciSession::RunScript(std::string_view script, const std::string& script_name) {
  const ScriptSplit split = SplitScript(script);
  if (!split.error.empty()) {
    error_ = script_name + ":" + std::to_string(split.error_line) + ": " + split.error;
    return false;
  }
  for (const ScriptStatement& statement : split.statements) {
    if (!Execute(statement.text)) {
      error_ = script_name + ":" + std::to_string(statement.line) + ": " + error_;
      return false;
    }
  }
  return true;
}

OCIType* OciSession::TypeByName(const std::string& qualified_name) {
  std::string schema;
  std::string name;
  SplitQualifiedName(qualified_name, &schema, &name);
  OCIType* tdo = nullptr;
  const sword status =
      OCITypeByName(env_, err_, svc_, schema.empty() ? nullptr : Text(schema), Len(schema),
                    Text(name), Len(name), nullptr, 0, OCI_DURATION_SESSION, OCI_TYPEGET_HEADER, &tdo);
  if (!Check(status, "OCITypeByName")) return nullptr;
  return tdo;
}

void SplitQualifiedName(const std::string& qualified, std::string* schema, std::string* name) {
  const size_t dot = qualified.find('.');
  if (dot == std::string::npos) {
    schema->clear();
    *name = qualified;
  } else {
    *schema = qualified.substr(0, dot);
    *name = qualified.substr(dot + 1);
  }
}

}  // namespace varnadp
