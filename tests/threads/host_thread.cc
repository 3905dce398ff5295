#include "host_thread.h"

#include <coldef.h>
#include <host/kel.h>

#include <cstring>

namespace threads_test {

const char kUser[] = "scott";
const char kSchema[] = "SCOTT";
const char kPassword[] = "tiger";

namespace {

const OraText* Text(const char* s) { return reinterpret_cast<const OraText*>(s); }
ub4 Len(const char* s) { return static_cast<ub4>(std::strlen(s)); }

// A new instance with its null structure.
struct Object {
  void* instance = nullptr;
  OCIInd* ind = nullptr;
  OCIType* tdo = nullptr;
};

// Sets and reads the attributes of one instance, reached by paths of names.
class Builder {
 public:
  Builder(Connection* conn, const Object& obj) : conn_(conn), obj_(obj) {}

  void* Slot(std::initializer_list<const char*> path) {
    Names names(path);
    OCIInd ind = 0;
    void* null_struct = nullptr;
    void* value = nullptr;
    OCIType* tdo = nullptr;
    if (!conn_->Check(OCIObjectGetAttr(conn_->env(), conn_->err(), obj_.instance, obj_.ind,
                                       obj_.tdo, names.text.data(), names.length.data(),
                                       static_cast<ub4>(path.size()), nullptr, 0, &ind,
                                       &null_struct, &value, &tdo),
                      "OCIObjectGetAttr")) {
      return nullptr;
    }
    return value;
  }
  // Marks every attribute of the path present, embedded objects included.
  bool Mark(std::initializer_list<const char*> path) {
    Names names(path);
    for (ub4 depth = 1; depth <= path.size(); ++depth) {
      if (!conn_->Check(OCIObjectSetAttr(conn_->env(), conn_->err(), obj_.instance, obj_.ind,
                                         obj_.tdo, names.text.data(), names.length.data(), depth,
                                         nullptr, 0, OCI_IND_NOTNULL, nullptr, nullptr),
                        "OCIObjectSetAttr")) {
        return false;
      }
    }
    return true;
  }
  bool SetText(std::initializer_list<const char*> path, const std::string& text) {
    auto* slot = static_cast<OCIString**>(Slot(path));
    return slot != nullptr &&
           conn_->Check(OCIStringAssignText(conn_->env(), conn_->err(), Text(text.c_str()),
                                            static_cast<ub4>(text.size()), slot),
                        "OCIStringAssignText") &&
           Mark(path);
  }
  bool SetNumber(std::initializer_list<const char*> path, const std::string& text) {
    auto* slot = static_cast<OCINumber*>(Slot(path));
    return slot != nullptr && NumberFromText(conn_, text, slot) && Mark(path);
  }
  bool SetDate(std::initializer_list<const char*> path, const std::string& text) {
    const char* mask = "YYYY-MM-DD HH24:MI:SS";
    auto* slot = static_cast<OCIDate*>(Slot(path));
    return slot != nullptr &&
           conn_->Check(OCIDateFromText(conn_->err(), Text(text.c_str()),
                                        static_cast<ub4>(text.size()), Text(mask),
                                        static_cast<ub1>(Len(mask)), nullptr, 0, slot),
                        "OCIDateFromText") &&
           Mark(path);
  }
  // Gives a LOB attribute a temporary LOB holding `bytes`.
  bool SetLob(const char* name, ub1 lob_type, const std::string& bytes) {
    auto* slot = static_cast<OCILobLocator**>(Slot({name}));
    if (slot == nullptr) return false;
    if (!conn_->Check(OCILobCreateTemporary(conn_->svc(), conn_->err(), *slot, 0, SQLCS_IMPLICIT,
                                            lob_type, FALSE, OCI_DURATION_SESSION),
                      "OCILobCreateTemporary")) {
      return false;
    }
    ub4 amount = static_cast<ub4>(bytes.size());
    return conn_->Check(OCILobWrite(conn_->svc(), conn_->err(), *slot, &amount, 1,
                                    const_cast<char*>(bytes.data()), amount, OCI_ONE_PIECE,
                                    nullptr, nullptr, 0, SQLCS_IMPLICIT),
                        "OCILobWrite") &&
           Mark({name});
  }
  bool FreeLob(const char* name) {
    auto* slot = static_cast<OCILobLocator**>(Slot({name}));
    if (slot == nullptr) return false;
    boolean temporary = FALSE;
    if (!conn_->Check(OCILobIsTemporary(conn_->env(), conn_->err(), *slot, &temporary),
                      "OCILobIsTemporary")) {
      return false;
    }
    return !temporary || conn_->Check(OCILobFreeTemporary(conn_->svc(), conn_->err(), *slot),
                                      "OCILobFreeTemporary");
  }

