// Nested tables as tables: OCITableDelete leaves holes, OCITableSize/Exists/First/Last/Next/
// Prev see only the elements that exist, and the collection calls, iterators, copies and
// the database treat the holes as Oracle does.
#include <gtest/gtest.h>

#include <vector>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

struct bag_t {
  OCINumber id;
  OCITable* nums;
};
struct bag_t_ind {
  OCIInd _atomic, id, nums;
};

class NestedTableTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create type num_nt as table of number");
    MustExec("create type num_va as varray(4) of number");
    MustExec("create type bag_t as object (id number, nums num_nt)");
  }
  OCITable* NewTable(const char* type, std::vector<int> values) {
    void* coll = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_NAMEDCOLLECTION,
                                        TypeByName(type), nullptr, OCI_DURATION_DEFAULT, TRUE,
                                        &coll));
    for (int v : values) Append(static_cast<OCITable*>(coll), v);
    return static_cast<OCITable*>(coll);
  }
  void Append(OCITable* t, int v) {
    OCINumber n;
    ASSERT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &v, sizeof v, OCI_NUMBER_SIGNED, &n));
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &n, nullptr, t)) << FirstError(err_);
  }
  void Delete(OCITable* t, sb4 index) {
    ASSERT_EQ(OCI_SUCCESS, OCITableDelete(env_, err_, index, t)) << FirstError(err_);
  }
  sb4 CollSize(const OCITable* t) {
    sb4 size = -1;
    EXPECT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, t, &size)) << FirstError(err_);
    return size;
  }
  sb4 TableSize(const OCITable* t) {
    sb4 size = -1;
    EXPECT_EQ(OCI_SUCCESS, OCITableSize(env_, err_, t, &size)) << FirstError(err_);
    return size;
  }
  bool Exists(const OCITable* t, sb4 index) {
    boolean exists = 7;
    EXPECT_EQ(OCI_SUCCESS, OCITableExists(env_, err_, t, index, &exists)) << FirstError(err_);
    EXPECT_TRUE(exists == TRUE || exists == FALSE);
    return exists == TRUE;
  }
  // The value at an index through OCICollGetElem, or -1 when it does not exist.
  int At(const OCITable* t, sb4 index) {
    boolean exists = 7;
    void* elem = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, t, index, &exists, &elem, nullptr));
    if (exists != TRUE) return -1;
    int v = 0;
    EXPECT_EQ(OCI_SUCCESS, OCINumberToInt(err_, static_cast<const OCINumber*>(elem), sizeof v,
                                          OCI_NUMBER_SIGNED, &v));
    return v;
  }
  // The values an iterator hands out, in order.
  std::vector<int> Iterate(const OCITable* t) {
    OCIIter* it = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIIterCreate(env_, err_, t, &it));
    std::vector<int> out;
    for (;;) {
      void* elem = nullptr;
      void* ind = nullptr;
      boolean eoc = TRUE;
      EXPECT_EQ(OCI_SUCCESS, OCIIterNext(env_, err_, it, &elem, &ind, &eoc));
      if (eoc) break;
      int v = 0;
      EXPECT_EQ(OCI_SUCCESS, OCINumberToInt(err_, static_cast<const OCINumber*>(elem), sizeof v,
                                            OCI_NUMBER_SIGNED, &v));
      out.push_back(v);
    }
    EXPECT_EQ(OCI_SUCCESS, OCIIterDelete(env_, err_, &it));
    return out;
  }
};

TEST_F(NestedTableTest, DeleteLeavesAHoleThatCollSizeStillCounts) {
  OCITable* t = NewTable("NUM_NT", {10, 20, 30, 40, 50});
  Delete(t, 1);
  Delete(t, 3);
  EXPECT_EQ(5, CollSize(t));
  EXPECT_EQ(3, TableSize(t));
  EXPECT_TRUE(Exists(t, 0));
  EXPECT_FALSE(Exists(t, 1));
  EXPECT_TRUE(Exists(t, 2));
  EXPECT_FALSE(Exists(t, 3));
  EXPECT_TRUE(Exists(t, 4));
  EXPECT_FALSE(Exists(t, 5));
  EXPECT_FALSE(Exists(t, -1));
  // The others keep their positions.
  EXPECT_EQ(10, At(t, 0));
  EXPECT_EQ(-1, At(t, 1));
  EXPECT_EQ(30, At(t, 2));
  EXPECT_EQ(-1, At(t, 3));
  EXPECT_EQ(50, At(t, 4));
}

