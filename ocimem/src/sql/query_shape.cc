#include "sql/query_shape.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "values/number_arith.h"

namespace ocimem {
namespace {

// Orders two non-NULL values of one select-list column; values that cannot be compared
// count as equal.
int Order(const Value& a, const Value& b) {
  int c = 0;
  SqlError ignored;
  if (!CompareValues(a, b, &c, &ignored)) return 0;
  return c;
}

// NULLs are equal to each other here (DISTINCT and GROUP BY put them together).
bool SameValue(const Value& a, const Value& b) {
  if (IsNull(a) || IsNull(b)) return IsNull(a) && IsNull(b);
  return Order(a, b) == 0;
}

// Text that is equal for values DISTINCT and GROUP BY put together (NULLs included).
void AppendKey(const Value& v, std::string* out) {
  std::string part;
  switch (v.kind) {
    case Value::Kind::kNull:
      part = "N";
      break;
    case Value::Kind::kNumber:
      part = "#" + std::string(reinterpret_cast<const char*>(v.number.OCINumberPart),
                               v.number.OCINumberPart[0] + 1u);
      break;
    case Value::Kind::kText: {
      part = "T" + v.bytes;
      // CHAR values compare blank-padded: trailing blanks make no difference.
      if (v.fixed_char) part.erase(part.find_last_not_of(' ') + 1);
      break;
    }
    case Value::Kind::kRaw:
      part = "R" + v.bytes;
      break;
    case Value::Kind::kDate:
      part = "D" + std::string(reinterpret_cast<const char*>(&v.date), sizeof v.date);
      break;
    default: {
      // Datetimes and intervals: ordered through CompareValues; one key per value.
      part = "?" + std::to_string(reinterpret_cast<std::uintptr_t>(v.handle));
      break;
    }
  }
  *out += std::to_string(part.size()) + ':' + part;
}

bool Keyed(const Value& v) {
  return v.kind != Value::Kind::kDateTime && v.kind != Value::Kind::kInterval;
}

bool Aggregate(const ExecContext& ctx, Table* table, const TableRef& ref, const Expr& e,
               const std::vector<const Found*>& rows, Value* out, SqlError* error) {
  *out = Value();
  using values::Decimal;
  if (e.star) {
    Decimal d;
    values::DecimalFromUnsigned(rows.size(), &d);
    return NumberValue(d, out, error);
  }
  std::vector<Value> seen;
  for (const Found* f : rows) {
    RowScope scope;
    scope.table = table;
    scope.ref = &ref;
    scope.row = f->row.get();
    scope.rownum = f->rownum;
    Value v;
    if (!EvalExpr(ctx, scope, e.args[0], &v, error)) return false;
    if (IsNull(v)) continue;  // aggregates leave NULLs out
    if (e.distinct && std::any_of(seen.begin(), seen.end(),
                                  [&](const Value& s) { return SameValue(s, v); })) {
      continue;
    }
    if (e.text != "MIN" && e.text != "MAX" && e.text != "COUNT") {
      Decimal check;
      if (!ToNumber(v, &check, error)) return false;
    } else if (e.text != "COUNT") {
      int ignored = 0;
      if (!CompareValues(v, v, &ignored, error)) return false;
    }
    seen.push_back(std::move(v));
  }
  if (e.text == "COUNT") {
    Decimal d;
    values::DecimalFromUnsigned(seen.size(), &d);
    return NumberValue(d, out, error);
  }
  if (seen.empty()) return true;
  if (e.text == "MIN" || e.text == "MAX") {
    size_t best = 0;
    for (size_t i = 1; i < seen.size(); ++i) {
      int c = 0;
      if (!CompareValues(seen[i], seen[best], &c, error)) return false;
      if ((e.text == "MIN" && c < 0) || (e.text == "MAX" && c > 0)) best = i;
    }
    *out = seen[best];
    return true;
  }
  Decimal sum;
  for (const Value& v : seen) {
    Decimal d;
    if (!ToNumber(v, &d, error)) return false;
    sum = values::AddDecimals(sum, d);
  }
  if (e.text == "AVG") {
    Decimal count;
    values::DecimalFromUnsigned(seen.size(), &count);
    Decimal avg;
    values::DivideDecimals(sum, count, &avg);
    sum = avg;
  }
  return NumberValue(sum, out, error);
}

}  // namespace

bool SameExpr(const Expr& a, const Expr& b) {
  if (a.kind != b.kind || a.text != b.text || a.qualifier != b.qualifier ||
      a.negated != b.negated || a.distinct != b.distinct || a.star != b.star ||
      a.option != b.option || a.has_operand != b.has_operand || a.has_else != b.has_else ||
      a.type.schema != b.type.schema || a.type.name != b.type.name ||
      a.path != b.path || a.args.size() != b.args.size()) {
    return false;
  }
  if (a.kind == Expr::Kind::kBind && a.bind != b.bind) return false;
  if ((a.cast == nullptr) != (b.cast == nullptr)) return false;
  if (a.cast != nullptr &&
      (a.cast->base != b.cast->base || a.cast->length != b.cast->length ||
       a.cast->precision != b.cast->precision || a.cast->scale != b.cast->scale ||
       a.cast->char_semantics != b.cast->char_semantics)) {
    return false;
  }
  for (size_t i = 0; i < a.args.size(); ++i) {
    if (!SameExpr(a.args[i], b.args[i])) return false;
  }
  return true;
}

bool CheckGrouped(const Expr& e, const std::vector<Expr>& group_by, SqlError* error) {
  if (e.kind == Expr::Kind::kAggregate) {
    for (const Expr& a : e.args) {
      if (!HasAggregate(a)) continue;
      if (group_by.empty()) {
        return SetError(error, 978, "nested group function without GROUP BY");
      }
      // decision EX5: one aggregate over another's groups is not taken.
      return SetError(error, 935, "group function is nested too deeply");
    }
    return true;
  }
  for (const Expr& g : group_by) {
    if (SameExpr(e, g)) return true;
  }
  if (e.kind == Expr::Kind::kColumn || e.kind == Expr::Kind::kRownum ||
      e.kind == Expr::Kind::kValue) {
    if (group_by.empty()) return SetError(error, 937, "not a single-group group function");
    return SetError(error, 979, "not a GROUP BY expression");
  }
  for (const Expr& a : e.args) {
    if (!CheckGrouped(a, group_by, error)) return false;
  }
  return true;
}

void CollectAggregates(const Expr& e, std::vector<const Expr*>* out) {
  if (e.kind == Expr::Kind::kAggregate) {
    out->push_back(&e);
    return;
  }
  for (const Expr& a : e.args) CollectAggregates(a, out);
}

bool GroupRows(const ExecContext& ctx, Table* table, const TableRef& ref,
               const SelectStatement& s, const std::vector<const Expr*>& aggregates, const std::vector<Found>& found,
               std::vector<ResultRow>* out, SqlError* error) {
  struct Group {
    std::vector<Value> key;
    std::vector<const Found*> rows;
  };
  std::vector<Group> groups;
  std::unordered_map<std::string, size_t> index;  // key text of a group: its position
  if (s.group_by.empty()) groups.emplace_back();
  for (const Found& f : found) {
    if (s.group_by.empty()) {
      groups[0].rows.push_back(&f);
      continue;
    }
    RowScope scope;
    scope.table = table;
    scope.ref = &ref;
    scope.row = f.row.get();
    scope.rownum = f.rownum;
    std::vector<Value> key(s.group_by.size());
    for (size_t i = 0; i < key.size(); ++i) {
      if (!EvalExpr(ctx, scope, s.group_by[i], &key[i], error)) return false;
    }
    size_t at = groups.size();
    if (std::all_of(key.begin(), key.end(), Keyed)) {
      std::string text;
      for (const Value& v : key) AppendKey(v, &text);
      auto hit = index.emplace(std::move(text), groups.size());
      at = hit.first->second;
    } else {
      auto same = [&](const Group& g) {
        for (size_t i = 0; i < key.size(); ++i) {
          if (!SameValue(g.key[i], key[i])) return false;
        }
        return true;
      };
      at = static_cast<size_t>(std::find_if(groups.begin(), groups.end(), same) - groups.begin());
    }
    if (at == groups.size()) groups.push_back({std::move(key), {}});
    groups[at].rows.push_back(&f);
  }
  for (const Group& g : groups) {
    ResultRow r;
    if (!g.rows.empty()) {
      r.base = g.rows.front()->row;
      r.rownum = g.rows.front()->rownum;
    }
    for (const Expr* a : aggregates) {
      Value v;
      if (!Aggregate(ctx, table, ref, *a, g.rows, &v, error)) return false;
      r.aggregates[a] = std::move(v);
    }
    if (!s.having.empty()) {
      RowScope scope;
      scope.table = table;
      scope.ref = &ref;
      scope.row = r.base.get();
      scope.aggregates = &r.aggregates;
      Truth t = Truth::kUnknown;
      if (!EvalCondition(ctx, scope, s.having[0].expr, &t, error)) return false;
      if (t != Truth::kTrue) continue;
    }
    out->push_back(std::move(r));
  }
  return true;
}

void RemoveDuplicates(std::vector<ResultRow>* rows) {
  std::vector<ResultRow> kept;
  std::unordered_set<std::string> seen;
  for (ResultRow& r : *rows) {
    bool keyed = std::all_of(r.items.begin(), r.items.end(), Keyed);
    bool dup = false;
    if (keyed) {
      std::string key;
      for (const Value& v : r.items) AppendKey(v, &key);
      dup = !seen.insert(key).second;
    } else {
      dup = std::any_of(kept.begin(), kept.end(), [&](const ResultRow& k) {
        for (size_t i = 0; i < r.items.size(); ++i) {
          if (!SameValue(k.items[i], r.items[i])) return false;
        }
        return true;
      });
    }
    if (!dup) kept.push_back(std::move(r));
  }
  *rows = std::move(kept);
}

void SortRows(const std::vector<OrderItem>& order, std::vector<ResultRow>* rows) {
  std::stable_sort(rows->begin(), rows->end(), [&](const ResultRow& a, const ResultRow& b) {
    for (size_t i = 0; i < order.size(); ++i) {
      const Value& x = a.keys[i];
      const Value& y = b.keys[i];
      bool nx = IsNull(x);
      bool ny = IsNull(y);
      if (nx && ny) continue;
      // NULLs sort as the largest value unless NULLS FIRST or LAST says otherwise.
      bool nulls_first = order[i].nulls == 0 ? order[i].descending : order[i].nulls > 0;
      if (nx || ny) return nx ? nulls_first : !nulls_first;
      int c = Order(x, y);
      if (c == 0) continue;
      return order[i].descending ? c > 0 : c < 0;
    }
    return false;
  });
}

}  // namespace ocimem
