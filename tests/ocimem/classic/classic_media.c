/* A second program in the style of Oracle's classic demos: one row with an object of
 * datetime attributes, a nested table, a VARRAY, a CLOB and a BLOB.  LOBs are written in
 * pieces through the locators an INSERT returns and read back through locators and plain
 * buffers (classic_media_lob.c); dates are worked out with the OCI datetime calls; the
 * row is changed with SQL under another NLS_DATE_FORMAT.  Every value is checked against
 * what an Oracle client gives; the first mismatch ends the program with its name.  Built
 * as C90 and, through classic_media_cxx.cc and classic_media_lob_cxx.cc, as C++; both are
 * run by ctest. */
#ifndef CLASSIC_MEDIA_ORACLE
#include "classic_media.h"
#endif

#include <stdio.h>
#include <string.h>

OCIEnv *envhp;
OCIError *errhp;
OCISvcCtx *svchp;
OCIStmt *stmthp;
OCIType *shot_tdo, *tags_tdo, *scores_tdo;
static OCIServer *srvhp;
static OCISession *authp;
static int checks;

int checkerr(sword status, CONST char *what) {
  text errbuf[512];
  sb4 errcode = 0;
  if (status == OCI_SUCCESS) return 0;
  errbuf[0] = '\0';
  (void) OCIErrorGet((dvoid *) errhp, (ub4) 1, (text *) NULL, &errcode, errbuf,
                     (ub4) sizeof(errbuf), (ub4) OCI_HTYPE_ERROR);
  printf("%s: status %d: %s\n", what, (int) status, (char *) errbuf);
  return 1;
}

/* Counts a check; prints the name of a failed one and answers 1. */
int expect(int ok, CONST char *what) {
  ++checks;
  if (!ok) printf("mismatch: %s\n", what);
  return !ok;
}

int expect_text(CONST char *what, CONST text *have, size_t len, CONST char *want) {
  if (len == strlen(want) && memcmp((CONST char *) have, want, len) == 0)
    return expect(1, what);
  printf("%s: got \"%.*s\", want \"%s\"\n", what, (int) len, (CONST char *) have, want);
  return expect(0, what);
}

int alloc_desc(dvoid **descpp, ub4 type, CONST char *what) {
  return checkerr(OCIDescriptorAlloc((dvoid *) envhp, descpp, type, (size_t) 0, (dvoid **) 0),
                  what);
}

static int free_object(dvoid *instance, CONST char *what) {
  return checkerr(OCIObjectFree(envhp, errhp, instance, (ub2) OCI_OBJECTFREE_FORCE), what);
}

int define_pos(OCIDefine **def, ub4 pos, dvoid *value, sb4 size, ub2 type, sb2 *ind,
               ub2 *rlen, ub2 *rcode) {
  return checkerr(OCIDefineByPos(stmthp, def, errhp, pos, value, size, type, (dvoid *) ind, rlen,
                                 rcode, (ub4) OCI_DEFAULT), "OCIDefineByPos");
}

int prepare(CONST char *sql) {
  return checkerr(OCIStmtPrepare(stmthp, errhp, (text *) sql, (ub4) strlen(sql),
                                 (ub4) OCI_NTV_SYNTAX, (ub4) OCI_DEFAULT), sql);
}

int execute(ub4 iters, CONST char *what) {
  return checkerr(OCIStmtExecute(svchp, stmthp, errhp, iters, (ub4) 0,
                                 (CONST OCISnapshot *) NULL, (OCISnapshot *) NULL,
                                 (ub4) OCI_DEFAULT), what);
}

static int run_sql(CONST char *sql) { return prepare(sql) || execute((ub4) 1, sql); }

