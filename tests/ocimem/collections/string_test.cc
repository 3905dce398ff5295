// OCIString and OCIRaw: Oracle's calls and the length-word layout hosts rely on.
#include <gtest/gtest.h>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

using StringTest = OciTest;

ub4 LengthWord(const void* value) {
  ub4 length;
  std::memcpy(&length, value, sizeof length);
  return length;
}

TEST_F(StringTest, AssignTextAllocatesAndTerminates) {
  OCIString* s = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("hello"), 5, &s));
  ASSERT_NE(nullptr, s);
  EXPECT_EQ(5u, OCIStringSize(env_, s));
  EXPECT_STREQ("hello", reinterpret_cast<char*>(OCIStringPtr(env_, s)));
  // decision D7: a ub4 length at offset 0 and the text from offset 4.
  EXPECT_EQ(5u, LengthWord(s));
  EXPECT_EQ(reinterpret_cast<oratext*>(s) + 4, OCIStringPtr(env_, s));
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("hi"), 2, &s));
  EXPECT_STREQ("hi", reinterpret_cast<char*>(OCIStringPtr(env_, s)));
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text(""), 0, &s));
  EXPECT_EQ(0u, OCIStringSize(env_, s));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &s));
}

TEST_F(StringTest, AssignFromAnotherString) {
  OCIString* a = nullptr;
  OCIString* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("source text"), 11, &a));
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssign(env_, err_, a, &b));
  EXPECT_NE(a, b);
  EXPECT_STREQ("source text", reinterpret_cast<char*>(OCIStringPtr(env_, b)));
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssign(env_, err_, a, &a));  // onto itself
  EXPECT_STREQ("source text", reinterpret_cast<char*>(OCIStringPtr(env_, a)));
  EXPECT_EQ(OCI_ERROR, OCIStringAssign(env_, err_, nullptr, &b));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIStringAssign(env_, err_, a, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &a));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &b));
}

// Hosts resize, write the bytes at OCIStringPtr and store the length word themselves.
TEST_F(StringTest, ResizeThenWriteInPlace) {
  OCIString* s = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 6, &s));
  ASSERT_NE(nullptr, s);
  // UNCONFIRMED: the size after a resize is the new size.
  EXPECT_EQ(6u, OCIStringSize(env_, s));
  std::memcpy(OCIStringPtr(env_, s), "abcdef", 6);  // no room asked for a NUL: there is one
  OCIStringPtr(env_, s)[6] = '\0';
  ub4 length = 4;
  std::memcpy(s, &length, sizeof length);
  EXPECT_EQ(4u, OCIStringSize(env_, s));
  ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 100, &s));
  EXPECT_EQ(100u, OCIStringSize(env_, s));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &s));
}

// decision D6: resizing to 0 frees and leaves NULL; size and pointer of NULL are safe.
TEST_F(StringTest, ResizeToZeroFrees) {
  OCIString* s = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("x"), 1, &s));
  ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &s));
  EXPECT_EQ(nullptr, s);
  EXPECT_EQ(0u, OCIStringSize(env_, nullptr));
  EXPECT_EQ(nullptr, OCIStringPtr(env_, nullptr));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &s));  // already NULL
}

TEST_F(StringTest, StringErrors) {
  OCIString* s = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIStringAssignText(env_, err_, nullptr, 3, &s));
  EXPECT_EQ("ORA-21560: argument 3 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCIStringAssignText(env_, err_, Text("a"), 1, nullptr));
  EXPECT_EQ("ORA-21560: argument 5 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCIStringResize(env_, err_, 5, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIStringAssignText(nullptr, err_, Text("a"), 1, &s));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIStringAssignText(env_, nullptr, Text("a"), 1, &s));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIStringResize(env_, nullptr, 1, &s));
  EXPECT_EQ(nullptr, s);
}

TEST_F(StringTest, RawAssignAndLayout) {
  OCIRaw* r = nullptr;
  const ub1 bytes[] = {0, 1, 0xff, 0};
  ASSERT_EQ(OCI_SUCCESS, OCIRawAssignBytes(env_, err_, bytes, 4, &r));
  EXPECT_EQ(4u, OCIRawSize(env_, r));
  EXPECT_EQ(0, std::memcmp(bytes, OCIRawPtr(env_, r), 4));
  EXPECT_EQ(4u, LengthWord(r));
  EXPECT_EQ(reinterpret_cast<ub1*>(r) + 4, OCIRawPtr(env_, r));
  ASSERT_EQ(OCI_SUCCESS, OCIRawAssignBytes(env_, err_, nullptr, 0, &r));
  EXPECT_EQ(0u, OCIRawSize(env_, r));
  EXPECT_NE(nullptr, r);
  EXPECT_EQ(OCI_SUCCESS, OCIRawResize(env_, err_, 0, &r));
}

TEST_F(StringTest, RawResize) {
  OCIRaw* r = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIRawResize(env_, err_, 3, &r));
  ASSERT_NE(nullptr, r);
  EXPECT_EQ(3u, OCIRawSize(env_, r));
  std::memcpy(OCIRawPtr(env_, r), "\x01\x02\x03", 3);
  ASSERT_EQ(OCI_SUCCESS, OCIRawResize(env_, err_, 1000, &r));
  EXPECT_EQ(1000u, OCIRawSize(env_, r));
  // decision D6
  ASSERT_EQ(OCI_SUCCESS, OCIRawResize(env_, err_, 0, &r));
  EXPECT_EQ(nullptr, r);
  EXPECT_EQ(0u, OCIRawSize(env_, nullptr));
  EXPECT_EQ(nullptr, OCIRawPtr(env_, nullptr));
}

TEST_F(StringTest, RawErrors) {
  OCIRaw* r = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIRawAssignBytes(env_, err_, nullptr, 2, &r));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIRawAssignBytes(env_, err_, Text("a"), 1, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIRawResize(env_, err_, 1, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIRawResize(nullptr, err_, 1, &r));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIRawAssignBytes(env_, nullptr, Text("a"), 1, &r));
}

}  // namespace
}  // namespace ocimem_test
