// OCIStmtPrepare, OCIStmtExecute, OCIStmtFetch and OCIStmtFetch2.  Prepare keeps the text
// and finds its bind variables; parsing and every SQL error happen at execute, as with a
// server.
#include <cstring>
#include <mutex>

#include "convert.h"
#include "instance.h"
#include "internal.h"
#include "sql_exec.h"
#include "sql_parser.h"
#include "statement.h"
#include "value_slot.h"

namespace ocimem {
namespace {

bool IsDdl(const Statement& s) {
  return std::holds_alternative<CreateTypeStatement>(s) ||
         std::holds_alternative<DropTypeStatement>(s) ||
         std::holds_alternative<CreateTableStatement>(s) ||
         std::holds_alternative<DropTableStatement>(s);
}

// The type family of an external type, as ORA-00932 names it.
std::string DtyName(ub2 dty) {
  switch (dty) {
    case SQLT_INT:
    case SQLT_UIN:
    case SQLT_FLT:
    case SQLT_NUM:
    case SQLT_VNU:
      return "NUMBER";
    case SQLT_STR:
    case SQLT_CHR:
    case SQLT_AFC:
      return "CHAR";
    case SQLT_DAT:
    case SQLT_ODT:
      return "DATE";
    case SQLT_BIN:
    case SQLT_LBI:
      return "BINARY";
    case SQLT_CLOB:
      return "CLOB";
    case SQLT_BLOB:
      return "BLOB";
    case SQLT_TIMESTAMP:
    case SQLT_TIMESTAMP_TZ:
    case SQLT_TIMESTAMP_LTZ:
      return "TIMESTAMP";
    case SQLT_INTERVAL_YM:
    case SQLT_INTERVAL_DS:
      return "INTERVAL";
    default:
      return "-";
  }
}

// Checks the defines against the select list before anything is fetched.
bool CheckDefines(const StmtHandle& s, SqlError* error) {
  for (const auto& d : s.defines) {
    if (d->position > s.cursor->items.size()) {
      error->code = 1007;
      error->message = "variable not in select list";
      return false;
    }
    const ValueType& t = s.cursor->items[d->position - 1].type;
    if (d->dty == SQLT_NTY) {
      if (d->tdo == nullptr) {
        error->code = 24359;
        error->message = "OCIDefineObject not invoked for a Object type or Reference";
        return false;
      }
      if ((t.kind != ValueKind::kObject && t.kind != ValueKind::kCollection) ||
          t.named.get() != d->tdo) {
        error->code = 932;
        error->message = "inconsistent datatypes: expected " + d->tdo->schema + "." + d->tdo->name +
                         " got " + TypeName(t);
        return false;
      }
    } else if (!DefineFits(d->dty, t)) {
      error->code = 932;
      error->message =
          "inconsistent datatypes: expected " + DtyName(d->dty) + " got " + TypeName(t);
      return false;
    }
  }
  return true;
}

// Delivers an object or collection into element `row` of an object define.
bool FetchObject(Env* env, const DefineHandle& d, size_t row, const ValueType& t, void* slot,
                 OCIInd* ind, std::uint64_t txn, SqlError* error) {
  void*& target = d.pgvpp[row];
  Instance* instance = target != nullptr ? FindInstance(env, target) : nullptr;
  if (target == nullptr) {
    instance = t.kind == ValueKind::kObject ? NewObjectInstance(env, t.named)
                                            : NewCollectionInstance(env, t.named);
    if (instance == nullptr) {
      error->code = 4030;
      error->message = "out of process memory";
      return false;
    }
    target = instance->value;
  }
  if (AssignSlot(env, t, t.kind == ValueKind::kObject ? target : &target, ElementForm(t, slot)) !=
      AssignResult::kOk) {
    error->code = 4030;
    error->message = "out of process memory";
    return false;
  }
  if (instance != nullptr) {
    if (t.kind == ValueKind::kObject) {
      std::memcpy(instance->null_struct, ind, t.named->ind_size);
    } else {
      *instance->null_struct = *ind;
    }
    // decision D16: the pointer handed in is replaced, never written through
    if (d.indpp != nullptr) d.indpp[row] = instance->null_struct;
  }
  ForEachLob(t, t.kind == ValueKind::kObject ? target : &target, nullptr,
             [txn](OCILobLocator* l, bool) {
               if (l != nullptr && l->state == LobState::kPersistent) l->select_txn = txn;
             });
  return true;
}

// The session that executed the statement, or nullptr when it has been freed since.
Session* LiveSession(StmtHandle* s) {
  return AsSession(s->session);
}

// Fetches up to `nrows` rows of the open cursor into the defines.
sword FetchRows(StmtHandle* s, OCIError* err, ub4 nrows) {
  ScopedNls nls(s->nls.get());
  Cursor& c = *s->cursor;
  if (s->defines.empty()) {
    return Fail(err, 24374, "define not done before fetch or execute and fetch");
  }
  SqlError check;
  if (!CheckDefines(*s, &check)) return Fail(err, check.code, check.message);
  s->rows_fetched = 0;
  if (c.exhausted) return Fail(err, 1002, "fetch out of sequence");
  Session* session = LiveSession(s);
  std::uint64_t txn = session != nullptr && session->txn ? session->txn->id : 0;
  if (c.for_update && txn != c.txn) return Fail(err, 1002, "fetch out of sequence");
  bool truncated = false;
  ub4 fetched = 0;
  SqlError error;
  for (ub4 i = 0; i < nrows && c.next < c.rows.size(); ++i, ++c.next) {
    const RowData& row = *c.rows[c.next];
    for (const auto& d : s->defines) {
      const Projection& p = c.items[d->position - 1];
      const RowData& source = p.literal ? *p.literal_row : row;
      auto* slot = static_cast<unsigned char*>(source.value) + p.offset;
      auto* ind =
          reinterpret_cast<OCIInd*>(reinterpret_cast<unsigned char*>(source.ind) + p.ind_offset);
      if (d->dty == SQLT_NTY) {
        if (!FetchObject(s->env, *d, i, p.type, slot, ind, txn, &error)) {
          return Fail(err, error.code, error.message);
        }
        continue;
      }
      ub2 rc = 0;
      if (!FetchScalar(*d, i, p.type, slot, ind, txn, &rc, &error)) {
        return Fail(err, error.code, error.message);
      }
      if (d->rcodep != nullptr) d->rcodep[i] = rc;
      if (rc == 1405 && d->indp == nullptr) {
        ++c.next;
        return Fail(err, 1405, "fetched column value is NULL");
      }
      if (rc == 1406) {
        if (d->indp == nullptr && d->rcodep == nullptr) {
          ++c.next;
          return Fail(err, 1406, "fetched column value was truncated");
        }
        truncated = true;
      }
    }
    // Counted row by row, so that a row failing half-way leaves the rows before it counted.
    ++fetched;
    s->rows_fetched = fetched;
    ++s->row_count;
  }
  if (fetched < nrows) {
    c.exhausted = true;
    AddRecord(err, 1403, "no data found");
    return OCI_NO_DATA;
  }
  if (truncated) {
    AddRecord(err, 24345, "A Truncation or null fetch error occurred");
    return OCI_SUCCESS_WITH_INFO;
  }
  return OCI_SUCCESS;
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCIStmtPrepare(OCIStmt* stmtp, OCIError* errhp, const OraText* stmt, ub4 stmt_len,
                     ub4 language, ub4 mode) {
  (void)language;  // native, V7 and V8 syntax behave alike
  (void)mode;
  sword rc;
  if (Enter("OCIStmtPrepare", errhp, &rc)) return rc;
  StmtHandle* s = AsStmt(stmtp);
  if (s == nullptr) return OCI_INVALID_HANDLE;
  if (stmt_len == 0) return Fail(errhp, 24373, "invalid length specified for statement");
  if (stmt == nullptr) return FailArgument(errhp, 3);
  // Many programs pass strlen(text) + 1: a terminating NUL is no part of the statement.
  while (stmt_len > 0 && stmt[stmt_len - 1] == '\0') --stmt_len;
  s->text.assign(reinterpret_cast<const char*>(stmt), stmt_len);
  s->statement_type = ClassifyStatement(s->text);
  s->placeholders = Placeholders(s->text);
  // Binds and defines belong to the text they were made for.
  s->binds.clear();
  s->defines.clear();
  s->cursor.reset();
  s->prepared = true;
  s->row_count = 0;
  return OCI_SUCCESS;
}

sword OCIStmtExecute(OCISvcCtx* svchp, OCIStmt* stmtp, OCIError* errhp, ub4 iters, ub4 rowoff,
                     const OCISnapshot* snap_in, OCISnapshot* snap_out, ub4 mode) {
  (void)snap_in;
  (void)snap_out;
  sword rc;
  if (Enter("OCIStmtExecute", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  StmtHandle* s = AsStmt(stmtp);
  if (svc == nullptr || s == nullptr) return OCI_INVALID_HANDLE;
  Server* server = svc->LiveServer();
  if (server == nullptr || !server->db) {
    return Fail(errhp, 24324, "service handle not initialized");
  }
  Session* session = svc->LiveSession();
  if (session == nullptr || !session->db) return Fail(errhp, 1012, "not logged on");
  if (!s->prepared) return Fail(errhp, 24337, "statement handle not prepared");
  if (iters == 0 && s->statement_type != OCI_STMT_SELECT) {
    return Fail(errhp, 24333, "zero iteration count");
  }
  std::vector<Token> tokens;
  SqlError error;
  if (!Tokenize(s->text, &tokens, &error)) return Fail(errhp, error.code, error.message);
  Parser parser(std::move(tokens));
  Statement statement;
  if (!parser.ParseStatement(&statement, &error)) return Fail(errhp, error.code, error.message);
  bool query = std::holds_alternative<SelectStatement>(statement);
  s->cursor.reset();
  s->row_count = 0;
  s->rows_fetched = 0;
  s->param_count = 0;
  s->session = session;
  s->session_env = svc->env;
  s->nls = session->nls;
  ScopedNls nls(s->nls.get());
  ExecContext ctx{session->db.get(), session->schema, session->db, session, s, 0};
  for (size_t i = 0; i < s->placeholders.size(); ++i) {
    bool bound = false;
    for (const auto& b : s->binds) {
      if (b->position == i + 1 || (b->position == 0 && b->name == s->placeholders[i])) {
        bound = true;
      }
    }
    if (!bound) return Fail(errhp, 1008, "not all variables bound");
  }
  if ((mode & OCI_DESCRIBE_ONLY) != 0) return OCI_SUCCESS;
  // DDL commits the open transaction.
  if (IsDdl(statement)) EndSessionTransaction(session, true);
  ub4 first = query ? 0 : rowoff;
  ub4 last = query ? 1 : (iters > rowoff ? iters : rowoff + 1);
  ub4 row_count = 0;
  for (ub4 i = first; i < last; ++i) {
    ctx.iteration = i;
    ExecResult result;
    if (!ExecuteStatement(ctx, statement, &result, &error)) {
      s->row_count = row_count;
      return Fail(errhp, error.code, error.message);
    }
    row_count += result.row_count;
    if (query) {
      s->cursor = std::move(result.cursor);
      s->param_count = static_cast<ub4>(s->cursor->items.size());
    }
  }
  if ((mode & OCI_COMMIT_ON_SUCCESS) != 0) EndSessionTransaction(session, true);
  if (!query) {
    s->row_count = row_count;
    return OCI_SUCCESS;
  }
  if (iters == 0) return OCI_SUCCESS;
  return FetchRows(s, errhp, iters);
}

sword OCIStmtFetch2(OCIStmt* stmtp, OCIError* errhp, ub4 nrows, ub2 orientation, sb4 scrollOffset,
                    ub4 mode) {
  (void)scrollOffset;  // only scrollable cursors use it
  (void)mode;
  sword rc;
  if (Enter("OCIStmtFetch2", errhp, &rc)) return rc;
  StmtHandle* s = AsStmt(stmtp);
  if (s == nullptr) return OCI_INVALID_HANDLE;
  if (!s->cursor) return Fail(errhp, 24338, "statement handle not executed");
  if (orientation != OCI_FETCH_NEXT && orientation != OCI_DEFAULT) {
    return Fail(errhp, 24391, "invalid fetch operation");
  }
  if (nrows == 0) {  // cancels the cursor
    s->cursor.reset();
    return OCI_SUCCESS;
  }
  return FetchRows(s, errhp, nrows);
}

sword OCIStmtFetch(OCIStmt* stmtp, OCIError* errhp, ub4 nrows, ub2 orientation, ub4 mode) {
  sword rc;
  if (Enter("OCIStmtFetch", errhp, &rc)) return rc;
  StmtHandle* s = AsStmt(stmtp);
  if (s == nullptr) return OCI_INVALID_HANDLE;
  if (!s->cursor) return Fail(errhp, 24338, "statement handle not executed");
  (void)mode;
  if (orientation != OCI_FETCH_NEXT && orientation != OCI_DEFAULT) {
    return Fail(errhp, 24391, "invalid fetch operation");
  }
  if (nrows == 0) {
    s->cursor.reset();
    return OCI_SUCCESS;
  }
  return FetchRows(s, errhp, nrows);
}
