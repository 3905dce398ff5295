// LOB columns and the LOB calls: locators of new instances, EMPTY_CLOB()/EMPTY_BLOB(),
// reads and writes (one piece and piecewise), trimming, temporary LOBs, row locks and the
// LOB errors.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class LobTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table docs (id number primary key, body clob, pic blob)");
    MustExec("insert into docs values (1, empty_clob(), empty_blob())");
    MustExec("insert into docs values (2, null, null)");
    ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
    clob_ = NewLocator();
    blob_ = NewLocator();
  }

  OCILobLocator* NewLocator() {
    OCILobLocator* l = nullptr;
    EXPECT_EQ(OCI_SUCCESS,
              OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&l), OCI_DTYPE_LOB, 0, nullptr));
    return l;
  }

  // Selects the LOBs of row `id` into clob_ and blob_.
  sword SelectLobs(int id, bool for_update, OCISvcCtx* svc = nullptr) {
    std::string sql = "select body, pic from docs where id = " + std::to_string(id);
    if (for_update) sql += " for update";
    OCIStmt* stmt = Prepare(sql);
    OCIDefine* d1 = nullptr;
    OCIDefine* d2 = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d1, err_, 1, &clob_, 0, SQLT_CLOB, &clob_ind_,
                                          nullptr, nullptr, OCI_DEFAULT));
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d2, err_, 2, &blob_, 0, SQLT_BLOB, &blob_ind_,
                                          nullptr, nullptr, OCI_DEFAULT));
    return Execute(stmt, 1, svc);
  }

  sword WriteOne(OCILobLocator* l, const std::string& data, ub4 offset = 1,
                 OCISvcCtx* svc = nullptr) {
    ub4 amount = static_cast<ub4>(data.size());
    return OCILobWrite(svc != nullptr ? svc : svc_, err_, l, &amount, offset,
                       const_cast<char*>(data.data()), amount, OCI_ONE_PIECE, nullptr, nullptr, 0,
                       SQLCS_IMPLICIT);
  }

  // The whole LOB as the adapter reads it: length, then one read of length × 4 bytes.
  std::string ReadAll(OCILobLocator* l, OCISvcCtx* svc = nullptr) {
    OCISvcCtx* s = svc != nullptr ? svc : svc_;
    ub4 length = 0;
    EXPECT_EQ(OCI_SUCCESS, OCILobGetLength(s, err_, l, &length)) << FirstError(err_);
    std::string buf(length * 4 + 1, '\0');
    ub4 amount = length * 4;
    EXPECT_EQ(OCI_SUCCESS, OCILobRead(s, err_, l, &amount, 1, &buf[0], length * 4, nullptr, nullptr,
                                      0, SQLCS_IMPLICIT))
        << FirstError(err_);
    buf.resize(amount);
    return buf;
  }

  OCILobLocator* clob_ = nullptr;
  OCILobLocator* blob_ = nullptr;
  sb2 clob_ind_ = 0;
  sb2 blob_ind_ = 0;
};

TEST_F(LobTest, EmptyLobIsNotNullAndHasLengthZero) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false)) << FirstError(err_);
  EXPECT_EQ(OCI_IND_NOTNULL, clob_ind_);
  ub4 length = 9;
  ASSERT_EQ(OCI_SUCCESS, OCILobGetLength(svc_, err_, clob_, &length));
  EXPECT_EQ(0u, length);
  ASSERT_EQ(OCI_SUCCESS, OCILobGetLength(svc_, err_, blob_, &length));
  EXPECT_EQ(0u, length);
}

// decision D10
TEST_F(LobTest, ReadOfAnEmptyLobSucceedsWithNothing) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  char buf[1];
  ub4 amount = 0;
  EXPECT_EQ(OCI_SUCCESS,
            OCILobRead(svc_, err_, blob_, &amount, 1, buf, 0, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(0u, amount);
}

TEST_F(LobTest, NullLobHasNullIndicator) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(2, false));
  EXPECT_EQ(OCI_IND_NULL, clob_ind_);
  EXPECT_EQ(OCI_IND_NULL, blob_ind_);
}