TEST_F(NestedTableTest, GetElemOnAHoleLeavesTheOutputsAlone) {
  // decision NT10
  OCITable* t = NewTable("NUM_NT", {10, 20});
  Delete(t, 0);
  boolean exists = TRUE;
  int marker = 0;
  void* elem = &marker;
  void* ind = &marker;
  ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, t, 0, &exists, &elem, &ind));
  EXPECT_EQ(FALSE, exists);
  EXPECT_EQ(&marker, elem);
  EXPECT_EQ(&marker, ind);
}

TEST_F(NestedTableTest, FirstLastNextPrevSkipHoles) {
  OCITable* t = NewTable("NUM_NT", {10, 20, 30, 40, 50});
  Delete(t, 0);
  Delete(t, 1);
  Delete(t, 4);
  sb4 index = -1;
  ASSERT_EQ(OCI_SUCCESS, OCITableFirst(env_, err_, t, &index));
  EXPECT_EQ(2, index);  // the first five deleted: the first is the sixth, here the third
  ASSERT_EQ(OCI_SUCCESS, OCITableLast(env_, err_, t, &index));
  EXPECT_EQ(3, index);

  struct Step {
    sb4 from;
    bool next_exists;
    sb4 next;
    bool prev_exists;
    sb4 prev;
  };
  // decision NT9: OCITableNext/Prev start anywhere (a hole, before the first, past the end) and
  // leave the index untouched when nothing follows (shown as 99).
  const Step steps[] = {
      {-5, true, 2, false, 99}, {-1, true, 2, false, 99}, {0, true, 2, false, 99},
      {1, true, 2, false, 99},  {2, true, 3, false, 99},  {3, false, 99, true, 2},
      {4, false, 99, true, 3},  {5, false, 99, true, 3},  {100, false, 99, true, 3},
  };
  for (const Step& s : steps) {
    sb4 next = 99;
    boolean exists = 7;
    ASSERT_EQ(OCI_SUCCESS, OCITableNext(env_, err_, s.from, t, &next, &exists)) << s.from;
    EXPECT_EQ(s.next_exists ? TRUE : FALSE, exists) << s.from;
    EXPECT_EQ(s.next, next) << s.from;
    sb4 prev = 99;
    exists = 7;
    ASSERT_EQ(OCI_SUCCESS, OCITablePrev(env_, err_, s.from, t, &prev, &exists)) << s.from;
    EXPECT_EQ(s.prev_exists ? TRUE : FALSE, exists) << s.from;
    EXPECT_EQ(s.prev, prev) << s.from;
  }
}

TEST_F(NestedTableTest, WalkWithFirstAndNextVisitsEveryExistingElement) {
  OCITable* t = NewTable("NUM_NT", {1, 2, 3, 4, 5, 6, 7});
  for (sb4 i : {0, 2, 3, 6}) Delete(t, i);
  std::vector<int> seen;
  sb4 index = -1;
  ASSERT_EQ(OCI_SUCCESS, OCITableFirst(env_, err_, t, &index));
  for (boolean exists = TRUE; exists;) {
    seen.push_back(At(t, index));
    ASSERT_EQ(OCI_SUCCESS, OCITableNext(env_, err_, index, t, &index, &exists));
  }
  EXPECT_EQ((std::vector<int>{2, 5, 6}), seen);
}

TEST_F(NestedTableTest, FirstAndLastOfATableWithoutElementsFail) {
  // decision NT2: ORA-22166 for a table with no element, also when every element was deleted.
  OCITable* empty = NewTable("NUM_NT", {});
  OCITable* gone = NewTable("NUM_NT", {1, 2});
  Delete(gone, 0);
  Delete(gone, 1);
  EXPECT_EQ(0, TableSize(gone));
  EXPECT_EQ(2, CollSize(gone));
  for (OCITable* t : {empty, gone}) {
    sb4 index = 99;
    EXPECT_EQ(OCI_ERROR, OCITableFirst(env_, err_, t, &index));
    EXPECT_EQ("ORA-22166: collection is empty", FirstError(err_));
    EXPECT_EQ(OCI_ERROR, OCITableLast(env_, err_, t, &index));
    EXPECT_EQ("ORA-22166: collection is empty", FirstError(err_));
    EXPECT_EQ(99, index);
    sb4 next = 99;
    boolean exists = TRUE;
    ASSERT_EQ(OCI_SUCCESS, OCITableNext(env_, err_, -1, t, &next, &exists));
    EXPECT_EQ(FALSE, exists);
    EXPECT_EQ(99, next);
  }
}

