// OCIObjectNew, OCIObjectGetInd, OCIObjectGetAttr, OCIObjectSetAttr, OCIObjectCopy and
// OCIObjectFree on object types.
#include <gtest/gtest.h>

#include "oci_fixture.h"
#include "orid.h"

namespace ocimem_test {
namespace {

struct addr_t {
  OCIString* street;
  OCINumber zip;
};
struct addr_t_ind {
  OCIInd _atomic, street, zip;
};
struct rec_t {
  OCIString* name;
  OCINumber n;
  OCIDate d;
  OCIRaw* r;
  addr_t addr;
  OCIColl* nums;
  OCILobLocator* doc;
  OCIDateTime* ts;
  OCIInterval* iv;
  OCIRef* link;
};
struct rec_t_ind {
  OCIInd _atomic, name, n, d, r;
  addr_t_ind addr;
  OCIInd nums, doc, ts, iv, link;
};

class ObjectTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create type addr_t as object (street varchar2(30), zip number(5))");
    MustExec("create type num_tab as table of number");
    MustExec("create type rec_t as object (name varchar2(20), n number, d date, r raw(8), "
             "addr addr_t, nums num_tab, doc clob, ts timestamp, iv interval day to second, "
             "link ref addr_t)");
    rec_tdo_ = TypeByName("REC_T");
    addr_tdo_ = TypeByName("ADDR_T");
    num_tab_tdo_ = TypeByName("NUM_TAB");
  }

  rec_t* NewRec() {
    void* obj = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, rec_tdo_, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &obj))
        << FirstError(err_);
    return static_cast<rec_t*>(obj);
  }
  rec_t_ind* IndOf(void* obj) {
    void* ind = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, obj, &ind));
    return static_cast<rec_t_ind*>(ind);
  }
  struct Got {
    OCIInd status = 99;
    void* null_struct = reinterpret_cast<void*>(0x1);
    void* value = nullptr;
    OCIType* tdo = reinterpret_cast<OCIType*>(0x1);
  };
  sword Get(void* obj, void* ind, OCIType* tdo, std::initializer_list<const char*> path,
            Got* got) {
    const oratext* names[4];
    ub4 lengths[4];
    ub4 n = 0;
    for (const char* p : path) {
      names[n] = Text(p);
      lengths[n++] = Len(p);
    }
    return OCIObjectGetAttr(env_, err_, obj, ind, tdo, names, lengths, n, nullptr, 0,
                            &got->status, &got->null_struct, &got->value, &got->tdo);
  }
  sword Set(void* obj, void* ind, OCIType* tdo, const char* name, OCIInd status,
            const void* attr_ind, const void* value) {
    const oratext* names[] = {Text(name)};
    ub4 lengths[] = {Len(name)};
    return OCIObjectSetAttr(env_, err_, obj, ind, tdo, names, lengths, 1, nullptr, 0, status,
                            attr_ind, value);
  }
  OCINumber Number(int v) {
    OCINumber n;
    EXPECT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &v, sizeof v, OCI_NUMBER_SIGNED, &n));
    return n;
  }
  int Int(const OCINumber* n) {
    int v = 0;
    EXPECT_EQ(OCI_SUCCESS, OCINumberToInt(err_, n, sizeof v, OCI_NUMBER_SIGNED, &v));
    return v;
  }
  std::string Str(const OCIString* s) {
    return std::string(reinterpret_cast<char*>(OCIStringPtr(env_, s)), OCIStringSize(env_, s));
  }

  OCIType* rec_tdo_ = nullptr;
  OCIType* addr_tdo_ = nullptr;
  OCIType* num_tab_tdo_ = nullptr;
};

