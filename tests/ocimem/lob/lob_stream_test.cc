// Streaming LOB reads and writes: OCILobRead and OCILobWrite with callbacks, polling with
// OCI_FIRST_PIECE / OCI_NEXT_PIECE / OCI_LAST_PIECE, OCILobRead2 and OCILobWrite2 with their
// byte and character amounts, and OCILobWriteAppend.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "lob_fixture.h"

static_assert(std::is_same<decltype(&OCILobRead2),
                           sword (*)(OCISvcCtx*, OCIError*, OCILobLocator*, oraub8*, oraub8*,
                                     oraub8, void*, oraub8, ub1, void*, OCICallbackLobRead2,
                                     ub2, ub1)>::value,
              "OCILobRead2");
static_assert(std::is_same<decltype(&OCILobWrite2),
                           sword (*)(OCISvcCtx*, OCIError*, OCILobLocator*, oraub8*, oraub8*,
                                     oraub8, void*, oraub8, ub1, void*, OCICallbackLobWrite2,
                                     ub2, ub1)>::value,
              "OCILobWrite2");
static_assert(std::is_same<OCICallbackLobRead2, sb4 (*)(void*, const void*, oraub8, ub1, void**,
                                                        oraub8*)>::value,
              "OCICallbackLobRead2");
static_assert(std::is_same<OCICallbackLobWrite2,
                           sb4 (*)(void*, void*, oraub8*, ub1*, void**, oraub8*)>::value,
              "OCICallbackLobWrite2");

namespace ocimem_test {
namespace {

// What a read callback was handed.
struct ReadLog {
  std::vector<std::string> pieces;
  std::vector<ub1> kinds;
  int stop_after = -1;  // answer OCI_ERROR from this call on (counted from 0)
  // OCILobRead2: move to this buffer after the first piece.
  char* next_buf = nullptr;
  oraub8 next_len = 0;
};

sb4 ReadCallback(void* ctxp, const void* bufp, ub4 len, ub1 piece) {
  auto* log = static_cast<ReadLog*>(ctxp);
  if (log->stop_after >= 0 && static_cast<int>(log->pieces.size()) >= log->stop_after) {
    log->pieces.emplace_back(static_cast<const char*>(bufp), len);
    return OCI_ERROR;
  }
  log->pieces.emplace_back(static_cast<const char*>(bufp), len);
  log->kinds.push_back(piece);
  return OCI_CONTINUE;
}

sb4 ReadCallback2(void* ctxp, const void* bufp, oraub8 len, ub1 piece, void** changed_bufpp,
                  oraub8* changed_lenp) {
  auto* log = static_cast<ReadLog*>(ctxp);
  log->pieces.emplace_back(static_cast<const char*>(bufp), static_cast<size_t>(len));
  log->kinds.push_back(piece);
  if (log->next_buf != nullptr) {
    *changed_bufpp = log->next_buf;
    *changed_lenp = log->next_len;
    log->next_buf = nullptr;
  }
  return OCI_CONTINUE;
}

// The pieces a write callback hands out, one per call, the last marked OCI_LAST_PIECE.
struct WriteFeed {
  std::vector<std::string> pieces;
  size_t next = 0;
  std::vector<ub4> rooms;  // *lenp as the callback found it
  sb4 status = OCI_CONTINUE;
  ub1 last_kind = OCI_LAST_PIECE;
  std::string own;  // OCILobWrite2: a buffer of the callback's own
};

sb4 WriteCallback(void* ctxp, void* bufp, ub4* lenp, ub1* piece) {
  auto* feed = static_cast<WriteFeed*>(ctxp);
  feed->rooms.push_back(*lenp);
  if (feed->status != OCI_CONTINUE) return feed->status;
  const std::string& p = feed->pieces[feed->next++];
  std::memcpy(bufp, p.data(), p.size());
  *lenp = static_cast<ub4>(p.size());
  *piece = feed->next == feed->pieces.size() ? feed->last_kind : ub1{OCI_NEXT_PIECE};
  return OCI_CONTINUE;
}

sb4 WriteCallback2(void* ctxp, void* bufp, oraub8* lenp, ub1* piece, void** changed_bufpp,
                   oraub8* changed_lenp) {
  auto* feed = static_cast<WriteFeed*>(ctxp);
  feed->rooms.push_back(static_cast<ub4>(*lenp));
  const std::string& p = feed->pieces[feed->next++];
  if (!feed->own.empty()) {  // hand the piece over in a buffer of our own
    feed->own.assign(p);
    *changed_bufpp = &feed->own[0];
    *changed_lenp = feed->own.size();
  } else {
    std::memcpy(bufp, p.data(), p.size());
  }
  *lenp = p.size();
  *piece = feed->next == feed->pieces.size() ? ub1{OCI_LAST_PIECE} : ub1{OCI_NEXT_PIECE};
  return OCI_CONTINUE;
}

class LobStreamTest : public LobFixture {
 protected:
  void SetUp() override {
    LobFixture::SetUp();
    ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true)) << FirstError(err_);
  }
};

