// OCIDescribeAny, OCIParamGet and OCIAttrGet on the parameters of a described type.
#include <string>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

class DescribeTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&dsc_),
                                          OCI_HTYPE_DESCRIBE, 0, nullptr));
  }

  // The top parameter of a type described by name.
  OCIParam* Describe(const char* name) {
    EXPECT_EQ(OCI_SUCCESS, OCIDescribeAny(svc_, err_, const_cast<char*>(name), Len(name),
                                          OCI_OTYPE_NAME, OCI_DEFAULT, OCI_PTYPE_TYPE, dsc_))
        << FirstError(err_);
    OCIParam* top = nullptr;
    EXPECT_EQ(OCI_SUCCESS,
              OCIAttrGet(dsc_, OCI_HTYPE_DESCRIBE, &top, nullptr, OCI_ATTR_PARAM, err_));
    return top;
  }

  std::string TextAttr(OCIParam* p, ub4 attr) {
    OraText* text = nullptr;
    ub4 size = 0;
    EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(p, OCI_DTYPE_PARAM, &text, &size, attr, err_));
    return text == nullptr ? "<null>" : std::string(reinterpret_cast<char*>(text), size);
  }

  template <typename T>
  T Attr(OCIParam* p, ub4 attr) {
    T value{};
    EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(p, OCI_DTYPE_PARAM, &value, nullptr, attr, err_))
        << attr << " " << FirstError(err_);
    return value;
  }

  OCIParam* AttributeAt(OCIParam* top, ub4 pos) {
    OCIParam* list = Attr<OCIParam*>(top, OCI_ATTR_LIST_TYPE_ATTRS);
    OCIParam* attr = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIParamGet(list, OCI_DTYPE_PARAM, err_,
                                       reinterpret_cast<void**>(&attr), pos));
    return attr;
  }

  OCIDescribe* dsc_ = nullptr;
};

TEST_F(DescribeTest, ObjectTypeNameCodeAndAttributeCount) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30), ZIP NUMBER(5))");
  OCIParam* top = Describe("ADDR_T");
  ASSERT_NE(nullptr, top);
  EXPECT_EQ(OCI_PTYPE_TYPE, Attr<ub1>(top, OCI_ATTR_PTYPE));
  EXPECT_EQ("ADDR_T", TextAttr(top, OCI_ATTR_NAME));
  EXPECT_EQ("SCOTT", TextAttr(top, OCI_ATTR_SCHEMA_NAME));
  EXPECT_EQ(OCI_TYPECODE_OBJECT, Attr<OCITypeCode>(top, OCI_ATTR_TYPECODE));
  EXPECT_EQ(2, Attr<ub2>(top, OCI_ATTR_NUM_TYPE_ATTRS));
  OCIParam* street = AttributeAt(top, 1);
  EXPECT_EQ(OCI_PTYPE_TYPE_ATTR, Attr<ub1>(street, OCI_ATTR_PTYPE));
  EXPECT_EQ("STREET", TextAttr(street, OCI_ATTR_NAME));
  EXPECT_EQ("ZIP", TextAttr(AttributeAt(top, 2), OCI_ATTR_NAME));
}

TEST_F(DescribeTest, NamesKeepASpareNulThatMayBeWritten) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  OCIParam* street = AttributeAt(Describe("ADDR_T"), 1);
  OraText* name = nullptr;
  ub4 size = 0;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(street, OCI_DTYPE_PARAM, &name, &size, OCI_ATTR_NAME, err_));
  ASSERT_EQ(6u, size);
  name[size] = '\0';  // as Oracle's own demo does
  EXPECT_STREQ("STREET", reinterpret_cast<char*>(name));
}

struct AttrCase {
  const char* name;
  const char* decl;
  OCITypeCode typecode;
  ub2 data_type;
  ub2 data_size;
  ub1 precision;
  sb1 scale;
  ub1 charset_form;
};

class DescribeAttributeTest : public DescribeTest,
                              public ::testing::WithParamInterface<AttrCase> {};