// decision D1: a new object is atomically null with every indicator null, and every slot
// is allocated.
TEST_F(ObjectTest, NewObjectIsNullWithAllocatedSlots) {
  rec_t* rec = NewRec();
  rec_t_ind* ind = IndOf(rec);
  const OCIInd* all = &ind->_atomic;
  for (size_t i = 0; i < sizeof(rec_t_ind) / sizeof(OCIInd); ++i) EXPECT_EQ(OCI_IND_NULL, all[i]);
  ASSERT_NE(nullptr, rec->name);
  EXPECT_EQ(0u, OCIStringSize(env_, rec->name));
  ASSERT_NE(nullptr, rec->r);
  EXPECT_EQ(0u, OCIRawSize(env_, rec->r));
  ASSERT_NE(nullptr, rec->addr.street);
  ASSERT_NE(nullptr, rec->nums);
  sb4 size = -1;
  EXPECT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, rec->nums, &size));
  EXPECT_EQ(0, size);
  EXPECT_NE(nullptr, rec->doc);
  EXPECT_NE(nullptr, rec->ts);
  EXPECT_NE(nullptr, rec->iv);
  EXPECT_NE(nullptr, rec->link);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

TEST_F(ObjectTest, NewNotNullGivesDefaults) {
  boolean on = TRUE;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(env_, OCI_HTYPE_ENV, &on, 0, OCI_ATTR_OBJECT_NEWNOTNULL,
                                    err_));
  rec_t* rec = NewRec();
  rec_t_ind* ind = IndOf(rec);
  const OCIInd* all = &ind->_atomic;
  for (size_t i = 0; i < sizeof(rec_t_ind) / sizeof(OCIInd); ++i) {
    EXPECT_EQ(OCI_IND_NOTNULL, all[i]);
  }
  EXPECT_EQ(0, Int(&rec->n));
  EXPECT_EQ(0, Int(&rec->addr.zip));
  EXPECT_EQ(-4712, rec->d.OCIDateYYYY);
  EXPECT_EQ(1, rec->d.OCIDateMM);
  EXPECT_EQ(1, rec->d.OCIDateDD);
  EXPECT_EQ(0, rec->d.OCIDateTime.OCITimeHH);
  EXPECT_EQ(0u, OCIStringSize(env_, rec->name));
  EXPECT_EQ('\0', OCIStringPtr(env_, rec->name)[0]);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
  on = FALSE;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(env_, OCI_HTYPE_ENV, &on, 0, OCI_ATTR_OBJECT_NEWNOTNULL,
                                    err_));
  rec = NewRec();
  EXPECT_EQ(OCI_IND_NULL, IndOf(rec)->_atomic);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

TEST_F(ObjectTest, GetIndGivesTheSameNullStructEachTime) {
  rec_t* rec = NewRec();
  void* a = nullptr;
  void* b = nullptr;
  EXPECT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, rec, &a));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, rec, &b));
  EXPECT_EQ(a, b);
  EXPECT_NE(static_cast<void*>(rec), a);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

