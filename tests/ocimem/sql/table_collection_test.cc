// SELECT ... FROM TABLE(collection): the elements of a nested table or VARRAY as rows, read
// from one row's collection through a query, from each row of the table before it, or
// from a bound collection; with Oracle's results and errors.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sql/expr_fixture.h"

namespace ocimem_test {
namespace {

struct Item {
  OCIString* sku;
  OCINumber qty;
};
struct ItemInd {
  OCIInd atomic, sku, qty;
};

class TableCollectionTest : public ExprTest {
 protected:
  void SetUp() override {
    ExprTest::SetUp();
    MustExec("create type item_t as object (sku varchar2(10), qty number)");
    MustExec("create type item_list as table of item_t");
    MustExec("create type num_list as varray(5) of number");
    MustExec("create table orders (id number primary key, cust varchar2(10), items item_list, "
             "nums num_list) nested table items store as orders_items");
    MustExec("insert into orders values (1, 'ADA', item_list(item_t('A1', 2), item_t('B2', 5)), "
             "num_list(30, 10, 20))");
    MustExec("insert into orders values (2, 'BOB', item_list(item_t('C3', null)), "
             "num_list(7, null))");
    MustExec("insert into orders values (3, 'CY', null, null)");
    MustExec("insert into orders values (4, 'DAN', item_list(), num_list())");
    MustExec("commit");
  }

  // A VARRAY of numbers made on the client.
  OCIColl* NewNumList(const std::vector<int>& values) {
    void* coll = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_NAMEDCOLLECTION,
                                        TypeByName("NUM_LIST"), nullptr, OCI_DURATION_DEFAULT,
                                        TRUE, &coll));
    for (int v : values) {
      OCINumber n;
      EXPECT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &v, sizeof v, OCI_NUMBER_SIGNED, &n));
      EXPECT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &n, nullptr, static_cast<OCIColl*>(coll)))
          << FirstError(err_);
    }
    return static_cast<OCIColl*>(coll);
  }
};

TEST_F(TableCollectionTest, AQueryGivesOneRowsNestedTableOfObjects) {
  // A collection of objects gives the attributes as columns.
  EXPECT_EQ((Rows{"A1|2", "B2|5"}),
            Fetch("select * from table(select o.items from orders o where o.id = 1)", 2));
  EXPECT_EQ((Rows{"B2"}), Column("select i.sku from table(select items from orders "
                                 "where id = 1) i where i.qty > 3"));
}

TEST_F(TableCollectionTest, TheQueryMayBeParenthesizedAndReadAView) {
  EXPECT_EQ((Rows{"A1", "B2"}),
            Column("select sku from table((select items from orders where id = 1))"));
  MustExec("create view order_nums as select id, nums from orders");
  EXPECT_EQ((Rows{"7", "<null>"}),
            Column("select * from table(select v.nums from order_nums v where v.id = 2)"));
}

TEST_F(TableCollectionTest, TheQueryMayTakeBindVariables) {
  OCIStmt* stmt = Prepare("select sku from table(select items from orders where id = :1)");
  int id = 2;
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &bind, err_, 1, &id, sizeof id, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  char sku[11] = {0};
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, sku, sizeof sku, SQLT_STR, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  EXPECT_STREQ("C3", sku);
}

TEST_F(TableCollectionTest, AVarrayOfNumbersGivesColumnValueInElementOrder) {
  EXPECT_EQ((Rows{"30", "10", "20"}),
            Column("select column_value from table(select nums from orders where id = 1)"));
  EXPECT_EQ((Rows{"30", "10", "20"}),
            Column("select * from table(select nums from orders where id = 1)"));
  EXPECT_EQ((Rows{"10", "20", "30"}),
            Column("select n.column_value from table(select nums from orders where id = 1) n "
                   "order by 1"));
}

TEST_F(TableCollectionTest, NullAndEmptyCollectionsAndMissingRowsGiveNoRows) {
  EXPECT_EQ((Rows{"0"}),
            Column("select count(*) from table(select items from orders where id = 3)"));
  EXPECT_EQ((Rows{"0"}),
            Column("select count(*) from table(select items from orders where id = 4)"));
  EXPECT_EQ((Rows{"0"}),
            Column("select count(*) from table(select nums from orders where id = 99)"));
}

