// Collections and iterators: nested tables and VARRAYs of scalars, objects and collections.
#include <gtest/gtest.h>

#include <vector>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

struct item_t {
  OCINumber qty;
  OCIString* name;
};
struct item_t_ind {
  OCIInd _atomic, qty, name;
};

class CollTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create type num_nt as table of number");
    MustExec("create type str_va as varray(3) of varchar2(10)");
    MustExec("create type item_t as object (qty number, name varchar2(20))");
    MustExec("create type item_nt as table of item_t");
    MustExec("create type grid_nt as table of num_nt");
    MustExec("create type date_va as varray(2) of date");
  }
  OCIColl* NewColl(const char* type) {
    void* coll = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_NAMEDCOLLECTION,
                                        TypeByName(type), nullptr, OCI_DURATION_DEFAULT, TRUE,
                                        &coll));
    return static_cast<OCIColl*>(coll);
  }
  void Free(void* instance) { EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, instance, 0)); }
  OCINumber Number(int v) {
    OCINumber n;
    EXPECT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &v, sizeof v, OCI_NUMBER_SIGNED, &n));
    return n;
  }
  int Int(const void* n) {
    int v = 0;
    EXPECT_EQ(OCI_SUCCESS, OCINumberToInt(err_, static_cast<const OCINumber*>(n), sizeof v,
                                          OCI_NUMBER_SIGNED, &v));
    return v;
  }
  sb4 Size(OCIColl* c) {
    sb4 size = -1;
    EXPECT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, c, &size));
    return size;
  }
  void AppendInt(OCIColl* c, int v, OCIInd ind = OCI_IND_NOTNULL) {
    OCINumber n = Number(v);
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &n, &ind, c)) << FirstError(err_);
  }
  std::string Str(const OCIString* s) {
    return std::string(reinterpret_cast<char*>(OCIStringPtr(env_, s)), OCIStringSize(env_, s));
  }
};

TEST_F(CollTest, AppendGetElemAndSize) {
  OCIColl* c = NewColl("NUM_NT");
  AppendInt(c, 10);
  AppendInt(c, 20, OCI_IND_NULL);
  OCINumber thirty = Number(30);
  ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &thirty, nullptr, c));  // no indicator: not null
  EXPECT_EQ(3, Size(c));
  EXPECT_EQ(0, OCICollMax(env_, c));
  sb4 table_size = 0;
  EXPECT_EQ(OCI_SUCCESS, OCITableSize(env_, err_, c, &table_size));
  EXPECT_EQ(3, table_size);
  const int values[] = {10, 20, 30};
  const OCIInd inds[] = {OCI_IND_NOTNULL, OCI_IND_NULL, OCI_IND_NOTNULL};
  for (sb4 i = 0; i < 3; ++i) {
    boolean exists = FALSE;
    void* elem = nullptr;
    void* elemind = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, c, i, &exists, &elem, &elemind));
    EXPECT_EQ(TRUE, exists);
    EXPECT_EQ(values[i], Int(elem));
    EXPECT_EQ(inds[i], *static_cast<OCIInd*>(elemind));
  }
  // Past the end (and before the start) there is no element.
  boolean exists = TRUE;
  void* elem = nullptr;
  EXPECT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, c, 3, &exists, &elem, nullptr));
  EXPECT_EQ(FALSE, exists);
  exists = TRUE;
  EXPECT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, c, -1, &exists, &elem, nullptr));
  EXPECT_EQ(FALSE, exists);
  // The element handed out is in the collection: writing through it changes the element.
  ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, c, 0, &exists, &elem, nullptr));
  *static_cast<OCINumber*>(elem) = Number(11);
  void* again = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, c, 0, &exists, &again, nullptr));
  EXPECT_EQ(11, Int(again));
  Free(c);
}

TEST_F(CollTest, AppendCopiesTheElement) {
  OCIColl* c = NewColl("STR_VA");
  OCIString* s = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("abc"), 3, &s));
  ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, s, nullptr, c));
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("changed"), 7, &s));
  boolean exists = FALSE;
  void* elem = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, c, 0, &exists, &elem, nullptr));
  // A string element comes out as the address of its slot.
  EXPECT_EQ("abc", Str(*static_cast<OCIString**>(elem)));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &s));
  Free(c);
}

