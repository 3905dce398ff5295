// One scalar value to its text: every type branch, its null form, its trace
// lines and its refusals.
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class FieldToTextTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    trace_.SetLevel(2);
    MustExec("CREATE TYPE f_all_t AS OBJECT (vc VARCHAR2(40), ch CHAR(5), n NUMBER, "
             "n102 NUMBER(10,2), n5 NUMBER(5), fl FLOAT(10), d DATE, "
             "ts TIMESTAMP(6), ts0 TIMESTAMP(0), tstz TIMESTAMP(3) WITH TIME ZONE, "
             "tsltz TIMESTAMP(6) WITH LOCAL TIME ZONE, iym INTERVAL YEAR(4) TO MONTH, "
             "ids INTERVAL DAY(3) TO SECOND(4), r RAW(20), c CLOB, b BLOB)");
    inst_ = NewObject("F_ALL_T");
  }

  // Writes the one attribute under the given definition, as a list of one
  // record at an address of its own, and returns the stream; the trace is
  // cleared first.
  std::string WriteOne(const Column_Def& def, int* pRc = nullptr) {
    lists_.emplace_back(def);
    lists_.back().Next = nullptr;
    Column_Def* pList = &lists_.back();
    ClearStream();
    ClearTrace();
    // A list may describe the first attributes of a type only.
    const int rc = Write(pList, inst_);
    if (pRc != nullptr) *pRc = rc;
    return Stream();
  }

  Column_Def Def(const char* pszName, unsigned short nType, short nExt = 0,
                 unsigned long nDataSize = 0, unsigned nDisplay = 0, unsigned long nPrecision = 0,
                 short nScale = 0) {
    Column_Def def;
    std::memset(&def, 0, sizeof def);
    def.Flags = COLDEF_DEFINED;
    def.ColumnName = const_cast<char*>(pszName);
    def.DataType = nType;
    def.ExtType = nExt;
    def.DataSize = nDataSize;
    def.DisplaySize = nDisplay;
    def.Precision = nPrecision;
    def.Scale = nScale;
    return def;
  }

  Instance inst_;
  std::deque<Column_Def> lists_;
};

TEST_F(FieldToTextTest, TextIsWrittenWithReleasesAndTracedWithItsWrittenSize) {
  SetText(inst_, {"VC"}, "a|b!c");
  EXPECT_EQ("a!|b!!c", WriteOne(Def("VC", SQLT_CHR, 1, 40)));
  EXPECT_EQ("Processing TEXT field...\nTEXT: size = 7\n", Trace());
}

TEST_F(FieldToTextTest, NullTextWritesNothing) {
  EXPECT_EQ("", WriteOne(Def("VC", SQLT_CHR, 1, 40)));
  EXPECT_EQ("Processing TEXT field...\nTEXT: NULL\n", Trace());
}

TEST_F(FieldToTextTest, CharIsWrittenAsItIsHeld) {
  SetText(inst_, {"CH"}, "ab");
  // CHAR(5) values are held blank-padded by Oracle; the adapter writes what
  // is held.
  const std::string out = WriteOne(Def("CH", SQLT_AFC, 96, 5));
  EXPECT_EQ(0u, out.find("ab"));
}

TEST_F(FieldToTextTest, LongAndLongVarcharCodesAreText) {
  SetText(inst_, {"VC"}, "x]");
  EXPECT_EQ("x!]", WriteOne(Def("VC", SQLT_LNG, 1, 40)));
  EXPECT_EQ("x!]", WriteOne(Def("VC", SQLT_LVC, 1, 40)));
}

TEST_F(FieldToTextTest, TextHoldingSpecialStringsGetsOneReleaseEach) {
  SetText(inst_, {"VC"}, "|");
  EXPECT_EQ("!|", WriteOne(Def("VC", SQLT_CHR, 1, 40)));
  SetText(inst_, {"VC"}, "!");
  EXPECT_EQ("!!", WriteOne(Def("VC", SQLT_CHR, 1, 40)));
  SetText(inst_, {"VC"}, "a[b]");
  EXPECT_EQ("a![b!]", WriteOne(Def("VC", SQLT_CHR, 1, 40)));
  SetText(inst_, {"VC"}, "l1\r\nl2\n");
  EXPECT_EQ("l1!\r\nl2\n", WriteOne(Def("VC", SQLT_CHR, 1, 40)));
}