  // A number from its text, through a mask of the text's own shape.
  static bool NumberFromText(Connection* conn, const std::string& text, OCINumber* number) {
    std::string mask;
    for (char c : text) mask += (c >= '0' && c <= '9') ? '9' : c;
    return conn->Check(OCINumberFromText(conn->err(), Text(text.c_str()),
                                         static_cast<ub4>(text.size()), Text(mask.c_str()),
                                         static_cast<ub4>(mask.size()), nullptr, 0, number),
                       "OCINumberFromText");
  }

 private:
  struct Names {
    explicit Names(std::initializer_list<const char*> path) {
      for (const char* p : path) {
        text.push_back(Text(p));
        length.push_back(Len(p));
      }
    }
    std::vector<const OraText*> text;
    std::vector<ub4> length;
  };

  Connection* conn_;
  Object obj_;
};

bool NewObject(Connection* conn, const char* type, Object* obj) {
  obj->tdo = conn->Type(type);
  if (obj->tdo == nullptr ||
      !conn->Check(OCIObjectNew(conn->env(), conn->err(), conn->svc(), OCI_TYPECODE_OBJECT,
                                obj->tdo, nullptr, OCI_DURATION_DEFAULT, TRUE, &obj->instance),
                   "OCIObjectNew") ||
      !conn->Check(OCIObjectGetInd(conn->env(), conn->err(), obj->instance,
                                   reinterpret_cast<void**>(&obj->ind)),
                   "OCIObjectGetInd")) {
    return false;
  }
  obj->ind[0] = OCI_IND_NOTNULL;
  return true;
}

// The texts and bytes of order `id`: every special character of the stream format
// appears, and the sizes of the collections and large objects change from one id to the
// next.
std::string NoteOf(int id) {
  std::string note = "note " + std::to_string(id) + " |!][\r\n";
  for (int i = 0; i < 40 + (id * 37) % 900; ++i) note += static_cast<char>('a' + (id + i) % 26);
  return note;
}
std::string ImageOf(int id) {
  std::string image("\0|!]\xff", 5);
  for (int i = 0; i < (id * 13) % 300; ++i) image += static_cast<char>((id * 7 + i * 31) & 0xff);
  return image;
}

// Builds order `id` through OCI calls.
bool BuildOrder(Connection* conn, int id, Object* order) {
  if (!NewObject(conn, "W_ORDER_T", order)) return false;
  Builder b(conn, *order);
  const std::string n = std::to_string(id);
  if (!b.SetNumber({"ID"}, n) || !b.SetText({"NAME"}, "order|" + n + "!x[" + n + "]") ||
      !b.SetDate({"MADE"}, "2024-0" + std::to_string(1 + id % 9) + "-1" +
                                std::to_string(id % 10) + " 12:34:" +
                                std::to_string(10 + id % 50)) ||
      !b.SetText({"ADDR", "STREET"}, n + " Main St|") ||
      !b.SetText({"ADDR", "CITY"}, id % 3 == 0 ? "Oslo" : "Lund!")) {
    return false;
  }
  if (!b.Mark({"PARTS"}) || !b.Mark({"TAGS"})) return false;
  OCIColl* parts = *static_cast<OCIColl**>(b.Slot({"PARTS"}));
  for (int k = 0; k < 1 + id % 4; ++k) {
    Object part;
    if (!NewObject(conn, "W_PART_T", &part)) return false;
    Builder pb(conn, part);
    const bool ok = pb.SetText({"CODE"}, "P" + n + "-" + std::to_string(k) + "|") &&
                    pb.SetNumber({"QTY"}, std::to_string((id * 7 + k) % 1000) + ".25") &&
                    conn->Check(OCICollAppend(conn->env(), conn->err(), part.instance, part.ind,
                                              parts),
                                "OCICollAppend");
    const bool freed = conn->Check(
        OCIObjectFree(conn->env(), conn->err(), part.instance, OCI_OBJECTFREE_FORCE),
        "OCIObjectFree");
    if (!ok || !freed) return false;
  }
  OCIColl* tags = *static_cast<OCIColl**>(b.Slot({"TAGS"}));
  for (int k = 0; k < id % 5; ++k) {
    OCIString* tag = nullptr;
    const std::string text = "t" + std::to_string(k) + "]";
    OCIInd ind = k == 1 ? OCI_IND_NULL : OCI_IND_NOTNULL;
    if (!conn->Check(OCIStringAssignText(conn->env(), conn->err(), Text(text.c_str()),
                                         static_cast<ub4>(text.size()), &tag),
                     "OCIStringAssignText") ||
        !conn->Check(OCICollAppend(conn->env(), conn->err(), tag, &ind, tags), "OCICollAppend") ||
        !conn->Check(OCIStringResize(conn->env(), conn->err(), 0, &tag), "OCIStringResize")) {
      return false;
    }
  }
  if (!b.SetLob("NOTE", OCI_TEMP_CLOB, NoteOf(id))) return false;
  // Every fifth order has no image: a null BLOB.
  return id % 5 == 0 || b.SetLob("IMG", OCI_TEMP_BLOB, ImageOf(id));
}

bool FreeOrder(Connection* conn, const Object& order) {
  Builder b(conn, order);
  const bool lobs = b.FreeLob("NOTE") && b.FreeLob("IMG");
  return conn->Check(OCIObjectFree(conn->env(), conn->err(), order.instance,
                                   OCI_OBJECTFREE_FORCE),
                     "OCIObjectFree") &&
         lobs;
}

// Writes an instance with the context; the stream's text, or nothing on failure.
bool WriteObject(Connection* conn, VARNADP* ctx, CKelTrace* trace, Column_Def* defs,
                 void* instance, OCIInd* ind, OCIType* tdo, std::string* out) {
  CKelStream stream(0, nullptr, nullptr, 0);
  Column_Def* list = defs;
  const int rc = adpProcessObject(ctx, trace, &stream, &list, conn->env(), conn->err(),
                                  conn->svc(), instance, ind, OCI_IND_NOTNULL, tdo);
  if (rc != 0) {
    conn->Fail("adpProcessObject: " + std::to_string(rc));
    return false;
  }
  out->assign(stream.GetSize(), '\0');
  stream.Seek(0, 0);
  if (!out->empty()) out->resize(stream.Read(&(*out)[0], out->size()));
  return true;
}

// Inserts a read instance through a bound object.
bool Insert(Connection* conn, void* instance, OCIInd* ind, OCIType* tdo) {
  ind[0] = OCI_IND_NOTNULL;  // a read object is stored present, as a host does
  const char* sql = "INSERT INTO w_orders VALUES (:1)";
  OCIStmt* stmt = nullptr;
  OCIBind* bind = nullptr;
  void* value = instance;
  void* null_struct = ind;
  bool ok = conn->Check(OCIHandleAlloc(conn->env(), reinterpret_cast<void**>(&stmt),
                                       OCI_HTYPE_STMT, 0, nullptr),
                        "OCIHandleAlloc");
  ok = ok &&
       conn->Check(OCIStmtPrepare(stmt, conn->err(), Text(sql), Len(sql), OCI_NTV_SYNTAX,
                                  OCI_DEFAULT),
                   "OCIStmtPrepare") &&
       conn->Check(OCIBindByPos(stmt, &bind, conn->err(), 1, nullptr, 0, SQLT_NTY, nullptr,
                                nullptr, nullptr, 0, nullptr, OCI_DEFAULT),
                   "OCIBindByPos") &&
       conn->Check(OCIBindObject(bind, conn->err(), tdo, &value, nullptr, &null_struct, nullptr),
                   "OCIBindObject") &&
       conn->Check(OCIStmtExecute(conn->svc(), stmt, conn->err(), 1, 0, nullptr, nullptr,
                                  OCI_DEFAULT),
                   "OCIStmtExecute(insert)");
  if (stmt != nullptr) ok = conn->Check(OCIHandleFree(stmt, OCI_HTYPE_STMT), "OCIHandleFree") && ok;
  return ok;
}

// Fetches the stored order `id` as an object.
bool FetchOrder(Connection* conn, int id, Object* order) {
  order->tdo = conn->Type("W_ORDER_T");
  const std::string sql = "SELECT VALUE(d) FROM w_orders d WHERE id = " + std::to_string(id);
  OCIStmt* stmt = nullptr;
  OCIDefine* define = nullptr;
  bool ok = order->tdo != nullptr &&
            conn->Check(OCIHandleAlloc(conn->env(), reinterpret_cast<void**>(&stmt),
                                       OCI_HTYPE_STMT, 0, nullptr),
                        "OCIHandleAlloc");
  ok = ok &&
       conn->Check(OCIStmtPrepare(stmt, conn->err(), Text(sql.c_str()),
                                  static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX, OCI_DEFAULT),
                   "OCIStmtPrepare") &&
       conn->Check(OCIDefineByPos(stmt, &define, conn->err(), 1, nullptr, 0, SQLT_NTY, nullptr,
                                  nullptr, nullptr, OCI_DEFAULT),
                   "OCIDefineByPos") &&
       conn->Check(OCIDefineObject(define, conn->err(), order->tdo, &order->instance, nullptr,
                                   reinterpret_cast<void**>(&order->ind), nullptr),
                   "OCIDefineObject") &&
       conn->Check(OCIStmtExecute(conn->svc(), stmt, conn->err(), 1, 0, nullptr, nullptr,
                                  OCI_DEFAULT),
                   "OCIStmtExecute(fetch)");
  if (stmt != nullptr) ok = conn->Check(OCIHandleFree(stmt, OCI_HTYPE_STMT), "OCIHandleFree") && ok;
  return ok;
}

// The stored contents of one LOB column of order `id`, "<null>" for a null LOB.
bool ReadLobColumn(Connection* conn, int id, const char* column, ub2 sqlt, std::string* out) {
  const std::string sql =
      std::string("SELECT ") + column + " FROM w_orders WHERE id = " + std::to_string(id);
  OCIStmt* stmt = nullptr;
  OCIDefine* define = nullptr;
  OCILobLocator* lob = nullptr;
  OCIInd ind = 0;
  bool ok = conn->Check(OCIHandleAlloc(conn->env(), reinterpret_cast<void**>(&stmt),
                                       OCI_HTYPE_STMT, 0, nullptr),
                        "OCIHandleAlloc") &&
            conn->Check(OCIDescriptorAlloc(conn->env(), reinterpret_cast<void**>(&lob),
                                           OCI_DTYPE_LOB, 0, nullptr),
                        "OCIDescriptorAlloc");
  ok = ok &&
       conn->Check(OCIStmtPrepare(stmt, conn->err(), Text(sql.c_str()),
                                  static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX, OCI_DEFAULT),
                   "OCIStmtPrepare") &&
       conn->Check(OCIDefineByPos(stmt, &define, conn->err(), 1, &lob, sizeof lob, sqlt, &ind,
                                  nullptr, nullptr, OCI_DEFAULT),
                   "OCIDefineByPos") &&
       conn->Check(OCIStmtExecute(conn->svc(), stmt, conn->err(), 1, 0, nullptr, nullptr,
                                  OCI_DEFAULT),
                   "OCIStmtExecute(lob)");
  if (ok && ind == OCI_IND_NULL) {
    *out = "<null>";
  } else if (ok) {
    ub4 length = 0;
    ok = conn->Check(OCILobGetLength(conn->svc(), conn->err(), lob, &length), "OCILobGetLength");
    out->assign(length, '\0');
    ub4 amount = length;
    ok = ok && (length == 0 ||
                conn->Check(OCILobRead(conn->svc(), conn->err(), lob, &amount, 1, &(*out)[0],
                                       length, nullptr, nullptr, 0, SQLCS_IMPLICIT),
                            "OCILobRead"));
    if (ok && amount != length) conn->Fail("OCILobRead: short read");
  }
  if (lob != nullptr) {
    ok = conn->Check(OCIDescriptorFree(lob, OCI_DTYPE_LOB), "OCIDescriptorFree") && ok;
  }
  if (stmt != nullptr) ok = conn->Check(OCIHandleFree(stmt, OCI_HTYPE_STMT), "OCIHandleFree") && ok;
  return ok;
}

// A stream whose order number is no number: the read fails. Returns "code|function|text"
// of the calling thread's last exception.
std::string FailedRead(Connection* conn, VARNADP* ctx, CKelTrace* trace, Column_Def* defs,
                       OCIType* tdo, const std::string& written) {
  const std::string broken = "x" + written;
  const void* buffer = broken.data();
  Column_Def* list = defs;
  void* read = nullptr;
  OCIInd* read_ind = nullptr;
  short read_null = 0;
  int lobs_pending = -1;
  KelClearLastException();
  const int rc = adpProcessBuffer(ctx, trace, &buffer, static_cast<unsigned long>(broken.size()),
                                  &list, conn->env(), conn->err(), conn->svc(), &read, &read_ind,
                                  &read_null, tdo, &lobs_pending);
  if (rc == 0) conn->Fail("adpProcessBuffer read an order number that is no number");
  CKelException last(0, "");
  if (!KelGetLastException(&last)) return std::to_string(rc) + "|no exception";
  return std::to_string(rc) + "|" + last.GetFunc() + "|" + last.GetText();
}

// One iteration: order `id` written, read back, stored with its large objects and
// fetched again, and a broken stream read. Appends what it saw to `items`: the
// kItemsPerIteration outputs.
bool OneOrder(Connection* conn, VARNADP* ctx, CKelTrace* trace, Column_Def* defs, int id,
              std::vector<std::string>* items) {
  trace->ClearBuffer();
  Object built;
  std::string written;
  const bool built_ok = BuildOrder(conn, id, &built);
  const bool wrote = built_ok && WriteObject(conn, ctx, trace, defs, built.instance,
                                             built.ind, built.tdo, &written);
  if (built.instance != nullptr && !FreeOrder(conn, built)) return false;
  if (!wrote) return false;
  items->push_back(written);

  // The buffer stays the host's until the large-object pass has read it.
  void* read = nullptr;
  OCIInd* read_ind = nullptr;
  short read_null = 0;
  int lobs_pending = -1;
  const void* buffer = written.data();
  Column_Def* list = defs;
  const int rc = adpProcessBuffer(ctx, trace, &buffer, static_cast<unsigned long>(written.size()),
                                  &list, conn->env(), conn->err(), conn->svc(), &read, &read_ind,
                                  &read_null, built.tdo, &lobs_pending);
  if (rc != 0) {
    conn->Fail("adpProcessBuffer: " + std::to_string(rc));
    return false;
  }
  if (lobs_pending != 1) conn->Fail("adpProcessBuffer: no large objects pending");
  if (!Insert(conn, read, read_ind, built.tdo)) return false;
  const std::string select =
      "SELECT VALUE(d) FROM w_orders d WHERE id = " + std::to_string(id) + " FOR UPDATE";
  const int lob_rc = adpWriteLobs(ctx, trace, select.c_str());
  if (lob_rc != 0) {
    conn->Fail("adpWriteLobs: " + std::to_string(lob_rc));
    return false;
  }
  if (!conn->Check(OCITransCommit(conn->svc(), conn->err(), OCI_DEFAULT), "OCITransCommit")) {
    return false;
  }

  Object fetched;
  std::string again;
  const bool fetch_ok = FetchOrder(conn, id, &fetched) &&
                        WriteObject(conn, ctx, trace, defs, fetched.instance, fetched.ind,
                                    fetched.tdo, &again);
  if (fetched.instance != nullptr &&
      !conn->Check(OCIObjectFree(conn->env(), conn->err(), fetched.instance,
                                 OCI_OBJECTFREE_FORCE),
                   "OCIObjectFree")) {
    return false;
  }
  if (!fetch_ok) return false;
  items->push_back(again);
  std::string note;
  std::string image;
  if (!ReadLobColumn(conn, id, "note", SQLT_CLOB, &note) ||
      !ReadLobColumn(conn, id, "img", SQLT_BLOB, &image)) {
    return false;
  }
  items->push_back(note);
  items->push_back(image);
  items->push_back(FailedRead(conn, ctx, trace, defs, built.tdo, written));
  items->push_back(std::string(trace->GetBuffer(), trace->GetBufferSize()));
  return conn->failure().empty();
}

}  // namespace

bool Connection::Open(OCIEnv* shared_env, const std::string& db) {
  own_env_ = shared_env == nullptr;
  if (own_env_) {
    if (!Check(OCIEnvCreate(&env_, OCI_OBJECT | OCI_THREADED, nullptr, nullptr, nullptr, nullptr,
                            0, nullptr),
               "OCIEnvCreate")) {
      return false;
    }
  } else {
    env_ = shared_env;
  }
  return Check(OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_), OCI_HTYPE_ERROR, 0, nullptr),
               "OCIHandleAlloc(error)") &&
         Check(OCILogon(env_, err_, &svc_, Text(kUser), Len(kUser), Text(kPassword),
                        Len(kPassword), Text(db.c_str()), static_cast<ub4>(db.size())),
               "OCILogon");
}

