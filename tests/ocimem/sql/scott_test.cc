// The classic SCOTT demonstration schema (DEPT, EMP, BONUS, SALGRADE, as Oracle's demo
// build script makes and fills them), and its constraints at work on that data.  The
// script writes its dates with TO_DATE; here they are literals read through
// NLS_DATE_FORMAT 'DD-MM-YYYY', and the two it computes (13-JUL-87 less 85 and less 51
// days) are written worked out.
#include <gtest/gtest.h>

#include <string>

#include "constraint_fixture.h"

namespace ocimem_test {
namespace {

class ScottTest : public ConstraintFixture {
 protected:
  void SetUp() override {
    ConstraintFixture::SetUp();
    MustExec("alter session set nls_date_format = 'DD-MM-YYYY'");
    MustExec("CREATE TABLE DEPT (DEPTNO NUMBER(2) CONSTRAINT PK_DEPT PRIMARY KEY, "
             "DNAME VARCHAR2(14), LOC VARCHAR2(13))");
    MustExec("CREATE TABLE EMP (EMPNO NUMBER(4) CONSTRAINT PK_EMP PRIMARY KEY, "
             "ENAME VARCHAR2(10), JOB VARCHAR2(9), MGR NUMBER(4), HIREDATE DATE, "
             "SAL NUMBER(7,2), COMM NUMBER(7,2), "
             "DEPTNO NUMBER(2) CONSTRAINT FK_DEPTNO REFERENCES DEPT)");
    MustExec("INSERT INTO DEPT VALUES (10,'ACCOUNTING','NEW YORK')");
    MustExec("INSERT INTO DEPT VALUES (20,'RESEARCH','DALLAS')");
    MustExec("INSERT INTO DEPT VALUES (30,'SALES','CHICAGO')");
    MustExec("INSERT INTO DEPT VALUES (40,'OPERATIONS','BOSTON')");
    const char* const kEmp[] = {
        "7369,'SMITH','CLERK',7902,'17-12-1980',800,NULL,20",
        "7499,'ALLEN','SALESMAN',7698,'20-2-1981',1600,300,30",
        "7521,'WARD','SALESMAN',7698,'22-2-1981',1250,500,30",
        "7566,'JONES','MANAGER',7839,'2-4-1981',2975,NULL,20",
        "7654,'MARTIN','SALESMAN',7698,'28-9-1981',1250,1400,30",
        "7698,'BLAKE','MANAGER',7839,'1-5-1981',2850,NULL,30",
        "7782,'CLARK','MANAGER',7839,'9-6-1981',2450,NULL,10",
        "7788,'SCOTT','ANALYST',7566,'19-4-1987',3000,NULL,20",
        "7839,'KING','PRESIDENT',NULL,'17-11-1981',5000,NULL,10",
        "7844,'TURNER','SALESMAN',7698,'8-9-1981',1500,0,30",
        "7876,'ADAMS','CLERK',7788,'23-5-1987',1100,NULL,20",
        "7900,'JAMES','CLERK',7698,'3-12-1981',950,NULL,30",
        "7902,'FORD','ANALYST',7566,'3-12-1981',3000,NULL,20",
        "7934,'MILLER','CLERK',7782,'23-1-1982',1300,NULL,10",
    };
    for (const char* row : kEmp) MustExec(std::string("INSERT INTO EMP VALUES (") + row + ")");
    MustExec("CREATE TABLE BONUS (ENAME VARCHAR2(10), JOB VARCHAR2(9), SAL NUMBER, COMM NUMBER)");
    MustExec("CREATE TABLE SALGRADE (GRADE NUMBER, LOSAL NUMBER, HISAL NUMBER)");
    MustExec("INSERT INTO SALGRADE VALUES (1,700,1200)");
    MustExec("INSERT INTO SALGRADE VALUES (2,1201,1400)");
    MustExec("INSERT INTO SALGRADE VALUES (3,1401,2000)");
    MustExec("INSERT INTO SALGRADE VALUES (4,2001,3000)");
    MustExec("INSERT INTO SALGRADE VALUES (5,3001,9999)");
    MustExec("COMMIT");
  }
};

TEST_F(ScottTest, TheSchemaHoldsItsRows) {
  EXPECT_EQ(4u, Column("select deptno from dept").size());
  EXPECT_EQ(14u, Column("select empno from emp").size());
  EXPECT_EQ(0u, Column("select ename from bonus").size());
  EXPECT_EQ(5u, Column("select grade from salgrade").size());
  EXPECT_EQ((Rows{"CLARK", "KING", "MILLER"}), Column("select ename from emp where deptno = 10"));
  EXPECT_EQ((Rows{"19-04-1987"}), Column("select hiredate from emp where empno = 7788"));
  EXPECT_EQ((Rows{"23-05-1987"}), Column("select hiredate from emp where ename = 'ADAMS'"));
  EXPECT_EQ((Rows{"1400"}), Column("select comm from emp where ename = 'MARTIN'"));
  EXPECT_EQ((Rows{"<null>"}), Column("select mgr from emp where job = 'PRESIDENT'"));
}

TEST_F(ScottTest, KeysAreUnique) {
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.PK_EMP) violated",
            ErrorOf("insert into emp (empno, ename, deptno) values (7839, 'KONG', 10)"));
  EXPECT_EQ("ORA-00001: unique constraint (SCOTT.PK_DEPT) violated",
            ErrorOf("insert into dept values (40, 'X', 'Y')"));
  EXPECT_EQ("ORA-01400: cannot insert NULL into (\"SCOTT\".\"EMP\".\"EMPNO\")",
            ErrorOf("insert into emp (ename) values ('NOBODY')"));
}

