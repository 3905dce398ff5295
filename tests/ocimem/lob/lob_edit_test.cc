// OCILobAppend, OCILobCopy, OCILobCopy2, OCILobErase, OCILobErase2, OCILobGetLength2 and
// OCILobTrim2 on stored and temporary LOBs: results, character amounts of CLOBs holding
// multibyte text, row locks, NULL locators and offsets beyond the end.
#include <gtest/gtest.h>

#include <string>

#include "lob_fixture.h"

namespace ocimem_test {
namespace {

class LobEditTest : public LobFixture {
 protected:
  void SetUp() override {
    LobFixture::SetUp();
    ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true)) << FirstError(err_);
  }

  OCILobLocator* TemporaryWith(ub1 kind, const std::string& data) {
    OCILobLocator* l = NewTemporary(kind);
    EXPECT_EQ(OCI_SUCCESS, WriteOne(l, data)) << FirstError(err_);
    return l;
  }
};

TEST_F(LobEditTest, AppendAddsTheSourceAtTheEnd) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "head"));
  OCILobLocator* tail = TemporaryWith(OCI_TEMP_CLOB, "-tail");
  ASSERT_EQ(OCI_SUCCESS, OCILobAppend(svc_, err_, clob_, tail)) << FirstError(err_);
  EXPECT_EQ("head-tail", ReadAll(clob_));
  EXPECT_EQ("-tail", ReadAll(tail));  // the source is left as it was
  ASSERT_EQ(OCI_SUCCESS, OCILobAppend(svc_, err_, clob_, clob_));  // onto itself
  EXPECT_EQ("head-tailhead-tail", ReadAll(clob_));
  OCILobLocator* bytes = TemporaryWith(OCI_TEMP_BLOB, std::string("\x00\xff", 2));
  ASSERT_EQ(OCI_SUCCESS, OCILobAppend(svc_, err_, blob_, bytes));
  ASSERT_EQ(OCI_SUCCESS, OCILobAppend(svc_, err_, blob_, bytes));
  EXPECT_EQ(std::string("\x00\xff\x00\xff", 4), ReadAll(blob_));
  // A stored LOB appended to a temporary one; an NCLOB to a CLOB.
  ASSERT_EQ(OCI_SUCCESS, WriteOne(nclob_, "n", 1, nullptr, SQLCS_NCHAR));
  ASSERT_EQ(OCI_SUCCESS, OCILobAppend(svc_, err_, tail, nclob_));
  EXPECT_EQ("-tailn", ReadAll(tail));
  // An empty source changes nothing.
  OCILobLocator* empty = NewTemporary(OCI_TEMP_CLOB);
  ASSERT_EQ(OCI_SUCCESS, OCILobAppend(svc_, err_, tail, empty));
  EXPECT_EQ("-tailn", ReadAll(tail));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  EXPECT_EQ("head-tailhead-tail", ReadAll(clob_));
}

TEST_F(LobEditTest, AppendRefusals) {
  OCILobLocator* text = TemporaryWith(OCI_TEMP_CLOB, "x");
  EXPECT_EQ(OCI_ERROR, OCILobAppend(svc_, err_, blob_, text));
  EXPECT_EQ("ORA-24805: LOB type mismatch", FirstError(err_));
  OCILobLocator* unset = NewLocator();
  EXPECT_EQ(OCI_ERROR, OCILobAppend(svc_, err_, clob_, unset));
  EXPECT_EQ("ORA-22275: invalid LOB locator specified", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCILobAppend(svc_, err_, nullptr, text));
  EXPECT_EQ(22275, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  EXPECT_EQ(OCI_ERROR, OCILobAppend(svc_, err_, clob_, text));
  EXPECT_EQ("ORA-22920: row containing the LOB value is not locked", FirstError(err_));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(2, false));  // NULL LOBs
  EXPECT_EQ(OCI_ERROR, OCILobAppend(svc_, err_, text, clob_));
  EXPECT_EQ(22275, FirstCode(err_));
}

