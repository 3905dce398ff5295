// Values at the far end of depth: a chain of 100,000 object types, each embedding the one
// before, made by CREATE TYPE and taken through every walk of an instance (new, attribute
// access, copy, bind, fetch, describe, free); and objects holding collections of objects
// holding collections, thousands deep.  None of it may recurse once per level.
#include <ctime>
#include <string>
#include <vector>

#include "oci_fixture.h"
#include "orid.h"
#include "sql_fixture.h"

namespace ocimem_test {
namespace {

constexpr int kDepth = 100000;

OCINumber Num(OCIError* err, int v) {
  OCINumber n;
  EXPECT_EQ(OCI_SUCCESS, OCINumberFromInt(err, &v, sizeof v, OCI_NUMBER_SIGNED, &n));
  return n;
}

int IntOf(OCIError* err, const OCINumber* n) {
  int v = 0;
  EXPECT_EQ(OCI_SUCCESS, OCINumberToInt(err, n, sizeof v, OCI_NUMBER_SIGNED, &v));
  return v;
}

const oratext* Name(const char* s) { return reinterpret_cast<const oratext*>(s); }

// One level of a value: the embedded object, its null struct and its type.
struct Level {
  void* value;
  OCIInd* ind;
  OCIType* tdo;
};

class DepthTest : public SqlTest {
 protected:
  // T0 AS OBJECT (N NUMBER), then Tk AS OBJECT (N NUMBER, INNER Tk-1) up to `depth` - 1.
  // Returns the CPU time of making the first and of making the last `sample` levels.
  std::pair<double, double> CreateChain(int depth, int sample) {
    std::pair<double, double> times{0, 0};
    std::clock_t start = std::clock();
    EXPECT_EQ(OCI_SUCCESS, Exec("CREATE TYPE T0 AS OBJECT (N NUMBER)")) << FirstError(err_);
    for (int i = 1; i < depth; ++i) {
      if (i == sample) times.first = static_cast<double>(std::clock() - start);
      if (i == depth - sample) start = std::clock();
      const std::string sql = "CREATE TYPE T" + std::to_string(i) +
                              " AS OBJECT (N NUMBER, INNER T" + std::to_string(i - 1) + ")";
      if (Exec(sql) != OCI_SUCCESS) {
        ADD_FAILURE() << i << ": " << FirstError(err_);
        break;
      }
    }
    times.second = static_cast<double>(std::clock() - start);
    return times;
  }

  // The embedded object one level down.
  Level Inner(const Level& at) {
    const oratext* names[] = {Name("INNER")};
    const ub4 lengths[] = {5};
    OCIInd status = 0;
    void* null_struct = nullptr;
    void* value = nullptr;
    OCIType* tdo = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, at.value, at.ind, at.tdo, names, lengths,
                                            1, nullptr, 0, &status, &null_struct, &value, &tdo))
        << FirstError(err_);
    return Level{value, static_cast<OCIInd*>(null_struct), tdo};
  }

  // Gives the top level k N = k + 1 and makes every object not null, walking down with
  // OCIObjectGetAttr and OCIObjectSetAttr; the bottom N is set from the top, through a
  // path of 100,000 names.
  void FillLevels(Level top) {
    const oratext* n_name[] = {Name("N")};
    const ub4 n_length[] = {1};
    Level at = top;
    for (int k = kDepth - 1; k > 0; --k) {
      at.ind[0] = OCI_IND_NOTNULL;
      OCINumber n = Num(err_, k + 1);
      ASSERT_EQ(OCI_SUCCESS, OCIObjectSetAttr(env_, err_, at.value, at.ind, at.tdo, n_name,
                                              n_length, 1, nullptr, 0, OCI_IND_NOTNULL,
                                              nullptr, &n))
          << FirstError(err_);
      at = Inner(at);
      ASSERT_NE(nullptr, at.value);
    }
    at.ind[0] = OCI_IND_NOTNULL;
    std::vector<const oratext*> names(kDepth, Name("INNER"));
    std::vector<ub4> lengths(kDepth, 5);
    names.back() = Name("N");
    lengths.back() = 1;
    OCINumber one = Num(err_, 1);
    ASSERT_EQ(OCI_SUCCESS, OCIObjectSetAttr(env_, err_, top.value, top.ind, top.tdo,
                                            names.data(), lengths.data(), kDepth, nullptr, 0,
                                            OCI_IND_NOTNULL, nullptr, &one))
        << FirstError(err_);
  }