TEST_F(LobTest, WriteNeedsTheRowLocked) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  EXPECT_EQ(OCI_ERROR, WriteOne(clob_, "text"));
  EXPECT_EQ("ORA-22920: row containing the LOB value is not locked", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCILobTrim(svc_, err_, clob_, 0));
  EXPECT_EQ(22920, FirstCode(err_));
}

TEST_F(LobTest, OnePieceWriteThroughALockedRowIsReadBackAfterCommit) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true)) << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "hello world")) << FirstError(err_);
  const std::string bytes("\x00\x01\xff", 3);
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, bytes)) << FirstError(err_);
  EXPECT_EQ("hello world", ReadAll(clob_));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  OCILobLocator* again = NewLocator();
  OCIStmt* stmt = Prepare("select body from docs where id = 1");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, &again, 0, SQLT_CLOB, nullptr, nullptr,
                                        nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1));
  EXPECT_EQ("hello world", ReadAll(again));
  EXPECT_EQ(bytes, ReadAll(blob_));
}

TEST_F(LobTest, RowInsertedInTheTransactionIsLockedForItsLobs) {
  MustExec("insert into docs values (3, empty_clob(), empty_blob())");
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(3, false));
  EXPECT_EQ(OCI_SUCCESS, WriteOne(clob_, "mine")) << FirstError(err_);
}

TEST_F(LobTest, PiecewiseWriteProtocol) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ub4 amount = 0;
  char a[] = "abc";
  char b[] = "def";
  char c[] = "gh";
  EXPECT_EQ(OCI_NEED_DATA, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 3, OCI_FIRST_PIECE,
                                       nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(OCI_NEED_DATA, OCILobWrite(svc_, err_, clob_, &amount, 1, b, 3, OCI_NEXT_PIECE, nullptr,
                                       nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, clob_, &amount, 1, c, 2, OCI_LAST_PIECE, nullptr,
                                     nullptr, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ(8u, amount);
  EXPECT_EQ("abcdefgh", ReadAll(clob_));
}

// decision D12: an empty first piece is accepted
TEST_F(LobTest, EmptyFirstPieceIsAccepted) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ub4 amount = 0;
  char a[] = "xy";
  EXPECT_EQ(OCI_NEED_DATA, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 0, OCI_FIRST_PIECE,
                                       nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 2, OCI_LAST_PIECE, nullptr,
                                     nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("xy", ReadAll(clob_));
}

// decision D12: ORA-22923 when the last piece ends a write of nothing
TEST_F(LobTest, PiecewiseWriteOfNothing) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ub4 amount = 0;
  char a[1] = {0};
  EXPECT_EQ(OCI_NEED_DATA, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 0, OCI_FIRST_PIECE,
                                       nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 0, OCI_LAST_PIECE, nullptr,
                                   nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("ORA-22923: amount of data specified in streaming LOB write is 0", FirstError(err_));
}

TEST_F(LobTest, PiecesBeyondTheAnnouncedAmount) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ub4 amount = 4;
  char a[] = "abc";
  EXPECT_EQ(OCI_NEED_DATA, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 3, OCI_FIRST_PIECE,
                                       nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 3, OCI_LAST_PIECE, nullptr,
                                   nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("ORA-24810: attempting to write more data than indicated", FirstError(err_));
}

TEST_F(LobTest, LessDataThanAnnounced) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ub4 amount = 10;
  char a[] = "abc";
  EXPECT_EQ(OCI_NEED_DATA, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 3, OCI_FIRST_PIECE,
                                       nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 3, OCI_LAST_PIECE, nullptr,
                                   nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("ORA-24811: less data provided for writing than indicated", FirstError(err_));
  amount = 5;
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 3, OCI_ONE_PIECE, nullptr,
                                   nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24811, FirstCode(err_));
}

TEST_F(LobTest, NextPieceWithoutFirstPiece) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ub4 amount = 0;
  char a[] = "abc";
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 3, OCI_NEXT_PIECE, nullptr,
                                   nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24801, FirstCode(err_));
}

