#include "sql/sql_parser.h"

#include <cctype>
#include <cstdlib>

namespace ocimem {

std::string UpperBindName(const std::string& name) {
  std::string out;
  for (char c : name) out.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
  return out;
}


ub2 ClassifyStatement(std::string_view sql) {
  std::vector<Token> tokens;
  SqlError ignored;
  if (!Tokenize(sql, &tokens, &ignored) || tokens.empty()) return OCI_STMT_UNKNOWN;
  const Token& t = tokens.front();
  if (t.kind == TokenKind::kSymbol && t.text == "(" && tokens.size() > 1 &&
      tokens[1].IsWord("SELECT")) {
    return OCI_STMT_SELECT;
  }
  struct Word {
    const char* word;
    ub2 type;
  };
  static const Word kWords[] = {
      {"SELECT", OCI_STMT_SELECT}, {"WITH", OCI_STMT_SELECT},     {"UPDATE", OCI_STMT_UPDATE},
      {"DELETE", OCI_STMT_DELETE}, {"INSERT", OCI_STMT_INSERT},   {"CREATE", OCI_STMT_CREATE},
      {"DROP", OCI_STMT_DROP},     {"ALTER", OCI_STMT_ALTER},     {"BEGIN", OCI_STMT_BEGIN},
      {"DECLARE", OCI_STMT_DECLARE}, {"CALL", OCI_STMT_CALL},     {"MERGE", OCI_STMT_MERGE},
      {"ROLLBACK", OCI_STMT_ROLLBACK}, {"COMMIT", OCI_STMT_COMMIT},
  };
  for (const Word& w : kWords) {
    if (t.IsWord(w.word)) return w.type;
  }
  return OCI_STMT_UNKNOWN;
}

std::vector<std::string> Placeholders(std::string_view sql) {
  std::vector<Token> tokens;
  SqlError ignored;
  std::vector<std::string> names;
  if (!Tokenize(sql, &tokens, &ignored)) return names;
  for (const Token& t : tokens) {
    if (t.kind == TokenKind::kBind) names.push_back(UpperBindName(t.text));
  }
  return names;
}

const Token& Parser::Peek(size_t ahead) const {
  size_t i = pos_ + ahead;
  return i < tokens_.size() ? tokens_[i] : tokens_.back();
}

const Token& Parser::Next() {
  const Token& t = Peek();
  if (pos_ + 1 < tokens_.size()) ++pos_;
  return t;
}

bool Parser::AcceptWord(std::string_view upper) {
  if (!Peek().IsWord(upper)) return false;
  Next();
  return true;
}

bool Parser::AcceptSymbol(std::string_view symbol) {
  if (!Peek().IsSymbol(symbol)) return false;
  Next();
  return true;
}

bool Parser::Fail(int code, std::string message) {
  error_->code = code;
  error_->message = std::move(message);
  return false;
}

bool Parser::ExpectWord(std::string_view upper) {
  return AcceptWord(upper) || Fail(905, "missing keyword");
}

bool Parser::ExpectSymbol(std::string_view symbol) {
  if (AcceptSymbol(symbol)) return true;
  if (symbol == "(") return Fail(906, "missing left parenthesis");
  if (symbol == ")") return Fail(907, "missing right parenthesis");
  if (symbol == ",") return Fail(917, "missing comma");
  return Fail(905, "missing keyword");
}

bool Parser::ExpectEnd(int code) {
  if (Peek().kind == TokenKind::kEnd) return true;
  if (Peek().IsSymbol(";")) return Fail(911, "invalid character");
  return Fail(code, code == 922 ? "missing or invalid option" : "SQL command not properly ended");
}

bool Parser::ParseIdentifier(std::string* out) {
  const Token& t = Peek();
  if (!t.IsIdentifier()) {
    if (t.kind == TokenKind::kEnd || t.kind == TokenKind::kSymbol) {
      return Fail(904, ": invalid identifier");
    }
    return Fail(904, "\"" + t.text + "\": invalid identifier");
  }
  *out = Next().text;
  return true;
}

bool Parser::ParseQualifiedName(QualifiedName* out) {
  std::string first;
  if (!ParseIdentifier(&first)) return false;
  if (AcceptSymbol(".")) {
    out->schema = std::move(first);
    return ParseIdentifier(&out->name);
  }
  out->schema.clear();
  out->name = std::move(first);
  return true;
}

bool Parser::ParseUnsigned(long long min, long long max, int code, std::string_view message,
                           long long* out) {
  const Token& t = Peek();
  if (t.kind != TokenKind::kNumber ||
      t.text.find_first_not_of("0123456789") != std::string::npos) {
    return Fail(code, std::string(message));
  }
  long long v = t.text.size() > 18 ? max + 1 : std::atoll(t.text.c_str());
  if (v < min || v > max) return Fail(code, std::string(message));
  Next();
  *out = v;
  return true;
}

bool Parser::ParseSigned(long long min, long long max, int code, std::string_view message,
                         long long* out) {
  bool negative = AcceptSymbol("-");
  if (!negative) AcceptSymbol("+");
  long long v = 0;
  if (!ParseUnsigned(0, max > -min ? max : -min, code, message, &v)) return false;
  v = negative ? -v : v;
  if (v < min || v > max) return Fail(code, std::string(message));
  *out = v;
  return true;
}

bool Parser::ParseStatement(Statement* out, SqlError* error) {
  error_ = error;
  if (AcceptWord("CREATE")) {
    bool or_replace = false;
    if (AcceptWord("OR")) {
      if (!AcceptWord("REPLACE")) return Fail(922, "missing or invalid option");
      or_replace = true;
    }
    if (AcceptWord("TYPE")) {
      if (Peek().IsWord("BODY")) return Fail(900, "invalid SQL statement");
      return ParseCreateType(out, or_replace);
    }
    if (AcceptWord("VIEW")) return ParseCreateView(out, or_replace);
    if (!or_replace && AcceptWord("SEQUENCE")) return ParseCreateSequence(out);
    if (!or_replace && AcceptWord("TABLE")) return ParseCreateTable(out);
    if (!or_replace && AcceptWord("INDEX")) return ParseCreateIndex(out, false);
    if (!or_replace && Peek().IsWord("UNIQUE") && Peek(1).IsWord("INDEX")) {
      Next();
      Next();
      return ParseCreateIndex(out, true);
    }
    return Fail(901, "invalid CREATE command");
  }
  if (AcceptWord("DROP")) {
    if (AcceptWord("TYPE")) {
      if (Peek().IsWord("BODY")) return Fail(900, "invalid SQL statement");
      return ParseDropType(out);
    }
    if (AcceptWord("TABLE")) return ParseDropTable(out);
    if (AcceptWord("VIEW")) return ParseDropView(out);
    if (AcceptWord("SEQUENCE")) return ParseDropSequence(out);
    if (AcceptWord("INDEX")) return ParseDropIndex(out);
    return Fail(950, "invalid DROP option");
  }
  if (AcceptWord("ALTER")) {
    if (AcceptWord("TABLE")) return ParseAlterTable(out);
    if (!AcceptWord("SESSION")) return Fail(940, "invalid ALTER command");
    return ParseAlterSession(out);
  }
  if (AcceptWord("TRUNCATE")) return ParseTruncate(out);
  if (AcceptWord("COMMENT")) return ParseComment(out);
  if (AcceptWord("INSERT")) return ParseInsert(out);
  if (AcceptWord("SELECT")) return ParseSelect(out);
  if (AcceptWord("UPDATE")) return ParseUpdate(out);
  if (AcceptWord("DELETE")) return ParseDelete(out);
  if (AcceptWord("COMMIT") || AcceptWord("ROLLBACK")) {
    bool commit = tokens_[pos_ - 1].text == "COMMIT";
    AcceptWord("WORK");
    if (!ExpectEnd(933)) return false;
    if (commit) {
      *out = CommitStatement{};
    } else {
      *out = RollbackStatement{};
    }
    return true;
  }
  return Fail(900, "invalid SQL statement");
}

bool Parser::ParseAlterSession(Statement* out) {
  if (!AcceptWord("SET")) return Fail(922, "missing or invalid option");
  AlterSessionStatement s;
  do {
    AlterSessionStatement::Setting setting;
    if (!Peek().IsIdentifier()) return Fail(922, "missing or invalid option");
    setting.name = Next().text;
    if (!ExpectSymbol("=")) return false;
    const Token& value = Peek();
    if (value.kind == TokenKind::kString) {
      setting.quoted = true;
    } else if (!value.IsIdentifier()) {
      return Fail(922, "missing or invalid option");
    }
    setting.value = Next().text;
    s.settings.push_back(std::move(setting));
  } while (Peek().kind != TokenKind::kEnd && !Peek().IsSymbol(";"));
  if (!ExpectEnd(922)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseCreateType(Statement* out, bool or_replace) {
  CreateTypeStatement s;
  s.or_replace = or_replace;
  if (!ParseQualifiedName(&s.name)) return false;
  s.force = AcceptWord("FORCE");
  if (!AcceptWord("AS") && !AcceptWord("IS")) return Fail(905, "missing keyword");
  if (AcceptWord("OBJECT")) {
    s.form = CreateTypeStatement::Form::kObject;
    if (!ExpectSymbol("(")) return false;
    do {
      AttributeSpec a;
      if (!ParseIdentifier(&a.name)) return false;
      if (!ParseDataType(&a.type)) return false;
      s.attributes.push_back(std::move(a));
    } while (AcceptSymbol(","));
    if (!ExpectSymbol(")")) return false;
    for (;;) {
      if (AcceptWord("NOT")) {
        if (AcceptWord("FINAL")) {
          s.final = false;
        } else if (!AcceptWord("INSTANTIABLE")) {
          return Fail(922, "missing or invalid option");
        }
      } else if (AcceptWord("FINAL")) {
        s.final = true;
      } else if (!AcceptWord("INSTANTIABLE")) {
        break;
      }
    }
  } else if (AcceptWord("TABLE")) {
    s.form = CreateTypeStatement::Form::kTable;
    if (!ExpectWord("OF") || !ParseDataType(&s.element)) return false;
  } else if (AcceptWord("VARRAY") || (AcceptWord("VARYING") && ExpectWord("ARRAY"))) {
    s.form = CreateTypeStatement::Form::kVarray;
    long long limit = 0;
    if (!ExpectSymbol("(") ||
        !ParseUnsigned(1, 2147483647, 2017, "integer value required", &limit) ||
        !ExpectSymbol(")") || !ExpectWord("OF") || !ParseDataType(&s.element)) {
      return false;
    }
    s.limit = static_cast<sb4>(limit);
  } else {
    if (error_->code != 0) return false;
    return Fail(905, "missing keyword");
  }
  if (s.form != CreateTypeStatement::Form::kObject && AcceptWord("NOT")) {
    if (!ExpectWord("NULL")) return false;
  }
  // A stored type definition is PL/SQL-like text: a closing semicolon belongs to it.
  AcceptSymbol(";");
  if (!ExpectEnd(922)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseDropType(Statement* out) {
  DropTypeStatement s;
  if (!ParseQualifiedName(&s.name)) return false;
  if (AcceptWord("FORCE")) {
    s.force = true;
  } else {
    AcceptWord("VALIDATE");
  }
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseCharLength(DataTypeSpec* out, bool required, ub4 max) {
  if (!Peek().IsSymbol("(")) {
    if (required) return Fail(906, "missing left parenthesis");
    out->length = 1;
    return true;
  }
  Next();
  long long n = 0;
  const Token& t = Peek();
  if (t.kind != TokenKind::kNumber) return Fail(910, "specified length too long for its datatype");
  if (t.text == "0") return Fail(1723, "zero-length columns are not allowed");
  if (!ParseUnsigned(1, max, 910, "specified length too long for its datatype", &n)) return false;
  out->length = static_cast<ub4>(n);
  if (AcceptWord("CHAR")) {
    out->char_semantics = true;
  } else {
    AcceptWord("BYTE");
  }
  return ExpectSymbol(")");
}

bool Parser::ParseOptionalPrecision(ub1 default_value, ub1* out) {
  *out = default_value;
  if (!AcceptSymbol("(")) return true;
  long long v = 0;
  if (!ParseUnsigned(0, 9, 30088, "datetime/interval precision is out of range", &v)) return false;
  *out = static_cast<ub1>(v);
  return ExpectSymbol(")");
}

bool Parser::ParseDataType(DataTypeSpec* out) {
  using Base = DataTypeSpec::Base;
  const Token& t = Peek();
  if (!t.IsIdentifier()) return Fail(902, "invalid datatype");
  if (t.kind == TokenKind::kIdentifier) {
    if (AcceptWord("VARCHAR2") || AcceptWord("VARCHAR")) {
      out->base = Base::kVarchar2;
      return ParseCharLength(out, true, 4000);
    }
    if (AcceptWord("NVARCHAR2")) {
      out->base = Base::kNVarchar2;
      return ParseCharLength(out, true, 4000);
    }
    if (AcceptWord("CHAR") || AcceptWord("CHARACTER")) {
      out->base = Base::kChar;
      if (AcceptWord("VARYING")) {
        out->base = Base::kVarchar2;
        return ParseCharLength(out, true, 4000);
      }
      return ParseCharLength(out, false, 2000);
    }
    if (AcceptWord("NCHAR")) {
      out->base = Base::kNChar;
      return ParseCharLength(out, false, 2000);
    }
    if (AcceptWord("NUMBER") || AcceptWord("DECIMAL") || AcceptWord("DEC") ||
        AcceptWord("NUMERIC")) {
      bool is_number = tokens_[pos_ - 1].text == "NUMBER";
      out->base = is_number ? Base::kNumber : Base::kDecimal;
      if (!is_number) {
        out->precision = 38;
        out->scale = 0;
        out->has_precision = true;
      }
      if (!AcceptSymbol("(")) return true;
      long long p = 38;
      if (!AcceptSymbol("*") &&
          !ParseUnsigned(1, 38, 1727, "numeric precision specifier is out of range (1 to 38)",
                         &p)) {
        return false;
      }
      long long s = 0;
      if (AcceptSymbol(",") &&
          !ParseSigned(-84, 127, 1728, "numeric scale specifier is out of range (-84 to 127)",
                       &s)) {
        return false;
      }
      out->precision = static_cast<sb2>(p);
      out->scale = static_cast<sb1>(s);
      out->has_precision = true;
      return ExpectSymbol(")");
    }
    if (AcceptWord("INTEGER") || AcceptWord("INT")) {
      out->base = Base::kInteger;
      out->precision = 38;
      out->has_precision = true;
      return true;
    }
    if (AcceptWord("SMALLINT")) {
      out->base = Base::kSmallint;
      out->precision = 38;
      out->has_precision = true;
      return true;
    }
    if (AcceptWord("FLOAT")) {
      out->base = Base::kFloat;
      out->precision = 126;
      out->scale = -127;
      out->has_precision = true;
      if (!AcceptSymbol("(")) return true;
      long long b = 0;
      if (!ParseUnsigned(1, 126, 1724, "floating point precision is out of range (1 to 126)",
                         &b)) {
        return false;
      }
      out->precision = static_cast<sb2>(b);
      return ExpectSymbol(")");
    }
    if (AcceptWord("REAL")) {
      out->base = Base::kReal;
      out->precision = 63;
      out->scale = -127;
      out->has_precision = true;
      return true;
    }
    if (Peek().IsWord("DOUBLE") && Peek(1).IsWord("PRECISION")) {
      Next();
      Next();
      out->base = Base::kDoublePrecision;
      out->precision = 126;
      out->scale = -127;
      out->has_precision = true;
      return true;
    }
    if (AcceptWord("DATE")) {
      out->base = Base::kDate;
      return true;
    }
    if (AcceptWord("TIMESTAMP")) {
      out->base = Base::kTimestamp;
      if (!ParseOptionalPrecision(6, &out->fraction_precision)) return false;
      if (AcceptWord("WITH")) {
        if (AcceptWord("LOCAL")) {
          out->base = Base::kTimestampLtz;
        } else {
          out->base = Base::kTimestampTz;
        }
        if (!ExpectWord("TIME") || !ExpectWord("ZONE")) return false;
      }
      return true;
    }
    if (AcceptWord("INTERVAL")) {
      if (AcceptWord("YEAR")) {
        out->base = Base::kIntervalYm;
        out->fraction_precision = 0;
        return ParseOptionalPrecision(2, &out->leading_precision) && ExpectWord("TO") &&
               ExpectWord("MONTH");
      }
      if (AcceptWord("DAY")) {
        out->base = Base::kIntervalDs;
        return ParseOptionalPrecision(2, &out->leading_precision) && ExpectWord("TO") &&
               ExpectWord("SECOND") && ParseOptionalPrecision(6, &out->fraction_precision);
      }
      return Fail(905, "missing keyword");
    }
    if (AcceptWord("RAW")) {
      out->base = Base::kRaw;
      if (!ExpectSymbol("(")) return false;
      if (Peek().kind == TokenKind::kNumber && Peek().text == "0") {
        return Fail(1723, "zero-length columns are not allowed");
      }
      long long n = 0;
      if (!ParseUnsigned(1, 2000, 910, "specified length too long for its datatype", &n)) {
        return false;
      }
      out->length = static_cast<ub4>(n);
      return ExpectSymbol(")");
    }
    if (AcceptWord("CLOB")) {
      out->base = Base::kClob;
      return true;
    }
    if (AcceptWord("NCLOB")) {
      out->base = Base::kNClob;
      return true;
    }
    if (AcceptWord("BLOB")) {
      out->base = Base::kBlob;
      return true;
    }
    if (AcceptWord("BFILE")) {
      out->base = Base::kBfile;
      return true;
    }
    if (AcceptWord("REF")) {
      out->base = Base::kRef;
      return ParseQualifiedName(&out->named);
    }
    // Types an object attribute cannot have.
    static const char* const kRefused[] = {"LONG", "ROWID", "UROWID", "BOOLEAN",
                                           "BINARY_FLOAT", "BINARY_DOUBLE", "XMLTYPE"};
    for (const char* word : kRefused) {
      if (t.IsWord(word)) return Fail(902, "invalid datatype");
    }
  }
  out->base = Base::kNamed;
  return ParseQualifiedName(&out->named);
}

}  // namespace ocimem
