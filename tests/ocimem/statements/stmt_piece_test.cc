// Piecewise binds and defines: OCI_DATA_AT_EXEC binds whose values come piece by piece
// (polling with OCIStmtGetPieceInfo/OCIStmtSetPieceInfo, or from in-bind callbacks) and
// OCI_DYNAMIC_FETCH defines handed out piece by piece.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class StmtPieceTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table t (id number, txt varchar2(100), bin raw(50))");
  }

  struct Info {
    void* handle = nullptr;
    ub4 type = 0;
    ub1 in_out = 0;
    ub4 iter = 99;
    ub4 index = 99;
    ub1 piece = 99;
  };

  Info PieceInfo(OCIStmt* stmt) {
    Info i;
    EXPECT_EQ(OCI_SUCCESS, OCIStmtGetPieceInfo(stmt, err_, &i.handle, &i.type, &i.in_out, &i.iter,
                                               &i.index, &i.piece))
        << FirstError(err_);
    return i;
  }
};

// decision PW1: OCIStmtGetPieceInfo asks for OCI_FIRST_PIECE, then OCI_NEXT_PIECE
TEST_F(StmtPieceTest, PiecewiseInsertByPolling) {
  OCIStmt* stmt = Prepare("insert into t (id, txt) values (:id, :txt)");
  int id = 1;
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b1, err_, Text(":id"), 3, &id, sizeof id, SQLT_INT,
                                       nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b2, err_, Text(":txt"), 4, nullptr, 100, SQLT_CHR,
                                       nullptr, nullptr, nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  const char* pieces[] = {"hello, ", "piecewise ", "world"};
  const ub1 kinds[] = {OCI_FIRST_PIECE, OCI_NEXT_PIECE, OCI_LAST_PIECE};
  ASSERT_EQ(OCI_NEED_DATA, Execute(stmt));
  for (int k = 0; k < 3; ++k) {
    Info i = PieceInfo(stmt);
    EXPECT_EQ(static_cast<void*>(b2), i.handle);
    EXPECT_EQ(static_cast<ub4>(OCI_HTYPE_BIND), i.type);
    EXPECT_EQ(OCI_PARAM_IN, i.in_out);
    EXPECT_EQ(0u, i.iter);
    EXPECT_EQ(0u, i.index);
    EXPECT_EQ(k == 0 ? OCI_FIRST_PIECE : OCI_NEXT_PIECE, i.piece);
    ub4 len = Len(pieces[k]);
    ASSERT_EQ(OCI_SUCCESS, OCIStmtSetPieceInfo(i.handle, i.type, err_, pieces[k], &len, kinds[k],
                                               nullptr, nullptr));
    sword rc = Execute(stmt);
    ASSERT_EQ(k < 2 ? OCI_NEED_DATA : OCI_SUCCESS, rc) << FirstError(err_);
  }
  EXPECT_EQ((std::vector<std::string>{"hello, piecewise world"}), Column("select txt from t"));
  // Nothing waits any more.
  void* h = nullptr;
  ub4 type = 0;
  ub1 in_out = 0;
  ub1 piece = 0;
  ub4 iter = 0;
  ub4 idx = 0;
  EXPECT_EQ(OCI_ERROR, OCIStmtGetPieceInfo(stmt, err_, &h, &type, &in_out, &iter, &idx, &piece));
  EXPECT_EQ(24338, FirstCode(err_));
}

