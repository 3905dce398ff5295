// Object to stream to object to stream gives the same bytes: every scalar
// type, nested objects, collections at several depths, nulls at every
// depth, a top-level collection, with default and configured special
// strings; and seeded random objects by the thousand.
#include <coldef.h>

#include <random>

#include "adapter/adp.h"
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class RoundTripTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    MustExec("CREATE TYPE r_tags_t AS TABLE OF VARCHAR2(20)");
    MustExec("CREATE TYPE r_nums_t AS VARRAY(9) OF NUMBER(9,3)");
    MustExec("CREATE TYPE r_raws_t AS VARRAY(9) OF RAW(8)");
    MustExec("CREATE TYPE r_dates_t AS TABLE OF DATE");
    MustExec("CREATE TYPE r_leaf_t AS OBJECT (s VARCHAR2(20), n NUMBER(6,2), tags r_tags_t)");
    MustExec("CREATE TYPE r_leaves_t AS TABLE OF r_leaf_t");
    MustExec("CREATE TYPE r_mid_t AS OBJECT (name VARCHAR2(20), leaf r_leaf_t, leaves r_leaves_t)");
    MustExec("CREATE TYPE r_mids_t AS VARRAY(5) OF r_mid_t");
    MustExec("CREATE TYPE r_top_t AS OBJECT (id NUMBER(10), ch CHAR(4), vc VARCHAR2(60), "
             "n NUMBER, f FLOAT(30), d DATE, ts TIMESTAMP(6), ts0 TIMESTAMP(0), "
             "tstz TIMESTAMP(3) WITH TIME ZONE, tsltz TIMESTAMP(2) WITH LOCAL TIME ZONE, "
             "iym INTERVAL YEAR(3) TO MONTH, ids INTERVAL DAY(2) TO SECOND(6), r RAW(16), "
             "mid r_mid_t, mids r_mids_t, nums r_nums_t, raws r_raws_t, dates r_dates_t)");
    ASSERT_EQ(0, coldefDescribe(env_, err_, svc_, "SCOTT.R_TOP_T", &top_));
  }
  // A context reads its lists until it is destroyed: they go after it.
  void TearDown() override {
    AdapterTest::TearDown();
    coldefFree(top_);
    for (Column_Def* p : lists_) coldefFree(p);
  }

  Column_Def* Describe(const char* pszType) {
    Column_Def* pList = nullptr;
    EXPECT_EQ(0, coldefDescribe(env_, err_, svc_, pszType, &pList)) << FirstError();
    lists_.push_back(pList);
    return pList;
  }

  // Reads text from a buffer with adpProcessBuffer; the object's root is
  // marked present, as a host does before using it.
  int ReadBack(Column_Def* pDefs, const std::string& text, OCIType* pTdo, void** ppInstance,
               OCIInd** ppInd, int* pLobs = nullptr, size_t* pConsumed = nullptr) {
    const void* pBuffer = text.data();
    Column_Def* pList = pDefs;
    short nInd = 0;
    *ppInstance = nullptr;
    *ppInd = nullptr;
    const int rc = adpProcessBuffer(ctx_, &trace_, &pBuffer, text.size(), &pList, env_, err_, svc_,
                                    ppInstance, ppInd, &nInd, pTdo, pLobs);
    if (pConsumed != nullptr) *pConsumed = static_cast<size_t>(static_cast<const char*>(pBuffer) - text.data());
    return rc;
  }

  // Writes, reads back, writes again; both streams must be equal.
  std::string RoundTrip(Column_Def* pDefs, void* pInstance, OCIInd* pInd, OCIType* pTdo,
                        bool bCollection = false) {
    ClearStream();
    EXPECT_EQ(0, Write(pDefs, pInstance, pInd, pTdo)) << LastException() << Trace();
    const std::string first = Stream();
    void* pRead = nullptr;
    OCIInd* pReadInd = nullptr;
    EXPECT_EQ(0, ReadBack(pDefs, first, pTdo, &pRead, &pReadInd)) << first << "\n"
                                                                   << LastException() << Trace();
    if (pRead == nullptr) return first;
    if (!bCollection) {
      EXPECT_EQ(OCI_IND_NULL, pReadInd[0]);  // a new object is atomically null
      pReadInd[0] = OCI_IND_NOTNULL;
    }
    ClearStream();
    EXPECT_EQ(0, Write(pDefs, pRead, bCollection ? nullptr : pReadInd, pTdo)) << LastException();
    EXPECT_EQ(first, Stream());
    return first;
  }

  Instance Leaf(const std::string& s, const char* pszN, std::vector<std::string> tags) {
    Instance leaf = NewObject("R_LEAF_T");
    if (!s.empty()) SetText(leaf, {"S"}, s);
    if (pszN != nullptr) SetNumber(leaf, {"N"}, pszN);
    OCIColl* pTags = Coll(leaf, {"TAGS"});
    for (const std::string& t : tags) AppendText(pTags, t.c_str());
    return leaf;
  }

  Instance Full() {
    Instance top = NewObject("R_TOP_T");
    SetNumber(top, {"ID"}, "1234567890");
    SetText(top, {"CH"}, "ab|c");
    SetText(top, {"VC"}, "text with [all] the | specials ! and \r\n a terminator");
    SetNumber(top, {"N"}, "-12345.678901234567890123");
    SetNumber(top, {"F"}, "0.000123");
    SetDate(top, {"D"}, "2024-02-29 23:59:59");
    SetDateTime(top, {"TS"}, "1999-12-31 23:59:59.999999", "YYYY-MM-DD HH24:MI:SS.FF");
    SetDateTime(top, {"TS0"}, "2000-01-01 00:00:00", "YYYY-MM-DD HH24:MI:SS");
    SetDateTime(top, {"TSTZ"}, "2021-03-04 05:06:07.125 Europe/Paris", "YYYY-MM-DD HH24:MI:SS.FF TZR");
    SetDateTime(top, {"TSLTZ"}, "2021-03-04 05:06:07.25", "YYYY-MM-DD HH24:MI:SS.FF");
    SetInterval(top, {"IYM"}, "-123-11");
    SetInterval(top, {"IDS"}, "12 13:14:15.123456");
    SetRaw(top, {"R"}, std::string("\0|!][\r\n\xff", 8));
    SetText(top, {"MID", "NAME"}, "mid");
    Instance leaf = Leaf("x|y", "12.5", {"a", "b!"});
    SetText(top, {"MID", "LEAF", "S"}, "inner");
    OCIColl* pLeaves = Coll(top, {"MID", "LEAVES"});
    AppendObject(pLeaves, leaf);
    AppendObject(pLeaves, Leaf("", nullptr, {}));
    AppendObject(pLeaves, Leaf("z", "-1", {"only"}));
    OCIColl* pMids = Coll(top, {"MIDS"});
    Instance mid = NewObject("R_MID_T");
    SetText(mid, {"NAME"}, "m1");
    AppendObject(Coll(mid, {"LEAVES"}), Leaf("deep", "3", {"t1", "t2", "t3"}));
    AppendObject(pMids, mid);
    mid.pInd[0] = OCI_IND_NULL;
    AppendObject(pMids, mid);
    Instance mid2 = NewObject("R_MID_T");
    Coll(mid2, {"LEAVES"});
    AppendObject(pMids, mid2);
    OCIColl* pNums = Coll(top, {"NUMS"});
    AppendNumber(pNums, "1.5");
    AppendNumber(pNums, "0", OCI_IND_NULL);
    AppendNumber(pNums, "-999999.999");
    Coll(top, {"DATES"});
    return top;
  }

  Column_Def* top_ = nullptr;
  std::vector<Column_Def*> lists_;
};

