// coldefDescribe on collections: VARRAYs and nested tables of scalars, of objects and of
// collections, as attributes and as the top-level type.
#include "coldef_fixture.h"

namespace coldef_test {
namespace {

class CollectionTest : public ColdefTest {
 protected:
  void SetUp() override {
    ColdefTest::SetUp();
    MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30), ZIP NUMBER(5))");
    MustExec("CREATE TYPE PHONES_T AS VARRAY(5) OF VARCHAR2(20)");
  }
};

TEST_F(CollectionTest, TopLevelNestedTableOfNumbersIsItsItemAlone) {
  MustExec("CREATE TYPE AMOUNTS_T AS TABLE OF NUMBER(10,2)");
  MustDescribe("AMOUNTS_T");
  ExpectList(list_, {Item(SQLT_NUM, SQLT_STR, 22, 0, 10, 2)});
}

TEST_F(CollectionTest, TopLevelVarrayOfText) {
  MustDescribe("PHONES_T");
  ExpectList(list_, {Item(SQLT_CHR, SQLT_CHR, 20)});
}

TEST_F(CollectionTest, TopLevelCollectionsOfOtherScalars) {
  MustExec("CREATE TYPE DAYS_T AS TABLE OF DATE");
  MustDescribe("DAYS_T");
  ExpectList(list_, {Item(SQLT_DAT, SQLT_DAT, 7, 19)});
  MustExec("CREATE TYPE STAMPS_T AS VARRAY(2) OF TIMESTAMP(2) WITH TIME ZONE");
  MustDescribe("STAMPS_T");
  ExpectList(list_, {Item(SQLT_TIMESTAMP_TZ, SQLT_STR, 13, 22 + 1 + 64 + 1 + 16, 0, 2)});
  MustExec("CREATE TYPE BLOBS_T AS TABLE OF BLOB");
  MustDescribe("BLOBS_T");
  ExpectList(list_, {Item(SQLT_BLOB, SQLT_BLOB, 0)});
}

TEST_F(CollectionTest, TopLevelCollectionOfRefsKeepsTheRefCode) {
  MustExec("CREATE TYPE ADDR_REFS_T AS TABLE OF REF ADDR_T");
  MustDescribe("ADDR_REFS_T");
  ExpectList(list_, {Item(SQLT_REF, SQLT_REF, 0)});
}

TEST_F(CollectionTest, TopLevelNestedTableOfObjects) {
  MustExec("CREATE TYPE ADDR_LIST_T AS TABLE OF ADDR_T");
  MustDescribe("ADDR_LIST_T");
  ExpectList(list_, {
                        GroupItem(SQLT_NTY, "SCOTT.ADDR_T"),
                        Scalar("STREET", SQLT_CHR, SQLT_CHR, 30),
                        Scalar("ZIP", SQLT_NUM, SQLT_STR, 22, 0, 5, 0),
                        Close(),
                    });
}

TEST_F(CollectionTest, VarrayOfScalarsAsAnAttribute) {
  MustExec("CREATE TYPE CONTACT_T AS OBJECT (ID NUMBER, PHONES PHONES_T, NOTE VARCHAR2(5))");
  MustDescribe("CONTACT_T");
  ExpectList(list_, {
                        Scalar("ID", SQLT_NUM, SQLT_STR, 22, 0, 0, -127),
                        Group("PHONES", SQLT_NCO, "SCOTT.PHONES_T"),
                        Item(SQLT_CHR, SQLT_CHR, 20),
                        Close(),
                        Scalar("NOTE", SQLT_CHR, SQLT_CHR, 5),
                    });
}

TEST_F(CollectionTest, NestedTableOfObjectsAsAnAttribute) {
  MustExec("CREATE TYPE ADDR_LIST_T AS TABLE OF ADDR_T");
  MustExec("CREATE TYPE HOLDER_T AS OBJECT (ADDRS ADDR_LIST_T)");
  MustDescribe("HOLDER_T");
  ExpectList(list_, {
                        Group("ADDRS", SQLT_NCO, "SCOTT.ADDR_LIST_T"),
                        GroupItem(SQLT_NTY, "SCOTT.ADDR_T"),
                        Scalar("STREET", SQLT_CHR, SQLT_CHR, 30),
                        Scalar("ZIP", SQLT_NUM, SQLT_STR, 22, 0, 5, 0),
                        Close(),
                        Close(),
                    });
}

TEST_F(CollectionTest, CollectionOfCollections) {
  MustExec("CREATE TYPE PHONE_BOOK_T AS TABLE OF PHONES_T");
  MustDescribe("PHONE_BOOK_T");
  ExpectList(list_, {
                        GroupItem(SQLT_NCO, "SCOTT.PHONES_T"),
                        Item(SQLT_CHR, SQLT_CHR, 20),
                        Close(),
                    });
}

TEST_F(CollectionTest, ObjectsInCollectionsHoldingCollections) {
  MustExec("CREATE TYPE LINE_T AS OBJECT (SKU VARCHAR2(10), TAGS PHONES_T, AT ADDR_T)");
  MustExec("CREATE TYPE LINE_LIST_T AS VARRAY(100) OF LINE_T");
  MustExec("CREATE TYPE ORDER_T AS OBJECT (NO NUMBER(8), LINES LINE_LIST_T, SHIP ADDR_T)");
  MustDescribe("ORDER_T");
  ExpectList(list_, {
                        Scalar("NO", SQLT_NUM, SQLT_STR, 22, 0, 8, 0),
                        Group("LINES", SQLT_NCO, "SCOTT.LINE_LIST_T"),
                        GroupItem(SQLT_NTY, "SCOTT.LINE_T"),
                        Scalar("SKU", SQLT_CHR, SQLT_CHR, 10),
                        Group("TAGS", SQLT_NCO, "SCOTT.PHONES_T"),
                        Item(SQLT_CHR, SQLT_CHR, 20),
                        Close(),
                        Group("AT", SQLT_NTY, "SCOTT.ADDR_T"),
                        Scalar("STREET", SQLT_CHR, SQLT_CHR, 30),
                        Scalar("ZIP", SQLT_NUM, SQLT_STR, 22, 0, 5, 0),
                        Close(),
                        Close(),
                        Close(),
                        Group("SHIP", SQLT_NTY, "SCOTT.ADDR_T"),
                        Scalar("STREET", SQLT_CHR, SQLT_CHR, 30),
                        Scalar("ZIP", SQLT_NUM, SQLT_STR, 22, 0, 5, 0),
                        Close(),
                    });
}

}  // namespace
}  // namespace coldef_test