TEST_F(LobStreamTest, ReadCallbackGetsEveryPiece) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "abcdefghij"));
  ReadLog log;
  char buf[4];
  ub4 amount = 0;  // to the end
  ASSERT_EQ(OCI_SUCCESS, OCILobRead(svc_, err_, blob_, &amount, 1, buf, sizeof buf, &log,
                                    ReadCallback, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ((std::vector<std::string>{"abcd", "efgh", "ij"}), log.pieces);
  EXPECT_EQ((std::vector<ub1>{OCI_FIRST_PIECE, OCI_NEXT_PIECE, OCI_LAST_PIECE}), log.kinds);
  EXPECT_EQ(10u, amount);  // the total read
  // An amount and an offset bound the read.
  ReadLog part;
  amount = 5;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead(svc_, err_, blob_, &amount, 3, buf, sizeof buf, &part,
                                    ReadCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ((std::vector<std::string>{"cdef", "g"}), part.pieces);
  EXPECT_EQ(5u, amount);
}

// decision LB1: a callback read that fits one buffer is handed over once, as OCI_LAST_PIECE
TEST_F(LobStreamTest, ReadCallbackOfOnePiece) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "abc"));
  ReadLog log;
  char buf[16];
  ub4 amount = 3;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead(svc_, err_, clob_, &amount, 1, buf, sizeof buf, &log,
                                    ReadCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(std::vector<std::string>{"abc"}, log.pieces);
  EXPECT_EQ(std::vector<ub1>{OCI_LAST_PIECE}, log.kinds);
  EXPECT_EQ(3u, amount);
  // decision D10: nothing to read calls no callback
  ReadLog none;
  amount = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead(svc_, err_, clob_, &amount, 4, buf, sizeof buf, &none,
                                    ReadCallback, 0, SQLCS_IMPLICIT));
  EXPECT_TRUE(none.pieces.empty());
  EXPECT_EQ(0u, amount);
}

