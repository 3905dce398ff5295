// Attributes of object columns read through a table alias (alias.column.attribute, deeper
// paths, VALUE(alias).attribute of an object table) in the select list, WHERE, ORDER BY,
// GROUP BY, SET and RETURNING, with Oracle's results and errors.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "sql/expr_fixture.h"

namespace ocimem_test {
namespace {

class AttributePathTest : public ExprTest {
 protected:
  void SetUp() override {
    ExprTest::SetUp();
    MustExec("create type addr_t as object (street varchar2(20), zip varchar2(5))");
    MustExec("create type person_t as object (name varchar2(10), addr addr_t)");
    MustExec("create table people (id number primary key, who person_t, home addr_t, "
             "note varchar2(20))");
    MustExec("insert into people values (1, person_t('ADA', addr_t('Main', '10001')), "
             "addr_t('Elm', '20002'), null)");
    MustExec("insert into people values (2, person_t('BOB', null), null, null)");
    MustExec("insert into people values (3, null, addr_t(null, '30003'), null)");
    MustExec("create table folks of person_t");
    MustExec("insert into folks values ('CY', addr_t('Oak', '40004'))");
    MustExec("insert into folks values ('DAN', null)");
    MustExec("commit");
  }
};

TEST_F(AttributePathTest, SelectListReadsAnAttributeOfAnObjectColumn) {
  EXPECT_EQ((Rows{"1|20002", "2|<null>", "3|30003"}),
            Fetch("select p.id, p.home.zip from people p order by p.id", 2));
  EXPECT_EQ((Rows{"Elm", "<null>", "<null>"}),
            Column("select p.home.street from people p order by p.id"));
}

TEST_F(AttributePathTest, DeeperPathsGoThroughEmbeddedObjects) {
  // A NULL object anywhere along the path makes the attribute NULL: BOB's address is NULL,
  // row 3 has no person at all.
  EXPECT_EQ((Rows{"10001", "<null>", "<null>"}),
            Column("select p.who.addr.zip from people p order by p.id"));
  EXPECT_EQ((Rows{"ADA", "BOB", "<null>"}),
            Column("select p.who.name from people p order by p.id"));
}

TEST_F(AttributePathTest, PathsTakePartInExpressionsAndFunctions) {
  EXPECT_EQ((Rows{"ADA lives at 10001", "BOB lives at ", " lives at "}),
            Column("select p.who.name || ' lives at ' || p.who.addr.zip from people p "
                   "order by p.id"));
  EXPECT_EQ((Rows{"20002", "none", "30003"}),
            Column("select nvl(p.home.zip, 'none') from people p order by p.id"));
}

TEST_F(AttributePathTest, WhereTestsAttributes) {
  EXPECT_EQ((Rows{"3"}), Column("select p.id from people p where p.home.zip = '30003'"));
  EXPECT_EQ((Rows{"2", "3"}),
            Column("select p.id from people p where p.who.addr.zip is null order by p.id"));
  EXPECT_EQ((Rows{"1"}),
            Column("select p.id from people p where p.who.addr.street like 'M%'"));
}

TEST_F(AttributePathTest, OrderByAndGroupByTakeAttributes) {
  // NULL sorts as the largest value: first when descending.
  EXPECT_EQ((Rows{"2", "3", "1"}),
            Column("select p.id from people p order by p.home.zip desc"));
  EXPECT_EQ((Rows{"20002|1", "30003|1", "<null>|1"}),
            Fetch("select p.home.zip, count(*) from people p group by p.home.zip order by 1",
                  2));
  EXPECT_EQ((Rows{"ORA-00979: not a GROUP BY expression"}),
            Rows{ErrorOf("select p.home.street, count(*) from people p group by p.home.zip")});
}

TEST_F(AttributePathTest, DistinctComparesAttributeValues) {
  MustExec("insert into people values (4, null, addr_t('Pine', '30003'), null)");
  EXPECT_EQ((Rows{"20002", "30003", "<null>"}),
            Column("select distinct p.home.zip from people p order by 1"));
}

TEST_F(AttributePathTest, ObjectTablesTakeAttributesAndValuePaths) {
  EXPECT_EQ((Rows{"CY|40004", "DAN|<null>"}),
            Fetch("select f.name, f.addr.zip from folks f order by f.name", 2));
  EXPECT_EQ((Rows{"Oak", "<null>"}),
            Column("select value(f).addr.street from folks f order by f.name"));
  EXPECT_EQ((Rows{"CY", "DAN"}), Column("select value(f).name from folks f order by 1"));
  EXPECT_EQ((Rows{"DAN"}), Column("select f.name from folks f where value(f).addr is null"));
}

TEST_F(AttributePathTest, UpdateAndDeleteReadAttributes) {
  EXPECT_EQ(1u, Changed("update people p set note = p.who.addr.street || '/' || p.home.zip "
                        "where p.home.zip = '20002'"));
  EXPECT_EQ((Rows{"Main/20002"}), Column("select note from people where id = 1"));
  EXPECT_EQ(1u, Changed("delete from people p where p.home.zip = '30003'"));
  EXPECT_EQ((Rows{"1", "2"}), Column("select id from people order by id"));
}

TEST_F(AttributePathTest, ReturningGivesAnAttribute) {
  OCIStmt* stmt =
      Prepare("update people p set note = 'x' where p.id = 1 returning p.home.zip into :z");
  char zip[16] = {0};
  sb2 ind = -1;
  OCIBind* bind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByName(stmt, &bind, err_, Text(":z"), 2, zip, sizeof zip,
                                       SQLT_STR, &ind, nullptr, nullptr, 0, nullptr,
                                       OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt)) << FirstError(err_);
  EXPECT_EQ(0, ind);
  EXPECT_STREQ("20002", zip);
}

TEST_F(AttributePathTest, FetchesAnAttributeIntoANumberDefine) {
  MustExec("create type dim_t as object (w number, h number)");
  MustExec("create table boxes (id number, d dim_t)");
  MustExec("insert into boxes values (1, dim_t(3, 4))");
  OCIStmt* stmt = Prepare("select b.d.w * b.d.h from boxes b");
  int area = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &area, sizeof area, SQLT_INT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 1)) << FirstError(err_);
  EXPECT_EQ(12, area);
}

