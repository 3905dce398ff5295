// CHAR(n) inside object types: attributes and collection elements are blank-padded to n
// when the server stores them, as relational CHAR columns are, whether the value came as a
// literal, a constructor or a bound object; they come back padded, and comparisons pad.
// The client's own instances are never padded: only what is stored is.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orid.h"
#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class CharPaddingTest : public SqlTest {
 protected:
  void SetUp() override {
    SqlTest::SetUp();
    MustExec("create type code_t as object (code char(5), name varchar2(10))");
    MustExec("create type codes_t as varray(5) of char(3)");
    MustExec("create type item_t as object (tag char(4), inner code_t)");
    MustExec("create type items_t as table of item_t");
    MustExec("create type box_t as object (id number, codes codes_t, items items_t)");
    MustExec("create table code_tab of code_t");
    MustExec("create table boxes of box_t (id primary key) nested table items store as box_items");
    code_tdo_ = TypeByName("CODE_T");
    box_tdo_ = TypeByName("BOX_T");
  }

  void* Attr(void* instance, void* null_struct, OCIType* tdo, const char* name,
             void** attr_null_struct = nullptr, OCIType** attr_tdo = nullptr) {
    const oratext* names[] = {Text(name)};
    ub4 lengths[] = {Len(name)};
    OCIInd status = OCI_IND_NULL;
    void* ns = nullptr;
    void* value = nullptr;
    OCIType* t = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, instance, null_struct, tdo, names,
                                            lengths, 1, nullptr, 0, &status, &ns, &value, &t))
        << name << ": " << FirstError(err_);
    if (attr_null_struct != nullptr) *attr_null_struct = ns;
    if (attr_tdo != nullptr) *attr_tdo = t;
    return value;
  }
  std::string Str(const OCIString* s) {
    return std::string(reinterpret_cast<const char*>(OCIStringPtr(env_, s)),
                       OCIStringSize(env_, s));
  }
  std::string TextAttr(void* instance, void* null_struct, OCIType* tdo, const char* name) {
    return Str(*static_cast<OCIString**>(Attr(instance, null_struct, tdo, name)));
  }
  void SetText(void* instance, void* null_struct, OCIType* tdo, const char* name,
               const std::string& text) {
    auto** s = static_cast<OCIString**>(Attr(instance, null_struct, tdo, name));
    ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text(text.c_str()),
                                               static_cast<ub4>(text.size()), s));
    const oratext* names[] = {Text(name)};
    ub4 lengths[] = {Len(name)};
    ASSERT_EQ(OCI_SUCCESS, OCIObjectSetAttr(env_, err_, instance, null_struct, tdo, names,
                                            lengths, 1, nullptr, 0, OCI_IND_NOTNULL, nullptr,
                                            nullptr));
  }

  // The first column of the first row, fetched into an object define of type tdo.
  void* FetchObject(const std::string& sql, OCIType* tdo, void** null_struct) {
    OCIStmt* stmt = Prepare(sql);
    OCIDefine* def = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                          nullptr, nullptr, OCI_DEFAULT));
    void* object = nullptr;
    EXPECT_EQ(OCI_SUCCESS,
              OCIDefineObject(def, err_, tdo, &object, nullptr, null_struct, nullptr));
    EXPECT_EQ(OCI_SUCCESS, Execute(stmt)) << sql << ": " << FirstError(err_);
    return object;
  }

  // The texts of a collection of CHAR or VARCHAR2 elements.
  std::vector<std::string> Elements(const OCIColl* coll) {
    sb4 size = 0;
    EXPECT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, coll, &size));
    std::vector<std::string> out;
    for (sb4 i = 0; i < size; ++i) {
      boolean exists = FALSE;
      void* elem = nullptr;
      void* elem_ind = nullptr;
      EXPECT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, coll, i, &exists, &elem, &elem_ind));
      out.push_back(Str(*static_cast<OCIString**>(elem)));
    }
    return out;
  }

  void* NewCode(const std::string& code, const std::string& name, OCIInd** ind) {
    void* obj = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, code_tdo_, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &obj));
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, obj, reinterpret_cast<void**>(ind)));
    (*ind)[0] = OCI_IND_NOTNULL;
    SetText(obj, *ind, code_tdo_, "CODE", code);
    SetText(obj, *ind, code_tdo_, "NAME", name);
    return obj;
  }

  sword InsertBound(const std::string& sql, void* instance, void* null_struct, OCIType* tdo) {
    OCIStmt* stmt = Prepare(sql);
    OCIBind* b = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, nullptr, 0, SQLT_NTY, nullptr, nullptr,
                                        nullptr, 0, nullptr, OCI_DEFAULT));
    EXPECT_EQ(OCI_SUCCESS, OCIBindObject(b, err_, tdo, &instance, nullptr, &null_struct, nullptr));
    return Execute(stmt);
  }

  OCIType* code_tdo_ = nullptr;
  OCIType* box_tdo_ = nullptr;
};