bool Connection::Close() {
  bool ok = true;
  if (svc_ != nullptr) ok = Check(OCILogoff(svc_, err_), "OCILogoff") && ok;
  svc_ = nullptr;
  if (own_env_) {
    if (env_ != nullptr) ok = Check(OCIHandleFree(env_, OCI_HTYPE_ENV), "OCIHandleFree(env)") && ok;
  } else if (err_ != nullptr) {
    ok = Check(OCIHandleFree(err_, OCI_HTYPE_ERROR), "OCIHandleFree(error)") && ok;
  }
  env_ = nullptr;
  err_ = nullptr;
  return ok;
}

bool Connection::Check(sword status, const std::string& what) {
  if (status == OCI_SUCCESS) return true;
  std::string message = what + " returned " + std::to_string(status);
  sb4 code = 0;
  OraText buf[512] = {0};
  if (err_ != nullptr &&
      OCIErrorGet(err_, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR) == OCI_SUCCESS) {
    message += ": " + std::string(reinterpret_cast<char*>(buf));
  }
  Fail(message);
  return false;
}

bool Connection::Exec(const std::string& sql) {
  OCIStmt* stmt = nullptr;
  bool ok = Check(OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0,
                                 nullptr),
                  "OCIHandleAlloc");
  ok = ok &&
       Check(OCIStmtPrepare(stmt, err_, Text(sql.c_str()), static_cast<ub4>(sql.size()),
                            OCI_NTV_SYNTAX, OCI_DEFAULT),
             "OCIStmtPrepare") &&
       Check(OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT), sql);
  if (stmt != nullptr) ok = Check(OCIHandleFree(stmt, OCI_HTYPE_STMT), "OCIHandleFree") && ok;
  return ok;
}