static int logon(void) {
  text *username = (text *) "scott";
  text *password = (text *) "tiger";
  text *dbname = (text *) "classic_media";

  if (checkerr(OCIEnvCreate(&envhp, (ub4) OCI_OBJECT, (dvoid *) 0,
                            (dvoid * (*)(dvoid *, size_t)) 0,
                            (dvoid * (*)(dvoid *, dvoid *, size_t)) 0,
                            (void (*)(dvoid *, dvoid *)) 0, (size_t) 0, (dvoid **) 0),
               "OCIEnvCreate"))
    return 1;
  (void) OCIHandleAlloc((dvoid *) envhp, (dvoid **) &errhp, (ub4) OCI_HTYPE_ERROR,
                        (size_t) 0, (dvoid **) 0);
  (void) OCIHandleAlloc((dvoid *) envhp, (dvoid **) &srvhp, (ub4) OCI_HTYPE_SERVER,
                        (size_t) 0, (dvoid **) 0);
  (void) OCIHandleAlloc((dvoid *) envhp, (dvoid **) &svchp, (ub4) OCI_HTYPE_SVCCTX,
                        (size_t) 0, (dvoid **) 0);
  (void) OCIHandleAlloc((dvoid *) envhp, (dvoid **) &authp, (ub4) OCI_HTYPE_SESSION,
                        (size_t) 0, (dvoid **) 0);
  (void) OCIHandleAlloc((dvoid *) envhp, (dvoid **) &stmthp, (ub4) OCI_HTYPE_STMT,
                        (size_t) 0, (dvoid **) 0);
  return checkerr(OCIServerAttach(srvhp, errhp, (text *) dbname,
                                  (sb4) strlen((char *) dbname), (ub4) OCI_DEFAULT),
                  "OCIServerAttach") ||
         checkerr(OCIAttrSet((dvoid *) svchp, (ub4) OCI_HTYPE_SVCCTX, (dvoid *) srvhp,
                             (ub4) 0, (ub4) OCI_ATTR_SERVER, errhp), "server") ||
         checkerr(OCIAttrSet((dvoid *) authp, (ub4) OCI_HTYPE_SESSION, (dvoid *) username,
                             (ub4) strlen((char *) username), (ub4) OCI_ATTR_USERNAME,
                             errhp), "username") ||
         checkerr(OCIAttrSet((dvoid *) authp, (ub4) OCI_HTYPE_SESSION, (dvoid *) password,
                             (ub4) strlen((char *) password), (ub4) OCI_ATTR_PASSWORD,
                             errhp), "password") ||
         checkerr(OCISessionBegin(svchp, errhp, authp, (ub4) OCI_CRED_RDBMS,
                                  (ub4) OCI_DEFAULT), "OCISessionBegin") ||
         checkerr(OCIAttrSet((dvoid *) svchp, (ub4) OCI_HTYPE_SVCCTX, (dvoid *) authp,
                             (ub4) 0, (ub4) OCI_ATTR_SESSION, errhp), "session");
}

static int type_by_name(CONST char *name, OCIType **tdo) {
  return checkerr(OCITypeByName(envhp, errhp, svchp, (CONST text *) 0, (ub4) 0,
                                (CONST text *) name, (ub4) strlen(name), (CONST text *) 0,
                                (ub4) 0, OCI_DURATION_SESSION, OCI_TYPEGET_HEADER, tdo), name);
}

static int create_schema(void) {
  return run_sql("CREATE TYPE shot_t AS OBJECT (taken DATE, "
                 "stamped TIMESTAMP(3) WITH TIME ZONE, exposure INTERVAL DAY(2) TO SECOND(3))") ||
         run_sql("CREATE TYPE tag_list AS TABLE OF VARCHAR2(20)") ||
         run_sql("CREATE TYPE score_list AS VARRAY(5) OF NUMBER(3)") ||
         run_sql("CREATE TABLE media (id NUMBER(6) PRIMARY KEY, made DATE, shot shot_t, "
                 "tags tag_list, scores score_list, doc CLOB, img BLOB) "
                 "NESTED TABLE tags STORE AS media_tags") ||
         type_by_name("SHOT_T", &shot_tdo) || type_by_name("TAG_LIST", &tags_tdo) ||
         type_by_name("SCORE_LIST", &scores_tdo);
}

/* The texts a client prints for a timestamp, a date and an interval. */
static int expect_timestamp(CONST char *what, OCIDateTime *dt, CONST char *fmt,
                            CONST char *want) {
  text buf[80];
  ub4 len = (ub4) sizeof(buf);
  return checkerr(OCIDateTimeToText((dvoid *) envhp, errhp, dt, (CONST text *) fmt,
                                    (ub1) strlen(fmt), (ub1) 3, (CONST text *) 0, (size_t) 0,
                                    &len, buf), what) ||
         expect_text(what, buf, (size_t) len, want);
}

static int expect_date(CONST char *what, CONST OCIDate *date, CONST char *want) {
  text buf[40];
  ub4 len = (ub4) sizeof(buf);
  CONST char *fmt = "DD-MON-YYYY HH24:MI:SS";
  return checkerr(OCIDateToText(errhp, date, (CONST text *) fmt, (ub1) strlen(fmt),
                                (CONST text *) 0, (ub4) 0, &len, buf), what) ||
         expect_text(what, buf, (size_t) len, want);
}

