// The in-memory OCI's SQL and DDL: each input is up to eight statements,
// cut at ";", run one after the other on a fresh in-memory database that
// holds a few tables (with rows, constraints, a sequence, a view, an object
// type, an object table with a nested table) to work on. Queries are fetched
// to their end (at most a thousand rows). The database goes with the input.
#include <oci.h>

#include <cstdint>
#include <string>

#include "fuzz_session.h"

namespace {

const char* const kSchema[] = {
    "CREATE TABLE dept (deptno NUMBER(2) PRIMARY KEY, dname VARCHAR2(14), loc VARCHAR2(13))",
    ("CREATE TABLE emp (empno NUMBER(4) PRIMARY KEY, ename VARCHAR2(10) NOT NULL, "
     "sal NUMBER(7,2) CHECK (sal > 0), hired DATE, stamp TIMESTAMP(3), "
     "deptno NUMBER(2) REFERENCES dept(deptno))"),
    "INSERT INTO dept VALUES (10, 'ACCOUNTING', 'NEW YORK')",
    "INSERT INTO dept VALUES (20, 'RESEARCH', 'DALLAS')",
    ("INSERT INTO emp VALUES (7369, 'SMITH', 800, DATE '1980-12-17', "
     "TIMESTAMP '1980-12-17 09:30:00.125', 20)"),
    "INSERT INTO emp VALUES (7499, 'ALLEN', 1600.5, DATE '1981-02-20', NULL, 10)",
    "CREATE SEQUENCE emp_seq START WITH 8000",
    "CREATE VIEW emp_v AS SELECT ename, sal FROM emp",
    "CREATE TYPE fz_nums_t AS TABLE OF NUMBER(5)",
    "CREATE TYPE fz_doc_t AS OBJECT (id NUMBER(6), title VARCHAR2(30), body CLOB, nums fz_nums_t)",
    "CREATE TABLE docs OF fz_doc_t NESTED TABLE nums STORE AS docs_nums",
    "INSERT INTO docs VALUES (fz_doc_t(1, 'one', 'text', fz_nums_t(1, 2, 3)))",
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize) {
  fuzz::Session session;
  if (!session.Open("FUZZ_SQL")) fuzz::Die("logon");
  for (const char* pszSql : kSchema) session.MustExecute(pszSql);
  const std::string text(reinterpret_cast<const char*>(pData), nSize);
  size_t nFrom = 0;
  for (int nStatement = 0; nStatement < 8 && nFrom <= text.size(); ++nStatement) {
    size_t nEnd = text.find(';', nFrom);
    if (nEnd == std::string::npos) nEnd = text.size();
    if (nEnd > nFrom) session.Execute(text.data() + nFrom, nEnd - nFrom);
    nFrom = nEnd + 1;
  }
  return 0;
}
