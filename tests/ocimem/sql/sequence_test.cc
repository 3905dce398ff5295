// CREATE SEQUENCE and DROP SEQUENCE: Oracle's defaults for ascending and descending
// sequences, options in any order, MAXVALUE and MINVALUE with and without CYCLE, the
// shared namespace, and the errors for options that do not fit together.
#include <string>
#include <vector>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

using Rows = std::vector<std::string>;

class SequenceTest : public SqlTest {
 protected:
  // The values of `n` NEXTVALs of sequence `name`, one query each.
  Rows Next(const std::string& name, int n) {
    Rows values;
    for (int i = 0; i < n; ++i) {
      Rows row = Column("select " + name + ".nextval from dual");
      values.push_back(row.size() == 1 ? row[0] : "<" + std::to_string(row.size()) + " rows>");
    }
    return values;
  }

  std::string ErrorOf(const std::string& sql) {
    EXPECT_EQ(OCI_ERROR, Exec(sql)) << sql;
    return FirstError(err_);
  }
};

TEST_F(SequenceTest, DefaultsStartAtOneAndAscendByOne) {
  MustExec("create sequence s");
  EXPECT_EQ((Rows{"1", "2", "3"}), Next("s", 3));
}

TEST_F(SequenceTest, TakesItsOptionsInAnyOrder) {
  MustExec("create sequence s increment by 5 nocache maxvalue 100 start with 10 noorder "
           "nocycle minvalue 0");
  EXPECT_EQ((Rows{"10", "15", "20"}), Next("s", 3));
}

TEST_F(SequenceTest, StartsAtMinValueWhenAscending) {
  MustExec("create sequence s minvalue 7 cache 5 order");
  EXPECT_EQ((Rows{"7", "8"}), Next("s", 2));
}

TEST_F(SequenceTest, DescendingDefaultsStartAtMinusOne) {
  MustExec("create sequence s increment by -1");
  EXPECT_EQ((Rows{"-1", "-2", "-3"}), Next("s", 3));
}

TEST_F(SequenceTest, DescendingStartsAtMaxValue) {
  MustExec("create sequence s increment by -10 maxvalue 100");
  EXPECT_EQ((Rows{"100", "90"}), Next("s", 2));
}

TEST_F(SequenceTest, AscendingDefaultMaxValueIsTenToThe28thMinusOne) {
  MustExec("create sequence s start with 9999999999999999999999999998");
  EXPECT_EQ((Rows{"9999999999999999999999999998", "9999999999999999999999999999"}),
            Next("s", 2));
  EXPECT_EQ("ORA-08004: sequence S.NEXTVAL exceeds MAXVALUE and cannot be instantiated",
            ErrorOf("select s.nextval from dual"));
}

TEST_F(SequenceTest, DescendingDefaultMinValueIsMinusTenToThe27thPlusOne) {
  MustExec("create sequence s increment by -1 start with -999999999999999999999999998");
  EXPECT_EQ((Rows{"-999999999999999999999999998", "-999999999999999999999999999"}),
            Next("s", 2));
  EXPECT_EQ("ORA-08004: sequence S.NEXTVAL goes below MINVALUE and cannot be instantiated",
            ErrorOf("select s.nextval from dual"));
}

TEST_F(SequenceTest, PastMaxValueWithoutCycleGivesOra08004EveryTime) {
  MustExec("create sequence s maxvalue 3");
  EXPECT_EQ((Rows{"1", "2", "3"}), Next("s", 3));
  EXPECT_EQ("ORA-08004: sequence S.NEXTVAL exceeds MAXVALUE and cannot be instantiated",
            ErrorOf("select s.nextval from dual"));
  EXPECT_EQ(8004, ExecError("select s.nextval from dual"));
  // The failed NEXTVALs took nothing: CURRVAL is still the last value handed out.
  EXPECT_EQ((Rows{"3"}), Column("select s.currval from dual"));
}

TEST_F(SequenceTest, CycleWrapsToMinValue) {
  MustExec("create sequence s start with 100 increment by 50 maxvalue 200 cycle nocache");
  EXPECT_EQ((Rows{"100", "150", "200", "1", "51"}), Next("s", 5));
}

TEST_F(SequenceTest, CycleWrapsToAGivenMinValue) {
  MustExec("create sequence s start with 100 increment by 50 maxvalue 200 minvalue 0 cycle "
           "nocache");
  EXPECT_EQ((Rows{"100", "150", "200", "0"}), Next("s", 4));
}

TEST_F(SequenceTest, CycleTakesACacheSmallerThanOneCycle) {
  // (MAXVALUE - MINVALUE) / INCREMENT is 10 here.
  MustExec("create sequence s maxvalue 11 cycle cache 9");
  EXPECT_EQ((Rows{"1"}), Next("s", 1));
  MustExec("create sequence s2 maxvalue 22 increment by 5 cycle cache 4");
  EXPECT_EQ((Rows{"1", "6"}), Next("s2", 2));
}

TEST_F(SequenceTest, DescendingCycleWrapsToMaxValue) {
  MustExec("create sequence s start with 2 increment by -1 minvalue 1 maxvalue 3 cycle nocache");
  EXPECT_EQ((Rows{"2", "1", "3", "2"}), Next("s", 4));
}

TEST_F(SequenceTest, SchemaQualifiedNames) {
  MustExec("create sequence scott.s start with 5");
  EXPECT_EQ((Rows{"5"}), Column("select scott.s.nextval from dual"));
  EXPECT_EQ((Rows{"6"}), Column("select s.nextval from dual"));
  MustExec("drop sequence scott.s");
  EXPECT_EQ(2289, ExecError("select s.nextval from dual"));
}