  // Levels whose object is null or whose N is not k + 1.
  int WrongLevels(Level at) {
    const oratext* n_name[] = {Name("N")};
    const ub4 n_length[] = {1};
    int wrong = 0;
    for (int k = kDepth - 1; k >= 0; --k) {
      OCIInd status = OCI_IND_NULL;
      void* value = nullptr;
      EXPECT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, at.value, at.ind, at.tdo, n_name,
                                              n_length, 1, nullptr, 0, &status, nullptr, &value,
                                              nullptr));
      if (at.ind[0] != OCI_IND_NOTNULL || status != OCI_IND_NOTNULL || value == nullptr ||
          IntOf(err_, static_cast<OCINumber*>(value)) != k + 1) {
        ++wrong;
      }
      if (k > 0) at = Inner(at);
    }
    return wrong;
  }

  void* NewObject(OCIType* tdo) {
    void* obj = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, tdo, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &obj))
        << FirstError(err_);
    return obj;
  }

  OCIInd* IndOf(void* obj) {
    void* ind = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, obj, &ind));
    return static_cast<OCIInd*>(ind);
  }

  // Inserts `obj` with `insert` (one object bind) and fetches it back with `select` (one
  // object define); returns the fetched instance.
  void* RoundTrip(const std::string& insert, const std::string& select, OCIType* tdo,
                  void* obj, OCIInd* ind) {
    OCIStmt* ins = Prepare(insert);
    OCIBind* bind = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &bind, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                        nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
    EXPECT_EQ(OCI_SUCCESS, OCIBindObject(bind, err_, tdo, &obj, nullptr,
                                         reinterpret_cast<void**>(&ind), nullptr));
    EXPECT_EQ(OCI_SUCCESS, Execute(ins)) << FirstError(err_);
    OCIStmt* sel = Prepare(select);
    OCIDefine* def = nullptr;
    void* got = nullptr;
    OCIInd* got_ind = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &def, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                          nullptr, nullptr, OCI_DEFAULT));
    EXPECT_EQ(OCI_SUCCESS, OCIDefineObject(def, err_, tdo, &got, nullptr,
                                           reinterpret_cast<void**>(&got_ind), nullptr));
    EXPECT_EQ(OCI_SUCCESS, Execute(sel)) << FirstError(err_);
    EXPECT_NE(nullptr, got_ind);
    return got;
  }
};

