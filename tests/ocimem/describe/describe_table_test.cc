// OCIDescribeAny of tables: the table parameter, its column list and every column
// attribute, for relational and object tables; the kinds of object describe tells apart.
#include <string>

#include "describe_fixture.h"

namespace ocimem_test {
namespace {

class DescribeTableTest : public DescribeFixture {
 protected:
  void SetUp() override {
    DescribeFixture::SetUp();
    MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30), ZIP NUMBER(5))");
    MustExec("CREATE TYPE TAG_NT AS TABLE OF VARCHAR2(10)");
  }
  OCIParam* Columns(OCIParam* table) { return Attr<OCIParam*>(table, OCI_ATTR_LIST_COLUMNS); }
};

// decisions DS6, DS7, DS9: DATA_TYPE of a column is Oracle's internal code (180..183 and 231 for datetime
// and interval columns, 111 for REF, 108 for object and collection columns); DATA_SIZE,
// PRECISION and SCALE are those of a type attribute of the same type (0 bytes for LOB, REF,
// object and collection columns); character set ids are AL32UTF8 (873) and, for national
// character columns, AL16UTF16 (2000).
const ColumnCase kColumns[] = {
    {"ID", 2, 22, 10, 0, 0, "", 0, 0, 0, 0},
    {"NAME", 1, 80, 0, 0, 0, "", 1, 20, 1, 873},
    {"CODE", 96, 3, 0, 0, 1, "", 0, 3, 1, 873},
    {"NOTE", 1, 20, 0, 0, 1, "", 1, 10, 2, 2000},
    {"AMOUNT", 2, 22, 8, 2, 1, "", 0, 0, 0, 0},
    {"QTY", 2, 22, 38, 0, 1, "", 0, 0, 0, 0},
    {"RATIO", 2, 22, 126, -127, 1, "", 0, 0, 0, 0},
    {"PLAIN", 2, 22, 0, -127, 1, "", 0, 0, 0, 0},
    {"CREATED", 12, 7, 0, 0, 1, "", 0, 0, 0, 0},
    {"TS", 180, 11, 0, 3, 1, "", 0, 0, 0, 0},
    {"TZ", 181, 13, 0, 6, 1, "", 0, 0, 0, 0},
    {"LTZ", 231, 11, 0, 6, 1, "", 0, 0, 0, 0},
    {"YM", 182, 5, 2, 0, 1, "", 0, 0, 0, 0},
    {"SPAN", 183, 11, 3, 2, 1, "", 0, 0, 0, 0},
    {"PIC", 23, 16, 0, 0, 1, "", 0, 0, 0, 0},
    {"DOC", 112, 0, 0, 0, 1, "", 0, 0, 1, 873},
    {"NDOC", 112, 0, 0, 0, 1, "", 0, 0, 2, 2000},
    {"IMG", 113, 0, 0, 0, 1, "", 0, 0, 0, 0},
    {"F", 114, 0, 0, 0, 1, "", 0, 0, 0, 0},
    {"ADDR", 108, 0, 0, 0, 1, "ADDR_T", 0, 0, 0, 0},
    {"TAGS", 108, 0, 0, 0, 1, "TAG_NT", 0, 0, 0, 0},
    {"R", 111, 0, 0, 0, 1, "ADDR_T", 0, 0, 0, 0},
};

TEST_F(DescribeTableTest, RelationalTableReportsEveryColumn) {
  MustExec(
      "CREATE TABLE ITEMS (ID NUMBER(10) PRIMARY KEY, NAME VARCHAR2(20 CHAR) NOT NULL, "
      "CODE CHAR(3), NOTE NVARCHAR2(10), AMOUNT NUMBER(8,2), QTY INTEGER, RATIO FLOAT, "
      "PLAIN NUMBER, CREATED DATE, TS TIMESTAMP(3), TZ TIMESTAMP WITH TIME ZONE, "
      "LTZ TIMESTAMP WITH LOCAL TIME ZONE, YM INTERVAL YEAR TO MONTH, "
      "SPAN INTERVAL DAY(3) TO SECOND(2), PIC RAW(16), DOC CLOB, NDOC NCLOB, IMG BLOB, "
      "F BFILE, ADDR ADDR_T, TAGS TAG_NT, R REF ADDR_T) NESTED TABLE TAGS STORE AS ITEM_TAGS");
  OCIParam* table = Describe("ITEMS", OCI_PTYPE_TABLE);
  EXPECT_EQ(OCI_PTYPE_TABLE, Attr<ub1>(table, OCI_ATTR_PTYPE));
  const ub2 count = sizeof kColumns / sizeof kColumns[0];
  ASSERT_EQ(count, Attr<ub2>(table, OCI_ATTR_NUM_COLS));
  OCIParam* list = Columns(table);
  EXPECT_EQ(OCI_PTYPE_LIST, Attr<ub1>(list, OCI_ATTR_PTYPE));
  for (ub4 pos = 1; pos <= count; ++pos) {
    const ColumnCase& c = kColumns[pos - 1];
    OCIParam* col = Item(list, pos);
    ASSERT_NE(nullptr, col);
    SCOPED_TRACE(c.name);
    ExpectColumn(col, c);
  }
  void* past = nullptr;
  EXPECT_EQ(OCI_NO_DATA, OCIParamGet(list, OCI_DTYPE_PARAM, err_, &past, count + 1u));
  EXPECT_EQ(nullptr, past);
}