TEST_F(AttributePathTest, APathNeedsATableAlias) {
  // Oracle reads dotted names through objects only after a table alias; without one the
  // name is taken as table.column or schema.table.column, which names nothing here.
  EXPECT_EQ("ORA-00904: \"HOME\".\"ZIP\": invalid identifier",
            ErrorOf("select home.zip from people"));
  EXPECT_EQ("ORA-00904: \"PEOPLE\".\"HOME\".\"ZIP\": invalid identifier",
            ErrorOf("select people.home.zip from people"));
  EXPECT_EQ("ORA-00904: \"PEOPLE\".\"HOME\".\"ZIP\": invalid identifier",
            ErrorOf("select id from people where people.home.zip = '1'"));
}

TEST_F(AttributePathTest, UnknownAttributesAreInvalidIdentifiers) {
  EXPECT_EQ("ORA-00904: \"P\".\"HOME\".\"ZIPP\": invalid identifier",
            ErrorOf("select p.home.zipp from people p"));
  EXPECT_EQ("ORA-00904: \"P\".\"ID\".\"X\": invalid identifier",
            ErrorOf("select p.id.x from people p"));
  EXPECT_EQ("ORA-00904: \"P\".\"WHO\".\"ADDR\".\"ZIP\".\"X\": invalid identifier",
            ErrorOf("select p.who.addr.zip.x from people p"));
  EXPECT_EQ("ORA-00904: \"Q\".\"HOME\".\"ZIP\": invalid identifier",
            ErrorOf("select p.id from people p order by q.home.zip"));
}

TEST_F(AttributePathTest, AnObjectAttributeIsNoComparableValue) {
  EXPECT_EQ(932, ExecError("select p.id from people p where p.who.addr = p.home"));
}

TEST_F(AttributePathTest, ViewsShowAttributesAndPassPathsThrough) {
  MustExec("create view zips as select p.id, p.home.zip z from people p");
  MustExec("create view homes as select p.id, p.home from people p");
  MustExec("create view streets as select p.home.street from people p");
  EXPECT_EQ((Rows{"20002", "<null>", "30003"}), Column("select z from zips order by id"));
  EXPECT_EQ((Rows{"Elm", "<null>", "<null>"}), Column("select street from streets"));
  EXPECT_EQ((Rows{"1"}), Column("select h.id from homes h where h.home.zip = '20002'"));
  EXPECT_EQ((Rows{"Elm"}), Column("select h.home.street from homes h where h.id = 1"));
  EXPECT_EQ("ORA-00904: \"HOMES\".\"HOME\".\"STREET\": invalid identifier",
            ErrorOf("select homes.home.street from homes"));
  EXPECT_EQ("ORA-00904: \"H\".\"HOME\".\"NOPE\": invalid identifier",
            ErrorOf("select h.home.nope from homes h"));
  EXPECT_EQ("ORA-00904: \"V\".\"Z\".\"X\": invalid identifier",
            ErrorOf("select v.z.x from zips v"));
  // An attribute a view shows is no base column to change.
  EXPECT_EQ("ORA-01733: virtual column not allowed here", ErrorOf("update zips set z = '1'"));
}