OCIType* Connection::Type(const char* name) {
  OCIType* tdo = nullptr;
  if (!Check(OCITypeByName(env_, err_, svc_, Text(kSchema), Len(kSchema), Text(name), Len(name),
                           nullptr, 0, OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo),
             std::string("OCITypeByName ") + name)) {
    return nullptr;
  }
  return tdo;
}

bool CreateSchema(Connection* conn) {
  return conn->Exec("CREATE TYPE w_part_t AS OBJECT (code VARCHAR2(20), qty NUMBER(8,2))") &&
         conn->Exec("CREATE TYPE w_parts_t AS TABLE OF w_part_t") &&
         conn->Exec("CREATE TYPE w_tags_t AS VARRAY(6) OF VARCHAR2(12)") &&
         conn->Exec("CREATE TYPE w_addr_t AS OBJECT (street VARCHAR2(30), city VARCHAR2(30))") &&
         conn->Exec("CREATE TYPE w_order_t AS OBJECT (id NUMBER(10), name VARCHAR2(40), "
                    "made DATE, addr w_addr_t, parts w_parts_t, tags w_tags_t, note CLOB, "
                    "img BLOB)") &&
         conn->Exec("CREATE TABLE w_orders OF w_order_t NESTED TABLE parts STORE AS "
                    "w_orders_parts") &&
         conn->Exec("COMMIT");
}

ThreadOutput RunThread(Connection* conn, int thread, int iterations) {
  ThreadOutput out;
  Column_Def* defs = nullptr;
  VARNADP* ctx = nullptr;
  // Each thread's trace, of every field.
  CKelTrace trace;
  trace.CaptureToBuffer();
  trace.SetLevel(2);
  const std::string type = std::string(kSchema) + ".W_ORDER_T";
  const int described = coldefDescribe(conn->env(), conn->err(), conn->svc(), type.c_str(), &defs);
  if (described != COLDEF_OK) {
    conn->Check(OCI_ERROR, "coldefDescribe " + type + ": " + std::to_string(described));
  } else if (adpCreateContext(&ctx, &trace, nullptr) != 0) {
    conn->Fail("adpCreateContext");
  } else {
    for (int i = 0; i < iterations; ++i) {
      if (!OneOrder(conn, ctx, &trace, defs, (thread + 1) * 100000 + i, &out.items)) break;
    }
  }
  // The context reads the list until it is destroyed: the list goes after it.
  if (ctx != nullptr && adpDestroyContext(ctx, &trace) != 0) conn->Fail("adpDestroyContext");
  coldefFree(defs);
  out.failure = conn->failure();
  return out;
}

}  // namespace threads_test
