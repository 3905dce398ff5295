// CLOB and BLOB columns through the plain data interface: character buffers bound into
// CLOBs and fetched from them, binary buffers into and from BLOBs, the LONG formats
// (SQLT_LNG, SQLT_LVC, SQLT_LVB), and the indicator, length and return-code rules of
// truncated and NULL values.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "lob_fixture.h"

namespace ocimem_test {
namespace {

class LobDataTest : public LobFixture {
 protected:
  // Fetches column 1 of `sql` (one row) into `buf` as `dty`.
  sword FetchInto(const std::string& sql, void* buf, sb4 size, ub2 dty, sb2* ind = nullptr,
                  ub2* rlen = nullptr, ub2* rcode = nullptr) {
    OCIStmt* stmt = Prepare(sql);
    OCIDefine* d = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, buf, size, dty, ind, rlen, rcode,
                                          OCI_DEFAULT));
    return Execute(stmt, 1);
  }

  // Runs `sql` with its one placeholder bound to `len` bytes at `value` as `dty`.
  sword ExecWith(const std::string& sql, const void* value, sb4 size, ub2 dty,
                 ub2* alen = nullptr, sb2* ind = nullptr) {
    OCIStmt* stmt = Prepare(sql);
    OCIBind* b = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, const_cast<void*>(value), size, dty,
                                        ind, alen, nullptr, 0, nullptr, OCI_DEFAULT));
    return Execute(stmt);
  }

  // A buffer holding a 4-byte native length and `data`, as SQLT_LVC and SQLT_LVB take it.
  static std::vector<unsigned char> Prefixed(const std::string& data, size_t room) {
    std::vector<unsigned char> buf(4 + room, 0xee);
    sb4 n = static_cast<sb4>(data.size());
    std::memcpy(buf.data(), &n, 4);
    std::memcpy(buf.data() + 4, data.data(), data.size());
    return buf;
  }

  static sb4 LengthWord(const unsigned char* buf) {
    sb4 n = 0;
    std::memcpy(&n, buf, 4);
    return n;
  }
};

TEST_F(LobDataTest, CharacterBufferIntoClobAndBinaryBufferIntoBlob) {
  const char text[] = "hello clob";
  const unsigned char raw[] = {0x00, 0x01, 0x02, 0xff};
  OCIStmt* stmt = Prepare("insert into docs (id, body, pic) values (3, :1, :2)");
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ub2 text_len = 10;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, const_cast<char*>(text), sizeof text,
                                      SQLT_CHR, nullptr, &text_len, nullptr, 0, nullptr,
                                      OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, const_cast<unsigned char*>(raw),
                                      sizeof raw, SQLT_BIN, nullptr, nullptr, nullptr, 0, nullptr,
                                      OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(3, false));
  EXPECT_EQ("hello clob", ReadAll(clob_));
  EXPECT_EQ(std::string("\x00\x01\x02\xff", 4), ReadAll(blob_));
  // A NUL-terminated string binds up to its NUL.
  char str[32] = "from a C string";
  ASSERT_EQ(OCI_SUCCESS, ExecWith("update docs set body = :1 where id = 3", str, sizeof str,
                                  SQLT_STR))
      << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(3, false));
  EXPECT_EQ("from a C string", ReadAll(clob_));
}

TEST_F(LobDataTest, ClobFetchedIntoEachCharacterType) {
  MustExec("insert into docs (id, body) values (3, 'clob text')");
  char chr[16];
  ub2 rlen = 0;
  sb2 ind = 7;
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 3", chr, sizeof chr, SQLT_CHR,
                                   &ind, &rlen))
      << FirstError(err_);
  EXPECT_EQ(0, ind);
  EXPECT_EQ(9, rlen);
  EXPECT_EQ("clob text", std::string(chr, rlen));
  char str[16];
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 3", str, sizeof str, SQLT_STR,
                                   nullptr, &rlen));
  EXPECT_STREQ("clob text", str);
  EXPECT_EQ(9, rlen);
  char afc[12];
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 3", afc, sizeof afc, SQLT_AFC,
                                   nullptr, &rlen));
  EXPECT_EQ("clob text   ", std::string(afc, sizeof afc));
  EXPECT_EQ(12, rlen);
  char lng[16];
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 3", lng, sizeof lng, SQLT_LNG,
                                   nullptr, &rlen));
  EXPECT_EQ("clob text", std::string(lng, rlen));
  // decision LB11: the rlenp of an LVC define leaves out the length word
  unsigned char lvc[4 + 16];
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 3", lvc, sizeof lvc, SQLT_LVC,
                                   nullptr, &rlen));
  EXPECT_EQ(9, LengthWord(lvc));
  EXPECT_EQ(9, rlen);
  EXPECT_EQ("clob text", std::string(reinterpret_cast<char*>(lvc) + 4, 9));
}