// Making a level costs the same at the top of the chain as at the bottom: the last 10,000
// types take at most three times the CPU time of the first 10,000, where work per level
// that grew with the depth would make them about nineteen times as long.
TEST_F(DepthTest, HundredThousandLevelsGoThroughEveryWalk) {
  const std::pair<double, double> times = CreateChain(kDepth, 10000);
  EXPECT_LT(times.second, 3.0 * times.first + 0.05 * CLOCKS_PER_SEC)
      << "first " << times.first << ", last " << times.second;
  const std::string top_name = "T" + std::to_string(kDepth - 1);
  OCIType* tdo = TypeByName(top_name.c_str());
  ASSERT_NE(nullptr, tdo);

  // A describe answers from the type, without walking the types below it.
  OCIDescribe* dsc = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env_, reinterpret_cast<void**>(&dsc), OCI_HTYPE_DESCRIBE, 0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIDescribeAny(svc_, err_, tdo, 0, OCI_OTYPE_PTR, OCI_DEFAULT,
                                        OCI_PTYPE_TYPE, dsc))
      << FirstError(err_);
  OCIParam* param = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIAttrGet(dsc, OCI_HTYPE_DESCRIBE, &param, nullptr, OCI_ATTR_PARAM, err_));
  ub2 attrs = 0;
  ub1 has_lob = 7;
  ub1 has_nested_table = 7;
  EXPECT_EQ(OCI_SUCCESS,
            OCIAttrGet(param, OCI_DTYPE_PARAM, &attrs, nullptr, OCI_ATTR_NUM_TYPE_ATTRS, err_));
  EXPECT_EQ(OCI_SUCCESS,
            OCIAttrGet(param, OCI_DTYPE_PARAM, &has_lob, nullptr, OCI_ATTR_HAS_LOB, err_));
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(param, OCI_DTYPE_PARAM, &has_nested_table, nullptr,
                                    OCI_ATTR_HAS_NESTED_TABLE, err_));
  EXPECT_EQ(2, attrs);
  EXPECT_EQ(0, has_lob);
  EXPECT_EQ(0, has_nested_table);
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(dsc, OCI_HTYPE_DESCRIBE));

  // A new instance is null all through: one _atomic and one N per level.
  void* obj = NewObject(tdo);
  ASSERT_NE(nullptr, obj);
  OCIInd* ind = IndOf(obj);
  EXPECT_EQ(OCI_IND_NULL, ind[0]);
  EXPECT_EQ(OCI_IND_NULL, ind[2 * kDepth - 1]);
  FillLevels(Level{obj, ind, tdo});
  EXPECT_EQ(0, WrongLevels(Level{obj, ind, tdo}));

  void* copy = NewObject(tdo);
  OCIInd* copy_ind = IndOf(copy);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectCopy(env_, err_, svc_, obj, ind, copy, copy_ind, tdo,
                                       OCI_DURATION_DEFAULT, OCI_DEFAULT))
      << FirstError(err_);
  EXPECT_EQ(0, WrongLevels(Level{copy, copy_ind, tdo}));

  MustExec("CREATE TABLE DEEP_COLUMN (ID NUMBER, V " + top_name + ")");
  void* got = RoundTrip("INSERT INTO DEEP_COLUMN VALUES (1, :1)",
                        "SELECT V FROM DEEP_COLUMN", tdo, copy, copy_ind);
  ASSERT_NE(nullptr, got);
  EXPECT_EQ(0, WrongLevels(Level{got, IndOf(got), tdo}));
  MustExec("CREATE TABLE DEEP_ROWS OF " + top_name);
  void* row = RoundTrip("INSERT INTO DEEP_ROWS VALUES (:1)", "SELECT VALUE(D) FROM DEEP_ROWS D",
                        tdo, obj, ind);
  ASSERT_NE(nullptr, row);
  EXPECT_EQ(0, WrongLevels(Level{row, IndOf(row), tdo}));

  for (void* o : {obj, copy, got, row}) {
    EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, o, OCI_OBJECTFREE_FORCE));
  }
  MustExec("DROP TABLE DEEP_COLUMN");
  MustExec("DELETE FROM DEEP_ROWS");
}

// Ck AS OBJECT (N NUMBER, KIDS Ck-1_NT), Ck-1_NT a nested table of Ck-1: a value whose
// every level is a collection of one object holding the next collection.
class CollectionDepthTest : public DepthTest {
 protected:
  static constexpr int kLevels = 20000;

  void CreateCollectionChain() {
    MustExec("CREATE TYPE C0 AS OBJECT (N NUMBER)");
    for (int i = 1; i < kLevels; ++i) {
      const std::string below = "C" + std::to_string(i - 1);
      ASSERT_EQ(OCI_SUCCESS, Exec("CREATE TYPE " + below + "_NT AS TABLE OF " + below)) << i;
      ASSERT_EQ(OCI_SUCCESS, Exec("CREATE TYPE C" + std::to_string(i) +
                                  " AS OBJECT (N NUMBER, KIDS " + below + "_NT)"))
          << i;
    }
  }

