// Every pointer argument of the object, collection, string and statement calls given as
// NULL in turn, each with its one outcome: OCI_INVALID_HANDLE for a handle, OCI_ERROR with
// ORA-21560 naming the argument's place in the prototype for a value, never a crash.
#include <functional>
#include <string>
#include <vector>

#include "oci_fixture.h"
#include "orid.h"

namespace ocimem_test {
namespace {

class NullArgumentTest : public OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("CREATE TYPE NUMS AS TABLE OF NUMBER");
    MustExec("CREATE TYPE P AS OBJECT (NAME VARCHAR2(10), TAGS NUMS)");
    ptype_ = TypeByName("P");
    ntype_ = TypeByName("NUMS");
    ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, ptype_, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &obj_));
    ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, obj_, &ind_));
    void* c = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_TABLE, ntype_, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &c));
    coll_ = static_cast<OCIColl*>(c);
    ASSERT_EQ(OCI_SUCCESS, OCIIterCreate(env_, err_, coll_, &iter_));
    ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("x"), 1, &str_));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt_),
                                          OCI_HTYPE_STMT, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt_, err_, Text("SELECT 1 FROM DUAL"), 18,
                                          OCI_NTV_SYNTAX, OCI_DEFAULT));
  }

  struct Call {
    const char* name;
    std::function<sword(bool /*env*/, bool /*err*/, int /*null position, 0: none*/)> run;
    // For each pointer argument besides env and err (numbered from 1) given as NULL: the
    // error text, ORA-21560 naming the argument's place in the prototype, or "" where the
    // argument is a handle and the answer is OCI_INVALID_HANDLE.
    std::vector<std::string> outcomes;
    bool has_env = true;
  };

  OCIType* ptype_ = nullptr;
  OCIType* ntype_ = nullptr;
  void* obj_ = nullptr;
  void* ind_ = nullptr;
  OCIColl* coll_ = nullptr;
  OCIIter* iter_ = nullptr;
  OCIString* str_ = nullptr;
  OCIStmt* stmt_ = nullptr;
};

// Oracle's answer to a NULL value argument at place n of the prototype.
std::string Arg(int n) {
  return "ORA-21560: argument " + std::to_string(n) + " is null, invalid, or out of range";
}
// A NULL handle: OCI_INVALID_HANDLE, with nothing in the error handle.
const char kHandle[] = "";

template <typename T>
T* Or(bool keep, T* p) {
  return keep ? p : nullptr;
}