TEST_F(ScottTest, EmployeesNeedAKnownDepartment) {
  EXPECT_EQ("ORA-02291: integrity constraint (SCOTT.FK_DEPTNO) violated - parent key not found",
            ErrorOf("insert into emp (empno, ename, deptno) values (8000, 'NEW', 50)"));
  EXPECT_EQ("ORA-02291: integrity constraint (SCOTT.FK_DEPTNO) violated - parent key not found",
            ErrorOf("update emp set deptno = 50 where empno = 7369"));
  EXPECT_EQ(1u, Changed("insert into emp (empno, ename, deptno) values (8000, 'NEW', 40)"));
  EXPECT_EQ(1u, Changed("insert into emp (empno, ename) values (8001, 'NODEPT')"));
  EXPECT_EQ(5u, Changed("update emp set deptno = 40 where deptno = 20"));
}

TEST_F(ScottTest, DepartmentsWithEmployeesStay) {
  EXPECT_EQ("ORA-02292: integrity constraint (SCOTT.FK_DEPTNO) violated - child record found",
            ErrorOf("delete from dept where deptno = 10"));
  EXPECT_EQ("ORA-02292: integrity constraint (SCOTT.FK_DEPTNO) violated - child record found",
            ErrorOf("update dept set deptno = 50 where deptno = 20"));
  EXPECT_EQ(1u, Changed("delete from dept where deptno = 40"));
  EXPECT_EQ(6u, Changed("delete from emp where deptno = 30"));
  EXPECT_EQ(1u, Changed("delete from dept where deptno = 30"));
  EXPECT_EQ((Rows{"ACCOUNTING", "RESEARCH"}), Column("select dname from dept"));
  MustExec("rollback");
  EXPECT_EQ(4u, Column("select deptno from dept").size());
  EXPECT_EQ(14u, Column("select empno from emp").size());
}

TEST_F(ScottTest, DeptCannotBeDroppedOrTruncatedUnderEmp) {
  EXPECT_EQ("ORA-02449: unique/primary keys in table referenced by foreign keys",
            ErrorOf("drop table dept"));
  EXPECT_EQ("ORA-02266: unique/primary keys in table referenced by enabled foreign keys",
            ErrorOf("truncate table dept"));
  MustExec("drop table emp");
  MustExec("drop table dept");
}

}  // namespace
}  // namespace ocimem_test
