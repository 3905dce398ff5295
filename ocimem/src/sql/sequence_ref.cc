// NEXTVAL and CURRVAL in statements.  NEXTVAL advances a sequence once per row of a
// statement however often the row names it, and CURRVAL in that row gives the same value;
// otherwise CURRVAL gives the value the session's last NEXTVAL took.
#include "sql/sql_rows.h"

namespace ocimem {
namespace {

bool FindSequence(const ExecContext& ctx, const Expr& e, Sequence** out, SqlError* error) {
  const std::string& schema = e.type.schema.empty() ? ctx.schema : e.type.schema;
  *out = ctx.db->catalog.FindSequence(schema, e.type.name);
  return *out != nullptr || SetError(error, 2289, "sequence does not exist");
}

bool NextValue(const ExecContext& ctx, Sequence* seq, std::string* out, SqlError* error) {
  auto taken = ctx.row_nextvals.find(seq->id);
  if (taken != ctx.row_nextvals.end()) {
    *out = taken->second;
    return true;
  }
  SequenceNumber v = 0;
  if (!seq->Advance(&v)) {
    return SetError(error, 8004,
                    "sequence " + seq->name + ".NEXTVAL " +
                        (seq->increment > 0 ? "exceeds MAXVALUE" : "goes below MINVALUE") +
                        " and cannot be instantiated");
  }
  *out = SequenceText(v);
  ctx.row_nextvals[seq->id] = *out;
  ctx.session->currvals[seq->id] = *out;
  return true;
}

}  // namespace

bool HasSequence(const Expr& e) {
  if (e.kind == Expr::Kind::kSequence) return true;
  for (const Expr& arg : e.args) {
    if (HasSequence(arg)) return true;
  }
  return false;
}

bool SequencesExist(const ExecContext& ctx, const Expr& e, SqlError* error) {
  Sequence* seq = nullptr;
  if (e.kind == Expr::Kind::kSequence && !FindSequence(ctx, e, &seq, error)) return false;
  for (const Expr& arg : e.args) {
    if (!SequencesExist(ctx, arg, error)) return false;
  }
  return true;
}

bool AdvanceSequences(const ExecContext& ctx, const Expr& e, SqlError* error) {
  if (e.kind == Expr::Kind::kSequence && e.text == "NEXTVAL") {
    Sequence* seq = nullptr;
    std::string ignored;
    return FindSequence(ctx, e, &seq, error) && NextValue(ctx, seq, &ignored, error);
  }
  for (const Expr& arg : e.args) {
    if (!AdvanceSequences(ctx, arg, error)) return false;
  }
  return true;
}

bool SequenceValue(const ExecContext& ctx, const Expr& e, Value* out, SqlError* error) {
  Sequence* seq = nullptr;
  if (!FindSequence(ctx, e, &seq, error)) return false;
  Expr number;
  number.kind = Expr::Kind::kNumber;
  if (e.text == "NEXTVAL") {
    if (!NextValue(ctx, seq, &number.text, error)) return false;
  } else if (auto taken = ctx.row_nextvals.find(seq->id); taken != ctx.row_nextvals.end()) {
    number.text = taken->second;
  } else if (auto current = ctx.session->currvals.find(seq->id);
             current != ctx.session->currvals.end()) {
    number.text = current->second;
  } else {
    return SetError(error, 8002,
                    "sequence " + seq->name + ".CURRVAL is not yet defined in this session");
  }
  return ValueFromLiteral(number, out, error);
}

}  // namespace ocimem
