// coldefDescribe on object types: every scalar attribute type, the codes kept for types the
// adapter refuses, nested objects to any depth, schemas, and the argument and name errors.
#include <string>
#include <vector>

#include "coldef_fixture.h"

extern "C" int coldef_c_header_check(void);

namespace coldef_test {
namespace {

using ocimem_test::FirstCode;
using ocimem_test::FirstError;

TEST_F(ColdefTest, EveryScalarAttributeType) {
  MustExec(
      "CREATE TYPE ALL_T AS OBJECT ("
      " V VARCHAR2(30), VC VARCHAR2(10 CHAR), C CHAR(3),"
      " N NUMBER, NP NUMBER(5), NPS NUMBER(7,2), NNEG NUMBER(5,-2), NSTAR NUMBER(*,2),"
      " I INTEGER, F FLOAT, F2 FLOAT(10), DE DECIMAL(9,3), R REAL, DP DOUBLE PRECISION,"
      " SI SMALLINT, D DATE,"
      " T TIMESTAMP, T0 TIMESTAMP(0), T9 TIMESTAMP(9), TZ TIMESTAMP(3) WITH TIME ZONE,"
      " TZ0 TIMESTAMP(0) WITH TIME ZONE, LTZ TIMESTAMP WITH LOCAL TIME ZONE,"
      " YM INTERVAL YEAR TO MONTH, YM4 INTERVAL YEAR(4) TO MONTH,"
      " DS INTERVAL DAY TO SECOND, DS30 INTERVAL DAY(3) TO SECOND(0),"
      " RW RAW(16), CL CLOB, BL BLOB)");
  MustDescribe("ALL_T");
  const unsigned zone = 1 + 64 + 1 + 16;  // " TZR TZD"
  ExpectList(list_, {
                        Scalar("V", SQLT_CHR, SQLT_CHR, 30),
                        Scalar("VC", SQLT_CHR, SQLT_CHR, 40),
                        Scalar("C", SQLT_AFC, SQLT_AFC, 3),
                        Scalar("N", SQLT_NUM, SQLT_STR, 22, 0, 0, -127),
                        Scalar("NP", SQLT_NUM, SQLT_STR, 22, 0, 5, 0),
                        Scalar("NPS", SQLT_NUM, SQLT_STR, 22, 0, 7, 2),
                        Scalar("NNEG", SQLT_NUM, SQLT_STR, 22, 0, 5, -2),
                        Scalar("NSTAR", SQLT_NUM, SQLT_STR, 22, 0, 38, 2),
                        Scalar("I", SQLT_NUM, SQLT_STR, 22, 0, 38, 0),
                        Scalar("F", SQLT_NUM, SQLT_STR, 22, 0, 126, -127),
                        Scalar("F2", SQLT_NUM, SQLT_STR, 22, 0, 10, -127),
                        Scalar("DE", SQLT_NUM, SQLT_STR, 22, 0, 9, 3),
                        Scalar("R", SQLT_NUM, SQLT_STR, 22, 0, 63, -127),
                        Scalar("DP", SQLT_NUM, SQLT_STR, 22, 0, 126, -127),
                        Scalar("SI", SQLT_NUM, SQLT_STR, 22, 0, 38, 0),
                        Scalar("D", SQLT_DAT, SQLT_DAT, 7, 19),
                        Scalar("T", SQLT_TIMESTAMP, SQLT_STR, 11, 26, 0, 6),
                        Scalar("T0", SQLT_TIMESTAMP, SQLT_STR, 11, 19, 0, 0),
                        Scalar("T9", SQLT_TIMESTAMP, SQLT_STR, 11, 29, 0, 9),
                        Scalar("TZ", SQLT_TIMESTAMP_TZ, SQLT_STR, 13, 23 + zone, 0, 3),
                        Scalar("TZ0", SQLT_TIMESTAMP_TZ, SQLT_STR, 13, 19 + zone, 0, 0),
                        Scalar("LTZ", SQLT_TIMESTAMP_LTZ, SQLT_STR, 11, 26, 0, 6),
                        Scalar("YM", SQLT_INTERVAL_YM, SQLT_STR, 5, 6, 2, 0),
                        Scalar("YM4", SQLT_INTERVAL_YM, SQLT_STR, 5, 8, 4, 0),
                        Scalar("DS", SQLT_INTERVAL_DS, SQLT_STR, 11, 19, 2, 6),
                        Scalar("DS30", SQLT_INTERVAL_DS, SQLT_STR, 11, 13, 3, 0),
                        Scalar("RW", SQLT_BIN, SQLT_BIN, 16),
                        Scalar("CL", SQLT_CLOB, SQLT_CLOB, 0),
                        Scalar("BL", SQLT_BLOB, SQLT_BLOB, 0),
                    });
}

TEST_F(ColdefTest, TypesTheAdapterRefusesKeepTheirOracleCode) {
  MustExec("CREATE TYPE SUB_T AS OBJECT (N NUMBER)");
  MustExec(
      "CREATE TYPE ODD_T AS OBJECT (BF BFILE, RF REF SUB_T, NV NVARCHAR2(5), NC NCHAR(2),"
      " NCL NCLOB)");
  MustDescribe("ODD_T");
  ExpectList(list_, {
                        Scalar("BF", SQLT_BFILEE, SQLT_BFILEE, 0),
                        Scalar("RF", SQLT_REF, SQLT_REF, 0),
                        // Sizes in bytes: AL16UTF16 takes two a character.
                        Scalar("NV", OCI_TYPECODE_NVARCHAR2, OCI_TYPECODE_NVARCHAR2, 10),
                        Scalar("NC", OCI_TYPECODE_NCHAR, OCI_TYPECODE_NCHAR, 4),
                        Scalar("NCL", OCI_TYPECODE_NCLOB, OCI_TYPECODE_NCLOB, 0),
                    });
}

TEST_F(ColdefTest, NestedObjectsAreGroupsClosedByTheirOwnRecord) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30), ZIP NUMBER(5))");
  MustExec(
      "CREATE TYPE PERSON_T AS OBJECT (NAME VARCHAR2(20), HOME ADDR_T, WORK ADDR_T,"
      " AGE NUMBER(3))");
  MustDescribe("PERSON_T");
  ExpectList(list_, {
                        Scalar("NAME", SQLT_CHR, SQLT_CHR, 20),
                        Group("HOME", SQLT_NTY, "SCOTT.ADDR_T"),
                        Scalar("STREET", SQLT_CHR, SQLT_CHR, 30),
                        Scalar("ZIP", SQLT_NUM, SQLT_STR, 22, 0, 5, 0),
                        Close(),
                        Group("WORK", SQLT_NTY, "SCOTT.ADDR_T"),
                        Scalar("STREET", SQLT_CHR, SQLT_CHR, 30),
                        Scalar("ZIP", SQLT_NUM, SQLT_STR, 22, 0, 5, 0),
                        Close(),
                        Scalar("AGE", SQLT_NUM, SQLT_STR, 22, 0, 3, 0),
                    });
}

