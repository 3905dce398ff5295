// Statement handles as ordinary OCI programs use them: prefetch attributes, arrays of
// structures bound and defined (OCIBindArrayOfStruct, OCIDefineArrayOfStruct), array DML and
// array fetches with their row counts.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class StmtArrayTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create table emp (id number(6) primary key, name varchar2(10))");
  }

  ub4 StmtAttr(OCIStmt* stmt, ub4 attr) {
    ub4 value = 12345;
    ub4 size = 0;
    EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(stmt, OCI_HTYPE_STMT, &value, &size, attr, err_))
        << FirstError(err_);
    EXPECT_EQ(sizeof(ub4), size);
    return value;
  }
};

struct EmpRow {
  int id;
  char name[11];
  sb2 id_ind;
  sb2 name_ind;
  ub2 name_len;
  ub2 name_code;
};

// decision P1: a new statement reports OCI_ATTR_PREFETCH_ROWS 1 and OCI_ATTR_PREFETCH_MEMORY 0
TEST_F(StmtArrayTest, PrefetchAttributesAreKeptAndChangeNothing) {
  for (int i = 1; i <= 5; ++i) {
    MustExec("insert into emp values (" + std::to_string(i) + ", 'n" + std::to_string(i) + "')");
  }
  OCIStmt* stmt = Prepare("select id from emp");
  EXPECT_EQ(1u, StmtAttr(stmt, OCI_ATTR_PREFETCH_ROWS));
  EXPECT_EQ(0u, StmtAttr(stmt, OCI_ATTR_PREFETCH_MEMORY));
  ub4 rows = 100;
  ub4 memory = 65536;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(stmt, OCI_HTYPE_STMT, &rows, 0, OCI_ATTR_PREFETCH_ROWS, err_));
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrSet(stmt, OCI_HTYPE_STMT, &memory, 0, OCI_ATTR_PREFETCH_MEMORY, err_));
  EXPECT_EQ(100u, StmtAttr(stmt, OCI_ATTR_PREFETCH_ROWS));
  EXPECT_EQ(65536u, StmtAttr(stmt, OCI_ATTR_PREFETCH_MEMORY));
  int id = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0));
  // The fetch still hands out exactly the rows asked for.
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(1, id);
  EXPECT_EQ(1u, StmtAttr(stmt, OCI_ATTR_ROWS_FETCHED));
  EXPECT_EQ(1u, StmtAttr(stmt, OCI_ATTR_ROW_COUNT));
  // Setting them after the execute is accepted too.
  rows = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(stmt, OCI_HTYPE_STMT, &rows, 0, OCI_ATTR_PREFETCH_ROWS, err_));
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(2, id);
  EXPECT_EQ(2u, StmtAttr(stmt, OCI_ATTR_ROW_COUNT));
}

TEST_F(StmtArrayTest, PrefetchAttributesRefusedWithoutValueAndOtherAttributesIllegal) {
  OCIStmt* stmt = Prepare("select id from emp");
  EXPECT_EQ(OCI_ERROR, OCIAttrSet(stmt, OCI_HTYPE_STMT, nullptr, 0, OCI_ATTR_PREFETCH_ROWS, err_));
  EXPECT_EQ(21560, FirstCode(err_));
  ub4 value = 1;
  EXPECT_EQ(OCI_ERROR, OCIAttrSet(stmt, OCI_HTYPE_STMT, &value, 0, OCI_ATTR_ROW_COUNT, err_));
  EXPECT_EQ("ORA-24315: illegal attribute type", FirstError(err_));
}

