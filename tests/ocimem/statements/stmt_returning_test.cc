// INSERT, UPDATE and DELETE ... RETURNING expr, ... INTO :bind, ...: the values through
// ordinary binds and through the out-bind callbacks of OCIBindDynamic, and the usual way to
// insert a LOB and write it through the locator it returns.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class StmtReturningTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table emp (id number(6) primary key, name varchar2(10), doc clob)");
  }
};

// What the out-bind callback saw and where it put the values.
struct Returned {
  std::vector<ub4> iters;
  std::vector<ub4> indexes;
  std::vector<ub4> rows_returned;
  int values[8] = {};
  ub4 lens[8] = {};
  sb2 inds[8] = {};
  ub2 codes[8] = {};
  sb4 answer = OCI_CONTINUE;
  OCIError* err = nullptr;
};

sb4 NullInput(void*, OCIBind*, ub4, ub4, void** bufpp, ub4* alenp, ub1* piecep, void** indpp) {
  static sb2 null_ind = -1;
  *bufpp = nullptr;
  *alenp = 0;
  *indpp = &null_ind;
  *piecep = OCI_ONE_PIECE;
  return OCI_CONTINUE;
}

sb4 TakeRow(void* ctx, OCIBind* bind, ub4 iter, ub4 index, void** bufpp, ub4** alenp,
            ub1* piecep, void** indpp, ub2** rcodepp) {
  auto* r = static_cast<Returned*>(ctx);
  ub4 rows = 99;
  // OCI_ATTR_ROWS_RETURNED is readable on the bind inside the callback.
  OCIAttrGet(bind, OCI_HTYPE_BIND, &rows, nullptr, OCI_ATTR_ROWS_RETURNED, r->err);
  r->iters.push_back(iter);
  r->indexes.push_back(index);
  r->rows_returned.push_back(rows);
  size_t slot = r->iters.size() - 1;
  r->lens[slot] = sizeof(int);
  *bufpp = &r->values[slot];
  *alenp = &r->lens[slot];
  *indpp = &r->inds[slot];
  *rcodepp = &r->codes[slot];
  *piecep = OCI_ONE_PIECE;
  return r->answer;
}

TEST_F(StmtReturningTest, OrdinaryBindsTakeTheReturnedRow) {
  OCIStmt* stmt = Prepare("insert into emp (id, name) values (7, 'ann') returning id, name into "
                          ":rid, :rname");
  int id = 0;
  char name[11] = "zzzzzzzzzz";
  sb2 ind = 5;
  ub2 len = 0;
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b1, err_, Text(":rid"), 4, &id, sizeof id, SQLT_INT,
                                       nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b2, err_, Text(":rname"), 6, name, sizeof name,
                                       SQLT_STR, &ind, &len, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ(7, id);
  EXPECT_STREQ("ann", name);
  EXPECT_EQ(0, ind);
  EXPECT_EQ(3, len);
  ub4 rows = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(b1, OCI_HTYPE_BIND, &rows, nullptr, OCI_ATTR_ROWS_RETURNED,
                                    err_));
  EXPECT_EQ(1u, rows);
}

TEST_F(StmtReturningTest, ArrayInsertReturnsIntoElementIterOfOrdinaryBinds) {
  OCIStmt* stmt = Prepare("insert into emp (id, name) values (:id, :name) return id into :rid");
  int ids[3] = {1, 2, 3};
  char names[3][2] = {{'a', 0}, {'b', 0}, {'c', 0}};
  int rids[3] = {0, 0, 0};
  OCIBind* b[3] = {nullptr, nullptr, nullptr};
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b[0], err_, Text("id"), 2, ids, sizeof(int),
                                       SQLT_INT, nullptr, nullptr, nullptr, 0, nullptr,
                                       OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b[1], err_, Text("name"), 4, names, 2, SQLT_STR,
                                       nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b[2], err_, Text("rid"), 3, rids, sizeof(int),
                                       SQLT_INT, nullptr, nullptr, nullptr, 0, nullptr,
                                       OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 3)) << FirstError(err_);
  EXPECT_EQ(1, rids[0]);
  EXPECT_EQ(2, rids[1]);
  EXPECT_EQ(3, rids[2]);
}

// decision R2: an ordinary bind takes one row per iteration; more is ORA-24369
TEST_F(StmtReturningTest, OrdinaryBindsCannotTakeSeveralRows) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  MustExec("insert into emp (id, name) values (2, 'a')");
  OCIStmt* stmt = Prepare("update emp set name = 'b' where name = 'a' returning id into :1");
  int id = 0;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ("ORA-24369: required callbacks not registered for one or more bind handles",
            FirstError(err_));
}

