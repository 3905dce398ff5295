// Every attribute number on every handle kind: the attributes docs/ocimem.md lists for a
// handle answer, on get and on set as listed; every other number, Oracle's defined
// attributes among them, answers OCI_ERROR with ORA-24315 and writes nothing.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <utility>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

// Past the largest attribute number Oracle's headers define (2036).
constexpr ub4 kLastAttribute = 2100;

struct Target {
  const char* name;
  void* handle;
  ub4 type;
  std::set<ub4> get;  // readable attributes
  std::set<ub4> set;  // writable attributes
};

class AttrMatrixTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create table t (n number)");
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt_), OCI_HTYPE_STMT,
                                          0, nullptr));
    const char sql[] = "insert into t values (:n)";
    ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt_, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX,
                                          OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt_, &bind_, err_, 1, &value_, sizeof value_, SQLT_INT,
                                        nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&query_),
                                          OCI_HTYPE_STMT, 0, nullptr));
    const char select[] = "select n from t";
    ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(query_, err_, Text(select), Len(select),
                                          OCI_NTV_SYNTAX, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(query_, &define_, err_, 1, &value_, sizeof value_,
                                          SQLT_INT, nullptr, nullptr, nullptr, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(svc_, OCI_HTYPE_SVCCTX, &server_, nullptr, OCI_ATTR_SERVER,
                                      err_));
    ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(svc_, OCI_HTYPE_SVCCTX, &session_, nullptr,
                                      OCI_ATTR_SESSION, err_));
  }

  std::pair<sword, sb4> Get(const Target& t, ub4 attribute, unsigned char* buffer) {
    ub4 size = 0;
    const sword rc = OCIAttrGet(t.handle, t.type, buffer, &size, attribute, err_);
    return {rc, rc == OCI_ERROR ? FirstCode(err_) : 0};
  }

  std::pair<sword, sb4> Set(const Target& t, ub4 attribute, unsigned char* buffer) {
    const sword rc = OCIAttrSet(t.handle, t.type, buffer, sizeof(ub4), attribute, err_);
    return {rc, rc == OCI_ERROR ? FirstCode(err_) : 0};
  }

  OCIStmt* stmt_ = nullptr;
  OCIStmt* query_ = nullptr;
  OCIBind* bind_ = nullptr;
  OCIDefine* define_ = nullptr;
  OCIServer* server_ = nullptr;
  OCISession* session_ = nullptr;
  int value_ = 0;
};

TEST_F(AttrMatrixTest, EveryHandleAnswersItsListedAttributesAndRefusesEveryOther) {
  const Target targets[] = {
      {"environment", env_, OCI_HTYPE_ENV, {OCI_ATTR_OBJECT, OCI_ATTR_OBJECT_NEWNOTNULL},
       {OCI_ATTR_OBJECT_NEWNOTNULL}},
      {"error", err_, OCI_HTYPE_ERROR, {}, {}},
      {"service context", svc_, OCI_HTYPE_SVCCTX, {OCI_ATTR_SERVER, OCI_ATTR_SESSION},
       {OCI_ATTR_SERVER, OCI_ATTR_SESSION}},
      {"server", server_, OCI_HTYPE_SERVER, {}, {}},
      {"session", session_, OCI_HTYPE_SESSION, {OCI_ATTR_USERNAME},
       {OCI_ATTR_USERNAME, OCI_ATTR_PASSWORD}},
      {"statement", stmt_, OCI_HTYPE_STMT,
       {OCI_ATTR_STMT_TYPE, OCI_ATTR_ROW_COUNT, OCI_ATTR_ROWS_FETCHED, OCI_ATTR_PARAM_COUNT,
        OCI_ATTR_PREFETCH_ROWS, OCI_ATTR_PREFETCH_MEMORY},
       {OCI_ATTR_PREFETCH_ROWS, OCI_ATTR_PREFETCH_MEMORY}},
      {"bind", bind_, OCI_HTYPE_BIND, {OCI_ATTR_ROWS_RETURNED}, {}},
      {"define", define_, OCI_HTYPE_DEFINE, {}, {}},
  };
  for (const Target& t : targets) {
    ASSERT_NE(nullptr, t.handle) << t.name;
    for (ub4 attribute = 0; attribute <= kLastAttribute; ++attribute) {
      unsigned char buffer[64];
      std::memset(buffer, 0xA5, sizeof buffer);
      const auto got = Get(t, attribute, buffer);
      if (t.get.count(attribute) != 0) {
        EXPECT_EQ(OCI_SUCCESS, got.first) << t.name << " get " << attribute << ": "
                                          << FirstError(err_);
      } else {
        EXPECT_EQ(OCI_ERROR, got.first) << t.name << " get " << attribute;
        EXPECT_EQ(24315, got.second) << t.name << " get " << attribute;
        for (unsigned char b : buffer) ASSERT_EQ(0xA5, b) << t.name << " get " << attribute;
      }
      if (t.set.count(attribute) != 0) continue;  // what a set does is tested with each handle
      std::memset(buffer, 0, sizeof buffer);
      const auto put = Set(t, attribute, buffer);
      EXPECT_EQ(OCI_ERROR, put.first) << t.name << " set " << attribute;
      EXPECT_EQ(24315, put.second) << t.name << " set " << attribute;
    }
  }
  // The readable statement attributes read the same on a query and a DML statement.
  ub2 type = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(query_, OCI_HTYPE_STMT, &type, nullptr, OCI_ATTR_STMT_TYPE,
                                    err_));
  EXPECT_EQ(OCI_STMT_SELECT, type);
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(stmt_, OCI_HTYPE_STMT, &type, nullptr, OCI_ATTR_STMT_TYPE,
                                    err_));
  EXPECT_EQ(OCI_STMT_INSERT, type);
}

// A set of a listed attribute takes the value; a set of the read-only ones is refused.
TEST_F(AttrMatrixTest, ReadOnlyAttributesRefuseASet) {
  ub4 rows = 5;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrSet(stmt_, OCI_HTYPE_STMT, &rows, sizeof rows,
                                    OCI_ATTR_PREFETCH_ROWS, err_));
  ub4 back = 0;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(stmt_, OCI_HTYPE_STMT, &back, nullptr, OCI_ATTR_PREFETCH_ROWS,
                                    err_));
  EXPECT_EQ(5u, back);
  for (ub4 attribute : {OCI_ATTR_STMT_TYPE, OCI_ATTR_ROW_COUNT, OCI_ATTR_ROWS_FETCHED,
                        OCI_ATTR_PARAM_COUNT}) {
    EXPECT_EQ(OCI_ERROR, OCIAttrSet(stmt_, OCI_HTYPE_STMT, &rows, sizeof rows, attribute, err_))
        << attribute;
    EXPECT_EQ(24315, FirstCode(err_)) << attribute;
  }
  boolean on = TRUE;
  EXPECT_EQ(OCI_ERROR, OCIAttrSet(env_, OCI_HTYPE_ENV, &on, sizeof on, OCI_ATTR_OBJECT, err_));
  EXPECT_EQ(24315, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIAttrSet(bind_, OCI_HTYPE_BIND, &rows, sizeof rows,
                                  OCI_ATTR_ROWS_RETURNED, err_));
  EXPECT_EQ(24315, FirstCode(err_));
  text* name = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIAttrGet(session_, OCI_HTYPE_SESSION, &name, nullptr, OCI_ATTR_PASSWORD,
                                  err_));
  EXPECT_EQ(24315, FirstCode(err_));
}

}  // namespace
}  // namespace ocimem_test
