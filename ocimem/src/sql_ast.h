// Parsed SQL statements.  Each statement form is one struct; Statement holds whichever
// was parsed.  Names are kept as stored (unquoted ones already upper-cased).
#ifndef OCIMEM_SRC_SQL_AST_H
#define OCIMEM_SRC_SQL_AST_H

#include <string>
#include <variant>
#include <vector>

#include "oci.h"

namespace ocimem {

struct QualifiedName {
  std::string schema;  // empty: the session's schema
  std::string name;
};

// A data type as written in DDL, before named types are looked up.
struct DataTypeSpec {
  enum class Base {
    kVarchar2,
    kChar,
    kNVarchar2,
    kNChar,
    kNumber,
    kInteger,
    kSmallint,
    kFloat,
    kDecimal,
    kReal,
    kDoublePrecision,
    kDate,
    kTimestamp,
    kTimestampTz,
    kTimestampLtz,
    kIntervalYm,
    kIntervalDs,
    kRaw,
    kClob,
    kNClob,
    kBlob,
    kBfile,
    kRef,
    kNamed,  // an object or collection type
  };
  Base base = Base::kNumber;
  ub4 length = 0;
  bool char_semantics = false;
  sb2 precision = 0;
  sb1 scale = 0;
  bool has_precision = false;
  ub1 leading_precision = 2;
  ub1 fraction_precision = 6;
  QualifiedName named;  // kNamed and kRef
};

struct AttributeSpec {
  std::string name;
  DataTypeSpec type;
};

struct CreateTypeStatement {
  enum class Form { kObject, kTable, kVarray };
  bool or_replace = false;
  bool force = false;
  QualifiedName name;
  Form form = Form::kObject;
  std::vector<AttributeSpec> attributes;  // kObject
  bool final = true;
  DataTypeSpec element;  // kTable, kVarray
  sb4 limit = 0;         // kVarray
};

struct DropTypeStatement {
  QualifiedName name;
  bool force = false;
};

using Statement = std::variant<CreateTypeStatement, DropTypeStatement>;

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_AST_H
