// Memory that cannot be had, at every allocation of an OCI call in turn and of
// any kind (operator new, nothrow new, malloc, calloc, realloc): the call
// answers OCI_ERROR with ORA-04030 on its error handle, leaves what it was
// given as it was, and the same handles then do the call whole. This program
// replaces the allocation functions of the whole process
// (tests/adapter/alloc/every_allocation.cc).
#include <gtest/gtest.h>
#include <oci.h>
#include <orid.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "../../adapter/alloc/every_allocation.h"
#include "oci_fixture.h"

namespace {

namespace ea = every_allocation;
using ocimem_test::FirstCode;
using ocimem_test::FirstError;
using ocimem_test::Len;
using ocimem_test::Text;

class OciEveryAllocationTest : public ocimem_test::OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create type oa_nums_t as varray(20) of number");
    MustExec("create type oa_pt_t as object (x number, label varchar2(20))");
    MustExec("create type oa_t as object (id number, name varchar2(40), pt oa_pt_t, "
             "nums oa_nums_t)");
    MustExec("create type oa_ts_t as varray(20) of oa_t");
    MustExec("create table oa_docs of oa_t");
    tdo_ = TypeByName("OA_T");
    ts_tdo_ = TypeByName("OA_TS_T");
    source_ = New(tdo_, OCI_TYPECODE_OBJECT);
    Fill(source_);
  }

  void* New(OCIType* tdo, OCITypeCode code) {
    void* p = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, code, tdo, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &p))
        << FirstError(err_);
    return p;
  }
  OCIInd* Ind(void* object) {
    void* ind = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, object, &ind));
    return static_cast<OCIInd*>(ind);
  }
  void* Attr(void* object, const char* name, void** null_struct = nullptr) {
    const OraText* names[] = {Text(name)};
    ub4 lengths[] = {Len(name)};
    OCIInd status = 0;
    void* attr_null = nullptr;
    void* attr = nullptr;
    OCIType* attr_tdo = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, object, Ind(object), tdo_, names, lengths,
                                            1, nullptr, 0, &status, &attr_null, &attr,
                                            &attr_tdo));
    if (null_struct != nullptr) *null_struct = attr_null;
    return attr;
  }
  std::string Name(void* object) {
    OCIString* s = *static_cast<OCIString**>(Attr(object, "NAME"));
    return std::string(reinterpret_cast<const char*>(OCIStringPtr(env_, s)),
                       OCIStringSize(env_, s));
  }
  sb4 Size(OCIColl* coll) {
    sb4 n = -1;
    EXPECT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, coll, &n));
    return n;
  }
  // Rows of oa_docs this session sees.
  int Rows() {
    OCIStmt* stmt = nullptr;
    EXPECT_EQ(OCI_SUCCESS,
              OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr));
    const char* sql = "select count(*) from oa_docs";
    EXPECT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX,
                                          OCI_DEFAULT));
    int rows = -1;
    OCIDefine* define = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &define, err_, 1, &rows, sizeof rows, SQLT_INT,
                                          nullptr, nullptr, nullptr, OCI_DEFAULT));
    EXPECT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT))
        << FirstError(err_);
    EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
    return rows;
  }
  void Fill(void* object) {
    OCIString** name = static_cast<OCIString**>(Attr(object, "NAME"));
    ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("a name"), 6, name));
    OCIColl* nums = *static_cast<OCIColl**>(Attr(object, "NUMS"));
    for (int i = 0; i < 5; ++i) {
      OCINumber n;
      ASSERT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &i, sizeof i, OCI_NUMBER_SIGNED, &n));
      OCIInd ind = OCI_IND_NOTNULL;
      ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &n, &ind, nums));
    }
    OCIInd* ind = Ind(object);
    for (int i = 0; i < 9; ++i) ind[i] = OCI_IND_NOTNULL;
  }

  // Runs `call` with the n-th allocation failing, for n = 1, 2, ... until it
  // needs fewer; `undo` puts back what a successful call changed, `check`
  // looks at what it made, `failed` at what a failed call left. Returns the
  // number of allocations failed.
  unsigned long EveryAllocation(const char* what, const std::function<sword()>& call,
                                const std::function<void()>& undo,
                                const std::function<void()>& check,
                                const std::function<void()>& failed = [] {}) {
    // A clean call first makes what is made once (caches). Before each round
    // the allocations of a clean call are counted: the pools keep a bounded
    // number of freed blocks, so a call may need fewer once a failure has left
    // one more there. Round n fails allocation n, which must happen; the rounds
    // end when a clean call needs fewer than n.
    EXPECT_EQ(OCI_SUCCESS, call()) << what << ": " << FirstError(err_);
    check();
    undo();
    unsigned long n = 1;
    for (;; ++n) {
      unsigned long counted = 0;
      {
        ea::Injection counting(0);
        EXPECT_EQ(OCI_SUCCESS, call()) << what << ": " << FirstError(err_);
        counted = ea::Attempts();
      }
      check();
      undo();
      if (n > counted) break;
      sword rc;
      bool injected;
      {
        ea::Injection injection(n);
        rc = call();
        injected = ea::Disarm();
      }
      const std::string where = std::string(what) + ", allocation " + std::to_string(n) + " (" +
                                ea::KindName(ea::FailedKind()) + ")";
      EXPECT_TRUE(injected) << what << ", allocation " << n << " of " << counted;
      if (!injected || rc == OCI_SUCCESS) {
        // A failure the call could do without (a cache not filled) changes nothing.
        EXPECT_EQ(OCI_SUCCESS, rc) << where << ": " << FirstError(err_);
        check();
        undo();
        if (::testing::Test::HasFailure()) break;
        continue;
      }
      EXPECT_EQ(OCI_ERROR, rc) << where;
      EXPECT_EQ(4030, FirstCode(err_)) << where << ": " << FirstError(err_);
      EXPECT_EQ("ORA-04030: out of process memory", FirstError(err_)) << where;
      {
        SCOPED_TRACE(where);
        failed();
      }
      EXPECT_EQ(OCI_SUCCESS, call()) << where << ", again: " << FirstError(err_);
      check();
      undo();
      if (::testing::Test::HasFailure()) break;
    }
    std::printf("%s: %lu allocations failed in turn\n", what, n - 1);
    return n - 1;
  }

  OCIType* tdo_ = nullptr;
  OCIType* ts_tdo_ = nullptr;
  void* source_ = nullptr;
};

