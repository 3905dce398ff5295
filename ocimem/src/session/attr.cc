// OCIAttrSet and OCIAttrGet.  Attribute numbers repeat across handle kinds, so every
// attribute is looked up by (handle kind, attribute).
#include <cstring>

#include "describe/describe.h"
#include "session/internal.h"
#include "statements/statement.h"

namespace ocimem {
namespace {

sword Illegal(OCIError* err) { return Fail(err, 24315, "illegal attribute type"); }

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCIAttrSet(void* trgthndlp, ub4 trghndltyp, void* attributep, ub4 size, ub4 attrtype,
                 OCIError* errhp) try {
  sword rc;
  if (Enter("OCIAttrSet", errhp, &rc)) return rc;
  Handle* h = AsHandle<Handle>(trgthndlp, trghndltyp);
  if (h == nullptr) return OCI_INVALID_HANDLE;
  switch (trghndltyp) {
    case OCI_HTYPE_ENV: {
      auto* env = static_cast<Env*>(h);
      if (attrtype != OCI_ATTR_OBJECT_NEWNOTNULL) return Illegal(errhp);
      if (attributep == nullptr) return FailArgument(errhp, 3);
      env->new_not_null = *static_cast<const boolean*>(attributep) != FALSE;
      return OCI_SUCCESS;
    }
    case OCI_HTYPE_SVCCTX: {
      auto* svc = static_cast<SvcCtx*>(h);
      if (attrtype == OCI_ATTR_SERVER) {
        if (attributep != nullptr && AsServer(attributep) == nullptr) return OCI_INVALID_HANDLE;
        svc->server = static_cast<Server*>(AsServer(attributep));
        return OCI_SUCCESS;
      }
      if (attrtype == OCI_ATTR_SESSION) {
        if (attributep != nullptr && AsSession(attributep) == nullptr) return OCI_INVALID_HANDLE;
        svc->session = AsSession(attributep);
        return OCI_SUCCESS;
      }
      return Illegal(errhp);
    }
    case OCI_HTYPE_SESSION: {
      auto* session = static_cast<Session*>(h);
      if (attrtype != OCI_ATTR_USERNAME && attrtype != OCI_ATTR_PASSWORD) return Illegal(errhp);
      if (attributep == nullptr && size > 0) return FailArgument(errhp, 3);
      std::string text(static_cast<const char*>(attributep), attributep == nullptr ? 0 : size);
      if (attrtype == OCI_ATTR_USERNAME) {
        session->username = std::move(text);
        session->has_username = true;
      } else {
        session->password = std::move(text);
        session->has_password = true;
      }
      return OCI_SUCCESS;
    }
    case OCI_HTYPE_STMT: {
      auto* stmt = static_cast<StmtHandle*>(h);
      if (attrtype != OCI_ATTR_PREFETCH_ROWS && attrtype != OCI_ATTR_PREFETCH_MEMORY) {
        return Illegal(errhp);
      }
      if (attributep == nullptr) return FailArgument(errhp, 3);
      // Accepted and kept: rows are handed out by the fetch calls alone.
      ub4 value = 0;
      std::memcpy(&value, attributep, sizeof value);
      (attrtype == OCI_ATTR_PREFETCH_ROWS ? stmt->prefetch_rows : stmt->prefetch_memory) = value;
      return OCI_SUCCESS;
    }
    default:
      return Illegal(errhp);
  }
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIAttrGet(const void* trgthndlp, ub4 trghndltyp, void* attributep, ub4* sizep,
                 ub4 attrtype, OCIError* errhp) try {
  sword rc;
  if (Enter("OCIAttrGet", errhp, &rc)) return rc;
  if (trghndltyp == OCI_HTYPE_DESCRIBE || trghndltyp == OCI_DTYPE_PARAM) {
    return DescribeAttrGet(trgthndlp, trghndltyp, attributep, sizep, attrtype, errhp);
  }
  Handle* h = AsHandle<Handle>(trgthndlp, trghndltyp);
  if (h == nullptr) return OCI_INVALID_HANDLE;
  if (attributep == nullptr) return FailArgument(errhp, 3);
  switch (trghndltyp) {
    case OCI_HTYPE_ENV: {
      auto* env = static_cast<Env*>(h);
      boolean value;
      if (attrtype == OCI_ATTR_OBJECT_NEWNOTNULL) {
        value = env->new_not_null ? TRUE : FALSE;
      } else if (attrtype == OCI_ATTR_OBJECT) {
        value = env->object_mode ? TRUE : FALSE;
      } else {
        return Illegal(errhp);
      }
      *static_cast<boolean*>(attributep) = value;
      if (sizep != nullptr) *sizep = sizeof value;
      return OCI_SUCCESS;
    }
    case OCI_HTYPE_SVCCTX: {
      auto* svc = static_cast<SvcCtx*>(h);
      if (attrtype == OCI_ATTR_SERVER) {
        *static_cast<OCIServer**>(attributep) = reinterpret_cast<OCIServer*>(svc->server);
      } else if (attrtype == OCI_ATTR_SESSION) {
        *static_cast<OCISession**>(attributep) = reinterpret_cast<OCISession*>(svc->session);
      } else {
        return Illegal(errhp);
      }
      if (sizep != nullptr) *sizep = sizeof(void*);
      return OCI_SUCCESS;
    }
    case OCI_HTYPE_SESSION: {
      auto* session = static_cast<Session*>(h);
      // The password can be set but never read back.
      if (attrtype != OCI_ATTR_USERNAME) return Illegal(errhp);
      *static_cast<const oratext**>(attributep) =
          reinterpret_cast<const oratext*>(session->username.c_str());
      if (sizep != nullptr) *sizep = static_cast<ub4>(session->username.size());
      return OCI_SUCCESS;
    }
    case OCI_HTYPE_STMT: {
      auto* stmt = static_cast<StmtHandle*>(h);
      if (attrtype == OCI_ATTR_STMT_TYPE) {
        *static_cast<ub2*>(attributep) = stmt->statement_type;
        if (sizep != nullptr) *sizep = sizeof(ub2);
        return OCI_SUCCESS;
      }
      if (attrtype == OCI_ATTR_ROW_COUNT || attrtype == OCI_ATTR_ROWS_FETCHED ||
          attrtype == OCI_ATTR_PARAM_COUNT || attrtype == OCI_ATTR_PREFETCH_ROWS ||
          attrtype == OCI_ATTR_PREFETCH_MEMORY) {
        *static_cast<ub4*>(attributep) = attrtype == OCI_ATTR_ROW_COUNT      ? stmt->row_count
                                         : attrtype == OCI_ATTR_ROWS_FETCHED ? stmt->rows_fetched
                                         : attrtype == OCI_ATTR_PARAM_COUNT  ? stmt->param_count
                                         : attrtype == OCI_ATTR_PREFETCH_ROWS
                                             ? stmt->prefetch_rows
                                             : stmt->prefetch_memory;
        if (sizep != nullptr) *sizep = sizeof(ub4);
        return OCI_SUCCESS;
      }
      return Illegal(errhp);
    }
    case OCI_HTYPE_BIND: {
      auto* bind = static_cast<BindHandle*>(h);
      if (attrtype != OCI_ATTR_ROWS_RETURNED) return Illegal(errhp);
      *static_cast<ub4*>(attributep) = bind->rows_returned;
      if (sizep != nullptr) *sizep = sizeof(ub4);
      return OCI_SUCCESS;
    }
    default:
      return Illegal(errhp);
  }
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
