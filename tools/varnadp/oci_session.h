// One OCI environment, error handle and session on an in-memory database of
// its own, with the schema script run on it: what each worker of the command
// converts with.
#ifndef TOOLS_VARNADP_OCI_SESSION_H
#define TOOLS_VARNADP_OCI_SESSION_H

#include <string>
#include <string_view>

#include <oci.h>

namespace varnadp {

class OciSession {
 public:
  OciSession() = default;
  ~OciSession();
  OciSession(const OciSession&) = delete;
  OciSession& operator=(const OciSession&) = delete;

  // Creates the environment and logs on to the in-memory database `database`
  // (a fresh one when no other session of the process named it). False with
  // error() set when that fails.
  bool Open(const std::string& database);

  // Runs every statement of an SQL*Plus script; false with error() naming
  // the script and the line of the statement that failed.
  bool RunScript(std::string_view script, const std::string& script_name);

  // Runs one statement; false with error() holding Oracle's text.
  bool Execute(const std::string& sql);

  // Looks a type up by "SCHEMA.NAME" or "NAME" (in the session's schema).
  OCIType* TypeByName(const std::string& qualified_name);

  // Oracle's text of the last failure on the error handle, without its line feed.
  std::string OracleError() const;

  // False with error() set when status is not OCI_SUCCESS.
  bool Check(sword status, const char* call);

  OCIEnv* env() const { return env_; }
  OCIError* err() const { return err_; }
  OCISvcCtx* svc() const { return svc_; }
  const std::string& error() const { return error_; }
  void set_error(std::string error) { error_ = std::move(error); }

 private:
  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  OCISvcCtx* svc_ = nullptr;
  std::string error_;
};

// "SCHEMA.NAME" split at its dot; names without one have an empty schema.
void SplitQualifiedName(const std::string& qualified, std::string* schema, std::string* name);

}  // namespace varnadp

#endif  // TOOLS_VARNADP_OCI_SESSION_H