TEST_F(StmtPieceTest, OnePieceBinaryAndNullValuesPerIteration) {
  OCIStmt* stmt = Prepare("insert into t (id, bin) values (:1, :2)");
  int ids[2] = {1, 2};
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, ids, sizeof(int), SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, nullptr, 50, SQLT_BIN, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  ASSERT_EQ(OCI_NEED_DATA, Execute(stmt, 2));
  Info i = PieceInfo(stmt);
  EXPECT_EQ(0u, i.iter);
  const unsigned char bytes[] = {0x00, 0xff, 0x10};
  ub4 len = 3;
  ASSERT_EQ(OCI_SUCCESS, OCIStmtSetPieceInfo(b2, OCI_HTYPE_BIND, err_, bytes, &len,
                                             OCI_ONE_PIECE, nullptr, nullptr));
  ASSERT_EQ(OCI_NEED_DATA, Execute(stmt, 2));
  i = PieceInfo(stmt);
  EXPECT_EQ(1u, i.iter);
  EXPECT_EQ(OCI_FIRST_PIECE, i.piece);
  sb2 null_ind = -1;
  len = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIStmtSetPieceInfo(b2, OCI_HTYPE_BIND, err_, nullptr, &len,
                                             OCI_LAST_PIECE, &null_ind, nullptr));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 2)) << FirstError(err_);
  ub4 count = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT,
                                    err_));
  EXPECT_EQ(2u, count);
  EXPECT_EQ((std::vector<std::string>{"00FF10", "<null>"}), Column("select bin from t"));
}

// decision PW3: executing again without a piece given ends the execute with ORA-03129
TEST_F(StmtPieceTest, ExecuteWithoutThePieceAsked) {
  OCIStmt* stmt = Prepare("insert into t (txt) values (:1)");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, nullptr, 100, SQLT_CHR, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  ASSERT_EQ(OCI_NEED_DATA, Execute(stmt));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ("ORA-03129: the next piece to be inserted is required", FirstError(err_));
  EXPECT_TRUE(Column("select txt from t").empty());
  // The statement starts afresh.
  ASSERT_EQ(OCI_NEED_DATA, Execute(stmt));
  ub4 len = 2;
  ASSERT_EQ(OCI_SUCCESS, OCIStmtSetPieceInfo(b, OCI_HTYPE_BIND, err_, "ok", &len, OCI_ONE_PIECE,
                                             nullptr, nullptr));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt));
  EXPECT_EQ((std::vector<std::string>{"ok"}), Column("select txt from t"));
}

// decision PW4: a piece for a handle nothing waits for is ORA-24338
TEST_F(StmtPieceTest, SetPieceInfoForAHandleNothingWaitsFor) {
  OCIStmt* stmt = Prepare("insert into t (id, txt) values (:1, :2)");
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  int id = 1;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, nullptr, 100, SQLT_CHR, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  ub4 len = 1;
  EXPECT_EQ(OCI_ERROR, OCIStmtSetPieceInfo(b2, OCI_HTYPE_BIND, err_, "x", &len, OCI_ONE_PIECE,
                                           nullptr, nullptr));
  EXPECT_EQ(24338, FirstCode(err_));
  ASSERT_EQ(OCI_NEED_DATA, Execute(stmt));
  EXPECT_EQ(OCI_ERROR, OCIStmtSetPieceInfo(b1, OCI_HTYPE_BIND, err_, "x", &len, OCI_ONE_PIECE,
                                           nullptr, nullptr));
  EXPECT_EQ(24338, FirstCode(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIStmtSetPieceInfo(b2, OCI_HTYPE_DEFINE, err_, "x", &len,
                                                    OCI_ONE_PIECE, nullptr, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIStmtSetPieceInfo(stmt, OCI_HTYPE_STMT, err_, "x", &len,
                                                    OCI_ONE_PIECE, nullptr, nullptr));
  EXPECT_EQ(OCI_ERROR, OCIStmtSetPieceInfo(b2, OCI_HTYPE_BIND, err_, "x", &len, 7, nullptr,
                                           nullptr));
  EXPECT_EQ(24300, FirstCode(err_));
  void* h = nullptr;
  ub4 type = 0;
  ub1 in_out = 0;
  ub1 piece = 0;
  ub4 iter = 0;
  EXPECT_EQ(OCI_ERROR, OCIStmtGetPieceInfo(stmt, err_, &h, &type, &in_out, &iter, nullptr, &piece));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIStmtGetPieceInfo(nullptr, err_, &h, &type, &in_out, &iter, &iter, &piece));
}

struct Feed {
  std::vector<std::string> pieces;
  size_t next = 0;
  std::vector<ub4> iters;
  std::vector<ub1> asked;
};

// decision PW2: each call of an in-bind callback starts with *piecep OCI_ONE_PIECE; the
// callback is called again until it answers OCI_ONE_PIECE or OCI_LAST_PIECE
sb4 FeedPieces(void* ctx, OCIBind*, ub4 iter, ub4 index, void** bufpp, ub4* alenp, ub1* piecep,
               void** indpp) {
  auto* f = static_cast<Feed*>(ctx);
  f->iters.push_back(iter * 10 + index);
  f->asked.push_back(*piecep);
  const std::string& p = f->pieces[f->next];
  *bufpp = const_cast<char*>(p.data());
  *alenp = static_cast<ub4>(p.size());
  *indpp = nullptr;
  ++f->next;
  bool last = f->next == f->pieces.size() || f->pieces[f->next].empty();
  *piecep = last ? OCI_LAST_PIECE : (p == f->pieces.front() ? OCI_FIRST_PIECE : OCI_NEXT_PIECE);
  if (last && f->next < f->pieces.size()) ++f->next;  // skip the separator
  return OCI_CONTINUE;
}

TEST_F(StmtPieceTest, InBindCallbacksGiveValuesInPieces) {
  OCIStmt* stmt = Prepare("insert into t (id, txt) values (:1, :2)");
  int ids[2] = {1, 2};
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, ids, sizeof(int), SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, nullptr, 100, SQLT_CHR, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  Feed feed;
  feed.pieces = {"ab", "cd", "ef", "", "xyz"};
  ASSERT_EQ(OCI_SUCCESS, OCIBindDynamic(b2, err_, &feed, FeedPieces, nullptr, nullptr));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 2)) << FirstError(err_);
  EXPECT_EQ((std::vector<ub4>{0, 0, 0, 10}), feed.iters);
  EXPECT_EQ((std::vector<ub1>{OCI_ONE_PIECE, OCI_ONE_PIECE, OCI_ONE_PIECE, OCI_ONE_PIECE}),
            feed.asked);
  EXPECT_EQ((std::vector<std::string>{"abcdef", "xyz"}), Column("select txt from t"));
}

