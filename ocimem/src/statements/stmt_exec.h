// Executing and fetching in steps: an execute that gathers the values of OCI_DATA_AT_EXEC
// binds (from in-bind callbacks, or piece by piece from the program, answering
// OCI_NEED_DATA), runs each iteration and hands RETURNING values out; a fetch that hands
// the values of OCI_DYNAMIC_FETCH defines out piece by piece.
#ifndef OCIMEM_SRC_STATEMENTS_STMT_EXEC_H
#define OCIMEM_SRC_STATEMENTS_STMT_EXEC_H

#include <string>
#include <vector>

#include "sql/sql_ast.h"
#include "sql/sql_exec.h"
#include "statements/statement.h"

namespace ocimem {

// A piece the program gave with OCIStmtSetPieceInfo.
struct GivenPiece {
  bool given = false;
  const void* buf = nullptr;
  ub4* alenp = nullptr;
  ub1 piece = OCI_ONE_PIECE;
  const void* indp = nullptr;
  ub2* rcodep = nullptr;
};

struct PendingExecute {
  Statement statement;
  bool query = false;
  ub4 iters = 0;
  ub4 mode = OCI_DEFAULT;
  ub4 iter = 0;  // running iteration
  ub4 last = 0;  // one past the last iteration
  ub4 row_count = 0;
  bool sorted = false;     // the DATA_AT_EXEC binds are sorted into in_binds and out_only
  bool with_info = false;  // a RETURNING value was cut: OCI_SUCCESS_WITH_INFO at the end
  const std::vector<ReturningClause>* returning = nullptr;  // inside `statement`
  std::vector<BindHandle*> in_binds;  // OCI_DATA_AT_EXEC binds read as input, in order
  std::vector<BindHandle*> out_only;  // OCI_DATA_AT_EXEC binds only in RETURNING ... INTO
  size_t next = 0;                    // in_binds gathered in this iteration
  bool started = false;               // in_binds[next] has begun
  BindHandle* waiting = nullptr;      // polling: the bind whose next piece is asked for
  ub1 piece_asked = OCI_FIRST_PIECE;
  GivenPiece given;
};

struct PendingFetch {
  ub4 nrows = 0;
  ub4 row = 0;       // row of this fetch call being delivered
  size_t define = 0; // define being delivered
  ub4 fetched = 0;
  bool truncated = false;
  // The value of a dynamic define being handed out.
  bool started = false;
  std::string bytes;
  bool null = false;
  size_t offset = 0;
  DefineHandle* waiting = nullptr;
  ub1 piece_asked = OCI_FIRST_PIECE;
  GivenPiece given;
};

// Runs (or resumes) the execute kept in s->pending_execute.
sword RunExecute(SvcCtx* svc, Session* session, StmtHandle* s, OCIError* err);
// Fetches up to `nrows` rows into the defines; ResumeFetch goes on with s->pending_fetch.
sword FetchRows(StmtHandle* s, OCIError* err, ub4 nrows);
sword ResumeFetch(StmtHandle* s, OCIError* err);
// Hands the values of one iteration's RETURNING rows to their binds.
sword DeliverReturning(StmtHandle* s, OCIError* err, const ReturningClause& r,
                       const ExecResult& result, size_t first_item, ub4 iter, std::uint64_t txn,
                       bool* with_info);
// ORA-24343: a callback answered something else than OCI_CONTINUE.
sword CallbackFailed(OCIError* err);

}  // namespace ocimem

#endif  // OCIMEM_SRC_STATEMENTS_STMT_EXEC_H