TEST_P(DescribeAttributeTest, ReportsCodeTypeSizePrecisionAndScale) {
  const AttrCase& c = GetParam();
  MustExec("CREATE TYPE SUB_T AS OBJECT (N NUMBER)");
  MustExec("CREATE TYPE TAB_T AS TABLE OF NUMBER");
  MustExec(std::string("CREATE TYPE HOLDER AS OBJECT (A ") + c.decl + ")");
  OCIParam* a = AttributeAt(Describe("HOLDER"), 1);
  ASSERT_NE(nullptr, a);
  EXPECT_EQ(c.typecode, Attr<OCITypeCode>(a, OCI_ATTR_TYPECODE));
  EXPECT_EQ(c.data_type, Attr<ub2>(a, OCI_ATTR_DATA_TYPE));
  EXPECT_EQ(c.data_size, Attr<ub2>(a, OCI_ATTR_DATA_SIZE));
  EXPECT_EQ(c.precision, Attr<ub1>(a, OCI_ATTR_PRECISION));
  EXPECT_EQ(c.scale, Attr<sb1>(a, OCI_ATTR_SCALE));
  EXPECT_EQ(c.charset_form, Attr<ub1>(a, OCI_ATTR_CHARSET_FORM));
}

// UNCONFIRMED: DATA_TYPE values, the sizes of DATE, TIMESTAMP and INTERVAL, the scale -127 of
// NUMBER, and 0 for LOB, REF, object and collection sizes are the best reading.
INSTANTIATE_TEST_SUITE_P(
    Types, DescribeAttributeTest,
    ::testing::Values(
        AttrCase{"Varchar2", "VARCHAR2(30)", OCI_TYPECODE_VARCHAR2, SQLT_CHR, 30, 0, 0, 1},
        AttrCase{"Varchar2Chars", "VARCHAR2(10 CHAR)", OCI_TYPECODE_VARCHAR2, SQLT_CHR, 40, 0, 0,
                 1},
        AttrCase{"Char", "CHAR(3)", OCI_TYPECODE_CHAR, SQLT_AFC, 3, 0, 0, 1},
        // decision DS7: national character sizes count AL16UTF16 bytes, two a character.
        AttrCase{"NVarchar2", "NVARCHAR2(5)", OCI_TYPECODE_VARCHAR2, SQLT_CHR, 10, 0, 0, 2},
        AttrCase{"Number", "NUMBER", OCI_TYPECODE_NUMBER, SQLT_NUM, 22, 0, -127, 0},
        AttrCase{"NumberP", "NUMBER(5)", OCI_TYPECODE_NUMBER, SQLT_NUM, 22, 5, 0, 0},
        AttrCase{"NumberPS", "NUMBER(7,2)", OCI_TYPECODE_NUMBER, SQLT_NUM, 22, 7, 2, 0},
        AttrCase{"Integer", "INTEGER", OCI_TYPECODE_INTEGER, SQLT_NUM, 22, 38, 0, 0},
        AttrCase{"Float", "FLOAT", OCI_TYPECODE_FLOAT, SQLT_NUM, 22, 126, -127, 0},
        AttrCase{"Date", "DATE", OCI_TYPECODE_DATE, SQLT_DAT, 7, 0, 0, 0},
        AttrCase{"Timestamp", "TIMESTAMP(3)", OCI_TYPECODE_TIMESTAMP, SQLT_TIMESTAMP, 11, 0, 3, 0},
        AttrCase{"TimestampTz", "TIMESTAMP WITH TIME ZONE", OCI_TYPECODE_TIMESTAMP_TZ,
                 SQLT_TIMESTAMP_TZ, 13, 0, 6, 0},
        AttrCase{"IntervalYm", "INTERVAL YEAR(4) TO MONTH", OCI_TYPECODE_INTERVAL_YM,
                 SQLT_INTERVAL_YM, 5, 4, 0, 0},
        AttrCase{"IntervalDs", "INTERVAL DAY(3) TO SECOND(2)", OCI_TYPECODE_INTERVAL_DS,
                 SQLT_INTERVAL_DS, 11, 3, 2, 0},
        AttrCase{"Raw", "RAW(16)", OCI_TYPECODE_RAW, SQLT_BIN, 16, 0, 0, 0},
        AttrCase{"Clob", "CLOB", OCI_TYPECODE_CLOB, SQLT_CLOB, 0, 0, 0, 1},
        AttrCase{"Blob", "BLOB", OCI_TYPECODE_BLOB, SQLT_BLOB, 0, 0, 0, 0},
        AttrCase{"Ref", "REF SUB_T", OCI_TYPECODE_REF, SQLT_REF, 0, 0, 0, 0},
        AttrCase{"Object", "SUB_T", OCI_TYPECODE_OBJECT, SQLT_NTY, 0, 0, 0, 0},
        AttrCase{"Collection", "TAB_T", OCI_TYPECODE_NAMEDCOLLECTION, SQLT_NTY, 0, 0, 0, 0}),
    [](const ::testing::TestParamInfo<AttrCase>& info) { return std::string(info.param.name); });