// decision D12: writes overwrite in place and never truncate
TEST_F(LobTest, ShorterWriteOverwritesWithoutTruncating) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "0123456789"));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "abc"));
  EXPECT_EQ("abc3456789", ReadAll(clob_));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "XY", 9));
  EXPECT_EQ("abc34567XY", ReadAll(clob_));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "Z", 13));
  EXPECT_EQ("abc34567XY  Z", ReadAll(clob_));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "b", 3));
  EXPECT_EQ(std::string("\0\0b", 3), ReadAll(blob_));
}

// decision D13: CLOB lengths and offsets in UTF-16 units, read amounts in bytes
TEST_F(LobTest, MultibyteClobCountsCharacters) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  const std::string text = "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80z";  // a é € 😀 z
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, text)) << FirstError(err_);
  ub4 length = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobGetLength(svc_, err_, clob_, &length));
  EXPECT_EQ(6u, length);  // the emoji counts two
  char buf[32];
  ub4 amount = 2;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead(svc_, err_, clob_, &amount, 2, buf, sizeof buf, nullptr,
                                    nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(5u, amount);
  EXPECT_EQ("\xc3\xa9\xe2\x82\xac", std::string(buf, amount));
  EXPECT_EQ(text, ReadAll(clob_));
}

TEST_F(LobTest, ReadWithOffsetAndAmount) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "abcdef"));
  char buf[8];
  ub4 amount = 3;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead(svc_, err_, blob_, &amount, 2, buf, sizeof buf, nullptr,
                                    nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("bcd", std::string(buf, amount));
  amount = 100;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead(svc_, err_, blob_, &amount, 5, buf, sizeof buf, nullptr,
                                    nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("ef", std::string(buf, amount));
}

TEST_F(LobTest, PollingReadHandsOutPieces) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "abcdefg"));
  char buf[3];
  ub4 amount = 0;  // to the end
  std::string got;
  sword rc = OCILobRead(svc_, err_, blob_, &amount, 1, buf, sizeof buf, nullptr, nullptr, 0,
                        SQLCS_IMPLICIT);
  while (rc == OCI_NEED_DATA) {
    got.append(buf, amount);
    rc = OCILobRead(svc_, err_, blob_, &amount, 1, buf, sizeof buf, nullptr, nullptr, 0,
                    SQLCS_IMPLICIT);
  }
  ASSERT_EQ(OCI_SUCCESS, rc);
  got.append(buf, amount);
  EXPECT_EQ("abcdefg", got);
}

TEST_F(LobTest, OffsetZeroIsIllegal) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  char buf[4];
  ub4 amount = 1;
  EXPECT_EQ(OCI_ERROR, OCILobRead(svc_, err_, clob_, &amount, 0, buf, sizeof buf, nullptr, nullptr,
                                  0, SQLCS_IMPLICIT));
  EXPECT_EQ("ORA-24801: illegal parameter value in OCI lob function", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, WriteOne(clob_, "x", 0));
  EXPECT_EQ(24801, FirstCode(err_));
}

TEST_F(LobTest, FormMismatch) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  char buf[4];
  ub4 amount = 1;
  EXPECT_EQ(OCI_ERROR, OCILobRead(svc_, err_, clob_, &amount, 1, buf, sizeof buf, nullptr, nullptr,
                                  0, SQLCS_NCHAR));
  EXPECT_EQ("ORA-24806: LOB form mismatch", FirstError(err_));
}

TEST_F(LobTest, TrimShortensAndRefusesToGrow) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "abcdef"));
  ASSERT_EQ(OCI_SUCCESS, OCILobTrim(svc_, err_, clob_, 2)) << FirstError(err_);
  EXPECT_EQ("ab", ReadAll(clob_));
  EXPECT_EQ(OCI_ERROR, OCILobTrim(svc_, err_, clob_, 3));
  EXPECT_EQ("ORA-22926: specified trim length is greater than current LOB value's length",
            FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCILobTrim(svc_, err_, blob_, 0));  // an empty LOB to 0
}

