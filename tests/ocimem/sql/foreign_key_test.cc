// Foreign keys: parent keys looked for at INSERT and UPDATE, child rows at DELETE and at
// UPDATE of a parent key, ON DELETE CASCADE and SET NULL, tables that refer to themselves,
// and what foreign keys change for DROP TABLE and TRUNCATE TABLE.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <string>

#include "constraint_fixture.h"

namespace ocimem_test {
namespace {

class ForeignKeyTest : public ConstraintFixture {
 protected:
  void MakeParentAndChild(const std::string& on_delete = "") {
    MustExec("create table p (id number primary key, name varchar2(5))");
    MustExec("create table c (id number primary key, pid number constraint c_p references p " +
             on_delete + ")");
    MustExec("insert into p values (1, 'ONE')");
    MustExec("insert into p values (2, 'TWO')");
    MustExec("insert into c values (10, 1)");
    MustExec("insert into c values (11, 1)");
    MustExec("insert into c values (12, null)");
    MustExec("commit");
  }
};

const char kParentNotFound[] =
    "ORA-02291: integrity constraint (SCOTT.C_P) violated - parent key not found";
const char kChildFound[] =
    "ORA-02292: integrity constraint (SCOTT.C_P) violated - child record found";

TEST_F(ForeignKeyTest, ChildRowsNeedTheirParent) {
  MakeParentAndChild();
  EXPECT_EQ(kParentNotFound, ErrorOf("insert into c values (13, 3)"));
  EXPECT_EQ(kParentNotFound, ErrorOf("update c set pid = 3 where id = 10"));
  EXPECT_EQ(kParentNotFound, ErrorOf("update c set pid = 3 where id = 12"));
  EXPECT_EQ(1u, Changed("update c set pid = 2 where id = 12"));
  EXPECT_EQ(1u, Changed("update c set pid = null where id = 11"));
  EXPECT_EQ((Rows{"1", "<null>", "2"}), Column("select pid from c"));
}

TEST_F(ForeignKeyTest, ParentsWithChildrenCannotGoOrChangeTheirKey) {
  MakeParentAndChild();
  EXPECT_EQ(kChildFound, ErrorOf("delete from p where id = 1"));
  EXPECT_EQ(kChildFound, ErrorOf("delete from p"));
  EXPECT_EQ(kChildFound, ErrorOf("update p set id = 5 where id = 1"));
  EXPECT_EQ((Rows{"1", "2"}), Column("select id from p"));
  // Other columns of a parent, and parents without children, may change.
  EXPECT_EQ(1u, Changed("update p set name = 'UNO' where id = 1"));
  EXPECT_EQ(1u, Changed("update p set id = 3 where id = 2"));
  EXPECT_EQ(1u, Changed("delete from p where id = 3"));
  EXPECT_EQ(2u, Changed("delete from c where pid = 1"));
  EXPECT_EQ(1u, Changed("delete from p where id = 1"));
}

TEST_F(ForeignKeyTest, OnDeleteCascadeDeletesChildrenAndCountsOnlyTheParents) {
  MakeParentAndChild("on delete cascade");
  MustExec("create table g (id number, cid number constraint g_c references c on delete cascade)");
  MustExec("insert into g values (100, 10)");
  MustExec("insert into g values (101, 12)");
  MustExec("commit");
  EXPECT_EQ(1u, Changed("delete from p where id = 1"));
  EXPECT_EQ((Rows{"12"}), Column("select id from c"));
  EXPECT_EQ((Rows{"101"}), Column("select id from g"));
  MustExec("rollback");
  EXPECT_EQ((Rows{"10", "11", "12"}), Column("select id from c"));
  EXPECT_EQ((Rows{"100", "101"}), Column("select id from g"));
}

TEST_F(ForeignKeyTest, CascadeStopsAtAGrandchildWithoutOnDelete) {
  MakeParentAndChild("on delete cascade");
  MustExec("create table g (id number, cid number constraint g_c references c)");
  MustExec("insert into g values (100, 11)");
  EXPECT_EQ("ORA-02292: integrity constraint (SCOTT.G_C) violated - child record found",
            ErrorOf("delete from p where id = 1"));
  EXPECT_EQ((Rows{"1", "2"}), Column("select id from p"));
  EXPECT_EQ((Rows{"10", "11", "12"}), Column("select id from c"));
  EXPECT_EQ(1u, Changed("delete from g"));
  EXPECT_EQ(1u, Changed("delete from p where id = 1"));
  EXPECT_EQ((Rows{"12"}), Column("select id from c"));
}

TEST_F(ForeignKeyTest, OnDeleteSetNullEmptiesTheChildColumns) {
  MakeParentAndChild("on delete set null");
  EXPECT_EQ(1u, Changed("delete from p where id = 1"));
  EXPECT_EQ((Rows{"<null>", "<null>", "<null>"}), Column("select pid from c"));
  EXPECT_EQ(3u, Column("select id from c").size());
  MustExec("rollback");
  EXPECT_EQ((Rows{"1", "1", "<null>"}), Column("select pid from c"));
  // A NOT NULL child column cannot be set to NULL.
  MustExec("create table n (id number, pid number not null references p on delete set null)");
  MustExec("insert into n values (1, 2)");
  EXPECT_EQ("ORA-01407: cannot update (\"SCOTT\".\"N\".\"PID\") to NULL",
            ErrorOf("delete from p where id = 2"));
  EXPECT_EQ((Rows{"1", "2"}), Column("select id from p"));
}

TEST_F(ForeignKeyTest, CompositeKeysWithANullAreNotChecked) {
  MustExec("create table p (a number, b varchar2(3), constraint p_u unique (b, a))");
  MustExec("insert into p values (1, 'x')");
  // Referring to a UNIQUE key, its columns in another order.
  MustExec("create table c (x number, y varchar2(3), "
           "constraint c_p foreign key (x, y) references p (a, b))");
  MustExec("insert into c values (1, 'x')");
  MustExec("insert into c values (2, null)");
  MustExec("insert into c values (null, 'zz')");
  EXPECT_EQ(kParentNotFound, ErrorOf("insert into c values (2, 'x')"));
  EXPECT_EQ(kChildFound, ErrorOf("delete from p"));
  EXPECT_EQ(kChildFound, ErrorOf("update p set b = 'y'"));
  EXPECT_EQ(1u, Changed("delete from c where x = 1"));
  EXPECT_EQ(1u, Changed("delete from p"));
}

TEST_F(ForeignKeyTest, TablesReferToThemselves) {
  MustExec("create table emp (empno number primary key, mgr number "
           "constraint emp_mgr references emp)");
  MustExec("insert into emp values (1, null)");
  MustExec("insert into emp values (2, 1)");
  MustExec("insert into emp values (3, 3)");  // its own manager
  EXPECT_EQ("ORA-02291: integrity constraint (SCOTT.EMP_MGR) violated - parent key not found",
            ErrorOf("insert into emp values (4, 5)"));
  EXPECT_EQ("ORA-02292: integrity constraint (SCOTT.EMP_MGR) violated - child record found",
            ErrorOf("delete from emp where empno = 1"));
  EXPECT_EQ("ORA-02292: integrity constraint (SCOTT.EMP_MGR) violated - child record found",
            ErrorOf("update emp set empno = 7 where empno = 1"));
  // A row that refers only to itself can go; so can every row at once.
  EXPECT_EQ(1u, Changed("delete from emp where empno = 3"));
  EXPECT_EQ(2u, Changed("delete from emp"));
}

TEST_F(ForeignKeyTest, AForeignKeyMayReferToAKeyWrittenAfterIt) {
  MustExec("create table emp (mgr number constraint emp_mgr references emp, "
           "empno number primary key)");
  MustExec("insert into emp values (null, 1)");
  MustExec("insert into emp values (1, 2)");
  EXPECT_EQ("ORA-02291: integrity constraint (SCOTT.EMP_MGR) violated - parent key not found",
            ErrorOf("insert into emp values (3, 4)"));
  // Referring only to itself, the table can be dropped.
  MustExec("drop table emp");
}

TEST_F(ForeignKeyTest, AColumnWithoutTypeTakesTheReferencedColumnsType) {
  MustExec("create table p (code varchar2(3) primary key, n number(2) unique)");
  MustExec("insert into p values ('abc', 10)");
  MustExec("create table c (code constraint c_p references p, n references p (n))");
  MustExec("insert into c values ('abc', 10)");
  EXPECT_EQ(kParentNotFound, ErrorOf("insert into c values ('xyz', null)"));
  EXPECT_EQ(12899, ExecError("insert into c values ('abcd', null)"));
  EXPECT_EQ(1438, ExecError("insert into c values (null, 100)"));
  MustExec("create table emp (empno number(4) primary key, mgr references emp)");
  MustExec("insert into emp values (1, null)");
  MustExec("insert into emp values (2, 1)");
  EXPECT_EQ(1438, ExecError("insert into emp values (3, 12345)"));
  EXPECT_EQ("ORA-02263: need to specify the datatype for this column",
            ErrorOf("create table d (a not null)"));
  EXPECT_EQ("ORA-00942: table or view does not exist",
            ErrorOf("create table d (a references nope)"));
  EXPECT_EQ("ORA-02256: number of referencing columns must match referenced columns",
            ErrorOf("create table d (a references p (code, n))"));
}

TEST_F(ForeignKeyTest, SelfReferenceCascadesDownTheTree) {
  MustExec("create table emp (empno number primary key, mgr number "
           "references emp on delete cascade)");
  MustExec("insert into emp values (1, null)");
  MustExec("insert into emp values (2, 1)");
  MustExec("insert into emp values (3, 2)");
  MustExec("insert into emp values (4, 3)");
  MustExec("insert into emp values (5, null)");
  EXPECT_EQ(1u, Changed("delete from emp where empno = 2"));
  EXPECT_EQ((Rows{"1", "5"}), Column("select empno from emp"));
}

TEST_F(ForeignKeyTest, SelfReferenceSetsNullInTheSameTable) {
  MustExec("create table emp (empno number primary key, mgr number "
           "references emp on delete set null)");
  MustExec("insert into emp values (1, null)");
  MustExec("insert into emp values (2, 1)");
  MustExec("insert into emp values (3, 1)");
  MustExec("insert into emp values (4, 2)");
  EXPECT_EQ(1u, Changed("delete from emp where empno = 1"));
  EXPECT_EQ((Rows{"2", "3", "4"}), Column("select empno from emp"));
  EXPECT_EQ((Rows{"<null>", "<null>", "2"}), Column("select mgr from emp"));
}

TEST_F(ForeignKeyTest, ParentsTheSessionHasNotCommittedCount) {
  MustExec("create table p (id number primary key)");
  MustExec("create table c (pid number constraint c_p references p)");
  MustExec("insert into p values (1)");
  MustExec("insert into c values (1)");
  MustExec("rollback");
  EXPECT_EQ(kParentNotFound, ErrorOf("insert into c values (1)"));
  MustExec("insert into p values (1)");
  MustExec("commit");
  MustExec("insert into c values (1)");
  EXPECT_EQ(1u, Changed("delete from c"));
  EXPECT_EQ(1u, Changed("delete from p"));
  EXPECT_EQ(kParentNotFound, ErrorOf("insert into c values (1)"));
}

// decision CN1: where Oracle would wait for another transaction's parent or child row,
// ocimem answers ORA-00054.
TEST_F(ForeignKeyTest, AnotherSessionsUncommittedParentOrChildIsBusy) {
  MustExec("create table p (id number primary key)");
  MustExec("create table c (pid number constraint c_p references p)");
  MustExec("insert into p values (1)");
  MustExec("commit");
  OCISvcCtx* other = OtherSession();
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "insert into p values (2)")) << FirstError(err_);
  EXPECT_EQ(54, ExecError("insert into c values (2)"));
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "insert into c values (1)")) << FirstError(err_);
  EXPECT_EQ(54, ExecError("delete from p where id = 1"));
  ASSERT_EQ(OCI_SUCCESS, ExecOn(other, "commit"));
  MustExec("insert into c values (2)");
  EXPECT_EQ(kChildFound, ErrorOf("delete from p where id = 1"));
}