TEST_F(CharPaddingTest, AttributeOfALiteralRowIsPaddedInAnObjectTable) {
  MustExec("insert into code_tab values ('ab', 'x')");
  EXPECT_EQ((std::vector<std::string>{"ab   "}), Column("select code from code_tab"));
  EXPECT_EQ((std::vector<std::string>{"x"}), Column("select name from code_tab"));
}

TEST_F(CharPaddingTest, AttributeOfAConstructorIsPaddedAndFetchedPadded) {
  MustExec("insert into code_tab values (code_t('ab', 'x'))");
  void* ns = nullptr;
  void* obj = FetchObject("select value(c) from code_tab c", code_tdo_, &ns);
  ASSERT_NE(nullptr, obj);
  EXPECT_EQ("ab   ", TextAttr(obj, ns, code_tdo_, "CODE"));
  EXPECT_EQ("x", TextAttr(obj, ns, code_tdo_, "NAME"));
}

TEST_F(CharPaddingTest, BoundObjectIsStoredPaddedWhileTheClientsInstanceStaysAsItWas) {
  OCIInd* ind = nullptr;
  void* obj = NewCode("q", "y", &ind);
  ASSERT_EQ(OCI_SUCCESS, InsertBound("insert into code_tab values (:1)", obj, ind, code_tdo_))
      << FirstError(err_);
  EXPECT_EQ("q", TextAttr(obj, ind, code_tdo_, "CODE"));
  void* ns = nullptr;
  void* fetched = FetchObject("select value(c) from code_tab c", code_tdo_, &ns);
  ASSERT_NE(nullptr, fetched);
  EXPECT_EQ("q    ", TextAttr(fetched, ns, code_tdo_, "CODE"));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_DEFAULT));
}

TEST_F(CharPaddingTest, AValueOfFullLengthIsLeftAsItIs) {
  MustExec("insert into code_tab values ('abcde', 'x')");
  EXPECT_EQ((std::vector<std::string>{"abcde"}), Column("select code from code_tab"));
}

TEST_F(CharPaddingTest, ATooLongValueIsStillRefused) {
  EXPECT_EQ(22814, ExecError("insert into boxes values (box_t(1, codes_t('abcd'), null))"));
}

TEST_F(CharPaddingTest, UpdateOfAnAttributePads) {
  MustExec("insert into code_tab values ('ab', 'x')");
  MustExec("update code_tab set code = 'z' where name = 'x'");
  EXPECT_EQ((std::vector<std::string>{"z    "}), Column("select code from code_tab"));
}

TEST_F(CharPaddingTest, ComparisonWithAShorterTextPads) {
  MustExec("insert into code_tab values ('ab', 'x')");
  MustExec("insert into code_tab values ('abc', 'y')");
  EXPECT_EQ((std::vector<std::string>{"x"}), Column("select name from code_tab where code = 'ab'"));
  EXPECT_EQ((std::vector<std::string>{"y"}),
            Column("select name from code_tab where code = 'abc  '"));
}

TEST_F(CharPaddingTest, ElementsOfACharCollectionAndCharsAtEveryDepthArePadded) {
  MustExec(
      "insert into boxes values (box_t(1, codes_t('a', 'bc', 'def'), "
      "items_t(item_t('t', code_t('k', 'n')), item_t('tagz', null))))");
  void* ns = nullptr;
  OCIStmt* stmt = Prepare("select value(b) from boxes b where id = 1");
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  void* box = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineObject(def, err_, box_tdo_, &box, nullptr, &ns, nullptr));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  auto* codes = *static_cast<OCIColl**>(Attr(box, ns, box_tdo_, "CODES"));
  EXPECT_EQ((std::vector<std::string>{"a  ", "bc ", "def"}), Elements(codes));

  auto* items = *static_cast<OCIColl**>(Attr(box, ns, box_tdo_, "ITEMS"));
  OCIType* item_tdo = TypeByName("ITEM_T");
  std::vector<std::string> tags;
  std::vector<std::string> inner_codes;
  for (sb4 i = 0; i < 2; ++i) {
    boolean exists = FALSE;
    void* item = nullptr;
    void* item_ind = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, items, i, &exists, &item, &item_ind));
    tags.push_back(TextAttr(item, item_ind, item_tdo, "TAG"));
    void* inner_ns = nullptr;
    OCIType* inner_tdo = nullptr;
    void* inner = Attr(item, item_ind, item_tdo, "INNER", &inner_ns, &inner_tdo);
    if (static_cast<OCIInd*>(inner_ns)[0] == OCI_IND_NOTNULL) {
      inner_codes.push_back(TextAttr(inner, inner_ns, inner_tdo, "CODE"));
    }
  }
  EXPECT_EQ((std::vector<std::string>{"t   ", "tagz"}), tags);
  EXPECT_EQ((std::vector<std::string>{"k    "}), inner_codes);
}

TEST_F(CharPaddingTest, NullCharAttributesAndElementsStayNull) {
  MustExec("insert into code_tab values (null, 'x')");
  EXPECT_EQ((std::vector<std::string>{"<null>"}), Column("select code from code_tab"));
}

}  // namespace
}  // namespace ocimem_test