TEST_F(StmtPieceTest, InBindCallbackFailing) {
  OCIStmt* stmt = Prepare("insert into t (txt) values (:1)");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, nullptr, 100, SQLT_CHR, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  auto fail = [](void*, OCIBind*, ub4, ub4, void**, ub4*, ub1*, void**) -> sb4 {
    return OCI_ERROR;
  };
  ASSERT_EQ(OCI_SUCCESS, OCIBindDynamic(b, err_, nullptr, fail, nullptr, nullptr));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ("ORA-24343: user defined callback error", FirstError(err_));
  EXPECT_TRUE(Column("select txt from t").empty());
}

TEST_F(StmtPieceTest, PiecewiseFetchByPolling) {
  MustExec("insert into t (id, txt) values (1, 'abcdefghij')");
  MustExec("insert into t (id, txt) values (2, null)");
  OCIStmt* stmt = Prepare("select id, txt from t");
  int id = 0;
  OCIDefine* d1 = nullptr;
  OCIDefine* d2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d1, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d2, err_, 2, nullptr, 100, SQLT_CHR, nullptr,
                                        nullptr, nullptr, OCI_DYNAMIC_FETCH));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0));
  ASSERT_EQ(OCI_NEED_DATA, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  std::string got;
  std::vector<ub1> asked;
  char buf[4];
  sword rc = OCI_NEED_DATA;
  while (rc == OCI_NEED_DATA) {
    Info i = PieceInfo(stmt);
    EXPECT_EQ(static_cast<void*>(d2), i.handle);
    EXPECT_EQ(static_cast<ub4>(OCI_HTYPE_DEFINE), i.type);
    EXPECT_EQ(OCI_PARAM_OUT, i.in_out);
    EXPECT_EQ(0u, i.iter);
    asked.push_back(i.piece);
    ub4 len = sizeof buf;
    sb2 ind = 5;
    ASSERT_EQ(OCI_SUCCESS, OCIStmtSetPieceInfo(i.handle, i.type, err_, buf, &len, i.piece, &ind,
                                               nullptr));
    rc = OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT);
    got.append(buf, len);
    EXPECT_EQ(0, ind);
  }
  ASSERT_EQ(OCI_SUCCESS, rc) << FirstError(err_);
  EXPECT_EQ(1, id);
  EXPECT_EQ("abcdefghij", got);
  EXPECT_EQ((std::vector<ub1>{OCI_FIRST_PIECE, OCI_NEXT_PIECE, OCI_NEXT_PIECE}), asked);
  // decision PW5: a NULL value still asks for one buffer and answers indicator -1, length 0
  ASSERT_EQ(OCI_NEED_DATA, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  ub4 len = sizeof buf;
  sb2 ind = 0;
  ub2 code = 0;
  ASSERT_EQ(OCI_SUCCESS,
            OCIStmtSetPieceInfo(d2, OCI_HTYPE_DEFINE, err_, buf, &len, OCI_FIRST_PIECE, &ind, &code));
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(2, id);
  EXPECT_EQ(-1, ind);
  EXPECT_EQ(0u, len);
  EXPECT_EQ(1405, code);
  EXPECT_EQ(OCI_NO_DATA, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  ub4 count = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT,
                                    err_));
  EXPECT_EQ(2u, count);
}