TEST_F(ForeignKeyTest, DropTableOfAParentNeedsCascadeConstraints) {
  MakeParentAndChild();
  EXPECT_EQ("ORA-02449: unique/primary keys in table referenced by foreign keys",
            ErrorOf("drop table p"));
  MustExec("drop table p cascade constraints");
  // The foreign key went with it, and its name is free.
  MustExec("insert into c values (13, 99)");
  MustExec("create table q (id number constraint c_p primary key)");
}

TEST_F(ForeignKeyTest, DropTableOfAChildFreesItsParent) {
  MakeParentAndChild();
  MustExec("drop table c");
  MustExec("truncate table p");
  MustExec("drop table p");
}

TEST_F(ForeignKeyTest, TruncateOfAReferencedTableIsRefused) {
  MakeParentAndChild();
  EXPECT_EQ("ORA-02266: unique/primary keys in table referenced by enabled foreign keys",
            ErrorOf("truncate table p"));
  EXPECT_EQ(2u, Column("select id from p").size());
  MustExec("truncate table c");
  MustExec("create table emp (empno number primary key, mgr number references emp)");
  MustExec("insert into emp values (1, 1)");
  MustExec("truncate table emp");
}

// Parent keys are found through the key's index, children through the foreign key's:
// inserting a batch of children into tables of 4,000 rows costs about what the first batch
// did, and deleting 4,000 parents with their children by cascade about four times what
// deleting 1,000 does; passes over the tables per row would make both about nine and
// sixteen times as long. Process CPU time, so that other programs do not count.
TEST_F(ForeignKeyTest, ManyParentsAndChildrenStayLinear) {
  int id = 0;
  // Statements inserting a parent and a child of id into table p<suffix> and c<suffix>.
  auto prepare = [&](const std::string& suffix, OCIStmt** parent, OCIStmt** child) {
    MustExec("create table p" + suffix + " (id number primary key)");
    MustExec("create table c" + suffix + " (id number, pid number references p" + suffix +
             " on delete cascade)");
    *parent = Prepare("insert into p" + suffix + " values (:1)");
    *child = Prepare("insert into c" + suffix + " values (:1, :2)");
    OCIBind* b1 = nullptr;
    OCIBind* b2 = nullptr;
    OCIBind* b3 = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(*parent, &b1, err_, 1, &id, sizeof id, SQLT_INT,
                                        nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(*child, &b2, err_, 1, &id, sizeof id, SQLT_INT,
                                        nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(*child, &b3, err_, 2, &id, sizeof id, SQLT_INT,
                                        nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  };
  auto insert = [&](OCIStmt* parent, OCIStmt* child, int from, int to) {
    const std::clock_t start = std::clock();
    for (id = from; id < to; ++id) EXPECT_EQ(OCI_SUCCESS, Execute(parent)) << FirstError(err_);
    for (id = from; id < to; ++id) EXPECT_EQ(OCI_SUCCESS, Execute(child)) << FirstError(err_);
    return static_cast<double>(std::clock() - start);
  };
  auto remove = [&](const std::string& table, ub4 rows) {
    const std::clock_t start = std::clock();
    EXPECT_EQ(rows, Changed("delete from " + table));
    return static_cast<double>(std::clock() - start);
  };
  constexpr int kBatch = 1000;
  OCIStmt* parent = nullptr;
  OCIStmt* child = nullptr;
  // The first batch into empty tables, the fastest of five pairs of tables of their own.
  double first = 0;
  for (int round = 0; round < 5; ++round) {
    OCIStmt* parent_first = nullptr;
    OCIStmt* child_first = nullptr;
    prepare("f" + std::to_string(round), &parent_first, &child_first);
    const double once = insert(parent_first, child_first, 0, kBatch);
    first = round == 0 ? once : std::min(first, once);
  }
  prepare("", &parent, &child);
  insert(parent, child, 0, 4 * kBatch);
  // The fastest of three later batches, so that a moment of load does not count.
  double later = insert(parent, child, 4 * kBatch, 5 * kBatch);
  later = std::min(later, insert(parent, child, 5 * kBatch, 6 * kBatch));
  later = std::min(later, insert(parent, child, 6 * kBatch, 7 * kBatch));
  EXPECT_LT(later, 4.0 * first) << "first " << first << ", later " << later;
  MustExec("commit");
  // Deleting by cascade, 1,000 parents against 5,000, each timed five times on tables of
  // their own: the fastest of each, so that a moment of load on the machine does not count.
  double small = 0;
  double large = 0;
  for (int round = 0; round < 5; ++round) {
    OCIStmt* parent_small = nullptr;
    OCIStmt* child_small = nullptr;
    OCIStmt* parent_large = nullptr;
    OCIStmt* child_large = nullptr;
    const std::string s = "s" + std::to_string(round);
    const std::string l = "l" + std::to_string(round);
    prepare(s, &parent_small, &child_small);
    prepare(l, &parent_large, &child_large);
    insert(parent_small, child_small, 0, kBatch);
    insert(parent_large, child_large, 0, 5 * kBatch);
    MustExec("commit");
    const double small_once = remove("p" + s, kBatch);
    const double large_once = remove("p" + l, 5 * kBatch);
    small = round == 0 ? small_once : std::min(small, small_once);
    large = round == 0 ? large_once : std::min(large, large_once);
    EXPECT_EQ(0u, Column("select id from c" + s).size());
    EXPECT_EQ(0u, Column("select id from c" + l).size());
  }
  EXPECT_LT(large, 10.0 * small) << "1,000 parents " << small << ", 5,000 parents " << large;
  EXPECT_EQ(7u * kBatch, Changed("delete from p"));
  EXPECT_EQ(0u, Column("select id from c").size());
  EXPECT_EQ(0u, Column("select id from p").size());
}

}  // namespace
}  // namespace ocimem_test