TEST_F(DescribeTableTest, DatetimeColumnsReportTheirPrecisions) {
  MustExec("CREATE TABLE T (TS TIMESTAMP(3), SPAN INTERVAL DAY(4) TO SECOND(1))");
  OCIParam* list = Columns(Describe("T", OCI_PTYPE_TABLE));
  EXPECT_EQ(3, Attr<ub1>(Item(list, 1), OCI_ATTR_FSPRECISION));
  EXPECT_EQ(4, Attr<ub1>(Item(list, 2), OCI_ATTR_LFPRECISION));
  EXPECT_EQ(1, Attr<ub1>(Item(list, 2), OCI_ATTR_FSPRECISION));
}

TEST_F(DescribeTableTest, TableLevelAttributes) {
  MustExec("CREATE TABLE T (ID NUMBER, A ADDR_T)");
  OCIParam* table = Describe("T", OCI_PTYPE_TABLE);
  EXPECT_EQ("T", TextAttr(table, OCI_ATTR_OBJ_NAME));
  EXPECT_EQ("SCOTT", TextAttr(table, OCI_ATTR_OBJ_SCHEMA));
  for (ub4 attr : {OCI_ATTR_IS_TYPED, OCI_ATTR_IS_TEMPORARY, OCI_ATTR_CLUSTERED,
                   OCI_ATTR_PARTITIONED, OCI_ATTR_INDEX_ONLY}) {
    EXPECT_EQ(0, Attr<ub1>(table, attr)) << attr;
  }
  // decision DS5: a relational table has no type, so no REF_TDO.
  EXPECT_EQ(24315, AttrError(table, OCI_ATTR_REF_TDO));
  // Attributes of types and of columns are illegal on a table.
  for (ub4 attr : {OCI_ATTR_NAME, OCI_ATTR_TYPECODE, OCI_ATTR_VERSION, OCI_ATTR_DATA_TYPE,
                   OCI_ATTR_LIST_TYPE_ATTRS, OCI_ATTR_IS_NULL}) {
    EXPECT_EQ(24315, AttrError(table, attr)) << attr;
  }
  // The described object's name is the top parameter's only.
  EXPECT_EQ(24315, AttrError(Item(Columns(table), 1), OCI_ATTR_OBJ_NAME));
}

TEST_F(DescribeTableTest, ObjectTableShowsTheAttributesOfItsType) {
  MustExec("CREATE TABLE HOMES OF ADDR_T (ZIP PRIMARY KEY)");
  OCIParam* table = Describe("HOMES", OCI_PTYPE_TABLE);
  EXPECT_EQ(1, Attr<ub1>(table, OCI_ATTR_IS_TYPED));
  ASSERT_EQ(2, Attr<ub2>(table, OCI_ATTR_NUM_COLS));
  OCIParam* street = Item(Columns(table), 1);
  OCIParam* zip = Item(Columns(table), 2);
  EXPECT_EQ("STREET", TextAttr(street, OCI_ATTR_NAME));
  EXPECT_EQ(1, Attr<ub2>(street, OCI_ATTR_DATA_TYPE));
  EXPECT_EQ(30, Attr<ub2>(street, OCI_ATTR_DATA_SIZE));
  EXPECT_EQ(1, Attr<ub1>(street, OCI_ATTR_IS_NULL));
  EXPECT_EQ("ZIP", TextAttr(zip, OCI_ATTR_NAME));
  EXPECT_EQ(5, Attr<ub1>(zip, OCI_ATTR_PRECISION));
  EXPECT_EQ(0, Attr<ub1>(zip, OCI_ATTR_IS_NULL));  // key attributes are NOT NULL
  OCIRef* ref = Attr<OCIRef*>(table, OCI_ATTR_REF_TDO);
  ASSERT_NE(nullptr, ref);
  ASSERT_EQ(OCI_SUCCESS, OCIDescribeAny(svc_, err_, ref, 0, OCI_OTYPE_REF, OCI_DEFAULT,
                                        OCI_PTYPE_TYPE, dsc_))
      << FirstError(err_);
  EXPECT_EQ("ADDR_T", TextAttr(Top(), OCI_ATTR_NAME));
}

