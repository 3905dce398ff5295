// What the adapter tests share: an Oracle session on the in-memory OCI with
// a database of the test's own, a context, a captured trace, a stream, a
// builder for Column_Def lists and one for object instances, built with the
// OCI calls a host uses.
#ifndef TESTS_ADAPTER_ADAPTER_FIXTURE_H_
#define TESTS_ADAPTER_ADAPTER_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include <oci.h>
#include <ocimem.h>
#include <orid.h>
#include <varnadp.h>

#include <host/kel.h>

namespace adapter_test {

inline const OraText* Text(const char* s) { return reinterpret_cast<const OraText*>(s); }
inline ub4 Len(const char* s) { return static_cast<ub4>(std::strlen(s)); }

// A host's Column_Def list, built record by record; each record links to
// the next as it is added. Records keep their addresses.
class DefList {
 public:
  Column_Def& Add(unsigned short nFlags, const char* pszName, unsigned short nDataType) {
    defs_.emplace_back();
    Column_Def& def = defs_.back();
    std::memset(&def, 0, sizeof def);
    def.Flags = nFlags;
    def.DataType = nDataType;
    if (pszName != nullptr) def.ColumnName = Keep(pszName);
    if (defs_.size() > 1) defs_[defs_.size() - 2].Next = &def;
    return def;
  }
  // A scalar; pszName NULL makes it a collection item.
  Column_Def& Scalar(const char* pszName, unsigned short nDataType, short nExtType = 0,
                     unsigned long nDataSize = 0, unsigned nDisplaySize = 0,
                     unsigned long nPrecision = 0, short nScale = 0) {
    Column_Def& def = Add(COLDEF_DEFINED, pszName, nDataType);
    def.ExtType = nExtType;
    def.DataSize = nDataSize;
    def.DisplaySize = nDisplaySize;
    def.Precision = nPrecision;
    def.Scale = nScale;
    def.InCollection = pszName == nullptr ? 1 : 0;
    return def;
  }
  Column_Def& Text(const char* pszName, unsigned long nSize = 100) {
    return Scalar(pszName, SQLT_CHR, 1, nSize);
  }
  Column_Def& Number(const char* pszName, unsigned long nPrecision, short nScale) {
    return Scalar(pszName, SQLT_NUM, 5, 22, 0, nPrecision, nScale);
  }
  Column_Def& Date(const char* pszName) { return Scalar(pszName, SQLT_DAT, 12, 7, 19); }
  Column_Def& Raw(const char* pszName, unsigned long nSize = 100) {
    return Scalar(pszName, SQLT_BIN, 23, nSize);
  }
  // Opens an object (or, with bColl, a collection) group; pszName NULL makes
  // the group a collection item.
  Column_Def& Open(const char* pszName, const char* pszTypeName, bool bColl = false) {
    Column_Def& def = Add(COLDEF_COMPLEX | COLDEF_DEFINED, pszName, bColl ? SQLT_NCO : SQLT_NTY);
    if (pszTypeName != nullptr) def.TypeName = Keep(pszTypeName);
    def.InCollection = pszName == nullptr ? 1 : 0;
    return def;
  }
  Column_Def& Close() { return Add(COLDEF_END | COLDEF_DEFINED, nullptr, 0); }

  Column_Def* Head() { return defs_.empty() ? nullptr : &defs_.front(); }
  Column_Def& operator[](size_t i) { return defs_[i]; }
  size_t size() const { return defs_.size(); }

