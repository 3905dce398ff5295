// The host side of the long run: one Oracle session on the in-memory OCI
// with the document types and their object table, documents built from
// values with OCI calls (LOBs as temporary LOBs), stored rows fetched back
// and their LOB contents read. Every failed OCI call throws.
#ifndef TESTS_LONGRUN_DOC_SESSION_H_
#define TESTS_LONGRUN_DOC_SESSION_H_

#include <stdexcept>
#include <string>

#include <oci.h>
#include <orid.h>

#include "doc_record.h"

namespace longrun {

// The C layouts of the types in doc_record.cc.
struct lr_addr_t {
  OCIString* street;
  OCIString* city;
};
struct lr_addr_ind {
  OCIInd _atomic, street, city;
};
struct lr_line_t {
  OCIString* sku;
  OCINumber qty;
  OCINumber price;
  OCIString* note;
};
struct lr_line_ind {
  OCIInd _atomic, sku, qty, price, note;
};
struct lr_doc_t {
  OCINumber id;
  OCIString* title;
  OCINumber amount;
  OCIDate created;
  OCIRaw* token;
  lr_addr_t addr;
  OCITable* lines;
  OCIArray* tags;
  OCILobLocator* body;
  OCILobLocator* img;
};
struct lr_doc_ind {
  OCIInd _atomic, id, title, amount, created, token;
  lr_addr_ind addr;
  OCIInd lines, tags, body, img;
};

struct OciFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class DocSession {
 public:
  // Logs on to the in-memory database pszDb and creates the types and the
  // table there.
  explicit DocSession(const char* pszDb);
  ~DocSession();
  DocSession(const DocSession&) = delete;
  DocSession& operator=(const DocSession&) = delete;

  OCIEnv* Env() const { return env_; }
  OCIError* Err() const { return err_; }
  OCISvcCtx* Svc() const { return svc_; }
  OCIType* DocType() const { return doc_tdo_; }

  // A new document holding the values; give it back with Release.
  lr_doc_t* Build(const DocValues& doc, lr_doc_ind** ppInd);
  // Frees a built or fetched document (and a built one's temporary LOBs).
  void Release(lr_doc_t* pDoc, bool bTemporaryLobs);

  // Inserts the object through a bound object.
  void Store(void* pObject, void* pInd);
  // The stored document nId, fetched with SELECT VALUE(...).
  lr_doc_t* Fetch(long nId, lr_doc_ind** ppInd);
  // The contents of a LOB that is not null, read whole.
  std::string LobContents(OCILobLocator* pLob);

  void Exec(const std::string& sql);

 private:
  void Check(sword nStatus, const char* pszCall);
  void SetText(const Opt& v, OCIString** ppString, OCIInd* pInd);
  void SetNumber(const Opt& v, OCINumber* pNumber, OCIInd* pInd);
  void SetLob(const Opt& v, OCILobLocator* pLob, ub1 nType, OCIInd* pInd);

  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  OCISvcCtx* svc_ = nullptr;
  OCIType* doc_tdo_ = nullptr;
  OCIType* line_tdo_ = nullptr;
};

}  // namespace longrun

#endif  // TESTS_LONGRUN_DOC_SESSION_H_