TEST_F(SequenceTest, NameUsedByATableGivesOra00955) {
  MustExec("create table t (id number)");
  EXPECT_EQ("ORA-00955: name is already used by an existing object",
            ErrorOf("create sequence t"));
}

TEST_F(SequenceTest, TableNamedLikeASequenceGivesOra00955) {
  MustExec("create sequence s");
  EXPECT_EQ(955, ExecError("create table s (id number)"));
  EXPECT_EQ(955, ExecError("create view s as select dummy from dual"));
  EXPECT_EQ(955, ExecError("create type s as object (a number)"));
  EXPECT_EQ(955, ExecError("create sequence s"));
}

TEST_F(SequenceTest, DropSequenceRemovesIt) {
  MustExec("create sequence s");
  EXPECT_EQ((Rows{"1"}), Next("s", 1));
  MustExec("drop sequence s");
  EXPECT_EQ("ORA-02289: sequence does not exist", ErrorOf("select s.nextval from dual"));
  // The name is free again, and the new sequence starts over.
  MustExec("create sequence s");
  EXPECT_EQ((Rows{"1"}), Next("s", 1));
}

TEST_F(SequenceTest, DropOfAnUnknownSequenceGivesOra02289) {
  MustExec("create table t (id number)");
  EXPECT_EQ("ORA-02289: sequence does not exist", ErrorOf("drop sequence nosuch"));
  EXPECT_EQ(2289, ExecError("drop sequence t"));
}

TEST_F(SequenceTest, SequenceDdlCommitsTheOpenTransaction) {
  MustExec("create table t (id number)");
  MustExec("insert into t values (1)");
  MustExec("create sequence s");
  MustExec("insert into t values (2)");
  MustExec("drop sequence s");
  MustExec("rollback");
  EXPECT_EQ((Rows{"1", "2"}), Column("select id from t"));
}

TEST_F(SequenceTest, AlterSequenceIsNotRunAndGivesOra00940) {
  MustExec("create sequence s");
  EXPECT_EQ("ORA-00940: invalid ALTER command", ErrorOf("alter sequence s increment by 2"));
  EXPECT_EQ((Rows{"1", "2"}), Next("s", 2));
}

struct BadSequence {
  const char* sql;
  sb4 code;
};

class BadSequenceTest : public SequenceTest, public ::testing::WithParamInterface<BadSequence> {};

TEST_P(BadSequenceTest, GivesOraclesError) {
  EXPECT_EQ(GetParam().code, ExecError(GetParam().sql));
  // Nothing was created.
  EXPECT_EQ(2289, ExecError("select s.nextval from dual"));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BadSequenceTest,
    ::testing::Values(
        BadSequence{"create sequence s increment by 0", 4002},
        BadSequence{"create sequence s minvalue 5 maxvalue 5", 4004},
        BadSequence{"create sequence s minvalue 9 maxvalue 5", 4004},
        BadSequence{"create sequence s minvalue 1 maxvalue 10 increment by 9", 4005},
        BadSequence{"create sequence s minvalue 1 maxvalue 10 increment by -9", 4005},
        BadSequence{"create sequence s start with 0", 4006},
        BadSequence{"create sequence s increment by -1 minvalue -5 start with -6", 4006},
        BadSequence{"create sequence s maxvalue 10 start with 11", 4008},
        BadSequence{"create sequence s increment by -1 start with 0", 4008},
        BadSequence{"create sequence s increment by 1.5", 4001},
        BadSequence{"create sequence s start with 1e3", 4001},
        BadSequence{"create sequence s start with 99999999999999999999999999999", 4003},
        BadSequence{"create sequence s minvalue -9999999999999999999999999999", 4003},
        BadSequence{"create sequence s cycle", 4015},
        BadSequence{"create sequence s increment by -1 cycle", 4014},
        BadSequence{"create sequence s cache 1", 4010},
        BadSequence{"create sequence s maxvalue 10 cycle", 4013},
        BadSequence{"create sequence s maxvalue 10 cycle cache 9", 4013},
        BadSequence{"create sequence s maxvalue 21 increment by 5 cycle cache 4", 4013},
        // decision SQ1: an option given twice, or contradicted, is refused.
        BadSequence{"create sequence s start with 1 start with 2", 922},
        BadSequence{"create sequence s minvalue 1 nominvalue", 922},
        BadSequence{"create sequence s cycle nocycle", 922},
        BadSequence{"create sequence s step 2", 922}));

TEST_F(SequenceTest, TheTextsOfTheOptionErrors) {
  EXPECT_EQ("ORA-04002: INCREMENT must be a non-zero integer",
            ErrorOf("create sequence s increment by 0"));
  EXPECT_EQ("ORA-04004: MINVALUE must be less than MAXVALUE",
            ErrorOf("create sequence s minvalue 5 maxvalue 5"));
  EXPECT_EQ("ORA-04005: INCREMENT must be less than MAXVALUE minus MINVALUE",
            ErrorOf("create sequence s maxvalue 3 increment by 2"));
  EXPECT_EQ("ORA-04006: START WITH cannot be less than MINVALUE",
            ErrorOf("create sequence s start with 0"));
  EXPECT_EQ("ORA-04008: START WITH cannot be more than MAXVALUE",
            ErrorOf("create sequence s maxvalue 10 start with 11"));
  EXPECT_EQ("ORA-04015: ascending sequences that CYCLE must specify MAXVALUE",
            ErrorOf("create sequence s cycle"));
  EXPECT_EQ("ORA-04014: descending sequences that CYCLE must specify MINVALUE",
            ErrorOf("create sequence s increment by -1 cycle"));
}

}  // namespace
}  // namespace ocimem_test
