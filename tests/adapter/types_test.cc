// Every scalar type, in and out of nested objects and collections, with
// Column_Def lists as a host derives them by describe (tools/coldef).
#include <coldef.h>

#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class TypesTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    MustExec("CREATE TYPE t_scalars_t AS OBJECT (vc VARCHAR2(20), ch CHAR(3), n NUMBER, "
             "n82 NUMBER(8,2), n5 NUMBER(5), nneg NUMBER(6,-2), fl FLOAT(20), d DATE, "
             "ts TIMESTAMP, ts0 TIMESTAMP(0), tstz TIMESTAMP(3) WITH TIME ZONE, "
             "tsltz TIMESTAMP WITH LOCAL TIME ZONE, iym INTERVAL YEAR TO MONTH, "
             "ids INTERVAL DAY TO SECOND, r RAW(8), c CLOB, b BLOB)");
    MustExec("CREATE TYPE t_vcs_t AS VARRAY(5) OF VARCHAR2(10)");
    MustExec("CREATE TYPE t_chs_t AS TABLE OF CHAR(2)");
    MustExec("CREATE TYPE t_ns_t AS VARRAY(5) OF NUMBER(7,3)");
    MustExec("CREATE TYPE t_ds_t AS TABLE OF DATE");
    MustExec("CREATE TYPE t_tss_t AS VARRAY(5) OF TIMESTAMP(2)");
    MustExec("CREATE TYPE t_ivs_t AS TABLE OF INTERVAL YEAR(3) TO MONTH");
    MustExec("CREATE TYPE t_rs_t AS VARRAY(5) OF RAW(4)");
    MustExec("CREATE TYPE t_list_t AS TABLE OF t_scalars_t");
    MustExec("CREATE TYPE t_holder_t AS OBJECT (id NUMBER(4), s t_scalars_t, vcs t_vcs_t, "
             "chs t_chs_t, ns t_ns_t, ds t_ds_t, tss t_tss_t, ivs t_ivs_t, rs t_rs_t, "
             "list t_list_t)");
  }
  // A context reads its lists until it is destroyed: they go after it.
  void TearDown() override {
    AdapterTest::TearDown();
    for (Column_Def* p : lists_) coldefFree(p);
  }

  Column_Def* Describe(const char* pszType) {
    Column_Def* pList = nullptr;
    EXPECT_EQ(0, coldefDescribe(env_, err_, svc_, pszType, &pList)) << FirstError();
    lists_.push_back(pList);
    return pList;
  }

  std::vector<Column_Def*> lists_;
};

TEST_F(TypesTest, EveryScalarTypeAtTheTop) {
  Instance s = NewObject("T_SCALARS_T");
  SetText(s, {"VC"}, "a|b[c]!");
  SetText(s, {"CH"}, "xyz");
  SetNumber(s, {"N"}, "-123.456");
  SetNumber(s, {"N82"}, "123456.78");
  SetNumber(s, {"N5"}, "-99999");
  SetNumber(s, {"NNEG"}, "12345600");
  SetNumber(s, {"FL"}, "0.5");
  SetDate(s, {"D"}, "1999-12-31 23:59:58");
  SetDateTime(s, {"TS"}, "2020-02-29 01:02:03.123456", "YYYY-MM-DD HH24:MI:SS.FF");
  SetDateTime(s, {"TS0"}, "2020-02-29 01:02:03", "YYYY-MM-DD HH24:MI:SS");
  SetDateTime(s, {"TSTZ"}, "2020-07-01 12:00:00.5 -05:30", "YYYY-MM-DD HH24:MI:SS.FF TZH:TZM");
  SetDateTime(s, {"TSLTZ"}, "2020-07-01 12:00:00.25", "YYYY-MM-DD HH24:MI:SS.FF");
  SetInterval(s, {"IYM"}, "-3-4");
  SetInterval(s, {"IDS"}, "5 06:07:08.9");
  SetRaw(s, {"R"}, std::string("\x01|]\xff", 4));
  Mark(s, {"C"});
  Mark(s, {"B"});
  ASSERT_EQ(0, Write(Describe("SCOTT.T_SCALARS_T"), s)) << LastException() << Trace();
  EXPECT_EQ(std::string("a!|b![c!]!!|xyz|-123.456|123456.78|-99999|12345600|.5|"
                        "1999-12-31 23:59:58|2020-02-29 01:02:03.123456|2020-02-29 01:02:03|"
                        "2020-07-01 12:00:00.500 -05:30 |2020-07-01 12:00:00.250000|-03-04|"
                        "+05 06:07:08.900000|4|\x01|]\xff||0|"),
            Stream());
}

TEST_F(TypesTest, EveryScalarTypeNullAtTheTop) {
  Instance s = NewObject("T_SCALARS_T");
  ASSERT_EQ(0, Write(Describe("SCOTT.T_SCALARS_T"), s)) << LastException() << Trace();
  // Sixteen delimiters, and a bar each for the null RAW and BLOB.
  EXPECT_EQ("||||||||||||||||||", Stream());
}