TEST_F(LobTest, UninitialisedLocator) {
  OCILobLocator* fresh = NewLocator();
  ub4 length = 0;
  EXPECT_EQ(OCI_ERROR, OCILobGetLength(svc_, err_, fresh, &length));
  EXPECT_EQ("ORA-22275: invalid LOB locator specified", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, WriteOne(fresh, "x"));
  EXPECT_EQ(22275, FirstCode(err_));
}

// UNCONFIRMED: a new temporary LOB is empty, written without lock
TEST_F(LobTest, TemporaryLobNeedsNoLock) {
  OCILobLocator* temp = NewLocator();
  ASSERT_EQ(OCI_SUCCESS, OCILobCreateTemporary(svc_, err_, temp, 0, SQLCS_IMPLICIT, OCI_TEMP_CLOB,
                                               FALSE, OCI_DURATION_SESSION));
  boolean is_temp = FALSE;
  ASSERT_EQ(OCI_SUCCESS, OCILobIsTemporary(env_, err_, temp, &is_temp));
  EXPECT_EQ(TRUE, is_temp);
  EXPECT_EQ("", ReadAll(temp));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(temp, "temp text")) << FirstError(err_);
  EXPECT_EQ("temp text", ReadAll(temp));
  ASSERT_EQ(OCI_SUCCESS, OCILobFreeTemporary(svc_, err_, temp));
  ub4 length = 0;
  EXPECT_EQ(OCI_ERROR, OCILobGetLength(svc_, err_, temp, &length));
  EXPECT_EQ(22275, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, OCILobIsTemporary(env_, err_, temp, &is_temp));
  EXPECT_EQ(FALSE, is_temp);
}

// UNCONFIRMED: binding a temporary LOB copies it
TEST_F(LobTest, TemporaryLobBoundIntoAnInsertIsCopied) {
  OCILobLocator* temp = NewLocator();
  ASSERT_EQ(OCI_SUCCESS, OCILobCreateTemporary(svc_, err_, temp, 0, SQLCS_IMPLICIT, OCI_TEMP_BLOB,
                                               FALSE, OCI_DURATION_SESSION));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(temp, "raw"));
  OCIStmt* stmt = Prepare("insert into docs (id, pic) values (5, :1)");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &temp, sizeof temp, SQLT_BLOB, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, WriteOne(temp, "XXX"));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(5, false));
  EXPECT_EQ("raw", ReadAll(blob_));
  EXPECT_EQ(OCI_SUCCESS, OCILobFreeTemporary(svc_, err_, temp));
}

// UNCONFIRMED: code of freeing a LOB that is not temporary
TEST_F(LobTest, FreeingAPersistentLobAsTemporaryIsRefused) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  EXPECT_EQ(OCI_ERROR, OCILobFreeTemporary(svc_, err_, clob_));
  EXPECT_EQ(22275, FirstCode(err_));
}

TEST_F(LobTest, BadTemporaryLobType) {
  OCILobLocator* temp = NewLocator();
  EXPECT_EQ(OCI_ERROR, OCILobCreateTemporary(svc_, err_, temp, 0, SQLCS_IMPLICIT, 7, FALSE,
                                             OCI_DURATION_SESSION));
  EXPECT_EQ(24801, FirstCode(err_));
}

TEST_F(LobTest, LocatorAssignSharesAPersistentLob) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  OCILobLocator* copy = NewLocator();
  ASSERT_EQ(OCI_SUCCESS, OCILobLocatorAssign(svc_, err_, clob_, &copy));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(copy, "via copy"));
  EXPECT_EQ("via copy", ReadAll(clob_));
}

// A locator selected in a transaction cannot write in another one (ORA-22990).
TEST_F(LobTest, LocatorsCannotSpanTransactions) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "first"));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ("first", ReadAll(clob_));  // reading is still allowed
  // after the commit its locators can read but no longer write
  EXPECT_EQ(OCI_ERROR, WriteOne(clob_, "second"));
  EXPECT_EQ(22990, FirstCode(err_));
  MustExec("update docs set id = 1 where id = 1");  // a new transaction locks the row
  EXPECT_EQ(OCI_ERROR, WriteOne(clob_, "second"));
  EXPECT_EQ("ORA-22990: LOB locators cannot span transactions", FirstError(err_));
}