// UNCONFIRMED: the error for a full VARRAY is ORA-22165 with the range 0 to limit-1.
TEST_F(CollTest, VarrayBoundIsEnforced) {
  OCIColl* c = NewColl("STR_VA");
  EXPECT_EQ(3, OCICollMax(env_, c));
  OCIString* s = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("x"), 1, &s));
  for (int i = 0; i < 3; ++i) ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, s, nullptr, c));
  EXPECT_EQ(OCI_ERROR, OCICollAppend(env_, err_, s, nullptr, c));
  EXPECT_EQ("ORA-22165: given index [3] must be in the range of [0] to [2]", FirstError(err_));
  EXPECT_EQ(3, Size(c));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &s));
  Free(c);
}

TEST_F(CollTest, TrimRemovesFromTheEnd) {
  OCIColl* c = NewColl("NUM_NT");
  for (int i = 0; i < 4; ++i) AppendInt(c, i);
  EXPECT_EQ(OCI_SUCCESS, OCICollTrim(env_, err_, 0, c));
  EXPECT_EQ(4, Size(c));
  EXPECT_EQ(OCI_SUCCESS, OCICollTrim(env_, err_, 3, c));
  EXPECT_EQ(1, Size(c));
  EXPECT_EQ(OCI_ERROR, OCICollTrim(env_, err_, 2, c));
  EXPECT_EQ("ORA-22167: given trim size [2] must be less than or equal to [1]", FirstError(err_));
  // UNCONFIRMED: a negative trim size gives the same error.
  EXPECT_EQ(OCI_ERROR, OCICollTrim(env_, err_, -1, c));
  EXPECT_EQ(22167, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCICollTrim(env_, err_, 1, c));
  EXPECT_EQ(0, Size(c));
  // Emptying an empty collection trims 0 elements.
  EXPECT_EQ(OCI_SUCCESS, OCICollTrim(env_, err_, Size(c), c));
  Free(c);
}

TEST_F(CollTest, AssignElem) {
  OCIColl* c = NewColl("DATE_VA");
  OCIDate d;
  OCIDateSetDate(&d, 2020, 1, 2);
  OCIDateSetTime(&d, 0, 0, 0);
  ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &d, nullptr, c));
  OCIDateSetDate(&d, 2021, 3, 4);
  OCIInd null_ind = OCI_IND_NULL;
  ASSERT_EQ(OCI_SUCCESS, OCICollAssignElem(env_, err_, 0, &d, &null_ind, c));
  boolean exists = FALSE;
  void* elem = nullptr;
  void* elemind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, c, 0, &exists, &elem, &elemind));
  EXPECT_EQ(2021, static_cast<OCIDate*>(elem)->OCIDateYYYY);
  EXPECT_EQ(OCI_IND_NULL, *static_cast<OCIInd*>(elemind));
  // UNCONFIRMED: ORA-22165 for an index outside the collection.
  EXPECT_EQ(OCI_ERROR, OCICollAssignElem(env_, err_, 1, &d, nullptr, c));
  EXPECT_EQ("ORA-22165: given index [1] must be in the range of [0] to [0]", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCICollAssignElem(env_, err_, -1, &d, nullptr, c));
  EXPECT_EQ(22165, FirstCode(err_));
  Free(c);
}

