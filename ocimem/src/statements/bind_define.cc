// OCIBindByPos, OCIBindByName, OCIBindObject, OCIDefineByPos and OCIDefineObject.  The
// handles are made by these calls, belong to the statement, and only record where the
// values are: binds are read at execute and defines written at fetch.
#include <cstring>
#include <new>

#include "session/internal.h"
#include "sql/sql_parser.h"
#include "statements/statement.h"
#include "objects/type.h"

namespace ocimem {
namespace {

sword IllegalVariable(OCIError* err) { return Fail(err, 1036, "illegal variable name/number"); }

sword RecordBind(StmtHandle* s, OCIBind** bindpp, OCIError* err, ub4 position,
                 const std::string& name, void* valuep, sb4 value_sz, ub2 dty, void* indp,
                 ub2* alenp, ub2* rcodep, ub4 mode) {
  if (mode != OCI_DEFAULT && mode != OCI_DATA_AT_EXEC) {
    return Fail(err, 24300, "bad value for mode");
  }
  if (dty == SQLT_NTY && !s->env->object_mode) {
    return Fail(err, 21301, "not initialized in object mode");
  }
  BindHandle* b = nullptr;
  for (const auto& existing : s->binds) {
    if ((position != 0 && existing->position == position) ||
        (position == 0 && existing->position == 0 && existing->name == name)) {
      b = existing.get();  // binding the same variable again replaces the bind
    }
  }
  if (b == nullptr) {
    auto fresh = std::unique_ptr<BindHandle>(new (std::nothrow) BindHandle(s->env));
    if (!fresh) return OutOfMemory(err);
    b = fresh.get();
    s->binds.push_back(std::move(fresh));
  }
  b->stmt = s;
  b->position = position;
  b->name = name;
  b->valuep = valuep;
  b->value_sz = value_sz;
  b->dty = dty;
  b->indp = indp;
  b->alenp = alenp;
  b->rcodep = rcodep;
  b->tdo = nullptr;
  b->pgvpp = nullptr;
  b->indpp = nullptr;
  b->pvskip = b->indskip = b->alskip = b->rcskip = 0;
  b->mode = mode;
  b->ictxp = b->octxp = nullptr;
  b->icbfp = nullptr;
  b->ocbfp = nullptr;
  b->dynamic = false;
  b->staged.clear();
  b->staged_null = true;
  b->rows_returned = 0;
  *bindpp = reinterpret_cast<OCIBind*>(b);
  return OCI_SUCCESS;
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCIBindByPos(OCIStmt* stmtp, OCIBind** bindp, OCIError* errhp, ub4 position, void* valuep,
                   sb4 value_sz, ub2 dty, void* indp, ub2* alenp, ub2* rcodep, ub4 maxarr_len,
                   ub4* curelep, ub4 mode) try {
  (void)maxarr_len;  // PL/SQL arrays only
  (void)curelep;
  sword rc;
  if (Enter("OCIBindByPos", errhp, &rc)) return rc;
  StmtHandle* s = AsStmt(stmtp);
  if (s == nullptr) return OCI_INVALID_HANDLE;
  if (bindp == nullptr) return FailArgument(errhp, 2);
  if (!s->prepared) return Fail(errhp, 24337, "statement handle not prepared");
  if (position == 0 || position > s->placeholders.size()) return IllegalVariable(errhp);
  return RecordBind(s, bindp, errhp, position, std::string(), valuep, value_sz, dty, indp, alenp,
                    rcodep, mode);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIBindByName(OCIStmt* stmtp, OCIBind** bindp, OCIError* errhp, const OraText* placeholder,
                    sb4 placeh_len, void* valuep, sb4 value_sz, ub2 dty, void* indp, ub2* alenp,
                    ub2* rcodep, ub4 maxarr_len, ub4* curelep, ub4 mode) try {
  (void)maxarr_len;
  (void)curelep;
  sword rc;
  if (Enter("OCIBindByName", errhp, &rc)) return rc;
  StmtHandle* s = AsStmt(stmtp);
  if (s == nullptr) return OCI_INVALID_HANDLE;
  if (bindp == nullptr) return FailArgument(errhp, 2);
  if (placeholder == nullptr) return FailArgument(errhp, 4);
  if (!s->prepared) return Fail(errhp, 24337, "statement handle not prepared");
  const char* p = reinterpret_cast<const char*>(placeholder);
  size_t len = placeh_len < 0 ? std::strlen(p) : static_cast<size_t>(placeh_len);
  std::string name(p, len);
  if (!name.empty() && name[0] == ':') name.erase(0, 1);
  name = UpperBindName(name);
  bool known = false;
  for (const std::string& n : s->placeholders) known = known || n == name;
  if (name.empty() || !known) return IllegalVariable(errhp);
  return RecordBind(s, bindp, errhp, 0, name, valuep, value_sz, dty, indp, alenp, rcodep, mode);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIBindObject(OCIBind* bindp, OCIError* errhp, const OCIType* type, void** pgvpp, ub4* pvszsp,
                    void** indpp, ub4* indszp) try {
  (void)pvszsp;  // sizes are known from the type
  (void)indszp;
  sword rc;
  if (Enter("OCIBindObject", errhp, &rc)) return rc;
  BindHandle* b = AsBind(bindp);
  if (b == nullptr) return OCI_INVALID_HANDLE;
  if (!b->env->object_mode) return Fail(errhp, 21301, "not initialized in object mode");
  if (AsType(type) == nullptr) return FailArgument(errhp, 3);
  if (pgvpp == nullptr) return FailArgument(errhp, 4);
  b->tdo = type;
  b->pgvpp = pgvpp;
  b->indpp = indpp;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIDefineByPos(OCIStmt* stmtp, OCIDefine** defnp, OCIError* errhp, ub4 position, void* valuep,
                     sb4 value_sz, ub2 dty, void* indp, ub2* rlenp, ub2* rcodep, ub4 mode) try {
  sword rc;
  if (Enter("OCIDefineByPos", errhp, &rc)) return rc;
  StmtHandle* s = AsStmt(stmtp);
  if (s == nullptr) return OCI_INVALID_HANDLE;
  if (defnp == nullptr) return FailArgument(errhp, 2);
  if (position == 0) return FailArgument(errhp, 4);
  if (mode != OCI_DEFAULT && mode != OCI_DYNAMIC_FETCH) {
    return Fail(errhp, 24300, "bad value for mode");
  }
  if (dty == SQLT_NTY && !s->env->object_mode) {
    return Fail(errhp, 21301, "not initialized in object mode");
  }
  DefineHandle* d = nullptr;
  for (const auto& existing : s->defines) {
    if (existing->position == position) d = existing.get();  // a new define replaces it
  }
  if (d == nullptr) {
    auto fresh = std::unique_ptr<DefineHandle>(new (std::nothrow) DefineHandle(s->env));
    if (!fresh) return OutOfMemory(errhp);
    d = fresh.get();
    s->defines.push_back(std::move(fresh));
  }
  d->stmt = s;
  d->position = position;
  d->valuep = valuep;
  d->value_sz = value_sz;
  d->dty = dty;
  d->indp = indp;
  d->rlenp = rlenp;
  d->rcodep = rcodep;
  d->tdo = nullptr;
  d->pgvpp = nullptr;
  d->indpp = nullptr;
  d->pvskip = d->indskip = d->rlskip = d->rcskip = 0;
  d->mode = mode;
  d->octxp = nullptr;
  d->ocbfp = nullptr;
  *defnp = reinterpret_cast<OCIDefine*>(d);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIDefineObject(OCIDefine* defnp, OCIError* errhp, const OCIType* type, void** pgvpp,
                      ub4* pvszsp, void** indpp, ub4* indszp) try {
  (void)pvszsp;
  (void)indszp;
  sword rc;
  if (Enter("OCIDefineObject", errhp, &rc)) return rc;
  DefineHandle* d = AsDefine(defnp);
  if (d == nullptr) return OCI_INVALID_HANDLE;
  if (!d->env->object_mode) return Fail(errhp, 21301, "not initialized in object mode");
  if (AsType(type) == nullptr) return FailArgument(errhp, 3);
  if (pgvpp == nullptr) return FailArgument(errhp, 4);
  d->tdo = type;
  d->pgvpp = pgvpp;
  d->indpp = indpp;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
