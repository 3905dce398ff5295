#include "doc_session.h"

#include <cstring>

namespace longrun {

namespace {

const OraText* T(const char* s) { return reinterpret_cast<const OraText*>(s); }
ub4 Len(const std::string& s) { return static_cast<ub4>(s.size()); }

// A mask of the text's own shape: each digit a 9, a sign an S.
std::string MaskOf(const std::string& text) {
  std::string mask;
  for (char c : text) mask += (c >= '0' && c <= '9') ? '9' : (c == '-') ? 'S' : c;
  return mask;
}

// A statement handle freed when it goes out of scope.
class Statement {
 public:
  explicit Statement(OCIEnv* pEnv) {
    if (OCIHandleAlloc(pEnv, reinterpret_cast<void**>(&stmt_), OCI_HTYPE_STMT, 0, nullptr) !=
        OCI_SUCCESS) {
      throw OciFailure("OCIHandleAlloc of a statement failed");
    }
  }
  ~Statement() { OCIHandleFree(stmt_, OCI_HTYPE_STMT); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  OCIStmt* get() const { return stmt_; }

 private:
  OCIStmt* stmt_ = nullptr;
};

}  // namespace

DocSession::DocSession(const char* pszDb) {
  if (OCIEnvCreate(&env_, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) !=
      OCI_SUCCESS) {
    throw OciFailure("OCIEnvCreate failed");
  }
  Check(OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_), OCI_HTYPE_ERROR, 0, nullptr),
        "OCIHandleAlloc");
  Check(OCILogon(env_, err_, &svc_, T("scott"), 5, T("tiger"), 5, T(pszDb),
                 static_cast<ub4>(std::strlen(pszDb))),
        "OCILogon");
  for (const char* const* p = kTypeDdl; *p != nullptr; ++p) Exec(*p);
  Exec(kTableDdl);
  Check(OCITypeByName(env_, err_, svc_, nullptr, 0, T("LR_DOC_T"), 8, nullptr, 0,
                      OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &doc_tdo_),
        "OCITypeByName");
  Check(OCITypeByName(env_, err_, svc_, nullptr, 0, T("LR_LINE_T"), 9, nullptr, 0,
                      OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &line_tdo_),
        "OCITypeByName");
}

DocSession::~DocSession() {
  if (svc_ != nullptr) OCILogoff(svc_, err_);
  if (env_ != nullptr) OCIHandleFree(env_, OCI_HTYPE_ENV);
}

void DocSession::Check(sword nStatus, const char* pszCall) {
  if (nStatus == OCI_SUCCESS) return;
  sb4 nCode = 0;
  OraText text[512] = {0};
  if (err_ != nullptr) OCIErrorGet(err_, 1, nullptr, &nCode, text, sizeof text, OCI_HTYPE_ERROR);
  throw OciFailure(std::string(pszCall) + " failed (" + std::to_string(nStatus) +
                   "): " + reinterpret_cast<char*>(text));
}

void DocSession::Exec(const std::string& sql) {
  Statement stmt(env_);
  Check(OCIStmtPrepare(stmt.get(), err_, T(sql.c_str()), Len(sql), OCI_NTV_SYNTAX, OCI_DEFAULT),
        "OCIStmtPrepare");
  Check(OCIStmtExecute(svc_, stmt.get(), err_, 1, 0, nullptr, nullptr, OCI_DEFAULT),
        sql.c_str());
}

void DocSession::SetText(const Opt& v, OCIString** ppString, OCIInd* pInd) {
  *pInd = OCI_IND_NULL;
  if (!v) return;
  Check(OCIStringAssignText(env_, err_, T(v->c_str()), Len(*v), ppString), "OCIStringAssignText");
  *pInd = OCI_IND_NOTNULL;
}

void DocSession::SetNumber(const Opt& v, OCINumber* pNumber, OCIInd* pInd) {
  *pInd = OCI_IND_NULL;
  if (!v) return;
  const std::string mask = MaskOf(*v);
  Check(OCINumberFromText(err_, T(v->c_str()), Len(*v), T(mask.c_str()), Len(mask), nullptr, 0,
                          pNumber),
        "OCINumberFromText");
  *pInd = OCI_IND_NOTNULL;
}