// decision PW6: fetching again without a buffer given ends the fetch with ORA-03130; a
// fetch that asked for a piece goes on through OCIStmtFetch or OCIStmtFetch2
TEST_F(StmtPieceTest, FetchWithoutTheBufferAsked) {
  MustExec("insert into t (id, txt) values (1, 'abc')");
  OCIStmt* stmt = Prepare("select txt from t");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, nullptr, 100, SQLT_CHR, nullptr,
                                        nullptr, nullptr, OCI_DYNAMIC_FETCH));
  // The fetch of an execute with iters 1 asks for the piece too.
  ASSERT_EQ(OCI_NEED_DATA, Execute(stmt, 1));
  EXPECT_EQ(OCI_ERROR, OCIStmtFetch(stmt, err_, 1, OCI_FETCH_NEXT, OCI_DEFAULT));
  EXPECT_EQ("ORA-03130: the buffer for the next piece to be fetched is required",
            FirstError(err_));
}

// decision PW7: OCI_DYNAMIC_FETCH defines take character and binary types only
TEST_F(StmtPieceTest, DynamicDefineOfATypeThatCannotComeInPieces) {
  MustExec("insert into t (id) values (1)");
  OCIStmt* stmt = Prepare("select id from t");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, nullptr, 4, SQLT_INT, nullptr, nullptr,
                                        nullptr, OCI_DYNAMIC_FETCH));
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 1));
  EXPECT_EQ(932, FirstCode(err_));
}

struct Sink {
  std::string data;
  char buf[3];
  ub4 len = 0;
  sb2 ind = 0;
  ub2 code = 0;
  std::vector<std::string> calls;
};

// decision PW8: a define callback is called with OCI_FIRST_PIECE, then OCI_NEXT_PIECE, until
// the value is out
TEST_F(StmtPieceTest, DynamicDefineCallbackTakesEveryPiece) {
  MustExec("insert into t (id, bin) values (1, 'A1B2C3D4E5')");
  OCIStmt* stmt = Prepare("select bin from t");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, nullptr, 50, SQLT_BIN, nullptr, nullptr,
                                        nullptr, OCI_DYNAMIC_FETCH));
  Sink sink;
  auto cb = [](void* ctx, OCIDefine*, ub4 iter, void** bufpp, ub4** alenpp, ub1* piecep,
               void** indpp, ub2** rcodepp) -> sb4 {
    auto* s = static_cast<Sink*>(ctx);
    // What came in the buffer of the call before.
    if (!s->calls.empty()) s->data.append(s->buf, s->len);
    s->calls.push_back(std::to_string(iter) + ":" + std::to_string(*piecep));
    s->len = sizeof s->buf;
    *bufpp = s->buf;
    *alenpp = &s->len;
    *indpp = &s->ind;
    *rcodepp = &s->code;
    return OCI_CONTINUE;
  };
  ASSERT_EQ(OCI_SUCCESS, OCIDefineDynamic(d, err_, &sink, cb));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  sink.data.append(sink.buf, sink.len);
  EXPECT_EQ(std::string("\xA1\xB2\xC3\xD4\xE5"), sink.data);
  EXPECT_EQ((std::vector<std::string>{"0:1", "0:2"}), sink.calls);
  EXPECT_EQ(0, sink.ind);
}