static int expect_interval(CONST char *what, OCIInterval *iv, CONST char *want) {
  text buf[40];
  size_t len = 0;
  return checkerr(OCIIntervalToText((dvoid *) envhp, errhp, iv, (ub1) 2, (ub1) 3, buf,
                                    sizeof(buf), &len), what) ||
         expect_text(what, buf, len, want);
}

/* Fills the shot from text and works out dates around it: a shot taken at 31 January
 * 2024 14:05:09.250 five hours west of UTC, exposed for 1.875 seconds, and a second
 * instant built field by field on leap day at +05:30. */
static int work_out_dates(struct shot *shot, struct shot_ind *ind, OCIDate *made) {
  OCIDateTime *start = (OCIDateTime *) 0, *end = (OCIDateTime *) 0;
  OCIInterval *gap = (OCIInterval *) 0;
  sb4 days = 0;
  CONST char *taken = "2024-01-31 14:05:09";
  CONST char *taken_fmt = "YYYY-MM-DD HH24:MI:SS";
  CONST char *stamped = "31-JAN-2024 14:05:09.250 -05:00";
  CONST char *stamped_fmt = "DD-MON-YYYY HH24:MI:SS.FF TZR";
  CONST char *exposure = "0 00:00:01.875";
  int bad;

  if (alloc_desc((dvoid **) &start, (ub4) OCI_DTYPE_TIMESTAMP_TZ, "start") ||
      alloc_desc((dvoid **) &end, (ub4) OCI_DTYPE_TIMESTAMP_TZ, "end") ||
      alloc_desc((dvoid **) &gap, (ub4) OCI_DTYPE_INTERVAL_DS, "gap"))
    return 1;
  bad = checkerr(OCIDateFromText(errhp, (CONST text *) taken, (ub4) strlen(taken),
                                 (CONST text *) taken_fmt, (ub1) strlen(taken_fmt),
                                 (CONST text *) 0, (ub4) 0, &shot->taken), "OCIDateFromText") ||
        checkerr(OCIDateTimeFromText((dvoid *) envhp, errhp, (CONST text *) stamped,
                                     strlen(stamped), (CONST text *) stamped_fmt,
                                     (ub1) strlen(stamped_fmt), (CONST text *) 0, (size_t) 0,
                                     shot->stamped), "OCIDateTimeFromText") ||
        checkerr(OCIIntervalFromText((dvoid *) envhp, errhp, (CONST text *) exposure,
                                     strlen(exposure), shot->exposure), "OCIIntervalFromText") ||
        checkerr(OCIDateTimeConstruct((dvoid *) envhp, errhp, start, (sb2) 2024, (ub1) 2,
                                      (ub1) 29, (ub1) 23, (ub1) 59, (ub1) 58, (ub4) 125000000,
                                      (text *) "+05:30", (size_t) 6), "OCIDateTimeConstruct") ||
        checkerr(OCIDateTimeIntervalAdd((dvoid *) envhp, errhp, start, shot->exposure, end),
                 "OCIDateTimeIntervalAdd") ||
        expect_timestamp("stamped as text", shot->stamped, "DD-MON-YYYY HH24:MI:SS.FF3 TZR",
                         "31-JAN-2024 14:05:09.250 -05:00") ||
        expect_timestamp("start plus exposure", end, "DD-MON-YYYY HH24:MI:SS.FF3 TZR",
                         "01-MAR-2024 00:00:00.000 +05:30") ||
        /* Names are padded to nine characters; TH follows the case of DD, not its own. */
        expect_timestamp("long date", end, "Day, DDth Month YYYY",
                         "Friday   , 01ST March     2024") ||
        expect_timestamp("long date in fill mode", end, "fmDay, Ddth Month YYYY",
                         "Friday, 1st March 2024") ||
        checkerr(OCIDateTimeSubtract((dvoid *) envhp, errhp, end, shot->stamped, gap),
                 "OCIDateTimeSubtract") ||
        expect_interval("end minus stamped", gap, "+28 23:24:50.750") ||
        expect_interval("exposure", shot->exposure, "+00 00:00:01.875") ||
        checkerr(OCIDateAddMonths(errhp, &shot->taken, (sb4) 1, made), "OCIDateAddMonths") ||
        expect_date("a month after the last of January", made, "29-FEB-2024 14:05:09") ||
        checkerr(OCIDateDaysBetween(errhp, made, &shot->taken, &days), "OCIDateDaysBetween") ||
        expect(days == 29, "days between");
  ind->_atomic = ind->taken = ind->stamped = ind->exposure = OCI_IND_NOTNULL;
  (void) OCIDescriptorFree((dvoid *) start, (ub4) OCI_DTYPE_TIMESTAMP_TZ);
  (void) OCIDescriptorFree((dvoid *) end, (ub4) OCI_DTYPE_TIMESTAMP_TZ);
  (void) OCIDescriptorFree((dvoid *) gap, (ub4) OCI_DTYPE_INTERVAL_DS);
  return bad;
}