TEST_F(ColdefTest, GroupsInsideGroupsCloseInnermostFirst) {
  MustExec("CREATE TYPE A1 AS OBJECT (X NUMBER)");
  MustExec("CREATE TYPE A2 AS OBJECT (Y A1, Z DATE)");
  MustExec("CREATE TYPE A3 AS OBJECT (W A2)");
  MustDescribe("A3");
  ExpectList(list_, {
                        Group("W", SQLT_NTY, "SCOTT.A2"),
                        Group("Y", SQLT_NTY, "SCOTT.A1"),
                        Scalar("X", SQLT_NUM, SQLT_STR, 22, 0, 0, -127),
                        Close(),
                        Scalar("Z", SQLT_DAT, SQLT_DAT, 7, 19),
                        Close(),
                    });
}

TEST_F(ColdefTest, DeepNestingNeedsNoDeepCallStack) {
  constexpr int kDepth = 400;
  MustExec("CREATE TYPE L0 AS OBJECT (N NUMBER)");
  for (int i = 1; i < kDepth; ++i) {
    MustExec("CREATE TYPE L" + std::to_string(i) + " AS OBJECT (C L" + std::to_string(i - 1) +
             ")");
  }
  const std::string top = "L" + std::to_string(kDepth - 1);
  MustDescribe(top.c_str());
  std::vector<Rec> expected;
  for (int i = kDepth - 2; i >= 0; --i) {
    expected.push_back(Group("C", SQLT_NTY, nullptr));
  }
  expected.push_back(Scalar("N", SQLT_NUM, SQLT_STR, 22, 0, 0, -127));
  for (int i = 0; i < kDepth - 1; ++i) expected.push_back(Close());
  // The type names differ per level: check them apart, then the rest without them.
  int level = kDepth - 2;
  for (Column_Def* def = list_; def != nullptr && def->Flags == kOpen; def = def->Next) {
    EXPECT_EQ("SCOTT.L" + std::to_string(level--), Text(def->TypeName));
    def->TypeName = nullptr;
  }
  ExpectList(list_, expected);
}

TEST_F(ColdefTest, TypesOfOtherSchemasAreNamedWithTheirSchema) {
  MustExec("CREATE TYPE OTHER.SUB_T AS OBJECT (N NUMBER(2))");
  MustExec("CREATE TYPE OTHER.WRAP_T AS OBJECT (S OTHER.SUB_T)");
  MustExec("CREATE TYPE SUB_T AS OBJECT (C CHAR(1))");
  MustExec("CREATE TYPE MINE_T AS OBJECT (W OTHER.WRAP_T, S SUB_T)");
  MustDescribe("MINE_T");
  ExpectList(list_, {
                        Group("W", SQLT_NTY, "OTHER.WRAP_T"),
                        Group("S", SQLT_NTY, "OTHER.SUB_T"),
                        Scalar("N", SQLT_NUM, SQLT_STR, 22, 0, 2, 0),
                        Close(),
                        Close(),
                        Group("S", SQLT_NTY, "SCOTT.SUB_T"),
                        Scalar("C", SQLT_AFC, SQLT_AFC, 1),
                        Close(),
                    });
  MustDescribe("OTHER.WRAP_T");
  ExpectList(list_, {
                        Group("S", SQLT_NTY, "OTHER.SUB_T"),
                        Scalar("N", SQLT_NUM, SQLT_STR, 22, 0, 2, 0),
                        Close(),
                    });
}