// decision R3: an iteration that returns no row leaves an ordinary bind as it was
TEST_F(StmtReturningTest, NoRowLeavesOrdinaryBindsAlone) {
  OCIStmt* stmt = Prepare("delete from emp where id = 5 returning name into :1");
  char name[4] = "old";
  sb2 ind = 0;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, name, sizeof name, SQLT_STR, &ind,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt));
  EXPECT_STREQ("old", name);
  ub4 rows = 9;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(b, OCI_HTYPE_BIND, &rows, nullptr, OCI_ATTR_ROWS_RETURNED,
                                    err_));
  EXPECT_EQ(0u, rows);
}

TEST_F(StmtReturningTest, DynamicBindsGetEveryRowThroughTheCallback) {
  for (int i = 1; i <= 3; ++i) {
    MustExec("insert into emp (id, name) values (" + std::to_string(i) + ", 'n')");
  }
  OCIStmt* stmt = Prepare("update emp set name = 'm' where name = 'n' returning id into :out");
  OCIBind* b = nullptr;
  int unused = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b, err_, Text(":out"), 4, &unused, sizeof(int),
                                       SQLT_INT, nullptr, nullptr, nullptr, 0, nullptr,
                                       OCI_DATA_AT_EXEC));
  Returned r;
  r.err = err_;
  ASSERT_EQ(OCI_SUCCESS, OCIBindDynamic(b, err_, nullptr, NullInput, &r, TakeRow));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ((std::vector<ub4>{0, 0, 0}), r.iters);
  EXPECT_EQ((std::vector<ub4>{0, 1, 2}), r.indexes);
  EXPECT_EQ((std::vector<ub4>{3, 3, 3}), r.rows_returned);
  EXPECT_EQ(1, r.values[0]);
  EXPECT_EQ(2, r.values[1]);
  EXPECT_EQ(3, r.values[2]);
  EXPECT_EQ(sizeof(int), r.lens[0]);
  EXPECT_EQ(0, r.inds[2]);
  EXPECT_EQ(0, r.codes[2]);
  EXPECT_EQ(0, unused);
}

// decision R4: an iteration without rows calls the out-bind callback once, index 0, and
// OCI_ATTR_ROWS_RETURNED is 0 there
TEST_F(StmtReturningTest, DynamicBindsPerIterationOfAnArrayDelete) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  MustExec("insert into emp (id, name) values (3, null)");
  OCIStmt* stmt = Prepare("delete from emp where id = :1 returning name into :2");
  int ids[3] = {3, 2, 1};
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b1, err_, 1, ids, sizeof(int), SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b2, err_, 2, nullptr, 10, SQLT_CHR, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  struct Names {
    std::vector<std::string> seen;
    std::vector<ub4> rows;
    char buf[3][10];
    ub4 lens[3];
    sb2 inds[3];
    ub2 codes[3];
    int calls = 0;
    OCIError* err = nullptr;
  } names;
  names.err = err_;
  auto out = [](void* ctx, OCIBind* bind, ub4 iter, ub4 index, void** bufpp, ub4** alenp,
                ub1* piecep, void** indpp, ub2** rcodepp) -> sb4 {
    auto* n = static_cast<Names*>(ctx);
    ub4 rows = 0;
    OCIAttrGet(bind, OCI_HTYPE_BIND, &rows, nullptr, OCI_ATTR_ROWS_RETURNED, n->err);
    n->rows.push_back(iter * 10 + index * 100 + rows);
    int c = n->calls++;
    n->lens[c] = 10;
    n->inds[c] = 7;
    *bufpp = n->buf[c];
    *alenp = &n->lens[c];
    *indpp = &n->inds[c];
    *rcodepp = &n->codes[c];
    *piecep = OCI_ONE_PIECE;
    return OCI_CONTINUE;
  };
  ASSERT_EQ(OCI_SUCCESS, OCIBindDynamic(b2, err_, nullptr, NullInput, &names, out));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 3)) << FirstError(err_);
  // iteration 0: one row (NULL name); 1: none; 2: one row 'a'
  EXPECT_EQ((std::vector<ub4>{1, 10, 21}), names.rows);
  EXPECT_EQ(-1, names.inds[0]);
  EXPECT_EQ(0u, names.lens[0]);
  EXPECT_EQ(1405, names.codes[0]);
  EXPECT_EQ(7, names.inds[1]);  // nothing was written for the empty iteration
  EXPECT_EQ(0, names.inds[2]);
  EXPECT_EQ(1u, names.lens[2]);
  EXPECT_EQ('a', names.buf[2][0]);
  ub4 count = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(stmt, OCI_HTYPE_STMT, &count, nullptr, OCI_ATTR_ROW_COUNT,
                                    err_));
  EXPECT_EQ(2u, count);
}