TEST_F(NestedTableTest, DeleteErrors) {
  OCITable* t = NewTable("NUM_NT", {10, 20, 30});
  Delete(t, 1);
  EXPECT_EQ(OCI_ERROR, OCITableDelete(env_, err_, 1, t));
  EXPECT_EQ("ORA-22162: element at index [1] has been previously deleted", FirstError(err_));
  // decision NT1: an index outside the table is ORA-22165, as for OCICollAssignElem.
  EXPECT_EQ(OCI_ERROR, OCITableDelete(env_, err_, 3, t));
  EXPECT_EQ("ORA-22165: given index [3] must be in the range of [0] to [2]", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCITableDelete(env_, err_, -1, t));
  EXPECT_EQ("ORA-22165: given index [-1] must be in the range of [0] to [2]", FirstError(err_));
  OCITable* empty = NewTable("NUM_NT", {});
  EXPECT_EQ(OCI_ERROR, OCITableDelete(env_, err_, 0, empty));
  EXPECT_EQ("ORA-22165: given index [0] must be in the range of [0] to [-1]", FirstError(err_));
  // Failed deletes change nothing.
  EXPECT_EQ(3, CollSize(t));
  EXPECT_EQ(2, TableSize(t));
}

TEST_F(NestedTableTest, VarrayRefusesDeleteAndHasNoHoles) {
  OCITable* va = NewTable("NUM_VA", {7, 8});
  EXPECT_EQ(OCI_ERROR, OCITableDelete(env_, err_, 0, va));
  EXPECT_EQ("ORA-22164: delete element operation is not allowed for variable-length array",
            FirstError(err_));
  // decision NT8: the other table calls take a VARRAY as a table without holes.
  EXPECT_EQ(2, TableSize(va));
  EXPECT_TRUE(Exists(va, 1));
  EXPECT_FALSE(Exists(va, 2));
  sb4 index = -1;
  ASSERT_EQ(OCI_SUCCESS, OCITableFirst(env_, err_, va, &index));
  EXPECT_EQ(0, index);
  ASSERT_EQ(OCI_SUCCESS, OCITableLast(env_, err_, va, &index));
  EXPECT_EQ(1, index);
  EXPECT_EQ((std::vector<int>{7, 8}), Iterate(va));
}

TEST_F(NestedTableTest, AssignElemInsertsADeletedElementAgain) {
  OCITable* t = NewTable("NUM_NT", {10, 20, 30});
  Delete(t, 1);
  int v = 99;
  OCINumber n;
  ASSERT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &v, sizeof v, OCI_NUMBER_SIGNED, &n));
  ASSERT_EQ(OCI_SUCCESS, OCICollAssignElem(env_, err_, 1, &n, nullptr, t)) << FirstError(err_);
  EXPECT_TRUE(Exists(t, 1));
  EXPECT_EQ(99, At(t, 1));
  EXPECT_EQ(3, TableSize(t));
  // It can be deleted again.
  Delete(t, 1);
  EXPECT_EQ(2, TableSize(t));
}

TEST_F(NestedTableTest, AppendGoesAfterTheHolesAndTrimTakesThemToo) {
  OCITable* t = NewTable("NUM_NT", {10, 20, 30, 40, 50});
  Delete(t, 3);
  Delete(t, 4);
  Append(t, 60);  // decision NT4: an append goes after the last position, holes stay
  EXPECT_EQ(6, CollSize(t));
  EXPECT_EQ(4, TableSize(t));
  EXPECT_EQ(60, At(t, 5));
  EXPECT_FALSE(Exists(t, 4));
  // decision NT5: OCICollTrim counts positions, holes included (OCICollSize).
  ASSERT_EQ(OCI_SUCCESS, OCICollTrim(env_, err_, 3, t));
  EXPECT_EQ(3, CollSize(t));
  EXPECT_EQ(3, TableSize(t));
  EXPECT_EQ(OCI_ERROR, OCICollTrim(env_, err_, 4, t));
  EXPECT_EQ("ORA-22167: given trim size [4] must be less than or equal to [3]", FirstError(err_));
  Delete(t, 2);
  ASSERT_EQ(OCI_SUCCESS, OCICollTrim(env_, err_, 1, t));  // trims the hole itself
  EXPECT_EQ(2, CollSize(t));
  EXPECT_EQ(2, TableSize(t));
  // The trimmed position is a new element when appended again.
  Append(t, 70);
  EXPECT_TRUE(Exists(t, 2));
  EXPECT_EQ(70, At(t, 2));
  EXPECT_EQ(3, TableSize(t));
}

