// A table with CLOB, BLOB and NCLOB columns and the LOB helpers of an ordinary OCI program:
// locators from OCIDescriptorAlloc, rows selected (FOR UPDATE) into them, one-piece writes
// and whole reads.
#ifndef TESTS_OCIMEM_LOB_FIXTURE_H
#define TESTS_OCIMEM_LOB_FIXTURE_H

#include <string>

#include "sql_fixture.h"

namespace ocimem_test {

class LobFixture : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table docs (id number primary key, body clob, pic blob, note nclob)");
    MustExec("insert into docs values (1, empty_clob(), empty_blob(), empty_clob())");
    MustExec("insert into docs values (2, null, null, null)");
    ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
    clob_ = NewLocator();
    blob_ = NewLocator();
    nclob_ = NewLocator();
  }

  OCILobLocator* NewLocator() {
    OCILobLocator* l = nullptr;
    EXPECT_EQ(OCI_SUCCESS,
              OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&l), OCI_DTYPE_LOB, 0, nullptr));
    return l;
  }

  OCILobLocator* NewTemporary(ub1 kind, ub1 csfrm = SQLCS_IMPLICIT) {
    OCILobLocator* l = NewLocator();
    EXPECT_EQ(OCI_SUCCESS, OCILobCreateTemporary(svc_, err_, l, 0, csfrm, kind, FALSE,
                                                 OCI_DURATION_SESSION))
        << FirstError(err_);
    return l;
  }

  // Selects the LOBs of row `id` into clob_, blob_ and nclob_.
  sword SelectLobs(int id, bool for_update, OCISvcCtx* svc = nullptr) {
    std::string sql = "select body, pic, note from docs where id = " + std::to_string(id);
    if (for_update) sql += " for update";
    OCIStmt* stmt = Prepare(sql);
    OCIDefine* d[3] = {nullptr, nullptr, nullptr};
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d[0], err_, 1, &clob_, 0, SQLT_CLOB, &clob_ind_,
                                          nullptr, nullptr, OCI_DEFAULT));
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d[1], err_, 2, &blob_, 0, SQLT_BLOB, &blob_ind_,
                                          nullptr, nullptr, OCI_DEFAULT));
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d[2], err_, 3, &nclob_, 0, SQLT_CLOB,
                                          &nclob_ind_, nullptr, nullptr, OCI_DEFAULT));
    return Execute(stmt, 1, svc);
  }

  // A one-piece write of `data` (amount in bytes) at `offset`.
  sword WriteOne(OCILobLocator* l, const std::string& data, ub4 offset = 1,
                 OCISvcCtx* svc = nullptr, ub1 csfrm = SQLCS_IMPLICIT) {
    ub4 amount = static_cast<ub4>(data.size());
    return OCILobWrite(svc != nullptr ? svc : svc_, err_, l, &amount, offset,
                       const_cast<char*>(data.data()), amount, OCI_ONE_PIECE, nullptr, nullptr, 0,
                       csfrm);
  }

  // The whole LOB: its length, then one read of length × 4 bytes.
  std::string ReadAll(OCILobLocator* l, OCISvcCtx* svc = nullptr, ub1 csfrm = SQLCS_IMPLICIT) {
    OCISvcCtx* s = svc != nullptr ? svc : svc_;
    ub4 length = 0;
    EXPECT_EQ(OCI_SUCCESS, OCILobGetLength(s, err_, l, &length)) << FirstError(err_);
    std::string buf(length * 4 + 1, '\0');
    ub4 amount = length * 4;
    EXPECT_EQ(OCI_SUCCESS, OCILobRead(s, err_, l, &amount, 1, &buf[0], length * 4, nullptr,
                                      nullptr, 0, csfrm))
        << FirstError(err_);
    buf.resize(amount);
    return buf;
  }

  ub4 Length(OCILobLocator* l) {
    ub4 length = 0;
    EXPECT_EQ(OCI_SUCCESS, OCILobGetLength(svc_, err_, l, &length)) << FirstError(err_);
    return length;
  }

  // Arms an injected ORA-03113 for the next call of `function`.
  static void ArmFault(const char* function, sword status = OCI_ERROR) {
    const sb4 codes[] = {3113};
    const char* const texts[] = {"end-of-file on communication channel"};
    ocimemFaultArm(function, 1, status, codes, texts, 1);
  }

  OCILobLocator* clob_ = nullptr;
  OCILobLocator* blob_ = nullptr;
  OCILobLocator* nclob_ = nullptr;
  sb2 clob_ind_ = 0;
  sb2 blob_ind_ = 0;
  sb2 nclob_ind_ = 0;
};

// "a é € 😀 z" in UTF-8: 6 characters as Oracle counts them (the emoji is two UTF-16 units),
// 11 bytes.
inline const std::string& MultibyteText() {
  static const std::string text = "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80z";
  return text;
}

}  // namespace ocimem_test

#endif  // TESTS_OCIMEM_LOB_FIXTURE_H