TEST_F(RoundTripTest, EveryScalarTypeNestedObjectsAndCollections) {
  Instance top = Full();
  const std::string text = RoundTrip(top_, top.pObject, top.pInd, top.pTdo);
  EXPECT_NE(std::string::npos, text.find("[mid|[inner||]|[[x!|y|12.5|[a|b!!]]|[||[]]|[z|-1.|[only]]]]"))
      << text;
}

TEST_F(RoundTripTest, NullsAtEveryDepth) {
  Instance top = NewObject("R_TOP_T");
  SetNumber(top, {"ID"}, "1");
  SetRaw(top, {"R"}, "");
  Mark(top, {"MID"});
  Mark(top, {"MID", "LEAF"});
  Coll(top, {"MID", "LEAVES"});
  AppendObject(Coll(top, {"MIDS"}), NewObject("R_MID_T"));
  const std::string text = RoundTrip(top_, top.pObject, top.pInd, top.pTdo);
  EXPECT_EQ("1||||||||||||0||[|[||]|[]]|[[||]]|||", text);
}

TEST_F(RoundTripTest, AllNullButTheKey) {
  Instance top = NewObject("R_TOP_T");
  SetNumber(top, {"ID"}, "7");
  SetRaw(top, {"R"}, "k");
  const std::string text = RoundTrip(top_, top.pObject, top.pInd, top.pTdo);
  EXPECT_EQ("7||||||||||||1|k|||||", text);
}