TEST_F(NestedTableTest, IteratorsSkipHoles) {
  // decision NT3: OCIIterNext skips deleted elements; eoc when only holes are left.
  OCITable* t = NewTable("NUM_NT", {10, 20, 30, 40, 50});
  Delete(t, 0);
  Delete(t, 2);
  Delete(t, 4);
  EXPECT_EQ((std::vector<int>{20, 40}), Iterate(t));
  Delete(t, 1);
  Delete(t, 3);
  EXPECT_EQ(std::vector<int>{}, Iterate(t));
}

TEST_F(NestedTableTest, ObjectCopyKeepsTheHoles) {
  // decision NT6: a copy made on the client (OCIObjectCopy, OCIObjectSetAttr, OCICollAssignElem
  // of a collection) keeps the holes where they are.
  OCIType* bag_tdo = TypeByName("BAG_T");
  void* a = nullptr;
  void* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, bag_tdo, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &a));
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, bag_tdo, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &b));
  void* a_ind = nullptr;
  void* b_ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, a, &a_ind));
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, b, &b_ind));
  auto* src = static_cast<bag_t*>(a);
  for (int v : {1, 2, 3}) Append(src->nums, v);
  Delete(src->nums, 1);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectCopy(env_, err_, svc_, a, a_ind, b, b_ind, bag_tdo,
                                       OCI_DURATION_DEFAULT, OCI_DEFAULT))
      << FirstError(err_);
  const OCITable* copy = static_cast<bag_t*>(b)->nums;
  EXPECT_NE(src->nums, copy);
  EXPECT_EQ(3, CollSize(copy));
  EXPECT_EQ(2, TableSize(copy));
  EXPECT_EQ(1, At(copy, 0));
  EXPECT_FALSE(Exists(copy, 1));
  EXPECT_EQ(3, At(copy, 2));
}

TEST_F(NestedTableTest, StoringATableDropsItsHoles) {
  // decision NT7: Oracle stores a nested table without its deleted elements; fetched back, the elements
  // have consecutive indexes from 0 and no holes.
  MustExec("create table bags (id number, nums num_nt) nested table nums store as bag_nums");
  OCIType* nt_tdo = TypeByName("NUM_NT");
  OCITable* t = NewTable("NUM_NT", {10, 20, 30, 40, 50});
  Delete(t, 0);
  Delete(t, 3);
  OCIStmt* ins = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env_, reinterpret_cast<void**>(&ins), OCI_HTYPE_STMT, 0, nullptr));
  const char* insert = "insert into bags values (1, :1)";
  ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(ins, err_, Text(insert), Len(insert), OCI_NTV_SYNTAX,
                                        OCI_DEFAULT));
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &bind, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  void* bound = t;
  ASSERT_EQ(OCI_SUCCESS, OCIBindObject(bind, err_, nt_tdo, &bound, nullptr, nullptr, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, ins, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT))
      << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(ins, OCI_HTYPE_STMT));
  // The bound table keeps its holes.
  EXPECT_EQ(5, CollSize(t));
  EXPECT_EQ(3, TableSize(t));

  OCIStmt* sel = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env_, reinterpret_cast<void**>(&sel), OCI_HTYPE_STMT, 0, nullptr));
  const char* query = "select nums from bags";
  ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(sel, err_, Text(query), Len(query), OCI_NTV_SYNTAX,
                                        OCI_DEFAULT));
  OCIDefine* def = nullptr;
  void* got = nullptr;
  void* got_ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &def, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineObject(def, err_, nt_tdo, &got, nullptr, &got_ind, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, sel, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT))
      << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(sel, OCI_HTYPE_STMT));
  auto* fetched = static_cast<OCITable*>(got);
  EXPECT_EQ(3, CollSize(fetched));
  EXPECT_EQ(3, TableSize(fetched));
  EXPECT_EQ(20, At(fetched, 0));
  EXPECT_EQ(30, At(fetched, 1));
  EXPECT_EQ(50, At(fetched, 2));
  sb4 last = -1;
  ASSERT_EQ(OCI_SUCCESS, OCITableLast(env_, err_, fetched, &last));
  EXPECT_EQ(2, last);
}