 private:
  char* Keep(const char* psz) {
    names_.emplace_back(psz);
    return &names_.back()[0];
  }
  std::deque<Column_Def> defs_;
  std::deque<std::string> names_;
};

// An object instance with its null structure and type.
struct Instance {
  void* pObject = nullptr;
  OCIInd* pInd = nullptr;
  OCIType* pTdo = nullptr;
};

class AdapterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ocimemFaultReset();
    KelClearLastException();
    ASSERT_EQ(OCI_SUCCESS, OCIEnvCreate(&env_, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0,
                                        nullptr));
    ASSERT_EQ(OCI_SUCCESS,
              OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_), OCI_HTYPE_ERROR, 0, nullptr));
    const std::string db = DatabaseName();
    ASSERT_EQ(OCI_SUCCESS, OCILogon(env_, err_, &svc_, Text("scott"), 5, Text("tiger"), 5,
                                    Text(db.c_str()), Len(db.c_str())))
        << FirstError();
    trace_.CaptureToBuffer();
    ASSERT_EQ(0, adpCreateContext(&ctx_, &trace_, nullptr));
  }

  void TearDown() override {
    ocimemFaultReset();
    if (ctx_ != nullptr) {
      EXPECT_EQ(0, adpDestroyContext(ctx_, &trace_));
    }
    for (void* p : objects_) OCIObjectFree(env_, err_, p, OCI_OBJECTFREE_FORCE);
    if (env_ != nullptr) {
      EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env_, OCI_HTYPE_ENV));
    }
  }

  static std::string DatabaseName() {
    const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return std::string("adp_") + info->test_suite_name() + "_" + info->name();
  }

  std::string FirstError() {
    sb4 nCode = 0;
    OraText buf[512] = {0};
    if (OCIErrorGet(err_, 1, nullptr, &nCode, buf, sizeof buf, OCI_HTYPE_ERROR) != OCI_SUCCESS) {
      return "none";
    }
    return reinterpret_cast<char*>(buf);
  }

  void MustExec(const std::string& sql) {
    OCIStmt* pStmt = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT,
                                          0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(pStmt, err_, Text(sql.c_str()),
                                          static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX,
                                          OCI_DEFAULT));
    const sword nStatus = OCIStmtExecute(svc_, pStmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT);
    EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(pStmt, OCI_HTYPE_STMT));
    ASSERT_EQ(OCI_SUCCESS, nStatus) << sql << ": " << FirstError();
  }

  // The types of the stream format's worked example: EX_PERSON_T with NAME,
  // AGE, ADDR (STREET, CITY), COLOURS (a table of text), NOTE and TAG.
  void CreateWorkedExampleTypes() {
    MustExec("CREATE TYPE ex_addr_t AS OBJECT (street VARCHAR2(30), city VARCHAR2(30))");
    MustExec("CREATE TYPE ex_colours_t AS TABLE OF VARCHAR2(20)");
    MustExec("CREATE TYPE ex_note_t AS OBJECT (text VARCHAR2(30))");
    MustExec("CREATE TYPE ex_person_t AS OBJECT (name VARCHAR2(30), age NUMBER(3), "
             "addr ex_addr_t, colours ex_colours_t, note ex_note_t, tag RAW(10))");
  }

  OCIType* Type(const char* pszName) {
    OCIType* pTdo = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCITypeByName(env_, err_, svc_, nullptr, 0, Text(pszName),
                                         Len(pszName), nullptr, 0, OCI_DURATION_DEFAULT,
                                         OCI_TYPEGET_HEADER, &pTdo))
        << FirstError();
    return pTdo;
  }

  // A new instance of an object type, present at its root (a new object is
  // atomically null) with every attribute null.
  Instance NewObject(const char* pszType) {
    Instance inst;
    inst.pTdo = Type(pszType);
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, inst.pTdo, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &inst.pObject))
        << FirstError();
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, inst.pObject,
                                           reinterpret_cast<void**>(&inst.pInd)));
    inst.pInd[0] = OCI_IND_NOTNULL;
    objects_.push_back(inst.pObject);
    return inst;
  }

  // A new, empty standalone collection of a collection type.
  OCIColl* NewCollection(const char* pszType) {
    void* pColl = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_NAMEDCOLLECTION,
                                        Type(pszType), nullptr, OCI_DURATION_DEFAULT, TRUE,
                                        &pColl))
        << FirstError();
    objects_.push_back(pColl);
    return static_cast<OCIColl*>(pColl);
  }

  // The slot of an attribute reached by a path of names, and its null
  // status into *pStatus when that is not NULL.
  void* Slot(const Instance& inst, std::initializer_list<const char*> path,
             OCIInd* pStatus = nullptr) {
    std::vector<const OraText*> names;
    std::vector<ub4> lengths;
    for (const char* p : path) {
      names.push_back(Text(p));
      lengths.push_back(Len(p));
    }
    OCIInd nInd = 0;
    void* pNullStruct = nullptr;
    void* pValue = nullptr;
    OCIType* pTdo = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, inst.pObject, inst.pInd, inst.pTdo,
                                            names.data(), lengths.data(),
                                            static_cast<ub4>(names.size()), nullptr, 0, &nInd,
                                            &pNullStruct, &pValue, &pTdo))
        << FirstError();
    if (pStatus != nullptr) *pStatus = nInd;
    return pValue;
  }
  // The null status of an attribute reached by a path.
  OCIInd AttrStatus(const Instance& inst, std::initializer_list<const char*> path) {
    OCIInd nInd = 0;
    Slot(inst, path, &nInd);
    return nInd;
  }

  // Marks every attribute along the path present (embedded objects
  // included), or with nInd the last one as given.
  void Mark(const Instance& inst, std::initializer_list<const char*> path,
            OCIInd nInd = OCI_IND_NOTNULL) {
    std::vector<const OraText*> names;
    std::vector<ub4> lengths;
    size_t i = 0;
    for (const char* p : path) {
      names.push_back(Text(p));
      lengths.push_back(Len(p));
      const OCIInd nStatus = ++i == path.size() ? nInd : OCI_IND_NOTNULL;
      ASSERT_EQ(OCI_SUCCESS, OCIObjectSetAttr(env_, err_, inst.pObject, inst.pInd, inst.pTdo,
                                              names.data(), lengths.data(),
                                              static_cast<ub4>(names.size()), nullptr, 0, nStatus,
                                              nullptr, nullptr))
          << FirstError();
    }
  }

  void SetText(const Instance& inst, std::initializer_list<const char*> path,
               const std::string& text) {
    ASSERT_EQ(OCI_SUCCESS,
              OCIStringAssignText(env_, err_, Text(text.c_str()), static_cast<ub4>(text.size()),
                                  static_cast<OCIString**>(Slot(inst, path))));
    Mark(inst, path);
  }
  void SetNumber(const Instance& inst, std::initializer_list<const char*> path, const char* pszText,
                 const char* pszMask = nullptr) {
    ASSERT_EQ(OCI_SUCCESS, NumberFromText(pszText, static_cast<OCINumber*>(Slot(inst, path)),
                                          pszMask))
        << FirstError();
    Mark(inst, path);
  }
  void SetDate(const Instance& inst, std::initializer_list<const char*> path, const char* pszText) {
    const char* pszMask = "YYYY-MM-DD HH24:MI:SS";
    ASSERT_EQ(OCI_SUCCESS, OCIDateFromText(err_, Text(pszText), Len(pszText), Text(pszMask),
                                           static_cast<ub1>(Len(pszMask)), nullptr, 0,
                                           static_cast<OCIDate*>(Slot(inst, path))))
        << FirstError();
    Mark(inst, path);
  }
  void SetDateTime(const Instance& inst, std::initializer_list<const char*> path,
                   const char* pszText, const char* pszMask) {
    OCIDateTime* pValue = *static_cast<OCIDateTime**>(Slot(inst, path));
    ASSERT_EQ(OCI_SUCCESS, OCIDateTimeFromText(env_, err_, Text(pszText), Len(pszText),
                                               Text(pszMask), static_cast<ub1>(Len(pszMask)),
                                               nullptr, 0, pValue))
        << FirstError();
    Mark(inst, path);
  }
  void SetInterval(const Instance& inst, std::initializer_list<const char*> path,
                   const char* pszText) {
    OCIInterval* pValue = *static_cast<OCIInterval**>(Slot(inst, path));
    ASSERT_EQ(OCI_SUCCESS, OCIIntervalFromText(env_, err_, Text(pszText), Len(pszText), pValue))
        << FirstError();
    Mark(inst, path);
  }
  void SetRaw(const Instance& inst, std::initializer_list<const char*> path,
              const std::string& bytes) {
    ASSERT_EQ(OCI_SUCCESS, OCIRawAssignBytes(env_, err_,
                                             reinterpret_cast<const ub1*>(bytes.data()),
                                             static_cast<ub4>(bytes.size()),
                                             static_cast<OCIRaw**>(Slot(inst, path))));
    Mark(inst, path);
  }
  OCIColl* Coll(const Instance& inst, std::initializer_list<const char*> path) {
    Mark(inst, path);
    return *static_cast<OCIColl**>(Slot(inst, path));
  }
  void AppendText(OCIColl* pColl, const char* pszText, OCIInd nInd = OCI_IND_NOTNULL) {
    OCIString* pString = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text(pszText), Len(pszText), &pString));
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, pString, &nInd, pColl)) << FirstError();
    ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &pString));
  }
  void AppendNumber(OCIColl* pColl, const char* pszText, OCIInd nInd = OCI_IND_NOTNULL) {
    OCINumber number;
    ASSERT_EQ(OCI_SUCCESS, NumberFromText(pszText, &number, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &number, &nInd, pColl)) << FirstError();
  }
  void AppendObject(OCIColl* pColl, const Instance& item) {
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, item.pObject, item.pInd, pColl))
        << FirstError();
  }

  sword NumberFromText(const char* pszText, OCINumber* pNumber, const char* pszMask) {
    // A mask of the text's own shape: each digit a 9, a sign an S.
    std::string mask;
    if (pszMask != nullptr) {
      mask = pszMask;
    } else {
      for (const char* p = pszText; *p != '\0'; ++p) {
        mask += (*p >= '0' && *p <= '9') ? '9' : (*p == '-' || *p == '+') ? 'S' : *p;
      }
    }
    return OCINumberFromText(err_, Text(pszText), Len(pszText), Text(mask.c_str()),
                             static_cast<ub4>(mask.size()), nullptr, 0, pNumber);
  }

  // Writes the instance with adpProcessObject; returns the code.
  int Write(Column_Def* pDefs, void* pInstance, OCIInd* pInd, OCIType* pTdo,
            short nInd = OCI_IND_NOTNULL) {
    Column_Def* pList = pDefs;
    return adpProcessObject(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, pInstance, pInd,
                            nInd, pTdo);
  }
  int Write(Column_Def* pDefs, const Instance& inst) {
    return Write(pDefs, inst.pObject, inst.pInd, inst.pTdo);
  }

  // Everything in the stream.
  std::string Stream() {
    const long nPos = stream_.Tell();
    stream_.Seek(0, 0);
    std::string out(stream_.GetSize(), '\0');
    if (!out.empty()) out.resize(stream_.Read(&out[0], out.size()));
    stream_.Seek(nPos, 0);
    return out;
  }
  void ClearStream() { stream_.SetSize(0); }

  std::string Trace() const { return trace_.GetBuffer(); }
  void ClearTrace() { trace_.ClearBuffer(); }

  // The calling thread's last exception as "code|function|text".
  static std::string LastException() {
    CKelException e(0, "");
    if (!KelGetLastException(&e)) return "none";
    return std::to_string(e.GetRC()) + "|" + e.GetFunc() + "|" + e.GetText();
  }

  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  OCISvcCtx* svc_ = nullptr;
  VARNADP* ctx_ = nullptr;
  CKelTrace trace_;
  CKelStream stream_{0, nullptr, nullptr, 0};
  std::vector<void*> objects_;
};