TEST_F(CollTest, CollectionOfObjects) {
  OCIColl* c = NewColl("ITEM_NT");
  OCIType* item_tdo = TypeByName("ITEM_T");
  for (int i = 1; i <= 3; ++i) {
    void* item = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, item_tdo, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &item));
    auto* it = static_cast<item_t*>(item);
    item_t_ind* ind = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, item, reinterpret_cast<void**>(&ind)));
    it->qty = Number(i);
    std::string name = "item" + std::to_string(i);
    ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text(name.c_str()), Len(name.c_str()),
                                               &it->name));
    *ind = {OCI_IND_NOTNULL, OCI_IND_NOTNULL, i == 2 ? OCI_IND_NULL : OCI_IND_NOTNULL};
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, item, ind, c));
    Free(item);  // the collection holds a copy
  }
  OCIIter* iter = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIIterCreate(env_, err_, c, &iter));
  int seen = 0;
  boolean eoc = FALSE;
  void* elem = nullptr;
  void* elemind = nullptr;
  while (OCIIterNext(env_, err_, iter, &elem, &elemind, &eoc) == OCI_SUCCESS && !eoc) {
    ++seen;
    auto* it = static_cast<item_t*>(elem);
    auto* ind = static_cast<item_t_ind*>(elemind);
    EXPECT_EQ(seen, Int(&it->qty));
    EXPECT_EQ("item" + std::to_string(seen), Str(it->name));
    EXPECT_EQ(OCI_IND_NOTNULL, ind->_atomic);
    EXPECT_EQ(seen == 2 ? OCI_IND_NULL : OCI_IND_NOTNULL, ind->name);
  }
  EXPECT_EQ(3, seen);
  EXPECT_EQ(OCI_SUCCESS, OCIIterDelete(env_, err_, &iter));
  EXPECT_EQ(nullptr, iter);
  Free(c);
}

TEST_F(CollTest, ObjectOfAnotherTypeIsRefused) {
  MustExec("create type other_t as object (qty number, name varchar2(20))");
  OCIColl* c = NewColl("ITEM_NT");
  void* other = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT,
                                      TypeByName("OTHER_T"), nullptr, OCI_DURATION_DEFAULT, TRUE,
                                      &other));
  EXPECT_EQ(OCI_ERROR, OCICollAppend(env_, err_, other, nullptr, c));
  EXPECT_EQ("ORA-21560: argument 3 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(0, Size(c));
  // A value of another kind altogether.
  OCINumber n = Number(1);
  OCIColl* nums = NewColl("NUM_NT");
  EXPECT_EQ(OCI_ERROR, OCICollAppend(env_, err_, nums, nullptr, c));
  EXPECT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &n, nullptr, nums));
  Free(nums);
  Free(other);
  Free(c);
}

TEST_F(CollTest, NestedCollections) {
  OCIColl* grid = NewColl("GRID_NT");
  OCIColl* row = NewColl("NUM_NT");
  AppendInt(row, 1);
  AppendInt(row, 2);
  ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, row, nullptr, grid));
  AppendInt(row, 3);
  ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, row, nullptr, grid));
  EXPECT_EQ(2, Size(grid));
  boolean exists = FALSE;
  void* elem = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, grid, 1, &exists, &elem, nullptr));
  OCIColl* inner = *static_cast<OCIColl**>(elem);  // a collection element is its slot
  EXPECT_EQ(3, Size(inner));
  ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, grid, 0, &exists, &elem, nullptr));
  EXPECT_EQ(2, Size(*static_cast<OCIColl**>(elem)));
  // A collection of another element type is refused.
  OCIColl* strings = NewColl("STR_VA");
  EXPECT_EQ(OCI_ERROR, OCICollAppend(env_, err_, strings, nullptr, grid));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(2, Size(grid));
  Free(strings);
  Free(row);
  Free(grid);
}

TEST_F(CollTest, IteratorWalksAndStopsAtTheEnd) {
  OCIColl* c = NewColl("NUM_NT");
  OCIIter* iter = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIIterCreate(env_, err_, c, &iter));
  boolean eoc = FALSE;
  void* elem = reinterpret_cast<void*>(0x5);
  void* elemind = reinterpret_cast<void*>(0x6);
  // An empty collection ends at once, with OCI_SUCCESS.
  EXPECT_EQ(OCI_SUCCESS, OCIIterNext(env_, err_, iter, &elem, &elemind, &eoc));
  EXPECT_EQ(TRUE, eoc);
  EXPECT_EQ(reinterpret_cast<void*>(0x5), elem);
  EXPECT_EQ(reinterpret_cast<void*>(0x6), elemind);
  AppendInt(c, 1);
  AppendInt(c, 2);
  ASSERT_EQ(OCI_SUCCESS, OCIIterInit(env_, err_, c, iter));
  std::vector<int> got;
  while (OCIIterNext(env_, err_, iter, &elem, &elemind, &eoc) == OCI_SUCCESS && !eoc) {
    got.push_back(Int(elem));
  }
  EXPECT_EQ((std::vector<int>{1, 2}), got);
  // Past the end it keeps answering the end.
  EXPECT_EQ(OCI_SUCCESS, OCIIterNext(env_, err_, iter, &elem, &elemind, &eoc));
  EXPECT_EQ(TRUE, eoc);
  // Rewound onto another collection.
  OCIColl* other = NewColl("NUM_NT");
  AppendInt(other, 7);
  ASSERT_EQ(OCI_SUCCESS, OCIIterInit(env_, err_, other, iter));
  ASSERT_EQ(OCI_SUCCESS, OCIIterNext(env_, err_, iter, &elem, nullptr, &eoc));
  EXPECT_EQ(FALSE, eoc);
  EXPECT_EQ(7, Int(elem));
  Free(c);  // the iterator now belongs to `other`
  ASSERT_EQ(OCI_SUCCESS, OCIIterNext(env_, err_, iter, &elem, nullptr, &eoc));
  EXPECT_EQ(TRUE, eoc);
  Free(other);
}