// An object made after one of the same type was freed takes the freed one's memory and
// allocates nothing, so the objects made here are kept until the end: every call then
// gets its memory anew, and each allocation can fail. The instances made first leave the
// registry of instances room for all the others, so that it does not grow in one call
// and not in the next.
TEST_F(OciEveryAllocationTest, ObjectNew) {
  std::vector<void*> kept;
  kept.reserve(1024);
  for (int i = 0; i < 300; ++i) kept.push_back(New(tdo_, OCI_TYPECODE_OBJECT));
  void* made = nullptr;
  const unsigned long n = EveryAllocation(
      "OCIObjectNew",
      [&] {
        return OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, tdo_, nullptr,
                            OCI_DURATION_DEFAULT, TRUE, &made);
      },
      [&] {
        kept.push_back(made);
        made = nullptr;
      },
      [&] { EXPECT_EQ(0, Size(*static_cast<OCIColl**>(Attr(made, "NUMS")))); });
  // The instance's block, the instance, two strings and the collection; under
  // the address sanitizer only the collection comes from operator new.
  EXPECT_GE(n, ea::CountsMalloc() ? 5u : 1u);
  for (void* object : kept) EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, object, OCI_DEFAULT));
}

// An environment's registry of instances gets its room with the first instance, the
// last allocation of that OCIObjectNew: when it cannot be had, the call answers ORA-04030,
// nothing of the object stays, and the next call makes the object. Blocks freed earlier
// are taken before new memory, so the first objects of fresh environments are made (and
// kept) until two in a row count the same allocations; the next fresh environment's first
// call then fails at the last.
TEST_F(OciEveryAllocationTest, FirstInstanceOfAnEnvironmentWithoutRoomForItsRegistry) {
  struct Fresh {
    OCIEnv* env = nullptr;
    OCIError* err = nullptr;
    OCISvcCtx* svc = nullptr;
    OCIType* tdo = nullptr;
  };
  std::vector<Fresh> envs;
  envs.reserve(64);
  const std::string db = DatabaseName();
  auto fresh = [&]() {
    Fresh f;
    EXPECT_EQ(OCI_SUCCESS, OCIEnvCreate(&f.env, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr,
                                        0, nullptr));
    EXPECT_EQ(OCI_SUCCESS, OCIHandleAlloc(f.env, reinterpret_cast<void**>(&f.err),
                                          OCI_HTYPE_ERROR, 0, nullptr));
    EXPECT_EQ(OCI_SUCCESS, OCILogon(f.env, f.err, &f.svc, Text("scott"), 5, Text("tiger"), 5,
                                    Text(db.c_str()), Len(db.c_str())));
    EXPECT_EQ(OCI_SUCCESS, OCITypeByName(f.env, f.err, f.svc, nullptr, 0, Text("OA_T"), 4,
                                         nullptr, 0, OCI_DURATION_SESSION, OCI_TYPEGET_HEADER,
                                         &f.tdo));
    envs.push_back(f);
    return f;
  };
  auto first_new = [](const Fresh& f, void** made) {
    return OCIObjectNew(f.env, f.err, f.svc, OCI_TYPECODE_OBJECT, f.tdo, nullptr,
                        OCI_DURATION_DEFAULT, TRUE, made);
  };
  unsigned long counted = 0;
  unsigned long before = 0;
  for (int i = 0; i < 40 && (i < 2 || counted != before); ++i) {
    const Fresh f = fresh();
    void* made = nullptr;
    before = counted;
    {
      ea::Injection counting(0);
      ASSERT_EQ(OCI_SUCCESS, first_new(f, &made)) << FirstError(f.err);
      counted = ea::Attempts();
    }
  }
  ASSERT_EQ(counted, before) << "the allocations of a first instance never settled";
  ASSERT_GE(counted, 1U);

  const Fresh f = fresh();
  void* made = nullptr;
  sword rc;
  bool injected;
  {
    ea::Injection injection(counted);
    rc = first_new(f, &made);
    injected = ea::Disarm();
  }
  ASSERT_TRUE(injected);
  EXPECT_EQ(ea::kNew, ea::FailedKind()) << ea::KindName(ea::FailedKind());
  EXPECT_EQ(OCI_ERROR, rc);
  EXPECT_EQ("ORA-04030: out of process memory", FirstError(f.err));
  EXPECT_EQ(nullptr, made);
  ASSERT_EQ(OCI_SUCCESS, first_new(f, &made)) << FirstError(f.err);
  void* ind = nullptr;
  EXPECT_EQ(OCI_SUCCESS, OCIObjectGetInd(f.env, f.err, made, &ind));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(f.env, f.err, made, OCI_DEFAULT));

  // Every environment frees the objects it still holds.
  for (const Fresh& e : envs) {
    EXPECT_EQ(OCI_SUCCESS, OCILogoff(e.svc, e.err));
    EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(e.env, OCI_HTYPE_ENV));
  }
}