TEST_F(ObjectTest, GetIndErrors) {
  rec_t* rec = NewRec();
  void* ind = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIObjectGetInd(env_, err_, nullptr, &ind));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIObjectGetInd(env_, err_, rec, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  // An embedded object is not standalone.
  EXPECT_EQ(OCI_ERROR, OCIObjectGetInd(env_, err_, &rec->addr, &ind));
  EXPECT_EQ(21710, FirstCode(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIObjectGetInd(nullptr, err_, rec, &ind));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIObjectGetInd(env_, nullptr, rec, &ind));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

// decision D3 and the value forms of each kind of attribute.
TEST_F(ObjectTest, GetAttrFormsPerKind) {
  rec_t* rec = NewRec();
  rec_t_ind* ind = IndOf(rec);
  ind->n = OCI_IND_NOTNULL;
  struct Case {
    const char* name;
    void* value;
    bool embedded;
    OCIType* tdo;
    OCIInd status;
  };
  const Case cases[] = {
      {"NAME", &rec->name, false, nullptr, OCI_IND_NULL},
      {"N", &rec->n, false, nullptr, OCI_IND_NOTNULL},
      {"D", &rec->d, false, nullptr, OCI_IND_NULL},
      {"R", &rec->r, false, nullptr, OCI_IND_NULL},
      {"ADDR", &rec->addr, true, addr_tdo_, OCI_IND_NULL},
      {"NUMS", &rec->nums, false, num_tab_tdo_, OCI_IND_NULL},
      {"DOC", &rec->doc, false, nullptr, OCI_IND_NULL},
      {"TS", &rec->ts, false, nullptr, OCI_IND_NULL},
      {"IV", &rec->iv, false, nullptr, OCI_IND_NULL},
      {"LINK", &rec->link, false, nullptr, OCI_IND_NULL},
  };
  for (const Case& c : cases) {
    Got got;
    ASSERT_EQ(OCI_SUCCESS, Get(rec, ind, rec_tdo_, {c.name}, &got)) << c.name;
    EXPECT_EQ(c.value, got.value) << c.name;
    EXPECT_EQ(c.embedded ? static_cast<void*>(&ind->addr) : nullptr, got.null_struct) << c.name;
    EXPECT_EQ(c.tdo, got.tdo) << c.name;
    EXPECT_EQ(c.status, got.status) << c.name;
  }
  // The embedded object's TDO works for the next level.
  Got addr;
  ASSERT_EQ(OCI_SUCCESS, Get(rec, ind, rec_tdo_, {"ADDR"}, &addr));
  Got street;
  ASSERT_EQ(OCI_SUCCESS, Get(addr.value, addr.null_struct, addr.tdo, {"STREET"}, &street));
  EXPECT_EQ(&rec->addr.street, street.value);
  Got path;
  ASSERT_EQ(OCI_SUCCESS, Get(rec, ind, rec_tdo_, {"ADDR", "ZIP"}, &path));
  EXPECT_EQ(&rec->addr.zip, path.value);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

// decision D3: a NULL null struct means the standalone instance's own.
TEST_F(ObjectTest, GetAttrWithoutNullStruct) {
  rec_t* rec = NewRec();
  IndOf(rec)->n = OCI_IND_NOTNULL;
  Got got;
  ASSERT_EQ(OCI_SUCCESS, Get(rec, nullptr, rec_tdo_, {"N"}, &got));
  EXPECT_EQ(OCI_IND_NOTNULL, got.status);
  EXPECT_EQ(OCI_ERROR, Get(&rec->addr, nullptr, addr_tdo_, {"ZIP"}, &got));
  EXPECT_EQ("ORA-21560: argument 4 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

// UNCONFIRMED: ORA-21560 for unknown names and other bad arguments.
TEST_F(ObjectTest, GetAttrErrors) {
  rec_t* rec = NewRec();
  void* ind = IndOf(rec);
  Got got;
  EXPECT_EQ(OCI_ERROR, Get(rec, ind, rec_tdo_, {"NOPE"}, &got));
  EXPECT_EQ("ORA-21560: argument 6 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, Get(rec, ind, rec_tdo_, {"name"}, &got));  // names are as stored
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, Get(rec, ind, rec_tdo_, {"N", "X"}, &got));  // through a scalar
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, Get(nullptr, ind, rec_tdo_, {"N"}, &got));
  EXPECT_EQ("ORA-21560: argument 3 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, Get(rec, ind, nullptr, {"N"}, &got));
  EXPECT_EQ("ORA-21560: argument 5 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, Get(rec, ind, num_tab_tdo_, {"N"}, &got));  // not an object type
  EXPECT_EQ(21560, FirstCode(err_));
  const oratext* names[] = {Text("N")};
  ub4 lengths[] = {1};
  ub4 index = 0;
  EXPECT_EQ(OCI_ERROR, OCIObjectGetAttr(env_, err_, rec, ind, rec_tdo_, names, lengths, 0,
                                        nullptr, 0, &got.status, nullptr, &got.value, nullptr));
  EXPECT_EQ(OCI_ERROR, OCIObjectGetAttr(env_, err_, rec, ind, rec_tdo_, names, nullptr, 1,
                                        nullptr, 0, &got.status, nullptr, &got.value, nullptr));
  EXPECT_EQ("ORA-21560: argument 7 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCIObjectGetAttr(env_, err_, rec, ind, rec_tdo_, names, lengths, 1,
                                        &index, 1, &got.status, nullptr, &got.value, nullptr));
  EXPECT_EQ("ORA-21560: argument 10 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIObjectGetAttr(nullptr, err_, rec, ind, rec_tdo_, names,
                                                 lengths, 1, nullptr, 0, &got.status, nullptr,
                                                 &got.value, nullptr));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

TEST_F(ObjectTest, SetAttrCopiesScalarValues) {
  rec_t* rec = NewRec();
  rec_t_ind* ind = IndOf(rec);
  OCINumber seven = Number(7);
  ASSERT_EQ(OCI_SUCCESS, Set(rec, ind, rec_tdo_, "N", OCI_IND_NOTNULL, nullptr, &seven));
  EXPECT_EQ(7, Int(&rec->n));
  EXPECT_EQ(OCI_IND_NOTNULL, ind->n);
  OCIString* text = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("hello"), 5, &text));
  ASSERT_EQ(OCI_SUCCESS, Set(rec, ind, rec_tdo_, "NAME", OCI_IND_NOTNULL, nullptr, text));
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("bye"), 3, &text));
  EXPECT_EQ("hello", Str(rec->name));  // a deep copy
  OCIDate date;
  OCIDateSetDate(&date, 2001, 2, 3);
  OCIDateSetTime(&date, 4, 5, 6);
  ASSERT_EQ(OCI_SUCCESS, Set(rec, ind, rec_tdo_, "D", OCI_IND_NOTNULL, nullptr, &date));
  EXPECT_EQ(0, std::memcmp(&date, &rec->d, sizeof date));
  OCIRaw* raw = nullptr;
  const ub1 bytes[] = {9, 8, 7};
  ASSERT_EQ(OCI_SUCCESS, OCIRawAssignBytes(env_, err_, bytes, 3, &raw));
  ASSERT_EQ(OCI_SUCCESS, Set(rec, ind, rec_tdo_, "R", OCI_IND_NOTNULL, nullptr, raw));
  EXPECT_EQ(3u, OCIRawSize(env_, rec->r));
  EXPECT_EQ(0, std::memcmp(bytes, OCIRawPtr(env_, rec->r), 3));
  // The parent's own atomic indicator is left alone (decision D4).
  EXPECT_EQ(OCI_IND_NULL, ind->_atomic);
  // A NULL value changes only the null information.
  ASSERT_EQ(OCI_SUCCESS, Set(rec, ind, rec_tdo_, "N", OCI_IND_NULL, nullptr, nullptr));
  EXPECT_EQ(OCI_IND_NULL, ind->n);
  EXPECT_EQ(7, Int(&rec->n));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &text));
  EXPECT_EQ(OCI_SUCCESS, OCIRawResize(env_, err_, 0, &raw));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

