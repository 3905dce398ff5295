// OCILobOpen, OCILobClose and OCILobIsOpen (modes, openness of the LOB rather than the
// locator, transactions), and the locator queries OCILobCharSetForm, OCILobCharSetId and
// OCILobGetChunkSize.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lob_fixture.h"

namespace ocimem_test {
namespace {

class LobOpenTest : public LobFixture {
 protected:
  boolean IsOpen(OCILobLocator* l, OCISvcCtx* svc = nullptr) {
    boolean flag = 7;
    EXPECT_EQ(OCI_SUCCESS, OCILobIsOpen(svc != nullptr ? svc : svc_, err_, l, &flag))
        << FirstError(err_);
    return flag;
  }
};

TEST_F(LobOpenTest, OpennessBelongsToTheLob) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  EXPECT_EQ(FALSE, IsOpen(clob_));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, clob_, OCI_LOB_READWRITE)) << FirstError(err_);
  EXPECT_EQ(TRUE, IsOpen(clob_));
  OCILobLocator* other = NewLocator();
  ASSERT_EQ(OCI_SUCCESS, OCILobLocatorAssign(svc_, err_, clob_, &other));
  EXPECT_EQ(TRUE, IsOpen(other));  // another locator of the same LOB
  EXPECT_EQ(FALSE, IsOpen(blob_));
  EXPECT_EQ(OCI_ERROR, OCILobOpen(svc_, err_, other, OCI_LOB_READONLY));
  EXPECT_EQ("ORA-22293: LOB already opened in the same transaction", FirstError(err_));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "while open"));
  ASSERT_EQ(OCI_SUCCESS, OCILobClose(svc_, err_, other)) << FirstError(err_);
  EXPECT_EQ(FALSE, IsOpen(clob_));
  // decision LB7: ORA-22289 names the operation CLOSE
  EXPECT_EQ(OCI_ERROR, OCILobClose(svc_, err_, clob_));
  EXPECT_EQ("ORA-22289: cannot perform CLOSE operation on an unopened file or LOB",
            FirstError(err_));
  EXPECT_EQ("while open", ReadAll(clob_));
}

TEST_F(LobOpenTest, ReadOnlyOpeningRefusesChanges) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "abc"));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, clob_, OCI_LOB_READONLY));
  EXPECT_EQ(OCI_ERROR, WriteOne(clob_, "x"));
  EXPECT_EQ("ORA-22294: cannot update a LOB opened in read-only mode", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCILobTrim(svc_, err_, clob_, 1));
  EXPECT_EQ(22294, FirstCode(err_));
  ub4 amount = 1;
  EXPECT_EQ(OCI_ERROR, OCILobErase(svc_, err_, clob_, &amount, 1));
  EXPECT_EQ(22294, FirstCode(err_));
  OCILobLocator* temp = NewTemporary(OCI_TEMP_CLOB);
  EXPECT_EQ(OCI_ERROR, OCILobAppend(svc_, err_, clob_, temp));
  EXPECT_EQ(22294, FirstCode(err_));
  EXPECT_EQ("abc", ReadAll(clob_));  // reading is allowed
  ASSERT_EQ(OCI_SUCCESS, OCILobClose(svc_, err_, clob_));
  EXPECT_EQ(OCI_SUCCESS, WriteOne(clob_, "x"));
  EXPECT_EQ("xbc", ReadAll(clob_));
}

// decision LB15: a LOB opened read-only outside a transaction stays open across one
TEST_F(LobOpenTest, ReadWriteOpeningNeedsATransaction) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));  // no transaction is open
  EXPECT_EQ(OCI_ERROR, OCILobOpen(svc_, err_, clob_, OCI_LOB_READWRITE));
  EXPECT_EQ("ORA-22292: Cannot open a LOB in read-write mode without a transaction",
            FirstError(err_));
  EXPECT_EQ(FALSE, IsOpen(clob_));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, clob_, OCI_LOB_READONLY));
  EXPECT_EQ(TRUE, IsOpen(clob_));
  // Opened outside any transaction, it stays open across one.
  MustExec("update docs set id = 1 where id = 1");
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(TRUE, IsOpen(clob_));
  ASSERT_EQ(OCI_SUCCESS, OCILobClose(svc_, err_, clob_));
}