TEST_F(StmtPieceTest, DefineDynamicNeedsTheDynamicMode) {
  OCIStmt* stmt = Prepare("select txt from t");
  char buf[10];
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, buf, sizeof buf, SQLT_CHR, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  auto cb = [](void*, OCIDefine*, ub4, void**, ub4**, ub1*, void**, ub2**) -> sb4 {
    return OCI_CONTINUE;
  };
  EXPECT_EQ(OCI_ERROR, OCIDefineDynamic(d, err_, nullptr, cb));
  EXPECT_EQ("ORA-24300: bad value for mode", FirstError(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDefineDynamic(nullptr, err_, nullptr, cb));
  EXPECT_EQ(OCI_ERROR, OCIDefineByPos(stmt, &d, err_, 1, buf, sizeof buf, SQLT_CHR, nullptr,
                                      nullptr, nullptr, 0x40));
  EXPECT_EQ(24300, FirstCode(err_));
}

TEST_F(StmtPieceTest, InjectedFaultsOnPieceCalls) {
  OCIStmt* stmt = Prepare("insert into t (txt) values (:1)");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, nullptr, 100, SQLT_CHR, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  ASSERT_EQ(OCI_NEED_DATA, Execute(stmt));
  const sb4 codes[] = {3113};
  const char* const texts[] = {"end-of-file on communication channel"};
  ocimemFaultArm("OCIStmtGetPieceInfo", 1, OCI_ERROR, codes, texts, 1);
  void* h = nullptr;
  ub4 type = 0;
  ub1 in_out = 0;
  ub1 piece = 0;
  ub4 iter = 0;
  ub4 idx = 0;
  EXPECT_EQ(OCI_ERROR, OCIStmtGetPieceInfo(stmt, err_, &h, &type, &in_out, &iter, &idx, &piece));
  EXPECT_EQ("ORA-03113: end-of-file on communication channel", FirstError(err_));
  EXPECT_EQ(nullptr, h);
  ocimemFaultArm("OCIStmtSetPieceInfo", 1, OCI_ERROR, codes, texts, 1);
  ub4 len = 3;
  EXPECT_EQ(OCI_ERROR, OCIStmtSetPieceInfo(b, OCI_HTYPE_BIND, err_, "abc", &len, OCI_ONE_PIECE,
                                           nullptr, nullptr));
  EXPECT_EQ(3113, FirstCode(err_));
  // The faults changed nothing: the piece is still asked for, and goes in now.
  Info i = PieceInfo(stmt);
  EXPECT_EQ(static_cast<void*>(b), i.handle);
  ASSERT_EQ(OCI_SUCCESS, OCIStmtSetPieceInfo(b, OCI_HTYPE_BIND, err_, "abc", &len, OCI_ONE_PIECE,
                                             nullptr, nullptr));
  ocimemFaultArm("OCIDefineDynamic", 1, OCI_ERROR, codes, texts, 1);
  OCIStmt* sel = Prepare("select txt from t");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d, err_, 1, nullptr, 100, SQLT_CHR, nullptr,
                                        nullptr, nullptr, OCI_DYNAMIC_FETCH));
  auto cb = [](void*, OCIDefine*, ub4, void**, ub4**, ub1*, void**, ub2**) -> sb4 {
    return OCI_CONTINUE;
  };
  EXPECT_EQ(OCI_ERROR, OCIDefineDynamic(d, err_, nullptr, cb));
  EXPECT_EQ(3113, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ((std::vector<std::string>{"abc"}), Column("select txt from t"));
}

}  // namespace
}  // namespace ocimem_test
