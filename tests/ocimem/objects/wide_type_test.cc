// Types of every width go through the same making, copying and freeing of a whole value:
// a type of a few attributes, whose values are handled from a list of its attributes made
// once, and a type of hundreds of attributes at several depths, whose values are walked.
// Each attribute group holds the kinds a value is handled by kind for: NUMBER, VARCHAR2,
// DATE, RAW, TIMESTAMP, an object embedding another, and a nested table.
#include <cstring>
#include <string>
#include <vector>

#include "oci_fixture.h"
#include "orid.h"

namespace ocimem_test {
namespace {

const oratext* Name(const char* s) { return reinterpret_cast<const oratext*>(s); }

// OCIInds in the null struct of one group: N S D R TS (5), E's null struct (_atomic, A, B,
// and IN2's _atomic and X: 5), C (1).
constexpr int kIndsPerGroup = 11;

class WideTypeTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("CREATE TYPE inner2_t AS OBJECT (X VARCHAR2(5))");
    MustExec("CREATE TYPE inner_t AS OBJECT (A NUMBER, B VARCHAR2(10), IN2 inner2_t)");
    MustExec("CREATE TYPE nums_t AS TABLE OF NUMBER");
  }

  // A new object of the type and its null struct.
  void NewObject(OCIType* tdo, void** obj, OCIInd** ind) {
    ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, tdo, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, obj))
        << FirstError(err_);
    ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, *obj, reinterpret_cast<void**>(ind)));
  }

  // GROUPS_T with `groups` groups of attributes, and a nested table of it.
  void MakeType(const std::string& name, int groups) {
    std::string sql = "CREATE TYPE " + name + " AS OBJECT (";
    for (int g = 0; g < groups; ++g) {
      const std::string k = std::to_string(g);
      if (g > 0) sql += ", ";
      sql += "N" + k + " NUMBER, S" + k + " VARCHAR2(20), D" + k + " DATE, R" + k +
             " RAW(4), TS" + k + " TIMESTAMP, E" + k + " inner_t, C" + k + " nums_t";
    }
    MustExec(sql + ")");
    MustExec("CREATE TYPE " + name + "_tab AS TABLE OF " + name);
  }

  void* Attr(void* obj, void* ind, OCIType* tdo, const std::vector<std::string>& path,
             OCIInd* status = nullptr) {
    std::vector<const oratext*> names;
    std::vector<ub4> lengths;
    for (const std::string& p : path) {
      names.push_back(Name(p.c_str()));
      lengths.push_back(static_cast<ub4>(p.size()));
    }
    OCIInd st = 0;
    void* null_struct = nullptr;
    void* value = nullptr;
    OCIType* attr_tdo = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, obj, ind, tdo, names.data(),
                                            lengths.data(), static_cast<ub4>(path.size()),
                                            nullptr, 0, &st, &null_struct, &value, &attr_tdo))
        << FirstError(err_);
    if (status != nullptr) *status = st;
    return value;
  }

  void SetText(void* obj, void* ind, OCIType* tdo, const std::vector<std::string>& path,
               const std::string& text) {
    auto** slot = static_cast<OCIString**>(Attr(obj, ind, tdo, path));
    ASSERT_NE(nullptr, slot);
    ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Name(text.c_str()),
                                               static_cast<ub4>(text.size()), slot));
  }

  std::string Text(void* obj, void* ind, OCIType* tdo, const std::vector<std::string>& path) {
    auto** slot = static_cast<OCIString**>(Attr(obj, ind, tdo, path));
    if (slot == nullptr || *slot == nullptr) return "<none>";
    return std::string(reinterpret_cast<const char*>(OCIStringPtr(env_, *slot)),
                       OCIStringSize(env_, *slot));
  }

  // New, filled, copied into a collection, read back from it and freed.
  void RoundTrip(const std::string& name, int groups) {
    MakeType(name, groups);
    OCIType* tdo = TypeByName(name.c_str());
    std::string tab_name = name + "_TAB";
    OCIType* tab_tdo = TypeByName(tab_name.c_str());
    ASSERT_NE(nullptr, tdo);
    ASSERT_NE(nullptr, tab_tdo);

    void* obj = nullptr;
    OCIInd* ind = nullptr;
    ASSERT_NO_FATAL_FAILURE(NewObject(tdo, &obj, &ind));
    // A new object is null through and through: every OCIInd of its null struct, those of
    // the objects embedded at every depth included.
    const int inds = 1 + kIndsPerGroup * groups;
    for (int i = 0; i < inds; ++i) EXPECT_EQ(OCI_IND_NULL, ind[i]) << name << " OCIInd " << i;

    for (int g = 0; g < groups; ++g) {
      const std::string k = std::to_string(g);
      SetText(obj, ind, tdo, {"S" + k}, "s" + k);
      SetText(obj, ind, tdo, {"E" + k, "B"}, "b" + k);
      SetText(obj, ind, tdo, {"E" + k, "IN2", "X"}, "x" + k);
      auto* number = static_cast<OCINumber*>(Attr(obj, ind, tdo, {"N" + k}));
      ASSERT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &g, sizeof g, OCI_NUMBER_SIGNED, number));
      auto** raw = static_cast<OCIRaw**>(Attr(obj, ind, tdo, {"R" + k}));
      const ub1 bytes[3] = {0xAB, static_cast<ub1>(g), 0x00};
      ASSERT_EQ(OCI_SUCCESS, OCIRawAssignBytes(env_, err_, bytes, 3, raw));
      auto** nums = static_cast<OCITable**>(Attr(obj, ind, tdo, {"C" + k}));
      OCINumber item = *number;
      OCIInd item_ind = OCI_IND_NOTNULL;
      for (int n = 0; n <= g % 3; ++n) {
        ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &item, &item_ind, *nums));
      }
    }
    // Marked present by hand, every other OCIInd staying null.
    ind[0] = OCI_IND_NOTNULL;

    OCITable* tab = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_TABLE, tab_tdo, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE,
                                        reinterpret_cast<void**>(&tab)));
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, obj, ind, tab)) << FirstError(err_);
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, obj, ind, tab)) << FirstError(err_);
    // The source changes after the copy; the copies keep what it held.
    SetText(obj, ind, tdo, {"S0"}, "changed");

    for (sb4 e = 0; e < 2; ++e) {
      boolean exists = FALSE;
      void* elem = nullptr;
      void* elem_ind = nullptr;
      ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, tab, e, &exists, &elem, &elem_ind));
      ASSERT_TRUE(exists);
      const auto* copied = static_cast<const OCIInd*>(elem_ind);
      for (int i = 0; i < inds; ++i) EXPECT_EQ(ind[i], copied[i]) << name << " OCIInd " << i;
      for (int g = 0; g < groups; ++g) {
        const std::string k = std::to_string(g);
        EXPECT_EQ("s" + k, Text(elem, elem_ind, tdo, {"S" + k}));
        EXPECT_EQ("b" + k, Text(elem, elem_ind, tdo, {"E" + k, "B"}));
        EXPECT_EQ("x" + k, Text(elem, elem_ind, tdo, {"E" + k, "IN2", "X"}));
        EXPECT_NE(Attr(elem, elem_ind, tdo, {"S" + k}), Attr(obj, ind, tdo, {"S" + k}));
        int n = -1;
        auto* number = static_cast<OCINumber*>(Attr(elem, elem_ind, tdo, {"N" + k}));
        ASSERT_EQ(OCI_SUCCESS, OCINumberToInt(err_, number, sizeof n, OCI_NUMBER_SIGNED, &n));
        EXPECT_EQ(g, n);
        auto** raw = static_cast<OCIRaw**>(Attr(elem, elem_ind, tdo, {"R" + k}));
        ASSERT_EQ(3u, OCIRawSize(env_, *raw));
        EXPECT_EQ(static_cast<ub1>(g), OCIRawPtr(env_, *raw)[1]);
        auto** nums = static_cast<OCITable**>(Attr(elem, elem_ind, tdo, {"C" + k}));
        sb4 size = -1;
        ASSERT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, *nums, &size));
        EXPECT_EQ(g % 3 + 1, size);
        EXPECT_NE(*nums, *static_cast<OCITable**>(Attr(obj, ind, tdo, {"C" + k})));
      }
    }
    EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, tab, OCI_OBJECTFREE_FORCE));
    EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_OBJECTFREE_FORCE));
  }
};

