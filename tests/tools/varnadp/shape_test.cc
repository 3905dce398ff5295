// Where the shape of a type places each attribute's indicator: the null
// structure as Oracle lays it out, checked against OCIObjectSetAttr.
#include <string>
#include <vector>

#include <coldef.h>
#include <gtest/gtest.h>
#include <oci.h>
#include <orid.h>

#include "oci_session.h"
#include "shape.h"

namespace varnadp {
namespace {

// Embedded objects three deep, beside scalars of every family, a LOB and
// collections (whose items have null structures of their own).
constexpr char kSchema[] =
    "CREATE TYPE inner_t AS OBJECT (a NUMBER, b VARCHAR2(10));\n/\n"
    "CREATE TYPE middle_t AS OBJECT (c DATE, deep inner_t, d RAW(4));\n/\n"
    "CREATE TYPE inners_t AS TABLE OF inner_t;\n/\n"
    "CREATE TYPE words_t AS VARRAY(3) OF VARCHAR2(5);\n/\n"
    "CREATE TYPE outer_t AS OBJECT (id NUMBER, first middle_t, words words_t, stamp TIMESTAMP(3),\n"
    "  second inner_t, items inners_t, doc CLOB, span INTERVAL DAY(2) TO SECOND(3), last CHAR(2));\n/\n";

class ShapeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.Open("shape_test")) << session_.error();
    ASSERT_TRUE(session_.RunScript(kSchema, "shape_test.sql")) << session_.error();
    ASSERT_EQ(COLDEF_OK, coldefDescribe(session_.env(), session_.err(), session_.svc(), "OUTER_T", &list_));
    shape_ = BuildShape(list_, "OUTER_T", session_);
    ASSERT_TRUE(shape_ != nullptr) << session_.error();
  }
  void TearDown() override { coldefFree(list_); }

  // A new instance of the type and its null structure.
  void NewInstance(void** instance, OCIInd** null_struct) {
    ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(session_.env(), session_.err(), session_.svc(), OCI_TYPECODE_OBJECT,
                                        shape_->tdo, nullptr, OCI_DURATION_DEFAULT, TRUE, instance));
    ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(session_.env(), session_.err(), *instance,
                                           reinterpret_cast<void**>(null_struct)));
  }

  // Every attribute reached through embedded objects: its path of names
  // and the place of its indicator in the root's null structure.
  struct Place {
    std::vector<std::string> path;
    size_t index;
  };
  static void Places(const Shape& object, std::vector<std::string> path, size_t base,
                     std::vector<Place>* out) {
    for (const Shape& member : object.members) {
      std::vector<std::string> names = path;
      names.push_back(member.name);
      out->push_back({names, base + member.ind_index});
      if (member.kind == Shape::Kind::kObject) Places(member, names, base + member.ind_index, out);
    }
  }

  OciSession session_;
  Column_Def* list_ = nullptr;
  std::unique_ptr<Shape> shape_;
};

TEST_F(ShapeTest, IndicatorPlacesFollowTheNullStructure) {
  // _atomic, ID, FIRST (_atomic, C, DEEP (_atomic, A, B), D), WORDS, STAMP,
  // SECOND (_atomic, A, B), ITEMS, DOC, SPAN, LAST.
  EXPECT_EQ(17u, shape_->ind_count);
  std::vector<Place> places;
  Places(*shape_, {}, 0, &places);
  ASSERT_EQ(16u, places.size());
  void* instance = nullptr;
  OCIInd* null_struct = nullptr;
  ASSERT_NO_FATAL_FAILURE(NewInstance(&instance, &null_struct));
  for (const Place& place : places) {
    std::vector<const OraText*> names;
    std::vector<ub4> lengths;
    std::string shown;
    for (const std::string& name : place.path) {
      names.push_back(reinterpret_cast<const OraText*>(name.c_str()));
      lengths.push_back(static_cast<ub4>(name.size()));
      shown += (shown.empty() ? "" : ".") + name;
    }
    // Oracle writes the attribute's indicator (an embedded object's
    // _atomic); the shape must name the same OCIInd, and no other changes.
    const std::vector<OCIInd> before(null_struct, null_struct + shape_->ind_count);
    ASSERT_EQ(OCI_SUCCESS, OCIObjectSetAttr(session_.env(), session_.err(), instance, null_struct, shape_->tdo,
                                            names.data(), lengths.data(), static_cast<ub4>(names.size()),
                                            nullptr, 0, OCI_IND_NOTNULL, nullptr, nullptr))
        << shown;
    for (size_t i = 0; i < shape_->ind_count; ++i) {
      const OCIInd expected = i == place.index ? OCI_IND_NOTNULL : before[i];
      EXPECT_EQ(expected, null_struct[i]) << shown << " at " << i;
    }
  }
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(session_.env(), session_.err(), instance, OCI_OBJECTFREE_FORCE));
}

