// The parser's expressions and conditions, by Oracle's precedence: unary + and -, then
// * and /, then binary +, - and || (left to right); comparisons, IS NULL, LIKE, BETWEEN
// and IN; then NOT, AND and OR.  A parenthesis holds either an expression or a condition;
// CheckCondition and CheckValue say afterwards which one a place needs.
#include <algorithm>
#include <string>
#include <string_view>

#include "sql/sql_functions.h"
#include "sql/sql_parser.h"
#include "sql/sql_time.h"
#include "values/date_format.h"

namespace ocimem {
namespace {

bool IsConditionKind(Expr::Kind k) {
  switch (k) {
    case Expr::Kind::kCompare:
    case Expr::Kind::kIsNull:
    case Expr::Kind::kIn:
    case Expr::Kind::kBetween:
    case Expr::Kind::kLike:
    case Expr::Kind::kAnd:
    case Expr::Kind::kOr:
    case Expr::Kind::kNot:
      return true;
    default:
      return false;
  }
}

bool IsAggregateName(const Token& t) {
  return t.IsWord("COUNT") || t.IsWord("MIN") || t.IsWord("MAX") || t.IsWord("SUM") ||
         t.IsWord("AVG");
}

// Functions written without parentheses.
bool IsBareFunction(const Token& t) {
  return t.IsWord("SYSDATE") || t.IsWord("CURRENT_DATE") || t.IsWord("SYSTIMESTAMP") ||
         t.IsWord("CURRENT_TIMESTAMP") || t.IsWord("LOCALTIMESTAMP");
}

}  // namespace

bool Parser::Deeper(size_t depth) {
  if (depth <= kMaxConstructorNesting) return true;
  return Fail(36, "maximum number of recursive SQL levels (" +
                      std::to_string(kMaxConstructorNesting) + ") exceeded");
}

bool Parser::MakeNode(Expr::Kind kind, std::string text, std::vector<Expr> args, Expr* out) {
  Expr node;
  node.kind = kind;
  node.text = std::move(text);
  node.offset = args.empty() ? 0 : args.front().offset;
  size_t depth = 0;
  for (const Expr& a : args) depth = std::max(depth, a.depth);
  node.depth = depth + 1;
  node.args = std::move(args);
  if (!Deeper(node.depth)) return false;
  *out = std::move(node);
  return true;
}

// `*out` becomes the first operand of a new node of `kind` (and `*second` its second).  The
// operands are moved, never copied, and the node's frame is off the recursion path.
bool Parser::Combine(Expr::Kind kind, const char* text, Expr* out, Expr* second) {
  std::vector<Expr> args;
  args.reserve(2);
  args.push_back(std::move(*out));
  if (second != nullptr) args.push_back(std::move(*second));
  return MakeNode(kind, text, std::move(args), out);
}

bool Parser::CheckCondition(const Expr& e) {
  if (!IsConditionKind(e.kind)) return Fail(920, "invalid relational operator");
  return true;
}

bool Parser::CheckValue(const Expr& e) {
  if (IsConditionKind(e.kind)) {
    return e.parenthesized ? Fail(907, "missing right parenthesis")
                           : Fail(933, "SQL command not properly ended");
  }
  return true;
}

bool Parser::ParseExpr(Expr* out) {
  if (!ParseAdditive(out)) return false;
  return CheckValue(*out);
}

bool Parser::ParseCondition(Expr* out) {
  if (!ParseOr(out)) return false;
  return CheckCondition(*out);
}

bool Parser::ParseOr(Expr* out) {
  if (!ParseAnd(out)) return false;
  while (AcceptWord("OR")) {
    Expr right;
    if (!CheckCondition(*out) || !ParseAnd(&right) || !CheckCondition(right)) return false;
    if (!Combine(Expr::Kind::kOr, "OR", out, &right)) return false;
  }
  return true;
}

bool Parser::ParseAnd(Expr* out) {
  if (!ParseNot(out)) return false;
  while (AcceptWord("AND")) {
    Expr right;
    if (!CheckCondition(*out) || !ParseNot(&right) || !CheckCondition(right)) return false;
    if (!Combine(Expr::Kind::kAnd, "AND", out, &right)) return false;
  }
  return true;
}

bool Parser::ParseNot(Expr* out) {
  if (!AcceptWord("NOT")) return ParsePredicate(out);
  Expr inner;
  if (!Deeper(++nesting_)) return false;
  bool ok = ParseNot(&inner);
  --nesting_;
  if (!ok || !CheckCondition(inner)) return false;
  *out = std::move(inner);
  return Combine(Expr::Kind::kNot, "NOT", out, nullptr);
}

bool Parser::ParsePredicate(Expr* out) {
  // Only the left operand lives in this frame, which every parenthesis level passes through.
  if (!ParseAdditive(out)) return false;
  return ParsePredicateRest(out);
}

// The comparison, IS NULL, IN, BETWEEN or LIKE after a left operand, which `*out` holds.
bool Parser::ParsePredicateRest(Expr* out) {
  Expr& left = *out;
  static const char* const kCompare[] = {"=", "<>", "!=", "^=", "<", "<=", ">", ">="};
  for (const char* op : kCompare) {
    if (!Peek().IsSymbol(op)) continue;
    Next();
    Expr right;
    if (!CheckValue(left) || !ParseAdditive(&right) || !CheckValue(right)) return false;
    bool different = std::string_view(op) == "!=" || std::string_view(op) == "^=";
    return Combine(Expr::Kind::kCompare, different ? "<>" : op, out, &right);
  }
  if (AcceptWord("IS")) {
    bool negated = AcceptWord("NOT");
    if (!AcceptWord("NULL")) return Fail(908, "missing NULL keyword");
    if (!CheckValue(left) || !Combine(Expr::Kind::kIsNull, "IS NULL", out, nullptr)) return false;
    out->negated = negated;
    return true;
  }
  bool negated = false;
  if (Peek().IsWord("NOT") &&
      (Peek(1).IsWord("IN") || Peek(1).IsWord("LIKE") || Peek(1).IsWord("BETWEEN"))) {
    Next();
    negated = true;
  }
  if (AcceptWord("IN")) {
    if (!CheckValue(left) || !ExpectSymbol("(")) return false;
    // decision EX7: subqueries are not taken.
    if (Peek().IsWord("SELECT")) return Fail(936, "missing expression");
    std::vector<Expr> args;
    args.push_back(std::move(left));
    do {
      Expr item;
      if (!ParseExpr(&item)) return false;
      args.push_back(std::move(item));
    } while (AcceptSymbol(","));
    if (!ExpectSymbol(")")) return false;
    if (!MakeNode(Expr::Kind::kIn, "IN", std::move(args), out)) return false;
    out->negated = negated;
    return true;
  }
  if (AcceptWord("BETWEEN")) {
    Expr low;
    Expr high;
    if (!CheckValue(left) || !ParseExpr(&low) || !ExpectWord("AND") || !ParseExpr(&high)) {
      return false;
    }
    std::vector<Expr> args;
    args.reserve(3);
    args.push_back(std::move(left));
    args.push_back(std::move(low));
    args.push_back(std::move(high));
    if (!MakeNode(Expr::Kind::kBetween, "BETWEEN", std::move(args), out)) return false;
    out->negated = negated;
    return true;
  }
  if (AcceptWord("LIKE")) {
    std::vector<Expr> args;
    Expr pattern;
    if (!CheckValue(left) || !ParseExpr(&pattern)) return false;
    args.push_back(std::move(left));
    args.push_back(std::move(pattern));
    if (AcceptWord("ESCAPE")) {
      Expr escape;
      if (!ParseExpr(&escape)) return false;
      args.push_back(std::move(escape));
    }
    if (!MakeNode(Expr::Kind::kLike, "LIKE", std::move(args), out)) return false;
    out->negated = negated;
    return true;
  }
  if (negated) return Fail(920, "invalid relational operator");
  return true;
}

bool Parser::ParseAdditive(Expr* out) {
  if (!ParseMultiplicative(out)) return false;
  for (;;) {
    std::string op;
    if (Peek().IsSymbol("+") || Peek().IsSymbol("-") || Peek().IsSymbol("||")) {
      op = Next().text;
    } else {
      return true;
    }
    Expr right;
    if (!CheckValue(*out) || !ParseMultiplicative(&right) || !CheckValue(right)) return false;
    if (!Combine(Expr::Kind::kBinary, op.c_str(), out, &right)) return false;
  }
}

bool Parser::ParseMultiplicative(Expr* out) {
  if (!ParseUnary(out)) return false;
  for (;;) {
    std::string op;
    if (Peek().IsSymbol("*") || Peek().IsSymbol("/")) {
      op = Next().text;
    } else {
      return true;
    }
    Expr right;
    if (!CheckValue(*out) || !ParseUnary(&right) || !CheckValue(right)) return false;
    if (!Combine(Expr::Kind::kBinary, op.c_str(), out, &right)) return false;
  }
}

bool Parser::ParseUnary(Expr* out) {
  if ((Peek().IsSymbol("-") || Peek().IsSymbol("+")) && Peek(1).kind != TokenKind::kNumber) {
    size_t offset = Peek().offset;
    std::string op = Next().text;
    Expr operand;
    if (!Deeper(++nesting_)) return false;
    bool ok = ParseUnary(&operand);
    --nesting_;
    if (!ok || !CheckValue(operand)) return false;
    *out = std::move(operand);
    if (!Combine(Expr::Kind::kUnary, op.c_str(), out, nullptr)) return false;
    out->offset = offset;
    return true;
  }
  return ParsePrimary(out);
}

bool Parser::ParsePrimary(Expr* out) {
  const Token& t = Peek();
  if (t.IsSymbol("(")) {
    size_t offset = Next().offset;
    if (Peek().IsWord("SELECT")) return Fail(936, "missing expression");  // decision EX7
    if (!Deeper(++nesting_)) return false;
    bool ok = ParseOr(out);
    --nesting_;
    if (!ok || !ExpectSymbol(")")) return false;
    out->parenthesized = true;
    out->depth += 1;
    if (!Deeper(out->depth)) return false;
    if (!IsConditionKind(out->kind)) out->offset = offset;
    return true;
  }
  if (t.IsWord("EXISTS") && Peek(1).IsSymbol("(")) {
    return Fail(936, "missing expression");  // decision EX7: no subqueries
  }
  if ((t.IsWord("DATE") || t.IsWord("TIMESTAMP") || t.IsWord("INTERVAL")) &&
      Peek(1).kind == TokenKind::kString) {
    return ParseTimeLiteral(out);
  }
  if (t.IsWord("EXTRACT") && Peek(1).IsSymbol("(")) return ParseExtract(out);
  if (t.IsWord("CAST") && Peek(1).IsSymbol("(")) return ParseCast(out);
  if (t.IsWord("ROWNUM")) {
    out->offset = t.offset;
    out->kind = Expr::Kind::kRownum;
    out->text = Next().text;
    return true;
  }
  if (t.IsWord("CASE")) return ParseCase(out);
  if (IsBareFunction(t)) {
    out->offset = t.offset;
    out->kind = Expr::Kind::kFunction;
    out->text = Next().text;
    return true;
  }
  if (t.kind == TokenKind::kIdentifier && Peek(1).IsSymbol("(") &&
      (IsAggregateName(t) || IsSqlFunction(t.text))) {
    return ParseFunctionCall(out);
  }
  return ParseValue(out);
}

// CAST(expr AS type)
bool Parser::ParseCast(Expr* out) {
  out->offset = Next().offset;
  Next();  // (
  out->kind = Expr::Kind::kFunction;
  out->text = "CAST";
  Expr source;
  if (!Deeper(++nesting_)) return false;
  bool ok = ParseExpr(&source);
  --nesting_;
  auto type = std::make_shared<DataTypeSpec>();
  if (!ok || !ExpectWord("AS") || !ParseDataType(type.get())) return false;
  out->cast = std::move(type);
  out->depth = source.depth + 1;
  out->args.push_back(std::move(source));
  return ExpectSymbol(")") && Deeper(out->depth);
}

// DATE 'text', TIMESTAMP 'text', INTERVAL 'text' start[(p[, f])] [TO end[(f)]]; the text is
// read here, so that a literal that is none fails the statement whatever rows it meets.
bool Parser::ParseTimeLiteral(Expr* out) {
  out->offset = Peek().offset;
  out->kind = Expr::Kind::kTimeLiteral;
  out->option = Next().text;
  out->text = Next().text;
  auto literal_error = [this](int ora) { return Fail(ora, values::DateErrorText(ora)); };
  if (out->option == "DATE") {
    values::DateTimeFields f;
    int ora = ReadDateLiteral(out->text, &f);
    return ora == 0 || literal_error(ora);
  }
  if (out->option == "TIMESTAMP") {
    values::DateTimeFields f;
    values::DateTimeValue zoned;
    bool has_zone = false;
    int ora = ReadTimestampLiteral(out->text, &f, &has_zone, &zoned);
    return ora == 0 || literal_error(ora);
  }
  auto field = [this]() {
    return Peek().kind == TokenKind::kIdentifier ? IntervalFieldOf(Peek().text) : -1;
  };
  auto type = std::make_shared<DataTypeSpec>();
  int start = field();
  if (start < 0) return Fail(30089, "missing or invalid <datetime field>");
  Next();
  type->base = start <= kMonthField ? DataTypeSpec::Base::kIntervalYm
                                    : DataTypeSpec::Base::kIntervalDs;
  type->leading_precision = 2;
  type->fraction_precision = 6;
  if (AcceptSymbol("(")) {
    long long v = 0;
    if (!ParseUnsigned(0, 9, 30088, "datetime/interval precision is out of range", &v)) {
      return false;
    }
    type->leading_precision = static_cast<ub1>(v);
    if (start == kSecondField && AcceptSymbol(",")) {
      if (!ParseUnsigned(0, 9, 30088, "datetime/interval precision is out of range", &v)) {
        return false;
      }
      type->fraction_precision = static_cast<ub1>(v);
    }
    if (!ExpectSymbol(")")) return false;
  }
  int end = start;
  out->option = IntervalFieldName(start);
  if (AcceptWord("TO")) {
    end = field();
    // The end field is a field of the same kind, no more significant (IV7).
    bool same_kind = (start <= kMonthField) == (end <= kMonthField);
    if (end < start || !same_kind || start == kSecondField) {
      return Fail(30089, "missing or invalid <datetime field>");
    }
    Next();
    out->option += std::string(" TO ") + IntervalFieldName(end);
    if (end == kSecondField && !ParseOptionalPrecision(6, &type->fraction_precision)) {
      return false;
    }
  }
  if (end <= kMonthField) type->fraction_precision = 0;
  values::IntervalValue v;
  int ora = ReadIntervalLiteral(out->text, start, end, type->leading_precision,
                                type->fraction_precision, &v);
  if (ora != 0) return literal_error(ora);
  out->cast = std::move(type);
  return true;
}

// EXTRACT(field FROM expr)
bool Parser::ParseExtract(Expr* out) {
  out->offset = Next().offset;
  Next();  // (
  out->kind = Expr::Kind::kFunction;
  out->text = "EXTRACT";
  static const char* const kFields[] = {"YEAR", "MONTH", "DAY", "HOUR", "MINUTE", "SECOND"};
  for (const char* f : kFields) {
    if (Peek().IsWord(f)) out->option = f;
  }
  if (out->option.empty()) return Fail(905, "missing keyword");
  Next();
  Expr source;
  if (!ExpectWord("FROM") || !ParseExpr(&source)) return false;
  out->depth = source.depth + 1;
  out->args.push_back(std::move(source));
  return ExpectSymbol(")") && Deeper(out->depth);
}

bool Parser::ParseCase(Expr* out) {
  out->offset = Next().offset;  // CASE
  out->kind = Expr::Kind::kCase;
  out->text = "CASE";
  if (!Deeper(++nesting_)) return false;
  struct Restore {
    size_t* n;
    ~Restore() { --*n; }
  } restore{&nesting_};
  if (!Peek().IsWord("WHEN")) {
    Expr operand;
    if (!ParseExpr(&operand)) return false;
    out->has_operand = true;
    out->args.push_back(std::move(operand));
  }
  if (!Peek().IsWord("WHEN")) return Fail(905, "missing keyword");
  while (AcceptWord("WHEN")) {
    Expr when;
    Expr then;
    if (out->has_operand ? !ParseExpr(&when) : !ParseCondition(&when)) return false;
    if (!ExpectWord("THEN") || !ParseExpr(&then)) return false;
    out->args.push_back(std::move(when));
    out->args.push_back(std::move(then));
  }
  if (AcceptWord("ELSE")) {
    Expr value;
    if (!ParseExpr(&value)) return false;
    out->has_else = true;
    out->args.push_back(std::move(value));
  }
  if (!ExpectWord("END")) return false;
  size_t depth = 0;
  for (const Expr& a : out->args) depth = std::max(depth, a.depth);
  out->depth = depth + 1;
  return Deeper(out->depth);
}

bool Parser::ParseFunctionCall(Expr* out) {
  const Token& name = Next();
  out->offset = name.offset;
  out->text = name.text;
  out->kind = IsAggregateName(name) ? Expr::Kind::kAggregate : Expr::Kind::kFunction;
  Next();  // (
  if (!Deeper(++nesting_)) return false;
  struct Restore {
    size_t* n;
    ~Restore() { --*n; }
  } restore{&nesting_};
  if (out->kind == Expr::Kind::kAggregate) {
    if (out->text == "COUNT" && AcceptSymbol("*")) {
      out->star = true;
      return ExpectSymbol(")");
    }
    if (AcceptWord("DISTINCT")) {
      out->distinct = true;
    } else {
      AcceptWord("ALL");
    }
  }
  if (out->text == "TRIM") {
    // TRIM([LEADING | TRAILING | BOTH] [char] FROM source) or TRIM(source)
    bool side = Peek().IsWord("LEADING") || Peek().IsWord("TRAILING") || Peek().IsWord("BOTH");
    if (side) out->option = Next().text;
    if (side && AcceptWord("FROM")) {
      Expr source;
      if (!ParseExpr(&source)) return false;
      out->args.push_back(std::move(source));
      return ExpectSymbol(")");
    }
    Expr first;
    if (!ParseExpr(&first)) return false;
    if (AcceptWord("FROM")) {
      Expr source;
      if (!ParseExpr(&source)) return false;
      out->args.push_back(std::move(first));
      out->args.push_back(std::move(source));
      out->star = true;  // the trimmed character was given
    } else {
      if (side) return Fail(905, "missing keyword");
      out->args.push_back(std::move(first));
    }
  } else if (!Peek().IsSymbol(")")) {
    do {
      Expr arg;
      if (!ParseExpr(&arg)) return false;
      out->args.push_back(std::move(arg));
    } while (AcceptSymbol(","));
  }
  if (!ExpectSymbol(")")) return false;
  // An aggregate takes one argument (COUNT(*) returned above).
  if (out->kind == Expr::Kind::kAggregate && out->args.size() != 1) {
    return Fail(909, "invalid number of arguments");
  }
  size_t depth = 0;
  for (const Expr& a : out->args) depth = std::max(depth, a.depth);
  out->depth = depth + 1;
  return Deeper(out->depth);
}

}  // namespace ocimem
