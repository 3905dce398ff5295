// Helpers of the describe tests: a describe handle, OCIDescribeAny by name, and typed reads
// of parameter attributes.
#ifndef TESTS_OCIMEM_DESCRIBE_FIXTURE_H
#define TESTS_OCIMEM_DESCRIBE_FIXTURE_H

#include <string>

#include "oci_fixture.h"

namespace ocimem_test {

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
};

}  // namespace ocimem_test

#endif  // TESTS_OCIMEM_DESCRIBE_FIXTURE_H