TEST_F(RoundTripTest, TopLevelCollectionOfObjects) {
  Column_Def* pDefs = Describe("SCOTT.R_LEAVES_T");
  ASSERT_NE(nullptr, pDefs);
  OCIColl* pLeaves = NewCollection("R_LEAVES_T");
  AppendObject(pLeaves, Leaf("a", "1", {"x"}));
  AppendObject(pLeaves, Leaf("b", nullptr, {}));
  const std::string text = RoundTrip(pDefs, pLeaves, nullptr, Type("R_LEAVES_T"), true);
    // NUMBER(6,2) text keeps Oracle's point after an integer.
  EXPECT_EQ("[a|1.|[x]]|[b||[]]", text);
}

TEST_F(RoundTripTest, TopLevelCollectionOfScalars) {
  Column_Def* pDefs = Describe("SCOTT.R_TAGS_T");
  ASSERT_NE(nullptr, pDefs);
  OCIColl* pTags = NewCollection("R_TAGS_T");
  AppendText(pTags, "one");
  AppendText(pTags, "t|wo");
  AppendText(pTags, "three");
  EXPECT_EQ("one|t!|wo|three", RoundTrip(pDefs, pTags, nullptr, Type("R_TAGS_T"), true));
}

TEST_F(RoundTripTest, TopLevelCollectionReadReturnsTheCollectionHandle) {
  Column_Def* pDefs = Describe("SCOTT.R_TAGS_T");
  ASSERT_NE(nullptr, pDefs);
  void* pRead = nullptr;
  OCIInd* pInd = nullptr;
  ASSERT_EQ(0, ReadBack(pDefs, "a|b|c", Type("R_TAGS_T"), &pRead, &pInd)) << LastException();
  const CAdpElementData& root = static_cast<CAdp*>(ctx_)->_GetTree().m_Data;
  EXPECT_EQ(root.m_pStruct, pRead);
  EXPECT_NE(static_cast<const void*>(&root.m_pStruct), pRead);
  sb4 nSize = 0;
  ASSERT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, static_cast<OCIColl*>(pRead), &nSize));
  EXPECT_EQ(3, nSize);
  // decision D2: a new collection is not null, its one indicator 0.
  ASSERT_NE(nullptr, pInd);
  EXPECT_EQ(OCI_IND_NOTNULL, *pInd);
  // Read again on the same context, the collection is emptied and reused.
  void* pAgain = nullptr;
  ASSERT_EQ(0, ReadBack(pDefs, "z", Type("R_TAGS_T"), &pAgain, &pInd)) << LastException();
  EXPECT_EQ(pRead, pAgain);
  ASSERT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, static_cast<OCIColl*>(pAgain), &nSize));
  EXPECT_EQ(1, nSize);
}