TEST_F(TableCollectionTest, NullElementsAndAttributesAreNull) {
  EXPECT_EQ((Rows{"7", "<null>"}),
            Column("select column_value from table(select nums from orders where id = 2)"));
  EXPECT_EQ((Rows{"C3|<null>"}),
            Fetch("select sku, qty from table(select items from orders where id = 2)", 2));
}

TEST_F(TableCollectionTest, EachRowJoinsItsOwnCollection) {
  // decision TC6: the table's rows in their order, each followed by its elements.
  EXPECT_EQ((Rows{"1|A1|2", "1|B2|5", "2|C3|<null>"}),
            Fetch("select o.id, i.sku, i.qty from orders o, table(o.items) i", 3));
  EXPECT_EQ((Rows{"ADA|A1|2", "ADA|B2|5", "BOB|C3|<null>"}),
            Fetch("select o.cust, i.* from orders o, table(o.items) i", 3));
  EXPECT_EQ((Rows{"1|30", "1|10", "1|20", "2|7", "2|<null>"}),
            Fetch("select o.id, n.column_value from orders o, table(o.nums) n", 2));
}

TEST_F(TableCollectionTest, OuterJoinKeepsRowsWithoutElements) {
  EXPECT_EQ((Rows{"1|A1", "1|B2", "2|C3", "3|<null>", "4|<null>"}),
            Fetch("select o.id, i.sku from orders o, table(o.items) (+) i", 2));
  // Without a table before it there is nothing to join to.
  EXPECT_EQ((Rows{"0"}),
            Column("select count(*) from table(select items from orders where id = 4) (+)"));
}

TEST_F(TableCollectionTest, WhereOrderByAndRownumWorkOnTheJoinedRows) {
  EXPECT_EQ((Rows{"1|20", "1|30"}),
            Fetch("select o.id, n.column_value from orders o, table(o.nums) n "
                  "where n.column_value > 15 order by 2",
                  2));
  EXPECT_EQ((Rows{"BOB|C3"}),
            Fetch("select o.cust, i.sku from orders o, table(o.items) i where o.id = 2", 2));
  EXPECT_EQ((Rows{"A1", "B2"}),
            Column("select i.sku from orders o, table(o.items) i where rownum <= 2"));
  EXPECT_EQ((Rows{"B2", "A1", "C3"}),
            Column("select i.sku from orders o, table(o.items) i order by i.qty desc nulls last"));
}

TEST_F(TableCollectionTest, AggregatesAndGroupByWorkOnTheJoinedRows) {
  EXPECT_EQ((Rows{"1|7|2", "2|<null>|1"}),
            Fetch("select o.id, sum(i.qty), count(*) from orders o, table(o.items) i "
                  "group by o.id order by o.id",
                  3));
  // COUNT leaves out the NULL element of order 2.
  EXPECT_EQ((Rows{"4|67"}),
            Fetch("select count(n.column_value), sum(n.column_value) from orders o, "
                  "table(o.nums) n",
                  2));
}

TEST_F(TableCollectionTest, DistinctWorksOnElements) {
  MustExec("insert into orders values (5, 'EVE', null, num_list(10, 10, 7))");
  EXPECT_EQ((Rows{"7", "10", "20", "30", "<null>"}),
            Column("select distinct column_value from orders o, table(o.nums) order by 1"));
}

TEST_F(TableCollectionTest, UnqualifiedColumnsResolveOnEitherSide) {
  EXPECT_EQ((Rows{"ADA|A1", "ADA|B2", "BOB|C3"}),
            Fetch("select cust, sku from orders o, table(o.items) i", 2));
}

TEST_F(TableCollectionTest, ANameOnBothSidesNeedsAQualifier) {
  MustExec("create type tag_t as object (id number, label varchar2(5))");
  MustExec("create type tag_list as varray(3) of tag_t");
  MustExec("create table posts (id number, tags tag_list)");
  MustExec("insert into posts values (1, tag_list(tag_t(10, 'x'), tag_t(20, 'y')))");
  EXPECT_EQ((Rows{"1|10", "1|20"}),
            Fetch("select p.id, t.id from posts p, table(p.tags) t", 2));
  EXPECT_EQ("ORA-00918: column ambiguously defined",
            ErrorOf("select id from posts p, table(p.tags) t"));
  EXPECT_EQ((Rows{"1|10|x", "1|20|y"}),
            Fetch("select p.id, t.* from posts p, table(p.tags) t", 3));
  EXPECT_EQ((Rows{"10", "20"}), Column("select t.id from posts, table(posts.tags) t"));
}

