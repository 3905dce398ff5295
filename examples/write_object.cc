// A host in miniature: creates object types on the embedded in-memory OCI,
// builds one instance with OCI calls, derives its Column_Def list with
// coldef and writes the instance to a stream with adpProcessObject; the
// stream goes to standard output, followed by the terminator.
#include <cstdio>
#include <cstring>

#include <coldef.h>
#include <oci.h>
#include <orid.h>
#include <varnadp.h>

#include <host/kel.h>

namespace {

const OraText* Text(const char* s) { return reinterpret_cast<const OraText*>(s); }
ub4 Len(const char* s) { return static_cast<ub4>(std::strlen(s)); }

OCIEnv* env;
OCIError* err;
OCISvcCtx* svc;

bool Check(sword status, const char* what) {
  if (status == OCI_SUCCESS) return true;
  adpOraLogError(nullptr, env, err, svc, what, status);
  OraText message[512] = {0};
  sb4 code = 0;
  OCIErrorGet(err, 1, nullptr, &code, message, sizeof message, OCI_HTYPE_ERROR);
  std::fprintf(stderr, "%s failed: %s", what, reinterpret_cast<char*>(message));
  return false;
}

bool Exec(const char* sql) {
  OCIStmt* stmt = nullptr;
  OCIHandleAlloc(env, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  bool ok = Check(OCIStmtPrepare(stmt, err, Text(sql), Len(sql), OCI_NTV_SYNTAX, OCI_DEFAULT),
                  "OCIStmtPrepare") &&
            Check(OCIStmtExecute(svc, stmt, err, 1, 0, nullptr, nullptr, OCI_DEFAULT), sql);
  OCIHandleFree(stmt, OCI_HTYPE_STMT);
  return ok;
}

// Sets one attribute (a path of names) from text and marks it present.
bool Set(void* obj, OCIInd* ind, OCIType* tdo, const char* name, const char* value) {
  const OraText* names[] = {Text(name)};
  const ub4 lengths[] = {Len(name)};
  OCIInd status;
  void* null_struct;
  void* slot;
  OCIType* attr_tdo;
  if (!Check(OCIObjectGetAttr(env, err, obj, ind, tdo, names, lengths, 1, nullptr, 0, &status,
                              &null_struct, &slot, &attr_tdo),
             "OCIObjectGetAttr")) {
    return false;
  }
  sword rc;
  if (std::strcmp(name, "PHONES") == 0) {
    // A comma-separated list of items appended to the collection.
    rc = OCI_SUCCESS;
    for (const char* p = value; rc == OCI_SUCCESS && *p != '\0';) {
      const char* end = std::strchr(p, ',');
      const ub4 n = end != nullptr ? static_cast<ub4>(end - p) : Len(p);
      OCIString* item = nullptr;
      OCIInd item_ind = OCI_IND_NOTNULL;
      rc = OCIStringAssignText(env, err, Text(p), n, &item);
      if (rc == OCI_SUCCESS) rc = OCICollAppend(env, err, item, &item_ind, *static_cast<OCIColl**>(slot));
      OCIStringResize(env, err, 0, &item);
      p += n + (end != nullptr ? 1 : 0);
    }
  } else if (std::strcmp(name, "BORN") == 0) {
    rc = OCIDateFromText(err, Text(value), Len(value), Text("YYYY-MM-DD"), 10, nullptr, 0,
                         static_cast<OCIDate*>(slot));
  } else if (std::strcmp(name, "AGE") == 0) {
    rc = OCINumberFromText(err, Text(value), Len(value), Text("999"), 3, nullptr, 0,
                           static_cast<OCINumber*>(slot));
  } else {
    rc = OCIStringAssignText(env, err, Text(value), Len(value), static_cast<OCIString**>(slot));
  }
  return Check(rc, name) &&
         Check(OCIObjectSetAttr(env, err, obj, ind, tdo, names, lengths, 1, nullptr, 0,
                                OCI_IND_NOTNULL, nullptr, nullptr),
               "OCIObjectSetAttr");
}

}  // namespace

int main() {
  if (OCIEnvCreate(&env, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) != 0) return 1;
  OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 0, nullptr);
  if (!Check(OCILogon(env, err, &svc, Text("scott"), 5, Text("tiger"), 5, Text("example"), 7),
             "OCILogon") ||
      !Exec("CREATE TYPE phones_t AS VARRAY(5) OF VARCHAR2(20)") ||
      !Exec("CREATE TYPE person_t AS OBJECT (name VARCHAR2(40), age NUMBER(3), born DATE, "
            "phones phones_t)")) {
    return 1;
  }

  OCIType* tdo = nullptr;
  void* person = nullptr;
  OCIInd* ind = nullptr;
  if (!Check(OCITypeByName(env, err, svc, Text("SCOTT"), 5, Text("PERSON_T"), 8, nullptr, 0,
                           OCI_DURATION_SESSION, OCI_TYPEGET_HEADER, &tdo),
             "OCITypeByName") ||
      !Check(OCIObjectNew(env, err, svc, OCI_TYPECODE_OBJECT, tdo, nullptr, OCI_DURATION_DEFAULT,
                          TRUE, &person),
             "OCIObjectNew") ||
      !Check(OCIObjectGetInd(env, err, person, reinterpret_cast<void**>(&ind)), "OCIObjectGetInd")) {
    return 1;
  }
  ind[0] = OCI_IND_NOTNULL;  // a new object is atomically null
  if (!Set(person, ind, tdo, "NAME", "Smith|Jones") || !Set(person, ind, tdo, "AGE", "42") ||
      !Set(person, ind, tdo, "BORN", "1984-02-29") || !Set(person, ind, tdo, "PHONES", "555-0100,555-0199")) {
    return 1;
  }

  Column_Def* list = nullptr;
  if (coldefDescribe(env, err, svc, "SCOTT.PERSON_T", &list) != COLDEF_OK) return 1;

  CKelTrace trace;
  CKelStream stream(0, nullptr, nullptr, 0);
  VARNADP* ctx = nullptr;
  int rc = adpCreateContext(&ctx, &trace, nullptr);
  Column_Def* defs = list;  // the call may move its copy of the list pointer
  if (rc == 0) {
    rc = adpProcessObject(ctx, &trace, &stream, &defs, env, err, svc, person, ind, 0, tdo);
  }
  if (rc == 0) {
    stream.Write("\r\n", 2);
    stream.Seek(0, 0);
    char buf[4096];
    const unsigned long n = stream.Read(buf, sizeof buf);
    std::fwrite(buf, 1, n, stdout);
  } else {
    CKelException e(0, "");
    KelGetLastException(&e);
    std::fprintf(stderr, "%d in %s: %s\n", e.GetRC(), e.GetFunc(), e.GetText());
  }
  if (ctx != nullptr) adpDestroyContext(ctx, &trace);
  coldefFree(list);
  OCIObjectFree(env, err, person, OCI_OBJECTFREE_FORCE);
  OCIHandleFree(env, OCI_HTYPE_ENV);
  return rc == 0 ? 0 : 2;
}