TEST_F(LobDataTest, BlobFetchedIntoEachBinaryType) {
  const unsigned char raw[] = {0xca, 0xfe, 0x00, 0x01};
  ASSERT_EQ(OCI_SUCCESS, ExecWith("insert into docs (id, pic) values (3, :1)", raw, sizeof raw,
                                  SQLT_LBI))
      << FirstError(err_);
  const std::string want("\xca\xfe\x00\x01", 4);
  for (ub2 dty : {ub2{SQLT_BIN}, ub2{SQLT_LBI}}) {
    unsigned char buf[8];
    ub2 rlen = 0;
    ASSERT_EQ(OCI_SUCCESS, FetchInto("select pic from docs where id = 3", buf, sizeof buf, dty,
                                     nullptr, &rlen))
        << dty << ": " << FirstError(err_);
    EXPECT_EQ(want, std::string(reinterpret_cast<char*>(buf), rlen)) << dty;
  }
  unsigned char lvb[4 + 8];
  ASSERT_EQ(OCI_SUCCESS,
            FetchInto("select pic from docs where id = 3", lvb, sizeof lvb, SQLT_LVB));
  EXPECT_EQ(4, LengthWord(lvb));
  EXPECT_EQ(want, std::string(reinterpret_cast<char*>(lvb) + 4, 4));
}

TEST_F(LobDataTest, TruncatedWithIndicatorIsSuccessWithInfo) {
  MustExec("insert into docs (id, body) values (3, '0123456789')");
  char buf[4];
  sb2 ind = 0;
  ub2 rlen = 0;
  ub2 rcode = 0;
  ASSERT_EQ(OCI_SUCCESS_WITH_INFO, FetchInto("select body from docs where id = 3", buf,
                                             sizeof buf, SQLT_CHR, &ind, &rlen, &rcode));
  EXPECT_EQ("ORA-24345: A Truncation or null fetch error occurred", FirstError(err_));
  EXPECT_EQ(10, ind);  // the length before truncation
  EXPECT_EQ(1406, rcode);
  EXPECT_EQ(4, rlen);
  EXPECT_EQ("0123", std::string(buf, 4));
  // SQLT_STR keeps room for its NUL.
  ASSERT_EQ(OCI_SUCCESS_WITH_INFO, FetchInto("select body from docs where id = 3", buf,
                                             sizeof buf, SQLT_STR, &ind, &rlen, &rcode));
  EXPECT_STREQ("012", buf);
  EXPECT_EQ(10, ind);
  // An LVC buffer keeps the length word, which tells what was placed.
  unsigned char lvc[4 + 6];
  ASSERT_EQ(OCI_SUCCESS_WITH_INFO, FetchInto("select body from docs where id = 3", lvc,
                                             sizeof lvc, SQLT_LVC, &ind, nullptr, &rcode));
  EXPECT_EQ(6, LengthWord(lvc));
  EXPECT_EQ("012345", std::string(reinterpret_cast<char*>(lvc) + 4, 6));
  EXPECT_EQ(10, ind);
  // A return code alone is enough to be told.
  ASSERT_EQ(OCI_SUCCESS_WITH_INFO, FetchInto("select body from docs where id = 3", buf,
                                             sizeof buf, SQLT_CHR, nullptr, nullptr, &rcode));
  EXPECT_EQ(1406, rcode);
}

TEST_F(LobDataTest, TruncatedWithoutIndicatorOrCodeFails) {
  const unsigned char raw[] = {1, 2, 3, 4, 5};
  ASSERT_EQ(OCI_SUCCESS, ExecWith("insert into docs (id, pic) values (3, :1)", raw, sizeof raw,
                                  SQLT_BIN));
  unsigned char buf[2];
  EXPECT_EQ(OCI_ERROR,
            FetchInto("select pic from docs where id = 3", buf, sizeof buf, SQLT_BIN));
  EXPECT_EQ("ORA-01406: fetched column value was truncated", FirstError(err_));
}