TEST_F(TableCollectionTest, FetchesElementsThroughIntegerDefines) {
  OCIStmt* stmt = Prepare("select column_value from table(select nums from orders where id = 1)");
  int value[3] = {0, 0, 0};
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, value, sizeof value[0], SQLT_INT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 3)) << FirstError(err_);
  EXPECT_EQ(30, value[0]);
  EXPECT_EQ(10, value[1]);
  EXPECT_EQ(20, value[2]);
}

TEST_F(TableCollectionTest, ABoundCollectionGivesItsElements) {
  OCIColl* coll = NewNumList({5, 3, 8});
  OCIStmt* stmt = Prepare("select column_value from table(:1) order by 1 desc");
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &bind, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  void* bound = coll;
  ASSERT_EQ(OCI_SUCCESS, OCIBindObject(bind, err_, TypeByName("NUM_LIST"), &bound, nullptr,
                                       nullptr, nullptr));
  int value = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &value, sizeof value, SQLT_INT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0)) << FirstError(err_);
  std::vector<int> got;
  while (OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT) == OCI_SUCCESS) {
    got.push_back(value);
  }
  EXPECT_EQ((std::vector<int>{8, 5, 3}), got);
  OCIObjectFree(env_, err_, coll, OCI_DEFAULT);
}

TEST_F(TableCollectionTest, CastOfACollectionToItsOwnTypeIsTheCollection) {
  EXPECT_EQ((Rows{"1|30", "1|10", "1|20", "2|7", "2|<null>"}),
            Fetch("select o.id, n.column_value from orders o, "
                  "table(cast(o.nums as num_list)) n",
                  2));
  OCIColl* coll = NewNumList({4, 2});
  OCIStmt* stmt = Prepare("select sum(column_value) from table(cast(:1 as num_list))");
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &bind, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  void* bound = coll;
  ASSERT_EQ(OCI_SUCCESS, OCIBindObject(bind, err_, TypeByName("NUM_LIST"), &bound, nullptr,
                                       nullptr, nullptr));
  int sum = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &sum, sizeof sum, SQLT_INT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  EXPECT_EQ(6, sum);
  OCIObjectFree(env_, err_, coll, OCI_DEFAULT);
  // decision TC1: CAST to another collection type, or to an object type.
  EXPECT_EQ("ORA-00932: inconsistent datatypes: expected SCOTT.ITEM_LIST got SCOTT.NUM_LIST",
            ErrorOf("select * from orders o, table(cast(o.nums as item_list)) n"));
  EXPECT_EQ("ORA-22905: cannot access rows from a non-nested table item",
            ErrorOf("select * from orders o, table(cast(o.nums as item_t)) n"));
}

TEST_F(TableCollectionTest, ValueOfAnElementIsTheObject) {
  EXPECT_EQ((Rows{"A1", "B2"}),
            Column("select value(i).sku from table(select items from orders where id = 1) i"));
  MustExec("insert into orders values (6, 'FAY', item_list(item_t('Q1', 4), null), null)");
  OCIStmt* stmt = Prepare("select value(i) from table(select items from orders where id = 6) i");
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  Item* item = nullptr;
  ItemInd* ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineObject(def, err_, TypeByName("ITEM_T"),
                                         reinterpret_cast<void**>(&item), nullptr,
                                         reinterpret_cast<void**>(&ind), nullptr));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  ASSERT_NE(nullptr, item);
  ASSERT_NE(nullptr, ind);
  EXPECT_EQ(OCI_IND_NOTNULL, ind->atomic);
  EXPECT_EQ("Q1", std::string(reinterpret_cast<const char*>(OCIStringPtr(env_, item->sku)),
                              OCIStringSize(env_, item->sku)));
  sb4 qty = 0;
  ASSERT_EQ(OCI_SUCCESS, OCINumberToInt(err_, &item->qty, sizeof qty, OCI_NUMBER_SIGNED, &qty));
  EXPECT_EQ(4, qty);
  // The NULL element is a NULL object.
  ASSERT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT))
      << FirstError(err_);
  EXPECT_EQ(OCI_IND_NULL, ind->atomic);
  EXPECT_EQ(OCI_NO_DATA, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  // decision TC8: joined to its table, an element has no VALUE().
  EXPECT_EQ("ORA-00904: \"I\": invalid identifier",
            ErrorOf("select value(i) from orders o, table(o.items) i"));
}