TEST_F(ObjectTest, SetAttrCopiesDescriptorsAndCollections) {
  rec_t* rec = NewRec();
  rec_t_ind* ind = IndOf(rec);
  void* coll = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_NAMEDCOLLECTION,
                                      num_tab_tdo_, nullptr, OCI_DURATION_DEFAULT, TRUE, &coll));
  OCINumber one = Number(1);
  ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &one, nullptr, static_cast<OCIColl*>(coll)));
  ASSERT_EQ(OCI_SUCCESS, Set(rec, ind, rec_tdo_, "NUMS", OCI_IND_NOTNULL, nullptr, coll));
  EXPECT_NE(coll, static_cast<void*>(rec->nums));
  sb4 size = 0;
  EXPECT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, rec->nums, &size));
  EXPECT_EQ(1, size);
  EXPECT_EQ(OCI_IND_NOTNULL, ind->nums);
  void* ts = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, &ts, OCI_DTYPE_TIMESTAMP, 0, nullptr));
  EXPECT_EQ(OCI_SUCCESS, Set(rec, ind, rec_tdo_, "TS", OCI_IND_NOTNULL, nullptr, ts));
  // A descriptor of another kind is refused.
  void* iv = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, &iv, OCI_DTYPE_INTERVAL_YM, 0, nullptr));
  EXPECT_EQ(OCI_ERROR, Set(rec, ind, rec_tdo_, "IV", OCI_IND_NOTNULL, nullptr, iv));
  EXPECT_EQ("ORA-21560: argument 13 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIDescriptorFree(ts, OCI_DTYPE_TIMESTAMP));
  EXPECT_EQ(OCI_SUCCESS, OCIDescriptorFree(iv, OCI_DTYPE_INTERVAL_YM));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, coll, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

// decision D4: null_status is the embedded object's atomic indicator; a null struct given
// that is not the slot itself is copied first.
TEST_F(ObjectTest, SetAttrOnAnEmbeddedObject) {
  rec_t* rec = NewRec();
  rec_t_ind* ind = IndOf(rec);
  Got addr;
  ASSERT_EQ(OCI_SUCCESS, Get(rec, ind, rec_tdo_, {"ADDR"}, &addr));
  ASSERT_EQ(OCI_SUCCESS, Set(rec, ind, rec_tdo_, "ADDR", OCI_IND_NOTNULL, addr.null_struct,
                             nullptr));
  EXPECT_EQ(OCI_IND_NOTNULL, ind->addr._atomic);
  EXPECT_EQ(OCI_IND_NULL, ind->addr.street);
  addr_t_ind other = {OCI_IND_NULL, OCI_IND_NOTNULL, OCI_IND_NOTNULL};
  void* src = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, addr_tdo_, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &src));
  auto* src_addr = static_cast<addr_t*>(src);
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("Elm"), 3, &src_addr->street));
  src_addr->zip = Number(12345);
  ASSERT_EQ(OCI_SUCCESS, Set(rec, ind, rec_tdo_, "ADDR", OCI_IND_NOTNULL, &other, src));
  EXPECT_EQ(OCI_IND_NOTNULL, ind->addr._atomic);
  EXPECT_EQ(OCI_IND_NOTNULL, ind->addr.street);
  EXPECT_EQ(OCI_IND_NOTNULL, ind->addr.zip);
  EXPECT_EQ("Elm", Str(rec->addr.street));
  EXPECT_NE(src_addr->street, rec->addr.street);
  EXPECT_EQ(12345, Int(&rec->addr.zip));
  ASSERT_EQ(OCI_SUCCESS, Set(rec, ind, rec_tdo_, "ADDR", OCI_IND_NULL, nullptr, nullptr));
  EXPECT_EQ(OCI_IND_NULL, ind->addr._atomic);
  EXPECT_EQ(OCI_IND_NOTNULL, ind->addr.street);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, src, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