TEST_F(LobDataTest, NullLobFetchedIntoABuffer) {
  char buf[8] = "keep";
  sb2 ind = 0;
  ub2 rcode = 0;
  ub2 rlen = 5;
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 2", buf, sizeof buf,
                                   SQLT_STR, &ind, &rlen, &rcode))
      << FirstError(err_);
  EXPECT_EQ(OCI_IND_NULL, ind);
  EXPECT_EQ(1405, rcode);
  EXPECT_EQ(0, rlen);
  EXPECT_EQ(OCI_ERROR, FetchInto("select pic from docs where id = 2", buf, sizeof buf, SQLT_BIN));
  EXPECT_EQ("ORA-01405: fetched column value is NULL", FirstError(err_));
}

// decision LB10: an empty LOB is fetched as an empty value with indicator 0, not as NULL
TEST_F(LobDataTest, EmptyLobFetchedAsAnEmptyValue) {
  char buf[8] = "xxxxxxx";
  sb2 ind = -1;
  ub2 rlen = 9;
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 1", buf, sizeof buf,
                                   SQLT_STR, &ind, &rlen));
  EXPECT_EQ(0, ind);
  EXPECT_EQ(0, rlen);
  EXPECT_STREQ("", buf);
}

TEST_F(LobDataTest, EmptyCharacterBindStoresNull) {
  char empty[1] = {0};
  ub2 len = 0;
  ASSERT_EQ(OCI_SUCCESS, ExecWith("insert into docs (id, body) values (3, :1)", empty, 1, SQLT_CHR,
                                  &len));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(3, false));
  EXPECT_EQ(OCI_IND_NULL, clob_ind_);
  sb2 minus_one = -1;
  ASSERT_EQ(OCI_SUCCESS, ExecWith("update docs set pic = :1 where id = 1", "ab", 2, SQLT_BIN,
                                  nullptr, &minus_one));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  EXPECT_EQ(OCI_IND_NULL, blob_ind_);
}

// decision D13: the client character set is UTF-8; buffers hold its bytes
TEST_F(LobDataTest, MultibyteTextKeepsItsBytesAndCountsCharacters) {
  const std::string& text = MultibyteText();
  ASSERT_EQ(OCI_SUCCESS, ExecWith("insert into docs (id, body) values (3, :1)", text.data(),
                                  static_cast<sb4>(text.size()), SQLT_CHR));
  char buf[32];
  ub2 rlen = 0;
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 3", buf, sizeof buf, SQLT_CHR,
                                   nullptr, &rlen));
  EXPECT_EQ(11, rlen);
  EXPECT_EQ(text, std::string(buf, rlen));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(3, false));
  EXPECT_EQ(6u, Length(clob_));
}

// decision LB13: SQLT_LVC is taken for CLOBs and NCLOBs as SQLT_LNG is
TEST_F(LobDataTest, LongTypesBindIntoLobs) {
  std::string lng = "long text";
  ASSERT_EQ(OCI_SUCCESS, ExecWith("insert into docs (id, body) values (3, :1)", lng.data(),
                                  static_cast<sb4>(lng.size()), SQLT_LNG))
      << FirstError(err_);
  std::vector<unsigned char> lvc = Prefixed("varying long", 20);
  ASSERT_EQ(OCI_SUCCESS, ExecWith("update docs set note = :1 where id = 3", lvc.data(),
                                  static_cast<sb4>(lvc.size()), SQLT_LVC))
      << FirstError(err_);
  std::vector<unsigned char> lvb = Prefixed(std::string("\x01\x00\x02", 3), 8);
  ASSERT_EQ(OCI_SUCCESS, ExecWith("update docs set pic = :1 where id = 3", lvb.data(),
                                  static_cast<sb4>(lvb.size()), SQLT_LVB))
      << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(3, false));
  EXPECT_EQ("long text", ReadAll(clob_));
  EXPECT_EQ("varying long", ReadAll(nclob_, nullptr, SQLCS_NCHAR));
  EXPECT_EQ(std::string("\x01\x00\x02", 3), ReadAll(blob_));
}

