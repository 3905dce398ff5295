// A host's whole round: types with nested objects and collections of objects, an instance
// built attribute by attribute, walked back with OCIObjectGetAttr and iterators, freed.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "oci_fixture.h"
#include "orid.h"

namespace ocimem_test {
namespace {

class HostWalkTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create type geo_t as object (lat number, lon number)");
    MustExec("create type place_t as object (label varchar2(40), geo geo_t)");
    MustExec("create type tag_list as varray(10) of varchar2(20)");
    MustExec("create type visit_t as object (at date, place place_t, tags tag_list)");
    MustExec("create type visit_list as table of visit_t");
    MustExec("create type trip_t as object (title varchar2(40), home place_t, "
             "visits visit_list, photo blob, stamp timestamp)");
  }

  struct Attr {
    OCIInd status = OCI_IND_NULL;
    void* null_struct = nullptr;
    void* value = nullptr;
    OCIType* tdo = nullptr;
  };
  Attr GetAttr(void* instance, void* null_struct, OCIType* tdo, const char* name) {
    Attr a;
    const oratext* names[] = {Text(name)};
    ub4 lengths[] = {Len(name)};
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, instance, null_struct, tdo, names,
                                            lengths, 1, nullptr, 0, &a.status, &a.null_struct,
                                            &a.value, &a.tdo))
        << name << ": " << FirstError(err_);
    return a;
  }
  void SetNull(void* instance, void* null_struct, OCIType* tdo, const char* name, OCIInd status,
               const void* attr_null_struct) {
    const oratext* names[] = {Text(name)};
    ub4 lengths[] = {Len(name)};
    ASSERT_EQ(OCI_SUCCESS, OCIObjectSetAttr(env_, err_, instance, null_struct, tdo, names,
                                            lengths, 1, nullptr, 0, status, attr_null_struct,
                                            nullptr))
        << name << ": " << FirstError(err_);
  }
  void SetText(void* instance, void* null_struct, OCIType* tdo, const char* name,
               const std::string& text) {
    Attr a = GetAttr(instance, null_struct, tdo, name);
    ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text(text.c_str()),
                                               static_cast<ub4>(text.size()),
                                               static_cast<OCIString**>(a.value)));
    SetNull(instance, null_struct, tdo, name, OCI_IND_NOTNULL, nullptr);
  }
  void SetNumber(void* instance, void* null_struct, OCIType* tdo, const char* name, int v) {
    Attr a = GetAttr(instance, null_struct, tdo, name);
    ASSERT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &v, sizeof v, OCI_NUMBER_SIGNED,
                                            static_cast<OCINumber*>(a.value)));
    SetNull(instance, null_struct, tdo, name, OCI_IND_NOTNULL, nullptr);
  }
  // Fills a place_t reached as an embedded attribute (decision D4 makes it present).
  void FillPlace(void* parent, void* parent_ind, OCIType* parent_tdo, const char* name,
                 const std::string& label, int lat, int lon) {
    Attr place = GetAttr(parent, parent_ind, parent_tdo, name);
    SetText(place.value, place.null_struct, place.tdo, "LABEL", label);
    Attr geo = GetAttr(place.value, place.null_struct, place.tdo, "GEO");
    SetNumber(geo.value, geo.null_struct, geo.tdo, "LAT", lat);
    SetNumber(geo.value, geo.null_struct, geo.tdo, "LON", lon);
    SetNull(place.value, place.null_struct, place.tdo, "GEO", OCI_IND_NOTNULL, geo.null_struct);
    SetNull(parent, parent_ind, parent_tdo, name, OCI_IND_NOTNULL, place.null_struct);
  }
  std::string Text_(const Attr& a) {
    auto* s = *static_cast<OCIString**>(a.value);
    return std::string(reinterpret_cast<char*>(OCIStringPtr(env_, s)), OCIStringSize(env_, s));
  }
  int Int(const Attr& a) {
    int v = 0;
    EXPECT_EQ(OCI_SUCCESS, OCINumberToInt(err_, static_cast<OCINumber*>(a.value), sizeof v,
                                          OCI_NUMBER_SIGNED, &v));
    return v;
  }
  std::string DescribePlace(void* place, void* ind, OCIType* tdo) {
    Attr label = GetAttr(place, ind, tdo, "LABEL");
    Attr geo = GetAttr(place, ind, tdo, "GEO");
    Attr lat = GetAttr(geo.value, geo.null_struct, geo.tdo, "LAT");
    Attr lon = GetAttr(geo.value, geo.null_struct, geo.tdo, "LON");
    return Text_(label) + "@" + std::to_string(Int(lat)) + "," + std::to_string(Int(lon)) +
           (geo.status == OCI_IND_NOTNULL ? "" : "(null geo)");
  }
};