TEST_F(FieldToTextTest, NumberMaskFromPrecisionAndScale) {
  SetNumber(inst_, {"N102"}, "-1234.5");
  EXPECT_EQ("-1234.5", WriteOne(Def("N102", SQLT_NUM, 5, 22, 0, 10, 2)));
  EXPECT_EQ("Processing NUMBER field...\n"
            "NUMBER->TEXT: precision 10, scale 2, format \"FM99999999.99\", size = 7\n",
            Trace());
}

TEST_F(FieldToTextTest, NumberWithPrecisionAndNoScale) {
  SetNumber(inst_, {"N5"}, "12345");
  EXPECT_EQ("12345", WriteOne(Def("N5", SQLT_NUM, 5, 22, 0, 5, 0)));
  EXPECT_NE(std::string::npos, Trace().find("format \"FM99999\", size = 5"));
}

TEST_F(FieldToTextTest, NumberWithNegativeScale) {
  SetNumber(inst_, {"N"}, "1234500");
  EXPECT_EQ("1234500", WriteOne(Def("N", SQLT_NUM, 5, 22, 0, 5, -2)));
  EXPECT_NE(std::string::npos, Trace().find("format \"FM9999999\""));
}

TEST_F(FieldToTextTest, NumberWithZeroPrecisionAndScaleGetsTheBareMask) {
  SetNumber(inst_, {"N"}, "7");
  int rc = 0;
  // "FM" alone has no digit position, so Oracle cannot format the value:
  // the call fails and nothing reaches the stream.
  EXPECT_EQ("", WriteOne(Def("N", SQLT_NUM, 5, 22, 0, 0, 0), &rc));
  EXPECT_EQ(-24, rc);
  EXPECT_EQ("-24|CAdp::_OraFieldToStream|" + std::string(KelGetErrorText(-24)), LastException());
  EXPECT_EQ(0u, Trace().find("Processing NUMBER field...\n"
                             "Error (-1) returned by OCINumberToText, errcode=22065\n"
                             "ORA-22065: number to text translation for the given format causes "
                             "overflow\n"
                             "*ERR: in CAdp::_OraFieldToStream (-2)\n"))
      << Trace();
}

TEST_F(FieldToTextTest, NumberWithoutDeclaredScaleGetsTheLongMask) {
  SetNumber(inst_, {"N"}, "-0.000123");
  EXPECT_EQ("-.000123", WriteOne(Def("N", SQLT_NUM, 5, 22, 0, 0, -127)));
  const std::string mask = "FM" + std::string(28, '9') + "." + std::string(29, '9');
  EXPECT_NE(std::string::npos, Trace().find("format \"" + mask + "\", size = 8")) << Trace();
}

TEST_F(FieldToTextTest, MasksOfManyPrecisionsAlternateOnOneContext) {
  // Masks are kept by precision and scale; (10, 2) and (26, 2) share a
  // place among the kept ones, and each value still gets its own mask.
  SetNumber(inst_, {"N"}, "1234.5");
  const struct {
    unsigned long nPrecision;
    short nScale;
    const char* pszMask;
    const char* pszText;
  } kCases[] = {{10, 2, "FM99999999.99", "1234.5"},
                {26, 2, "FM999999999999999999999999.99", "1234.5"},
                {10, 2, "FM99999999.99", "1234.5"},
                {6, 0, "FM999999", "1235"},
                {26, 2, "FM999999999999999999999999.99", "1234.5"},
                {6, 1, "FM99999.9", "1234.5"},
                {6, 0, "FM999999", "1235"}};
  for (const auto& c : kCases) {
    EXPECT_EQ(c.pszText, WriteOne(Def("N", SQLT_NUM, 5, 22, 0, c.nPrecision, c.nScale)))
        << c.pszMask;
    EXPECT_NE(std::string::npos, Trace().find(std::string("format \"") + c.pszMask + "\""))
        << Trace();
  }
}