TEST_F(DescribeTest, NamedAttributeReportsItsTypeAndOwner) {
  MustExec("CREATE TYPE SUB_T AS OBJECT (N NUMBER)");
  MustExec("CREATE TYPE HOLDER AS OBJECT (S SUB_T, R REF SUB_T, N NUMBER)");
  OCIParam* top = Describe("HOLDER");
  EXPECT_EQ("SUB_T", TextAttr(AttributeAt(top, 1), OCI_ATTR_TYPE_NAME));
  EXPECT_EQ("SCOTT", TextAttr(AttributeAt(top, 1), OCI_ATTR_SCHEMA_NAME));
  EXPECT_EQ("SUB_T", TextAttr(AttributeAt(top, 2), OCI_ATTR_TYPE_NAME));
  EXPECT_EQ("", TextAttr(AttributeAt(top, 3), OCI_ATTR_TYPE_NAME));
}

TEST_F(DescribeTest, VarrayReportsItsKindElementAndLimit) {
  MustExec("CREATE TYPE NUMS AS VARRAY(7) OF NUMBER(4)");
  OCIParam* top = Describe("NUMS");
  EXPECT_EQ(OCI_TYPECODE_NAMEDCOLLECTION, Attr<OCITypeCode>(top, OCI_ATTR_TYPECODE));
  EXPECT_EQ(OCI_TYPECODE_VARRAY, Attr<OCITypeCode>(top, OCI_ATTR_COLLECTION_TYPECODE));
  EXPECT_EQ(0, Attr<ub2>(top, OCI_ATTR_NUM_TYPE_ATTRS));
  OCIParam* elem = Attr<OCIParam*>(top, OCI_ATTR_COLLECTION_ELEMENT);
  ASSERT_NE(nullptr, elem);
  EXPECT_EQ(OCI_PTYPE_TYPE_COLL, Attr<ub1>(elem, OCI_ATTR_PTYPE));
  EXPECT_EQ(7u, Attr<ub4>(elem, OCI_ATTR_NUM_ELEMS));
  EXPECT_EQ(OCI_TYPECODE_NUMBER, Attr<OCITypeCode>(elem, OCI_ATTR_TYPECODE));
  EXPECT_EQ(4, Attr<ub1>(elem, OCI_ATTR_PRECISION));
  EXPECT_EQ("", TextAttr(elem, OCI_ATTR_NAME));
}

TEST_F(DescribeTest, NestedTableOfObjectsReportsTheElementType) {
  MustExec("CREATE TYPE SUB_T AS OBJECT (N NUMBER)");
  MustExec("CREATE TYPE SUBS AS TABLE OF SUB_T");
  OCIParam* top = Describe("SUBS");
  EXPECT_EQ(OCI_TYPECODE_TABLE, Attr<OCITypeCode>(top, OCI_ATTR_COLLECTION_TYPECODE));
  OCIParam* elem = Attr<OCIParam*>(top, OCI_ATTR_COLLECTION_ELEMENT);
  EXPECT_EQ(0u, Attr<ub4>(elem, OCI_ATTR_NUM_ELEMS));  // UNCONFIRMED: 0 for a nested table
  EXPECT_EQ(OCI_TYPECODE_OBJECT, Attr<OCITypeCode>(elem, OCI_ATTR_TYPECODE));
  EXPECT_EQ("SUB_T", TextAttr(elem, OCI_ATTR_TYPE_NAME));
}

TEST_F(DescribeTest, DescribeByTdoPointer) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  OCIType* tdo = TypeByName("ADDR_T");
  ASSERT_EQ(OCI_SUCCESS, OCIDescribeAny(svc_, err_, tdo, 0, OCI_OTYPE_PTR, OCI_DEFAULT,
                                        OCI_PTYPE_TYPE, dsc_));
  OCIParam* top = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(dsc_, OCI_HTYPE_DESCRIBE, &top, nullptr, OCI_ATTR_PARAM, err_));
  EXPECT_EQ("ADDR_T", TextAttr(top, OCI_ATTR_NAME));
}

