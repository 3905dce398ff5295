// OCIStmtPrepare and OCIStmtExecute.  Prepare only keeps the text; parsing and every SQL
// error happen at execute, as with a server.
#include "internal.h"
#include "sql_exec.h"
#include "sql_parser.h"
#include "statement.h"

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
  s->text.assign(reinterpret_cast<const char*>(stmt), stmt_len);
  s->statement_type = ClassifyStatement(s->text);
  s->prepared = true;
  s->row_count = 0;
  return OCI_SUCCESS;
}

sword OCIStmtExecute(OCISvcCtx* svchp, OCIStmt* stmtp, OCIError* errhp, ub4 iters, ub4 rowoff,
                     const OCISnapshot* snap_in, OCISnapshot* snap_out, ub4 mode) {
  (void)rowoff;
  (void)snap_in;
  (void)snap_out;
  (void)mode;
  sword rc;
  if (Enter("OCIStmtExecute", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  StmtHandle* s = AsStmt(stmtp);
  if (svc == nullptr || s == nullptr) return OCI_INVALID_HANDLE;
  if (svc->server == nullptr || !svc->server->db) {
    return Fail(errhp, 24324, "service handle not initialized");
  }
  if (svc->session == nullptr || !svc->session->db) return Fail(errhp, 1012, "not logged on");
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
  ExecContext ctx{svc->session->db.get(), svc->session->schema};
  if (!ExecuteStatement(ctx, statement, &error)) return Fail(errhp, error.code, error.message);
  s->row_count = 0;
  return OCI_SUCCESS;
}
