// The type-level attributes of a described type: version, kind flags, what the type holds,
// its (absent) methods, and the REF to its type descriptor that OCIDescribeAny takes back.
#include <string>

#include "describe_fixture.h"

namespace ocimem_test {
namespace {

using DescribeTypeLevelTest = DescribeFixture;

TEST_F(DescribeTypeLevelTest, ObjectTypeReportsItsKindVersionAndMethods) {
  MustExec("CREATE TYPE DOC_T AS OBJECT (ID NUMBER, BODY CLOB)");
  OCIParam* top = Describe("DOC_T", OCI_PTYPE_TYPE);
  EXPECT_EQ(OCI_PTYPE_TYPE, Attr<ub1>(top, OCI_ATTR_PTYPE));
  EXPECT_EQ(OCI_TYPECODE_OBJECT, Attr<OCITypeCode>(top, OCI_ATTR_TYPECODE));
  EXPECT_EQ("SCOTT", TextAttr(top, OCI_ATTR_SCHEMA_NAME));
  EXPECT_EQ("DOC_T", TextAttr(top, OCI_ATTR_NAME));
  // decision DS2: the user-assigned version of every type made by CREATE TYPE is "$8.0".
  EXPECT_EQ("$8.0", TextAttr(top, OCI_ATTR_VERSION));
  for (ub4 attr : {OCI_ATTR_IS_INCOMPLETE_TYPE, OCI_ATTR_IS_SYSTEM_TYPE,
                   OCI_ATTR_IS_PREDEFINED_TYPE, OCI_ATTR_IS_TRANSIENT_TYPE,
                   OCI_ATTR_IS_SYSTEM_GENERATED_TYPE, OCI_ATTR_IS_SUBTYPE,
                   OCI_ATTR_IS_INVOKER_RIGHTS, OCI_ATTR_HAS_NESTED_TABLE, OCI_ATTR_HAS_FILE}) {
    EXPECT_EQ(0, Attr<ub1>(top, attr)) << attr;
  }
  EXPECT_EQ(1, Attr<ub1>(top, OCI_ATTR_HAS_LOB));
  EXPECT_EQ(1, Attr<ub1>(top, OCI_ATTR_IS_FINAL_TYPE));
  EXPECT_EQ(0u, Attr<ub4>(top, OCI_ATTR_NUM_TYPE_METHODS));
  OCIParam* methods = Attr<OCIParam*>(top, OCI_ATTR_LIST_TYPE_METHODS);
  ASSERT_NE(nullptr, methods);
  EXPECT_EQ(OCI_PTYPE_LIST, Attr<ub1>(methods, OCI_ATTR_PTYPE));
  void* method = nullptr;
  EXPECT_EQ(OCI_NO_DATA, OCIParamGet(methods, OCI_DTYPE_PARAM, err_, &method, 1));
  // decision DS4: without methods there is no map or order method: a NULL parameter.
  EXPECT_EQ(nullptr, Attr<OCIParam*>(top, OCI_ATTR_MAP_METHOD));
  EXPECT_EQ(nullptr, Attr<OCIParam*>(top, OCI_ATTR_ORDER_METHOD));
  // The described object's own name and schema.
  EXPECT_EQ("DOC_T", TextAttr(top, OCI_ATTR_OBJ_NAME));
  EXPECT_EQ("SCOTT", TextAttr(top, OCI_ATTR_OBJ_SCHEMA));
}

TEST_F(DescribeTypeLevelTest, NotFinalTypeSaysSo) {
  MustExec("CREATE TYPE BASE_T AS OBJECT (ID NUMBER) NOT FINAL");
  EXPECT_EQ(0, Attr<ub1>(Describe("BASE_T", OCI_PTYPE_TYPE), OCI_ATTR_IS_FINAL_TYPE));
}

struct Holds {
  const char* type;
  ub1 nested_table;
  ub1 lob;
  ub1 file;
};

TEST_F(DescribeTypeLevelTest, WhatATypeHoldsCountsEmbeddedValuesButNotRefTargets) {
  // decision DS3: HAS_NESTED_TABLE, HAS_LOB and HAS_FILE look through embedded objects and
  // collection elements, not through REFs; a nested table type has a nested table itself.
  MustExec("CREATE TYPE NUM_NT AS TABLE OF NUMBER");
  MustExec("CREATE TYPE NUM_VA AS VARRAY(3) OF NUMBER");
  MustExec("CREATE TYPE CLOB_VA AS VARRAY(3) OF CLOB");
  MustExec("CREATE TYPE FILE_T AS OBJECT (F BFILE)");
  MustExec("CREATE TYPE INNER_T AS OBJECT (NUMS NUM_NT, F FILE_T)");
  MustExec("CREATE TYPE OUTER_T AS OBJECT (ID NUMBER, I INNER_T)");
  MustExec("CREATE TYPE POINTER_T AS OBJECT (R REF INNER_T, B BLOB)");
  MustExec("CREATE TYPE NT_VA AS VARRAY(2) OF NUM_NT");
  const Holds cases[] = {
      {"NUM_NT", 1, 0, 0},    {"NUM_VA", 0, 0, 0},  {"CLOB_VA", 0, 1, 0},
      {"FILE_T", 0, 0, 1},    {"INNER_T", 1, 0, 1}, {"OUTER_T", 1, 0, 1},
      {"POINTER_T", 0, 1, 0}, {"NT_VA", 1, 0, 0},
  };
  for (const Holds& c : cases) {
    OCIParam* top = Describe(c.type, OCI_PTYPE_TYPE);
    EXPECT_EQ(c.nested_table, Attr<ub1>(top, OCI_ATTR_HAS_NESTED_TABLE)) << c.type;
    EXPECT_EQ(c.lob, Attr<ub1>(top, OCI_ATTR_HAS_LOB)) << c.type;
    EXPECT_EQ(c.file, Attr<ub1>(top, OCI_ATTR_HAS_FILE)) << c.type;
  }
}

TEST_F(DescribeTypeLevelTest, CollectionTypeReportsTheSameTypeLevelAttributes) {
  MustExec("CREATE TYPE NUM_NT AS TABLE OF NUMBER");
  OCIParam* top = Describe("NUM_NT", OCI_PTYPE_TYPE);
  EXPECT_EQ(OCI_TYPECODE_NAMEDCOLLECTION, Attr<OCITypeCode>(top, OCI_ATTR_TYPECODE));
  EXPECT_EQ("$8.0", TextAttr(top, OCI_ATTR_VERSION));
  EXPECT_EQ(0, Attr<ub2>(top, OCI_ATTR_NUM_TYPE_ATTRS));
  EXPECT_EQ(0u, Attr<ub4>(top, OCI_ATTR_NUM_TYPE_METHODS));
  EXPECT_EQ(0, Attr<ub1>(top, OCI_ATTR_IS_INCOMPLETE_TYPE));
}

TEST_F(DescribeTypeLevelTest, RefTdoIsDescribedAgainThroughTheRef) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30), ZIP NUMBER)");
  MustExec("CREATE TYPE ADDR_NT AS TABLE OF ADDR_T");
  MustExec("CREATE TYPE PERSON_T AS OBJECT (HOME ADDR_T, OLD ADDR_NT, N NUMBER, R REF ADDR_T)");
  OCIParam* top = Describe("PERSON_T", OCI_PTYPE_TYPE);
  OCIRef* ref = Attr<OCIRef*>(top, OCI_ATTR_REF_TDO);
  ASSERT_NE(nullptr, ref);
  EXPECT_EQ(ref, Attr<OCIRef*>(top, OCI_ATTR_REF_TDO));  // the same REF each time
  OCIDescribe* again = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&again),
                                        OCI_HTYPE_DESCRIBE, 0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIDescribeAny(svc_, err_, ref, 0, OCI_OTYPE_REF, OCI_DEFAULT,
                                        OCI_PTYPE_TYPE, again))
      << FirstError(err_);
  EXPECT_EQ("PERSON_T", TextAttr(Top(again), OCI_ATTR_NAME));
  // An attribute of an object or collection type has a REF to that type's descriptor.
  OCIParam* list = Attr<OCIParam*>(top, OCI_ATTR_LIST_TYPE_ATTRS);
  const char* const expected[] = {"ADDR_T", "ADDR_NT"};
  for (ub4 pos = 1; pos <= 2; ++pos) {
    OCIRef* attr_ref = Attr<OCIRef*>(Item(list, pos), OCI_ATTR_REF_TDO);
    ASSERT_EQ(OCI_SUCCESS, OCIDescribeAny(svc_, err_, attr_ref, 0, OCI_OTYPE_REF, OCI_DEFAULT,
                                          OCI_PTYPE_UNK, again))
        << FirstError(err_);
    EXPECT_EQ(expected[pos - 1], TextAttr(Top(again), OCI_ATTR_NAME));
  }
  // decision DS5: a scalar or REF attribute has no type descriptor of ours: ORA-24315.
  EXPECT_EQ(24315, AttrError(Item(list, 3), OCI_ATTR_REF_TDO));
  EXPECT_EQ(24315, AttrError(Item(list, 4), OCI_ATTR_REF_TDO));
  // The element of a collection of objects too.
  OCIParam* element = Attr<OCIParam*>(Describe("ADDR_NT", OCI_PTYPE_TYPE),
                                      OCI_ATTR_COLLECTION_ELEMENT);
  OCIRef* element_ref = Attr<OCIRef*>(element, OCI_ATTR_REF_TDO);
  ASSERT_EQ(OCI_SUCCESS, OCIDescribeAny(svc_, err_, element_ref, 0, OCI_OTYPE_REF, OCI_DEFAULT,
                                        OCI_PTYPE_TYPE, again));
  EXPECT_EQ("ADDR_T", TextAttr(Top(again), OCI_ATTR_NAME));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(again, OCI_HTYPE_DESCRIBE));
}