TEST_F(HostWalkTest, BuildWalkAndFree) {
  OCIType* trip_tdo = TypeByName("TRIP_T");
  OCIType* visit_tdo = TypeByName("VISIT_T");
  void* trip = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, trip_tdo, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &trip));
  void* trip_ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, trip, &trip_ind));
  static_cast<OCIInd*>(trip_ind)[0] = OCI_IND_NOTNULL;  // the host marks the root present
  SetText(trip, trip_ind, trip_tdo, "TITLE", "Alps");
  FillPlace(trip, trip_ind, trip_tdo, "HOME", "Basel", 47, 7);

  // Two visits, each built as a standalone instance and appended (a copy).
  Attr visits = GetAttr(trip, trip_ind, trip_tdo, "VISITS");
  auto* visit_coll = *static_cast<OCIColl**>(visits.value);
  for (int v = 0; v < 2; ++v) {
    void* visit = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, visit_tdo,
                                        nullptr, OCI_DURATION_DEFAULT, TRUE, &visit));
    void* visit_ind = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, visit, &visit_ind));
    static_cast<OCIInd*>(visit_ind)[0] = OCI_IND_NOTNULL;
    Attr at = GetAttr(visit, visit_ind, visit_tdo, "AT");
    OCIDateSetDate(static_cast<OCIDate*>(at.value), 2024, 7, 10 + v);
    OCIDateSetTime(static_cast<OCIDate*>(at.value), 9, 0, 0);
    SetNull(visit, visit_ind, visit_tdo, "AT", OCI_IND_NOTNULL, nullptr);
    FillPlace(visit, visit_ind, visit_tdo, "PLACE", v == 0 ? "Zermatt" : "Chamonix", 46, 7 - v);
    Attr tags = GetAttr(visit, visit_ind, visit_tdo, "TAGS");
    auto* tag_coll = *static_cast<OCIColl**>(tags.value);
    for (int t = 0; t <= v; ++t) {
      void* tag = nullptr;
      ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_VARCHAR2, nullptr,
                                          nullptr, OCI_DURATION_DEFAULT, TRUE, &tag));
      auto* tag_str = static_cast<OCIString*>(tag);
      std::string text = "tag" + std::to_string(t);
      ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text(text.c_str()),
                                                 Len(text.c_str()), &tag_str));
      OCIInd tag_ind = OCI_IND_NOTNULL;
      ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, tag_str, &tag_ind, tag_coll));
      ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, tag_str, OCI_OBJECTFREE_FORCE));
    }
    SetNull(visit, visit_ind, visit_tdo, "TAGS", OCI_IND_NOTNULL, nullptr);
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, visit, visit_ind, visit_coll));
    ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, visit, OCI_OBJECTFREE_FORCE));
  }
  SetNull(trip, trip_ind, trip_tdo, "VISITS", OCI_IND_NOTNULL, nullptr);

  // Walk it back the way the adapter does: GetAttr per attribute, iterators per collection,
  // with the root's null struct left NULL (decision D3).
  std::vector<std::string> seen;
  Attr title = GetAttr(trip, nullptr, trip_tdo, "TITLE");
  seen.push_back(Text_(title));
  Attr home = GetAttr(trip, nullptr, trip_tdo, "HOME");
  EXPECT_EQ(OCI_IND_NOTNULL, home.status);
  seen.push_back(DescribePlace(home.value, home.null_struct, home.tdo));
  Attr walk = GetAttr(trip, nullptr, trip_tdo, "VISITS");
  EXPECT_EQ(OCI_IND_NOTNULL, walk.status);
  EXPECT_EQ(nullptr, walk.null_struct);
  OCIIter* visit_iter = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIIterCreate(env_, err_, *static_cast<OCIColl**>(walk.value), &visit_iter));
  boolean eoc = FALSE;
  void* elem = nullptr;
  void* elemind = nullptr;
  while (OCIIterNext(env_, err_, visit_iter, &elem, &elemind, &eoc) == OCI_SUCCESS && !eoc) {
    OCIType* item_tdo = TypeByName("VISIT_T");  // looked up once per item, never unpinned
    Attr at = GetAttr(elem, elemind, item_tdo, "AT");
    seen.push_back("day " + std::to_string(static_cast<OCIDate*>(at.value)->OCIDateDD));
    Attr place = GetAttr(elem, elemind, item_tdo, "PLACE");
    seen.push_back(DescribePlace(place.value, place.null_struct, place.tdo));
    Attr tags = GetAttr(elem, elemind, item_tdo, "TAGS");
    OCIIter* tag_iter = nullptr;  // never deleted: goes with its collection
    ASSERT_EQ(OCI_SUCCESS,
              OCIIterCreate(env_, err_, *static_cast<OCIColl**>(tags.value), &tag_iter));
    boolean tag_eoc = FALSE;
    void* tag = nullptr;
    void* tag_ind = nullptr;
    while (OCIIterNext(env_, err_, tag_iter, &tag, &tag_ind, &tag_eoc) == OCI_SUCCESS &&
           !tag_eoc) {
      Attr as_attr;
      as_attr.value = tag;
      seen.push_back(Text_(as_attr) +
                     (*static_cast<OCIInd*>(tag_ind) == OCI_IND_NOTNULL ? "" : "(null)"));
    }
  }
  Attr photo = GetAttr(trip, nullptr, trip_tdo, "PHOTO");
  EXPECT_EQ(OCI_IND_NULL, photo.status);
  EXPECT_NE(nullptr, *static_cast<OCILobLocator**>(photo.value));
  Attr stamp = GetAttr(trip, nullptr, trip_tdo, "STAMP");
  EXPECT_EQ(OCI_IND_NULL, stamp.status);
  EXPECT_NE(nullptr, *static_cast<OCIDateTime**>(stamp.value));

  const std::vector<std::string> expected = {
      "Alps", "Basel@47,7", "day 10", "Zermatt@46,7", "tag0",
      "day 11", "Chamonix@46,6", "tag0", "tag1"};
  EXPECT_EQ(expected, seen);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, trip, OCI_OBJECTFREE_FORCE));
}

}  // namespace
}  // namespace ocimem_test
