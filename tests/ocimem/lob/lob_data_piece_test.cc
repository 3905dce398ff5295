// The data interface of LOBs in pieces and through RETURNING: CLOB and BLOB values bound
// with OCI_DATA_AT_EXEC and given piece by piece, fetched through OCI_DYNAMIC_FETCH defines
// (polling and callbacks), and returned into character and binary buffers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lob_fixture.h"

namespace ocimem_test {
namespace {

class LobDataPieceTest : public LobFixture {
 protected:
  struct Info {
    void* handle = nullptr;
    ub4 type = 0;
    ub1 in_out = 0;
    ub4 iter = 0;
    ub4 index = 0;
    ub1 piece = 0;
  };

  Info PieceInfo(OCIStmt* stmt) {
    Info i;
    EXPECT_EQ(OCI_SUCCESS, OCIStmtGetPieceInfo(stmt, err_, &i.handle, &i.type, &i.in_out, &i.iter,
                                               &i.index, &i.piece))
        << FirstError(err_);
    return i;
  }

  // Executes `stmt`, giving the values asked for one after the other, each in its pieces
  // (the last piece of a value ends it).
  sword ExecuteInPieces(OCIStmt* stmt, const std::vector<std::vector<std::string>>& values) {
    sword rc = Execute(stmt);
    size_t value = 0;
    size_t k = 0;
    while (rc == OCI_NEED_DATA && value < values.size()) {
      const std::vector<std::string>& pieces = values[value];
      Info i = PieceInfo(stmt);
      ub4 len = static_cast<ub4>(pieces[k].size());
      ub1 kind = k + 1 == pieces.size() ? ub1{OCI_LAST_PIECE}
                                        : k == 0 ? ub1{OCI_FIRST_PIECE} : ub1{OCI_NEXT_PIECE};
      EXPECT_EQ(OCI_SUCCESS, OCIStmtSetPieceInfo(i.handle, i.type, err_, pieces[k].data(), &len,
                                                 kind, nullptr, nullptr));
      if (++k == pieces.size()) {
        ++value;
        k = 0;
      }
      rc = Execute(stmt);
    }
    return rc;
  }
};

TEST_F(LobDataPieceTest, ClobAndBlobBoundInPieces) {
  OCIStmt* stmt = Prepare("insert into docs (id, body, pic) values (3, :1, :2)");
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, nullptr, 1 << 20, SQLT_LNG, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, nullptr, 1 << 20, SQLT_LBI, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  ASSERT_EQ(OCI_SUCCESS,
            ExecuteInPieces(stmt, {{"a large ", "object, ", "in pieces"},
                                   {std::string("\x00\x01", 2), std::string("\x02", 1)}}))
      << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, SelectLobs(3, false));
  EXPECT_EQ("a large object, in pieces", ReadAll(clob_));
  EXPECT_EQ(std::string("\x00\x01\x02", 3), ReadAll(blob_));
}

TEST_F(LobDataPieceTest, ClobFetchedInPiecesByPolling) {
  MustExec("insert into docs (id, body) values (3, '0123456789')");
  OCIStmt* stmt = Prepare("select body from docs where id = 3");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, nullptr, 1 << 20, SQLT_LNG, nullptr,
                                        nullptr, nullptr, OCI_DYNAMIC_FETCH));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0));
  sword rc = OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT);
  std::string got;
  std::vector<ub4> sizes;
  char buf[4];
  while (rc == OCI_NEED_DATA) {
    Info i = PieceInfo(stmt);
    EXPECT_EQ(static_cast<void*>(d), i.handle);
    ub4 len = sizeof buf;
    sb2 ind = 5;
    ASSERT_EQ(OCI_SUCCESS,
              OCIStmtSetPieceInfo(i.handle, i.type, err_, buf, &len, i.piece, &ind, nullptr));
    rc = OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT);
    got.append(buf, len);
    sizes.push_back(len);
    EXPECT_EQ(0, ind);
  }
  ASSERT_EQ(OCI_SUCCESS, rc) << FirstError(err_);
  EXPECT_EQ("0123456789", got);
  EXPECT_EQ((std::vector<ub4>{4, 4, 2}), sizes);
}

struct Sink {
  std::string data;
  char buf[3];
  ub4 len = 0;
  sb2 ind = 0;
  ub2 code = 0;
  int calls = 0;
};

TEST_F(LobDataPieceTest, BlobFetchedThroughADefineCallback) {
  const unsigned char raw[] = {1, 2, 3, 4, 5, 6, 7};
  OCIStmt* ins = Prepare("insert into docs (id, pic) values (3, :1)");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &b, err_, 1, const_cast<unsigned char*>(raw),
                                      sizeof raw, SQLT_BIN, nullptr, nullptr, nullptr, 0, nullptr,
                                      OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(ins));
  OCIStmt* stmt = Prepare("select pic from docs where id = 3");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, nullptr, 1 << 20, SQLT_LBI, nullptr,
                                        nullptr, nullptr, OCI_DYNAMIC_FETCH));
  Sink sink;
  auto cb = [](void* ctx, OCIDefine*, ub4, void** bufpp, ub4** alenpp, ub1*, void** indpp,
               ub2** rcodepp) -> sb4 {
    auto* s = static_cast<Sink*>(ctx);
    if (s->calls++ > 0) s->data.append(s->buf, s->len);  // what the call before received
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
  EXPECT_EQ(std::string("\x01\x02\x03\x04\x05\x06\x07", 7), sink.data);
  EXPECT_EQ(3, sink.calls);
  EXPECT_EQ(0, sink.ind);
}

TEST_F(LobDataPieceTest, DynamicDefineOfTheWrongKind) {
  OCIStmt* stmt = Prepare("select pic from docs where id = 1");
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, nullptr, 100, SQLT_LNG, nullptr,
                                        nullptr, nullptr, OCI_DYNAMIC_FETCH));
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 1));
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected LONG got BLOB", FirstError(err_));
}

TEST_F(LobDataPieceTest, ClobReturnedIntoACharacterBuffer) {
  OCIStmt* stmt =
      Prepare("update docs set body = 'returned text' where id = 1 returning body, pic into :1, :2");
  char text[32];
  sb2 ind = 9;
  ub2 rlen = 0;
  unsigned char raw[4];
  sb2 raw_ind = 9;
  ub2 raw_len = 9;
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, text, sizeof text, SQLT_STR, &ind,
                                      &rlen, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, raw, sizeof raw, SQLT_BIN, &raw_ind,
                                      &raw_len, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_STREQ("returned text", text);
  EXPECT_EQ(0, ind);
  EXPECT_EQ(0, raw_ind);  // the empty BLOB: an empty value
  EXPECT_EQ(0, raw_len);
}

}  // namespace
}  // namespace ocimem_test