// What a stream-to-object call gave back: its code, the new instance (an
// object, or the collection handle), its null-indicator structure, its own
// indicator, the large-objects-pending flag and, for a buffer, how far the
// buffer pointer was moved.
struct ReadResult {
  int nRC = 0;
  void* pInstance = nullptr;
  OCIInd* pInd = nullptr;
  short nInd = 0;
  int nLobsPending = -1;
  long nConsumed = -1;
};

// The adapter fixture with the stream-to-object calls: reads from the
// fixture's stream or from a buffer, and writes what was read back through
// a context of its own, so that the reading context keeps what it made.
class ReadTest : public AdapterTest {
 protected:
  void TearDown() override {
    if (ctx_back_ != nullptr) {
      EXPECT_EQ(0, adpDestroyContext(ctx_back_, nullptr));
      ctx_back_ = nullptr;
    }
    AdapterTest::TearDown();
  }

  // Puts text into the stream and reads one instance from its start with
  // adpProcessStream.
  ReadResult ReadStream(Column_Def* pDefs, const std::string& text, OCIType* pTdo) {
    ClearStream();
    if (!text.empty()) stream_.Write(text.data(), static_cast<unsigned long>(text.size()));
    stream_.Seek(0, 0);
    return ReadAgain(pDefs, pTdo);
  }
  // Reads one more instance from where the stream stands.
  ReadResult ReadAgain(Column_Def* pDefs, OCIType* pTdo) {
    ReadResult r;
    Column_Def* pList = pDefs;
    r.nRC = adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, &r.pInstance,
                             &r.pInd, &r.nInd, pTdo, &r.nLobsPending);
    return r;
  }
  // Reads one instance from the text as a buffer with adpProcessBuffer.
  ReadResult ReadBuffer(Column_Def* pDefs, const std::string& text, OCIType* pTdo) {
    ReadResult r;
    Column_Def* pList = pDefs;
    const void* pBuffer = text.data();
    r.nRC = adpProcessBuffer(ctx_, &trace_, &pBuffer, static_cast<unsigned long>(text.size()),
                             &pList, env_, err_, svc_, &r.pInstance, &r.pInd, &r.nInd, pTdo,
                             &r.nLobsPending);
    r.nConsumed = static_cast<const char*>(pBuffer) - text.data();
    return r;
  }

  // Writes a read instance with adpProcessObject on a context of its own and
  // returns the text, or "rc=<code>" when the write fails. A read object is
  // atomically null at its root; it is made present first, as a host does
  // before it binds it.
  std::string WriteBack(Column_Def* pDefs, const ReadResult& r, OCIType* pTdo,
                        bool bColl = false) {
    if (ctx_back_ == nullptr && adpCreateContext(&ctx_back_, nullptr, nullptr) != 0) {
      return "no context";
    }
    if (!bColl && r.pInd != nullptr) r.pInd[0] = OCI_IND_NOTNULL;
    CKelStream out(0, nullptr, nullptr, 0);
    Column_Def* pList = pDefs;
    const int nRC = adpProcessObject(ctx_back_, nullptr, &out, &pList, env_, err_, svc_,
                                     r.pInstance, r.pInd, OCI_IND_NOTNULL, pTdo);
    if (nRC != 0) return "rc=" + std::to_string(nRC);
    out.Seek(0, 0);
    std::string text(out.GetSize(), '\0');
    if (!text.empty()) text.resize(out.Read(&text[0], text.size()));
    return text;
  }

  // The null status of an attribute of a read object, reached by a path.
  OCIInd AttrInd(const ReadResult& r, OCIType* pTdo, std::initializer_list<const char*> path) {
    Instance inst;
    inst.pObject = r.pInstance;
    inst.pInd = r.pInd;
    inst.pTdo = pTdo;
    return AttrStatus(inst, path);
  }
  // The slot of an attribute of a read object.
  void* AttrSlot(const ReadResult& r, OCIType* pTdo, std::initializer_list<const char*> path) {
    Instance inst;
    inst.pObject = r.pInstance;
    inst.pInd = r.pInd;
    inst.pTdo = pTdo;
    return Slot(inst, path);
  }

  // Items of a collection as (indicator, element) pairs, in order.
  std::vector<std::pair<OCIInd, void*>> Items(OCIColl* pColl) {
    std::vector<std::pair<OCIInd, void*>> items;
    sb4 nSize = 0;
    EXPECT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, pColl, &nSize));
    for (sb4 i = 0; i < nSize; ++i) {
      boolean bExists = FALSE;
      void* pElem = nullptr;
      void* pElemInd = nullptr;
      EXPECT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, pColl, i, &bExists, &pElem, &pElemInd));
      items.emplace_back(pElemInd != nullptr ? *static_cast<OCIInd*>(pElemInd) : OCI_IND_NOTNULL,
                         pElem);
    }
    return items;
  }

  std::string StringOf(const OCIString* pString) {
    if (pString == nullptr) return "<no string>";
    return std::string(reinterpret_cast<const char*>(OCIStringPtr(env_, pString)),
                       OCIStringSize(env_, pString));
  }
  std::string RawOf(const OCIRaw* pRaw) {
    if (pRaw == nullptr) return "<no raw>";
    return std::string(reinterpret_cast<const char*>(OCIRawPtr(env_, pRaw)),
                       OCIRawSize(env_, pRaw));
  }
  std::string NumberOf(const OCINumber* pNumber) {
    // Fill mode drops the zeros a fraction does not need; an integer keeps
    // its point, which is dropped here.
    const char* pszMask = "FM999999999999999999990.9999999999";
    OraText buf[64] = {0};
    ub4 nSize = sizeof buf;
    if (OCINumberToText(err_, pNumber, Text(pszMask), Len(pszMask), nullptr, 0, &nSize, buf) !=
        OCI_SUCCESS) {
      return "<" + FirstError() + ">";
    }
    std::string text(reinterpret_cast<char*>(buf), nSize);
    if (!text.empty() && text.back() == '.') text.pop_back();
    return text;
  }
  std::string DateOf(const OCIDate* pDate) {
    const char* pszMask = "YYYY-MM-DD HH24:MI:SS";
    OraText buf[64] = {0};
    ub4 nSize = sizeof buf;
    if (OCIDateToText(err_, pDate, Text(pszMask), static_cast<ub1>(Len(pszMask)), nullptr, 0,
                      &nSize, buf) != OCI_SUCCESS) {
      return "<" + FirstError() + ">";
    }
    return std::string(reinterpret_cast<char*>(buf), nSize);
  }

  // "code|function|text" of an adapter error as LastException() gives it.
  static std::string Exception(int nCode, const char* pszFunc, const char* pszText) {
    return std::to_string(nCode) + "|" + pszFunc + "|" + pszText;
  }
  static std::string Exception(int nCode, const char* pszFunc) {
    return Exception(nCode, pszFunc, KelGetErrorText(nCode));
  }
  // One "*ERR: in <scope> (-2)" line per scope, in the order given.
  static std::string Scopes(std::initializer_list<const char*> scopes) {
    std::string out;
    for (const char* p : scopes) out += std::string("*ERR: in ") + p + " (-2)\n";
    return out;
  }

  // A Column_Def list that lives as long as the fixture, so that no two
  // lists of a test share an address: a context takes a list at the address
  // of its last one for that list.
  DefList& NewList() {
    lists_.emplace_back();
    return lists_.back();
  }

  VARNADP* ctx_back_ = nullptr;
  std::deque<DefList> lists_;
};

}  // namespace adapter_test

#endif  // TESTS_ADAPTER_ADAPTER_FIXTURE_H_