TEST_F(NullArgumentTest, EachNullPointerGetsItsOneOutcome) {
  const OraText* names[] = {Text("NAME")};
  ub4 lengths[] = {4};
  std::vector<Call> calls = {
      {"OCIObjectGetAttr",
       [&](bool e, bool r, int n) {
         OCIInd status;
         void* ns;
         void* value;
         OCIType* tdo;
         return OCIObjectGetAttr(Or(e, env_), Or(r, err_), n == 1 ? nullptr : obj_, ind_,
                                 n == 2 ? nullptr : ptype_, n == 3 ? nullptr : names,
                                 n == 4 ? nullptr : lengths, 1, nullptr, 0, &status, &ns,
                                 &value, &tdo);
       },
       {Arg(3), Arg(5), Arg(6), Arg(7)}},
      {"OCIObjectSetAttr",
       [&](bool e, bool r, int n) {
         return OCIObjectSetAttr(Or(e, env_), Or(r, err_), n == 1 ? nullptr : obj_, ind_,
                                 n == 2 ? nullptr : ptype_, n == 3 ? nullptr : names,
                                 n == 4 ? nullptr : lengths, 1, nullptr, 0, OCI_IND_NOTNULL,
                                 nullptr, str_);
       },
       {Arg(3), Arg(5), Arg(6), Arg(7)}},
      {"OCIObjectNew",
       [&](bool e, bool r, int n) {
         void* out = nullptr;
         sword rc = OCIObjectNew(Or(e, env_), Or(r, err_), svc_, OCI_TYPECODE_OBJECT,
                                 n == 1 ? nullptr : ptype_, nullptr, OCI_DURATION_DEFAULT, TRUE,
                                 n == 2 ? nullptr : &out);
         if (out != nullptr) OCIObjectFree(env_, err_, out, OCI_OBJECTFREE_FORCE);
         return rc;
       },
       {Arg(5), Arg(9)}},
      {"OCIObjectGetInd",
       [&](bool e, bool r, int n) {
         void* out = nullptr;
         return OCIObjectGetInd(Or(e, env_), Or(r, err_), n == 1 ? nullptr : obj_,
                                n == 2 ? nullptr : &out);
       },
       {Arg(3), Arg(4)}},
      {"OCIObjectCopy",
       [&](bool e, bool r, int n) {
         return OCIObjectCopy(Or(e, env_), Or(r, err_), svc_, n == 1 ? nullptr : obj_,
                              n == 2 ? nullptr : ind_, n == 3 ? nullptr : obj_,
                              n == 4 ? nullptr : ind_, n == 5 ? nullptr : ptype_,
                              OCI_DURATION_DEFAULT, 0);
       },
       {Arg(4), Arg(5), Arg(6), Arg(7), Arg(8)}},
      {"OCIObjectFree",
       [&](bool e, bool r, int) { return OCIObjectFree(Or(e, env_), Or(r, err_), nullptr, 0); },
       {}},
      {"OCICollSize",
       [&](bool e, bool r, int n) {
         sb4 size;
         return OCICollSize(Or(e, env_), Or(r, err_), n == 1 ? nullptr : coll_,
                            n == 2 ? nullptr : &size);
       },
       {Arg(3), Arg(4)}},
      {"OCICollAppend",
       [&](bool e, bool r, int n) {
         OCINumber num{};
         OCINumberFromInt(err_, &lengths[0], sizeof lengths[0], OCI_NUMBER_UNSIGNED, &num);
         return OCICollAppend(Or(e, env_), Or(r, err_), n == 1 ? nullptr : &num, nullptr,
                              n == 2 ? nullptr : coll_);
       },
       {Arg(3), Arg(5)}},
      {"OCICollGetElem",
       [&](bool e, bool r, int n) {
         boolean exists;
         void* elem;
         return OCICollGetElem(Or(e, env_), Or(r, err_), n == 1 ? nullptr : coll_, 0,
                               n == 2 ? nullptr : &exists, n == 3 ? nullptr : &elem, nullptr);
       },
       {Arg(3), Arg(5), Arg(6)}},
      {"OCICollTrim",
       [&](bool e, bool r, int) { return OCICollTrim(Or(e, env_), Or(r, err_), 0, nullptr); },
       {}},
      {"OCIIterNext",
       [&](bool e, bool r, int n) {
         void* elem;
         boolean eoc;
         return OCIIterNext(Or(e, env_), Or(r, err_), n == 1 ? nullptr : iter_,
                            n == 2 ? nullptr : &elem, nullptr, n == 3 ? nullptr : &eoc);
       },
       {Arg(3), Arg(4), Arg(6)}},
      {"OCIIterCreate",
       [&](bool e, bool r, int n) {
         OCIIter* it = nullptr;
         return OCIIterCreate(Or(e, env_), Or(r, err_), n == 1 ? nullptr : coll_,
                              n == 2 ? nullptr : &it);
       },
       {Arg(3), Arg(4)}},
      {"OCIStringAssignText",
       [&](bool e, bool r, int n) {
         return OCIStringAssignText(Or(e, env_), Or(r, err_), n == 1 ? nullptr : Text("ab"), 2,
                                    n == 2 ? nullptr : &str_);
       },
       {Arg(3), Arg(5)}},
      {"OCIStringAssign",
       [&](bool e, bool r, int n) {
         OCIString* copy = nullptr;
         return OCIStringAssign(Or(e, env_), Or(r, err_), n == 1 ? nullptr : str_,
                                n == 2 ? nullptr : &copy);
       },
       {Arg(3), Arg(4)}},
      {"OCIStringResize",
       [&](bool e, bool r, int n) {
         return OCIStringResize(Or(e, env_), Or(r, err_), 4, n == 1 ? nullptr : &str_);
       },
       {Arg(4)}},
      {"OCITypeByName",
       [&](bool e, bool r, int n) {
         OCIType* tdo;
         return OCITypeByName(Or(e, env_), Or(r, err_), n == 1 ? nullptr : svc_, nullptr, 0,
                              n == 2 ? nullptr : Text("P"), 1, nullptr, 0, OCI_DURATION_DEFAULT,
                              OCI_TYPEGET_HEADER, n == 3 ? nullptr : &tdo);
       },
       {kHandle, Arg(6), Arg(12)}},
      {"OCIStmtExecute",
       [&](bool, bool r, int n) {
         return OCIStmtExecute(n == 1 ? nullptr : svc_, n == 2 ? nullptr : stmt_, Or(r, err_), 0,
                               0, nullptr, nullptr, OCI_DEFAULT);
       },
       {kHandle, kHandle}, false},
      {"OCIStmtPrepare",
       [&](bool, bool r, int n) {
         return OCIStmtPrepare(n == 1 ? nullptr : stmt_, Or(r, err_),
                               n == 2 ? nullptr : Text("SELECT 1 FROM DUAL"), 18, OCI_NTV_SYNTAX,
                               OCI_DEFAULT);
       },
       {kHandle, Arg(3)}, false},
      {"OCIStmtFetch2",
       [&](bool, bool r, int n) {
         return OCIStmtFetch2(n == 1 ? nullptr : stmt_, Or(r, err_), 1, OCI_FETCH_NEXT, 0,
                              OCI_DEFAULT);
       },
       {kHandle}, false},
      {"OCIDefineByPos",
       [&](bool, bool r, int n) {
         OCIDefine* d = nullptr;
         int v;
         return OCIDefineByPos(n == 1 ? nullptr : stmt_, n == 2 ? nullptr : &d, Or(r, err_), 1,
                               &v, sizeof v, SQLT_INT, nullptr, nullptr, nullptr, OCI_DEFAULT);
       },
       {kHandle, Arg(2)}, false},
      {"OCILobGetLength",
       [&](bool, bool r, int) {
         ub4 len;
         return OCILobGetLength(svc_, Or(r, err_), nullptr, &len);  // the locator NULL
       },
       {"ORA-22275: invalid LOB locator specified"}, false},
      {"OCITransCommit",
       [&](bool, bool r, int) { return OCITransCommit(nullptr, Or(r, err_), OCI_DEFAULT); },
       {}, false},
  };
  for (const Call& c : calls) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(OCI_INVALID_HANDLE, c.run(true, false, 0));
    if (c.has_env) {
      EXPECT_EQ(OCI_INVALID_HANDLE, c.run(false, true, 0));
    }
    for (size_t i = 0; i < c.outcomes.size(); ++i) {
      SCOPED_TRACE(i + 1);
      const sword rc = c.run(true, true, static_cast<int>(i + 1));
      if (c.outcomes[i].empty()) {
        EXPECT_EQ(OCI_INVALID_HANDLE, rc);
      } else {
        EXPECT_EQ(OCI_ERROR, rc);
        EXPECT_EQ(c.outcomes[i], FirstError(err_));
      }
    }
  }
}