TEST_F(FieldToTextTest, MaskLongerThanAnyDeclaredNumberIsStillBuilt) {
  // No NUMBER Oracle declares has such a mask; a hand-made definition may.
  SetNumber(inst_, {"N"}, "-42");
  EXPECT_EQ("-42", WriteOne(Def("N", SQLT_NUM, 5, 22, 0, 150, 0)));
  EXPECT_NE(std::string::npos,
            Trace().find("format \"FM" + std::string(150, '9') + "\", size = 3"))
      << Trace();
  // Twice: nothing of the long mask was kept.
  EXPECT_EQ("-42", WriteOne(Def("N", SQLT_NUM, 5, 22, 0, 150, 0)));
}

TEST_F(FieldToTextTest, NumberWithScaleAboveItsPrecision) {
  SetNumber(inst_, {"N"}, "0.0012");
  EXPECT_EQ(".0012", WriteOne(Def("N", SQLT_NUM, 5, 22, 0, 2, 4)));
  EXPECT_NE(std::string::npos, Trace().find("format \"FM.9999\"")) << Trace();
}

TEST_F(FieldToTextTest, NumberAsRealPutsItsBinaryBytesOnTheStream) {
  SetNumber(inst_, {"N"}, "2.5");
  const std::string out = WriteOne(Def("N", SQLT_NUM, 4, 8));
  ASSERT_EQ(8u, out.size());
  double d = 0;
  std::memcpy(&d, out.data(), 8);
  EXPECT_EQ(2.5, d);
  EXPECT_EQ("Processing NUMBER field...\nNUMBER->REAL: size = 8\n", Trace());
  const std::string out4 = WriteOne(Def("N", SQLT_NUM, 4, 4));
  ASSERT_EQ(4u, out4.size());
  float f = 0;
  std::memcpy(&f, out4.data(), 4);
  EXPECT_EQ(2.5f, f);
}

TEST_F(FieldToTextTest, NullNumberWritesNothing) {
  EXPECT_EQ("", WriteOne(Def("N", SQLT_NUM, 5, 22, 0, 10, 2)));
  EXPECT_EQ("Processing NUMBER field...\nNUMBER: NULL\n", Trace());
}

TEST_F(FieldToTextTest, NumberOfAnotherExternalTypeIsRefused) {
  SetNumber(inst_, {"N"}, "1");
  int rc = 0;
  WriteOne(Def("N", SQLT_NUM, 3, 4), &rc);
  EXPECT_EQ(-1101, rc);
  EXPECT_EQ("-1101|CAdp::_OraFieldToStream|Unsupported data type", LastException());
  EXPECT_EQ("Processing NUMBER field...\n*ERROR: NUMBER type 3 not supported\n"
            "*ERR: in CAdp::_OraFieldToStream (-2)\n*ERR: in CAdp::_WriteStream (-2)\n"
            "*ERR: in adpProcessObject (-2)\n",
            Trace());
}

TEST_F(FieldToTextTest, DateInBothForms) {
  SetDate(inst_, {"D"}, "2001-02-03 04:05:06");
  EXPECT_EQ("2001-02-03 04:05:06", WriteOne(Def("D", SQLT_DAT, 12, 7, 19)));
  EXPECT_EQ("Processing DATE field...\nDATE: format YYYY-MM-DD HH24:MI:SS, size 19\n", Trace());
  EXPECT_EQ("03-FEB-01", WriteOne(Def("D", SQLT_DAT, 5, 9, 20)));
  EXPECT_EQ("Processing DATE field...\nDATE: format DD-MON-YY, size 9\n", Trace());
}

TEST_F(FieldToTextTest, NullDateWritesNothing) {
  EXPECT_EQ("", WriteOne(Def("D", SQLT_DAT, 12, 7, 19)));
  EXPECT_EQ("Processing DATE field...\nDATE: NULL\n", Trace());
}

TEST_F(FieldToTextTest, DateWithMismatchedTypeAndSizeIsRefused) {
  SetDate(inst_, {"D"}, "2001-02-03 04:05:06");
  int rc = 0;
  WriteOne(Def("D", SQLT_DAT, 12, 7, 20), &rc);
  EXPECT_EQ(-1101, rc);
  EXPECT_NE(std::string::npos, Trace().find("*ERROR: DATE type 12, size 20, not supported\n"));
  WriteOne(Def("D", SQLT_DAT, 5, 9, 19), &rc);
  EXPECT_EQ(-1101, rc);
  EXPECT_NE(std::string::npos, Trace().find("*ERROR: DATE type 5, size 19, not supported\n"));
}

