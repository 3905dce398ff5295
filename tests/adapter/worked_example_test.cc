// The stream format's worked example, written byte for byte, with the
// default special strings and with configured ones.
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class WorkedExampleTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    CreateWorkedExampleTypes();
    defs_.Text("NAME", 30);
    defs_.Number("AGE", 3, 0);
    defs_.Open("ADDR", "SCOTT.EX_ADDR_T");
    defs_.Text("STREET", 30);
    defs_.Text("CITY", 30);
    defs_.Close();
    defs_.Open("COLOURS", "SCOTT.EX_COLOURS_T", true);
    defs_.Text(nullptr, 20);
    defs_.Close();
    defs_.Open("NOTE", "SCOTT.EX_NOTE_T");
    defs_.Text("TEXT", 30);
    defs_.Close();
    defs_.Raw("TAG", 10);

    person_ = NewObject("EX_PERSON_T");
    SetText(person_, {"NAME"}, "Smith|Jones");
    SetNumber(person_, {"AGE"}, "42");
    SetText(person_, {"ADDR", "STREET"}, "1 Main St");
    OCIColl* pColours = Coll(person_, {"COLOURS"});
    AppendText(pColours, "red");
    AppendText(pColours, "blue");
    Mark(person_, {"NOTE"}, OCI_IND_NULL);
    SetRaw(person_, {"TAG"}, "ABC");
  }

  DefList defs_;
  Instance person_;
};

TEST_F(WorkedExampleTest, DefaultSpecialStrings) {
  ASSERT_EQ(0, Write(defs_.Head(), person_)) << LastException() << Trace();
  EXPECT_EQ("Smith!|Jones|42|[1 Main St|]|[red|blue]||3|ABC", Stream());
  EXPECT_EQ("", Trace());
}

TEST_F(WorkedExampleTest, TwoByteDelimiterOtherTerminatorAndRelease) {
  ASSERT_EQ(0, adpDestroyContext(ctx_, &trace_));
  ctx_ = nullptr;
  DB_SPECIAL_STRINGS special;
  std::memset(&special, 0, sizeof special);
  std::memcpy(special.szDelimiterLen, "2", 1);
  std::memcpy(special.szTerminatorLen, "1", 1);
  std::memcpy(special.szDelimiter, "##", 2);
  std::memcpy(special.szTerminator, "\n", 1);
  std::memcpy(special.szRelease, "\\", 1);
  ASSERT_EQ(0, adpCreateContext(&ctx_, &trace_, &special));
  SetText(person_, {"NAME"}, "Smith##Jo|nes\\[x]\n#");
  ASSERT_EQ(0, Write(defs_.Head(), person_)) << LastException() << Trace();
  // The length of a binary value always ends with "|".
  EXPECT_EQ("Smith\\##Jo|nes\\\\\\[x\\]\\\n###42##[1 Main St##]##[red##blue]####3|ABC", Stream());
}

}  // namespace
}  // namespace adapter_test