TEST_F(RoundTripTest, ConfiguredDelimiterTerminatorAndRelease) {
  ASSERT_EQ(0, adpDestroyContext(ctx_, &trace_));
  ctx_ = nullptr;
  DB_SPECIAL_STRINGS special;
  std::memset(&special, 0, sizeof special);
  std::memcpy(special.szDelimiterLen, "2", 1);
  std::memcpy(special.szTerminatorLen, "1", 1);
  std::memcpy(special.szDelimiter, "~~", 2);
  std::memcpy(special.szTerminator, "\n", 1);
  std::memcpy(special.szRelease, "\\", 1);
  ASSERT_EQ(0, adpCreateContext(&ctx_, &trace_, &special));
  // Binary values read back only while the delimiter is "|": this object
  // has none that is not null... and no null RAW either.
  Column_Def* pDefs = Describe("SCOTT.R_MID_T");
  ASSERT_NE(nullptr, pDefs);
  Instance mid = NewObject("R_MID_T");
  SetText(mid, {"NAME"}, "a~~b\\c\nd|e");
  // A value ending in part of the delimiter, or holding overlapping
  // delimiters, cannot be read back (see the release tests); these do not.
  SetText(mid, {"LEAF", "S"}, "x~y");
  AppendObject(Coll(mid, {"LEAVES"}), Leaf("p~~q", "2", {"\n", "~~x"}));
  const std::string text = RoundTrip(pDefs, mid.pObject, mid.pInd, mid.pTdo);
  EXPECT_EQ("a\\~~b\\\\c\\\nd|e~~[x~y~~~~]~~[[p\\~~q~~2.~~[\\\n~~\\~~x]]]", text);
}

TEST_F(RoundTripTest, SeveralRecordsInOneBufferAreTakenOneAfterAnother) {
  Column_Def* pDefs = Describe("SCOTT.R_LEAF_T");
  ASSERT_NE(nullptr, pDefs);
  const std::string records = "a|1|[x|y]\r\nb||[]\r\nc|3|[z]";
  const void* pBuffer = records.data();
  const char* pEnd = records.data() + records.size();
  std::vector<std::string> back;
  for (int i = 0; i < 3; ++i) {
    Column_Def* pList = pDefs;
    void* pInst = nullptr;
    OCIInd* pInd = nullptr;
    short nInd = 0;
    int nLobs = -1;
    const unsigned long nLeft = static_cast<unsigned long>(pEnd - static_cast<const char*>(pBuffer));
    ASSERT_EQ(0, adpProcessBuffer(ctx_, &trace_, &pBuffer, nLeft, &pList, env_, err_, svc_, &pInst,
                                  &pInd, &nInd, Type("R_LEAF_T"), &nLobs))
        << LastException();
    EXPECT_EQ(0, nLobs);
    // The buffer stops at the terminator, which the host steps over.
    const char* p = static_cast<const char*>(pBuffer);
    if (p != pEnd) {
      ASSERT_EQ(0, std::memcmp(p, "\r\n", 2)) << (p - records.data());
      pBuffer = p + 2;
    }
    pInd[0] = OCI_IND_NOTNULL;
    ClearStream();
    ASSERT_EQ(0, Write(pDefs, pInst, pInd, Type("R_LEAF_T")));
    back.push_back(Stream());
  }
  EXPECT_EQ((std::vector<std::string>{"a|1.|[x|y]", "b||[]", "c|3.|[z]"}), back);
}

TEST_F(RoundTripTest, WorkedExampleReadAttributeByAttribute) {
  CreateWorkedExampleTypes();
  Column_Def* pDefs = Describe("SCOTT.EX_PERSON_T");
  ASSERT_NE(nullptr, pDefs);
  Instance person;
  person.pTdo = Type("EX_PERSON_T");
  ASSERT_EQ(0, ReadBack(pDefs, "Smith!|Jones|42|[1 Main St|]|[red|blue]||3|ABC", person.pTdo,
                        &person.pObject, &person.pInd))
      << LastException() << Trace();
  person.pInd[0] = OCI_IND_NOTNULL;
  auto text = [&](std::initializer_list<const char*> path) {
    OCIString* p = *static_cast<OCIString**>(Slot(person, path));
    return std::string(reinterpret_cast<char*>(OCIStringPtr(env_, p)), OCIStringSize(env_, p));
  };
  auto indicator = [&](std::initializer_list<const char*> path) { return AttrStatus(person, path); };
  EXPECT_EQ("Smith|Jones", text({"NAME"}));
  OraText buf[40];
  ub4 nBuf = sizeof buf;
  ASSERT_EQ(OCI_SUCCESS, OCINumberToText(err_, static_cast<OCINumber*>(Slot(person, {"AGE"})),
                                         Text("FM999"), 5, nullptr, 0, &nBuf, buf));
  EXPECT_EQ("42", std::string(reinterpret_cast<char*>(buf), nBuf));
  EXPECT_EQ(OCI_IND_NOTNULL, indicator({"ADDR"}));
  EXPECT_EQ("1 Main St", text({"ADDR", "STREET"}));
  EXPECT_EQ(OCI_IND_NULL, indicator({"ADDR", "CITY"}));
  OCIColl* pColours = *static_cast<OCIColl**>(Slot(person, {"COLOURS"}));
  sb4 nItems = 0;
  ASSERT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, pColours, &nItems));
  ASSERT_EQ(2, nItems);
  for (sb4 i = 0; i < 2; ++i) {
    boolean bExists = FALSE;
    void* pElem = nullptr;
    void* pElemInd = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, pColours, i, &bExists, &pElem, &pElemInd));
    OCIString* p = *static_cast<OCIString**>(pElem);
    EXPECT_EQ(i == 0 ? "red" : "blue",
              std::string(reinterpret_cast<char*>(OCIStringPtr(env_, p)), OCIStringSize(env_, p)));
  }
  EXPECT_EQ(OCI_IND_NULL, indicator({"NOTE"}));
  EXPECT_EQ(OCI_IND_NOTNULL, indicator({"TAG"}));
  OCIRaw* pTag = *static_cast<OCIRaw**>(Slot(person, {"TAG"}));
  EXPECT_EQ("ABC", std::string(reinterpret_cast<char*>(OCIRawPtr(env_, pTag)), OCIRawSize(env_, pTag)));
}

