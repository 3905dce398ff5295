// CREATE SEQUENCE, DROP SEQUENCE and TRUNCATE TABLE.
#include <mutex>

#include "sql/constraint_ddl.h"
#include "sql/sql_exec.h"
#include "sql/sql_rows.h"

namespace ocimem {
namespace {

// An option's integer as written: at most 28 digits, 27 when negative (INCREMENT: 28).
bool OptionNumber(const std::string& text, const char* option, size_t negative_digits,
                  SequenceNumber* out, SqlError* error) {
  bool negative = !text.empty() && text[0] == '-';
  std::string digits = text.substr(negative ? 1 : 0);
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) {
    return SetError(error, 4001, std::string("sequence parameter ") + option +
                                     " must be an integer");
  }
  size_t first = digits.find_first_not_of('0');
  digits = first == std::string::npos ? "0" : digits.substr(first);
  if (digits.size() > (negative ? negative_digits : 28)) {
    return SetError(error, 4003,
                    std::string("sequence parameter ") + option +
                        " exceeds maximum size allowed (" +
                        std::to_string(negative ? negative_digits : 28) + " digits)");
  }
  SequenceNumber n = 0;
  for (char c : digits) n = n * 10 + (c - '0');
  *out = negative ? -n : n;
  return true;
}

}  // namespace

bool CreateSequence(const ExecContext& ctx, const CreateSequenceStatement& s, SqlError* error) {
  auto seq = std::make_shared<Sequence>();
  seq->schema = s.name.schema.empty() ? ctx.schema : s.name.schema;
  seq->name = s.name.name;
  if (!s.increment.empty() &&
      !OptionNumber(s.increment, "INCREMENT", 28, &seq->increment, error)) {
    return false;
  }
  if (seq->increment == 0) return SetError(error, 4002, "INCREMENT must be a non-zero integer");
  const bool ascending = seq->increment > 0;
  // NOMINVALUE and NOMAXVALUE are the defaults.
  seq->min_value = ascending ? 1 : SequenceMinDescending();
  seq->max_value = ascending ? SequenceMax() : -1;
  if (!s.min_value.empty() &&
      !OptionNumber(s.min_value, "MINVALUE", 27, &seq->min_value, error)) {
    return false;
  }
  if (!s.max_value.empty() &&
      !OptionNumber(s.max_value, "MAXVALUE", 27, &seq->max_value, error)) {
    return false;
  }
  seq->next = ascending ? seq->min_value : seq->max_value;
  if (!s.start.empty() && !OptionNumber(s.start, "START WITH", 27, &seq->next, error)) {
    return false;
  }
  if (!s.cache.empty() && !OptionNumber(s.cache, "CACHE", 27, &seq->cache, error)) return false;
  seq->cycle = s.cycle;
  seq->order = s.order;
  if (seq->min_value >= seq->max_value) {
    return SetError(error, 4004, "MINVALUE must be less than MAXVALUE");
  }
  SequenceNumber step = ascending ? seq->increment : -seq->increment;
  if (step >= seq->max_value - seq->min_value) {
    return SetError(error, 4005, "INCREMENT must be less than MAXVALUE minus MINVALUE");
  }
  if (seq->next < seq->min_value) {
    return SetError(error, 4006, "START WITH cannot be less than MINVALUE");
  }
  if (seq->next > seq->max_value) {
    return SetError(error, 4008, "START WITH cannot be more than MAXVALUE");
  }
  if (s.cycle && ascending && s.max_value.empty()) {
    return SetError(error, 4015, "ascending sequences that CYCLE must specify MAXVALUE");
  }
  if (s.cycle && !ascending && s.min_value.empty()) {
    return SetError(error, 4014, "descending sequences that CYCLE must specify MINVALUE");
  }
  if (s.no_cache) {
    seq->cache = 0;
  } else if (seq->cache <= 1) {
    return SetError(error, 4010, "the number of values to CACHE must be greater than 1");
  } else if (s.cycle &&
             seq->cache >= (seq->max_value - seq->min_value + step - 1) / step) {
    // Oracle: CACHE must be less than (MAXVALUE - MINVALUE) / ABS(INCREMENT).
    return SetError(error, 4013, "number to CACHE must be less than one cycle");
  }
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  if (ctx.db->catalog.Find(seq->schema, seq->name) != nullptr) {
    return SetError(error, 955, "name is already used by an existing object");
  }
  seq->id = ctx.db->next_sequence++;
  ctx.db->catalog.PutSequence(std::move(seq));
  return true;
}

bool DropSequence(const ExecContext& ctx, const DropSequenceStatement& s, SqlError* error) {
  const std::string schema = s.name.schema.empty() ? ctx.schema : s.name.schema;
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  if (ctx.db->catalog.FindSequence(schema, s.name.name) == nullptr) {
    return SetError(error, 2289, "sequence does not exist");
  }
  ctx.db->catalog.Remove(schema, s.name.name);
  return true;
}

bool TruncateTable(const ExecContext& ctx, const TruncateTableStatement& s, SqlError* error) {
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  TableRef ref;
  ref.name = s.name;
  // A view, type or sequence of that name is no table (decision SQ3).
  Table* table = nullptr;
  if (!ResolveTable(ctx, ref, &table, error)) return false;
  if (table->dual) return SetError(error, 1031, "insufficient privileges");
  if (!CheckTruncateTable(*table, error)) return false;
  // The session's own transaction ended before; rows another one holds stop the truncate.
  for (const auto& record : table->rows) {
    if (record->lock_txn != 0 && record->lock_txn != CurrentTxn(ctx)) return Busy(error);
  }
  for (const auto& record : table->rows) {
    table->UnindexRecord(record.get());
    record->dead = true;
  }
  table->rows.clear();
  table->dead_rows = 0;
  return true;
}

}  // namespace ocimem
