#include "lob_table.h"

#include "oci_session.h"

namespace varnadp {
namespace {

constexpr char kTable[] = "VARNADP$LOB_ROWS";

const OraText* Text(const std::string& s) { return reinterpret_cast<const OraText*>(s.c_str()); }

// Frees a statement handle when it goes out of scope.
class Statement {
 public:
  explicit Statement(OciSession& session) : session_(session) {}
  ~Statement() {
    if (stmt_ != nullptr) OCIHandleFree(stmt_, OCI_HTYPE_STMT);
  }
  bool Prepare(const std::string& sql) {
    return session_.Check(OCIHandleAlloc(session_.env(), reinterpret_cast<void**>(&stmt_),
                                         OCI_HTYPE_STMT, 0, nullptr),
                          "OCIHandleAlloc") &&
           session_.Check(OCIStmtPrepare(stmt_, session_.err(), Text(sql),
                                         static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX, OCI_DEFAULT),
                          "OCIStmtPrepare");
  }
  OCIStmt* get() const { return stmt_; }

 private:
  OciSession& session_;
  OCIStmt* stmt_ = nullptr;
};

}  // namespace

bool HasLobs(const Shape& shape) {
  if (shape.def != nullptr && !shape.IsComplex() &&
      (shape.def->DataType == SQLT_CLOB || shape.def->DataType == SQLT_BLOB)) {
    return true;
  }
  for (const Shape& member : shape.members) {
    if (HasLobs(member)) return true;
  }
  return false;
}

bool HasBinary(const Shape& shape) {
  if (shape.def != nullptr && !shape.IsComplex() &&
      (shape.def->DataType == SQLT_BIN || shape.def->DataType == SQLT_LBI ||
       shape.def->DataType == SQLT_BLOB)) {
    return true;
  }
  for (const Shape& member : shape.members) {
    if (HasBinary(member)) return true;
  }
  return false;
}

LobTable::~LobTable() { Discard(); }

bool LobTable::IsNestedTable(const std::string& type_name, bool* nested) {
  OCIDescribe* describe = nullptr;
  if (!session_.Check(OCIHandleAlloc(session_.env(), reinterpret_cast<void**>(&describe),
                                     OCI_HTYPE_DESCRIBE, 0, nullptr),
                      "OCIHandleAlloc")) {
    return false;
  }
  void* param = nullptr;
  OCITypeCode code = 0;
  const bool ok =
      session_.Check(OCIDescribeAny(session_.svc(), session_.err(),
                                    const_cast<char*>(type_name.c_str()),
                                    static_cast<ub4>(type_name.size()), OCI_OTYPE_NAME, OCI_DEFAULT,
                                    OCI_PTYPE_TYPE, describe),
                     "OCIDescribeAny") &&
      session_.Check(OCIAttrGet(describe, OCI_HTYPE_DESCRIBE, &param, nullptr, OCI_ATTR_PARAM,
                                session_.err()),
                     "OCIAttrGet") &&
      session_.Check(OCIAttrGet(param, OCI_DTYPE_PARAM, &code, nullptr,
                                OCI_ATTR_COLLECTION_TYPECODE, session_.err()),
                     "OCIAttrGet");
  OCIHandleFree(describe, OCI_HTYPE_DESCRIBE);
  *nested = code == OCI_TYPECODE_TABLE;
  return ok;
}

bool LobTable::Create() {
  if (root_.kind == Shape::Kind::kCollection) {
    session_.set_error("the large objects of a top-level collection cannot be stored for the second pass");
    return false;
  }
  std::string sql = std::string("CREATE TABLE ") + kTable + " OF " + root_.type_name;
  int storage = 0;
  for (const Shape& member : root_.members) {
    if (member.kind != Shape::Kind::kCollection) continue;
    bool nested = false;
    if (!IsNestedTable(member.type_name, &nested)) return false;
    if (nested) {
      sql += " NESTED TABLE " + member.name + " STORE AS " + kTable + "_NT" + std::to_string(++storage);
    }
  }
  if (!session_.Execute(sql)) return false;
  select_for_update_ = std::string("SELECT VALUE(r) FROM ") + kTable + " r FOR UPDATE";
  return true;
}

bool LobTable::Insert(void* instance, OCIInd* ind) {
  Statement stmt(session_);
  if (!stmt.Prepare(std::string("INSERT INTO ") + kTable + " VALUES (:1)")) return false;
  OCIBind* bind = nullptr;
  void* value = instance;
  void* indicator = ind;
  return session_.Check(OCIBindByPos(stmt.get(), &bind, session_.err(), 1, nullptr, 0, SQLT_NTY,
                                     nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT),
                        "OCIBindByPos") &&
         session_.Check(OCIBindObject(bind, session_.err(), root_.tdo, &value, nullptr, &indicator,
                                      nullptr),
                        "OCIBindObject") &&
         session_.Check(OCIStmtExecute(session_.svc(), stmt.get(), session_.err(), 1, 0, nullptr,
                                       nullptr, OCI_DEFAULT),
                        "OCIStmtExecute");
}

bool LobTable::Fetch(void** instance, void** null_struct) {
  Statement stmt(session_);
  if (!stmt.Prepare(std::string("SELECT VALUE(r) FROM ") + kTable + " r")) return false;
  OCIDefine* define = nullptr;
  void* indicator = nullptr;
  if (!session_.Check(OCIDefineByPos(stmt.get(), &define, session_.err(), 1, nullptr, 0, SQLT_NTY,
                                     nullptr, nullptr, nullptr, OCI_DEFAULT),
                      "OCIDefineByPos") ||
      !session_.Check(OCIDefineObject(define, session_.err(), root_.tdo, &fetched_, nullptr,
                                      &indicator, nullptr),
                      "OCIDefineObject") ||
      !session_.Check(OCIStmtExecute(session_.svc(), stmt.get(), session_.err(), 1, 0, nullptr,
                                     nullptr, OCI_DEFAULT),
                      "OCIStmtExecute")) {
    return false;
  }
  *instance = fetched_;
  *null_struct = indicator;
  return true;
}

void LobTable::Discard() {
  if (fetched_ != nullptr) {
    OCIObjectFree(session_.env(), session_.err(), fetched_, OCI_OBJECTFREE_FORCE);
    fetched_ = nullptr;
  }
  if (session_.svc() != nullptr) OCITransRollback(session_.svc(), session_.err(), OCI_DEFAULT);
}

}  // namespace varnadp