TEST_F(ObjectTest, ObjectsOfAnotherTypeAreRefused) {
  rec_t* rec = NewRec();
  rec_t_ind* ind = IndOf(rec);
  rec_t* other = NewRec();
  EXPECT_EQ(OCI_ERROR, Set(rec, ind, rec_tdo_, "ADDR", OCI_IND_NOTNULL, nullptr, other));
  EXPECT_EQ("ORA-21560: argument 13 is null, invalid, or out of range", FirstError(err_));
  void* addr = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, addr_tdo_, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &addr));
  EXPECT_EQ(OCI_ERROR, OCIObjectCopy(env_, err_, svc_, addr, IndOf(rec), other, IndOf(other),
                                     rec_tdo_, OCI_DURATION_DEFAULT, 0));
  EXPECT_EQ("ORA-21560: argument 4 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCIObjectCopy(env_, err_, svc_, rec, ind, addr, ind, rec_tdo_,
                                     OCI_DURATION_DEFAULT, 0));
  EXPECT_EQ("ORA-21560: argument 6 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, addr, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, other, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

TEST_F(ObjectTest, SetAttrErrors) {
  rec_t* rec = NewRec();
  void* ind = IndOf(rec);
  OCINumber n = Number(1);
  EXPECT_EQ(OCI_ERROR, Set(rec, ind, rec_tdo_, "NOPE", OCI_IND_NOTNULL, nullptr, &n));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, Set(rec, ind, rec_tdo_, "NUMS", OCI_IND_NOTNULL, nullptr, &n));
  EXPECT_EQ(21560, FirstCode(err_));  // not a collection
  EXPECT_EQ(OCI_ERROR, Set(nullptr, ind, rec_tdo_, "N", OCI_IND_NOTNULL, nullptr, &n));
  EXPECT_EQ(21560, FirstCode(err_));
  const oratext* names[] = {Text("N")};
  ub4 lengths[] = {1};
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIObjectSetAttr(env_, nullptr, rec, ind, rec_tdo_, names,
                                                 lengths, 1, nullptr, 0, 0, nullptr, &n));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_DEFAULT));
}