TEST_F(StmtArrayTest, ArrayOfStructInsertAndFetch) {
  EmpRow in[3] = {};
  const char* names[3] = {"ann", "bob", ""};
  for (int i = 0; i < 3; ++i) {
    in[i].id = 10 + i;
    std::strcpy(in[i].name, names[i]);
    in[i].name_len = static_cast<ub2>(std::strlen(names[i]));
    in[i].name_ind = i == 2 ? -1 : 0;
  }
  OCIStmt* ins = Prepare("insert into emp (id, name) values (:id, :name)");
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(ins, &b1, err_, Text(":id"), 3, &in[0].id, sizeof(int),
                                       SQLT_INT, &in[0].id_ind, nullptr, nullptr, 0, nullptr,
                                       OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindArrayOfStruct(b1, err_, sizeof(EmpRow), sizeof(EmpRow), 0, 0));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(ins, &b2, err_, Text(":name"), 5, in[0].name, 11,
                                       SQLT_CHR, &in[0].name_ind, &in[0].name_len, nullptr, 0,
                                       nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindArrayOfStruct(b2, err_, sizeof(EmpRow), sizeof(EmpRow),
                                              sizeof(EmpRow), 0));
  ASSERT_EQ(OCI_SUCCESS, Execute(ins, 3)) << FirstError(err_);
  EXPECT_EQ(3u, StmtAttr(ins, OCI_ATTR_ROW_COUNT));

  EmpRow out[2];
  std::memset(out, 0x7f, sizeof out);
  OCIStmt* sel = Prepare("select id, name from emp");
  OCIDefine* d1 = nullptr;
  OCIDefine* d2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d1, err_, 1, &out[0].id, sizeof(int), SQLT_INT,
                                        &out[0].id_ind, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineArrayOfStruct(d1, err_, sizeof(EmpRow), sizeof(EmpRow), 0, 0));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d2, err_, 2, out[0].name, 11, SQLT_STR,
                                        &out[0].name_ind, &out[0].name_len, &out[0].name_code,
                                        OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineArrayOfStruct(d2, err_, sizeof(EmpRow), sizeof(EmpRow),
                                                sizeof(EmpRow), sizeof(EmpRow)));
  ASSERT_EQ(OCI_SUCCESS, Execute(sel, 2)) << FirstError(err_);
  EXPECT_EQ(2u, StmtAttr(sel, OCI_ATTR_ROWS_FETCHED));
  EXPECT_EQ(2u, StmtAttr(sel, OCI_ATTR_ROW_COUNT));
  EXPECT_EQ(10, out[0].id);
  EXPECT_EQ(0, out[0].id_ind);
  EXPECT_STREQ("ann", out[0].name);
  EXPECT_EQ(3, out[0].name_len);
  EXPECT_EQ(0, out[0].name_code);
  EXPECT_EQ(11, out[1].id);
  EXPECT_STREQ("bob", out[1].name);
  // The last batch is partial: one row came, OCI_NO_DATA with ORA-01403.
  std::memset(out, 0x7f, sizeof out);
  ASSERT_EQ(OCI_NO_DATA, OCIStmtFetch2(sel, err_, 2, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ("ORA-01403: no data found", FirstError(err_));
  EXPECT_EQ(1u, StmtAttr(sel, OCI_ATTR_ROWS_FETCHED));
  EXPECT_EQ(3u, StmtAttr(sel, OCI_ATTR_ROW_COUNT));
  EXPECT_EQ(12, out[0].id);
  EXPECT_EQ(-1, out[0].name_ind);
  EXPECT_EQ(0, out[0].name_len);
  EXPECT_EQ(1405, out[0].name_code);
  // The second element was not written.
  EXPECT_EQ(0x7f7f7f7f, out[1].id);
}

TEST_F(StmtArrayTest, PlainArrayDefinesFilledRowByRowWithCodes) {
  MustExec("insert into emp values (1, 'abcdefgh')");
  MustExec("insert into emp values (2, null)");
  MustExec("insert into emp values (3, 'xy')");
  OCIStmt* sel = Prepare("select id, name from emp");
  int ids[4] = {0, 0, 0, 0};
  char names[4][4];
  sb2 inds[4] = {9, 9, 9, 9};
  ub2 lens[4] = {9, 9, 9, 9};
  ub2 codes[4] = {9, 9, 9, 9};
  OCIDefine* d1 = nullptr;
  OCIDefine* d2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d1, err_, 1, ids, sizeof(int), SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d2, err_, 2, names, 4, SQLT_CHR, inds, lens, codes,
                                        OCI_DEFAULT));
  // Four rows asked, three came: OCI_NO_DATA, and the first value was cut.
  EXPECT_EQ(OCI_NO_DATA, Execute(sel, 4));
  EXPECT_EQ(3u, StmtAttr(sel, OCI_ATTR_ROWS_FETCHED));
  EXPECT_EQ(3u, StmtAttr(sel, OCI_ATTR_ROW_COUNT));
  EXPECT_EQ(1, ids[0]);
  EXPECT_EQ(2, ids[1]);
  EXPECT_EQ(3, ids[2]);
  EXPECT_EQ(0, ids[3]);
  EXPECT_EQ(std::string("abcd"), std::string(names[0], 4));
  EXPECT_EQ(8, inds[0]);
  EXPECT_EQ(4, lens[0]);
  EXPECT_EQ(1406, codes[0]);
  EXPECT_EQ(-1, inds[1]);
  EXPECT_EQ(0, lens[1]);
  EXPECT_EQ(1405, codes[1]);
  EXPECT_EQ(std::string("xy"), std::string(names[2], 2));
  EXPECT_EQ(0, inds[2]);
  EXPECT_EQ(2, lens[2]);
  EXPECT_EQ(0, codes[2]);
  EXPECT_EQ(9, inds[3]);
  // Fetching again after the end: ORA-01002.
  EXPECT_EQ(OCI_ERROR, OCIStmtFetch2(sel, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(1002, FirstCode(err_));
}

TEST_F(StmtArrayTest, FullBatchesThenAnEmptyOne) {
  for (int i = 1; i <= 4; ++i) {
    MustExec("insert into emp values (" + std::to_string(i) + ", null)");
  }
  OCIStmt* sel = Prepare("select id from emp");
  int ids[2] = {0, 0};
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &d, err_, 1, ids, sizeof(int), SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(sel, 0));
  EXPECT_EQ(0u, StmtAttr(sel, OCI_ATTR_ROW_COUNT));
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch(sel, err_, 2, OCI_FETCH_NEXT, OCI_DEFAULT));
  EXPECT_EQ(1, ids[0]);
  EXPECT_EQ(2, ids[1]);
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch(sel, err_, 2, OCI_FETCH_NEXT, OCI_DEFAULT));
  EXPECT_EQ(3, ids[0]);
  EXPECT_EQ(4, ids[1]);
  EXPECT_EQ(2u, StmtAttr(sel, OCI_ATTR_ROWS_FETCHED));
  EXPECT_EQ(4u, StmtAttr(sel, OCI_ATTR_ROW_COUNT));
  EXPECT_EQ(OCI_NO_DATA, OCIStmtFetch(sel, err_, 2, OCI_FETCH_NEXT, OCI_DEFAULT));
  EXPECT_EQ(0u, StmtAttr(sel, OCI_ATTR_ROWS_FETCHED));
  EXPECT_EQ(4u, StmtAttr(sel, OCI_ATTR_ROW_COUNT));
}