/* Walks a collection with an iterator, comparing each element with the next wanted one. */
static int walk(CONST char *what, OCIColl *coll, int strings, CONST char *CONST *want_text,
                CONST sword *want_num, int count) {
  OCIIter *itr = (OCIIter *) 0;
  dvoid *elem = (dvoid *) 0, *elemind = (dvoid *) 0;
  boolean eoc = FALSE;
  sword num = 0;
  int seen = 0;

  if (checkerr(OCIIterCreate(envhp, errhp, coll, &itr), "OCIIterCreate")) return 1;
  while (!checkerr(OCIIterNext(envhp, errhp, itr, &elem, &elemind, &eoc), "OCIIterNext")) {
    if (eoc) return expect(seen == count, what) ||
                    checkerr(OCIIterDelete(envhp, errhp, &itr), "OCIIterDelete");
    if (seen == count) return expect(0, what);
    if (strings) {
      OCIString *s = *(OCIString **) elem;
      if (expect_text(what, OCIStringPtr(envhp, s), (size_t) OCIStringSize(envhp, s),
                      want_text[seen]))
        return 1;
    } else if (checkerr(OCINumberToInt(errhp, (CONST OCINumber *) elem, (uword) sizeof(num),
                                       OCI_NUMBER_SIGNED, (dvoid *) &num), what) ||
               expect(num == want_num[seen], what)) {
      return 1;
    }
    if (expect(*(OCIInd *) elemind == OCI_IND_NOTNULL, what)) return 1;
    ++seen;
  }
  return 1;
}

static CONST char *CONST all_tags[] = {"sunset", "blurred", "beach", "family"};
static CONST char *CONST kept_tags[] = {"sunset", "beach", "family"};
static CONST sword all_scores[] = {7, 9, 8};

/* Builds the tags (deleting the blurred one) and the scores, and checks the hole. */
static int build_collections(OCITable **tags, OCIArray **scores) {
  OCIString *str = (OCIString *) 0;
  OCINumber num;
  OCIInd ind = OCI_IND_NOTNULL;
  sb4 size = 0, index = -1;
  boolean exists = FALSE;
  int i;

  if (checkerr(OCIObjectNew(envhp, errhp, svchp, OCI_TYPECODE_TABLE, tags_tdo, (dvoid *) 0,
                            OCI_DURATION_DEFAULT, TRUE, (dvoid **) tags), "new tags") ||
      checkerr(OCIObjectNew(envhp, errhp, svchp, OCI_TYPECODE_VARRAY, scores_tdo,
                            (dvoid *) 0, OCI_DURATION_DEFAULT, TRUE, (dvoid **) scores),
               "new scores"))
    return 1;
  for (i = 0; i < 4; ++i) {
    if (checkerr(OCIStringAssignText(envhp, errhp, (CONST text *) all_tags[i],
                                     (ub4) strlen(all_tags[i]), &str), "OCIStringAssignText") ||
        checkerr(OCICollAppend(envhp, errhp, (CONST dvoid *) str, (CONST dvoid *) &ind,
                               (OCIColl *) *tags), "append tag"))
      return 1;
  }
  for (i = 0; i < 3; ++i) {
    if (checkerr(OCINumberFromInt(errhp, (CONST dvoid *) &all_scores[i], (uword) sizeof(sword),
                                  OCI_NUMBER_SIGNED, &num), "OCINumberFromInt") ||
        checkerr(OCICollAppend(envhp, errhp, (CONST dvoid *) &num, (CONST dvoid *) &ind,
                               (OCIColl *) *scores), "append score"))
      return 1;
  }
  if (checkerr(OCITableDelete(envhp, errhp, (sb4) 1, *tags), "OCITableDelete") ||
      checkerr(OCICollSize(envhp, errhp, (CONST OCIColl *) *tags, &size), "OCICollSize") ||
      expect(size == 4, "tags counted with their hole") ||
      checkerr(OCITableSize(envhp, errhp, *tags, &size), "OCITableSize") ||
      expect(size == 3, "tags counted without their hole") ||
      checkerr(OCITableFirst(envhp, errhp, *tags, &index), "OCITableFirst") ||
      expect(index == 0, "first tag") ||
      checkerr(OCITableNext(envhp, errhp, index, *tags, &index, &exists), "OCITableNext") ||
      expect(exists && index == 2, "tag after the hole") ||
      checkerr(OCITableNext(envhp, errhp, index, *tags, &index, &exists), "OCITableNext") ||
      expect(exists && index == 3, "last tag") ||
      checkerr(OCITableNext(envhp, errhp, index, *tags, &index, &exists), "OCITableNext") ||
      expect(!exists, "no tag after the last") ||
      walk("bound tags", (OCIColl *) *tags, 1, kept_tags, (CONST sword *) 0, 3) ||
      walk("bound scores", (OCIColl *) *scores, 0, (CONST char *CONST *) 0, all_scores, 3))
    return 1;
  return checkerr(OCIStringResize(envhp, errhp, (ub4) 0, &str), "free string");
}

