// OCIStmtPrepare, OCIStmtExecute, OCIStmtFetch and OCIStmtFetch2.  Prepare keeps the text
// and finds its bind variables; parsing and every SQL error happen at execute, as with a
// server.
#include <cstring>
#include <mutex>

#include "statements/convert.h"
#include "objects/instance.h"
#include "session/internal.h"
#include "sql/sql_exec.h"
#include "sql/sql_parser.h"
#include "statements/statement.h"
#include "statements/stmt_exec.h"
#include "objects/value_slot.h"

namespace ocimem {
namespace {

bool IsDdl(const Statement& s) {
  return std::holds_alternative<CreateTypeStatement>(s) ||
         std::holds_alternative<DropTypeStatement>(s) ||
         std::holds_alternative<CreateTableStatement>(s) ||
         std::holds_alternative<DropTableStatement>(s) ||
         std::holds_alternative<CreateViewStatement>(s) ||
         std::holds_alternative<DropViewStatement>(s) ||
         std::holds_alternative<CreateSequenceStatement>(s) ||
         std::holds_alternative<DropSequenceStatement>(s) ||
         std::holds_alternative<TruncateTableStatement>(s) ||
         std::holds_alternative<AlterTableStatement>(s) ||
         std::holds_alternative<CreateIndexStatement>(s) ||
         std::holds_alternative<DropIndexStatement>(s) ||
         std::holds_alternative<CommentStatement>(s);
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCIStmtPrepare(OCIStmt* stmtp, OCIError* errhp, const OraText* stmt, ub4 stmt_len,
                     ub4 language, ub4 mode) try {
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
  s->pending_execute.reset();
  s->pending_fetch.reset();
  s->prepared = true;
  s->row_count = 0;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIStmtExecute(OCISvcCtx* svchp, OCIStmt* stmtp, OCIError* errhp, ub4 iters, ub4 rowoff,
                     const OCISnapshot* snap_in, OCISnapshot* snap_out, ub4 mode) try {
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
  // An execute that asked for a piece goes on where it stopped.
  if (s->pending_execute) return RunExecute(svc, session, s, errhp);
  s->pending_fetch.reset();
  if (iters == 0 && s->statement_type != OCI_STMT_SELECT) {
    return Fail(errhp, 24333, "zero iteration count");
  }
  std::vector<Token> tokens;
  SqlError error;
  if (!Tokenize(s->text, &tokens, &error)) return Fail(errhp, error.code, error.message);
  Parser parser(std::move(tokens));
  auto pending = std::make_shared<PendingExecute>();
  if (!parser.ParseStatement(&pending->statement, &error)) {
    return Fail(errhp, error.code, error.message);
  }
  const Statement& statement = pending->statement;
  bool query = std::holds_alternative<SelectStatement>(statement);
  s->cursor.reset();
  s->row_count = 0;
  s->rows_fetched = 0;
  s->param_count = 0;
  s->session = session;
  s->session_env = svc->env;
  s->nls = session->nls;
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
  pending->query = query;
  pending->iters = iters;
  pending->mode = mode;
  pending->iter = query ? 0 : rowoff;
  pending->last = query ? 1 : (iters > rowoff ? iters : rowoff + 1);
  s->pending_execute = std::move(pending);
  return RunExecute(svc, session, s, errhp);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIStmtFetch2(OCIStmt* stmtp, OCIError* errhp, ub4 nrows, ub2 orientation, sb4 scrollOffset,
                    ub4 mode) try {
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
  if (s->pending_fetch) return ResumeFetch(s, errhp);  // a piece was asked for
  if (nrows == 0) {  // cancels the cursor
    s->cursor.reset();
    return OCI_SUCCESS;
  }
  return FetchRows(s, errhp, nrows);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIStmtFetch(OCIStmt* stmtp, OCIError* errhp, ub4 nrows, ub2 orientation, ub4 mode) try {
  sword rc;
  if (Enter("OCIStmtFetch", errhp, &rc)) return rc;
  StmtHandle* s = AsStmt(stmtp);
  if (s == nullptr) return OCI_INVALID_HANDLE;
  if (!s->cursor) return Fail(errhp, 24338, "statement handle not executed");
  (void)mode;
  if (orientation != OCI_FETCH_NEXT && orientation != OCI_DEFAULT) {
    return Fail(errhp, 24391, "invalid fetch operation");
  }
  if (s->pending_fetch) return ResumeFetch(s, errhp);
  if (nrows == 0) {
    s->cursor.reset();
    return OCI_SUCCESS;
  }
  return FetchRows(s, errhp, nrows);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