// decision LB6: modes other than OCI_LOB_READONLY and OCI_LOB_READWRITE are refused
// (ORA-24801)
TEST_F(LobOpenTest, OtherModesAreRefused) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  for (ub1 mode : {ub1{0}, ub1{OCI_LOB_WRITEONLY}, ub1{OCI_LOB_APPENDONLY},
                   ub1{OCI_LOB_FULLOVERWRITE}, ub1{OCI_LOB_FULLREAD}, ub1{9}}) {
    EXPECT_EQ(OCI_ERROR, OCILobOpen(svc_, err_, clob_, mode)) << int{mode};
    EXPECT_EQ("ORA-24801: illegal parameter value in OCI lob function", FirstError(err_));
  }
  EXPECT_EQ(FALSE, IsOpen(clob_));
}

// decision LB14: OCI_ERROR with ORA-22291 after the commit, as Oracle's guide says ("it is an
// error"), not the warning ORA-22297 of newer catalogues
TEST_F(LobOpenTest, CommitWithOpenLobsCommitsAndReports) {
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, clob_, OCI_LOB_READWRITE));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "committed"));
  EXPECT_EQ(OCI_ERROR, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ("ORA-22291: Open LOBs exist at transaction commit time", FirstError(err_));
  EXPECT_EQ(FALSE, IsOpen(clob_));  // the openness is discarded
  EXPECT_EQ(OCI_ERROR, OCILobClose(svc_, err_, clob_));
  EXPECT_EQ(22289, FirstCode(err_));
  EXPECT_EQ(std::vector<std::string>{"1"},
            Column("select id from docs where id = 1 for update", other));  // lock released
  std::string seen;
  {
    OCIStmt* stmt = Prepare("select body from docs where id = 1");
    char buf[32];
    ub2 rlen = 0;
    OCIDefine* d = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, buf, sizeof buf, SQLT_CHR, nullptr,
                                          &rlen, nullptr, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1, other));
    seen.assign(buf, rlen);
  }
  EXPECT_EQ("committed", seen);
  // Closed before the commit: nothing to report.
  ASSERT_EQ(OCI_SUCCESS, OCITransRollback(other, err_, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, clob_, OCI_LOB_READWRITE));
  ASSERT_EQ(OCI_SUCCESS, OCILobClose(svc_, err_, clob_));
  EXPECT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
}

TEST_F(LobOpenTest, CommitStatementWithOpenLobs) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, blob_, OCI_LOB_READWRITE));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "bytes"));
  EXPECT_EQ(OCI_ERROR, Exec("commit"));
  EXPECT_EQ("ORA-22291: Open LOBs exist at transaction commit time", FirstError(err_));
  EXPECT_EQ(FALSE, IsOpen(blob_));
  ASSERT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  EXPECT_EQ("bytes", ReadAll(blob_));  // committed all the same
}

// decision LB14: the commits a statement makes on its own (OCI_COMMIT_ON_SUCCESS, DDL) close
// open LOBs without a word
TEST_F(LobOpenTest, ImplicitCommitsCloseOpenLobs) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, clob_, OCI_LOB_READWRITE));
  OCIStmt* stmt = Prepare("update docs set id = 1 where id = 1");
  EXPECT_EQ(OCI_SUCCESS, Execute(stmt, 1, nullptr, OCI_COMMIT_ON_SUCCESS)) << FirstError(err_);
  EXPECT_EQ(FALSE, IsOpen(clob_));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, blob_, OCI_LOB_READWRITE));
  MustExec("create table other_docs (id number)");
  EXPECT_EQ(FALSE, IsOpen(blob_));
}