TEST_F(StmtArrayTest, ArrayUpdateAndDeleteCountEveryIteration) {
  for (int i = 1; i <= 4; ++i) {
    MustExec("insert into emp values (" + std::to_string(i) + ", 'a')");
  }
  OCIStmt* upd = Prepare("update emp set name = :n where id = :i");
  char names[3][2] = {{'x', 'y'}, {'z', 0}, {'w', 0}};
  ub2 lens[3] = {2, 1, 1};
  int ids[3] = {1, 9, 3};
  OCIBind* b1 = nullptr;
  OCIBind* b2 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(upd, &b1, err_, 1, names, 2, SQLT_CHR, nullptr, lens,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(upd, &b2, err_, 2, ids, sizeof(int), SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(upd, 3)) << FirstError(err_);
  // Id 9 matches nothing: two rows changed in all.
  EXPECT_EQ(2u, StmtAttr(upd, OCI_ATTR_ROW_COUNT));
  EXPECT_EQ((std::vector<std::string>{"xy", "a", "w", "a"}),
            Column("select name from emp"));
  OCIStmt* del = Prepare("delete from emp where id = :1");
  int gone[4] = {4, 2, 1, 3};
  OCIBind* b3 = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(del, &b3, err_, 1, gone, sizeof(int), SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  // rowoff 1: elements 1 and 2 only (iters - rowoff executions).
  ASSERT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, del, err_, 3, 1, nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(2u, StmtAttr(del, OCI_ATTR_ROW_COUNT));
  EXPECT_EQ((std::vector<std::string>{"3", "4"}), Column("select id from emp"));
}

// decision A1: array DML stops at the failing element; the elements before it stay and
// are counted in OCI_ATTR_ROW_COUNT
TEST_F(StmtArrayTest, ArrayInsertStopsAtTheFailingElement) {
  OCIStmt* ins = Prepare("insert into emp (id) values (:1)");
  int ids[3] = {1, 1, 2};
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &b, err_, 1, ids, sizeof(int), SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(ins, 3));
  EXPECT_EQ(1, FirstCode(err_));
  // The elements before the failing one were inserted and counted.
  EXPECT_EQ(1u, StmtAttr(ins, OCI_ATTR_ROW_COUNT));
  EXPECT_EQ((std::vector<std::string>{"1"}), Column("select id from emp"));
}

TEST_F(StmtArrayTest, ArrayOfStructCallsCheckTheirHandles) {
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIBindArrayOfStruct(nullptr, err_, 4, 2, 2, 2));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDefineArrayOfStruct(nullptr, err_, 4, 2, 2, 2));
  OCIStmt* stmt = Prepare("select id from emp");
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIBindArrayOfStruct(reinterpret_cast<OCIBind*>(stmt), err_, 4, 2, 2, 2));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIDefineArrayOfStruct(reinterpret_cast<OCIDefine*>(stmt), err_, 4, 2, 2, 2));
}

TEST_F(StmtArrayTest, InjectedFaultsOnArrayOfStructCalls) {
  OCIStmt* stmt = Prepare("select id from emp where id = :1");
  int v = 0;
  OCIBind* b = nullptr;
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &v, sizeof v, SQLT_INT, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, &v, sizeof v, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  const sb4 codes[] = {3113};
  const char* const texts[] = {"end-of-file on communication channel"};
  ocimemFaultArm("OCIBindArrayOfStruct", 1, OCI_ERROR, codes, texts, 1);
  EXPECT_EQ(OCI_ERROR, OCIBindArrayOfStruct(b, err_, 8, 0, 0, 0));
  EXPECT_EQ("ORA-03113: end-of-file on communication channel", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIBindArrayOfStruct(b, err_, 8, 0, 0, 0));
  ocimemFaultArm("OCIDefineArrayOfStruct", 1, OCI_ERROR, codes, texts, 1);
  EXPECT_EQ(OCI_ERROR, OCIDefineArrayOfStruct(d, err_, 8, 0, 0, 0));
  EXPECT_EQ(3113, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIDefineArrayOfStruct(d, err_, 8, 0, 0, 0));
}

}  // namespace
}  // namespace ocimem_test
