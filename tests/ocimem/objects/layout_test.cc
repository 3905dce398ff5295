// Instances read and written through C structs declared by hand the way the object type
// translator declares them for x86-64.
#include <gtest/gtest.h>

#include <cstddef>

#include "oci_fixture.h"
#include "orid.h"

namespace ocimem_test {
namespace {

struct addr_t {
  OCIString* street;
  OCINumber zip;
};
struct addr_t_ind {
  OCIInd _atomic;
  OCIInd street;
  OCIInd zip;
};
struct person_t {
  OCIString* name;
  OCINumber age;
  OCIDate born;
  OCIRaw* pic;
  addr_t addr;
  OCITable* nums;
  OCIClobLocator* note;
  OCIDateTime* ts;
};
struct person_t_ind {
  OCIInd _atomic;
  OCIInd name;
  OCIInd age;
  OCIInd born;
  OCIInd pic;
  addr_t_ind addr;
  OCIInd nums;
  OCIInd note;
  OCIInd ts;
};
static_assert(sizeof(addr_t) == 32, "addr_t");
static_assert(sizeof(addr_t_ind) == 6, "addr_t_ind");
static_assert(sizeof(person_t) == 104, "person_t");
static_assert(sizeof(person_t_ind) == 22, "person_t_ind");

// A type whose members need padding in several places.
struct mix_t {
  OCIDate d;         // 0, align 2
  OCINumber n;       // 8, align 1
  OCIString* s;      // 32
  OCINumber n2;      // 40
  OCIInterval* iv;   // 64
  OCIRef* r;         // 72
  OCIBlobLocator* b; // 80
};
static_assert(sizeof(mix_t) == 88, "mix_t");
struct mix_t_ind {
  OCIInd _atomic, d, n, s, n2, iv, r, b;
};
struct wrap_t {
  OCINumber first;  // 0
  mix_t inner;      // 24 (aligned to 8)
  OCIDate last;     // 112
};
static_assert(sizeof(wrap_t) == 120, "wrap_t");
struct wrap_t_ind {
  OCIInd _atomic, first;
  mix_t_ind inner;
  OCIInd last;
};

class LayoutTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("CREATE TYPE addr_t AS OBJECT (street VARCHAR2(30), zip NUMBER(5))");
    MustExec("CREATE TYPE num_tab AS TABLE OF NUMBER");
    MustExec("CREATE TYPE person_t AS OBJECT (name VARCHAR2(30), age NUMBER, born DATE, "
             "pic RAW(10), addr addr_t, nums num_tab, note CLOB, ts TIMESTAMP)");
    MustExec("create type mix_t as object (d date, n number, s char(4), n2 integer, "
             "iv interval day to second, r ref addr_t, b blob)");
    MustExec("create type wrap_t as object (first number, inner mix_t, last date)");
  }

  void* New(const char* type) {
    void* obj = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, TypeByName(type),
                                        nullptr, OCI_DURATION_DEFAULT, TRUE, &obj))
        << FirstError(err_);
    return obj;
  }

  // Offset of an attribute's value and of its indicator, found through OCIObjectGetAttr.
  void Offsets(void* obj, void* ind, const char* type, std::initializer_list<const char*> path,
               size_t* value_offset, size_t* ind_offset) {
    const oratext* names[4];
    ub4 lengths[4];
    ub4 n = 0;
    for (const char* p : path) {
      names[n] = Text(p);
      lengths[n++] = Len(p);
    }
    OCIInd status = 5;
    void* attr_ind = nullptr;
    void* value = nullptr;
    OCIType* attr_tdo = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, obj, ind, TypeByName(type), names,
                                            lengths, n, nullptr, 0, &status, &attr_ind, &value,
                                            &attr_tdo))
        << FirstError(err_);
    *value_offset = static_cast<size_t>(static_cast<char*>(value) - static_cast<char*>(obj));
    *ind_offset = attr_ind == nullptr ? SIZE_MAX
                                      : static_cast<size_t>(static_cast<char*>(attr_ind) -
                                                            static_cast<char*>(ind));
  }
};

TEST_F(LayoutTest, AttributeOffsetsMatchTheCStruct) {
  void* obj = New("PERSON_T");
  void* ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, obj, &ind));
  struct Case {
    std::initializer_list<const char*> path;
    size_t offset;
  };
  const Case cases[] = {
      {{"NAME"}, offsetof(person_t, name)},   {{"AGE"}, offsetof(person_t, age)},
      {{"BORN"}, offsetof(person_t, born)},   {{"PIC"}, offsetof(person_t, pic)},
      {{"ADDR"}, offsetof(person_t, addr)},   {{"NUMS"}, offsetof(person_t, nums)},
      {{"NOTE"}, offsetof(person_t, note)},   {{"TS"}, offsetof(person_t, ts)},
      {{"ADDR", "STREET"}, offsetof(person_t, addr) + offsetof(addr_t, street)},
      {{"ADDR", "ZIP"}, offsetof(person_t, addr) + offsetof(addr_t, zip)},
  };
  for (const Case& c : cases) {
    size_t value = 0;
    size_t ind_offset = 0;
    Offsets(obj, ind, "PERSON_T", c.path, &value, &ind_offset);
    EXPECT_EQ(c.offset, value) << *c.path.begin();
  }
  size_t value = 0;
  size_t ind_offset = 0;
  Offsets(obj, ind, "PERSON_T", {"ADDR"}, &value, &ind_offset);
  EXPECT_EQ(offsetof(person_t_ind, addr), ind_offset);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_DEFAULT));
}