static int define_object(ub4 pos, OCIDefine **def, OCIType *tdo, dvoid **value, dvoid **ind) {
  return define_pos(def, pos, (dvoid *) 0, (sb4) 0, SQLT_NTY, (sb2 *) 0, (ub2 *) 0,
                    (ub2 *) 0) ||
         checkerr(OCIDefineObject(*def, errhp, tdo, value, (ub4 *) 0, ind, (ub4 *) 0),
                  "OCIDefineObject");
}

/* Selects the object and the collections back into new instances and checks them. */
static int select_objects(void) {
  struct shot *shot = (struct shot *) 0;
  struct shot_ind *shot_ind = (struct shot_ind *) 0;
  OCITable *tags = (OCITable *) 0;
  OCIArray *scores = (OCIArray *) 0;
  dvoid *tags_ind = (dvoid *) 0, *scores_ind = (dvoid *) 0;
  OCIDefine *d_shot = (OCIDefine *) 0, *d_tags = (OCIDefine *) 0, *d_scores = (OCIDefine *) 0;
  sb4 coll_size = 0, table_size = 0;
  CONST char *sql = "SELECT shot, tags, scores FROM media WHERE id = 1";

  if (prepare(sql) ||
      define_object((ub4) 1, &d_shot, shot_tdo, (dvoid **) &shot, (dvoid **) &shot_ind) ||
      define_object((ub4) 2, &d_tags, tags_tdo, (dvoid **) &tags, &tags_ind) ||
      define_object((ub4) 3, &d_scores, scores_tdo, (dvoid **) &scores, &scores_ind) ||
      execute((ub4) 1, sql))
    return 1;
  return expect(shot_ind->_atomic == OCI_IND_NOTNULL && shot_ind->taken == OCI_IND_NOTNULL &&
                shot_ind->stamped == OCI_IND_NOTNULL && shot_ind->exposure == OCI_IND_NOTNULL,
                "shot indicators") ||
         expect_date("shot taken", &shot->taken, "31-JAN-2024 14:05:09") ||
         expect_timestamp("shot stamped", shot->stamped, "DD-MON-YYYY HH24:MI:SS.FF3 TZR",
                          "31-JAN-2024 14:05:09.250 -05:00") ||
         expect_interval("shot exposure", shot->exposure, "+00 00:00:01.875") ||
         /* decision NT7: a stored nested table comes back without its hole */
         checkerr(OCICollSize(envhp, errhp, (CONST OCIColl *) tags, &coll_size), "size") ||
         checkerr(OCITableSize(envhp, errhp, tags, &table_size), "table size") ||
         expect(coll_size == 3 && table_size == 3, "stored tags counted") ||
         walk("stored tags", (OCIColl *) tags, 1, kept_tags, (CONST sword *) 0, 3) ||
         walk("stored scores", (OCIColl *) scores, 0, (CONST char *CONST *) 0, all_scores, 3) ||
         free_object((dvoid *) shot, "free shot") || free_object((dvoid *) tags, "free tags") ||
         free_object((dvoid *) scores, "free scores");
}