// Strings a call allocated for a NULL value and the caller never freed go with the
// environment (checked by LeakSanitizer), also after they were moved by growing.
TEST_F(NullArgumentTest, StringsAllocatedForANullValueGoWithTheEnvironment) {
  OCIString* grown = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("ab"), 2, &grown));
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text(std::string(300, 'x').c_str()),
                                             300, &grown));
  EXPECT_EQ(300u, OCIStringSize(env_, grown));
  OCIRaw* raw = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIRawAssignBytes(env_, err_, reinterpret_cast<const ub1*>("\1\2"), 2,
                                           &raw));
  OCIString* resized = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 10, &resized));
  // One freed by its caller is not freed again.
  OCIString* freed = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("x"), 1, &freed));
  ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &freed));
  EXPECT_EQ(nullptr, freed);
}

// A string allocated for an attribute slot that was resized to NULL belongs to the instance
// again: freeing the instance and then the environment frees it once.
TEST_F(NullArgumentTest, StringAllocatedIntoAnInstanceSlotIsFreedOnce) {
  void* value = nullptr;
  OCIInd status;
  const OraText* names[] = {Text("NAME")};
  ub4 lengths[] = {4};
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, obj_, ind_, ptype_, names, lengths, 1,
                                          nullptr, 0, &status, nullptr, &value, nullptr));
  auto** slot = static_cast<OCIString**>(value);
  ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, slot));
  ASSERT_EQ(nullptr, *slot);
  ASSERT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 5, slot));
  EXPECT_EQ(5u, OCIStringSize(env_, *slot));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj_, OCI_OBJECTFREE_FORCE));
}

}  // namespace
}  // namespace ocimem_test
