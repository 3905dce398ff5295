// OCITypeByName and OCIObjectUnpin.
#include <gtest/gtest.h>

#include <string>

#include "oci_fixture.h"
#include "orid.h"

namespace ocimem_test {
namespace {

class TypeTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create type doc_t as object (id number)");
    MustExec("create type \"lower_t\" as object (id number)");
  }
  sword Lookup(const char* schema, const char* name, OCIType** tdo) {
    return OCITypeByName(env_, err_, svc_, schema != nullptr ? Text(schema) : nullptr,
                         schema != nullptr ? Len(schema) : 0,
                         name != nullptr ? Text(name) : nullptr, name != nullptr ? Len(name) : 0,
                         nullptr, 0, OCI_DURATION_SESSION, OCI_TYPEGET_HEADER, tdo);
  }
  // Whether an instance of the type has the attribute.
  bool HasAttribute(OCIType* tdo, const char* name) {
    void* obj = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, tdo, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &obj));
    const OraText* names[1] = {Text(name)};
    const ub4 lengths[1] = {Len(name)};
    OCIInd ind = 0;
    void* value = nullptr;
    const sword rc = OCIObjectGetAttr(env_, err_, obj, nullptr, tdo, names, lengths, 1, nullptr,
                                      0, &ind, nullptr, &value, nullptr);
    EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_OBJECTFREE_FORCE));
    return rc == OCI_SUCCESS;
  }
};

TEST_F(TypeTest, FoundInTheUsersSchema) {
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &tdo));
  EXPECT_NE(nullptr, tdo);
  OCIType* qualified = nullptr;
  EXPECT_EQ(OCI_SUCCESS, Lookup("SCOTT", "DOC_T", &qualified));
  // UNCONFIRMED: repeated lookups give the same cached TDO.
  EXPECT_EQ(tdo, qualified);
  OCIType* empty_schema = nullptr;
  EXPECT_EQ(OCI_SUCCESS, Lookup("", "DOC_T", &empty_schema));
  EXPECT_EQ(tdo, empty_schema);
}

// Looking a name up again through the same error handle finds what the catalog holds now.
TEST_F(TypeTest, ReplacedTypeIsTheOneFoundNext) {
  OCIType* before = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &before));
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &before));
  EXPECT_FALSE(HasAttribute(before, "NAME"));
  MustExec("create or replace type doc_t as object (id number, name varchar2(10))");
  OCIType* after = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &after)) << FirstError(err_);
  EXPECT_NE(before, after);
  EXPECT_TRUE(HasAttribute(after, "NAME"));
  OCIType* again = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &again));
  EXPECT_EQ(after, again);
}

TEST_F(TypeTest, DroppedTypeIsNotFoundNext) {
  OCIType* tdo = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &tdo));
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &tdo));
  MustExec("drop type doc_t");
  OCIType* gone = nullptr;
  EXPECT_EQ(OCI_ERROR, Lookup(nullptr, "DOC_T", &gone));
  EXPECT_EQ("ORA-04043: object DOC_T does not exist", FirstError(err_));
  EXPECT_EQ(nullptr, gone);
  // Another object under the name is no type either.
  MustExec("create table doc_t (id number)");
  EXPECT_EQ(OCI_ERROR, Lookup(nullptr, "DOC_T", &gone));
  EXPECT_EQ(4043, FirstCode(err_));
}

// Names alternating, with and without their schema, each find their own type.
TEST_F(TypeTest, AlternatingNamesFindTheirOwnTypes) {
  OCIType* doc = nullptr;
  OCIType* lower = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &doc));
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "lower_t", &lower));
  ASSERT_NE(doc, lower);
  for (int i = 0; i < 3; ++i) {
    OCIType* tdo = nullptr;
    ASSERT_EQ(OCI_SUCCESS, Lookup("SCOTT", "lower_t", &tdo));
    EXPECT_EQ(lower, tdo);
    ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &tdo));
    EXPECT_EQ(doc, tdo);
    EXPECT_EQ(OCI_ERROR, Lookup("SCOTX", "DOC_T", &tdo));
    EXPECT_EQ(OCI_ERROR, Lookup(nullptr, "DOC_U", &tdo));
    EXPECT_EQ(OCI_ERROR, Lookup(nullptr, "DOC_", &tdo));
  }
}

