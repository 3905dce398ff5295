// The mapping from a described member to its record, for every type code, including the
// ones that CREATE TYPE on the in-memory OCI cannot make (binary floats, booleans, opaque
// types, the integer codes of other languages).
#include <gtest/gtest.h>

#include <string>

#include "scalar_def.h"

namespace coldef {
namespace {

struct MapCase {
  const char* label;
  OCITypeCode typecode;
  ub1 charset_form;
  ub2 data_size;
  ub1 precision;
  sb1 scale;
  ub1 fs_precision;
  ub1 lf_precision;
  // Expected record fields.
  unsigned short data_type;
  short ext_type;
  unsigned display_size;
  unsigned long def_precision;
  short def_scale;
};

class ScalarDefTest : public ::testing::TestWithParam<MapCase> {};

TEST_P(ScalarDefTest, FillsTheRecord) {
  const MapCase& c = GetParam();
  MemberDescription m;
  m.name = "A";
  m.typecode = c.typecode;
  m.charset_form = c.charset_form;
  m.data_size = c.data_size;
  m.precision = c.precision;
  m.scale = c.scale;
  m.fs_precision = c.fs_precision;
  m.lf_precision = c.lf_precision;
  Column_Def def{};
  FillScalarDef(m, &def);
  EXPECT_EQ(COLDEF_DEFINED, def.Flags);
  EXPECT_EQ(c.data_type, def.DataType);
  EXPECT_EQ(c.ext_type, def.ExtType);
  EXPECT_EQ(c.data_size, def.DataSize);
  EXPECT_EQ(c.display_size, def.DisplaySize);
  EXPECT_EQ(c.def_precision, def.Precision);
  EXPECT_EQ(c.def_scale, def.Scale);
  EXPECT_EQ(nullptr, def.ColumnName);  // names and links are the builder's
  EXPECT_EQ(nullptr, def.TypeName);
  EXPECT_EQ(0, def.InCollection);
}

constexpr ub1 kImplicit = SQLCS_IMPLICIT;
constexpr ub1 kNational = SQLCS_NCHAR;
constexpr unsigned kZone = 1 + kZoneRegionRoom + 1 + kZoneAbbreviationRoom;

INSTANTIATE_TEST_SUITE_P(
    TypeCodes, ScalarDefTest,
    ::testing::Values(
        // label, typecode, form, size, prec, scale, fs, lf -> type, ext, display, prec, scale
        MapCase{"Varchar2", OCI_TYPECODE_VARCHAR2, kImplicit, 30, 0, 0, 0, 0, SQLT_CHR, SQLT_CHR,
                0, 0, 0},
        MapCase{"Varchar", OCI_TYPECODE_VARCHAR, kImplicit, 8, 0, 0, 0, 0, SQLT_CHR, SQLT_CHR, 0,
                0, 0},
        MapCase{"Char", OCI_TYPECODE_CHAR, kImplicit, 3, 0, 0, 0, 0, SQLT_AFC, SQLT_AFC, 0, 0, 0},
        MapCase{"NVarchar2", OCI_TYPECODE_VARCHAR2, kNational, 10, 0, 0, 0, 0,
                OCI_TYPECODE_NVARCHAR2, OCI_TYPECODE_NVARCHAR2, 0, 0, 0},
        MapCase{"NChar", OCI_TYPECODE_CHAR, kNational, 4, 0, 0, 0, 0, OCI_TYPECODE_NCHAR,
                OCI_TYPECODE_NCHAR, 0, 0, 0},
        MapCase{"Clob", OCI_TYPECODE_CLOB, kImplicit, 0, 0, 0, 0, 0, SQLT_CLOB, SQLT_CLOB, 0, 0, 0},
        MapCase{"NClob", OCI_TYPECODE_CLOB, kNational, 0, 0, 0, 0, 0, OCI_TYPECODE_NCLOB,
                OCI_TYPECODE_NCLOB, 0, 0, 0},
        MapCase{"Blob", OCI_TYPECODE_BLOB, 0, 0, 0, 0, 0, 0, SQLT_BLOB, SQLT_BLOB, 0, 0, 0},
        MapCase{"Bfile", OCI_TYPECODE_BFILE, 0, 0, 0, 0, 0, 0, SQLT_BFILEE, SQLT_BFILEE, 0, 0, 0},
        MapCase{"Raw", OCI_TYPECODE_RAW, 0, 16, 0, 0, 0, 0, SQLT_BIN, SQLT_BIN, 0, 0, 0},
        MapCase{"Ref", OCI_TYPECODE_REF, 0, 0, 0, 0, 0, 0, SQLT_REF, SQLT_REF, 0, 0, 0},
        MapCase{"Number", OCI_TYPECODE_NUMBER, 0, 22, 0, -127, 0, 0, SQLT_NUM, SQLT_STR, 0, 0,
                -127},
        MapCase{"NumberPS", OCI_TYPECODE_NUMBER, 0, 22, 12, -3, 0, 0, SQLT_NUM, SQLT_STR, 0, 12,
                -3},
        MapCase{"Float", OCI_TYPECODE_FLOAT, 0, 22, 126, -127, 0, 0, SQLT_NUM, SQLT_STR, 0, 126,
                -127},
        MapCase{"Integer", OCI_TYPECODE_INTEGER, 0, 22, 38, 0, 0, 0, SQLT_NUM, SQLT_STR, 0, 38, 0},
        MapCase{"Decimal", OCI_TYPECODE_DECIMAL, 0, 22, 9, 2, 0, 0, SQLT_NUM, SQLT_STR, 0, 9, 2},
        MapCase{"Real", OCI_TYPECODE_REAL, 0, 22, 63, -127, 0, 0, SQLT_NUM, SQLT_STR, 0, 63, -127},
        MapCase{"Double", OCI_TYPECODE_DOUBLE, 0, 22, 126, -127, 0, 0, SQLT_NUM, SQLT_STR, 0, 126,
                -127},
        MapCase{"Smallint", OCI_TYPECODE_SMALLINT, 0, 22, 38, 0, 0, 0, SQLT_NUM, SQLT_STR, 0, 38,
                0},
        MapCase{"Octet", OCI_TYPECODE_OCTET, 0, 22, 0, 0, 0, 0, SQLT_NUM, SQLT_STR, 0, 0, 0},
        MapCase{"Signed8", OCI_TYPECODE_SIGNED8, 0, 22, 0, 0, 0, 0, SQLT_NUM, SQLT_STR, 0, 0, 0},
        MapCase{"Signed16", OCI_TYPECODE_SIGNED16, 0, 22, 0, 0, 0, 0, SQLT_NUM, SQLT_STR, 0, 0, 0},
        MapCase{"Signed32", OCI_TYPECODE_SIGNED32, 0, 22, 0, 0, 0, 0, SQLT_NUM, SQLT_STR, 0, 0, 0},
        MapCase{"Unsigned8", OCI_TYPECODE_UNSIGNED8, 0, 22, 0, 0, 0, 0, SQLT_NUM, SQLT_STR, 0, 0,
                0},
        MapCase{"Unsigned16", OCI_TYPECODE_UNSIGNED16, 0, 22, 0, 0, 0, 0, SQLT_NUM, SQLT_STR, 0, 0,
                0},
        MapCase{"Unsigned32", OCI_TYPECODE_UNSIGNED32, 0, 22, 0, 0, 0, 0, SQLT_NUM, SQLT_STR, 0, 0,
                0},
        MapCase{"Date", OCI_TYPECODE_DATE, 0, 7, 0, 0, 0, 0, SQLT_DAT, SQLT_DAT, 19, 0, 0},
        MapCase{"Timestamp6", OCI_TYPECODE_TIMESTAMP, 0, 11, 0, 0, 6, 0, SQLT_TIMESTAMP, SQLT_STR,
                26, 0, 6},
        MapCase{"Timestamp0", OCI_TYPECODE_TIMESTAMP, 0, 11, 0, 0, 0, 0, SQLT_TIMESTAMP, SQLT_STR,
                19, 0, 0},
        MapCase{"TimestampTz9", OCI_TYPECODE_TIMESTAMP_TZ, 0, 13, 0, 0, 9, 0, SQLT_TIMESTAMP_TZ,
                SQLT_STR, 29 + kZone, 0, 9},
        MapCase{"TimestampLtz1", OCI_TYPECODE_TIMESTAMP_LTZ, 0, 11, 0, 0, 1, 0,
                SQLT_TIMESTAMP_LTZ, SQLT_STR, 21, 0, 1},
        // A YEAR TO MONTH interval has no fraction, whatever describe says of one.
        MapCase{"IntervalYm9", OCI_TYPECODE_INTERVAL_YM, 0, 5, 0, 0, 6, 9, SQLT_INTERVAL_YM,
                SQLT_STR, 13, 9, 0},
        MapCase{"IntervalDs9x9", OCI_TYPECODE_INTERVAL_DS, 0, 11, 0, 0, 9, 9, SQLT_INTERVAL_DS,
                SQLT_STR, 29, 9, 9},
        MapCase{"IntervalDs2x0", OCI_TYPECODE_INTERVAL_DS, 0, 11, 0, 0, 0, 2, SQLT_INTERVAL_DS,
                SQLT_STR, 12, 2, 0},
        // Codes the adapter does not convert keep their own number.
        MapCase{"BinaryFloat", OCI_TYPECODE_BFLOAT, 0, 4, 0, 0, 0, 0, OCI_TYPECODE_BFLOAT,
                OCI_TYPECODE_BFLOAT, 0, 0, 0},
        MapCase{"BinaryDouble", OCI_TYPECODE_BDOUBLE, 0, 8, 0, 0, 0, 0, OCI_TYPECODE_BDOUBLE,
                OCI_TYPECODE_BDOUBLE, 0, 0, 0},
        MapCase{"Boolean", OCI_TYPECODE_BOOLEAN, 0, 1, 0, 0, 0, 0, OCI_TYPECODE_BOOLEAN,
                OCI_TYPECODE_BOOLEAN, 0, 0, 0},
        MapCase{"Opaque", OCI_TYPECODE_OPAQUE, 0, 0, 0, 0, 0, 0, OCI_TYPECODE_OPAQUE,
                OCI_TYPECODE_OPAQUE, 0, 0, 0},
        MapCase{"Urowid", OCI_TYPECODE_UROWID, 0, 0, 0, 0, 0, 0, OCI_TYPECODE_UROWID,
                OCI_TYPECODE_UROWID, 0, 0, 0},
        MapCase{"Time", OCI_TYPECODE_TIME, 0, 0, 0, 0, 0, 0, OCI_TYPECODE_TIME, OCI_TYPECODE_TIME,
                0, 0, 0}),
    [](const ::testing::TestParamInfo<MapCase>& info) { return std::string(info.param.label); });

TEST(ScalarDefKinds, ObjectsAndCollectionsAreNotScalars) {
  EXPECT_TRUE(IsObjectCode(OCI_TYPECODE_OBJECT));
  EXPECT_FALSE(IsObjectCode(OCI_TYPECODE_NAMEDCOLLECTION));
  EXPECT_TRUE(IsCollectionCode(OCI_TYPECODE_NAMEDCOLLECTION));
  EXPECT_FALSE(IsCollectionCode(OCI_TYPECODE_VARRAY));  // a collection's own kind, not a member
  EXPECT_FALSE(IsNumericCode(OCI_TYPECODE_RAW));
  EXPECT_TRUE(IsNumericCode(OCI_TYPECODE_UNSIGNED8));  // 23: a number, not RAW
}

TEST(ScalarDefKinds, DescribeAttributesReadPerTypeCode) {
  EXPECT_TRUE(HasCharsetForm(OCI_TYPECODE_CLOB));
  EXPECT_FALSE(HasCharsetForm(OCI_TYPECODE_BLOB));
  EXPECT_TRUE(HasFsPrecision(OCI_TYPECODE_TIMESTAMP_LTZ));
  EXPECT_TRUE(HasFsPrecision(OCI_TYPECODE_INTERVAL_DS));
  EXPECT_FALSE(HasFsPrecision(OCI_TYPECODE_INTERVAL_YM));
  EXPECT_TRUE(HasLfPrecision(OCI_TYPECODE_INTERVAL_YM));
  EXPECT_FALSE(HasLfPrecision(OCI_TYPECODE_TIMESTAMP));
}

}  // namespace
}  // namespace coldef