/* Runs a query for the row's DATE column as text and checks it. */
static int expect_made(CONST char *sql, CONST char *want) {
  OCIDefine *def = (OCIDefine *) 0;
  text made[32];

  return prepare(sql) ||
         define_pos(&def, (ub4) 1, (dvoid *) made, (sb4) sizeof(made), SQLT_STR, (sb2 *) 0,
                    (ub2 *) 0, (ub2 *) 0) ||
         execute((ub4) 1, sql) ||
         expect_text(sql, made, strlen((char *) made), want);
}

/* Shows the date under the session's formats, changes it with SQL and finds it by it. */
static int change_with_sql(void) {
  ub4 rows = 0;
  CONST char *by_id = "SELECT made FROM media WHERE id = 1";

  return expect_made(by_id, "29-FEB-24") ||
         run_sql("ALTER SESSION SET NLS_DATE_FORMAT = 'YYYY-MM-DD HH24:MI:SS'") ||
         expect_made(by_id, "2024-02-29 14:05:09") ||
         run_sql("UPDATE media SET made = '2024-03-01 00:00:00' WHERE id = 1") ||
         checkerr(OCIAttrGet((CONST dvoid *) stmthp, (ub4) OCI_HTYPE_STMT, (dvoid *) &rows,
                             (ub4 *) 0, (ub4) OCI_ATTR_ROW_COUNT, errhp), "row count") ||
         expect(rows == 1, "rows updated") ||
         run_sql("COMMIT") ||
         expect_made("SELECT made FROM media WHERE made = '2024-03-01 00:00:00'",
                     "2024-03-01 00:00:00");
}

int main(void) {
  struct shot *shot = (struct shot *) 0;
  struct shot_ind *shot_ind = (struct shot_ind *) 0;
  OCITable *tags = (OCITable *) 0;
  OCIArray *scores = (OCIArray *) 0;
  OCIDate made;

  if (logon() || create_schema() ||
      checkerr(OCIObjectNew(envhp, errhp, svchp, OCI_TYPECODE_OBJECT, shot_tdo, (dvoid *) 0,
                            OCI_DURATION_DEFAULT, TRUE, (dvoid **) &shot), "new shot") ||
      checkerr(OCIObjectGetInd(envhp, errhp, (dvoid *) shot, (dvoid **) &shot_ind),
               "OCIObjectGetInd") ||
      work_out_dates(shot, shot_ind, &made) || build_collections(&tags, &scores) ||
      insert_row(shot, shot_ind, &made, tags, scores) || write_lobs() ||
      read_back_lobs() || select_objects() || change_with_sql())
    return 1;
  if (free_object((dvoid *) shot, "free bound shot") ||
      free_object((dvoid *) tags, "free bound tags") ||
      free_object((dvoid *) scores, "free bound scores") ||
      checkerr(OCIDescriptorFree((dvoid *) clob, (ub4) OCI_DTYPE_LOB), "free clob") ||
      checkerr(OCIDescriptorFree((dvoid *) blob, (ub4) OCI_DTYPE_LOB), "free blob") ||
      checkerr(OCIHandleFree((dvoid *) stmthp, (ub4) OCI_HTYPE_STMT), "free statement") ||
      checkerr(OCISessionEnd(svchp, errhp, authp, (ub4) OCI_DEFAULT), "OCISessionEnd") ||
      checkerr(OCIServerDetach(srvhp, errhp, (ub4) OCI_DEFAULT), "OCIServerDetach") ||
      checkerr(OCIHandleFree((dvoid *) authp, (ub4) OCI_HTYPE_SESSION), "free session") ||
      checkerr(OCIHandleFree((dvoid *) svchp, (ub4) OCI_HTYPE_SVCCTX), "free service") ||
      checkerr(OCIHandleFree((dvoid *) srvhp, (ub4) OCI_HTYPE_SERVER), "free server"))
    return 1;
  /* Freed last, with no error handle left to report on. */
  if (OCIHandleFree((dvoid *) errhp, (ub4) OCI_HTYPE_ERROR) != OCI_SUCCESS ||
      OCIHandleFree((dvoid *) envhp, (ub4) OCI_HTYPE_ENV) != OCI_SUCCESS)
    return expect(0, "handles freed");
  printf("classic media ok: %d checks of LOBs, datetimes, collections and SQL\n", checks);
  return 0;
}