// An iterator its creator never deletes is released with its collection, so a host that
// makes one per call does not grow (checked by LeakSanitizer).
TEST_F(CollTest, UndeletedIteratorsGoWithTheirCollection) {
  for (int round = 0; round < 100; ++round) {
    OCIColl* c = NewColl("NUM_NT");
    AppendInt(c, round);
    OCIIter* iter = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIIterCreate(env_, err_, c, &iter));
    Free(c);
  }
}

TEST_F(CollTest, NullArguments) {
  OCIColl* c = NewColl("NUM_NT");
  sb4 size = 0;
  OCINumber n = Number(1);
  EXPECT_EQ(OCI_ERROR, OCICollSize(env_, err_, nullptr, &size));
  EXPECT_EQ("ORA-21560: argument 3 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCICollSize(env_, err_, c, nullptr));
  EXPECT_EQ(OCI_ERROR, OCITableSize(env_, err_, nullptr, &size));
  EXPECT_EQ(OCI_ERROR, OCICollTrim(env_, err_, 0, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  // decision D8: a NULL element is refused; a null element is a value with indicator -1.
  EXPECT_EQ(OCI_ERROR, OCICollAppend(env_, err_, nullptr, nullptr, c));
  EXPECT_EQ("ORA-21560: argument 3 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCICollAppend(env_, err_, &n, nullptr, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCICollAssignElem(env_, err_, 0, nullptr, nullptr, c));
  EXPECT_EQ(21560, FirstCode(err_));
  boolean exists = FALSE;
  void* elem = nullptr;
  EXPECT_EQ(OCI_ERROR, OCICollGetElem(env_, err_, nullptr, 0, &exists, &elem, nullptr));
  EXPECT_EQ(OCI_ERROR, OCICollGetElem(env_, err_, c, 0, nullptr, &elem, nullptr));
  EXPECT_EQ(OCI_ERROR, OCICollGetElem(env_, err_, c, 0, &exists, nullptr, nullptr));
  EXPECT_EQ(0, OCICollMax(env_, nullptr));
  OCIIter* iter = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIIterCreate(env_, err_, nullptr, &iter));
  EXPECT_EQ(OCI_ERROR, OCIIterCreate(env_, err_, c, nullptr));
  boolean eoc = FALSE;
  EXPECT_EQ(OCI_ERROR, OCIIterNext(env_, err_, nullptr, &elem, nullptr, &eoc));
  EXPECT_EQ(OCI_ERROR, OCIIterInit(env_, err_, c, nullptr));
  EXPECT_EQ(OCI_ERROR, OCIIterDelete(env_, err_, nullptr));
  EXPECT_EQ(OCI_ERROR, OCIIterDelete(env_, err_, &iter));
  ASSERT_EQ(OCI_SUCCESS, OCIIterCreate(env_, err_, c, &iter));
  EXPECT_EQ(OCI_ERROR, OCIIterNext(env_, err_, iter, nullptr, nullptr, &eoc));
  EXPECT_EQ(OCI_ERROR, OCIIterNext(env_, err_, iter, &elem, nullptr, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCICollSize(nullptr, err_, c, &size));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCICollSize(env_, nullptr, c, &size));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIIterNext(env_, nullptr, iter, &elem, nullptr, &eoc));
  Free(c);
}

}  // namespace
}  // namespace ocimem_test
