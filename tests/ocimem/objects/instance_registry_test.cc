// The environment's registry of standalone instances under the pattern of a host that
// moves records: many instances made and freed in an order of their own, strings that move
// when resized.  Every live instance must stay findable (OCIObjectGetInd answers with its
// own null struct, OCIObjectFree takes it) and nothing else may be taken for one.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "oci_fixture.h"
#include "orid.h"

namespace ocimem_test {
namespace {

class InstanceRegistryTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create type reg_t as object (n number, s varchar2(30))");
    tdo_ = TypeByName("REG_T");
  }

  void* NewObject() {
    void* p = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, tdo_, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &p))
        << FirstError(err_);
    return p;
  }

  // Writes `n` into the object's NUMBER attribute.
  void Mark(void* object, int64_t n) {
    OCINumber number;
    ASSERT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &n, sizeof n, OCI_NUMBER_SIGNED, &number));
    const OraText* names[] = {Text("N")};
    const ub4 lengths[] = {1};
    ASSERT_EQ(OCI_SUCCESS, OCIObjectSetAttr(env_, err_, object, nullptr, tdo_, names, lengths, 1,
                                            nullptr, 0, OCI_IND_NOTNULL, nullptr, &number))
        << FirstError(err_);
  }

  int64_t MarkOf(void* object) {
    const OraText* names[] = {Text("N")};
    const ub4 lengths[] = {1};
    OCIInd ind = OCI_IND_NULL;
    void* value = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, object, nullptr, tdo_, names, lengths, 1,
                                            nullptr, 0, &ind, nullptr, &value, nullptr))
        << FirstError(err_);
    int64_t n = -1;
    EXPECT_EQ(OCI_SUCCESS, OCINumberToInt(err_, static_cast<OCINumber*>(value), sizeof n,
                                          OCI_NUMBER_SIGNED, &n));
    return n;
  }

  OCIType* tdo_ = nullptr;
};

// A deterministic shuffle of 0 .. n-1.
std::vector<size_t> Scrambled(size_t n, uint32_t seed) {
  std::vector<size_t> order(n);
  for (size_t i = 0; i < n; ++i) order[i] = i;
  for (size_t i = n; i > 1; --i) {
    seed = seed * 1103515245U + 12345U;
    std::swap(order[i - 1], order[(seed >> 8) % i]);
  }
  return order;
}

TEST_F(InstanceRegistryTest, ManyInstancesFreedInAnyOrderStayFindable) {
  constexpr size_t kCount = 5000;
  std::vector<void*> objects;
  for (size_t i = 0; i < kCount; ++i) {
    objects.push_back(NewObject());
    Mark(objects.back(), static_cast<int64_t>(i));
  }
  // Free half of them in a scrambled order; after every hundredth free, every live
  // instance is still found with its own null struct and value.
  std::vector<bool> live(kCount, true);
  const std::vector<size_t> order = Scrambled(kCount, 7);
  for (size_t k = 0; k < kCount / 2; ++k) {
    const size_t i = order[k];
    ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, objects[i], OCI_OBJECTFREE_FORCE));
    live[i] = false;
    if (k % 100 != 0) continue;
    for (size_t j = 0; j < kCount; ++j) {
      if (!live[j]) continue;
      void* ind = nullptr;
      ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, objects[j], &ind)) << j;
      ASSERT_NE(nullptr, ind);
      ASSERT_EQ(static_cast<int64_t>(j), MarkOf(objects[j]));
    }
  }
  // New instances take the freed places among the survivors.
  for (size_t k = 0; k < kCount / 2; ++k) {
    const size_t i = order[k];
    objects[i] = NewObject();
    Mark(objects[i], static_cast<int64_t>(i) + 1000000);
    live[i] = true;
  }
  for (size_t j = 0; j < kCount; ++j) {
    const bool renewed = std::find(order.begin(), order.begin() + kCount / 2, j) !=
                         order.begin() + kCount / 2;
    ASSERT_EQ(static_cast<int64_t>(j) + (renewed ? 1000000 : 0), MarkOf(objects[j])) << j;
  }
  for (void* object : objects) {
    ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, object, OCI_OBJECTFREE_FORCE));
  }
}

TEST_F(InstanceRegistryTest, AnAddressInsideAnInstanceIsNotOne) {
  void* object = NewObject();
  void* ind = nullptr;
  // The second attribute's slot: inside the instance, never handed out by OCIObjectNew.
  const OraText* names[] = {Text("S")};
  const ub4 lengths[] = {1};
  OCIInd attr_ind = OCI_IND_NULL;
  void* slot = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, object, nullptr, tdo_, names, lengths, 1,
                                          nullptr, 0, &attr_ind, nullptr, &slot, nullptr));
  ASSERT_NE(object, slot);
  EXPECT_EQ(OCI_ERROR, OCIObjectGetInd(env_, err_, slot, &ind));
  EXPECT_EQ(21710, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, object, OCI_OBJECTFREE_FORCE));
}

// A standalone string moves when it grows: the registry follows it under its new address,
// among many other instances, and it is freed from there.
TEST_F(InstanceRegistryTest, StringsThatMoveWhenResizedStayRegistered) {
  std::vector<void*> objects;
  for (int i = 0; i < 300; ++i) objects.push_back(NewObject());
  std::vector<OCIString*> strings;
  for (int i = 0; i < 300; ++i) {
    void* p = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_VARCHAR2, nullptr, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &p));
    strings.push_back(static_cast<OCIString*>(p));
  }
  size_t moved = 0;
  for (ub4 size : {16U, 4000U, 70000U}) {
    for (OCIString*& s : strings) {
      OCIString* before = s;
      ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, size, &s)) << FirstError(err_);
      if (s != before) ++moved;
    }
  }
  EXPECT_GT(moved, 0U);
  for (void* object : objects) {
    void* ind = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, object, &ind));
    ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, object, OCI_OBJECTFREE_FORCE));
  }
  for (OCIString* s : strings) {
    ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, s, OCI_OBJECTFREE_FORCE));
  }
}

// Instances a host never freed go with the environment (the leak checkers of the
// sanitizer builds see to it).
TEST_F(InstanceRegistryTest, InstancesLeftLiveGoWithTheEnvironment) {
  for (int i = 0; i < 1000; ++i) Mark(NewObject(), i);
}

}  // namespace
}  // namespace ocimem_test
