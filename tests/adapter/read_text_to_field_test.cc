// One field's text to its value: every converted type, the null field, the
// length limits of NUMBER and DATE text, the date masks chosen by the text's
// length, RAW lengths, release characters in text, large objects located
// only, and the types that are refused; each refusal with its code, last
// exception and trace, after which the context reads on.
#include <coldef.h>

#include <cstring>

#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class ReadFieldTest : public ReadTest {
 protected:
  void SetUp() override {
    ReadTest::SetUp();
    MustExec("CREATE TYPE f_all_t AS OBJECT (vc VARCHAR2(20), ch CHAR(3), n NUMBER, "
             "n82 NUMBER(8,2), d DATE, ts TIMESTAMP, ts0 TIMESTAMP(0), "
             "tstz TIMESTAMP(3) WITH TIME ZONE, tsltz TIMESTAMP WITH LOCAL TIME ZONE, "
             "iym INTERVAL YEAR TO MONTH, ids INTERVAL DAY TO SECOND, r RAW(8), c CLOB, "
             "b BLOB)");
    MustExec("CREATE TYPE f_one_t AS OBJECT (x VARCHAR2(10), y VARCHAR2(10))");
    MustExec("CREATE TYPE f_num_t AS OBJECT (n NUMBER, m NUMBER)");
    MustExec("CREATE TYPE f_date_t AS OBJECT (d DATE, m NUMBER)");
    MustExec("CREATE TYPE f_raw_t AS OBJECT (r RAW(10), t VARCHAR2(10))");
    MustExec("CREATE TYPE f_iv_t AS OBJECT (i INTERVAL DAY(2) TO SECOND(3), "
             "ts TIMESTAMP(3), m NUMBER)");
    MustExec("CREATE TYPE f_lob_t AS OBJECT (c CLOB, b BLOB, t VARCHAR2(10))");

    num_.Number("N", 38, 0);
    num_.Number("M", 38, 0);
    date_.Date("D");
    date_.Number("M", 38, 0);
    raw_.Raw("R", 10);
    raw_.Text("T", 10);
  }
  // The list goes after the context that looks at it.
  void TearDown() override {
    ReadTest::TearDown();
    coldefFree(all_);
  }

  Column_Def* All() {
    if (all_ == nullptr) {
      EXPECT_EQ(0, coldefDescribe(env_, err_, svc_, "SCOTT.F_ALL_T", &all_)) << FirstError();
    }
    return all_;
  }

  // The trace of a failure inside the conversion of a top-level field.
  static std::string FieldFailure() {
    return Scopes({"CAdp::_OraStreamToField", "CAdp::_ReadStream", "CAdp::ProcessStream",
                   "adpProcessStream"});
  }

  Column_Def* all_ = nullptr;
  DefList num_;
  DefList date_;
  DefList raw_;
};

const char kAll[] =
    "a!|b![c!]!!|xyz|-123.456|123456.78|1999-12-31 23:59:58|2020-02-29 01:02:03.123456|"
    "2020-02-29 01:02:03|2020-07-01 12:00:00.500 -05:30 |2020-07-01 12:00:00.250000|-03-04|"
    "+05 06:07:08.900000|4|\x01|]\xff|some clob|3|b|b";

TEST_F(ReadFieldTest, EveryConvertedTypeReadsItsValue) {
  OCIType* pTdo = Type("F_ALL_T");
  const std::string text(kAll, sizeof kAll - 1);
  ReadResult r = ReadBuffer(All(), text, pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(static_cast<long>(text.size()), r.nConsumed);
  EXPECT_EQ(1, r.nLobsPending);
  for (int i = 1; i <= 14; ++i) EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[i]) << "attribute " << i;
  EXPECT_EQ("a|b[c]!", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"VC"}))));
  EXPECT_EQ("-123.456", NumberOf(static_cast<OCINumber*>(AttrSlot(r, pTdo, {"N"}))));
  EXPECT_EQ("1999-12-31 23:59:58", DateOf(static_cast<OCIDate*>(AttrSlot(r, pTdo, {"D"}))));
  EXPECT_EQ(std::string("\x01|]\xff", 4), RawOf(*static_cast<OCIRaw**>(AttrSlot(r, pTdo, {"R"}))));
  // Written back, every value but the large objects (still empty until the
  // host runs the second pass) comes out as it went in.
  EXPECT_EQ(std::string("a!|b![c!]!!|xyz|-123.456|123456.78|1999-12-31 23:59:58|"
                        "2020-02-29 01:02:03.123456|2020-02-29 01:02:03|"
                        "2020-07-01 12:00:00.500 -05:30 |2020-07-01 12:00:00.250000|-03-04|"
                        "+05 06:07:08.900000|4|\x01|]\xff||0|"),
            WriteBack(All(), r, pTdo));
  EXPECT_EQ("", Trace());
}