TEST_F(FieldToTextTest, TimestampWithFractionalSeconds) {
  SetDateTime(inst_, {"TS"}, "2020-05-06 07:08:09.123456", "YYYY-MM-DD HH24:MI:SS.FF");
  EXPECT_EQ("2020-05-06 07:08:09.123456", WriteOne(Def("TS", SQLT_TIMESTAMP, 187, 11, 26, 0, 6)));
  EXPECT_EQ("Processing TIMESTAMP field...\n"
            "TIMESTAMP: format YYYY-MM-DD HH24:MI:SS.FF, size 26\n",
            Trace());
}

TEST_F(FieldToTextTest, TimestampWithoutFractionalSeconds) {
  SetDateTime(inst_, {"TS0"}, "2020-05-06 07:08:09", "YYYY-MM-DD HH24:MI:SS");
  EXPECT_EQ("2020-05-06 07:08:09", WriteOne(Def("TS0", SQLT_TIMESTAMP, 187, 11, 19, 0, 0)));
  EXPECT_NE(std::string::npos, Trace().find("format YYYY-MM-DD HH24:MI:SS, size 19"));
}

TEST_F(FieldToTextTest, TimestampWithTimeZoneCarriesTheZone) {
  SetDateTime(inst_, {"TSTZ"}, "2020-05-06 07:08:09.125 Europe/Paris",
              "YYYY-MM-DD HH24:MI:SS.FF TZR");
  EXPECT_EQ("2020-05-06 07:08:09.125 EUROPE/PARIS CEST",
            WriteOne(Def("TSTZ", SQLT_TIMESTAMP_TZ, 188, 13, 60, 0, 3)));
  EXPECT_NE(std::string::npos, Trace().find("format YYYY-MM-DD HH24:MI:SS.FF TZR TZD, size 41"));
}

TEST_F(FieldToTextTest, TimestampWithTimeZoneWithoutFraction) {
  SetDateTime(inst_, {"TSTZ"}, "2020-01-06 07:08:09 +02:00", "YYYY-MM-DD HH24:MI:SS TZR");
  EXPECT_EQ("2020-01-06 07:08:09 +02:00 ",
            WriteOne(Def("TSTZ", SQLT_TIMESTAMP_TZ, 188, 13, 60, 0, 0)).substr(0, 27));
}

TEST_F(FieldToTextTest, TimestampWithLocalTimeZoneIsWrittenWithoutZone) {
  SetDateTime(inst_, {"TSLTZ"}, "2020-05-06 07:08:09.5", "YYYY-MM-DD HH24:MI:SS.FF");
  EXPECT_EQ("2020-05-06 07:08:09.500000",
            WriteOne(Def("TSLTZ", SQLT_TIMESTAMP_LTZ, 232, 11, 26, 0, 6)));
  EXPECT_NE(std::string::npos, Trace().find("format YYYY-MM-DD HH24:MI:SS.FF, size 26"));
}

TEST_F(FieldToTextTest, NullTimestampWritesNothing) {
  EXPECT_EQ("", WriteOne(Def("TS", SQLT_TIMESTAMP, 187, 11, 26, 0, 6)));
  EXPECT_EQ("Processing TIMESTAMP field...\nTIMESTAMP: NULL\n", Trace());
}

TEST_F(FieldToTextTest, IntervalYearToMonth) {
  SetInterval(inst_, {"IYM"}, "-12-3");
  EXPECT_EQ("-0012-03", WriteOne(Def("IYM", SQLT_INTERVAL_YM, 189, 5, 8, 4, 0)));
  EXPECT_EQ("Processing INTERVAL field...\nINTERVAL: size 8\n", Trace());
}