TEST_F(ShapeTest, ItemsHaveNullStructuresOfTheirOwn) {
  const Shape* items = shape_->FindMember("ITEMS");
  ASSERT_TRUE(items != nullptr);
  ASSERT_EQ(1u, items->members.size());
  const Shape& item = items->members[0];
  EXPECT_EQ(0u, item.ind_index);
  EXPECT_EQ(3u, item.ind_count);
  EXPECT_EQ(1u, item.members[0].ind_index);
  EXPECT_EQ(2u, item.members[1].ind_index);
  EXPECT_EQ(1u, items->ind_count);
  const Shape* words = shape_->FindMember("WORDS");
  ASSERT_TRUE(words != nullptr);
  EXPECT_EQ(0u, words->members[0].ind_index);
}

// Every attribute at any depth, beside its slot as Oracle hands it out.
struct Slot {
  std::string path;
  const Shape* member;
  void* expected;
  void* found;
};

void Slots(OciSession& session, const Shape& object, void* instance, void* null_struct,
           const std::string& path, std::vector<Slot>* out) {
  for (const Shape& member : object.members) {
    const OraText* names[1] = {reinterpret_cast<const OraText*>(member.name.c_str())};
    const ub4 lengths[1] = {static_cast<ub4>(member.name.size())};
    OCIInd status = OCI_IND_NULL;
    void* attr_null_struct = nullptr;
    void* slot = nullptr;
    OCIType* attr_tdo = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectGetAttr(session.env(), session.err(), instance, null_struct, object.tdo,
                                            names, lengths, 1, nullptr, 0, &status, &attr_null_struct, &slot,
                                            &attr_tdo));
    const std::string name = path + member.name;
    out->push_back({name, &member, static_cast<char*>(instance) + member.value_offset, slot});
    if (member.kind == Shape::Kind::kObject) {
      Slots(session, member, slot, attr_null_struct, name + ".", out);
    }
  }
}

TEST_F(ShapeTest, ValuePlacesFollowTheInstanceLayout) {
  void* instance = nullptr;
  OCIInd* null_struct = nullptr;
  ASSERT_NO_FATAL_FAILURE(NewInstance(&instance, &null_struct));
  std::vector<Slot> slots;
  Slots(session_, *shape_, instance, null_struct, "", &slots);
  ASSERT_EQ(16u, slots.size());
  for (const Slot& slot : slots) {
    EXPECT_EQ(slot.expected, slot.found) << slot.path;
    EXPECT_TRUE(slot.member->direct) << slot.path;
  }
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(session_.env(), session_.err(), instance, OCI_OBJECTFREE_FORCE));
  // ID NUMBER at 0 (22 bytes), FIRST at 24 (C DATE at 0, DEEP at 8: A at 0,
  // B at 24; D at 40), WORDS at 72, STAMP at 80, SECOND at 88, ITEMS at 120,
  // DOC at 128, SPAN at 136, LAST at 144: 152 bytes, as Oracle's generated
  // structs lay them out on LP64.
  EXPECT_EQ(152u, shape_->value_size);
  EXPECT_EQ(8u, shape_->value_align);
  EXPECT_EQ(24u, shape_->FindMember("FIRST")->value_offset);
  EXPECT_EQ(40u, shape_->FindMember("FIRST")->FindMember("D")->value_offset);
  EXPECT_EQ(144u, shape_->FindMember("LAST")->value_offset);
  // Items are instances of their own type, checked on their own.
  const Shape& item = shape_->FindMember("ITEMS")->members[0];
  EXPECT_EQ(0u, item.members[0].value_offset);
  EXPECT_EQ(24u, item.members[1].value_offset);
  EXPECT_TRUE(item.members[0].direct);
  EXPECT_TRUE(item.members[1].direct);
}

// A layout that does not match what Oracle hands out is not used: the
// attributes keep being asked for by name.
TEST_F(ShapeTest, ALayoutOracleDoesNotFollowIsNotUsed) {
  auto wrong = BuildShape(list_, "OUTER_T", session_);
  ASSERT_TRUE(wrong != nullptr);
  auto clear = [](Shape* object, auto& self) -> void {
    for (Shape& member : object->members) {
      member.direct = false;
      self(&member, self);
    }
  };
  clear(wrong.get(), clear);
  // DEEP's B placed one byte off.
  ASSERT_EQ("B", wrong->members[1].members[1].members[1].name);
  wrong->members[1].members[1].members[1].value_offset += 1;
  CheckLayouts(wrong.get(), session_);
  EXPECT_FALSE(wrong->FindMember("ID")->direct);
  EXPECT_FALSE(wrong->FindMember("FIRST")->FindMember("DEEP")->FindMember("A")->direct);
  // The items' type is another, and its layout holds.
  EXPECT_TRUE(wrong->FindMember("ITEMS")->members[0].members[0].direct);
  // An indicator one place off is found out too.
  auto shifted = BuildShape(list_, "OUTER_T", session_);
  ASSERT_TRUE(shifted != nullptr);
  clear(shifted.get(), clear);
  ASSERT_EQ("ITEMS", shifted->members[5].name);
  shifted->members[5].members[0].members[1].ind_index = 1;
  CheckLayouts(shifted.get(), session_);
  EXPECT_TRUE(shifted->FindMember("ID")->direct);
  EXPECT_FALSE(shifted->FindMember("ITEMS")->members[0].members[0].direct);
}

}  // namespace
}  // namespace varnadp