// decision D13: pieces never split a character; CLOB amounts out are bytes
TEST_F(LobStreamTest, ClobPiecesKeepCharactersWhole) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, MultibyteText()));
  ReadLog log;
  char buf[4];
  ub4 amount = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead(svc_, err_, clob_, &amount, 1, buf, sizeof buf, &log,
                                    ReadCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ((std::vector<std::string>{"a\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "z"}),
            log.pieces);
  EXPECT_EQ(11u, amount);
  // Polling hands out the same pieces.
  std::vector<ub4> sizes;
  amount = 0;
  sword rc = OCILobRead(svc_, err_, clob_, &amount, 1, buf, sizeof buf, nullptr, nullptr, 0,
                        SQLCS_IMPLICIT);
  while (rc == OCI_NEED_DATA) {
    sizes.push_back(amount);
    rc = OCILobRead(svc_, err_, clob_, &amount, 1, buf, sizeof buf, nullptr, nullptr, 0,
                    SQLCS_IMPLICIT);
  }
  ASSERT_EQ(OCI_SUCCESS, rc);
  sizes.push_back(amount);
  EXPECT_EQ((std::vector<ub4>{3, 3, 4, 1}), sizes);
}

TEST_F(LobStreamTest, ReadCallbackThatStops) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "abcdefghij"));
  ReadLog log;
  log.stop_after = 1;
  char buf[4];
  ub4 amount = 0;
  EXPECT_EQ(OCI_ERROR, OCILobRead(svc_, err_, blob_, &amount, 1, buf, sizeof buf, &log,
                                  ReadCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("ORA-24802: user defined lob read callback error", FirstError(err_));
  EXPECT_EQ(2u, log.pieces.size());  // the second answer ended it
}

// decision LB16: a buffer too small for the next character is refused with ORA-24801
TEST_F(LobStreamTest, BufferTooSmallForOneCharacter) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, MultibyteText()));
  ReadLog log;
  char buf[3];
  ub4 amount = 0;
  EXPECT_EQ(OCI_ERROR, OCILobRead(svc_, err_, clob_, &amount, 4, buf, sizeof buf, &log,
                                  ReadCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24801, FirstCode(err_));
  EXPECT_TRUE(log.pieces.empty());
  EXPECT_EQ(OCI_ERROR, OCILobRead(svc_, err_, clob_, &amount, 4, buf, sizeof buf, nullptr,
                                  nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24801, FirstCode(err_));
}

// decisions LB18, LB19: a one-piece OCILobRead2 reads what fits the buffer; a CLOB byte
// amount stops before a character that would not fit whole
TEST_F(LobStreamTest, Read2OnePieceTakesCharactersOrBytes) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, MultibyteText()));
  char buf[32];
  oraub8 bytes = 0;
  oraub8 chars = 2;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead2(svc_, err_, clob_, &bytes, &chars, 2, buf, sizeof buf,
                                     OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ(5u, bytes);
  EXPECT_EQ(2u, chars);
  EXPECT_EQ("\xc3\xa9\xe2\x82\xac", std::string(buf, 5));
  // No character amount: the byte amount bounds the read, in whole characters.
  bytes = 4;
  chars = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead2(svc_, err_, clob_, &bytes, &chars, 1, buf, sizeof buf,
                                     OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(3u, bytes);
  EXPECT_EQ(2u, chars);
  // One piece reads what fits the buffer and succeeds.
  bytes = 0;
  chars = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead2(svc_, err_, clob_, &bytes, &chars, 1, buf, 7,
                                     OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(6u, bytes);  // a é €; the emoji would not fit
  EXPECT_EQ(3u, chars);
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "0123456789"));
  bytes = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead2(svc_, err_, blob_, &bytes, nullptr, 1, buf, 4,
                                     OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(4u, bytes);
  EXPECT_EQ("0123", std::string(buf, 4));
}

TEST_F(LobStreamTest, Read2Polling) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "0123456789"));
  char buf[4];
  oraub8 bytes = 0;  // to the end
  oraub8 chars = 0;
  ASSERT_EQ(OCI_NEED_DATA, OCILobRead2(svc_, err_, blob_, &bytes, &chars, 1, buf, sizeof buf,
                                       OCI_FIRST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(4u, bytes);
  EXPECT_EQ("0123", std::string(buf, 4));
  ASSERT_EQ(OCI_NEED_DATA, OCILobRead2(svc_, err_, blob_, &bytes, &chars, 1, buf, sizeof buf,
                                       OCI_NEXT_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("4567", std::string(buf, bytes));
  ASSERT_EQ(OCI_SUCCESS, OCILobRead2(svc_, err_, blob_, &bytes, &chars, 1, buf, sizeof buf,
                                     OCI_NEXT_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("89", std::string(buf, bytes));
  // The read is over: a next piece has no first one.
  EXPECT_EQ(OCI_ERROR, OCILobRead2(svc_, err_, blob_, &bytes, &chars, 1, buf, sizeof buf,
                                   OCI_NEXT_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24801, FirstCode(err_));
  // A CLOB tells each piece in bytes and characters.
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, MultibyteText()));
  bytes = 0;
  chars = 0;
  ASSERT_EQ(OCI_NEED_DATA, OCILobRead2(svc_, err_, clob_, &bytes, &chars, 1, buf, sizeof buf,
                                       OCI_FIRST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(3u, bytes);
  EXPECT_EQ(2u, chars);
  ASSERT_EQ(OCI_NEED_DATA, OCILobRead2(svc_, err_, clob_, &bytes, &chars, 1, buf, sizeof buf,
                                       OCI_NEXT_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  ASSERT_EQ(OCI_NEED_DATA, OCILobRead2(svc_, err_, clob_, &bytes, &chars, 1, buf, sizeof buf,
                                       OCI_NEXT_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(4u, bytes);
  EXPECT_EQ(2u, chars);  // the emoji counts two
  ASSERT_EQ(OCI_SUCCESS, OCILobRead2(svc_, err_, clob_, &bytes, &chars, 1, buf, sizeof buf,
                                     OCI_NEXT_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("z", std::string(buf, bytes));
}

TEST_F(LobStreamTest, Read2CallbackMayChangeTheBuffer) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "0123456789"));
  char first[4];
  char bigger[16];
  ReadLog log;
  log.next_buf = bigger;
  log.next_len = sizeof bigger;
  oraub8 bytes = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead2(svc_, err_, blob_, &bytes, nullptr, 1, first, sizeof first,
                                     OCI_FIRST_PIECE, &log, ReadCallback2, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ((std::vector<std::string>{"0123", "456789"}), log.pieces);
  EXPECT_EQ((std::vector<ub1>{OCI_FIRST_PIECE, OCI_LAST_PIECE}), log.kinds);
  EXPECT_EQ(10u, bytes);
  EXPECT_EQ("456789", std::string(bigger, 6));
}

// decision LB3: callbacks serve streams begun with OCI_FIRST_PIECE; a one-piece call, or a
// next or last piece of a polling write, leaves the callback alone
TEST_F(LobStreamTest, OnePieceCallsIgnoreCallbacks) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(blob_, "0123456789"));
  ReadLog log;
  char buf[16];
  oraub8 bytes = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead2(svc_, err_, blob_, &bytes, nullptr, 1, buf, 4,
                                     OCI_ONE_PIECE, &log, ReadCallback2, 0, SQLCS_IMPLICIT));
  EXPECT_TRUE(log.pieces.empty());
  EXPECT_EQ("0123", std::string(buf, bytes));
  WriteFeed feed;
  feed.pieces = {"never"};
  char data[] = "ab";
  ub4 amount = 2;
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, blob_, &amount, 1, data, 2, OCI_ONE_PIECE,
                                     &feed, WriteCallback, 0, SQLCS_IMPLICIT));
  amount = 0;
  ASSERT_EQ(OCI_NEED_DATA, OCILobWrite(svc_, err_, blob_, &amount, 3, data, 2, OCI_FIRST_PIECE,
                                       nullptr, nullptr, 0, SQLCS_IMPLICIT));
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, blob_, &amount, 3, data, 2, OCI_LAST_PIECE,
                                     &feed, WriteCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(0u, feed.next);
  EXPECT_TRUE(feed.rooms.empty());
  EXPECT_EQ("ababab6789", ReadAll(blob_));
}

TEST_F(LobStreamTest, WriteCallbackSuppliesTheLaterPieces) {
  WriteFeed feed;
  feed.pieces = {"def", "gh"};
  char buf[8] = "abc";
  ub4 amount = 0;  // streamed until the last piece
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, blob_, &amount, 1, buf, 3, OCI_FIRST_PIECE,
                                     &feed, WriteCallback, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ(8u, amount);
  EXPECT_EQ("abcdefgh", ReadAll(blob_));
  EXPECT_EQ((std::vector<ub4>{3, 3}), feed.rooms);  // each call is offered the buffer's size
  // An announced amount is checked against the pieces.
  WriteFeed exact;
  exact.pieces = {"XY"};
  amount = 4;
  char cd[8] = "cd";
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, blob_, &amount, 3, cd, 2, OCI_FIRST_PIECE,
                                     &exact, WriteCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("abcdXYgh", ReadAll(blob_));
  WriteFeed short_feed;
  short_feed.pieces = {"1"};
  amount = 9;
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, blob_, &amount, 1, buf, 2, OCI_FIRST_PIECE,
                                   &short_feed, WriteCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("ORA-24811: less data provided for writing than indicated", FirstError(err_));
  WriteFeed long_feed;
  long_feed.pieces = {"123", "456"};
  amount = 4;
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, blob_, &amount, 1, buf, 3, OCI_FIRST_PIECE,
                                   &long_feed, WriteCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("ORA-24810: attempting to write more data than indicated", FirstError(err_));
  EXPECT_EQ(1u, long_feed.next);  // refused at the piece that went beyond
  EXPECT_EQ("abcdXYgh", ReadAll(blob_));
}

// decision LB2: a write callback that does not answer OCI_CONTINUE, or names another piece
// than OCI_NEXT_PIECE or OCI_LAST_PIECE, ends the write with ORA-24801 and nothing written
TEST_F(LobStreamTest, WriteCallbackThatStops) {
  WriteFeed feed;
  feed.pieces = {"def"};
  feed.status = OCI_ERROR;
  char buf[8] = "abc";
  ub4 amount = 0;
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, clob_, &amount, 1, buf, 3, OCI_FIRST_PIECE, &feed,
                                   WriteCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24801, FirstCode(err_));
  EXPECT_EQ("", ReadAll(clob_));
  WriteFeed odd;
  odd.pieces = {"def"};
  odd.last_kind = OCI_FIRST_PIECE;
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, clob_, &amount, 1, buf, 3, OCI_FIRST_PIECE, &odd,
                                   WriteCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24801, FirstCode(err_));
  EXPECT_EQ("", ReadAll(clob_));
  // The write is over: a next piece has no first one.
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, clob_, &amount, 1, buf, 3, OCI_LAST_PIECE,
                                   nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24801, FirstCode(err_));
}

// decision D13: a CLOB write's amount goes in as bytes; it comes back in characters, as
// Oracle's table of amtp units says
TEST_F(LobStreamTest, ClobWriteTellsCharacters) {
  const std::string& text = MultibyteText();
  ub4 amount = static_cast<ub4>(text.size());
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, clob_, &amount, 1,
                                     const_cast<char*>(text.data()), amount, OCI_ONE_PIECE,
                                     nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(6u, amount);
  std::string half1 = text.substr(0, 6);
  std::string half2 = text.substr(6);
  amount = static_cast<ub4>(text.size());
  ASSERT_EQ(OCI_NEED_DATA, OCILobWrite(svc_, err_, clob_, &amount, 7, &half1[0], 6,
                                       OCI_FIRST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, clob_, &amount, 7, &half2[0], 5, OCI_LAST_PIECE,
                                     nullptr, nullptr, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ(6u, amount);
  EXPECT_EQ(text + text, ReadAll(clob_));
  EXPECT_EQ(12u, Length(clob_));
}

TEST_F(LobStreamTest, Write2OnePieceInCharactersOrBytes) {
  std::string text = MultibyteText();
  oraub8 bytes = 0;
  oraub8 chars = 3;  // a é €
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, &text[0], text.size(),
                                      OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ(6u, bytes);
  EXPECT_EQ(3u, chars);
  EXPECT_EQ("a\xc3\xa9\xe2\x82\xac", ReadAll(clob_));
  chars = 9;  // more characters than the buffer holds
  EXPECT_EQ(OCI_ERROR, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, &text[0], text.size(),
                                    OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24811, FirstCode(err_));
  bytes = 3;
  chars = 0;  // no character amount: bytes
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 4, &text[0], text.size(),
                                      OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(3u, bytes);
  EXPECT_EQ(2u, chars);
  EXPECT_EQ("a\xc3\xa9\xe2\x82\xac" "a\xc3\xa9", ReadAll(clob_));
  std::string raw("\x00\x01\x02", 3);
  bytes = 3;
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite2(svc_, err_, blob_, &bytes, nullptr, 1, &raw[0], 3,
                                      OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(raw, ReadAll(blob_));
}

TEST_F(LobStreamTest, Write2PollingTellsEachPiece) {
  char a[] = "ab";
  char b[] = "cde";
  char c[] = "f";
  oraub8 bytes = 0;  // streamed until the last piece
  oraub8 chars = 0;
  ASSERT_EQ(OCI_NEED_DATA, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, a, 2,
                                        OCI_FIRST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(2u, bytes);
  ASSERT_EQ(OCI_NEED_DATA, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, b, 3,
                                        OCI_NEXT_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(3u, bytes);
  EXPECT_EQ(3u, chars);
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, c, 1,
                                      OCI_LAST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ(1u, bytes);
  EXPECT_EQ(1u, chars);
  EXPECT_EQ("abcdef", ReadAll(clob_));
  // An amount announced in characters is checked in characters.
  std::string e1 = "\xc3\xa9";
  std::string e2 = "\xe2\x82\xacz";
  bytes = 0;
  chars = 3;
  ASSERT_EQ(OCI_NEED_DATA, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, &e1[0], e1.size(),
                                        OCI_FIRST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, &e2[0], e2.size(),
                                      OCI_LAST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ("\xc3\xa9\xe2\x82\xacz" "def", ReadAll(clob_));
  chars = 2;
  ASSERT_EQ(OCI_NEED_DATA, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, &e1[0], e1.size(),
                                        OCI_FIRST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(OCI_ERROR, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, &e2[0], e2.size(),
                                    OCI_NEXT_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24810, FirstCode(err_));
}

TEST_F(LobStreamTest, Write2CallbackWithABufferOfItsOwn) {
  WriteFeed feed;
  feed.pieces = {"middle-", "end"};
  feed.own = "x";
  char buf[8] = "start-";
  oraub8 bytes = 0;
  oraub8 chars = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite2(svc_, err_, clob_, &bytes, &chars, 1, buf, 6,
                                      OCI_FIRST_PIECE, &feed, WriteCallback2, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ(16u, bytes);
  EXPECT_EQ(16u, chars);
  EXPECT_EQ("start-middle-end", ReadAll(clob_));
  EXPECT_EQ(6u, feed.rooms[0]);  // then the room of the callback's own buffer
  EXPECT_EQ(7u, feed.rooms[1]);
}

TEST_F(LobStreamTest, OnePieceOfNothingWritesNothing) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "abc"));
  char none[1] = {0};
  ub4 amount = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, clob_, &amount, 9, none, 0, OCI_ONE_PIECE,
                                     nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(0u, amount);
  EXPECT_EQ("abc", ReadAll(clob_));  // not even the gap before offset 9
}

// A write callback may not claim more bytes than the buffer it was offered.
TEST_F(LobStreamTest, WriteCallbackClaimingMoreThanTheBuffer) {
  WriteFeed feed;
  feed.pieces = {"toolong"};
  char buf[8] = "ab";
  ub4 amount = 0;
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, blob_, &amount, 1, buf, 2, OCI_FIRST_PIECE, &feed,
                                   WriteCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24801, FirstCode(err_));
  EXPECT_EQ("", ReadAll(blob_));
}

TEST_F(LobStreamTest, WriteAppendAddsAtTheEnd) {
  ASSERT_EQ(OCI_SUCCESS, WriteOne(clob_, "head"));
  char tail[] = "-tail";
  ub4 amount = 5;
  ASSERT_EQ(OCI_SUCCESS, OCILobWriteAppend(svc_, err_, clob_, &amount, tail, 5, OCI_ONE_PIECE,
                                           nullptr, nullptr, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  EXPECT_EQ(5u, amount);
  EXPECT_EQ("head-tail", ReadAll(clob_));
  amount = 0;
  ASSERT_EQ(OCI_NEED_DATA, OCILobWriteAppend(svc_, err_, clob_, &amount, tail, 2,
                                             OCI_FIRST_PIECE, nullptr, nullptr, 0,
                                             SQLCS_IMPLICIT));
  ASSERT_EQ(OCI_SUCCESS, OCILobWriteAppend(svc_, err_, clob_, &amount, tail + 2, 3,
                                           OCI_LAST_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(5u, amount);
  EXPECT_EQ("head-tail-tail", ReadAll(clob_));
  WriteFeed feed;
  feed.pieces = {"!"};
  amount = 0;
  char start[4] = "?";
  ASSERT_EQ(OCI_SUCCESS, OCILobWriteAppend(svc_, err_, blob_, &amount, start, 1, OCI_FIRST_PIECE,
                                           &feed, WriteCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("?!", ReadAll(blob_));
}

TEST_F(LobStreamTest, StreamedWritesNeedTheRowLocked) {
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, false));
  char a[] = "abc";
  ub4 amount = 0;
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 3, OCI_FIRST_PIECE, nullptr,
                                   nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("ORA-22920: row containing the LOB value is not locked", FirstError(err_));
  WriteFeed feed;
  feed.pieces = {"x"};
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, clob_, &amount, 1, a, 3, OCI_FIRST_PIECE, &feed,
                                   WriteCallback, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(22920, FirstCode(err_));
  EXPECT_EQ(0u, feed.next);  // refused before asking for pieces
  oraub8 bytes = 3;
  EXPECT_EQ(OCI_ERROR, OCILobWrite2(svc_, err_, clob_, &bytes, nullptr, 1, a, 3, OCI_ONE_PIECE,
                                    nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(22920, FirstCode(err_));
  amount = 3;
  EXPECT_EQ(OCI_ERROR, OCILobWriteAppend(svc_, err_, clob_, &amount, a, 3, OCI_ONE_PIECE, nullptr,
                                         nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(22920, FirstCode(err_));
}

TEST_F(LobStreamTest, NullAndUnsetLocators) {
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(2, true));  // NULL LOBs
  char buf[4];
  oraub8 bytes = 1;
  EXPECT_EQ(OCI_ERROR, OCILobRead2(svc_, err_, clob_, &bytes, nullptr, 1, buf, sizeof buf,
                                   OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ("ORA-22275: invalid LOB locator specified", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCILobWrite2(svc_, err_, blob_, &bytes, nullptr, 1, buf, 1, OCI_ONE_PIECE,
                                    nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(22275, FirstCode(err_));
  ub4 amount = 1;
  EXPECT_EQ(OCI_ERROR, OCILobWriteAppend(svc_, err_, nullptr, &amount, buf, 1, OCI_ONE_PIECE,
                                         nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(22275, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(1, true));
  EXPECT_EQ(OCI_ERROR, OCILobRead2(svc_, err_, clob_, nullptr, nullptr, 1, buf, sizeof buf,
                                   OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobRead2(svc_, err_, clob_, &bytes, nullptr, 0, buf, sizeof buf,
                                   OCI_ONE_PIECE, nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24801, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCILobWrite2(svc_, err_, clob_, &bytes, nullptr, 0, buf, 1, OCI_ONE_PIECE,
                                    nullptr, nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(24801, FirstCode(err_));
}

}  // namespace
}  // namespace ocimem_test