TEST_F(DescribeTableTest, ObjectKindsAreToldApart) {
  MustExec("CREATE TABLE T (ID NUMBER)");
  // OCI_PTYPE_UNK finds either kind; a schema may be given.
  EXPECT_EQ(OCI_PTYPE_TABLE, Attr<ub1>(Describe("T", OCI_PTYPE_UNK), OCI_ATTR_PTYPE));
  EXPECT_EQ(OCI_PTYPE_TYPE, Attr<ub1>(Describe("ADDR_T", OCI_PTYPE_UNK), OCI_ATTR_PTYPE));
  EXPECT_EQ(1, Attr<ub2>(Describe("SCOTT.T", OCI_PTYPE_TABLE), OCI_ATTR_NUM_COLS));
  // decision DS1: a name of another kind than the one asked for is not found (a table asked
  // for as a view included).
  EXPECT_EQ(OCI_ERROR, DescribeAs("T", OCI_PTYPE_TYPE));
  EXPECT_EQ("ORA-04043: object T does not exist", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, DescribeAs("ADDR_T", OCI_PTYPE_TABLE));
  EXPECT_EQ("ORA-04043: object ADDR_T does not exist", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, DescribeAs("T", OCI_PTYPE_VIEW));
  EXPECT_EQ("ORA-04043: object T does not exist", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, DescribeAs("NOPE", OCI_PTYPE_TABLE));
  EXPECT_EQ("ORA-04043: object NOPE does not exist", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, DescribeAs("OTHER.T", OCI_PTYPE_TABLE));
  EXPECT_EQ("ORA-04043: object OTHER.T does not exist", FirstError(err_));
  // Other kinds of schema object are not described.
  EXPECT_EQ(OCI_ERROR, DescribeAs("T", OCI_PTYPE_PROC));
  EXPECT_EQ("ORA-24300: bad value for mode", FirstError(err_));
  // A TDO pointer names a type, never a table.
  EXPECT_EQ(OCI_ERROR, OCIDescribeAny(svc_, err_, TypeByName("ADDR_T"), 0, OCI_OTYPE_PTR,
                                      OCI_DEFAULT, OCI_PTYPE_TABLE, dsc_));
  EXPECT_EQ("ORA-04043: object ADDR_T does not exist", FirstError(err_));
}

TEST_F(DescribeTableTest, DescribedTableOutlivesItsDrop) {
  MustExec("CREATE TABLE T (ID NUMBER NOT NULL, NAME VARCHAR2(5))");
  OCIParam* table = Describe("T", OCI_PTYPE_TABLE);
  MustExec("DROP TABLE T");
  EXPECT_EQ("NAME", TextAttr(Item(Columns(table), 2), OCI_ATTR_NAME));
  EXPECT_EQ(0, Attr<ub1>(Item(Columns(table), 1), OCI_ATTR_IS_NULL));
  EXPECT_EQ(OCI_ERROR, DescribeAs("T", OCI_PTYPE_TABLE));
  EXPECT_EQ(4043, FirstCode(err_));
}

TEST_F(DescribeTableTest, ParametersGoWithTheirDescribeHandle) {
  MustExec("CREATE TABLE T (ID NUMBER)");
  OCIParam* table = Describe("T", OCI_PTYPE_TABLE);
  OCIParam* column = Item(Columns(table), 1);
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(dsc_, OCI_HTYPE_DESCRIBE));
  dsc_ = nullptr;
  ub2 type = 0;
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIAttrGet(column, OCI_DTYPE_PARAM, &type, nullptr, OCI_ATTR_DATA_TYPE, err_));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIAttrGet(table, OCI_DTYPE_PARAM, &type, nullptr, OCI_ATTR_NUM_COLS, err_));
}

TEST_F(DescribeTableTest, FaultedAttrGetWritesNothing) {
  MustExec("CREATE TABLE T (ID NUMBER)");
  OCIParam* table = Describe("T", OCI_PTYPE_TABLE);
  const sb4 codes[] = {24315};
  const char* const texts[] = {"illegal attribute type"};
  ocimemFaultArm("OCIAttrGet", 1, OCI_ERROR, codes, texts, 1);
  ub2 cols = 99;
  EXPECT_EQ(OCI_ERROR, OCIAttrGet(table, OCI_DTYPE_PARAM, &cols, nullptr, OCI_ATTR_NUM_COLS, err_));
  EXPECT_EQ("ORA-24315: illegal attribute type", FirstError(err_));
  EXPECT_EQ(99, cols);
  EXPECT_EQ(1, Attr<ub2>(table, OCI_ATTR_NUM_COLS));
}

}  // namespace
}  // namespace ocimem_test