TEST_F(OciEveryAllocationTest, ObjectCopy) {
  void* target = New(tdo_, OCI_TYPECODE_OBJECT);
  const unsigned long n = EveryAllocation(
      "OCIObjectCopy",
      [&] {
        return OCIObjectCopy(env_, err_, svc_, source_, Ind(source_), target, Ind(target), tdo_,
                             OCI_DURATION_DEFAULT, OCI_DEFAULT);
      },
      [&] {
        EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, target, OCI_DEFAULT));
        target = New(tdo_, OCI_TYPECODE_OBJECT);
      },
      [&] {
        EXPECT_EQ("a name", Name(target));
        EXPECT_EQ(5, Size(*static_cast<OCIColl**>(Attr(target, "NUMS"))));
      },
      [&] {
        // However far the copy got, the target is still an instance of its type,
        // whose attributes can be read and which can be freed whole (LeakSanitizer
        // sees whether it was); the next round copies into a new one.
        Name(target);
        const sb4 size = Size(*static_cast<OCIColl**>(Attr(target, "NUMS")));
        EXPECT_TRUE(size >= 0 && size <= 5) << size;
        EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, target, OCI_DEFAULT));
        target = New(tdo_, OCI_TYPECODE_OBJECT);
      });
  EXPECT_GE(n, 1u);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, target, OCI_DEFAULT));
}

TEST_F(OciEveryAllocationTest, CollAppend) {
  auto* coll = static_cast<OCIColl*>(New(ts_tdo_, OCI_TYPECODE_NAMEDCOLLECTION));
  const unsigned long n = EveryAllocation(
      "OCICollAppend", [&] { return OCICollAppend(env_, err_, source_, Ind(source_), coll); },
      [&] { EXPECT_EQ(OCI_SUCCESS, OCICollTrim(env_, err_, 1, coll)); },
      [&] { EXPECT_EQ(1, Size(coll)); });
  EXPECT_GT(n, 1u);
  // A failed append left nothing behind.
  EXPECT_EQ(0, Size(coll));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, coll, OCI_DEFAULT));
}