TEST_F(ReadFieldTest, AnEmptyFieldIsNullForEveryTypeAndConsumesNothingButANullBlobsBar) {
  OCIType* pTdo = Type("F_ALL_T");
  // Thirteen delimiters between the fourteen fields, then the null BLOB's
  // own bar; the X after it is not taken.
  ReadResult r = ReadBuffer(All(), "||||||||||||||X", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(14, r.nConsumed);
  EXPECT_EQ(0, r.nLobsPending);
  for (int i = 1; i <= 14; ++i) EXPECT_EQ(OCI_IND_NULL, r.pInd[i]) << "attribute " << i;
}

TEST_F(ReadFieldTest, NullFieldsTraceTheirNullLines) {
  OCIType* pTdo = Type("F_ALL_T");
  trace_.SetLevel(2);
  ReadResult r = ReadBuffer(All(), "||||||||||||||", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(
      "Processing TEXT field...\nTEXT: NULL\n"
      "Processing TEXT field...\nTEXT: NULL\n"
      "Processing NUMBER field...\nNUMBER: NULL\n"
      "Processing NUMBER field...\nNUMBER: NULL\n"
      "Processing DATE field...\nDATE: NULL\n"
      "Processing TIMESTAMP field...\nTIMESTAMP: NULL\n"
      "Processing TIMESTAMP field...\nTIMESTAMP: NULL\n"
      "Processing TIMESTAMP field...\nTIMESTAMP: NULL\n"
      "Processing TIMESTAMP field...\nTIMESTAMP: NULL\n"
      "Processing INTERVAL field...\nINTERVAL: NULL\n"
      "Processing INTERVAL field...\nINTERVAL: NULL\n"
      "Processing RAW field...\nRAW: NULL\n"
      "Processing LOB field - first pass...\nLOB: NULL\n"
      "Processing LOB field - first pass...\nLOB: NULL\n",
      Trace());
}

TEST_F(ReadFieldTest, ANumberTextIsParsedWithAMaskOfItsOwnShape) {
  OCIType* pTdo = Type("F_NUM_T");
  trace_.SetLevel(2);
  ReadResult r = ReadStream(num_.Head(), "-1234.50|+7", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("-1234.5", NumberOf(static_cast<OCINumber*>(AttrSlot(r, pTdo, {"N"}))));
  EXPECT_EQ("7", NumberOf(static_cast<OCINumber*>(AttrSlot(r, pTdo, {"M"}))));
  EXPECT_EQ("Processing NUMBER field...\n"
            "TEXT->NUMBER: precision 38, scale 0, format \"S9999.99\", size = 8\n"
            "Processing NUMBER field...\n"
            "TEXT->NUMBER: precision 38, scale 0, format \"S9\", size = 2\n",
            Trace());
}

TEST_F(ReadFieldTest, ANumberAsABinaryRealTakesTheMachinesBytes) {
  DefList& defs = NewList();
  defs.Scalar("N", SQLT_NUM, 4, 8);
  defs.Number("M", 38, 0);
  const double dValue = 2.5;
  std::string text(reinterpret_cast<const char*>(&dValue), sizeof dValue);
  text += "|3";
  OCIType* pTdo = Type("F_NUM_T");
  ReadResult r = ReadBuffer(defs.Head(), text, pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("2.5", NumberOf(static_cast<OCINumber*>(AttrSlot(r, pTdo, {"N"}))));
  EXPECT_EQ("3", NumberOf(static_cast<OCINumber*>(AttrSlot(r, pTdo, {"M"}))));
  EXPECT_EQ(text, WriteBack(defs.Head(), r, pTdo));
}

TEST_F(ReadFieldTest, ABinaryRealIsTracedWithItsSize) {
  DefList& defs = NewList();
  defs.Scalar("N", SQLT_NUM, 4, 4);
  const float fValue = 0.75f;
  const std::string text(reinterpret_cast<const char*>(&fValue), sizeof fValue);
  trace_.SetLevel(2);
  OCIType* pTdo = Type("F_NUM_T");
  ReadResult r = ReadBuffer(defs.Head(), text, pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("0.75", NumberOf(static_cast<OCINumber*>(AttrSlot(r, pTdo, {"N"}))));
  EXPECT_EQ("Processing NUMBER field...\nREAL->NUMBER: size = 4\n", Trace());
}

TEST_F(ReadFieldTest, ANumberTextOf128BytesIsRefusedAfterItsBytesWereRead) {
  OCIType* pTdo = Type("F_NUM_T");
  ReadResult r = ReadStream(num_.Head(), std::string(128, '1') + "|5", pTdo);
  EXPECT_EQ(-1103, r.nRC);
  EXPECT_EQ(Exception(-1103, "CAdp::_OraStreamToField", "Bad format string"), LastException());
  EXPECT_EQ(FieldFailure(), Trace());
  EXPECT_EQ(128, stream_.Tell());
  EXPECT_EQ(nullptr, r.pInstance);

  ClearTrace();
  r = ReadStream(num_.Head(), std::string(20, '1') + "|5", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(std::string(20, '1') + "|5", WriteBack(num_.Head(), r, pTdo));
  EXPECT_EQ("", Trace());
}

TEST_F(ReadFieldTest, ANumberTextOf1024BytesIsReadAndThenRefusedAsTooLongForItsMask) {
  OCIType* pTdo = Type("F_NUM_T");
  ReadResult r = ReadStream(num_.Head(), std::string(1024, '1') + "|5", pTdo);
  EXPECT_EQ(-1103, r.nRC);
  EXPECT_EQ(Exception(-1103, "CAdp::_OraStreamToField", "Bad format string"), LastException());
  EXPECT_EQ(1024, stream_.Tell());
}

TEST_F(ReadFieldTest, ANumberTextOf1025BytesIsRefusedBeforeAnythingIsRead) {
  OCIType* pTdo = Type("F_NUM_T");
  ReadResult r = ReadStream(num_.Head(), std::string(1025, '1') + "|5", pTdo);
  EXPECT_EQ(-18, r.nRC);
  EXPECT_EQ(Exception(-18, "CAdp::_OraStreamToField"), LastException());
  EXPECT_EQ(FieldFailure(), Trace());
  EXPECT_EQ(0, stream_.Tell());

  ClearTrace();
  r = ReadStream(num_.Head(), "1|5", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("1|5", WriteBack(num_.Head(), r, pTdo));
}

TEST_F(ReadFieldTest, ADateTextOf1025BytesIsRefusedBeforeAnythingIsRead) {
  OCIType* pTdo = Type("F_DATE_T");
  ReadResult r = ReadStream(date_.Head(), "2001-02-03" + std::string(1015, ' ') + "|5", pTdo);
  EXPECT_EQ(-18, r.nRC);
  EXPECT_EQ(Exception(-18, "CAdp::_OraStreamToField"), LastException());
  EXPECT_EQ(FieldFailure(), Trace());
  EXPECT_EQ(0, stream_.Tell());

  ClearTrace();
  r = ReadStream(date_.Head(), "2001-02-03|5", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("2001-02-03 00:00:00|5", WriteBack(date_.Head(), r, pTdo));
}

TEST_F(ReadFieldTest, ADateOfTenBytesIsReadAsADayAlone) {
  OCIType* pTdo = Type("F_DATE_T");
  trace_.SetLevel(2);
  ReadResult r = ReadStream(date_.Head(), "2001-02-03", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("2001-02-03 00:00:00", DateOf(static_cast<OCIDate*>(AttrSlot(r, pTdo, {"D"}))));
  EXPECT_EQ("Processing DATE field...\nDATE: format YYYY-MM-DD, size 10\n"
            "Processing NUMBER field...\nNUMBER: NULL\n",
            Trace());
}

TEST_F(ReadFieldTest, ADateOfSixteenBytesIsReadToTheMinute) {
  OCIType* pTdo = Type("F_DATE_T");
  trace_.SetLevel(2);
  ReadResult r = ReadStream(date_.Head(), "2001-02-03 04:05", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("2001-02-03 04:05:00", DateOf(static_cast<OCIDate*>(AttrSlot(r, pTdo, {"D"}))));
  EXPECT_EQ("Processing DATE field...\nDATE: format YYYY-MM-DD HH24:MI, size 16\n"
            "Processing NUMBER field...\nNUMBER: NULL\n",
            Trace());
}

TEST_F(ReadFieldTest, ADateOfTwentyFiveBytesIsReadToTheSecondFromItsFirstNineteen) {
  OCIType* pTdo = Type("F_DATE_T");
  trace_.SetLevel(2);
  ReadResult r = ReadStream(date_.Head(), "2001-02-03 04:05:06.12345|7", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("2001-02-03 04:05:06", DateOf(static_cast<OCIDate*>(AttrSlot(r, pTdo, {"D"}))));
  EXPECT_EQ("Processing DATE field...\nDATE: format YYYY-MM-DD HH24:MI:SS, size 25\n"
            "Processing NUMBER field...\n"
            "TEXT->NUMBER: precision 38, scale 0, format \"9\", size = 1\n",
            Trace());
  EXPECT_EQ("2001-02-03 04:05:06|7", WriteBack(date_.Head(), r, pTdo));
}

TEST_F(ReadFieldTest, AShortDateWithDataSize9IsAcceptedHereAndOnOutput) {
  DefList& defs = NewList();
  defs.Scalar("D", SQLT_DAT, 5, 9, 20);
  OCIType* pTdo = Type("F_DATE_T");
  trace_.SetLevel(2);
  ReadResult r = ReadStream(defs.Head(), "03-FEB-01", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("2001-02-03 00:00:00", DateOf(static_cast<OCIDate*>(AttrSlot(r, pTdo, {"D"}))));
  EXPECT_EQ("Processing DATE field...\nDATE: format DD-MON-YY, size 9\n", Trace());
  EXPECT_EQ("03-FEB-01", WriteBack(defs.Head(), r, pTdo));
}

TEST_F(ReadFieldTest, AShortDateWithDataSize7IsRefusedHereOnly) {
  DefList& defs = NewList();
  defs.Scalar("D", SQLT_DAT, 5, 7, 20);
  OCIType* pTdo = Type("F_DATE_T");
  ReadResult r = ReadStream(defs.Head(), "03-FEB-01", pTdo);
  EXPECT_EQ(-1101, r.nRC);
  EXPECT_EQ(Exception(-1101, "CAdp::_OraStreamToField", "Unsupported data type"),
            LastException());
  EXPECT_EQ(FieldFailure(), Trace());

  ClearTrace();
  trace_.SetLevel(2);
  r = ReadStream(defs.Head(), "03-FEB-01", pTdo);
  EXPECT_EQ(-1101, r.nRC);
  EXPECT_EQ("Processing DATE field...\n*ERROR: DATE type 5, size 20, not supported\n" +
                FieldFailure(),
            Trace());

  // The same list writes.
  Instance inst = NewObject("F_DATE_T");
  SetDate(inst, {"D"}, "2001-02-03 00:00:00");
  ClearStream();
  ASSERT_EQ(0, Write(defs.Head(), inst)) << LastException();
  EXPECT_EQ("03-FEB-01", Stream());

  // And the context reads on with a list it accepts.
  DefList& accepted = NewList();
  accepted.Scalar("D", SQLT_DAT, 5, 9, 20);
  ClearTrace();
  r = ReadStream(accepted.Head(), "03-FEB-01", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("03-FEB-01", WriteBack(accepted.Head(), r, pTdo));
}

TEST_F(ReadFieldTest, ADateOfAnotherExternalTypeIsRefused) {
  DefList& defs = NewList();
  defs.Scalar("D", SQLT_DAT, 12, 7, 20);
  OCIType* pTdo = Type("F_DATE_T");
  trace_.SetLevel(2);
  ReadResult r = ReadStream(defs.Head(), "2001-02-03", pTdo);
  EXPECT_EQ(-1101, r.nRC);
  EXPECT_EQ(Exception(-1101, "CAdp::_OraStreamToField", "Unsupported data type"),
            LastException());
  EXPECT_EQ("Processing DATE field...\n*ERROR: DATE type 12, size 20, not supported\n" +
                FieldFailure(),
            Trace());
  // Bytes already read stay consumed.
  EXPECT_EQ(10, stream_.Tell());

  ClearTrace();
  trace_.SetLevel(1);
  r = ReadStream(date_.Head(), "2001-02-03", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("", Trace());
}

TEST_F(ReadFieldTest, ANumberOfAnotherExternalTypeIsRefused) {
  DefList& defs = NewList();
  defs.Scalar("N", SQLT_NUM, 1, 22);
  OCIType* pTdo = Type("F_NUM_T");
  trace_.SetLevel(2);
  ReadResult r = ReadStream(defs.Head(), "12|3", pTdo);
  EXPECT_EQ(-1101, r.nRC);
  EXPECT_EQ(Exception(-1101, "CAdp::_OraStreamToField", "Unsupported data type"),
            LastException());
  EXPECT_EQ("Processing NUMBER field...\n*ERR: NUMBER type 1 not supported\n" + FieldFailure(),
            Trace());
  EXPECT_EQ(2, stream_.Tell());

  ClearTrace();
  r = ReadStream(num_.Head(), "12|3", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
}

TEST_F(ReadFieldTest, ANumberTextOracleRejectsFailsWithItsDiagnostics) {
  OCIType* pTdo = Type("F_NUM_T");
  ReadResult r = ReadStream(num_.Head(), "1x2|3", pTdo);
  EXPECT_EQ(-24, r.nRC);
  EXPECT_EQ(Exception(-24, "CAdp::_OraStreamToField"), LastException());
  EXPECT_EQ("Error (-1) returned by OCINumberFromText, errcode=22062\n"
            "ORA-22062: invalid input string [1x2]\n" +
                FieldFailure(),
            Trace());

  ClearTrace();
  r = ReadStream(num_.Head(), "12|3", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("12|3", WriteBack(num_.Head(), r, pTdo));
}

// The mask is handed over with its strlen: a zero byte in the text ends it
// there, while the text keeps its whole size. ("9" and a text of two bytes is
// an invalid input string; the mask "9" and a zero byte would be an invalid
// format text, ORA-22061.)
TEST_F(ReadFieldTest, ANumberTextWithAZeroByteGoesWithTheMaskUpToThatByte) {
  OCIType* pTdo = Type("F_NUM_T");
  trace_.SetLevel(2);
  ReadResult r = ReadStream(num_.Head(), std::string("1\0|3", 4), pTdo);
  EXPECT_EQ(-24, r.nRC);
  EXPECT_EQ(Exception(-24, "CAdp::_OraStreamToField"), LastException());
  EXPECT_EQ("Processing NUMBER field...\n"
            "Error (-1) returned by OCINumberFromText, errcode=22062\n"
            // The message holds the text's zero byte; the trace line ends there.
            "ORA-22062: invalid input string [1\n" +
                FieldFailure(),
            Trace());
}

TEST_F(ReadFieldTest, ADateOracleRejectsFailsWithItsDiagnostics) {
  OCIType* pTdo = Type("F_DATE_T");
  ReadResult r = ReadStream(date_.Head(), "2001-13-03|3", pTdo);
  EXPECT_EQ(-24, r.nRC);
  EXPECT_EQ(Exception(-24, "CAdp::_OraStreamToField"), LastException());
  EXPECT_EQ("Error (-1) returned by OCIDateFromText, errcode=1843\n"
            "ORA-01843: not a valid month\n" +
                FieldFailure(),
            Trace());

  ClearTrace();
  r = ReadStream(date_.Head(), "2001-12-03|3", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("2001-12-03 00:00:00|3", WriteBack(date_.Head(), r, pTdo));
}

TEST_F(ReadFieldTest, ATimestampOracleRejectsFailsWithItsDiagnostics) {
  DefList& defs = NewList();
  defs.Scalar("I", SQLT_INTERVAL_DS, 5, 11, 20, 2, 3);
  defs.Scalar("TS", SQLT_TIMESTAMP, 5, 11, 23, 0, 3);
  defs.Number("M", 38, 0);
  OCIType* pTdo = Type("F_IV_T");
  ReadResult r = ReadStream(defs.Head(), "|2001-02-30 00:00:00.000|1", pTdo);
  EXPECT_EQ(-24, r.nRC);
  EXPECT_EQ(Exception(-24, "CAdp::_OraStreamToField"), LastException());
  EXPECT_EQ("Error (-1) returned by OCIDateTimeFromText, errcode=1839\n"
            "ORA-01839: date not valid for month specified\n" +
                FieldFailure(),
            Trace());

  ClearTrace();
  r = ReadStream(defs.Head(), "|2001-02-28 01:02:03.456|1", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("|2001-02-28 01:02:03.456|1", WriteBack(defs.Head(), r, pTdo));
}

TEST_F(ReadFieldTest, AnIntervalOracleRejectsIsLoggedAsADatetimeFailure) {
  DefList& defs = NewList();
  defs.Scalar("I", SQLT_INTERVAL_DS, 5, 11, 20, 2, 3);
  defs.Scalar("TS", SQLT_TIMESTAMP, 5, 11, 23, 0, 3);
  defs.Number("M", 38, 0);
  OCIType* pTdo = Type("F_IV_T");
  ReadResult r = ReadStream(defs.Head(), "garbage||1", pTdo);
  EXPECT_EQ(-24, r.nRC);
  EXPECT_EQ(Exception(-24, "CAdp::_OraStreamToField"), LastException());
  EXPECT_EQ("Error (-1) returned by OCIDateTimeFromText, errcode=1867\n"
            "ORA-01867: the interval is invalid\n" +
                FieldFailure(),
            Trace());

  ClearTrace();
  r = ReadStream(defs.Head(), "+01 02:03:04.500||1", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("+01 02:03:04.500||1", WriteBack(defs.Head(), r, pTdo));
}

TEST_F(ReadFieldTest, ARawOfThreeBytesTakesThemWhateverTheyHold) {
  OCIType* pTdo = Type("F_RAW_T");
  trace_.SetLevel(2);
  ReadResult r = ReadBuffer(raw_.Head(), "3|A|]|next", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(OCI_IND_NOTNULL, AttrInd(r, pTdo, {"R"}));
  EXPECT_EQ("A|]", RawOf(*static_cast<OCIRaw**>(AttrSlot(r, pTdo, {"R"}))));
  EXPECT_EQ("next", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"T"}))));
  EXPECT_EQ(10, r.nConsumed);
  EXPECT_EQ("Processing RAW field...\nRAW: size 3\nProcessing TEXT field...\nTEXT: size = 4\n",
            Trace());
}

// decision D6
TEST_F(ReadFieldTest, TheRawTextZeroYieldsAnEmptyRawNotANullOne) {
  OCIType* pTdo = Type("F_RAW_T");
  ReadResult r = ReadBuffer(raw_.Head(), "0||next", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[1]);
  EXPECT_EQ(OCI_IND_NOTNULL, AttrInd(r, pTdo, {"R"}));
  OCIRaw* pRaw = *static_cast<OCIRaw**>(AttrSlot(r, pTdo, {"R"}));
  ASSERT_NE(nullptr, pRaw);
  EXPECT_EQ(0u, OCIRawSize(env_, pRaw));
  EXPECT_EQ("next", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"T"}))));
  EXPECT_EQ("0||next", WriteBack(raw_.Head(), r, pTdo));
}

TEST_F(ReadFieldTest, ARawCountBeyondTheDataTakesWhatThereIs) {
  OCIType* pTdo = Type("F_RAW_T");
  ReadResult r = ReadBuffer(raw_.Head(), "9|AB", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("AB", RawOf(*static_cast<OCIRaw**>(AttrSlot(r, pTdo, {"R"}))));
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"T"}));
  EXPECT_EQ(4, r.nConsumed);
}

TEST_F(ReadFieldTest, ATextWithReleasesIsStoredShortenedAndTracedWithItsTrueSize) {
  DefList& defs = NewList();
  defs.Text("X", 10);
  defs.Text("Y", 10);
  OCIType* pTdo = Type("F_ONE_T");
  trace_.SetLevel(2);
  ReadResult r = ReadStream(defs.Head(), "a!|b!!c|d", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  OCIString* pText = *static_cast<OCIString**>(AttrSlot(r, pTdo, {"X"}));
  EXPECT_EQ(5u, OCIStringSize(env_, pText));
  EXPECT_EQ("a|b!c", StringOf(pText));
  EXPECT_EQ("Processing TEXT field...\nTEXT: size = 5\nProcessing TEXT field...\nTEXT: size = 1\n",
            Trace());
}

TEST_F(ReadFieldTest, LargeObjectsAreOnlyLocatedInTheFirstPass) {
  DefList& defs = NewList();
  defs.Scalar("C", SQLT_CLOB, 112, 4000);
  defs.Scalar("B", SQLT_BLOB, 113, 4000);
  defs.Text("T", 10);
  OCIType* pTdo = Type("F_LOB_T");
  trace_.SetLevel(2);
  ReadResult r = ReadBuffer(defs.Head(), "a!|b|4|x|]y|t", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(1, r.nLobsPending);
  EXPECT_EQ(OCI_IND_NOTNULL, AttrInd(r, pTdo, {"C"}));
  EXPECT_EQ(OCI_IND_NOTNULL, AttrInd(r, pTdo, {"B"}));
  EXPECT_EQ("t", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"T"}))));
  EXPECT_EQ(13, r.nConsumed);
  EXPECT_EQ("Processing LOB field - first pass...\nLOB: writing empty blob\n"
            "Processing LOB field - first pass...\nLOB: writing empty blob\n"
            "Processing TEXT field...\nTEXT: size = 1\n",
            Trace());
}

TEST_F(ReadFieldTest, TheLobsPendingFlagIsSetPerCall) {
  DefList& defs = NewList();
  defs.Scalar("C", SQLT_CLOB, 112, 4000);
  defs.Scalar("B", SQLT_BLOB, 113, 4000);
  defs.Text("T", 10);
  OCIType* pTdo = Type("F_LOB_T");
  ReadResult r = ReadBuffer(defs.Head(), "a|1|x|t", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(1, r.nLobsPending);
  r = ReadBuffer(defs.Head(), "|||t", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(0, r.nLobsPending);
  EXPECT_EQ("t", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"T"}))));
}

struct RefusedCase {
  const char* pszName;
  unsigned short nDataType;
  const char* pszLines;  // at level 2
};

class ReadRefusedTest : public ReadFieldTest, public ::testing::WithParamInterface<RefusedCase> {};

TEST_P(ReadRefusedTest, IsRefusedEvenWhenNull) {
  const RefusedCase& c = GetParam();
  DefList& defs = NewList();
  defs.Scalar("X", c.nDataType, static_cast<short>(c.nDataType), 10);
  defs.Text("Y", 10);
  OCIType* pTdo = Type("F_ONE_T");
  ReadResult r = ReadStream(defs.Head(), "|y", pTdo);
  EXPECT_EQ(-1101, r.nRC);
  EXPECT_EQ(Exception(-1101, "CAdp::_OraStreamToField", "Unsupported data type"),
            LastException());
  EXPECT_EQ(FieldFailure(), Trace());
  EXPECT_EQ(0, stream_.Tell());

  ClearTrace();
  trace_.SetLevel(2);
  r = ReadStream(defs.Head(), "x|y", pTdo);
  EXPECT_EQ(-1101, r.nRC);
  EXPECT_EQ(std::string(c.pszLines) + FieldFailure(), Trace());
  EXPECT_EQ(0, stream_.Tell());

  ClearTrace();
  trace_.SetLevel(1);
  DefList& text = NewList();
  text.Text("X", 10);
  text.Text("Y", 10);
  r = ReadStream(text.Head(), "x|y", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("x|y", WriteBack(text.Head(), r, pTdo));
  EXPECT_EQ("", Trace());
}

INSTANTIATE_TEST_SUITE_P(
    Types, ReadRefusedTest,
    ::testing::Values(
        RefusedCase{"Bfile", SQLT_BFILEE,
                    "Processing BFILE field...\n*ERROR: BFILE type not supported\n"},
        RefusedCase{"Ref", SQLT_REF, "Processing REF field...\n*ERROR: REF type not supported\n"},
        RefusedCase{"Unknown", 999,
                    "Processing '999' field...\n*ERROR: '999' type not supported\n"}),
    [](const ::testing::TestParamInfo<RefusedCase>& info) { return info.param.pszName; });

}  // namespace
}  // namespace adapter_test