TEST_F(WideTypeTest, AFewAttributesAreMadeCopiedAndFreedWhole) { RoundTrip("NARROW_T", 2); }

// 40 groups: 440 attributes and embedded objects, more than a list is made for.
TEST_F(WideTypeTest, HundredsOfAttributesAreMadeCopiedAndFreedWhole) {
  RoundTrip("WIDE_T", 40);
}

// A type embedding the wide one: its own attributes are few, those it reaches are many.
TEST_F(WideTypeTest, ATypeEmbeddingAWideOneIsNullThroughAndThrough) {
  MakeType("wide_t", 40);
  MustExec("CREATE TYPE outer_t AS OBJECT (ID NUMBER, W wide_t, NAME VARCHAR2(10))");
  OCIType* tdo = TypeByName("OUTER_T");
  void* obj = nullptr;
  OCIInd* ind = nullptr;
  ASSERT_NO_FATAL_FAILURE(NewObject(tdo, &obj, &ind));
  const int inds = 1 + 1 + (1 + kIndsPerGroup * 40) + 1;
  for (int i = 0; i < inds; ++i) EXPECT_EQ(OCI_IND_NULL, ind[i]) << "OCIInd " << i;
  SetText(obj, ind, tdo, {"W", "E39", "IN2", "X"}, "deep");
  SetText(obj, ind, tdo, {"NAME"}, "name");
  EXPECT_EQ("deep", Text(obj, ind, tdo, {"W", "E39", "IN2", "X"}));
  EXPECT_EQ("name", Text(obj, ind, tdo, {"NAME"}));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_OBJECTFREE_FORCE));
}

}  // namespace
}  // namespace ocimem_test