TEST_F(DescribeTypeLevelTest, DescribeByRefRefusesWhatIsNoTypeRef) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30), HOME REF ADDR_T)");
  // The REF held by an instance is a null REF, not a REF to a type descriptor.
  void* obj = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, TypeByName("ADDR_T"),
                                      nullptr, OCI_DURATION_DEFAULT, TRUE, &obj));
  struct addr_t {
    OCIString* street;
    OCIRef* home;
  };
  OCIRef* null_ref = static_cast<addr_t*>(obj)->home;
  ASSERT_NE(nullptr, null_ref);
  EXPECT_EQ(OCI_ERROR, OCIDescribeAny(svc_, err_, null_ref, 0, OCI_OTYPE_REF, OCI_DEFAULT,
                                      OCI_PTYPE_TYPE, dsc_));
  EXPECT_EQ("ORA-21560: argument 3 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_DEFAULT));
}

TEST_F(DescribeTypeLevelTest, AttributesOfOtherParametersAreIllegalHere) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  OCIParam* top = Describe("ADDR_T", OCI_PTYPE_TYPE);
  OCIParam* street = Item(Attr<OCIParam*>(top, OCI_ATTR_LIST_TYPE_ATTRS), 1);
  // Type-level attributes belong to the type, the described object's name to the top.
  for (ub4 attr : {OCI_ATTR_VERSION, OCI_ATTR_HAS_LOB, OCI_ATTR_NUM_TYPE_METHODS,
                   OCI_ATTR_IS_INCOMPLETE_TYPE, OCI_ATTR_OBJ_NAME, OCI_ATTR_OBJ_SCHEMA}) {
    EXPECT_EQ(24315, AttrError(street, attr)) << attr;
  }
  // Attributes of tables and columns are illegal on a type.
  EXPECT_EQ(24315, AttrError(top, OCI_ATTR_NUM_COLS));
  EXPECT_EQ(24315, AttrError(top, OCI_ATTR_IS_TYPED));
  EXPECT_EQ(24315, AttrError(top, OCI_ATTR_IS_NULL));
}

TEST_F(DescribeTypeLevelTest, FaultedDescribeKeepsThePreviousParameters) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  MustExec("CREATE TYPE NUM_NT AS TABLE OF NUMBER");
  OCIParam* top = Describe("ADDR_T", OCI_PTYPE_TYPE);
  const sb4 codes[] = {4043};
  const char* const texts[] = {"object NUM_NT does not exist"};
  ocimemFaultArm("OCIDescribeAny", 1, OCI_ERROR, codes, texts, 1);
  EXPECT_EQ(OCI_ERROR, DescribeAs("NUM_NT", OCI_PTYPE_TYPE));
  EXPECT_EQ("ORA-04043: object NUM_NT does not exist", FirstError(err_));
  EXPECT_EQ(top, Top());
  EXPECT_EQ("$8.0", TextAttr(top, OCI_ATTR_VERSION));
  ocimemFaultArm("OCIAttrGet", 1, OCI_ERROR, codes, texts, 1);
  ub1 flag = 7;
  EXPECT_EQ(OCI_ERROR, OCIAttrGet(top, OCI_DTYPE_PARAM, &flag, nullptr, OCI_ATTR_HAS_LOB, err_));
  EXPECT_EQ(7, flag);
}

}  // namespace
}  // namespace ocimem_test