TEST_F(LobEditTest, CopyOverwritesAtTheDestinationOffset) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "0123456789"));
  OCILobLocator* src = TemporaryWith(OCI_TEMP_CLOB, "abcdef");
  ASSERT_EQ(OCI_SUCCESS, OCILobCopy(svc_, err_, clob_, src, 3, 5, 2)) << FirstError(err_);
  EXPECT_EQ("0123bcd789", ReadAll(clob_));
  // More than the source holds copies to its end.
  ASSERT_EQ(OCI_SUCCESS, OCILobCopy(svc_, err_, clob_, src, 100, 1, 5));
  EXPECT_EQ("ef23bcd789", ReadAll(clob_));
  // Beyond the destination's end the gap is filled with spaces (CLOB) or zero bytes (BLOB).
  ASSERT_EQ(OCI_SUCCESS, OCILobCopy(svc_, err_, clob_, src, 2, 13, 1));
  EXPECT_EQ("ef23bcd789  ab", ReadAll(clob_));
  OCILobLocator* raw = TemporaryWith(OCI_TEMP_BLOB, "xyz");
  ASSERT_EQ(OCI_SUCCESS, OCILobCopy(svc_, err_, blob_, raw, 3, 3, 1));
  EXPECT_EQ(std::string("\0\0xyz", 5), ReadAll(blob_));
  ASSERT_EQ(OCI_SUCCESS, OCILobCopy2(svc_, err_, blob_, raw, 1, 1, 3)) << FirstError(err_);
  EXPECT_EQ(std::string("z\0xyz", 5), ReadAll(blob_));
}

// decision D13: copy amounts and offsets count CLOB characters
TEST_F(LobEditTest, CopyCountsCharacters) {
  OCILobLocator* src = TemporaryWith(OCI_TEMP_CLOB, MultibyteText());
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "0123"));
  ASSERT_EQ(OCI_SUCCESS, OCILobCopy(svc_, err_, clob_, src, 2, 2, 2));
  EXPECT_EQ("0\xc3\xa9\xe2\x82\xac" "3", ReadAll(clob_));
  EXPECT_EQ(4u, Length(clob_));
  ASSERT_EQ(OCI_SUCCESS, OCILobCopy2(svc_, err_, clob_, src, 3, 4, 4));  // the emoji and z
  EXPECT_EQ("0\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80z", ReadAll(clob_));
  EXPECT_EQ(6u, Length(clob_));
}

TEST_F(LobEditTest, CopyRefusals) {
  OCILobLocator* src = TemporaryWith(OCI_TEMP_CLOB, "abc");
  EXPECT_EQ(OCI_ERROR, OCILobCopy(svc_, err_, clob_, src, 1, 1, 4));
  EXPECT_EQ("ORA-22994: source offset is beyond the end of the source LOB", FirstError(err_));
  OCILobLocator* empty = NewTemporary(OCI_TEMP_CLOB);
  EXPECT_EQ(OCI_ERROR, OCILobCopy(svc_, err_, clob_, empty, 1, 1, 1));
  EXPECT_EQ(22994, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobCopy(svc_, err_, clob_, src, 1, 0, 1));
  EXPECT_EQ("ORA-24801: illegal parameter value in OCI lob function", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCILobCopy(svc_, err_, clob_, src, 1, 1, 0));
  EXPECT_EQ(24801, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobCopy(svc_, err_, blob_, src, 1, 1, 1));
  EXPECT_EQ("ORA-24805: LOB type mismatch", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCILobCopy2(svc_, err_, clob_, src, 1, oraub8{1} << 33, 1));
  EXPECT_EQ("ORA-22925: operation would exceed maximum size allowed for a LOB value",
            FirstError(err_));
  // decision LB4: an amount of 0 copies nothing
  EXPECT_EQ(OCI_SUCCESS, OCILobCopy(svc_, err_, clob_, src, 0, 1, 1));
  EXPECT_EQ("", ReadAll(clob_));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  // After the commit the locators of the FOR UPDATE select cannot write any more.
  EXPECT_EQ(OCI_ERROR, OCILobCopy(svc_, err_, clob_, src, 1, 1, 1));
  EXPECT_EQ(22990, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  EXPECT_EQ(OCI_ERROR, OCILobCopy(svc_, err_, clob_, src, 1, 1, 1));
  EXPECT_EQ(22920, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobCopy(svc_, err_, nullptr, src, 1, 1, 1));
  EXPECT_EQ(22275, FirstCode(err_));
}

TEST_F(LobEditTest, EraseWritesSpacesOrZeroBytes) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "0123456789"));
  ub4 amount = 3;
  ASSERT_EQ(OCI_SUCCESS, OCILobErase(svc_, err_, clob_, &amount, 4)) << FirstError(err_);
  EXPECT_EQ(3u, amount);
  EXPECT_EQ("012   6789", ReadAll(clob_));
  amount = 100;  // cut at the end
  ASSERT_EQ(OCI_SUCCESS, OCILobErase(svc_, err_, clob_, &amount, 8));
  EXPECT_EQ(3u, amount);
  EXPECT_EQ("012   6   ", ReadAll(clob_));
  EXPECT_EQ(10u, Length(clob_));  // erasing never shortens
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "abcdef"));
  oraub8 big = 2;
  ASSERT_EQ(OCI_SUCCESS, OCILobErase2(svc_, err_, blob_, &big, 2));
  EXPECT_EQ(2u, big);
  EXPECT_EQ(std::string("a\0\0def", 6), ReadAll(blob_));
}