TEST_F(ObjectTest, CopyIsDeepAndNullsLobsAndRefs) {
  boolean on = TRUE;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(env_, OCI_HTYPE_ENV, &on, 0, OCI_ATTR_OBJECT_NEWNOTNULL,
                                    err_));
  rec_t* a = NewRec();
  rec_t* b = NewRec();
  rec_t_ind* a_ind = IndOf(a);
  rec_t_ind* b_ind = IndOf(b);
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("src"), 3, &a->name));
  OCINumber n = Number(5);
  ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &n, nullptr, a->nums));
  a_ind->d = OCI_IND_NULL;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectCopy(env_, err_, svc_, a, a_ind, b, b_ind, rec_tdo_,
                                       OCI_DURATION_DEFAULT, OCI_DEFAULT));
  EXPECT_EQ("src", Str(b->name));
  EXPECT_NE(a->name, b->name);
  sb4 size = 0;
  EXPECT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, b->nums, &size));
  EXPECT_EQ(1, size);
  EXPECT_EQ(OCI_IND_NULL, b_ind->d);
  EXPECT_EQ(OCI_IND_NULL, b_ind->doc);
  EXPECT_EQ(OCI_IND_NOTNULL, b_ind->link);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectCopy(env_, err_, svc_, a, a_ind, b, b_ind, rec_tdo_,
                                       OCI_DURATION_DEFAULT, OCI_OBJECTCOPY_NOREF));
  EXPECT_EQ(OCI_IND_NULL, b_ind->link);
  EXPECT_EQ(OCI_ERROR, OCIObjectCopy(env_, err_, svc_, nullptr, a_ind, b, b_ind, rec_tdo_,
                                     OCI_DURATION_DEFAULT, 0));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIObjectCopy(env_, err_, svc_, a, a_ind, b, b_ind, num_tab_tdo_,
                                     OCI_DURATION_DEFAULT, 0));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, a, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, b, OCI_DEFAULT));
}

// decision D9: anything but a standalone instance is refused, never dereferenced.
TEST_F(ObjectTest, FreeRefusesOtherPointers) {
  rec_t* rec = NewRec();
  OCIColl* holder = rec->nums;
  EXPECT_EQ(OCI_ERROR, OCIObjectFree(env_, err_, &holder, OCI_OBJECTFREE_FORCE));
  EXPECT_EQ("ORA-21710: argument is expecting a valid memory address of an object",
            FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCIObjectFree(env_, err_, &rec->addr, OCI_OBJECTFREE_FORCE));
  EXPECT_EQ(21710, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIObjectFree(env_, err_, rec->nums, OCI_OBJECTFREE_FORCE));
  EXPECT_EQ(21710, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIObjectFree(env_, err_, nullptr, OCI_DEFAULT));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_OBJECTFREE_FORCE));
  // Freed once, the address is no instance any more.
  EXPECT_EQ(OCI_ERROR, OCIObjectFree(env_, err_, rec, OCI_OBJECTFREE_FORCE));
  EXPECT_EQ(21710, FirstCode(err_));
}

TEST_F(ObjectTest, FreeWithNoNullKeepsTheNullStruct) {
  rec_t* rec = NewRec();
  rec_t_ind* ind = IndOf(rec);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, rec, OCI_OBJECTFREE_NONULL));
  ind->n = OCI_IND_NOTNULL;  // still the caller's memory; released with the environment
  EXPECT_EQ(OCI_IND_NOTNULL, ind->n);
}

// Instances never freed go with their environment (checked by LeakSanitizer).
TEST_F(ObjectTest, UnfreedInstancesGoWithTheEnvironment) {
  NewRec();
  void* coll = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_TABLE, num_tab_tdo_, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &coll));
  void* str = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_VARCHAR2, nullptr, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &str));
}

}  // namespace
}  // namespace ocimem_test