// decision R5: a callback answering other than OCI_CONTINUE fails the execute with
// ORA-24343; the row the iteration changed stays in the transaction
TEST_F(StmtReturningTest, CallbackAnsweringOtherThanContinueFails) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  OCIStmt* stmt = Prepare("update emp set name = 'b' returning id into :1");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, nullptr, sizeof(int), SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  Returned r;
  r.err = err_;
  r.answer = OCI_ERROR;
  ASSERT_EQ(OCI_SUCCESS, OCIBindDynamic(b, err_, nullptr, NullInput, &r, TakeRow));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ("ORA-24343: user defined callback error", FirstError(err_));
  EXPECT_EQ((std::vector<std::string>{"b"}), Column("select name from emp"));
}

// decision R1: OCIBindDynamic on a bind made with OCI_DEFAULT makes it a dynamic bind
TEST_F(StmtReturningTest, BindDynamicOnADefaultModeBind) {
  OCIStmt* stmt = Prepare("insert into emp (id) values (4) returning id into :1");
  OCIBind* b = nullptr;
  int unused = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &unused, sizeof unused, SQLT_INT,
                                      nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  Returned r;
  r.err = err_;
  ASSERT_EQ(OCI_SUCCESS, OCIBindDynamic(b, err_, nullptr, NullInput, &r, TakeRow));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ(4, r.values[0]);
  EXPECT_EQ(0, unused);
}

TEST_F(StmtReturningTest, DataAtExecuteReturningBindWithoutCallbacks) {
  OCIStmt* stmt = Prepare("insert into emp (id) values (1) returning id into :1");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, nullptr, sizeof(int), SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ(24369, FirstCode(err_));
  // Nothing was inserted.
  EXPECT_TRUE(Column("select id from emp").empty());
}

// decision R6: a returned value is cut or NULL as a fetched one is
TEST_F(StmtReturningTest, ReturnedValueCutOrNullWithoutIndicator) {
  MustExec("insert into emp (id, name) values (1, 'abcdef')");
  MustExec("insert into emp (id, name) values (2, null)");
  OCIStmt* cut = Prepare("update emp set id = 1 where id = 1 returning name into :1");
  char small[3];
  sb2 ind = 0;
  ub2 code = 0;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(cut, &b, err_, 1, small, sizeof small, SQLT_CHR, &ind,
                                      nullptr, &code, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS_WITH_INFO, Execute(cut));
  EXPECT_EQ(24345, FirstCode(err_));
  EXPECT_EQ(6, ind);
  EXPECT_EQ(1406, code);
  EXPECT_EQ(std::string("abc"), std::string(small, 3));
  OCIStmt* null = Prepare("update emp set id = 2 where id = 2 returning name into :1");
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(null, &b, err_, 1, small, sizeof small, SQLT_CHR, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(null));
  EXPECT_EQ("ORA-01405: fetched column value is NULL", FirstError(err_));
}

// decision R7: the codes of a malformed RETURNING clause
TEST_F(StmtReturningTest, ReturningClauseErrors) {
  EXPECT_EQ(925, ExecError("insert into emp (id) values (1) returning id"));
  EXPECT_EQ(936, ExecError("insert into emp (id) values (1) returning into :a"));
  EXPECT_EQ(1745, ExecError("insert into emp (id) values (1) returning id into x"));
  EXPECT_EQ(913, ExecError("delete from emp returning id into :a, :b"));
  EXPECT_EQ(947, ExecError("update emp set name = 'x' returning id, name into :a"));
  EXPECT_EQ(933, ExecError("delete from emp returning id into :a where id = 1"));
  // Unbound INTO variables: ORA-01008 before anything runs.
  EXPECT_EQ(1008, ExecError("insert into emp (id) values (1) returning id into :a"));
  // An unknown column, with the INTO variable bound.
  OCIStmt* stmt = Prepare("insert into emp (id) values (1) returning nope into :a");
  int a = 0;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &a, sizeof a, SQLT_INT, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ("ORA-00904: \"NOPE\": invalid identifier", FirstError(err_));
  EXPECT_TRUE(Column("select id from emp").empty());
}

TEST_F(StmtReturningTest, ReturningTypeThatCannotBeConverted) {
  MustExec("insert into emp (id, name) values (1, 'a')");
  OCIStmt* stmt = Prepare("update emp set name = 'b' returning doc into :1");
  int v = 0;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &v, sizeof v, SQLT_INT, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ(932, FirstCode(err_));
}

