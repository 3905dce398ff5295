// Inputs at the far end of what a caller can send: very deep type nesting, deeply nested
// constructors, statement texts at the limits of the lexer.  None of them may crash.
#include <string>

#include "oci_fixture.h"
#include "orid.h"
#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class RobustnessTest : public SqlTest {
 protected:
  // A chain of object types, each holding the previous one as its only attribute.
  void CreateChain(int depth) {
    ASSERT_EQ(OCI_SUCCESS, Exec("CREATE TYPE L0 AS OBJECT (N NUMBER)"));
    for (int i = 1; i < depth; ++i) {
      std::string sql = "CREATE TYPE L" + std::to_string(i) + " AS OBJECT (C L" +
                        std::to_string(i - 1) + ")";
      ASSERT_EQ(OCI_SUCCESS, Exec(sql)) << i;
    }
  }
};

TEST_F(RobustnessTest, TenThousandNestedObjectTypesMakeAndFreeAnInstance) {
  constexpr int kDepth = 10000;
  CreateChain(kDepth);
  std::string top = "L" + std::to_string(kDepth - 1);
  OCIType* tdo = TypeByName(top.c_str());
  ASSERT_NE(nullptr, tdo);
  void* obj = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, tdo, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &obj))
      << FirstError(err_);
  OCIInd* ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, obj, reinterpret_cast<void**>(&ind)));
  // One _atomic per level plus the innermost NUMBER's indicator, all null.
  EXPECT_EQ(OCI_IND_NULL, ind[0]);
  EXPECT_EQ(OCI_IND_NULL, ind[kDepth]);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_OBJECTFREE_FORCE));
}

// The database going with its last session releases the whole chain at once.
TEST_F(RobustnessTest, HundredThousandNestedTypesAreReleasedWithoutRecursion) {
  CreateChain(100000);
  EXPECT_NE(nullptr, TypeByName("L99999"));
}

TEST_F(RobustnessTest, TenThousandNestedObjectTypesInATableRow) {
  constexpr int kDepth = 10000;
  CreateChain(kDepth);
  std::string top = "L" + std::to_string(kDepth - 1);
  MustExec("CREATE TABLE DEEP OF " + top);
  // The row is a fresh instance that is copied in and out of the table.
  OCIType* tdo = TypeByName(top.c_str());
  void* obj = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_OBJECT, tdo, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &obj));
  OCIStmt* ins = Prepare("INSERT INTO DEEP VALUES (:1)");
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(ins, &bind, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  OCIInd* ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, obj, reinterpret_cast<void**>(&ind)));
  ind[0] = OCI_IND_NOTNULL;
  ASSERT_EQ(OCI_SUCCESS, OCIBindObject(bind, err_, tdo, &obj, nullptr,
                                       reinterpret_cast<void**>(&ind), nullptr));
  ASSERT_EQ(OCI_SUCCESS, Execute(ins)) << FirstError(err_);
  OCIStmt* sel = Prepare("SELECT VALUE(D) FROM DEEP D");
  OCIDefine* def = nullptr;
  void* got = nullptr;
  OCIInd* got_ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(sel, &def, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineObject(def, err_, tdo, &got, nullptr,
                                         reinterpret_cast<void**>(&got_ind), nullptr));
  ASSERT_EQ(OCI_SUCCESS, Execute(sel)) << FirstError(err_);
  ASSERT_NE(nullptr, got_ind);
  EXPECT_EQ(OCI_IND_NOTNULL, got_ind[0]);
  EXPECT_EQ(OCI_IND_NULL, got_ind[1]);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, obj, OCI_OBJECTFREE_FORCE));
}

// `depth` constructors of the chain L<depth-1>(...(L0(7))...).
std::string NestedConstructors(int depth) {
  std::string value;
  for (int i = depth - 1; i >= 0; --i) value += "L" + std::to_string(i) + "(";
  value += "7";
  value.append(static_cast<size_t>(depth), ')');
  return value;
}

TEST_F(RobustnessTest, ThousandNestedConstructorsAreInserted) {
  constexpr int kDepth = 1000;
  CreateChain(kDepth);
  MustExec("CREATE TABLE DEEP (V L" + std::to_string(kDepth - 1) + ")");
  MustExec("INSERT INTO DEEP VALUES (" + NestedConstructors(kDepth) + ")");
  EXPECT_EQ(std::vector<std::string>{"1"}, Column("SELECT 1 FROM DEEP"));
}

// UNCONFIRMED: Oracle documents no limit on nested constructors; ocimem stops at 1000 levels
// with ORA-00036 rather than run out of stack.
TEST_F(RobustnessTest, ConstructorsNestedDeeperThanAThousandAreRefused) {
  constexpr int kDepth = 1001;
  CreateChain(kDepth);
  MustExec("CREATE TABLE DEEP (V L" + std::to_string(kDepth - 1) + ")");
  EXPECT_EQ(OCI_ERROR, Exec("INSERT INTO DEEP VALUES (" + NestedConstructors(kDepth) + ")"));
  EXPECT_EQ("ORA-00036: maximum number of recursive SQL levels (1000) exceeded",
            FirstError(err_));
}

