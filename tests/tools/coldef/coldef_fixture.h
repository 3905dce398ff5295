// Common parts of the coldef tests: a logged-on session (the ocimem fixture), a list made by
// coldefDescribe and freed after the test, and an exact comparison of a list with a table
// of expected records.
#ifndef TESTS_TOOLS_COLDEF_COLDEF_FIXTURE_H
#define TESTS_TOOLS_COLDEF_COLDEF_FIXTURE_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "coldef.h"
#include "oci_fixture.h"

namespace coldef_test {

// One expected record; nullptr texts stand for NULL pointers.
struct Rec {
  unsigned short flags;
  const char* column_name;
  unsigned short data_type;
  short ext_type;
  unsigned long data_size;
  unsigned display_size;
  unsigned long precision;
  short scale;
  const char* type_name;
  int in_collection;
};

constexpr unsigned short kLeaf = COLDEF_DEFINED;
constexpr unsigned short kOpen = COLDEF_COMPLEX | COLDEF_DEFINED;
constexpr unsigned short kClose = COLDEF_END | COLDEF_DEFINED;

inline Rec Scalar(const char* name, unsigned short type, short ext, unsigned long size,
                  unsigned display = 0, unsigned long precision = 0, short scale = 0) {
  return Rec{kLeaf, name, type, ext, size, display, precision, scale, nullptr, 0};
}
inline Rec Item(unsigned short type, short ext, unsigned long size, unsigned display = 0,
                unsigned long precision = 0, short scale = 0) {
  return Rec{kLeaf, nullptr, type, ext, size, display, precision, scale, nullptr, 1};
}
inline Rec Group(const char* name, unsigned short type, const char* type_name) {
  return Rec{kOpen, name, type, 0, 0, 0, 0, 0, type_name, 0};
}
inline Rec GroupItem(unsigned short type, const char* type_name) {
  return Rec{kOpen, nullptr, type, 0, 0, 0, 0, 0, type_name, 1};
}
inline Rec Close() { return Rec{kClose, nullptr, 0, 0, 0, 0, 0, 0, nullptr, 0}; }

inline std::string Text(const char* s) { return s == nullptr ? "<NULL>" : s; }

// Compares every field of every record, the links and the reserved bytes.
inline void ExpectList(const Column_Def* list, const std::vector<Rec>& expected) {
  size_t i = 0;
  for (const Column_Def* def = list; def != nullptr; def = def->Next, ++i) {
    if (i >= expected.size()) {
      ADD_FAILURE() << "more records than the " << expected.size() << " expected";
      return;
    }
    const Rec& e = expected[i];
    SCOPED_TRACE("record " + std::to_string(i) + " (" + Text(e.column_name) + ")");
    EXPECT_EQ(e.flags, def->Flags);
    EXPECT_EQ(Text(e.column_name), Text(def->ColumnName));
    EXPECT_EQ(e.data_type, def->DataType);
    EXPECT_EQ(e.ext_type, def->ExtType);
    EXPECT_EQ(e.data_size, def->DataSize);
    EXPECT_EQ(e.display_size, def->DisplaySize);
    EXPECT_EQ(e.precision, def->Precision);
    EXPECT_EQ(e.scale, def->Scale);
    EXPECT_EQ(Text(e.type_name), Text(def->TypeName));
    EXPECT_EQ(e.in_collection, def->InCollection);
    for (unsigned char byte : def->Reserved) {
      if (byte != 0) {
        ADD_FAILURE() << "reserved bytes are not zero";
        break;
      }
    }
  }
  EXPECT_EQ(expected.size(), i);
}

class ColdefTest : public ocimem_test::OciTest {
 protected:
  void TearDown() override {
    coldefFree(list_);
    list_ = nullptr;
    OciTest::TearDown();
  }

  // Describes `name` into list_ (freeing an earlier list) and returns the result code.
  int Describe(const char* name) {
    coldefFree(list_);
    list_ = reinterpret_cast<Column_Def*>(1);  // must be overwritten on every path
    return coldefDescribe(env_, err_, svc_, name, &list_);
  }

  void MustDescribe(const char* name) {
    ASSERT_EQ(COLDEF_OK, Describe(name)) << ocimem_test::FirstError(err_);
  }

  size_t Count() const {
    size_t n = 0;
    for (const Column_Def* def = list_; def != nullptr; def = def->Next) ++n;
    return n;
  }

  Column_Def* list_ = nullptr;
};

}  // namespace coldef_test

#endif  // TESTS_TOOLS_COLDEF_COLDEF_FIXTURE_H