// decision LB11: the length word of an LVC or LVB bind must lie within value_sz, which
// counts it; a define too small for the word is refused alike
TEST_F(LobDataTest, LengthWordBeyondTheBufferIsRefused) {
  std::vector<unsigned char> lvc = Prefixed("abc", 3);
  sb4 too_long = 4;
  std::memcpy(lvc.data(), &too_long, 4);
  EXPECT_EQ(OCI_ERROR, ExecWith("insert into docs (id, body) values (3, :1)", lvc.data(),
                                static_cast<sb4>(lvc.size()), SQLT_LVC));
  EXPECT_EQ("ORA-01460: unimplemented or unreasonable conversion requested", FirstError(err_));
  unsigned char small[3] = {0, 0, 0};
  EXPECT_EQ(OCI_ERROR, ExecWith("insert into docs (id, pic) values (3, :1)", small, sizeof small,
                                SQLT_LVB));
  EXPECT_EQ(1460, FirstCode(err_));
  // a define too small for the length word
  unsigned char out[3];
  EXPECT_EQ(OCI_ERROR, FetchInto("select body from docs where id = 1", out, sizeof out, SQLT_LVC));
  EXPECT_EQ(1460, FirstCode(err_));
}

TEST_F(LobDataTest, WrongKindOfBufferIsInconsistent) {
  char buf[8];
  EXPECT_EQ(OCI_ERROR, FetchInto("select pic from docs where id = 1", buf, sizeof buf, SQLT_CHR));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected CHAR got BLOB", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, FetchInto("select body from docs where id = 1", buf, sizeof buf, SQLT_BIN));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected BINARY got CLOB", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, FetchInto("select body from docs where id = 1", buf, sizeof buf, SQLT_LVB));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected LONG BINARY got CLOB", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, ExecWith("update docs set pic = :1 where id = 1", "text", 4, SQLT_CHR));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected BLOB got CHAR", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, ExecWith("update docs set body = :1 where id = 1", "\x01", 1, SQLT_BIN));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected CLOB got BINARY", FirstError(err_));
}

// Rows come in the order they were inserted (a scan of the table).
TEST_F(LobDataTest, ArrayFetchOfClobData) {
  MustExec("insert into docs (id, body) values (3, 'three')");
  MustExec("insert into docs (id, body) values (4, 'four, longer')");
  OCIStmt* all = Prepare("select body from docs");
  char rows[4][8];
  sb2 ind[4] = {9, 9, 9, 9};
  ub2 rlen[4] = {9, 9, 9, 9};
  ub2 rcode[4] = {9, 9, 9, 9};
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(all, &d, err_, 1, rows, sizeof rows[0], SQLT_CHR, ind,
                                        rlen, rcode, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS_WITH_INFO, Execute(all, 4)) << FirstError(err_);
  EXPECT_EQ(24345, FirstCode(err_));
  EXPECT_EQ(0, ind[0]);  // row 1: empty
  EXPECT_EQ(0, rlen[0]);
  EXPECT_EQ(0, rcode[0]);
  EXPECT_EQ(OCI_IND_NULL, ind[1]);  // row 2: NULL
  EXPECT_EQ(1405, rcode[1]);
  EXPECT_EQ("three", std::string(rows[2], rlen[2]));
  EXPECT_EQ(0, rcode[2]);
  EXPECT_EQ("four, lo", std::string(rows[3], rlen[3]));
  EXPECT_EQ(12, ind[3]);
  EXPECT_EQ(1406, rcode[3]);
  ub4 fetched = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(all, OCI_HTYPE_STMT, &fetched, nullptr, OCI_ATTR_ROWS_FETCHED,
                                    err_));
  EXPECT_EQ(4u, fetched);
}

// decision LB12: a length beyond rlenp's ub2 is told as 65535
TEST_F(LobDataTest, LargeValueThroughLongBuffers) {
  std::string big(100000, 'x');
  for (size_t i = 0; i < big.size(); i += 1000) big[i] = static_cast<char>('a' + (i / 1000) % 26);
  ASSERT_EQ(OCI_SUCCESS, ExecWith("insert into docs (id, body) values (3, :1)", big.data(),
                                  static_cast<sb4>(big.size()), SQLT_LNG))
      << FirstError(err_);
  std::vector<unsigned char> lvc(4 + big.size() + 10);
  ub2 rlen = 0;
  sb2 ind = 0;
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 3", lvc.data(),
                                   static_cast<sb4>(lvc.size()), SQLT_LVC, &ind, &rlen))
      << FirstError(err_);
  EXPECT_EQ(100000, LengthWord(lvc.data()));
  EXPECT_EQ(65535, rlen);
  EXPECT_EQ(big, std::string(reinterpret_cast<char*>(lvc.data()) + 4, big.size()));
  std::vector<char> chr(big.size());
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 3", chr.data(),
                                   static_cast<sb4>(chr.size()), SQLT_CHR, &ind, &rlen));
  EXPECT_EQ(big, std::string(chr.data(), chr.size()));
  // Cut to 40000 bytes: the indicator cannot hold 100000 and says -2.
  std::vector<char> part(40000);
  ASSERT_EQ(OCI_SUCCESS_WITH_INFO, FetchInto("select body from docs where id = 3", part.data(),
                                             static_cast<sb4>(part.size()), SQLT_CHR, &ind,
                                             &rlen));
  EXPECT_EQ(-2, ind);
  EXPECT_EQ(40000, rlen);
}

