// CREATE TYPE and DROP TYPE.
#include <mutex>
#include <set>

#include "sql/sql_exec.h"

namespace ocimem {
namespace {

std::string SchemaOf(const ExecContext& ctx, const QualifiedName& name) {
  return name.schema.empty() ? ctx.schema : name.schema;
}

bool TypeNotFound(SqlError* error, const std::string& schema, const std::string& name) {
  return SetError(error, 22303, "type \"" + schema + "\".\"" + name + "\" not found");
}

}  // namespace

bool ResolveType(const ExecContext& ctx, const DataTypeSpec& decl, const std::string& own_schema,
                 const std::string& own_name, ValueType* out, SqlError* error) {
  using Base = DataTypeSpec::Base;
  ValueType& t = *out;
  t.length = decl.length;
  t.char_semantics = decl.char_semantics;
  t.precision = decl.has_precision ? decl.precision : 0;
  t.scale = decl.has_precision ? decl.scale : 0;
  switch (decl.base) {
    case Base::kVarchar2:
    case Base::kNVarchar2:
      t.kind = ValueKind::kString;
      t.typecode = OCI_TYPECODE_VARCHAR2;
      t.charset_form = decl.base == Base::kNVarchar2 ? SQLCS_NCHAR : SQLCS_IMPLICIT;
      return true;
    case Base::kChar:
    case Base::kNChar:
      t.kind = ValueKind::kString;
      t.typecode = OCI_TYPECODE_CHAR;
      t.charset_form = decl.base == Base::kNChar ? SQLCS_NCHAR : SQLCS_IMPLICIT;
      return true;
    case Base::kNumber:
      t.kind = ValueKind::kNumber;
      t.typecode = OCI_TYPECODE_NUMBER;
      if (!decl.has_precision) t.scale = -127;  // NUMBER without precision
      return true;
    case Base::kInteger:
      t.kind = ValueKind::kNumber;
      t.typecode = OCI_TYPECODE_INTEGER;
      return true;
    case Base::kSmallint:
      t.kind = ValueKind::kNumber;
      t.typecode = OCI_TYPECODE_SMALLINT;
      return true;
    case Base::kFloat:
      t.kind = ValueKind::kNumber;
      t.typecode = OCI_TYPECODE_FLOAT;
      return true;
    case Base::kDecimal:
      t.kind = ValueKind::kNumber;
      t.typecode = OCI_TYPECODE_DECIMAL;
      return true;
    case Base::kReal:
      t.kind = ValueKind::kNumber;
      t.typecode = OCI_TYPECODE_REAL;
      return true;
    case Base::kDoublePrecision:
      t.kind = ValueKind::kNumber;
      t.typecode = OCI_TYPECODE_DOUBLE;
      return true;
    case Base::kDate:
      t.kind = ValueKind::kDate;
      t.typecode = OCI_TYPECODE_DATE;
      return true;
    case Base::kTimestamp:
    case Base::kTimestampTz:
    case Base::kTimestampLtz:
      t.kind = ValueKind::kDateTime;
      t.fraction_precision = decl.fraction_precision;
      t.typecode = decl.base == Base::kTimestamp     ? OCI_TYPECODE_TIMESTAMP
                   : decl.base == Base::kTimestampTz ? OCI_TYPECODE_TIMESTAMP_TZ
                                                     : OCI_TYPECODE_TIMESTAMP_LTZ;
      t.descriptor_type = decl.base == Base::kTimestamp     ? OCI_DTYPE_TIMESTAMP
                          : decl.base == Base::kTimestampTz ? OCI_DTYPE_TIMESTAMP_TZ
                                                            : OCI_DTYPE_TIMESTAMP_LTZ;
      return true;
    case Base::kIntervalYm:
      t.kind = ValueKind::kInterval;
      t.typecode = OCI_TYPECODE_INTERVAL_YM;
      t.descriptor_type = OCI_DTYPE_INTERVAL_YM;
      t.leading_precision = decl.leading_precision;
      return true;
    case Base::kIntervalDs:
      t.kind = ValueKind::kInterval;
      t.typecode = OCI_TYPECODE_INTERVAL_DS;
      t.descriptor_type = OCI_DTYPE_INTERVAL_DS;
      t.leading_precision = decl.leading_precision;
      t.fraction_precision = decl.fraction_precision;
      return true;
    case Base::kRaw:
      t.kind = ValueKind::kRaw;
      t.typecode = OCI_TYPECODE_RAW;
      return true;
    case Base::kClob:
    case Base::kNClob:
      t.kind = ValueKind::kLob;
      t.typecode = OCI_TYPECODE_CLOB;
      t.descriptor_type = OCI_DTYPE_LOB;
      t.charset_form = decl.base == Base::kNClob ? SQLCS_NCHAR : SQLCS_IMPLICIT;
      return true;
    case Base::kBlob:
      t.kind = ValueKind::kLob;
      t.typecode = OCI_TYPECODE_BLOB;
      t.descriptor_type = OCI_DTYPE_LOB;
      return true;
    case Base::kBfile:
      t.kind = ValueKind::kLob;
      t.typecode = OCI_TYPECODE_BFILE;
      t.descriptor_type = OCI_DTYPE_FILE;
      return true;
    case Base::kRef: {
      t.kind = ValueKind::kRef;
      t.typecode = OCI_TYPECODE_REF;
      std::string schema = SchemaOf(ctx, decl.named);
      bool self = schema == own_schema && decl.named.name == own_name;
      if (!self) {
        std::shared_ptr<OCIType> target = ctx.db->catalog.FindType(schema, decl.named.name);
        if (!target || !target->IsObject()) return TypeNotFound(error, schema, decl.named.name);
      }
      t.ref_schema = schema;
      t.ref_name = decl.named.name;
      return true;
    }
    case Base::kNamed: {
      std::string schema = SchemaOf(ctx, decl.named);
      // A type cannot hold itself except through a REF.
      bool self = schema == own_schema && decl.named.name == own_name;
      std::shared_ptr<OCIType> named =
          self ? nullptr : ctx.db->catalog.FindType(schema, decl.named.name);
      if (!named) return TypeNotFound(error, schema, decl.named.name);
      t.named = named;
      if (named->IsObject()) {
        t.kind = ValueKind::kObject;
        t.typecode = OCI_TYPECODE_OBJECT;
      } else {
        t.kind = ValueKind::kCollection;
        t.typecode = OCI_TYPECODE_NAMEDCOLLECTION;
      }
      return true;
    }
  }
  return SetError(error, 902, "invalid datatype");
}

bool CreateType(const ExecContext& ctx, const CreateTypeStatement& s, SqlError* error) {
  std::string schema = SchemaOf(ctx, s.name);
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  Catalog& catalog = ctx.db->catalog;
  if (const CatalogEntry* existing = catalog.Find(schema, s.name.name)) {
    if (!s.or_replace || existing->kind != ObjectKind::kType) {
      return SetError(error, 955, "name is already used by an existing object");
    }
    if (!s.force && catalog.HasDependents(*existing->type)) {
      return SetError(error, 2303, "cannot drop or replace a type with type or table dependents");
    }
  }
  auto type = std::make_shared<OCIType>();
  type->schema = schema;
  type->name = s.name.name;
  if (s.form == CreateTypeStatement::Form::kObject) {
    type->typecode = OCI_TYPECODE_OBJECT;
    type->final = s.final;
    std::set<std::string> seen;
    for (const AttributeSpec& decl : s.attributes) {
      if (!seen.insert(decl.name).second) return SetError(error, 957, "duplicate column name");
      Attribute a;
      a.name = decl.name;
      if (!ResolveType(ctx, decl.type, schema, s.name.name, &a.type, error)) return false;
      type->attributes.push_back(std::move(a));
    }
    // A type whose instances could not be addressed.
    if (!type->Layout()) return SetError(error, 4030, "out of process memory");
  } else {
    type->typecode = OCI_TYPECODE_NAMEDCOLLECTION;
    type->collection_typecode = s.form == CreateTypeStatement::Form::kVarray
                                    ? OCI_TYPECODE_VARRAY
                                    : OCI_TYPECODE_TABLE;
    type->max_elements = s.limit;
    if (!ResolveType(ctx, s.element, schema, s.name.name, &type->element, error)) return false;
    type->Layout();
  }
  catalog.PutType(std::move(type));
  return true;
}

bool DropType(const ExecContext& ctx, const DropTypeStatement& s, SqlError* error) {
  std::string schema = SchemaOf(ctx, s.name);
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  Catalog& catalog = ctx.db->catalog;
  const CatalogEntry* existing = catalog.Find(schema, s.name.name);
  if (existing == nullptr || existing->kind != ObjectKind::kType) {
    std::string shown = s.name.schema.empty() ? s.name.name : s.name.schema + "." + s.name.name;
    return SetError(error, 4043, "object " + shown + " does not exist");
  }
  if (!s.force && catalog.HasDependents(*existing->type)) {
    return SetError(error, 2303, "cannot drop or replace a type with type or table dependents");
  }
  catalog.Remove(schema, s.name.name);
  return true;
}

}  // namespace ocimem