// One error handle used with the sessions of two databases: each finds its own types.
TEST_F(TypeTest, SameErrorHandleOverTwoDatabases) {
  OCISvcCtx* other = nullptr;
  const std::string name = DatabaseName() + "_other";
  ASSERT_EQ(OCI_SUCCESS, OCILogon(env_, err_, &other, Text("scott"), 5, Text("tiger"), 5,
                                  Text(name.c_str()), Len(name.c_str())));
  OCIType* mine = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &mine));
  OCIType* theirs = nullptr;
  EXPECT_EQ(OCI_ERROR, OCITypeByName(env_, err_, other, nullptr, 0, Text("DOC_T"), 5, nullptr, 0,
                                     OCI_DURATION_SESSION, OCI_TYPEGET_HEADER, &theirs));
  EXPECT_EQ(4043, FirstCode(err_));
  OCIType* again = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &again));
  EXPECT_EQ(mine, again);
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(other, err_));
}

TEST_F(TypeTest, NamesAreCaseSensitiveAsStored) {
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_ERROR, Lookup(nullptr, "doc_t", &tdo));
  EXPECT_EQ("ORA-04043: object doc_t does not exist", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, Lookup(nullptr, "lower_t", &tdo));
  EXPECT_EQ(OCI_ERROR, Lookup("scott", "DOC_T", &tdo));
  EXPECT_EQ("ORA-04043: object scott.DOC_T does not exist", FirstError(err_));
}

// UNCONFIRMED: ORA-04043 with the name as passed, ORA-21560 for a missing name.
TEST_F(TypeTest, LookupErrors) {
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_ERROR, Lookup("OTHER", "DOC_T", &tdo));
  EXPECT_EQ("ORA-04043: object OTHER.DOC_T does not exist", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, Lookup(nullptr, nullptr, &tdo));
  EXPECT_EQ("ORA-21560: argument 6 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, Lookup(nullptr, "", &tdo));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, Lookup(nullptr, "DOC_T", nullptr));
  EXPECT_EQ("ORA-21560: argument 12 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(nullptr, tdo);
}

TEST_F(TypeTest, HandleChecks) {
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCITypeByName(nullptr, err_, svc_, nullptr, 0, Text("DOC_T"), 5, nullptr, 0,
                          OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCITypeByName(env_, nullptr, svc_, nullptr, 0, Text("DOC_T"), 5, nullptr, 0,
                          OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCITypeByName(env_, err_, nullptr, nullptr, 0, Text("DOC_T"), 5, nullptr, 0,
                          OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo));
}

TEST_F(TypeTest, NeedsObjectMode) {
  OCIEnv* plain = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIEnvCreate(&plain, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_ERROR, OCITypeByName(plain, err_, svc_, nullptr, 0, Text("DOC_T"), 5, nullptr, 0,
                                     OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo));
  EXPECT_EQ("ORA-21301: not initialized in object mode", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(plain, OCI_HTYPE_ENV));
}

TEST_F(TypeTest, UnpinOncePerPin) {
  OCIType* tdo = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &tdo));
  ASSERT_EQ(OCI_SUCCESS, Lookup(nullptr, "DOC_T", &tdo));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectUnpin(env_, err_, tdo));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectUnpin(env_, err_, tdo));
  // UNCONFIRMED: unpinning below zero.
  EXPECT_EQ(OCI_ERROR, OCIObjectUnpin(env_, err_, tdo));
  EXPECT_EQ(21710, FirstCode(err_));
  // The TDO itself stays valid while the session lives.
  void* obj = nullptr;
  EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, tdo, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &obj));
  // UNCONFIRMED: a value instance cannot be unpinned.
  EXPECT_EQ(OCI_ERROR, OCIObjectUnpin(env_, err_, obj));
  EXPECT_EQ("ORA-21710: argument is expecting a valid memory address of an object",
            FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCIObjectUnpin(env_, err_, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIObjectUnpin(env_, nullptr, tdo));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_OBJECTFREE_FORCE));
}

}  // namespace
}  // namespace ocimem_test