void DocSession::SetLob(const Opt& v, OCILobLocator* pLob, ub1 nType, OCIInd* pInd) {
  *pInd = OCI_IND_NULL;
  if (!v) return;
  Check(OCILobCreateTemporary(svc_, err_, pLob, 0, SQLCS_IMPLICIT, nType, FALSE,
                              OCI_DURATION_SESSION),
        "OCILobCreateTemporary");
  ub4 nAmount = Len(*v);
  Check(OCILobWrite(svc_, err_, pLob, &nAmount, 1, const_cast<char*>(v->data()), Len(*v),
                    OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT),
        "OCILobWrite");
  *pInd = OCI_IND_NOTNULL;
}

lr_doc_t* DocSession::Build(const DocValues& doc, lr_doc_ind** ppInd) {
  void* pObject = nullptr;
  Check(OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, doc_tdo_, nullptr,
                     OCI_DURATION_DEFAULT, TRUE, &pObject),
        "OCIObjectNew");
  auto* p = static_cast<lr_doc_t*>(pObject);
  void* pIndStruct = nullptr;
  Check(OCIObjectGetInd(env_, err_, p, &pIndStruct), "OCIObjectGetInd");
  auto* ind = static_cast<lr_doc_ind*>(pIndStruct);
  ind->_atomic = OCI_IND_NOTNULL;
  SetNumber(std::to_string(doc.id), &p->id, &ind->id);
  SetText(doc.title, &p->title, &ind->title);
  SetNumber(doc.amount, &p->amount, &ind->amount);
  ind->created = OCI_IND_NULL;
  if (doc.created) {
    const std::string mask = "YYYY-MM-DD HH24:MI:SS";
    Check(OCIDateFromText(err_, T(doc.created->c_str()), Len(*doc.created), T(mask.c_str()),
                          static_cast<ub1>(mask.size()), nullptr, 0, &p->created),
          "OCIDateFromText");
    ind->created = OCI_IND_NOTNULL;
  }
  Check(OCIRawAssignBytes(env_, err_, reinterpret_cast<const ub1*>(doc.token.data()),
                          Len(doc.token), &p->token),
        "OCIRawAssignBytes");
  ind->token = OCI_IND_NOTNULL;
  ind->addr._atomic = doc.bAddr ? OCI_IND_NOTNULL : OCI_IND_NULL;
  ind->addr.street = ind->addr.city = OCI_IND_NULL;
  if (doc.bAddr) {
    SetText(doc.street, &p->addr.street, &ind->addr.street);
    SetText(doc.city, &p->addr.city, &ind->addr.city);
  }
  ind->lines = doc.bLines ? OCI_IND_NOTNULL : OCI_IND_NULL;
  for (const LineValues& line : doc.lines) {
    void* pItem = nullptr;
    Check(OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, line_tdo_, nullptr,
                       OCI_DURATION_DEFAULT, TRUE, &pItem),
          "OCIObjectNew");
    auto* pLine = static_cast<lr_line_t*>(pItem);
    void* pItemInd = nullptr;
    Check(OCIObjectGetInd(env_, err_, pLine, &pItemInd), "OCIObjectGetInd");
    auto* lind = static_cast<lr_line_ind*>(pItemInd);
    lind->_atomic = OCI_IND_NOTNULL;
    SetText(line.sku, &pLine->sku, &lind->sku);
    SetNumber(line.qty, &pLine->qty, &lind->qty);
    SetNumber(line.price, &pLine->price, &lind->price);
    SetText(line.note, &pLine->note, &lind->note);
    const sword nStatus = OCICollAppend(env_, err_, pLine, lind, p->lines);
    Check(OCIObjectFree(env_, err_, pLine, OCI_OBJECTFREE_FORCE), "OCIObjectFree");
    Check(nStatus, "OCICollAppend");
  }
  ind->tags = doc.bTags ? OCI_IND_NOTNULL : OCI_IND_NULL;
  for (const Opt& tag : doc.tags) {
    OCIString* pString = nullptr;
    const std::string text = tag ? *tag : std::string();
    Check(OCIStringAssignText(env_, err_, T(text.c_str()), Len(text), &pString),
          "OCIStringAssignText");
    OCIInd nInd = tag ? OCI_IND_NOTNULL : OCI_IND_NULL;
    const sword nStatus = OCICollAppend(env_, err_, pString, &nInd, p->tags);
    Check(OCIStringResize(env_, err_, 0, &pString), "OCIStringResize");
    Check(nStatus, "OCICollAppend");
  }
  SetLob(doc.body, p->body, OCI_TEMP_CLOB, &ind->body);
  SetLob(doc.img, p->img, OCI_TEMP_BLOB, &ind->img);
  *ppInd = ind;
  return p;
}

