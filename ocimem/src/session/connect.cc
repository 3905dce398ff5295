// Attaching to an in-memory database and beginning sessions on it.
#include <cctype>
#include <mutex>
#include <new>

#include "database/database.h"
#include "session/internal.h"

namespace ocimem {
namespace {

std::string Upper(const std::string& s) {
  std::string out;
  for (char c : s) out.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
  return out;
}

sword Attach(OCIError* err, Server* server, const OraText* dblink, sb4 dblink_len) {
  if (server->db) return Fail(err, 24309, "already connected to a server");
  if (dblink_len < 0) return FailArgument(err, 4);
  std::string name;
  if (dblink != nullptr) name.assign(reinterpret_cast<const char*>(dblink), static_cast<size_t>(dblink_len));
  server->db = OpenDatabase(name);
  return server->db ? OCI_SUCCESS : Fail(err, 12154, "TNS:could not resolve the connect identifier specified");
}

// Authenticates `session` on the database of `server`.  A user's password is the one it
// first logged on with.
sword Authenticate(OCIError* err, Server* server, Session* session) {
  if (session->db) return Fail(err, 24313, "user already authenticated");
  if (session->username.empty()) return Fail(err, 1017, "invalid username/password; logon denied");
  if (session->password.empty()) return Fail(err, 1005, "null password given; logon denied");
  std::string user = Upper(session->username);
  {
    std::lock_guard<std::mutex> lock(server->db->mutex);
    auto [it, first] = server->db->passwords.emplace(user, session->password);
    if (!first && it->second != session->password) {
      return Fail(err, 1017, "invalid username/password; logon denied");
    }
  }
  session->db = server->db;
  session->schema = user;
  return OCI_SUCCESS;
}

sword Logon(const char* function, OCIEnv* envh, OCIError* errhp, OCISvcCtx** svchp,
            const OraText* username, ub4 uname_len, const OraText* password, ub4 passwd_len,
            const OraText* dbname, ub4 dbname_len, ub4 mode) {
  sword rc;
  if (Enter(function, errhp, &rc)) return rc;
  Env* env = AsEnv(envh);
  if (env == nullptr) return OCI_INVALID_HANDLE;
  if (svchp == nullptr) return FailArgument(errhp, 3);
  if (mode != OCI_DEFAULT) return Fail(errhp, 24300, "bad value for mode");
  auto* server = new (std::nothrow) Server(env);
  auto* session = new (std::nothrow) Session(env);
  auto* svc = new (std::nothrow) SvcCtx(env);
  if (server == nullptr || session == nullptr || svc == nullptr) {
    delete server;
    delete session;
    delete svc;
    return OutOfMemory(errhp);
  }
  if (username != nullptr) session->username.assign(reinterpret_cast<const char*>(username), uname_len);
  if (password != nullptr) session->password.assign(reinterpret_cast<const char*>(password), passwd_len);
  session->has_username = session->has_password = true;
  rc = Attach(errhp, server, dbname, static_cast<sb4>(dbname == nullptr ? 0 : dbname_len));
  if (rc == OCI_SUCCESS) rc = Authenticate(errhp, server, session);
  if (rc != OCI_SUCCESS) {
    delete server;
    delete session;
    delete svc;
    return rc;
  }
  svc->server = server;
  svc->session = session;
  svc->from_logon = true;
  try {
    env->Adopt(server);
    env->Adopt(session);
    env->Adopt(svc);
  } catch (...) {
    // All three or none: an adopted one is released, the others deleted.
    for (Handle* h : {static_cast<Handle*>(svc), static_cast<Handle*>(session),
                      static_cast<Handle*>(server)}) {
      if (!env->Release(h)) delete h;
    }
    throw;
  }
  *svchp = reinterpret_cast<OCISvcCtx*>(svc);
  return OCI_SUCCESS;
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCILogon(OCIEnv* envhp, OCIError* errhp, OCISvcCtx** svchp, const OraText* username,
               ub4 uname_len, const OraText* password, ub4 passwd_len, const OraText* dbname,
               ub4 dbname_len) try {
  return Logon("OCILogon", envhp, errhp, svchp, username, uname_len, password, passwd_len, dbname,
               dbname_len, OCI_DEFAULT);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILogon2(OCIEnv* envhp, OCIError* errhp, OCISvcCtx** svchp, const OraText* username,
                ub4 uname_len, const OraText* password, ub4 passwd_len, const OraText* dbname,
                ub4 dbname_len, ub4 mode) try {
  return Logon("OCILogon2", envhp, errhp, svchp, username, uname_len, password, passwd_len,
               dbname, dbname_len, mode);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILogoff(OCISvcCtx* svchp, OCIError* errhp) try {
  sword rc;
  if (Enter("OCILogoff", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  if (!svc->from_logon) return Fail(errhp, 1012, "not logged on");
  Env* env = svc->env;
  // Ending the session commits its open transaction.
  if (Session* session = svc->LiveSession()) EndSessionTransaction(session, true);
  env->Release(svc->session);
  env->Release(svc->server);
  env->Release(svc);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIServerAttach(OCIServer* srvhp, OCIError* errhp, const OraText* dblink, sb4 dblink_len,
                      ub4 mode) try {
  sword rc;
  if (Enter("OCIServerAttach", errhp, &rc)) return rc;
  Server* server = AsServer(srvhp);
  if (server == nullptr) return OCI_INVALID_HANDLE;
  if (mode != OCI_DEFAULT) return Fail(errhp, 24300, "bad value for mode");
  return Attach(errhp, server, dblink, dblink == nullptr ? 0 : dblink_len);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIServerDetach(OCIServer* srvhp, OCIError* errhp, ub4 mode) try {
  (void)mode;
  sword rc;
  if (Enter("OCIServerDetach", errhp, &rc)) return rc;
  Server* server = AsServer(srvhp);
  if (server == nullptr) return OCI_INVALID_HANDLE;
  if (!server->db) return Fail(errhp, 3114, "not connected to ORACLE");
  server->db.reset();
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCISessionBegin(OCISvcCtx* svchp, OCIError* errhp, OCISession* usrhp, ub4 credt,
                      ub4 mode) try {
  (void)mode;
  sword rc;
  if (Enter("OCISessionBegin", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  Session* session = AsSession(usrhp);
  if (svc == nullptr || session == nullptr) return OCI_INVALID_HANDLE;
  Server* server = svc->LiveServer();
  if (server == nullptr || !server->db) {
    return Fail(errhp, 24327, "need explicit attach before authenticating a user");
  }
  // No operating-system or proxy authentication: only database credentials.
  if (credt != OCI_CRED_RDBMS) return Fail(errhp, 1017, "invalid username/password; logon denied");
  rc = Authenticate(errhp, server, session);
  if (rc == OCI_SUCCESS) svc->session = session;
  return rc;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCISessionEnd(OCISvcCtx* svchp, OCIError* errhp, OCISession* usrhp, ub4 mode) try {
  (void)mode;
  sword rc;
  if (Enter("OCISessionEnd", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  Session* session = usrhp != nullptr ? AsSession(usrhp) : svc->LiveSession();
  if (usrhp != nullptr && session == nullptr) return OCI_INVALID_HANDLE;
  if (session == nullptr || !session->db) return Fail(errhp, 1012, "not logged on");
  EndSessionTransaction(session, true);  // ending a session commits its transaction
  session->db.reset();
  session->schema.clear();
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