  // The object held by the KIDS collection of `at` (its only element).
  Level Kid(const Level& at) {
    const oratext* names[] = {Name("KIDS")};
    const ub4 lengths[] = {4};
    void* kids = nullptr;
    OCIType* kids_tdo = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, at.value, at.ind, at.tdo, names, lengths,
                                            1, nullptr, 0, nullptr, nullptr, &kids, &kids_tdo));
    OCIColl* coll = *static_cast<OCIColl**>(kids);
    boolean exists = FALSE;
    void* elem = nullptr;
    void* elem_ind = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, coll, 0, &exists, &elem, &elem_ind));
    EXPECT_EQ(TRUE, exists);
    return Level{elem, static_cast<OCIInd*>(elem_ind), nullptr};
  }

  // Builds the value from the top: each level's collection receives a fresh object of the
  // level below (a copy of an object whose collection is still empty), whose N is then set.
  void Build(void* top, OCIInd* top_ind) {
    Level at{top, top_ind, TypeByName(("C" + std::to_string(kLevels - 1)).c_str())};
    at.ind[0] = OCI_IND_NOTNULL;
    for (int k = kLevels - 1; k > 0; --k) {
      OCIType* below = TypeByName(("C" + std::to_string(k - 1)).c_str());
      void* fresh = NewObject(below);
      OCIInd* fresh_ind = IndOf(fresh);
      fresh_ind[0] = OCI_IND_NOTNULL;
      fresh_ind[1] = OCI_IND_NOTNULL;
      *static_cast<OCINumber*>(fresh) = Num(err_, k);
      const oratext* names[] = {Name("KIDS")};
      const ub4 lengths[] = {4};
      void* kids = nullptr;
      ASSERT_EQ(OCI_SUCCESS, OCIObjectGetAttr(env_, err_, at.value, at.ind, at.tdo, names,
                                              lengths, 1, nullptr, 0, nullptr, nullptr, &kids,
                                              nullptr));
      ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, fresh, fresh_ind,
                                           *static_cast<OCIColl**>(kids)))
          << FirstError(err_);
      ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, fresh, OCI_OBJECTFREE_FORCE));
      at = Kid(at);
      at.tdo = below;
    }
  }

  // Levels below the top whose N is not their level.
  int WrongKids(void* top, OCIInd* top_ind) {
    Level at{top, top_ind, TypeByName(("C" + std::to_string(kLevels - 1)).c_str())};
    int wrong = 0;
    for (int k = kLevels - 1; k > 0; --k) {
      at = Kid(at);
      at.tdo = TypeByName(("C" + std::to_string(k - 1)).c_str());
      if (at.ind[0] != OCI_IND_NOTNULL || IntOf(err_, static_cast<OCINumber*>(at.value)) != k) {
        ++wrong;
      }
    }
    return wrong;
  }
};

TEST_F(CollectionDepthTest, TwentyThousandNestedCollectionsGoThroughEveryWalk) {
  CreateCollectionChain();
  const std::string top_name = "C" + std::to_string(kLevels - 1);
  OCIType* tdo = TypeByName(top_name.c_str());
  void* obj = NewObject(tdo);
  OCIInd* ind = IndOf(obj);
  Build(obj, ind);
  EXPECT_EQ(0, WrongKids(obj, ind));

  void* copy = NewObject(tdo);
  OCIInd* copy_ind = IndOf(copy);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectCopy(env_, err_, svc_, obj, ind, copy, copy_ind, tdo,
                                       OCI_DURATION_DEFAULT, OCI_DEFAULT))
      << FirstError(err_);
  EXPECT_EQ(0, WrongKids(copy, copy_ind));

  MustExec("CREATE TABLE DEEP_KIDS OF " + top_name + " NESTED TABLE KIDS STORE AS KIDS_STORE");
  void* got = RoundTrip("INSERT INTO DEEP_KIDS VALUES (:1)", "SELECT VALUE(D) FROM DEEP_KIDS D",
                        tdo, copy, copy_ind);
  ASSERT_NE(nullptr, got);
  EXPECT_EQ(0, WrongKids(got, IndOf(got)));
  for (void* o : {obj, copy, got}) {
    EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, o, OCI_OBJECTFREE_FORCE));
  }
  // The stored row goes with its table, collections inside collections and all.
  MustExec("DROP TABLE DEEP_KIDS");
}

}  // namespace
}  // namespace ocimem_test
