// What a partner's stream or a careless host may hand over: records cut at
// every byte, special strings of the extreme lengths, length fields that are
// not numbers. Each call gives its code or reads what is there, never
// crashes or hangs, and the context reads the next good record as if nothing
// had happened.
#include <algorithm>
#include <cstring>
#include <set>
#include <string>

#include "adapter/adp.h"
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class HostileInputTest : public ReadTest {
 protected:
  void SetUp() override {
    ReadTest::SetUp();
    MustExec("CREATE TYPE hi_addr_t AS OBJECT (street VARCHAR2(30), city VARCHAR2(30))");
    MustExec("CREATE TYPE hi_colours_t AS TABLE OF VARCHAR2(10)");
    MustExec("CREATE TYPE hi_line_t AS OBJECT (sku VARCHAR2(10), qty NUMBER(4))");
    MustExec("CREATE TYPE hi_lines_t AS TABLE OF hi_line_t");
    MustExec("CREATE TYPE hi_rec_t AS OBJECT (name VARCHAR2(20), age NUMBER(3), born DATE, "
             "addr hi_addr_t, colours hi_colours_t, lines hi_lines_t, tag RAW(10), "
             "note VARCHAR2(20))");
    rec_.Text("NAME", 20);
    rec_.Number("AGE", 3, 0);
    rec_.Date("BORN");
    rec_.Open("ADDR", "SCOTT.HI_ADDR_T");
    rec_.Text("STREET", 30);
    rec_.Text("CITY", 30);
    rec_.Close();
    rec_.Open("COLOURS", "SCOTT.HI_COLOURS_T", true);
    rec_.Text(nullptr, 10);
    rec_.Close();
    rec_.Open("LINES", "SCOTT.HI_LINES_T", true);
    rec_.Open(nullptr, "SCOTT.HI_LINE_T");
    rec_.Text("SKU", 10);
    rec_.Number("QTY", 4, 0);
    rec_.Close();
    rec_.Close();
    rec_.Raw("TAG", 10);
    rec_.Text("NOTE", 20);
    tdo_ = Type("HI_REC_T");
  }

  // The good record reads whole and writes back to itself.
  void ExpectGoodRecordReads(const char* pszWhen) {
    const ReadResult r = ReadBuffer(rec_.Head(), kGood, tdo_);
    ASSERT_EQ(0, r.nRC) << pszWhen << ": " << LastException() << Trace();
    ASSERT_EQ(static_cast<long>(std::strlen(kGood)), r.nConsumed) << pszWhen;
    ASSERT_EQ(kGood, WriteBack(rec_.Head(), r, tdo_)) << pszWhen;
  }

  // Reads one object from text with adpProcessBuffer on pCtx.
  ReadResult ReadWith(VARNADP* pCtx, Column_Def* pDefs, const std::string& text, OCIType* pTdo) {
    ReadResult r;
    Column_Def* pList = pDefs;
    const void* pBuffer = text.data();
    r.nRC = adpProcessBuffer(pCtx, nullptr, &pBuffer, static_cast<unsigned long>(text.size()), &pList,
                             env_, err_, svc_, &r.pInstance, &r.pInd, &r.nInd, pTdo, &r.nLobsPending);
    r.nConsumed = static_cast<const char*>(pBuffer) - text.data();
    return r;
  }

  static constexpr const char* kGood =
      "Smith!|Jones|42|1984-02-29 00:00:00|[Main St|Graz]|[red|green]|"
      "[[A-1|2]|[B|]|[C-3|]]|3|a|b|note";

  DefList rec_;
  OCIType* tdo_ = nullptr;
};

// The codes a record cut short may end with: a group left open (1), a release
// at the very end (-1102), a value Oracle refuses (-24).
const std::set<int> kCutCodes = {0, 1, -1102, -24};

TEST_F(HostileInputTest, ARecordCutAtEveryByteGivesACodeOrWhatIsThereAndTheContextReadsOn) {
  ExpectGoodRecordReads("before");
  const std::string good = kGood;
  std::set<int> codes;
  for (size_t nCut = 0; nCut < good.size(); ++nCut) {
    ClearTrace();
    const ReadResult r = ReadBuffer(rec_.Head(), good.substr(0, nCut), tdo_);
    ASSERT_EQ(1u, kCutCodes.count(r.nRC)) << "cut at " << nCut << ": " << r.nRC;
    codes.insert(r.nRC);
    if (r.nRC == 0) {
      ASSERT_LE(r.nConsumed, static_cast<long>(nCut)) << nCut;
      ASSERT_NE(nullptr, r.pInstance) << nCut;
    }
    ExpectGoodRecordReads(("after the cut at " + std::to_string(nCut)).c_str());
  }
  // Both kinds of ending were met: a record that reads short, and one that fails.
  EXPECT_EQ(1u, codes.count(0));
  EXPECT_EQ(1u, codes.count(1));
}