TEST_F(ColdefTest, SchemaQualifiedAndBareNamesGiveTheSameList) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  MustDescribe("SCOTT.ADDR_T");
  ExpectList(list_, {Scalar("STREET", SQLT_CHR, SQLT_CHR, 30)});
  MustDescribe("ADDR_T");
  ExpectList(list_, {Scalar("STREET", SQLT_CHR, SQLT_CHR, 30)});
}

TEST_F(ColdefTest, RecordsAreLinkedInOrderAndTheNamesAreWritable) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  MustExec("CREATE TYPE HOLDER_T AS OBJECT (A ADDR_T)");
  MustDescribe("HOLDER_T");
  ASSERT_EQ(3u, Count());
  EXPECT_EQ(list_ + 1, list_->Next);  // one block: a group's Next is its first member
  EXPECT_EQ(list_ + 2, list_->Next->Next);
  // The adapter cuts a type name at its point for OCITypeByName and puts the point back.
  list_->TypeName[5] = '\0';
  EXPECT_STREQ("SCOTT", list_->TypeName);
  list_->TypeName[5] = '.';
  EXPECT_STREQ("SCOTT.ADDR_T", list_->TypeName);
}

TEST_F(ColdefTest, AnUnknownNameIsOraclesError) {
  EXPECT_EQ(COLDEF_E_ORACLE, Describe("NO_SUCH_T"));
  EXPECT_EQ(nullptr, list_);
  EXPECT_EQ("ORA-04043: object NO_SUCH_T does not exist", FirstError(err_));
}

TEST_F(ColdefTest, NamesAreTakenAsStored) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  EXPECT_EQ(COLDEF_E_ORACLE, Describe("addr_t"));
  EXPECT_EQ(4043, FirstCode(err_));
  EXPECT_EQ(nullptr, list_);
}

TEST_F(ColdefTest, AnUnknownNestedTypeIsOraclesError) {
  MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30))");
  MustExec("CREATE TYPE HOLDER_T AS OBJECT (A ADDR_T)");
  MustExec("DROP TYPE ADDR_T FORCE");
  EXPECT_EQ(COLDEF_E_ORACLE, Describe("HOLDER_T"));
  EXPECT_EQ("ORA-04043: object SCOTT.ADDR_T does not exist", FirstError(err_));
  EXPECT_EQ(nullptr, list_);
}

TEST_F(ColdefTest, ATypeThatContainsItselfIsRefused) {
  MustExec("CREATE TYPE NODE_T AS OBJECT (N NUMBER)");
  MustExec("CREATE TYPE NODE_LIST AS TABLE OF NODE_T");
  MustExec("CREATE OR REPLACE TYPE NODE_T FORCE AS OBJECT (KIDS NODE_LIST)");
  EXPECT_EQ(COLDEF_E_CYCLE, Describe("NODE_T"));
  EXPECT_EQ(nullptr, list_);
}

TEST_F(ColdefTest, MissingArguments) {
  Column_Def* list = reinterpret_cast<Column_Def*>(1);
  EXPECT_EQ(COLDEF_E_ARGUMENT, coldefDescribe(nullptr, err_, svc_, "X", &list));
  EXPECT_EQ(nullptr, list);
  list = reinterpret_cast<Column_Def*>(1);
  EXPECT_EQ(COLDEF_E_ARGUMENT, coldefDescribe(env_, nullptr, svc_, "X", &list));
  EXPECT_EQ(nullptr, list);
  EXPECT_EQ(COLDEF_E_ARGUMENT, coldefDescribe(env_, err_, nullptr, "X", &list));
  EXPECT_EQ(COLDEF_E_ARGUMENT, coldefDescribe(env_, err_, svc_, nullptr, &list));
  EXPECT_EQ(COLDEF_E_ARGUMENT, coldefDescribe(env_, err_, svc_, "", &list));
  EXPECT_EQ(nullptr, list);
  EXPECT_EQ(COLDEF_E_ARGUMENT, coldefDescribe(env_, err_, svc_, "X", nullptr));
}

TEST_F(ColdefTest, FreeingNothingDoesNothing) { coldefFree(nullptr); }

TEST(ColdefHeader, UsableFromC) { EXPECT_EQ(1, coldef_c_header_check()); }

}  // namespace
}  // namespace coldef_test
