// Conditions: comparisons, IS NULL, IN, BETWEEN, LIKE, AND, OR, NOT under three-valued
// logic (a comparison with NULL is unknown; NOT unknown is unknown).
#include "sql/sql_condition.h"

#include "sql/sql_expr.h"

namespace ocimem {
namespace {

Truth FromBool(bool b) { return b ? Truth::kTrue : Truth::kFalse; }

Truth Negate(Truth t) {
  return t == Truth::kTrue ? Truth::kFalse : t == Truth::kFalse ? Truth::kTrue : Truth::kUnknown;
}

bool Compare(const std::string& op, const Value& a, const Value& b, Truth* out,
             SqlError* error) {
  if (IsNull(a) || IsNull(b)) {
    // A LOB or object is refused even beside NULL.
    int ignored = 0;
    const Value& other = IsNull(a) ? b : a;
    if (!IsNull(other) && !CompareValues(other, other, &ignored, error)) return false;
    *out = Truth::kUnknown;
    return true;
  }
  int c = 0;
  if (!CompareValues(a, b, &c, error)) return false;
  bool r = op == "="    ? c == 0
           : op == "<>" ? c != 0
           : op == "<"  ? c < 0
           : op == "<=" ? c <= 0
           : op == ">"  ? c > 0
                        : c >= 0;
  *out = FromBool(r);
  return true;
}

// LIKE with % (any run of characters) and _ (one character); `escape` (0: none) makes the
// next % or _ (or itself) literal.  Characters are UTF-8 sequences.
size_t CharLength(const std::string& s, size_t i) {
  unsigned char c = static_cast<unsigned char>(s[i]);
  size_t n = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
  return i + n > s.size() ? s.size() - i : n;
}

struct PatternItem {
  enum Kind { kChar, kOne, kAny } kind;
  std::string text;
};

bool CompilePattern(const std::string& p, const std::string& escape,
                    std::vector<PatternItem>* out, SqlError* error) {
  for (size_t i = 0; i < p.size();) {
    size_t n = CharLength(p, i);
    std::string c = p.substr(i, n);
    i += n;
    if (!escape.empty() && c == escape) {
      if (i >= p.size())
        return SetError(error, 1424, "missing or illegal character following the escape character");
      size_t m = CharLength(p, i);
      std::string next = p.substr(i, m);
      if (next != "%" && next != "_" && next != escape) {
        return SetError(error, 1424, "missing or illegal character following the escape character");
      }
      out->push_back({PatternItem::kChar, next});
      i += m;
    } else if (c == "%") {
      out->push_back({PatternItem::kAny, ""});
    } else if (c == "_") {
      out->push_back({PatternItem::kOne, ""});
    } else {
      out->push_back({PatternItem::kChar, c});
    }
  }
  return true;
}

bool Match(const std::vector<PatternItem>& p, size_t pi, const std::string& s, size_t si) {
  // Iterative with one backtrack point for the last %.
  size_t star_p = std::string::npos;
  size_t star_s = 0;
  while (si < s.size()) {
    if (pi < p.size() && p[pi].kind == PatternItem::kAny) {
      star_p = pi++;
      star_s = si;
      continue;
    }
    size_t n = CharLength(s, si);
    if (pi < p.size() && (p[pi].kind == PatternItem::kOne || (p[pi].kind == PatternItem::kChar &&
                                                              s.compare(si, n, p[pi].text) == 0))) {
      ++pi;
      si += n;
      continue;
    }
    if (star_p == std::string::npos) return false;
    pi = star_p + 1;
    star_s += CharLength(s, star_s);
    si = star_s;
  }
  while (pi < p.size() && p[pi].kind == PatternItem::kAny) ++pi;
  return pi == p.size();
}

bool Like(const ExecContext& ctx, const RowScope& scope, const Expr& e, Truth* out,
          SqlError* error) {
  Value v;
  Value pattern;
  Value escape;
  if (!EvalExpr(ctx, scope, e.args[0], &v, error) ||
      !EvalExpr(ctx, scope, e.args[1], &pattern, error)) {
    return false;
  }
  std::string esc;
  if (e.args.size() > 2) {
    if (!EvalExpr(ctx, scope, e.args[2], &escape, error)) return false;
    if (!IsNull(escape)) {
      if (!ToText(escape, &esc, error)) return false;
      if (esc.empty() || CharLength(esc, 0) != esc.size()) {
        return SetError(error, 1425, "escape character must be character string of length 1");
      }
    }
  }
  for (const Value* x : {&v, &pattern}) {
    if (!IsNull(*x) && x->kind != Value::Kind::kText && x->kind != Value::Kind::kNumber &&
        x->kind != Value::Kind::kDate && x->kind != Value::Kind::kRaw) {
      return Inconsistent("-", *x, error);
    }
  }
  if (IsNull(v) || IsNull(pattern) || (e.args.size() > 2 && IsNull(escape))) {
    *out = Truth::kUnknown;
    return true;
  }
  std::string s;
  std::string p;
  if (!ToText(v, &s, error) || !ToText(pattern, &p, error)) return false;
  std::vector<PatternItem> items;
  if (!CompilePattern(p, esc, &items, error)) return false;
  *out = FromBool(Match(items, 0, s, 0) != e.negated);
  return true;
}

}  // namespace

bool EvalCondition(const ExecContext& ctx, const RowScope& scope, const Expr& e, Truth* out,
                   SqlError* error) {
  switch (e.kind) {
    case Expr::Kind::kAnd:
    case Expr::Kind::kOr: {
      Truth a = Truth::kUnknown;
      Truth b = Truth::kUnknown;
      if (!EvalCondition(ctx, scope, e.args[0], &a, error)) return false;
      bool is_and = e.kind == Expr::Kind::kAnd;
      // FALSE AND x is FALSE, TRUE OR x is TRUE, whatever x is.
      if ((is_and && a == Truth::kFalse) || (!is_and && a == Truth::kTrue)) {
        *out = a;
        return true;
      }
      if (!EvalCondition(ctx, scope, e.args[1], &b, error)) return false;
      if (is_and) {
        *out = b == Truth::kFalse ? Truth::kFalse
               : a == Truth::kTrue && b == Truth::kTrue ? Truth::kTrue
                                                        : Truth::kUnknown;
      } else {
        *out = b == Truth::kTrue ? Truth::kTrue
               : a == Truth::kFalse && b == Truth::kFalse ? Truth::kFalse
                                                          : Truth::kUnknown;
      }
      return true;
    }
    case Expr::Kind::kNot: {
      Truth a = Truth::kUnknown;
      if (!EvalCondition(ctx, scope, e.args[0], &a, error)) return false;
      *out = Negate(a);
      return true;
    }
    case Expr::Kind::kCompare: {
      Value a;
      Value b;
      if (!EvalExpr(ctx, scope, e.args[0], &a, error) ||
          !EvalExpr(ctx, scope, e.args[1], &b, error)) {
        return false;
      }
      return Compare(e.text, a, b, out, error);
    }
    case Expr::Kind::kIsNull: {
      Value a;
      if (!EvalExpr(ctx, scope, e.args[0], &a, error)) return false;
      *out = FromBool(IsNull(a) != e.negated);
      return true;
    }
    case Expr::Kind::kIn: {
      Value a;
      if (!EvalExpr(ctx, scope, e.args[0], &a, error)) return false;
      // x IN (list) is x = a OR x = b ...; x NOT IN (list) is x <> a AND x <> b ...
      Truth result = Truth::kFalse;
      for (size_t i = 1; i < e.args.size(); ++i) {
        Value b;
        Truth t = Truth::kUnknown;
        if (!EvalExpr(ctx, scope, e.args[i], &b, error) || !Compare("=", a, b, &t, error)) {
          return false;
        }
        if (t == Truth::kTrue) {
          result = Truth::kTrue;
          break;
        }
        if (t == Truth::kUnknown) result = Truth::kUnknown;
      }
      *out = e.negated ? Negate(result) : result;
      return true;
    }
    case Expr::Kind::kBetween: {
      Value a;
      Value low;
      Value high;
      if (!EvalExpr(ctx, scope, e.args[0], &a, error) ||
          !EvalExpr(ctx, scope, e.args[1], &low, error) ||
          !EvalExpr(ctx, scope, e.args[2], &high, error)) {
        return false;
      }
      Truth x = Truth::kUnknown;
      Truth y = Truth::kUnknown;
      if (!Compare(">=", a, low, &x, error) || !Compare("<=", a, high, &y, error)) return false;
      Truth both = x == Truth::kFalse || y == Truth::kFalse ? Truth::kFalse
                   : x == Truth::kTrue && y == Truth::kTrue ? Truth::kTrue
                                                            : Truth::kUnknown;
      *out = e.negated ? Negate(both) : both;
      return true;
    }
    case Expr::Kind::kLike:
      return Like(ctx, scope, e, out, error);
    default:
      return SetError(error, 920, "invalid relational operator");
  }
}

bool EvaluateCondition(const ExecContext& ctx, const Table& table, const TableRef& ref,
                       const RowData& row, const Expr& condition, Truth* out, SqlError* error) {
  RowScope scope;
  scope.table = &table;
  scope.ref = &ref;
  scope.row = &row;
  return EvalCondition(ctx, scope, condition, out, error);
}

}  // namespace ocimem
