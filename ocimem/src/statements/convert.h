// Values moving between a program's buffers, SQL literals and the slots of rows: bind
// values are read into a Value, converted into a column's slot, and a slot is written out
// into a define's buffer, by the external-type rules of OCI.
#ifndef OCIMEM_SRC_STATEMENTS_CONVERT_H
#define OCIMEM_SRC_STATEMENTS_CONVERT_H

#include <cstdint>
#include <string>

#include "sql/sql_ast.h"
#include "sql/sql_lexer.h"
#include "statements/statement.h"
#include "objects/type.h"

namespace ocimem {

struct Value {
  enum class Kind {
    kNull,
    kNumber,
    kText,
    kRaw,
    kDate,
    kDateTime,
    kInterval,
    kLob,
    kEmptyClob,
    kEmptyBlob,
    kObject,
    kCollection,
  };
  Kind kind = Kind::kNull;
  OCINumber number{};
  std::string bytes;  // text or raw bytes
  OCIDate date{};
  const void* handle = nullptr;  // descriptor, locator, instance or collection
  ub4 desc_type = 0;             // of a datetime or interval descriptor
  const OCIInd* ind = nullptr;   // null struct of a bound object
  const OCIType* tdo = nullptr;  // of a bound object or collection
  bool fixed_char = false;       // text of a CHAR column or a literal: compared blank-padded
  // Precisions of a datetime or interval value's type, for its text (0: the default).
  ub1 leading_precision = 0;
  ub1 fraction_precision = 0;
};

// Where a value is stored, for the texts of ORA-01400 and ORA-12899.
struct Target {
  std::string schema;
  std::string table;
  std::string column;
};

// Reads element `row` of a bind (0 for a scalar bind).
bool ValueFromBind(const BindHandle& bind, size_t row, Value* out, SqlError* error);
bool ValueFromLiteral(const Expr& expr, Value* out, SqlError* error);

// Converts `v` into an initialised slot of type `t` and sets its null information.  LOB
// values are left sharing the source's LOB; the caller gives stored rows their own.
bool StoreValue(const Value& v, const ValueType& t, void* slot, OCIInd* ind, const Target& target,
                SqlError* error);

// Fits an object or collection value about to be stored to its type, as the server does:
// checks the string lengths and number precisions inside it (ORA-22814 for the first that
// does not fit) and blank-pads every CHAR(n) attribute and element to n.
bool FitNestedValues(const ValueType& t, void* slot, const OCIInd* ind, SqlError* error);

// The name Oracle prints for a type in ORA-00932.
std::string TypeName(const ValueType& t);
std::string ValueKindName(const Value& v);

// Writes a fetched value into element `row` of a scalar define; `rc` receives the column
// return code (0, 1405 NULL, 1406 truncated).  False with `error` for a conversion error.
bool FetchScalar(const DefineHandle& define, size_t row, const ValueType& t, const void* slot,
                 const OCIInd* ind, std::uint64_t txn, ub2* rc, SqlError* error);
struct OutSlot;
// The same into any output buffer (a define's row, a RETURNING bind, a callback's buffer).
bool FetchInto(ub2 dty, const OutSlot& out, const ValueType& t, const void* slot,
               const OCIInd* ind, std::uint64_t txn, ub2* rc, SqlError* error);
// True when a scalar define of type `dty` can receive values of type `t`.
bool DefineFits(ub2 dty, const ValueType& t);

// Parses a number as SQL writes it (sign, digits, point, exponent); false when it is none.
bool NumberFromText(const std::string& text, OCINumber* out);

// Text forms of values converted to character types: a number as TO_CHAR writes it, a date
// in the session's NLS_DATE_FORMAT (returns 0 when it cannot be shown), raw bytes as hex.
std::string NumberText(const OCINumber& n);
size_t DateMaskText(const OCIDate& d, std::string* out);
std::string HexText(const std::string& bytes);
// The descriptor type that a datetime or interval external type takes, or 0.
ub4 DescriptorTypeOfDty(ub2 dty);

}  // namespace ocimem

#endif  // OCIMEM_SRC_STATEMENTS_CONVERT_H