TEST_F(RobustnessTest, TwoHundredThousandNestedConstructorsFailWithoutCrashing) {
  MustExec("CREATE TYPE L0 AS OBJECT (N NUMBER)");
  MustExec("CREATE TABLE T OF L0");
  constexpr size_t kDepth = 200000;
  std::string value;
  value.reserve(kDepth * 4 + 16);
  for (size_t i = 0; i < kDepth; ++i) value += "L0(";
  value += "7";
  value.append(kDepth, ')');
  EXPECT_EQ(OCI_ERROR, Exec("INSERT INTO T VALUES (" + value + ")"));
  EXPECT_EQ(36, FirstCode(err_));
}

TEST_F(RobustnessTest, HundredThousandOpeningParenthesesFailWithoutCrashing) {
  std::string sql = "SELECT " + std::string(100000, '(') + "1 FROM DUAL";
  EXPECT_EQ(OCI_ERROR, Exec(sql));
  EXPECT_NE(0, FirstCode(err_));
}

struct LexCase {
  const char* name;
  std::string sql;
  sb4 code;
};

class StatementTextTest : public SqlTest, public ::testing::WithParamInterface<LexCase> {};

TEST_P(StatementTextTest, FailsInExecuteWithOraclesError) {
  const LexCase& c = GetParam();
  EXPECT_EQ(OCI_ERROR, Exec(c.sql));
  EXPECT_EQ(c.code, FirstCode(err_)) << FirstError(err_);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, StatementTextTest,
    ::testing::Values(
        LexCase{"OnlyBlanks", "   \t\n  ", 900},
        LexCase{"OnlyAComment", "-- nothing here", 900},
        LexCase{"UnterminatedString", "SELECT 'abc FROM DUAL", 1756},
        LexCase{"UnterminatedQuotedName", "SELECT \"ABC FROM DUAL", 1740},
        LexCase{"EmptyQuotedName", "SELECT \"\" FROM DUAL", 1741},
        LexCase{"NameOf129Bytes", "SELECT " + std::string(129, 'A') + " FROM DUAL", 972},
        LexCase{"QuotedNameOf129Bytes", "SELECT \"" + std::string(129, 'a') + "\" FROM DUAL",
                972},
        LexCase{"TableNameOf129Bytes", "CREATE TABLE " + std::string(129, 'T') + " (N NUMBER)",
                972},
        LexCase{"TypeNameOf129Bytes",
                "CREATE TYPE " + std::string(129, 'T') + " AS OBJECT (N NUMBER)", 972},
        LexCase{"BindNameOf129Bytes", "SELECT 1 FROM DUAL WHERE 1 = :" + std::string(129, 'B'),
                972},
        LexCase{"TrailingSemicolon", "SELECT 1 FROM DUAL;", 911}),
    [](const ::testing::TestParamInfo<LexCase>& info) { return std::string(info.param.name); });

// Rows deleted in transactions of their own are swept out of the table lazily; until then
// nothing may see them.
TEST_F(RobustnessTest, RowsDeletedOneTransactionAtATimeStayGone) {
  MustExec("CREATE TABLE K (ID NUMBER PRIMARY KEY, V VARCHAR2(5))");
  for (int i = 1; i <= 10; ++i) MustExec("INSERT INTO K VALUES (" + std::to_string(i) + ", 'a')");
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  for (int i = 1; i <= 3; ++i) {
    MustExec("DELETE FROM K WHERE ID = " + std::to_string(i));
    ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  }
  EXPECT_EQ((std::vector<std::string>{"4", "5", "6", "7", "8", "9", "10"}),
            Column("SELECT ID FROM K"));
  MustExec("INSERT INTO K VALUES (2, 'b')");
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(std::vector<std::string>{"b"}, Column("SELECT V FROM K WHERE ID = 2"));
  EXPECT_EQ(1, ExecError("INSERT INTO K VALUES (2, 'c')"));
  MustExec("UPDATE K SET V = 'u'");
  ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  for (int i = 4; i <= 10; ++i) {
    MustExec("DELETE FROM K WHERE ID = " + std::to_string(i));
    ASSERT_EQ(OCI_SUCCESS, OCITransCommit(svc_, err_, OCI_DEFAULT));
  }
  EXPECT_EQ(std::vector<std::string>{"2"}, Column("SELECT ID FROM K"));
  EXPECT_EQ(std::vector<std::string>{"u"}, Column("SELECT V FROM K"));
}

TEST_F(RobustnessTest, NameOf128BytesIsAccepted) {
  std::string name(128, 'T');
  MustExec("CREATE TABLE " + name + " (N NUMBER)");
  MustExec("INSERT INTO " + name + " VALUES (1)");
  std::string bind(128, 'B');
  OCIStmt* stmt = Prepare("INSERT INTO " + name + " VALUES (:" + bind + ")");
  int one = 1;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &b, err_, Text((":" + bind).c_str()), 129, &one,
                                       sizeof one, SQLT_INT, nullptr, nullptr, nullptr, 0,
                                       nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
}

}  // namespace
}  // namespace ocimem_test