TEST_F(HostileInputTest, ARecordCutAtEveryByteReadsTheSameFromTheHostsStream) {
  const std::string good = kGood;
  for (size_t nCut = 0; nCut < good.size(); ++nCut) {
    ClearTrace();
    const ReadResult fromStream = ReadStream(rec_.Head(), good.substr(0, nCut), tdo_);
    ASSERT_EQ(1u, kCutCodes.count(fromStream.nRC)) << nCut << ": " << fromStream.nRC;
    const std::string streamText =
        fromStream.nRC == 0 ? WriteBack(rec_.Head(), fromStream, tdo_) : std::string();
    const ReadResult fromBuffer = ReadBuffer(rec_.Head(), good.substr(0, nCut), tdo_);
    ASSERT_EQ(fromStream.nRC, fromBuffer.nRC) << nCut;
    if (fromBuffer.nRC == 0) {
      ASSERT_EQ(streamText, WriteBack(rec_.Head(), fromBuffer, tdo_)) << nCut;
    }
  }
  ExpectGoodRecordReads("after every cut");
}

// A context made with the given special strings.
class SpecialContext {
 public:
  explicit SpecialContext(const DB_SPECIAL_STRINGS& special) {
    DB_SPECIAL_STRINGS copy = special;
    m_nRC = adpCreateContext(&m_pCtx, nullptr, &copy);
  }
  ~SpecialContext() {
    if (m_pCtx != nullptr) adpDestroyContext(m_pCtx, nullptr);
  }
  SpecialContext(const SpecialContext&) = delete;
  SpecialContext& operator=(const SpecialContext&) = delete;
  VARNADP* Get() const { return m_pCtx; }
  int RC() const { return m_nRC; }
  const CAdp& Adp() const { return *static_cast<const CAdp*>(m_pCtx); }

 private:
  VARNADP* m_pCtx = nullptr;
  int m_nRC = -1;
};

DB_SPECIAL_STRINGS Special(const char* pszDelimiterLen, const std::string& delimiter,
                           const char* pszTerminatorLen, const std::string& terminator) {
  DB_SPECIAL_STRINGS special;
  std::memset(&special, 0, sizeof special);
  std::memcpy(special.szDelimiterLen, pszDelimiterLen,
              std::min(std::strlen(pszDelimiterLen), sizeof special.szDelimiterLen));
  std::memcpy(special.szTerminatorLen, pszTerminatorLen,
              std::min(std::strlen(pszTerminatorLen), sizeof special.szTerminatorLen));
  std::memcpy(special.szDelimiter, delimiter.data(), std::min(delimiter.size(), sizeof special.szDelimiter));
  std::memcpy(special.szTerminator, terminator.data(),
              std::min(terminator.size(), sizeof special.szTerminator));
  special.szRelease[0] = '!';
  return special;
}

TEST_F(HostileInputTest, LengthFieldsThatAreNotNumbersCountAsTheirLeadingDigits) {
  struct Case {
    const char* pszLen;
    long nExpected;
  };
  // atoi's reading of the four bytes; negative and empty give 0, beyond 32 gives 32.
  const Case aCases[] = {{"ab", 0}, {"", 0}, {"-5", 0}, {"3x", 3}, {" 7", 7}, {"99", 32},
                         {"33", 32}, {"32", 32}, {"0", 0}, {"+2", 2}, {"9999", 32}};
  const std::string delimiter(40, '#');
  for (const Case& c : aCases) {
    SpecialContext ctx(Special(c.pszLen, delimiter, c.pszLen, delimiter));
    ASSERT_EQ(0, ctx.RC()) << c.pszLen;
    EXPECT_EQ(c.nExpected, ctx.Adp()._GetDelimiterLen()) << c.pszLen;
    EXPECT_EQ(c.nExpected, ctx.Adp()._GetTerminatorLen()) << c.pszLen;
  }
}