TEST_F(FieldToTextTest, IntervalDayToSecond) {
  SetInterval(inst_, {"IDS"}, "3 04:05:06.789");
  EXPECT_EQ("+003 04:05:06.7890", WriteOne(Def("IDS", SQLT_INTERVAL_DS, 190, 11, 30, 3, 4)));
  EXPECT_EQ("Processing INTERVAL field...\nINTERVAL: size 18\n", Trace());
}

TEST_F(FieldToTextTest, NullIntervalWritesNothing) {
  EXPECT_EQ("", WriteOne(Def("IDS", SQLT_INTERVAL_DS, 190, 11, 30, 3, 4)));
  EXPECT_EQ("Processing INTERVAL field...\nINTERVAL: NULL\n", Trace());
}

TEST_F(FieldToTextTest, RawIsItsLengthABarAndItsBytes) {
  SetRaw(inst_, {"R"}, std::string("a|\0!", 4));
  EXPECT_EQ(std::string("4|a|\0!", 6), WriteOne(Def("R", SQLT_BIN, 23, 20)));
  EXPECT_EQ("Processing RAW field...\nRAW: size 4\n", Trace());
  EXPECT_EQ(std::string("4|a|\0!", 6), WriteOne(Def("R", SQLT_LBI, 24, 20)));
}

TEST_F(FieldToTextTest, EmptyRawWritesZeroAndBar) {
  SetRaw(inst_, {"R"}, "");
  EXPECT_EQ("0|", WriteOne(Def("R", SQLT_BIN, 23, 20)));
  EXPECT_EQ("Processing RAW field...\nRAW: size 0\n", Trace());
}

TEST_F(FieldToTextTest, NullRawWritesABar) {
  EXPECT_EQ("|", WriteOne(Def("R", SQLT_BIN, 23, 20)));
  EXPECT_EQ("Processing RAW field...\nRAW: NULL\n", Trace());
}

TEST_F(FieldToTextTest, NullClobWritesNothingAndNullBlobABar) {
  EXPECT_EQ("", WriteOne(Def("C", SQLT_CLOB, 112, 4000)));
  EXPECT_EQ("Processing LOB field...\nCLOB: NULL\n", Trace());
  EXPECT_EQ("|", WriteOne(Def("B", SQLT_BLOB, 113, 4000)));
  EXPECT_EQ("Processing LOB field...\nLOB: NULL\n", Trace());
}

TEST_F(FieldToTextTest, EmptyLobsOfANewInstance) {
  Mark(inst_, {"C"});
  Mark(inst_, {"B"});
  EXPECT_EQ("", WriteOne(Def("C", SQLT_CLOB, 112, 4000)));
  EXPECT_EQ("Processing LOB field...\nCLOB: size 0\n", Trace());
  EXPECT_EQ("0|", WriteOne(Def("B", SQLT_BLOB, 113, 4000)));
  EXPECT_EQ("Processing LOB field...\nLOB: size 0\n", Trace());
}

TEST_F(FieldToTextTest, BfileIsRefusedEvenWhenNull) {
  int rc = 0;
  EXPECT_EQ("", WriteOne(Def("C", SQLT_BFILEE, 114), &rc));
  EXPECT_EQ(-1101, rc);
  EXPECT_EQ("Processing BFILE field...\n*ERR: BFILE type not supported\n"
            "*ERR: in CAdp::_OraFieldToStream (-2)\n*ERR: in CAdp::_WriteStream (-2)\n"
            "*ERR: in adpProcessObject (-2)\n",
            Trace());
  EXPECT_EQ("-1101|CAdp::_OraFieldToStream|Unsupported data type", LastException());
}

TEST_F(FieldToTextTest, RefIsRefusedEvenWhenNull) {
  int rc = 0;
  WriteOne(Def("C", SQLT_REF, 110), &rc);
  EXPECT_EQ(-1101, rc);
  EXPECT_EQ(0u, Trace().find("Processing REF field...\n*ERR: REF type not supported\n"));
}

TEST_F(FieldToTextTest, UnknownTypeIsRefused) {
  int rc = 0;
  WriteOne(Def("VC", 100), &rc);
  EXPECT_EQ(-1101, rc);
  EXPECT_EQ(0u, Trace().find("Processing '100' field...\n*ERR: '100' type not supported\n"));
}

}  // namespace
}  // namespace adapter_test