TEST_F(LobOpenTest, RollbackClosesOpenLobs) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, clob_, OCI_LOB_READWRITE));
  ASSERT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(FALSE, IsOpen(clob_));
}

TEST_F(LobOpenTest, EachSessionOpensForItself) {
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, clob_, OCI_LOB_READWRITE));
  OCILobLocator* theirs = NewLocator();
  OCIStmt* stmt = Prepare("select body from docs where id = 1");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, &theirs, 0, SQLT_CLOB, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1, other));
  EXPECT_EQ(FALSE, IsOpen(theirs, other));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(other, err_, theirs, OCI_LOB_READONLY)) << FirstError(err_);
  EXPECT_EQ(TRUE, IsOpen(theirs, other));
  ASSERT_EQ(OCI_SUCCESS, OCILobClose(other, err_, theirs));
  EXPECT_EQ(TRUE, IsOpen(clob_));
}

// decision LB15: a temporary LOB opens read-write without a transaction, and stays open
// across transactions
TEST_F(LobOpenTest, TemporaryLobsOpenWithoutATransaction) {
  OCILobLocator* temp = NewTemporary(OCI_TEMP_BLOB);
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, temp, OCI_LOB_READWRITE)) << FirstError(err_);
  EXPECT_EQ(TRUE, IsOpen(temp));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(temp, "t"));
  OCILobLocator* copy = NewLocator();
  ASSERT_EQ(OCI_SUCCESS, OCILobLocatorAssign(svc_, err_, temp, &copy));
  EXPECT_EQ(FALSE, IsOpen(copy));  // a copy of a temporary LOB is a LOB of its own
  ASSERT_EQ(OCI_SUCCESS, OCILobClose(svc_, err_, temp));
  ASSERT_EQ(OCI_SUCCESS, OCILobOpen(svc_, err_, temp, OCI_LOB_READONLY));
  EXPECT_EQ(OCI_ERROR, WriteOne(temp, "u"));
  EXPECT_EQ(22294, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, OCILobFreeTemporary(svc_, err_, temp));
  EXPECT_EQ(OCI_ERROR, OCILobClose(svc_, err_, temp));
  EXPECT_EQ(22275, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCILobFreeTemporary(svc_, err_, copy));
}

TEST_F(LobOpenTest, LocatorsWithoutALob) {
  OCILobLocator* unset = NewLocator();
  boolean flag = FALSE;
  EXPECT_EQ(OCI_ERROR, OCILobOpen(svc_, err_, unset, OCI_LOB_READONLY));
  EXPECT_EQ("ORA-22275: invalid LOB locator specified", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCILobClose(svc_, err_, unset));
  EXPECT_EQ(22275, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobIsOpen(svc_, err_, unset, &flag));
  EXPECT_EQ(22275, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobIsOpen(svc_, err_, nullptr, &flag));
  EXPECT_EQ(22275, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(2, true));  // NULL LOBs
  EXPECT_EQ(OCI_ERROR, OCILobOpen(svc_, err_, clob_, OCI_LOB_READWRITE));
  EXPECT_EQ(22275, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  EXPECT_EQ(OCI_ERROR, OCILobIsOpen(svc_, err_, clob_, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  // decisions D11, LB17: the empty LOB of a new instance cannot be opened; it is never open
  MustExec("create type pic_t as object (id number, img blob)");
  OCIType* tdo = TypeByName("PIC_T");
  void* obj = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, tdo, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &obj));
  struct PicStruct {
    OCINumber id;
    OCILobLocator* img;
  };
  OCILobLocator* fresh = static_cast<PicStruct*>(obj)->img;
  EXPECT_EQ(OCI_ERROR, OCILobOpen(svc_, err_, fresh, OCI_LOB_READONLY));
  EXPECT_EQ(22275, FirstCode(err_));
  EXPECT_EQ(FALSE, IsOpen(fresh));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_DEFAULT));
}