TEST_F(DescribeTest, SchemaQualifiedNameAndUnknownName) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  EXPECT_EQ("ADDR_T", TextAttr(Describe("SCOTT.ADDR_T"), OCI_ATTR_NAME));
  char lower[] = "addr_t";  // names are matched as stored
  EXPECT_EQ(OCI_ERROR, OCIDescribeAny(svc_, err_, lower, 6, OCI_OTYPE_NAME, OCI_DEFAULT,
                                      OCI_PTYPE_TYPE, dsc_));
  EXPECT_EQ("ORA-04043: object addr_t does not exist", FirstError(err_));
}

TEST_F(DescribeTest, PastTheLastAttributeIsNoData) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  OCIParam* list = Attr<OCIParam*>(Describe("ADDR_T"), OCI_ATTR_LIST_TYPE_ATTRS);
  void* attr = nullptr;
  EXPECT_EQ(OCI_NO_DATA, OCIParamGet(list, OCI_DTYPE_PARAM, err_, &attr, 2));
  EXPECT_EQ(OCI_NO_DATA, OCIParamGet(list, OCI_DTYPE_PARAM, err_, &attr, 0));
  EXPECT_EQ(nullptr, attr);
}

TEST_F(DescribeTest, BadArguments) {
  char name[] = "ADDR_T";
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDescribeAny(nullptr, err_, name, 6, OCI_OTYPE_NAME,
                                               OCI_DEFAULT, OCI_PTYPE_TYPE, dsc_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDescribeAny(svc_, err_, name, 6, OCI_OTYPE_NAME, OCI_DEFAULT,
                                               OCI_PTYPE_TYPE, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIDescribeAny(svc_, nullptr, name, 6, OCI_OTYPE_NAME, OCI_DEFAULT, OCI_PTYPE_TYPE,
                           dsc_));
  EXPECT_EQ(OCI_ERROR, OCIDescribeAny(svc_, err_, nullptr, 6, OCI_OTYPE_NAME, OCI_DEFAULT,
                                      OCI_PTYPE_TYPE, dsc_));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIDescribeAny(svc_, err_, name, 0, OCI_OTYPE_NAME, OCI_DEFAULT,
                                      OCI_PTYPE_TYPE, dsc_));
  EXPECT_EQ(21560, FirstCode(err_));
  void* p = nullptr;
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIParamGet(nullptr, OCI_DTYPE_PARAM, err_, &p, 1));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIAttrGet(nullptr, OCI_DTYPE_PARAM, &p, nullptr, OCI_ATTR_NAME,
                                           err_));
  // Nothing described yet.
  EXPECT_EQ(OCI_ERROR, OCIAttrGet(dsc_, OCI_HTYPE_DESCRIBE, &p, nullptr, OCI_ATTR_PARAM, err_));
  EXPECT_EQ(24334, FirstCode(err_));
}

TEST_F(DescribeTest, AttributeOfAnotherParameterKindIsIllegal) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  OCIParam* top = Describe("ADDR_T");
  OCITypeCode code = 0;
  EXPECT_EQ(OCI_ERROR, OCIAttrGet(top, OCI_DTYPE_PARAM, &code, nullptr,
                                  OCI_ATTR_COLLECTION_TYPECODE, err_));
  EXPECT_EQ(24315, FirstCode(err_));
  ub4 elems = 0;
  EXPECT_EQ(OCI_ERROR, OCIAttrGet(AttributeAt(top, 1), OCI_DTYPE_PARAM, &elems, nullptr,
                                  OCI_ATTR_NUM_ELEMS, err_));
  EXPECT_EQ(24315, FirstCode(err_));
}

TEST_F(DescribeTest, ParametersOfAFreedDescribeHandleAreRefused) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  OCIParam* top = Describe("ADDR_T");
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(dsc_, OCI_HTYPE_DESCRIBE));
  OraText* name = nullptr;
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIAttrGet(top, OCI_DTYPE_PARAM, &name, nullptr, OCI_ATTR_NAME, err_));
}

TEST_F(DescribeTest, DescribedTypeOutlivesItsDrop) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  OCIParam* top = Describe("ADDR_T");
  MustExec("DROP TYPE ADDR_T");
  EXPECT_EQ("STREET", TextAttr(AttributeAt(top, 1), OCI_ATTR_NAME));
}

}  // namespace
}  // namespace ocimem_test