// The classic LOB insert: an empty LOB and its locator back, written while the inserting
// transaction holds the row.
TEST_F(StmtReturningTest, InsertEmptyClobAndWriteThroughTheReturnedLocator) {
  OCILobLocator* loc = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&loc), OCI_DTYPE_LOB, 0, nullptr));
  OCIStmt* stmt =
      Prepare("insert into emp (id, name, doc) values (1, 'x', empty_clob()) returning doc into :loc");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b, err_, Text(":loc"), 4, &loc, sizeof(loc),
                                       SQLT_CLOB, nullptr, nullptr, nullptr, 0, nullptr,
                                       OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  ub4 length = 9;
  ASSERT_EQ(OCI_SUCCESS, OCILobGetLength(svc_, err_, loc, &length));
  EXPECT_EQ(0u, length);
  char text[] = "hello lob";
  ub4 amount = 9;
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, loc, &amount, 1, text, 9, OCI_ONE_PIECE, nullptr,
                                     nullptr, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  // After the commit the row is no longer locked: the locator can read, not write.
  EXPECT_EQ(OCI_ERROR, OCILobWrite(svc_, err_, loc, &amount, 1, text, 9, OCI_ONE_PIECE, nullptr,
                                   nullptr, 0, SQLCS_IMPLICIT));
  EXPECT_EQ(22990, FirstCode(err_));
  OCIStmt* sel = Prepare("select doc from emp where id = 1");
  OCILobLocator* got = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&got), OCI_DTYPE_LOB, 0, nullptr));
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d, err_, 1, &got, 0, SQLT_CLOB, nullptr, nullptr,
                                        nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(sel));
  char buf[16] = {};
  amount = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobRead(svc_, err_, got, &amount, 1, buf, sizeof buf, nullptr, nullptr,
                                    0, SQLCS_IMPLICIT));
  EXPECT_EQ("hello lob", std::string(buf, amount));
  OCIDescriptorFree(got, OCI_DTYPE_LOB);
  OCIDescriptorFree(loc, OCI_DTYPE_LOB);
}

// The same through OCIBindDynamic, as array-minded programs write it.
TEST_F(StmtReturningTest, InsertEmptyClobReturningThroughCallback) {
  OCILobLocator* loc = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&loc), OCI_DTYPE_LOB, 0, nullptr));
  OCIStmt* stmt =
      Prepare("insert into emp (id, doc) values (2, empty_clob()) returning doc into :loc");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b, err_, Text(":loc"), 4, nullptr, sizeof(loc),
                                       SQLT_CLOB, nullptr, nullptr, nullptr, 0, nullptr,
                                       OCI_DATA_AT_EXEC));
  struct Ctx {
    OCILobLocator** loc;
    ub4 len = sizeof(OCILobLocator*);
    sb2 ind = 0;
    ub2 code = 0;
  } ctx{&loc};
  auto out = [](void* c, OCIBind*, ub4, ub4, void** bufpp, ub4** alenp, ub1* piecep,
                void** indpp, ub2** rcodepp) -> sb4 {
    auto* x = static_cast<Ctx*>(c);
    *bufpp = x->loc;
    *alenp = &x->len;
    *indpp = &x->ind;
    *rcodepp = &x->code;
    *piecep = OCI_ONE_PIECE;
    return OCI_CONTINUE;
  };
  ASSERT_EQ(OCI_SUCCESS, OCIBindDynamic(b, err_, nullptr, NullInput, &ctx, out));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  char text[] = "abc";
  ub4 amount = 3;
  ASSERT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, loc, &amount, 1, text, 3, OCI_ONE_PIECE, nullptr,
                                     nullptr, 0, SQLCS_IMPLICIT))
      << FirstError(err_);
  ub4 length = 0;
  ASSERT_EQ(OCI_SUCCESS, OCILobGetLength(svc_, err_, loc, &length));
  EXPECT_EQ(3u, length);
  // Another session does not see the row, nor is the LOB written for it, until the commit.
  OCISvcCtx* other = OtherSession();
  EXPECT_TRUE(Column("select id from emp", other).empty());
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ((std::vector<std::string>{"2"}), Column("select id from emp", other));
  OCIDescriptorFree(loc, OCI_DTYPE_LOB);
}

TEST_F(StmtReturningTest, InjectedFaultOnBindDynamic) {
  OCIStmt* stmt = Prepare("insert into emp (id) values (1) returning id into :1");
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, nullptr, sizeof(int), SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DATA_AT_EXEC));
  const sb4 codes[] = {3113};
  const char* const texts[] = {"end-of-file on communication channel"};
  ocimemFaultArm("OCIBindDynamic", 1, OCI_ERROR, codes, texts, 1);
  Returned r;
  r.err = err_;
  EXPECT_EQ(OCI_ERROR, OCIBindDynamic(b, err_, nullptr, NullInput, &r, TakeRow));
  EXPECT_EQ("ORA-03113: end-of-file on communication channel", FirstError(err_));
  // The fault changed nothing: the bind still has no callbacks.
  EXPECT_EQ(OCI_ERROR, Execute(stmt));
  EXPECT_EQ(24369, FirstCode(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIBindDynamic(nullptr, err_, nullptr, NullInput, &r, TakeRow));
}

}  // namespace
}  // namespace ocimem_test
