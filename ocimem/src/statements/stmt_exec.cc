// The iterations of an execute.  Before each iteration the values of its OCI_DATA_AT_EXEC
// binds are gathered: from the in-bind callback of OCIBindDynamic, piece after piece until
// it answers OCI_ONE_PIECE or OCI_LAST_PIECE, or, without a callback, from the program:
// the execute answers OCI_NEED_DATA, the program learns which bind with
// OCIStmtGetPieceInfo, gives the piece with OCIStmtSetPieceInfo and calls OCIStmtExecute
// again.  After each iteration of a DML statement with RETURNING ... INTO the returned
// values go to their binds.
#include "statements/buffer_layout.h"
#include "session/internal.h"
#include "sql/sql_rows.h"
#include "statements/stmt_exec.h"

namespace ocimem {
namespace {

const std::vector<ReturningClause>* ReturningOf(const Statement& s) {
  if (const auto* i = std::get_if<InsertStatement>(&s)) return &i->returning;
  if (const auto* u = std::get_if<UpdateStatement>(&s)) return &u->returning;
  if (const auto* d = std::get_if<DeleteStatement>(&s)) return &d->returning;
  return nullptr;
}

void AddOnce(std::vector<BindHandle*>* list, BindHandle* b) {
  for (BindHandle* x : *list) {
    if (x == b) return;
  }
  list->push_back(b);
}

// Sorts the OCI_DATA_AT_EXEC binds into those read as input and those only returned into;
// ORA-24369 for a RETURNING bind that would need polling.
sword SortBinds(StmtHandle* s, PendingExecute* p, OCIError* err) {
  std::vector<bool> into(s->placeholders.size(), false);
  p->returning = ReturningOf(p->statement);
  if (p->returning != nullptr) {
    for (const ReturningClause& r : *p->returning) {
      for (const Expr& e : r.into) {
        if (e.bind < into.size()) into[e.bind] = true;
      }
    }
  }
  for (size_t i = 0; i < s->placeholders.size(); ++i) {
    BindHandle* b = BindForOccurrence(*s, i);
    if (b == nullptr) continue;
    if (into[i] && b->mode == OCI_DATA_AT_EXEC && !b->dynamic) {
      return Fail(err, 24369, "required callbacks not registered for one or more bind handles");
    }
    if (b->mode == OCI_DATA_AT_EXEC && !into[i]) AddOnce(&p->in_binds, b);
  }
  for (size_t i = 0; i < s->placeholders.size(); ++i) {
    BindHandle* b = BindForOccurrence(*s, i);
    if (b == nullptr || !into[i] || b->mode != OCI_DATA_AT_EXEC) continue;
    bool also_in = false;
    for (BindHandle* x : p->in_binds) also_in = also_in || x == b;
    if (!also_in) AddOnce(&p->out_only, b);
  }
  return OCI_SUCCESS;
}

// Adds one piece to a bind's gathered value.
void TakePiece(BindHandle* b, const void* buf, ub4 len, const void* indp) {
  if (indp != nullptr && ReadSb2(indp) < 0) b->staged_null = true;
  if (buf != nullptr && len > 0) b->staged.append(static_cast<const char*>(buf), len);
}

bool LastPiece(ub1 piece) { return piece != OCI_FIRST_PIECE && piece != OCI_NEXT_PIECE; }

// Calls an in-bind callback until it has given the whole value of iteration `iter`.
sword GatherFromCallback(BindHandle* b, ub4 iter, OCIError* err) {
  for (;;) {
    void* buf = nullptr;
    ub4 len = 0;
    ub1 piece = OCI_ONE_PIECE;
    void* indp = nullptr;
    sb4 r = b->icbfp(b->ictxp, reinterpret_cast<OCIBind*>(b), iter, 0, &buf, &len, &piece, &indp);
    if (r != OCI_CONTINUE) return CallbackFailed(err);
    TakePiece(b, buf, len, indp);
    if (LastPiece(piece)) return OCI_SUCCESS;
  }
}

// Gathers the input values of the running iteration; OCI_NEED_DATA when the program must
// give a piece.
sword GatherInputs(PendingExecute* p, OCIError* err) {
  for (; p->next < p->in_binds.size(); ++p->next, p->started = false) {
    BindHandle* b = p->in_binds[p->next];
    if (!p->started) {
      p->started = true;
      b->staged.clear();
      b->staged_null = false;
      if (b->icbfp != nullptr) {
        sword rc = GatherFromCallback(b, p->iter, err);
        if (rc != OCI_SUCCESS) return rc;
        continue;
      }
      if (b->dynamic) {  // OCIBindDynamic without an in-bind callback: no value
        b->staged_null = true;
        continue;
      }
      p->waiting = b;
      p->piece_asked = OCI_FIRST_PIECE;
      p->given = GivenPiece();
      return OCI_NEED_DATA;
    }
    // Polling: the program was asked for a piece of this bind.
    if (!p->given.given) {
      return Fail(err, 3129, "the next piece to be inserted is required");
    }
    GivenPiece g = p->given;
    p->given = GivenPiece();
    TakePiece(b, g.buf, g.alenp != nullptr ? *g.alenp : 0, g.indp);
    if (!LastPiece(g.piece)) {
      p->piece_asked = OCI_NEXT_PIECE;
      return OCI_NEED_DATA;
    }
    p->waiting = nullptr;
  }
  // Binds only returned into still have their in-bind callback called.
  for (BindHandle* b : p->out_only) {
    b->staged.clear();
    b->staged_null = true;
    if (b->icbfp == nullptr) continue;
    sword rc = GatherFromCallback(b, p->iter, err);
    if (rc != OCI_SUCCESS) return rc;
    b->staged.clear();
  }
  return OCI_SUCCESS;
}

sword RunPendingExecute(SvcCtx* svc, Session* session, StmtHandle* s, OCIError* err) {
  std::shared_ptr<PendingExecute> keep = s->pending_execute;
  PendingExecute& p = *keep;
  ScopedNls nls(s->nls.get());
  // Whatever ends here other than a request for a piece ends the execute.
  auto finish = [&](sword rc) {
    if (rc != OCI_NEED_DATA) s->pending_execute.reset();
    return rc;
  };
  if (!p.sorted) {
    p.sorted = true;
    sword rc = SortBinds(s, &p, err);
    if (rc != OCI_SUCCESS) return finish(rc);
  }
  ExecContext ctx{session->db.get(), session->schema, session->db, session, s, 0, {}, {}};
  (void)svc;
  for (; p.iter < p.last; ++p.iter, p.next = 0, p.started = false) {
    sword rc = GatherInputs(&p, err);
    if (rc != OCI_SUCCESS) return finish(rc);
    ctx.iteration = p.iter;
    ExecResult result;
    SqlError error;
    if (!ExecuteStatement(ctx, p.statement, &result, &error)) {
      s->row_count = p.row_count;
      return finish(Fail(err, error.code, error.message));
    }
    p.row_count += result.row_count;
    if (p.query) {
      s->cursor = std::move(result.cursor);
      s->param_count = static_cast<ub4>(s->cursor->items.size());
    }
    if (p.returning != nullptr && !p.returning->empty()) {
      std::uint64_t txn = session->txn ? session->txn->id : 0;
      rc = DeliverReturning(s, err, p.returning->front(), result, 0, p.iter, txn, &p.with_info);
      if (rc != OCI_SUCCESS) {
        s->row_count = p.row_count;
        return finish(rc);
      }
    }
  }
  if ((p.mode & OCI_COMMIT_ON_SUCCESS) != 0) EndSessionTransaction(session, true);
  if (!p.query) {
    s->row_count = p.row_count;
    if (p.with_info) {
      AddRecord(err, 24345, "A Truncation or null fetch error occurred");
      return finish(OCI_SUCCESS_WITH_INFO);
    }
    return finish(OCI_SUCCESS);
  }
  ub4 iters = p.iters;
  s->pending_execute.reset();
  if (iters == 0) return OCI_SUCCESS;
  return FetchRows(s, err, iters);
}

}  // namespace

sword RunExecute(SvcCtx* svc, Session* session, StmtHandle* s, OCIError* err) {
  // A failure for want of memory ends the execute too: the next one starts anew.
  try {
    return RunPendingExecute(svc, session, s, err);
  } catch (...) {
    s->pending_execute.reset();
    throw;
  }
}

}  // namespace ocimem