TEST_F(LobOpenTest, CharacterSetFormAndId) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  ub1 form = 9;
  ub2 id = 9;
  ASSERT_EQ(OCI_SUCCESS, OCILobCharSetForm(env_, err_, clob_, &form));
  EXPECT_EQ(SQLCS_IMPLICIT, form);
  ASSERT_EQ(OCI_SUCCESS, OCILobCharSetId(env_, err_, clob_, &id));
  EXPECT_EQ(873, id);  // AL32UTF8
  ASSERT_EQ(OCI_SUCCESS, OCILobCharSetForm(env_, err_, nclob_, &form));
  EXPECT_EQ(SQLCS_NCHAR, form);
  ASSERT_EQ(OCI_SUCCESS, OCILobCharSetId(env_, err_, nclob_, &id));
  EXPECT_EQ(2000, id);  // AL16UTF16
  ASSERT_EQ(OCI_SUCCESS, OCILobCharSetForm(env_, err_, blob_, &form));
  EXPECT_EQ(0, form);
  ASSERT_EQ(OCI_SUCCESS, OCILobCharSetId(env_, err_, blob_, &id));
  EXPECT_EQ(0, id);
  OCILobLocator* ntemp = NewTemporary(OCI_TEMP_CLOB, SQLCS_NCHAR);
  ASSERT_EQ(OCI_SUCCESS, OCILobCharSetForm(env_, err_, ntemp, &form));
  EXPECT_EQ(SQLCS_NCHAR, form);
  OCILobLocator* file = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&file),
                                            OCI_DTYPE_FILE, 0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCILobCharSetForm(env_, err_, file, &form));
  EXPECT_EQ(0, form);  // a BFILE has no character set
  // decision LB8: a locator that designates no LOB has no form or id (ORA-22275)
  OCILobLocator* unset = NewLocator();
  EXPECT_EQ(OCI_ERROR, OCILobCharSetForm(env_, err_, unset, &form));
  EXPECT_EQ(22275, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobCharSetId(env_, err_, unset, &id));
  EXPECT_EQ(22275, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobCharSetForm(env_, err_, clob_, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCILobCharSetId(nullptr, err_, clob_, &id));
}

TEST_F(LobOpenTest, NclobTakesTheNationalForm) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  EXPECT_EQ(OCI_ERROR, WriteOne(nclob_, "x", 1, nullptr, SQLCS_IMPLICIT));
  EXPECT_EQ("ORA-24806: LOB form mismatch", FirstError(err_));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(nclob_, "national", 1, nullptr, SQLCS_NCHAR));
  EXPECT_EQ("national", ReadAll(nclob_, nullptr, SQLCS_NCHAR));
  EXPECT_EQ(OCI_ERROR, WriteOne(clob_, "x", 1, nullptr, SQLCS_NCHAR));
  EXPECT_EQ(24806, FirstCode(err_));
}

// decision LB9: chunks of a LOB stored in 8 KB blocks: 8132 bytes, 4066 CLOB characters
TEST_F(LobOpenTest, ChunkSize) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  ub4 chunk = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobGetChunkSize(svc_, err_, blob_, &chunk));
  EXPECT_EQ(8132u, chunk);
  ASSERT_EQ(OCI_SUCCESS, OCILobGetChunkSize(svc_, err_, clob_, &chunk));
  EXPECT_EQ(4066u, chunk);
  OCILobLocator* temp = NewTemporary(OCI_TEMP_BLOB);
  ASSERT_EQ(OCI_SUCCESS, OCILobGetChunkSize(svc_, err_, temp, &chunk));
  EXPECT_EQ(8132u, chunk);
  EXPECT_EQ(OCI_ERROR, OCILobGetChunkSize(svc_, err_, NewLocator(), &chunk));
  EXPECT_EQ(22275, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobGetChunkSize(svc_, err_, blob_, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCILobGetChunkSize(nullptr, err_, blob_, &chunk));
}

}  // namespace
}  // namespace ocimem_test