TEST_F(HostileInputTest, LengthFieldsWithoutAZeroByteAreReadOverTheirFourBytesOnly) {
  DB_SPECIAL_STRINGS special = Special("1", "~", "1", "\n");
  std::memcpy(special.szDelimiterLen, "0002", 4);  // no zero byte: the delimiter follows
  special.szDelimiter[0] = '9';
  SpecialContext ctx(special);
  ASSERT_EQ(0, ctx.RC());
  EXPECT_EQ(2, ctx.Adp()._GetDelimiterLen());
}

TEST_F(HostileInputTest, DelimiterAndTerminatorOf32BytesAreWrittenAndRead) {
  const std::string delimiter = "<delimiter-of-thirty-two-bytes!>";
  const std::string terminator = "<terminator-of-thirty-two-bytes>";
  ASSERT_EQ(32u, delimiter.size());
  ASSERT_EQ(32u, terminator.size());
  // Longer strings in the record: only their first 32 bytes count.
  SpecialContext ctx(Special("32", delimiter + "XYZ", "32", terminator + "XYZ"));
  ASSERT_EQ(0, ctx.RC());
  const ReadResult good = ReadBuffer(rec_.Head(), kGood, tdo_);
  ASSERT_EQ(0, good.nRC) << LastException();
  good.pInd[0] = OCI_IND_NOTNULL;

  CKelStream out(0, nullptr, nullptr, 0);
  Column_Def* pList = rec_.Head();
  ASSERT_EQ(0, adpProcessObject(ctx.Get(), nullptr, &out, &pList, env_, err_, svc_, good.pInstance,
                                good.pInd, OCI_IND_NOTNULL, tdo_))
      << LastException();
  std::string text(out.GetSize(), '\0');
  out.Seek(0, 0);
  out.Read(&text[0], static_cast<unsigned long>(text.size()));
  EXPECT_EQ(0u, text.find("Smith|Jones" + delimiter + "42" + delimiter)) << text;
  EXPECT_EQ(std::string::npos, text.find("XYZ"));

  // Read back with the same context: the same object, so the same text.
  const ReadResult again = ReadWith(ctx.Get(), rec_.Head(), text, tdo_);
  ASSERT_EQ(0, again.nRC) << LastException();
  // The text fields and the nested object read back. (A RAW's count is
  // followed by a bar, whatever the delimiter, and the reader steps over a
  // delimiter's length there: the RAW and what follows it do not round-trip
  // with a delimiter other than the bar.)
  EXPECT_EQ("Smith|Jones", StringOf(*static_cast<OCIString**>(AttrSlot(again, tdo_, {"NAME"}))));
  EXPECT_EQ("Graz", StringOf(*static_cast<OCIString**>(AttrSlot(again, tdo_, {"ADDR", "CITY"}))));
}

TEST_F(HostileInputTest, AnEmptyDelimiterAndTerminatorNeitherCrashNorHang) {
  SpecialContext ctx(Special("0", "", "0", ""));
  ASSERT_EQ(0, ctx.RC());
  EXPECT_EQ(0, ctx.Adp()._GetDelimiterLen());
  // Every good record, read with no delimiter: whatever is read, the call
  // returns, and the default context still reads the record.
  for (size_t nCut = 0; nCut <= std::strlen(kGood); nCut += 7) {
    const std::string text = std::string(kGood).substr(0, nCut);
    const ReadResult r = ReadWith(ctx.Get(), rec_.Head(), text, tdo_);
    EXPECT_LE(r.nRC, 1) << nCut;
    EXPECT_LE(r.nConsumed, static_cast<long>(text.size())) << nCut;
  }
  ExpectGoodRecordReads("after the empty delimiter");
}

// With an empty delimiter nothing marks a next item: a collection ends after
// its first item (read as met, the empty delimiter would announce one more
// item after each, without end; found by fuzzing).
TEST_F(HostileInputTest, AnEmptyDelimiterEndsACollectionAfterItsFirstItem) {
  // The list outlives the context that reads with it, as a host keeps it.
  DefList colours;
  colours.Text(nullptr, 10);
  SpecialContext ctx(Special("0", "", "2", "\r\n"));
  ASSERT_EQ(0, ctx.RC());
  OCIType* pTdo = Type("HI_COLOURS_T");
  for (const std::string& text : {std::string("red"), std::string(""), std::string("red]x")}) {
    const ReadResult r = ReadWith(ctx.Get(), colours.Head(), text, pTdo);
    ASSERT_EQ(0, r.nRC) << text << ": " << LastException();
    sb4 nSize = -1;
    ASSERT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, static_cast<OCIColl*>(r.pInstance), &nSize));
    EXPECT_EQ(1, nSize) << text;
  }
}

}  // namespace
}  // namespace adapter_test