// decision D13: erase amounts count CLOB characters; each becomes a space
TEST_F(LobEditTest, EraseCountsCharacters) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, MultibyteText()));
  ub4 amount = 2;
  ASSERT_EQ(OCI_SUCCESS, OCILobErase(svc_, err_, clob_, &amount, 2));
  EXPECT_EQ(2u, amount);
  EXPECT_EQ("a  \xf0\x9f\x98\x80z", ReadAll(clob_));
  EXPECT_EQ(6u, Length(clob_));
}

// decision LB5: erasing from beyond the end, or an amount of 0, erases nothing and tells 0
TEST_F(LobEditTest, EraseBeyondTheEnd) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "abc"));
  ub4 amount = 5;
  ASSERT_EQ(OCI_SUCCESS, OCILobErase(svc_, err_, clob_, &amount, 4));
  EXPECT_EQ(0u, amount);
  EXPECT_EQ("abc", ReadAll(clob_));
  amount = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobErase(svc_, err_, clob_, &amount, 1));
  EXPECT_EQ(0u, amount);
  EXPECT_EQ("abc", ReadAll(clob_));
  EXPECT_EQ(OCI_ERROR, OCILobErase(svc_, err_, clob_, &amount, 0));
  EXPECT_EQ(24801, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobErase(svc_, err_, clob_, nullptr, 1));
  EXPECT_EQ(21560, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  amount = 1;
  EXPECT_EQ(OCI_ERROR, OCILobErase(svc_, err_, clob_, &amount, 1));
  EXPECT_EQ(22920, FirstCode(err_));
  EXPECT_EQ(1u, amount);  // left alone on failure
}

TEST_F(LobEditTest, GetLength2AndTrim2) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, MultibyteText()));
  oraub8 length = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobGetLength2(svc_, err_, clob_, &length));
  EXPECT_EQ(6u, length);
  ASSERT_EQ(OCI_SUCCESS, OCILobTrim2(svc_, err_, clob_, 3)) << FirstError(err_);
  EXPECT_EQ("a\xc3\xa9\xe2\x82\xac", ReadAll(clob_));
  EXPECT_EQ(OCI_ERROR, OCILobTrim2(svc_, err_, clob_, oraub8{1} << 40));
  EXPECT_EQ("ORA-22926: specified trim length is greater than current LOB value's length",
            FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCILobGetLength2(svc_, err_, clob_, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(2, false));
  EXPECT_EQ(OCI_ERROR, OCILobGetLength2(svc_, err_, clob_, &length));
  EXPECT_EQ(22275, FirstCode(err_));
}

TEST_F(LobEditTest, RollbackUndoesTheEdits) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "kept"));
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  OCILobLocator* more = TemporaryWith(OCI_TEMP_CLOB, "!!");
  ASSERT_EQ(OCI_SUCCESS, OCILobAppend(svc_, err_, clob_, more));
  ub4 amount = 2;
  ASSERT_EQ(OCI_SUCCESS, OCILobErase(svc_, err_, clob_, &amount, 1));
  EXPECT_EQ("  pt!!", ReadAll(clob_));
  ASSERT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ("kept", ReadAll(clob_));
}

}  // namespace
}  // namespace ocimem_test