TEST_F(NestedTableTest, NullAndBadArguments) {
  OCITable* t = NewTable("NUM_NT", {1});
  sb4 index = 0;
  boolean exists = FALSE;
  struct Case {
    sword rc;
    const char* text;
  };
  const Case cases[] = {
      {OCITableSize(env_, err_, nullptr, &index), "argument 3"},
      {OCITableSize(env_, err_, t, nullptr), "argument 4"},
      {OCITableExists(env_, err_, nullptr, 0, &exists), "argument 3"},
      {OCITableExists(env_, err_, t, 0, nullptr), "argument 5"},
      {OCITableDelete(env_, err_, 0, nullptr), "argument 4"},
      {OCITableFirst(env_, err_, nullptr, &index), "argument 3"},
      {OCITableFirst(env_, err_, t, nullptr), "argument 4"},
      {OCITableLast(env_, err_, nullptr, &index), "argument 3"},
      {OCITableLast(env_, err_, t, nullptr), "argument 4"},
      {OCITableNext(env_, err_, 0, nullptr, &index, &exists), "argument 4"},
      {OCITableNext(env_, err_, 0, t, nullptr, &exists), "argument 5"},
      {OCITableNext(env_, err_, 0, t, &index, nullptr), "argument 6"},
      {OCITablePrev(env_, err_, 0, nullptr, &index, &exists), "argument 4"},
      {OCITablePrev(env_, err_, 0, t, nullptr, &exists), "argument 5"},
      {OCITablePrev(env_, err_, 0, t, &index, nullptr), "argument 6"},
  };
  // Each call above recorded its error before the next one cleared it: check the codes.
  for (const Case& c : cases) EXPECT_EQ(OCI_ERROR, c.rc) << c.text;
  EXPECT_EQ(OCI_ERROR, OCITablePrev(env_, err_, 0, t, &index, nullptr));
  EXPECT_EQ("ORA-21560: argument 6 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCITableDelete(env_, err_, 0, nullptr));
  EXPECT_EQ("ORA-21560: argument 4 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCITableDelete(env_, nullptr, 0, t));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCITableFirst(nullptr, err_, t, &index));
  EXPECT_EQ(1, TableSize(t));
}

TEST_F(NestedTableTest, CallsNeedAnObjectModeEnvironment) {
  OCIEnv* plain = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIEnvCreate(&plain, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
  OCITable* t = NewTable("NUM_NT", {1});
  EXPECT_EQ(OCI_ERROR, OCITableDelete(plain, err_, 0, t));
  EXPECT_EQ(21301, FirstCode(err_));
  EXPECT_EQ(1, TableSize(t));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(plain, OCI_HTYPE_ENV));
}

TEST_F(NestedTableTest, InjectedFaultsChangeNothing) {
  OCITable* t = NewTable("NUM_NT", {1, 2});
  const sb4 codes[] = {22162};
  const char* const texts[] = {"element at index [0] has been previously deleted"};
  ocimemFaultArm("OCITableDelete", 1, OCI_ERROR, codes, texts, 1);
  EXPECT_EQ(OCI_ERROR, OCITableDelete(env_, err_, 0, t));
  EXPECT_EQ("ORA-22162: element at index [0] has been previously deleted", FirstError(err_));
  EXPECT_TRUE(Exists(t, 0));
  EXPECT_EQ(2, TableSize(t));
  ocimemFaultArm("OCITableNext", 1, OCI_INVALID_HANDLE, nullptr, nullptr, 0);
  sb4 next = 99;
  boolean exists = 7;
  EXPECT_EQ(OCI_INVALID_HANDLE, OCITableNext(env_, err_, 0, t, &next, &exists));
  EXPECT_EQ(99, next);
  EXPECT_EQ(7, exists);
  Delete(t, 0);  // the faults fired once and are gone
  EXPECT_EQ(1, TableSize(t));
}

}  // namespace
}  // namespace ocimem_test