TEST_F(AttributePathTest, SetChangesOneAttributeOfTheObject) {
  EXPECT_EQ(1u, Changed("update people p set p.home.zip = '99999' where p.id = 1"));
  EXPECT_EQ((Rows{"Elm|99999"}),
            Fetch("select p.home.street, p.home.zip from people p where p.id = 1", 2));
  EXPECT_EQ(1u, Changed("update people p set p.who.addr.street = 'Broad', "
                        "p.home.street = null where p.id = 1"));
  EXPECT_EQ((Rows{"Broad|10001|<null>|99999"}),
            Fetch("select p.who.addr.street, p.who.addr.zip, p.home.street, p.home.zip "
                  "from people p where p.id = 1",
                  4));
  MustExec("rollback");
  EXPECT_EQ((Rows{"Main|Elm|20002"}),
            Fetch("select p.who.addr.street, p.home.street, p.home.zip from people p "
                  "where p.id = 1",
                  3));
}

TEST_F(AttributePathTest, SetReadsTheRowAsItWas) {
  EXPECT_EQ(1u, Changed("update people p set p.home.zip = p.who.addr.zip, "
                        "note = p.home.zip where p.id = 1"));
  EXPECT_EQ((Rows{"10001|20002"}),
            Fetch("select p.home.zip, note from people p where p.id = 1", 2));
}

TEST_F(AttributePathTest, SetOnAnObjectTable) {
  EXPECT_EQ(1u, Changed("update folks f set f.addr.zip = '49999' where f.name = 'CY'"));
  EXPECT_EQ((Rows{"Oak|49999"}),
            Fetch("select f.addr.street, f.addr.zip from folks f where f.name = 'CY'", 2));
}

TEST_F(AttributePathTest, SetOfAnAttributeMisuses) {
  EXPECT_EQ("ORA-00904: \"PEOPLE\".\"HOME\".\"ZIP\": invalid identifier",
            ErrorOf("update people set people.home.zip = '1'"));
  EXPECT_EQ("ORA-00904: \"P\".\"HOME\".\"ZAP\": invalid identifier",
            ErrorOf("update people p set p.home.zap = '1'"));
  EXPECT_EQ("ORA-12899: value too large for column \"SCOTT\".\"PEOPLE\".\"HOME\".\"ZIP\" "
            "(actual: 6, maximum: 5)",
            ErrorOf("update people p set p.home.zip = '123456' where p.id = 1"));
  // decision TC2: no object to set an attribute of; an attribute set twice, or with its
  // whole column; DEFAULT for an attribute.
  EXPECT_EQ("ORA-06530: Reference to uninitialized composite",
            ErrorOf("update people p set p.home.zip = '1' where p.id = 2"));
  EXPECT_EQ("ORA-06530: Reference to uninitialized composite",
            ErrorOf("update people p set p.who.addr.zip = '1' where p.id = 2"));
  EXPECT_EQ("ORA-00957: duplicate column name",
            ErrorOf("update people p set p.home.zip = '1', p.home.zip = '2'"));
  EXPECT_EQ("ORA-00957: duplicate column name",
            ErrorOf("update people p set p.home = null, p.home.zip = '2'"));
  EXPECT_EQ("ORA-00957: duplicate column name",
            ErrorOf("update people p set p.home.zip = '2', p.home = null"));
  EXPECT_EQ("ORA-00936: missing expression",
            ErrorOf("update people p set p.home.zip = default"));
  // Nothing changed.
  EXPECT_EQ((Rows{"20002", "<null>", "30003"}),
            Column("select p.home.zip from people p order by p.id"));
}

TEST_F(AttributePathTest, InsertColumnListsTakeWholeColumns) {
  // decision TC2: an attribute in an INSERT column list is not taken.
  EXPECT_EQ(kBadColumnName, ErrorOf("insert into people p (p.home.zip) values ('1')"));
}

}  // namespace
}  // namespace ocimem_test
