// Helpers of the describe tests: a describe handle, OCIDescribeAny by name, and typed reads
// of parameter attributes.
#ifndef TESTS_OCIMEM_DESCRIBE_FIXTURE_H
#define TESTS_OCIMEM_DESCRIBE_FIXTURE_H

#include <string>

#include "oci_fixture.h"

namespace ocimem_test {

// What a column parameter answers (table and view columns alike).
struct ColumnCase {
  const char* name;
  ub2 data_type;
  ub2 data_size;
  ub1 precision;
  sb1 scale;
  ub1 is_null;
  const char* type_name;  // of object and collection columns, in schema SCOTT
  ub1 char_used;
  ub2 char_size;
  ub1 charset_form;
  ub2 charset_id;
};

class DescribeFixture : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&dsc_),
                                          OCI_HTYPE_DESCRIBE, 0, nullptr));
  }

  // OCIDescribeAny of a name; its status.
  sword DescribeAs(const char* name, ub1 ptype, OCIDescribe* dsc = nullptr) {
    return OCIDescribeAny(svc_, err_, const_cast<char*>(name), Len(name), OCI_OTYPE_NAME,
                          OCI_DEFAULT, ptype, dsc != nullptr ? dsc : dsc_);
  }

  // The top parameter of an object described by name.
  OCIParam* Describe(const char* name, ub1 ptype, OCIDescribe* dsc = nullptr) {
    EXPECT_EQ(OCI_SUCCESS, DescribeAs(name, ptype, dsc)) << name << ": " << FirstError(err_);
    return Top(dsc);
  }

  OCIParam* Top(OCIDescribe* dsc = nullptr) {
    OCIParam* top = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(dsc != nullptr ? dsc : dsc_, OCI_HTYPE_DESCRIBE, &top,
                                      nullptr, OCI_ATTR_PARAM, err_));
    return top;
  }

  std::string TextAttr(OCIParam* p, ub4 attr) {
    OraText* text = nullptr;
    ub4 size = 0;
    EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(p, OCI_DTYPE_PARAM, &text, &size, attr, err_))
        << attr << " " << FirstError(err_);
    return text == nullptr ? "<null>" : std::string(reinterpret_cast<char*>(text), size);
  }

  // A fixed-size attribute; its size must be that of T.
  template <typename T>
  T Attr(OCIParam* p, ub4 attr) {
    T value{};
    ub4 size = 0;
    EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(p, OCI_DTYPE_PARAM, &value, &size, attr, err_))
        << attr << " " << FirstError(err_);
    EXPECT_EQ(sizeof(T), size) << attr;
    return value;
  }

  // The ORA code of an attribute that must fail.
  sb4 AttrError(OCIParam* p, ub4 attr) {
    unsigned char buf[16] = {0};
    EXPECT_EQ(OCI_ERROR, OCIAttrGet(p, OCI_DTYPE_PARAM, buf, nullptr, attr, err_)) << attr;
    return FirstCode(err_);
  }

  OCIParam* Item(OCIParam* list, ub4 pos) {
    OCIParam* item = nullptr;
    EXPECT_EQ(OCI_SUCCESS,
              OCIParamGet(list, OCI_DTYPE_PARAM, err_, reinterpret_cast<void**>(&item), pos))
        << pos;
    return item;
  }

  OCIDescribe* dsc_ = nullptr;
  // Every attribute of the column parameter `col` against `c`.
  void ExpectColumn(OCIParam* col, const ColumnCase& c) {
    EXPECT_EQ(OCI_PTYPE_COL, Attr<ub1>(col, OCI_ATTR_PTYPE));
    EXPECT_EQ(c.name, TextAttr(col, OCI_ATTR_NAME));
    EXPECT_EQ(c.data_type, Attr<ub2>(col, OCI_ATTR_DATA_TYPE));
    EXPECT_EQ(c.data_size, Attr<ub2>(col, OCI_ATTR_DATA_SIZE));
    EXPECT_EQ(c.precision, Attr<ub1>(col, OCI_ATTR_PRECISION));
    EXPECT_EQ(c.scale, Attr<sb1>(col, OCI_ATTR_SCALE));
    EXPECT_EQ(c.is_null, Attr<ub1>(col, OCI_ATTR_IS_NULL));
    EXPECT_EQ(c.type_name, TextAttr(col, OCI_ATTR_TYPE_NAME));
    EXPECT_EQ(*c.type_name != '\0' ? "SCOTT" : "", TextAttr(col, OCI_ATTR_SCHEMA_NAME));
    EXPECT_EQ(c.char_used, Attr<ub1>(col, OCI_ATTR_CHAR_USED));
    EXPECT_EQ(c.char_size, Attr<ub2>(col, OCI_ATTR_CHAR_SIZE));
    EXPECT_EQ(c.charset_form, Attr<ub1>(col, OCI_ATTR_CHARSET_FORM));
    EXPECT_EQ(c.charset_id, Attr<ub2>(col, OCI_ATTR_CHARSET_ID));
    EXPECT_EQ(0, Attr<ub1>(col, OCI_ATTR_INVISIBLE_COL));
    // decision DS8: TYPECODE and NUM_ELEMS belong to type attributes and elements, not columns.
    EXPECT_EQ(24315, AttrError(col, OCI_ATTR_TYPECODE));
    EXPECT_EQ(24315, AttrError(col, OCI_ATTR_NUM_ELEMS));
  }
};

}  // namespace ocimem_test

#endif  // TESTS_OCIMEM_DESCRIBE_FIXTURE_H
