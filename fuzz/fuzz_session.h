// What the fuzz targets share: an object-mode environment logged on to an
// in-memory database, statements run by text, an object bound into an
// INSERT, and the input cut into pieces.
#ifndef FUZZ_FUZZ_SESSION_H_
#define FUZZ_FUZZ_SESSION_H_

#include <oci.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace fuzz {

// Stops the run: a setup step that must not fail did.
[[noreturn]] inline void Die(const std::string& what) {
  std::fprintf(stderr, "fuzz setup: %s\n", what.c_str());
  std::abort();
}

class Session {
 public:
  Session() = default;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() {
    Close();
    if (env_ != nullptr) OCIHandleFree(env_, OCI_HTYPE_ENV);
  }

  // Logs on to the named in-memory database; false when that fails.
  bool Open(const char* pszDatabase) {
    if (env_ == nullptr) {
      if (OCIEnvCreate(&env_, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) !=
              OCI_SUCCESS ||
          OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_), OCI_HTYPE_ERROR, 0, nullptr) !=
              OCI_SUCCESS) {
        return false;
      }
    }
    static const char kUser[] = "SCOTT";
    static const char kPassword[] = "tiger";
    return OCILogon(env_, err_, &svc_, Text(kUser), 5, Text(kPassword), 5, Text(pszDatabase),
                    static_cast<ub4>(std::strlen(pszDatabase))) == OCI_SUCCESS;
  }

  // Logs off; the database goes with its last session.
  void Close() {
    if (svc_ != nullptr) OCILogoff(svc_, err_);
    svc_ = nullptr;
  }

  // Prepares and runs one statement; the status of the first call that failed.
  sword Execute(const char* pszSql, size_t nLength) {
    OCIStmt* pStmt = nullptr;
    sword rc = OCIHandleAlloc(env_, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT, 0, nullptr);
    if (rc != OCI_SUCCESS) return rc;
    rc = OCIStmtPrepare(pStmt, err_, Text(pszSql), static_cast<ub4>(nLength), OCI_NTV_SYNTAX,
                        OCI_DEFAULT);
    if (rc == OCI_SUCCESS) {
      ub2 nType = 0;
      OCIAttrGet(pStmt, OCI_HTYPE_STMT, &nType, nullptr, OCI_ATTR_STMT_TYPE, err_);
      // A query runs to its end, row by row, with nothing defined.
      const ub4 nIters = nType == OCI_STMT_SELECT ? 0 : 1;
      rc = OCIStmtExecute(svc_, pStmt, err_, nIters, 0, nullptr, nullptr, OCI_DEFAULT);
      for (int nRows = 0; rc == OCI_SUCCESS && nType == OCI_STMT_SELECT && nRows < 1000; ++nRows) {
        rc = OCIStmtFetch2(pStmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT);
      }
    }
    OCIHandleFree(pStmt, OCI_HTYPE_STMT);
    return rc;
  }
  sword Execute(const std::string& sql) { return Execute(sql.data(), sql.size()); }
  void MustExecute(const std::string& sql) {
    if (Execute(sql) != OCI_SUCCESS) Die(sql + ": " + Error());
  }

  // Inserts one object of type pTdo with `INSERT INTO table VALUES (:1)`.
  sword InsertObject(const char* pszTable, OCIType* pTdo, void* pInstance, void* pInd) {
    const std::string sql = std::string("INSERT INTO ") + pszTable + " VALUES (:1)";
    OCIStmt* pStmt = nullptr;
    sword rc = OCIHandleAlloc(env_, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT, 0, nullptr);
    if (rc != OCI_SUCCESS) return rc;
    OCIBind* pBind = nullptr;
    rc = OCIStmtPrepare(pStmt, err_, Text(sql.c_str()), static_cast<ub4>(sql.size()),
                        OCI_NTV_SYNTAX, OCI_DEFAULT);
    if (rc == OCI_SUCCESS) {
      rc = OCIBindByPos(pStmt, &pBind, err_, 1, nullptr, 0, SQLT_NTY, nullptr, nullptr, nullptr, 0,
                        nullptr, OCI_DEFAULT);
    }
    if (rc == OCI_SUCCESS) rc = OCIBindObject(pBind, err_, pTdo, &pInstance, nullptr, &pInd, nullptr);
    if (rc == OCI_SUCCESS) rc = OCIStmtExecute(svc_, pStmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT);
    OCIHandleFree(pStmt, OCI_HTYPE_STMT);
    return rc;
  }

  OCIType* Type(const char* pszName) {
    OCIType* pTdo = nullptr;
    if (OCITypeByName(env_, err_, svc_, nullptr, 0, Text(pszName),
                      static_cast<ub4>(std::strlen(pszName)), nullptr, 0, OCI_DURATION_SESSION,
                      OCI_TYPEGET_HEADER, &pTdo) != OCI_SUCCESS) {
      Die(std::string("OCITypeByName ") + pszName + ": " + Error());
    }
    return pTdo;
  }

  std::string Error() {
    OraText szMessage[1024] = {0};
    sb4 nCode = 0;
    OCIErrorGet(err_, 1, nullptr, &nCode, szMessage, sizeof szMessage, OCI_HTYPE_ERROR);
    return reinterpret_cast<char*>(szMessage);
  }

  OCIEnv* env() const { return env_; }
  OCIError* err() const { return err_; }
  OCISvcCtx* svc() const { return svc_; }

 private:
  static const OraText* Text(const char* psz) { return reinterpret_cast<const OraText*>(psz); }

  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  OCISvcCtx* svc_ = nullptr;
};

// Takes bytes off the front of a fuzz input.
class Input {
 public:
  Input(const uint8_t* pData, size_t nSize) : m_pData(pData), m_nSize(nSize) {}
  uint8_t Byte() {
    if (m_nSize == 0) return 0;
    --m_nSize;
    return *m_pData++;
  }
  // Up to n bytes (fewer when the input is shorter).
  std::string Bytes(size_t n) {
    if (n > m_nSize) n = m_nSize;
    std::string s(reinterpret_cast<const char*>(m_pData), n);
    m_pData += n;
    m_nSize -= n;
    return s;
  }
  const uint8_t* Data() const { return m_pData; }
  size_t Size() const { return m_nSize; }

 private:
  const uint8_t* m_pData;
  size_t m_nSize;
};

}  // namespace fuzz

#endif  // FUZZ_FUZZ_SESSION_H_