TEST_F(OciEveryAllocationTest, StringAssignText) {
  const std::string text(300, 's');
  OCIString* s = nullptr;
  const unsigned long n = EveryAllocation(
      "OCIStringAssignText",
      [&] {
        return OCIStringAssignText(env_, err_, Text(text.c_str()), Len(text.c_str()), &s);
      },
      [&] { EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &s)); },
      [&] {
        ASSERT_NE(nullptr, s);
        EXPECT_EQ(text, std::string(reinterpret_cast<const char*>(OCIStringPtr(env_, s)),
                                    OCIStringSize(env_, s)));
      });
  EXPECT_GE(n, 1u);
}

TEST_F(OciEveryAllocationTest, InsertOfABoundObject) {
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr));
  const char* sql = "insert into oa_docs values (:1)";
  ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX,
                                        OCI_DEFAULT));
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &bind, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  void* object = source_;
  void* ind = Ind(source_);
  ASSERT_EQ(OCI_SUCCESS, OCIBindObject(bind, err_, tdo_, &object, nullptr, &ind, nullptr));
  const unsigned long n = EveryAllocation(
      "OCIStmtExecute (insert)",
      [&] { return OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT); },
      [&] { EXPECT_EQ(OCI_SUCCESS, OCITransRollback(svc_, err_, OCI_DEFAULT)); },
      [&] {
        ub4 rows = 0;
        EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(stmt, OCI_HTYPE_STMT, &rows, nullptr,
                                          OCI_ATTR_ROW_COUNT, err_));
        EXPECT_EQ(1u, rows);
        EXPECT_EQ(1, Rows());
      },
      // The failed insert left no row; the retry (above) shows the statement usable.
      [&] { EXPECT_EQ(0, Rows()); });
  EXPECT_GT(n, 1u);
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
}

TEST_F(OciEveryAllocationTest, FetchIntoADefinedObject) {
  {
    OCIStmt* insert = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&insert),
                                          OCI_HTYPE_STMT, 0, nullptr));
    const char* sql = "insert into oa_docs values (:1)";
    ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(insert, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX,
                                          OCI_DEFAULT));
    OCIBind* bind = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(insert, &bind, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                        nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
    void* object = source_;
    void* ind = Ind(source_);
    ASSERT_EQ(OCI_SUCCESS, OCIBindObject(bind, err_, tdo_, &object, nullptr, &ind, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, insert, err_, 1, 0, nullptr, nullptr,
                                          OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(insert, OCI_HTYPE_STMT));
  }
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr));
  const char* sql = "select value(d) from oa_docs d";
  ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX,
                                        OCI_DEFAULT));
  OCIDefine* define = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &define, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  void* fetched = nullptr;
  void* fetched_ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIDefineObject(define, err_, tdo_, &fetched, nullptr, &fetched_ind, nullptr));
  const unsigned long n = EveryAllocation(
      "OCIStmtExecute (fetch)",
      [&] { return OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT); },
      [&] {
        EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, fetched, OCI_DEFAULT));
        fetched = nullptr;
        fetched_ind = nullptr;
      },
      [&] {
        ASSERT_NE(nullptr, fetched);
        EXPECT_EQ("a name", Name(fetched));
        EXPECT_EQ(5, Size(*static_cast<OCIColl**>(Attr(fetched, "NUMS"))));
      });
  EXPECT_GT(n, 1u);
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
}

TEST_F(OciEveryAllocationTest, LobWrite) {
  OCILobLocator* lob = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&lob), OCI_DTYPE_LOB,
                                            0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCILobCreateTemporary(svc_, err_, lob, 0, SQLCS_IMPLICIT,
                                               OCI_TEMP_BLOB, FALSE, OCI_DURATION_SESSION));
  std::string data(5000, 'b');
  const unsigned long n = EveryAllocation(
      "OCILobWrite",
      [&] {
        ub4 amount = static_cast<ub4>(data.size());
        return OCILobWrite(svc_, err_, lob, &amount, 1, &data[0], amount, OCI_ONE_PIECE, nullptr,
                           nullptr, 0, SQLCS_IMPLICIT);
      },
      [&] { EXPECT_EQ(OCI_SUCCESS, OCILobTrim(svc_, err_, lob, 0)); },
      [&] {
        ub4 length = 0;
        EXPECT_EQ(OCI_SUCCESS, OCILobGetLength(svc_, err_, lob, &length));
        EXPECT_EQ(5000u, length);
      });
  EXPECT_GE(n, 1u);
  EXPECT_EQ(OCI_SUCCESS, OCILobFreeTemporary(svc_, err_, lob));
  EXPECT_EQ(OCI_SUCCESS, OCIDescriptorFree(lob, OCI_DTYPE_LOB));
}

}  // namespace
