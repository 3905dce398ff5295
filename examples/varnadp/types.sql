-- Object types of the varnadp command's example: a customer with an address,
-- a list of phone numbers, orders with their lines, a CLOB and a BLOB.
-- Written as for SQL*Plus; `varnadp` runs it on an in-memory database.
PROMPT creating the example types

CREATE TYPE address_t AS OBJECT (
  street  VARCHAR2(60),
  city    VARCHAR2(40),
  zip     CHAR(5)
);
/
CREATE TYPE phones_t AS VARRAY(5) OF VARCHAR2(20);
/
CREATE TYPE line_t AS OBJECT (sku VARCHAR2(20), qty NUMBER(6), price NUMBER(10,2));
/
CREATE TYPE lines_t AS TABLE OF line_t;
/
CREATE TYPE order_t AS OBJECT (
  order_no  NUMBER(10),
  placed    DATE,
  shipped   TIMESTAMP(3),
  lines     lines_t
);
/
CREATE TYPE orders_t AS TABLE OF order_t;
/
/* The record type: one customer a record. */
CREATE TYPE customer_t AS OBJECT (
  id        NUMBER(12),
  name      VARCHAR2(80),
  balance   NUMBER,
  since     INTERVAL YEAR(3) TO MONTH,
  address   address_t,
  phones    phones_t,
  orders    orders_t,
  notes     CLOB,
  photo     BLOB,
  token     RAW(8)
);
/
EXIT
