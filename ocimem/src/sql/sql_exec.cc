#include "sql/sql_exec.h"

#include <mutex>

#include "lob/lob_ops.h"
#include "database/view.h"

namespace ocimem {
bool ExecuteStatement(const ExecContext& ctx, const Statement& statement, ExecResult* result,
                      SqlError* error) {
  if (const auto* s = std::get_if<CreateTypeStatement>(&statement))
    return CreateType(ctx, *s, error);
  if (const auto* s = std::get_if<DropTypeStatement>(&statement)) return DropType(ctx, *s, error);
  if (const auto* s = std::get_if<CreateTableStatement>(&statement)) {
    return CreateTable(ctx, *s, error);
  }
  if (const auto* s = std::get_if<DropTableStatement>(&statement)) return DropTable(ctx, *s, error);
  if (const auto* s = std::get_if<CreateViewStatement>(&statement)) {
    return CreateView(ctx, *s, error);
  }
  if (const auto* s = std::get_if<DropViewStatement>(&statement)) return DropView(ctx, *s, error);
  if (const auto* s = std::get_if<CreateSequenceStatement>(&statement)) {
    return CreateSequence(ctx, *s, error);
  }
  if (const auto* s = std::get_if<DropSequenceStatement>(&statement)) {
    return DropSequence(ctx, *s, error);
  }
  if (const auto* s = std::get_if<TruncateTableStatement>(&statement)) {
    return TruncateTable(ctx, *s, error);
  }
  if (const auto* s = std::get_if<AlterTableStatement>(&statement)) {
    return AlterTable(ctx, *s, error);
  }
  if (const auto* s = std::get_if<CreateIndexStatement>(&statement)) {
    return CreateIndex(ctx, *s, error);
  }
  if (const auto* s = std::get_if<DropIndexStatement>(&statement)) return DropIndex(ctx, *s, error);
  if (const auto* s = std::get_if<CommentStatement>(&statement)) return CommentOn(ctx, *s, error);
  if (const auto* s = std::get_if<AlterSessionStatement>(&statement)) {
    return AlterSession(ctx, *s, error);
  }
  if (std::holds_alternative<CommitStatement>(statement)) {
    bool open_lobs = HasOpenLobs(ctx.session);  // committed all the same, then reported
    EndSessionTransaction(ctx.session, true);
    return !open_lobs || SetError(error, 22291, "Open LOBs exist at transaction commit time");
  }
  if (std::holds_alternative<RollbackStatement>(statement)) {
    EndSessionTransaction(ctx.session, false);
    return true;
  }
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  ctx.row_nextvals.clear();
  // A statement on a view runs on the view's base table.
  Statement on_base;
  bool on_view = false;
  if (!RewriteOnView(ctx, statement, &on_base, &on_view, error)) return false;
  const Statement& run = on_view ? on_base : statement;
  if (const auto* s = std::get_if<InsertStatement>(&run)) {
    return ExecuteInsert(ctx, *s, result, error);
  }
  if (const auto* s = std::get_if<SelectStatement>(&run)) {
    return ExecuteSelect(ctx, *s, result, error);
  }
  if (const auto* s = std::get_if<UpdateStatement>(&run)) {
    return ExecuteUpdate(ctx, *s, result, error);
  }
  if (const auto* s = std::get_if<DeleteStatement>(&run)) {
    return ExecuteDelete(ctx, *s, result, error);
  }
  return SetError(error, 900, "invalid SQL statement");
}

}  // namespace ocimem