// Random objects of the family above: every attribute null or a random
// value, collections of random length; each one written, read back and
// written again.
TEST_F(RoundTripTest, SeededRandomObjects) {
  std::mt19937 random(20261123);
  auto chance = [&](int nPercent) { return static_cast<int>(random() % 100) < nPercent; };
  auto word = [&](size_t nMax) {
    static const char kChars[] = "ab|![]\r\nxyz09 ~";
    std::string s;
    const size_t n = 1 + random() % nMax;
    for (size_t i = 0; i < n; ++i) s += kChars[random() % (sizeof kChars - 1)];
    return s;
  };
  auto number = [&]() {
    std::string s = chance(30) ? "-" : "";
    s += std::to_string(random() % 100000);
    if (chance(50)) s += "." + std::to_string(random() % 100);
    return s;
  };
  for (int n = 0; n < 300; ++n) {
    Instance top = NewObject("R_TOP_T");
    SetNumber(top, {"ID"}, std::to_string(n).c_str());
    if (chance(70)) SetText(top, {"CH"}, word(4));
    if (chance(70)) SetText(top, {"VC"}, word(60));
    if (chance(70)) SetNumber(top, {"N"}, number().c_str());
    if (chance(70)) SetDate(top, {"D"}, "2001-02-03 04:05:06");
    SetRaw(top, {"R"}, word(16));
    if (chance(70)) {
      Mark(top, {"MID"});
      if (chance(70)) SetText(top, {"MID", "NAME"}, word(20));
      if (chance(60)) {
        OCIColl* pLeaves = Coll(top, {"MID", "LEAVES"});
        const int nLeaves = static_cast<int>(random() % 4);
        for (int i = 0; i < nLeaves; ++i) {
          std::vector<std::string> tags;
          const int nTags = static_cast<int>(random() % 4);
          for (int t = 0; t < nTags; ++t) tags.push_back(word(20));
          AppendObject(pLeaves, Leaf(chance(80) ? word(20) : "", chance(80) ? "1.25" : nullptr, tags));
        }
      }
    }
    if (chance(60)) {
      OCIColl* pNums = Coll(top, {"NUMS"});
      const int nNums = static_cast<int>(random() % 9);
      for (int i = 0; i < nNums; ++i) {
        std::string v = std::to_string(random() % 100000) + "." + std::to_string(random() % 1000);
        AppendNumber(pNums, v.c_str(), chance(20) ? OCI_IND_NULL : OCI_IND_NOTNULL);
      }
    }
    RoundTrip(top_, top.pObject, top.pInd, top.pTdo);
    if (HasFailure()) {
      ADD_FAILURE() << "object " << n;
      break;
    }
    // The instances made here are freed with the session; keep the list short.
    OCIObjectFree(env_, err_, top.pObject, OCI_OBJECTFREE_FORCE);
    objects_.pop_back();
  }
}

}  // namespace
}  // namespace adapter_test