TEST_F(TableCollectionTest, AScalarBindIsNoCollection) {
  OCIStmt* stmt = Prepare("select * from table(:1)");
  int v = 1;
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &bind, err_, 1, &v, sizeof v, SQLT_INT, nullptr,
                                      nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, Execute(stmt, 0));
  EXPECT_EQ("ORA-22905: cannot access rows from a non-nested table item", FirstError(err_));
}

TEST_F(TableCollectionTest, TheQueryMustGiveOneCollection) {
  EXPECT_EQ("ORA-01427: single-row subquery returns more than one row",
            ErrorOf("select * from table(select o.items from orders o)"));
  EXPECT_EQ("ORA-22905: cannot access rows from a non-nested table item",
            ErrorOf("select * from table(select o.cust from orders o where o.id = 1)"));
  EXPECT_EQ("ORA-00913: too many values",
            ErrorOf("select * from table(select items, nums from orders where id = 1)"));
}

TEST_F(TableCollectionTest, TheCollectionMustBeACollectionColumnOfTheTableBefore) {
  EXPECT_EQ("ORA-22905: cannot access rows from a non-nested table item",
            ErrorOf("select * from orders o, table(o.cust) c"));
  EXPECT_EQ("ORA-00904: \"O\".\"ITEMS\": invalid identifier",
            ErrorOf("select * from table(o.items)"));
  EXPECT_EQ("ORA-00904: \"O\".\"NOPE\": invalid identifier",
            ErrorOf("select * from orders o, table(o.nope) i"));
  EXPECT_EQ("ORA-00904: \"I\".\"NOPE\": invalid identifier",
            ErrorOf("select i.nope from orders o, table(o.items) i"));
  EXPECT_EQ("ORA-00904: \"X\": invalid identifier",
            ErrorOf("select x.* from orders o, table(o.items) i"));
  // decision TC1: only a column, a bind variable or a query gives the collection.
  EXPECT_EQ("ORA-22905: cannot access rows from a non-nested table item",
            ErrorOf("select * from table(1)"));
}

TEST_F(TableCollectionTest, TwoTablesStillDoNotJoin) {
  EXPECT_EQ("ORA-00933: SQL command not properly ended", ErrorOf("select * from orders, emp"));
}

TEST_F(TableCollectionTest, DmlThroughTableIsRefused) {
  // decision TC3: INSERT, UPDATE and DELETE of a collection's elements through TABLE().
  EXPECT_EQ("ORA-00903: invalid table name",
            ErrorOf("insert into table(select o.items from orders o where o.id = 1) "
                    "values (item_t('Z9', 1))"));
  EXPECT_EQ("ORA-00903: invalid table name",
            ErrorOf("update table(select o.items from orders o where o.id = 1) set qty = 0"));
  EXPECT_EQ("ORA-00903: invalid table name",
            ErrorOf("delete from table(select o.items from orders o where o.id = 1)"));
}

TEST_F(TableCollectionTest, ViewsAndForUpdateDoNotTakeTable) {
  // decision TC4: a view reads one table's rows.
  EXPECT_EQ("ORA-00900: invalid SQL statement",
            ErrorOf("create view v as select i.sku from orders o, table(o.items) i"));
  // decision TC7: a view's rows are not joined to a collection.
  MustExec("create view order_items as select id, items from orders");
  EXPECT_EQ("ORA-00933: SQL command not properly ended",
            ErrorOf("select i.sku from order_items v, table(v.items) i"));
  // decision TC5: the rows of a collection are not locked.
  EXPECT_EQ("ORA-01786: FOR UPDATE of this query expression is not allowed",
            ErrorOf("select i.sku from orders o, table(o.items) i for update"));
}

}  // namespace
}  // namespace ocimem_test