TEST_F(LayoutTest, PaddedAndNestedOffsets) {
  void* obj = New("WRAP_T");
  void* ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, obj, &ind));
  struct Case {
    std::initializer_list<const char*> path;
    size_t offset;
  };
  const size_t inner = offsetof(wrap_t, inner);
  const Case cases[] = {
      {{"FIRST"}, offsetof(wrap_t, first)},          {{"INNER"}, inner},
      {{"LAST"}, offsetof(wrap_t, last)},            {{"INNER", "D"}, inner + offsetof(mix_t, d)},
      {{"INNER", "N"}, inner + offsetof(mix_t, n)},  {{"INNER", "S"}, inner + offsetof(mix_t, s)},
      {{"INNER", "N2"}, inner + offsetof(mix_t, n2)}, {{"INNER", "IV"}, inner + offsetof(mix_t, iv)},
      {{"INNER", "R"}, inner + offsetof(mix_t, r)},  {{"INNER", "B"}, inner + offsetof(mix_t, b)},
  };
  for (const Case& c : cases) {
    size_t value = 0;
    size_t ind_offset = 0;
    Offsets(obj, ind, "WRAP_T", c.path, &value, &ind_offset);
    EXPECT_EQ(c.offset, value) << *(c.path.end() - 1);
  }
  size_t value = 0;
  size_t ind_offset = 0;
  Offsets(obj, ind, "WRAP_T", {"INNER"}, &value, &ind_offset);
  EXPECT_EQ(offsetof(wrap_t_ind, inner), ind_offset);
  // The indicator of the attribute after the embedded object follows its null struct.
  auto* w_ind = static_cast<wrap_t_ind*>(ind);
  w_ind->last = OCI_IND_NOTNULL;
  OCIInd status = 5;
  const oratext* names[] = {Text("LAST")};
  ub4 lengths[] = {4};
  void* attr_ind = reinterpret_cast<void*>(1);
  void* attr_value = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, obj, ind, TypeByName("WRAP_T"), names,
                                          lengths, 1, nullptr, 0, &status, &attr_ind, &attr_value,
                                          nullptr));
  EXPECT_EQ(OCI_IND_NOTNULL, status);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_DEFAULT));
}

// A host builds an instance through OCI calls and reads it back through the structs.
TEST_F(LayoutTest, ReadThroughTheStructs) {
  boolean on = TRUE;
  ASSERT_EQ(OCI_SUCCESS,
            OCIAttrSet(env_, OCI_HTYPE_ENV, &on, 0, OCI_ATTR_OBJECT_NEWNOTNULL, err_));
  auto* p = static_cast<person_t*>(New("PERSON_T"));
  person_t_ind* ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, p, reinterpret_cast<void**>(&ind)));
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("Ann"), 3, &p->name));
  int age = 42;
  ASSERT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &age, sizeof age, OCI_NUMBER_SIGNED, &p->age));
  OCIDateSetDate(&p->born, 1983, 7, 14);
  const ub1 bytes[] = {1, 2, 3};
  ASSERT_EQ(OCI_SUCCESS, OCIRawAssignBytes(env_, err_, bytes, 3, &p->pic));
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("Main St"), 7, &p->addr.street));
  for (int i = 1; i <= 3; ++i) {
    OCINumber n;
    ASSERT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &i, sizeof i, OCI_NUMBER_SIGNED, &n));
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &n, nullptr, p->nums));
  }
  ind->pic = OCI_IND_NULL;

  // Everything set through the structs is what the OCI calls report.
  const oratext* names[] = {Text("NAME"), Text("AGE"), Text("PIC"), Text("NUMS")};
  ub4 lengths[] = {4, 3, 3, 4};
  OCIInd status = 5;
  void* value = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, p, ind, TypeByName("PERSON_T"), names,
                                          lengths, 1, nullptr, 0, &status, nullptr, &value,
                                          nullptr));
  OCIString* name = *static_cast<OCIString**>(value);
  EXPECT_EQ("Ann", std::string(reinterpret_cast<char*>(OCIStringPtr(env_, name)),
                               OCIStringSize(env_, name)));
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, p, ind, TypeByName("PERSON_T"), names + 1,
                                          lengths + 1, 1, nullptr, 0, &status, nullptr, &value,
                                          nullptr));
  int read_age = 0;
  ASSERT_EQ(OCI_SUCCESS, OCINumberToInt(err_, static_cast<OCINumber*>(value), sizeof read_age,
                                        OCI_NUMBER_SIGNED, &read_age));
  EXPECT_EQ(42, read_age);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, p, ind, TypeByName("PERSON_T"), names + 2,
                                          lengths + 2, 1, nullptr, 0, &status, nullptr, &value,
                                          nullptr));
  EXPECT_EQ(OCI_IND_NULL, status);
  EXPECT_EQ(3u, OCIRawSize(env_, *static_cast<OCIRaw**>(value)));
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, p, ind, TypeByName("PERSON_T"), names + 3,
                                          lengths + 3, 1, nullptr, 0, &status, nullptr, &value,
                                          nullptr));
  sb4 size = 0;
  ASSERT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, *static_cast<OCIColl**>(value), &size));
  EXPECT_EQ(3, size);
  EXPECT_EQ(1983, p->born.OCIDateYYYY);
  EXPECT_EQ(OCI_IND_NOTNULL, ind->_atomic);
  EXPECT_EQ(OCI_IND_NOTNULL, ind->addr._atomic);
  EXPECT_EQ(OCI_IND_NOTNULL, ind->ts);
  EXPECT_NE(nullptr, p->note);
  EXPECT_NE(nullptr, p->ts);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, p, OCI_DEFAULT));
}

}  // namespace
}  // namespace ocimem_test