TEST_F(TypesTest, EveryScalarTypeInANestedObjectAndInCollections) {
  Instance h = NewObject("T_HOLDER_T");
  SetNumber(h, {"ID"}, "7");
  SetText(h, {"S", "VC"}, "in]");
  SetNumber(h, {"S", "N5"}, "5");
  SetDate(h, {"S", "D"}, "2000-01-01 00:00:00");
  SetRaw(h, {"S", "R"}, "AB");
  OCIColl* pVcs = Coll(h, {"VCS"});
  AppendText(pVcs, "p|q");
  AppendText(pVcs, "x", OCI_IND_NULL);
  AppendText(pVcs, "");
  OCIColl* pChs = Coll(h, {"CHS"});
  AppendText(pChs, "ab");
  OCIColl* pNs = Coll(h, {"NS"});
  AppendNumber(pNs, "1.5");
  AppendNumber(pNs, "-0.125");
  OCIColl* pDs = Coll(h, {"DS"});
  {
    OCIDate date;
    const char* pszMask = "YYYY-MM-DD HH24:MI:SS";
    ASSERT_EQ(OCI_SUCCESS, OCIDateFromText(err_, Text("2010-10-10 10:10:10"), 19, Text(pszMask),
                                           21, nullptr, 0, &date));
    OCIInd nInd = OCI_IND_NOTNULL;
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &date, &nInd, pDs));
  }
  OCIColl* pTss = Coll(h, {"TSS"});
  {
    OCIDateTime* pTs = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&pTs),
                                              OCI_DTYPE_TIMESTAMP, 0, nullptr));
    const char* pszMask = "YYYY-MM-DD HH24:MI:SS.FF";
    ASSERT_EQ(OCI_SUCCESS, OCIDateTimeFromText(env_, err_, Text("2011-11-11 11:11:11.11"), 22,
                                               Text(pszMask), 24, nullptr, 0, pTs));
    OCIInd nInd = OCI_IND_NOTNULL;
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, pTs, &nInd, pTss)) << FirstError();
    ASSERT_EQ(OCI_SUCCESS, OCIDescriptorFree(pTs, OCI_DTYPE_TIMESTAMP));
  }
  OCIColl* pIvs = Coll(h, {"IVS"});
  {
    OCIInterval* pIv = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&pIv),
                                              OCI_DTYPE_INTERVAL_YM, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIIntervalFromText(env_, err_, Text("12-11"), 5, pIv));
    OCIInd nInd = OCI_IND_NOTNULL;
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, pIv, &nInd, pIvs)) << FirstError();
    ASSERT_EQ(OCI_SUCCESS, OCIDescriptorFree(pIv, OCI_DTYPE_INTERVAL_YM));
  }
  OCIColl* pRs = Coll(h, {"RS"});
  {
    OCIRaw* pRaw = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIRawAssignBytes(env_, err_, reinterpret_cast<const ub1*>("|!"), 2,
                                             &pRaw));
    OCIInd nInd = OCI_IND_NOTNULL;
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, pRaw, &nInd, pRs));
    nInd = OCI_IND_NULL;
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, pRaw, &nInd, pRs));
    ASSERT_EQ(OCI_SUCCESS, OCIRawResize(env_, err_, 0, &pRaw));
  }
  OCIColl* pList = Coll(h, {"LIST"});
  Instance item = NewObject("T_SCALARS_T");
  SetText(item, {"VC"}, "it");
  SetInterval(item, {"IDS"}, "0 00:00:01");
  AppendObject(pList, item);
  item.pInd[0] = OCI_IND_NULL;
  AppendObject(pList, item);

  ASSERT_EQ(0, Write(Describe("SCOTT.T_HOLDER_T"), h)) << LastException() << Trace();
  EXPECT_EQ("7|[in!]||||5|||2000-01-01 00:00:00|||||||2|AB|||]|[p!|q||]|[ab]|[1.5|-.125]|"
            "[2010-10-10 10:10:10]|[2011-11-11 11:11:11.11]|[+012-11]|[2||!||]|"
            "[[it|||||||||||||+00 00:00:01.000000|||||]|]",
            Stream());
}

TEST_F(TypesTest, TopLevelCollectionOfObjects) {
  OCIColl* pList = NewCollection("T_LIST_T");
  Instance item = NewObject("T_SCALARS_T");
  SetText(item, {"VC"}, "one");
  AppendObject(pList, item);
  SetText(item, {"VC"}, "two");
  SetNumber(item, {"N5"}, "2");
  AppendObject(pList, item);
  ASSERT_EQ(0, Write(Describe("SCOTT.T_LIST_T"), pList, nullptr, Type("T_LIST_T")))
      << LastException() << Trace();
    // Sixteen delimiters per item, and a bar each for the null RAW and BLOB.
  EXPECT_EQ("[one||||||||||||||||||]|[two||||2||||||||||||||]", Stream());
}

TEST_F(TypesTest, TopLevelCollectionOfScalars) {
  OCIColl* pVcs = NewCollection("T_VCS_T");
  AppendText(pVcs, "a");
  AppendText(pVcs, "b!");
  ASSERT_EQ(0, Write(Describe("SCOTT.T_VCS_T"), pVcs, nullptr, Type("T_VCS_T")))
      << LastException() << Trace();
  EXPECT_EQ("a|b!!", Stream());
}

TEST_F(TypesTest, NullsAtEveryDepth) {
  Instance h = NewObject("T_HOLDER_T");
  Mark(h, {"S"});
  OCIColl* pList = Coll(h, {"LIST"});
  Instance item = NewObject("T_SCALARS_T");
  AppendObject(pList, item);
  Mark(h, {"VCS"}, OCI_IND_NULL);
  ASSERT_EQ(0, Write(Describe("SCOTT.T_HOLDER_T"), h)) << LastException() << Trace();
  EXPECT_EQ("|[||||||||||||||||||]||||||||[[||||||||||||||||||]]", Stream());
}

}  // namespace
}  // namespace adapter_test