TEST_F(LobTest, RollbackUndoesALobWrite) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "kept"));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "lost"));
  ASSERT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ("kept", ReadAll(clob_));
}

TEST_F(LobTest, OtherSessionReadsCommittedLobContentsOnly) {
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "draft"));
  OCILobLocator* theirs = NewLocator();
  OCIStmt* stmt = Prepare("select body from docs where id = 1");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, &theirs, 0, SQLT_CLOB, nullptr, nullptr,
                                        nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1, other));
  EXPECT_EQ("", ReadAll(theirs, other));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ("draft", ReadAll(theirs, other));
}

TEST_F(LobTest, LobDefineOfTheWrongKind) {
  OCIStmt* stmt = Prepare("select body from docs where id = 1");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, &blob_, 0, SQLT_BLOB, nullptr, nullptr,
                                        nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 1));
  EXPECT_EQ(932, FirstCode(err_));
}

TEST_F(LobTest, ClobLocatorBoundToABlobColumn) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  OCIStmt* stmt = Prepare("insert into docs (id, pic) values (9, :1)");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &clob_, sizeof clob_, SQLT_CLOB, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected BLOB got CLOB", FirstError(err_));
}

TEST_F(LobTest, TextInsertedIntoAClob) {
  MustExec("insert into docs (id, body) values (4, 'literal text')");
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(4, false));
  EXPECT_EQ("literal text", ReadAll(clob_));
}

TEST_F(LobTest, UpdateWithEmptyClobEmptiesTheLob) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "something"));
  MustExec("update docs set body = empty_clob() where id = 1");
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  EXPECT_EQ("", ReadAll(clob_));
}

}  // namespace
}  // namespace ocimem_test

namespace ocimem_test {
namespace {

class LobLimitTest : public LobTest {};

// In memory a LOB is held to 1 GiB; an offset near 4 GB would otherwise fill a 4 GB gap.
// Oracle's own limit is far higher: ocimem answers with Oracle's error for exceeding it.
TEST_F(LobLimitTest, WriteFarBeyondTheEndIsRefusedWithoutGrowing) {
  for (ub1 kind : {ub1{OCI_TEMP_BLOB}, ub1{OCI_TEMP_CLOB}}) {
    OCILobLocator* temp = NewLocator();
    ASSERT_EQ(OCI_SUCCESS, OCILobCreateTemporary(svc_, err_, temp, 0, SQLCS_IMPLICIT, kind,
                                                 FALSE, OCI_DURATION_SESSION));
    ASSERT_EQ(OCI_SUCCESS, WriteOne(temp, "abc"));
    EXPECT_EQ(OCI_ERROR, WriteOne(temp, "x", 0xFFFFFFFFu));
    EXPECT_EQ("ORA-22925: operation would exceed maximum size allowed for a LOB value",
              FirstError(err_));
    EXPECT_EQ(OCI_ERROR, WriteOne(temp, "x", (1u << 30) + 1));
    EXPECT_EQ(22925, FirstCode(err_));
    // A piecewise write is refused at the piece that would not fit, and is over.
    ub4 amount = 0;
    char piece = 'y';
    EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, temp, &amount, 0xF0000000u, &piece, 1,
                                     OCI_FIRST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
    EXPECT_EQ(22925, FirstCode(err_));
    EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, temp, &amount, 0xF0000000u, &piece, 1,
                                     OCI_LAST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
    EXPECT_EQ(24801, FirstCode(err_));
    ub4 length = 0;
    ASSERT_EQ(OCI_SUCCESS, OCILobGetLength(svc_, err_, temp, &length));
    EXPECT_EQ(3u, length);
    EXPECT_EQ("abc", ReadAll(temp));
  }
}

}  // namespace
}  // namespace ocimem_test