void DocSession::Release(lr_doc_t* pDoc, bool bTemporaryLobs) {
  if (bTemporaryLobs) {
    for (OCILobLocator* pLob : {pDoc->body, pDoc->img}) {
      boolean bTemporary = FALSE;
      Check(OCILobIsTemporary(env_, err_, pLob, &bTemporary), "OCILobIsTemporary");
      if (bTemporary) Check(OCILobFreeTemporary(svc_, err_, pLob), "OCILobFreeTemporary");
    }
  }
  Check(OCIObjectFree(env_, err_, pDoc, OCI_OBJECTFREE_FORCE), "OCIObjectFree");
}

void DocSession::Store(void* pObject, void* pInd) {
  const std::string sql = "INSERT INTO lr_docs VALUES (:1)";
  Statement stmt(env_);
  Check(OCIStmtPrepare(stmt.get(), err_, T(sql.c_str()), Len(sql), OCI_NTV_SYNTAX, OCI_DEFAULT),
        "OCIStmtPrepare");
  OCIBind* pBind = nullptr;
  Check(OCIBindByPos(stmt.get(), &pBind, err_, 1, nullptr, 0, SQLT_NTY, nullptr, nullptr, nullptr,
                     0, nullptr, OCI_DEFAULT),
        "OCIBindByPos");
  Check(OCIBindObject(pBind, err_, doc_tdo_, &pObject, nullptr, &pInd, nullptr), "OCIBindObject");
  Check(OCIStmtExecute(svc_, stmt.get(), err_, 1, 0, nullptr, nullptr, OCI_DEFAULT),
        "OCIStmtExecute of the insert");
}

lr_doc_t* DocSession::Fetch(long nId, lr_doc_ind** ppInd) {
  const std::string sql = "SELECT VALUE(d) FROM lr_docs d WHERE id = " + std::to_string(nId);
  Statement stmt(env_);
  Check(OCIStmtPrepare(stmt.get(), err_, T(sql.c_str()), Len(sql), OCI_NTV_SYNTAX, OCI_DEFAULT),
        "OCIStmtPrepare");
  OCIDefine* pDefine = nullptr;
  void* pObject = nullptr;
  void* pInd = nullptr;
  Check(OCIDefineByPos(stmt.get(), &pDefine, err_, 1, nullptr, 0, SQLT_NTY, nullptr, nullptr,
                       nullptr, OCI_DEFAULT),
        "OCIDefineByPos");
  Check(OCIDefineObject(pDefine, err_, doc_tdo_, &pObject, nullptr, &pInd, nullptr),
        "OCIDefineObject");
  Check(OCIStmtExecute(svc_, stmt.get(), err_, 1, 0, nullptr, nullptr, OCI_DEFAULT),
        "OCIStmtExecute of the fetch");
  *ppInd = static_cast<lr_doc_ind*>(pInd);
  return static_cast<lr_doc_t*>(pObject);
}

std::string DocSession::LobContents(OCILobLocator* pLob) {
  ub4 nLength = 0;
  Check(OCILobGetLength(svc_, err_, pLob, &nLength), "OCILobGetLength");
  std::string out(static_cast<size_t>(nLength) * 4 + 1, '\0');
  ub4 nAmount = nLength;
  if (nLength > 0) {
    Check(OCILobRead(svc_, err_, pLob, &nAmount, 1, &out[0], Len(out), nullptr, nullptr, 0,
                     SQLCS_IMPLICIT),
          "OCILobRead");
  }
  out.resize(nAmount);
  return out;
}

}  // namespace longrun