TEST_F(LobDataTest, FetchSeesTheSessionsOwnUncommittedWrite) {
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "draft"));
  char buf[16];
  ub2 rlen = 0;
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select body from docs where id = 1", buf, sizeof buf, SQLT_CHR,
                                   nullptr, &rlen));
  EXPECT_EQ("draft", std::string(buf, rlen));
  OCIStmt* theirs = Prepare("select body from docs where id = 1");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(theirs, &d, err_, 1, buf, sizeof buf, SQLT_CHR, nullptr,
                                        &rlen, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(theirs, 1, other));
  EXPECT_EQ(0, rlen);  // still empty for them
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(theirs, 1, other));
  EXPECT_EQ("draft", std::string(buf, rlen));
}

TEST_F(LobDataTest, LobAttributeOfAnObjectTable) {
  MustExec("create type note_t as object (id number, body clob, pic blob)");
  MustExec("create table notes of note_t");
  OCIStmt* stmt = Prepare("insert into notes values (7, :1, :2)");
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  char text[] = "attribute text";
  unsigned char raw[] = {9, 8, 7};
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, text, sizeof text, SQLT_STR, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, raw, sizeof raw, SQLT_BIN, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  char buf[32];
  ASSERT_EQ(OCI_SUCCESS,
            FetchInto("select body from notes where id = 7", buf, sizeof buf, SQLT_STR));
  EXPECT_STREQ("attribute text", buf);
  unsigned char out[8];
  ub2 rlen = 0;
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select n.pic from notes n where n.id = 7", out, sizeof out,
                                   SQLT_LBI, nullptr, &rlen));
  EXPECT_EQ(std::string("\x09\x08\x07", 3), std::string(reinterpret_cast<char*>(out), rlen));
  // A character bind inside a constructor reaches the CLOB attribute too.
  char more[] = "constructed";
  OCIStmt* ctor = Prepare("insert into notes values (note_t(8, :1, empty_blob()))");
  OCIBind* b3 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ctor, &b3, err_, 1, more, sizeof more, SQLT_STR, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(ctor)) << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS,
            FetchInto("select body from notes where id = 8", buf, sizeof buf, SQLT_STR));
  EXPECT_STREQ("constructed", buf);
}

TEST_F(LobDataTest, LongFormatsOfScalarColumns) {
  MustExec("create table plain (n number, s varchar2(20), r raw(4))");
  MustExec("insert into plain values (42, 'short text', '0A0B')");
  unsigned char lvc[4 + 16];
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select n from plain", lvc, sizeof lvc, SQLT_LVC));
  EXPECT_EQ(2, LengthWord(lvc));
  EXPECT_EQ("42", std::string(reinterpret_cast<char*>(lvc) + 4, 2));
  char lng[16];
  ub2 rlen = 0;
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select s from plain", lng, sizeof lng, SQLT_LNG, nullptr,
                                   &rlen));
  EXPECT_EQ("short text", std::string(lng, rlen));
  unsigned char lvb[4 + 4];
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select r from plain", lvb, sizeof lvb, SQLT_LVB));
  EXPECT_EQ(2, LengthWord(lvb));
  EXPECT_EQ(std::string("\x0a\x0b", 2), std::string(reinterpret_cast<char*>(lvb) + 4, 2));
  ASSERT_EQ(OCI_SUCCESS, FetchInto("select r from plain", lng, sizeof lng, SQLT_LNG, nullptr,
                                   &rlen));
  EXPECT_EQ("0A0B", std::string(lng, rlen));  // RAW as text is hex
  std::vector<unsigned char> in = Prefixed("via lvc", 8);
  ASSERT_EQ(OCI_SUCCESS, ExecWith("update plain set s = :1", in.data(),
                                  static_cast<sb4>(in.size()), SQLT_LVC));
  EXPECT_EQ(std::vector<std::string>{"via lvc"}, Column("select s from plain"));
}

}  // namespace
}  // namespace ocimem_test
