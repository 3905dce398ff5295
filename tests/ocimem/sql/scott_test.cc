// The classic SCOTT demonstration schema (DEPT, EMP, BONUS, SALGRADE), made and filled
// with the statements of Oracle's demo build script (dates by TO_DATE, two of them
// computed from 13-JUL-87), its constraints at work on that data, and the queries host
// programs send to it. Expected results are worked out from the data by hand.
#include <gtest/gtest.h>

#include <string>

#include "constraint_fixture.h"

namespace ocimem_test {
namespace {

class ScottTest : public ConstraintFixture {
 protected:
  void SetUp() override {
    ConstraintFixture::SetUp();
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
        "7369,'SMITH','CLERK',7902,to_date('17-12-1980','dd-mm-yyyy'),800,NULL,20",
        "7499,'ALLEN','SALESMAN',7698,to_date('20-2-1981','dd-mm-yyyy'),1600,300,30",
        "7521,'WARD','SALESMAN',7698,to_date('22-2-1981','dd-mm-yyyy'),1250,500,30",
        "7566,'JONES','MANAGER',7839,to_date('2-4-1981','dd-mm-yyyy'),2975,NULL,20",
        "7654,'MARTIN','SALESMAN',7698,to_date('28-9-1981','dd-mm-yyyy'),1250,1400,30",
        "7698,'BLAKE','MANAGER',7839,to_date('1-5-1981','dd-mm-yyyy'),2850,NULL,30",
        "7782,'CLARK','MANAGER',7839,to_date('9-6-1981','dd-mm-yyyy'),2450,NULL,10",
        "7788,'SCOTT','ANALYST',7566,to_date('13-JUL-87','dd-mon-rr')-85,3000,NULL,20",
        "7839,'KING','PRESIDENT',NULL,to_date('17-11-1981','dd-mm-yyyy'),5000,NULL,10",
        "7844,'TURNER','SALESMAN',7698,to_date('8-9-1981','dd-mm-yyyy'),1500,0,30",
        "7876,'ADAMS','CLERK',7788,to_date('13-JUL-87', 'dd-mon-rr')-51,1100,NULL,20",
        "7900,'JAMES','CLERK',7698,to_date('3-12-1981','dd-mm-yyyy'),950,NULL,30",
        "7902,'FORD','ANALYST',7566,to_date('3-12-1981','dd-mm-yyyy'),3000,NULL,20",
        "7934,'MILLER','CLERK',7782,to_date('23-1-1982','dd-mm-yyyy'),1300,NULL,10",
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
  // 13 July 1987 is day 194 of its year: less 85 is day 109 (19 April), less 51 day 143
  // (23 May). Dates print in the session's default format, DD-MON-RR.
  EXPECT_EQ((Rows{"19-APR-87"}), Column("select hiredate from emp where empno = 7788"));
  EXPECT_EQ((Rows{"23-05-1987"}),
            Column("select to_char(hiredate, 'DD-MM-YYYY') from emp where ename = 'ADAMS'"));
  EXPECT_EQ((Rows{"17-DEC-80"}), Column("select hiredate from emp where ename = 'SMITH'"));
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

// The queries of the classic tutorials and of host programs, on the script's data.
TEST_F(ScottTest, QueriesHostProgramsSend) {
  EXPECT_EQ((Rows{"KING|5000", "FORD|3000", "SCOTT|3000", "JONES|2975"}),
            Fetch("select ename, sal from emp where sal > 2900 order by sal desc, ename", 2));
  // A new key the way many programs take one.
  EXPECT_EQ((Rows{"7935"}), Column("select nvl(max(empno), 0) + 1 from emp"));
  EXPECT_EQ((Rows{"1"}), Column("select nvl(max(sal), 0) + 1 from bonus"));
  // Department 20: SMITH 800, JONES 2975, SCOTT 3000, ADAMS 1100, FORD 3000.
  EXPECT_EQ((Rows{"5|10875|2175"}),
            Fetch("select count(*), sum(sal), avg(sal) from emp where deptno = 20", 3));
  // Hired in 1981, in hiring order (JAMES and FORD on the same day, by name).
  EXPECT_EQ((Rows{"ALLEN", "WARD", "JONES", "BLAKE", "CLARK", "TURNER", "MARTIN", "KING",
                  "FORD", "JAMES"}),
            Column("select ename from emp where hiredate between to_date('01-01-1981', "
                   "'dd-mm-yyyy') and to_date('31-12-1981', 'dd-mm-yyyy') "
                   "order by hiredate, ename"));
  // Yearly pay in department 30, commission counted where there is one.
  EXPECT_EQ((Rows{"BLAKE|34200", "ALLEN|19500", "TURNER|18000", "MARTIN|16400", "WARD|15500"}),
            Fetch("select ename, sal * 12 + nvl(comm, 0) annual from emp where deptno = 30 "
                  "and job <> 'CLERK' order by annual desc",
                  2));
  // The salary grade of a salary, and the employees without a commission.
  EXPECT_EQ((Rows{"2"}), Column("select grade from salgrade where 1250 between losal and hisal"));
  EXPECT_EQ(10u, Column("select ename from emp where comm is null").size());
  EXPECT_EQ((Rows{"TURNER"}), Column("select ename from emp where comm = 0"));
  // The first three names in alphabetical order are not what ROWNUM before ORDER BY gives.
  EXPECT_EQ((Rows{"ALLEN", "SMITH", "WARD"}),
            Column("select ename from emp where rownum <= 3 order by ename"));
  EXPECT_EQ((Rows{"ANALYST|2", "CLERK|4", "MANAGER|3", "PRESIDENT|1", "SALESMAN|4"}),
            Fetch("select job, count(*) from emp group by job order by job", 2));
  EXPECT_EQ((Rows{"SMITH|CLERK", "SCOTT|ANALYST"}),
            Fetch("select ename, job from emp where ename like 'S%' order by empno", 2));
  EXPECT_EQ((Rows{"MILLER"}),
            Column("select ename from emp where deptno = 10 and hiredate > "
                   "add_months(to_date('17-11-1981', 'dd-mm-yyyy'), 2)"));
}

}  // namespace
}  // namespace ocimem_test
