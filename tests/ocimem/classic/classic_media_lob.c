/* The row of the classic media program and its LOBs: inserted with EMPTY_CLOB() and
 * EMPTY_BLOB(), the locators taken back through RETURNING ... INTO with OCIBindDynamic,
 * written in pieces, appended to, erased and trimmed, then read back through locators
 * (with a callback and by polling) and through plain buffers. */
#ifndef CLASSIC_MEDIA_ORACLE
#include "classic_media.h"
#endif

#include <stdio.h>
#include <string.h>

#define LINE_LEN   30                       /* "Line 0001 of the media notes.\n" */
#define NOTES_LEN  (300 * LINE_LEN)         /* written in pieces */
#define NOTES_PIECE 4000
#define TAIL       "[end of notes]\n"       /* appended */
#define TAIL_LEN   15
#define CLOB_LEN   (NOTES_LEN + TAIL_LEN)
#define ERASE_AT   32                       /* "ine 0002 o" in the second line */
#define ERASE_LEN  10
#define IMG_LEN    4096                     /* written in one piece */
#define IMG_MORE   1024                     /* appended */
#define BLOB_LEN   4500                     /* trimmed to */

/* Where the out-bind callback puts a returned locator. */
struct lob_out { OCILobLocator **locpp; ub4 alen; sb2 ind; ub2 rcode; ub4 rows; };

/* What the read callback gathers. */
struct lob_sink { ub1 *buf; ub4 size; ub4 used; ub4 pieces; ub1 first; ub1 last; };

OCILobLocator *clob, *blob;
static text clob_want[CLOB_LEN + LINE_LEN];
static ub1 blob_want[IMG_LEN + IMG_MORE];
static ub1 got[CLOB_LEN + 64];

/* RETURNING binds take no value in and hand each returned locator out through here. */
static sb4 no_data(dvoid *ctxp, OCIBind *bindp, ub4 iter, ub4 index, dvoid **bufpp,
                   ub4 *alenp, ub1 *piecep, dvoid **indpp) {
  static sb2 null_ind = -1;
  (void) ctxp; (void) bindp; (void) iter; (void) index;
  *bufpp = (dvoid *) 0;
  *alenp = 0;
  *indpp = (dvoid *) &null_ind;
  *piecep = OCI_ONE_PIECE;
  return OCI_CONTINUE;
}

static sb4 take_locator(dvoid *ctxp, OCIBind *bindp, ub4 iter, ub4 index, dvoid **bufpp,
                        ub4 **alenp, ub1 *piecep, dvoid **indpp, ub2 **rcodepp) {
  struct lob_out *out = (struct lob_out *) ctxp;
  (void) iter;
  if (index == 0 &&
      OCIAttrGet((CONST dvoid *) bindp, (ub4) OCI_HTYPE_BIND, (dvoid *) &out->rows, (ub4 *) 0,
                 (ub4) OCI_ATTR_ROWS_RETURNED, errhp) != OCI_SUCCESS)
    return OCI_ERROR;
  out->alen = (ub4) sizeof(OCILobLocator *);
  *bufpp = (dvoid *) out->locpp;
  *alenp = &out->alen;
  *indpp = (dvoid *) &out->ind;
  *rcodepp = &out->rcode;
  *piecep = OCI_ONE_PIECE;
  return OCI_CONTINUE;
}

static int bind_name(OCIBind **bnd, CONST char *name, dvoid *value, sb4 size, ub2 type,
                     ub4 mode) {
  return checkerr(OCIBindByName(stmthp, bnd, errhp, (CONST text *) name, (sb4) strlen(name),
                                value, size, type, (dvoid *) 0, (ub2 *) 0, (ub2 *) 0, (ub4) 0,
                                (ub4 *) 0, mode), name);
}

static int bind_object(OCIBind **bnd, CONST char *name, OCIType *tdo, dvoid **value,
                       dvoid **ind) {
  return bind_name(bnd, name, (dvoid *) 0, (sb4) 0, SQLT_NTY, OCI_DEFAULT) ||
         checkerr(OCIBindObject(*bnd, errhp, tdo, value, (ub4 *) 0, ind, (ub4 *) 0), name);
}

/* Inserts the row with empty LOBs and takes their locators back. */
int insert_row(struct shot *shot, struct shot_ind *shot_ind, OCIDate *made, OCITable *tags,
               OCIArray *scores) {
  OCIBind *b_id = (OCIBind *) 0, *b_made = (OCIBind *) 0, *b_shot = (OCIBind *) 0;
  OCIBind *b_tags = (OCIBind *) 0, *b_scores = (OCIBind *) 0;
  OCIBind *b_doc = (OCIBind *) 0, *b_img = (OCIBind *) 0;
  struct lob_out doc_out = {&clob, 0, 0, 0, 0}, img_out = {&blob, 0, 0, 0, 0};
  sb4 id = 1;
  CONST char *sql = "INSERT INTO media (id, made, shot, tags, scores, doc, img) "
                    "VALUES (:id, :made, :shot, :tags, :scores, EMPTY_CLOB(), EMPTY_BLOB()) "
                    "RETURNING doc, img INTO :doc, :img";

  if (alloc_desc((dvoid **) &clob, (ub4) OCI_DTYPE_LOB, "clob locator") ||
      alloc_desc((dvoid **) &blob, (ub4) OCI_DTYPE_LOB, "blob locator") ||
      prepare(sql) ||
      bind_name(&b_id, ":id", (dvoid *) &id, (sb4) sizeof(id), SQLT_INT, OCI_DEFAULT) ||
      bind_name(&b_made, ":made", (dvoid *) made, (sb4) sizeof(OCIDate), SQLT_ODT,
                OCI_DEFAULT) ||
      bind_object(&b_shot, ":shot", shot_tdo, (dvoid **) &shot, (dvoid **) &shot_ind) ||
      bind_object(&b_tags, ":tags", tags_tdo, (dvoid **) &tags, (dvoid **) 0) ||
      bind_object(&b_scores, ":scores", scores_tdo, (dvoid **) &scores, (dvoid **) 0) ||
      bind_name(&b_doc, ":doc", (dvoid *) 0, (sb4) sizeof(OCILobLocator *), SQLT_CLOB,
                OCI_DATA_AT_EXEC) ||
      checkerr(OCIBindDynamic(b_doc, errhp, (dvoid *) 0, no_data, (dvoid *) &doc_out,
                              take_locator), "OCIBindDynamic doc") ||
      bind_name(&b_img, ":img", (dvoid *) 0, (sb4) sizeof(OCILobLocator *), SQLT_BLOB,
                OCI_DATA_AT_EXEC) ||
      checkerr(OCIBindDynamic(b_img, errhp, (dvoid *) 0, no_data, (dvoid *) &img_out,
                              take_locator), "OCIBindDynamic img") ||
      execute((ub4) 1, sql))
    return 1;
  return expect(doc_out.rows == 1 && doc_out.ind == 0, "doc locator returned") ||
         expect(img_out.rows == 1 && img_out.ind == 0, "img locator returned");
}

static int expect_length(CONST char *what, OCILobLocator *loc, ub4 want) {
  ub4 len = 0;
  return checkerr(OCILobGetLength(svchp, errhp, loc, &len), what) ||
         expect(len == want, what);
}

/* The notes in pieces (polling), a tail appended, ten characters erased; the image in
 * one piece inside OCILobOpen/OCILobClose, more appended, then trimmed. */
int write_lobs(void) {
  ub4 off, len, amt = NOTES_LEN, erased = ERASE_LEN;
  ub1 piece;
  sword status;
  int i;

  for (i = 0; i < 300; ++i) sprintf((char *) clob_want + i * LINE_LEN,
                                    "Line %04d of the media notes.\n", i + 1);
  memcpy(clob_want + NOTES_LEN, TAIL, (size_t) TAIL_LEN);
  for (i = 0; i < IMG_LEN + IMG_MORE; ++i) blob_want[i] = (ub1) ((i * 37 + 11) & 0xff);
  for (off = 0; off < NOTES_LEN; off += len) {
    len = NOTES_LEN - off > NOTES_PIECE ? NOTES_PIECE : NOTES_LEN - off;
    piece = (ub1) (off == 0 ? OCI_FIRST_PIECE
                            : off + len == NOTES_LEN ? OCI_LAST_PIECE : OCI_NEXT_PIECE);
    status = OCILobWrite(svchp, errhp, clob, &amt, (ub4) 1, (dvoid *) (clob_want + off), len,
                         piece, (dvoid *) 0, (OCICallbackLobWrite) 0, (ub2) 0,
                         (ub1) SQLCS_IMPLICIT);
    if (status != OCI_NEED_DATA && checkerr(status, "OCILobWrite piece")) return 1;
    if (expect(status == (piece == OCI_LAST_PIECE ? OCI_SUCCESS : OCI_NEED_DATA),
               "status of a written piece"))
      return 1;
  }
  if (expect(amt == NOTES_LEN, "amount of the piecewise write") ||
      expect_length("notes written", clob, (ub4) NOTES_LEN))
    return 1;
  amt = TAIL_LEN;
  if (checkerr(OCILobWriteAppend(svchp, errhp, clob, &amt, (dvoid *) TAIL, (ub4) TAIL_LEN,
                                 OCI_ONE_PIECE, (dvoid *) 0, (OCICallbackLobWrite) 0, (ub2) 0,
                                 (ub1) SQLCS_IMPLICIT), "OCILobWriteAppend clob") ||
      expect(amt == TAIL_LEN, "amount appended") ||
      checkerr(OCILobErase(svchp, errhp, clob, &erased, (ub4) ERASE_AT), "OCILobErase") ||
      expect(erased == ERASE_LEN, "amount erased") ||
      expect_length("notes with their tail", clob, (ub4) CLOB_LEN))
    return 1;
  memset(clob_want + ERASE_AT - 1, ' ', (size_t) ERASE_LEN);

  amt = IMG_LEN;
  if (checkerr(OCILobOpen(svchp, errhp, blob, (ub1) OCI_LOB_READWRITE), "OCILobOpen") ||
      checkerr(OCILobWrite(svchp, errhp, blob, &amt, (ub4) 1, (dvoid *) blob_want,
                           (ub4) IMG_LEN, OCI_ONE_PIECE, (dvoid *) 0, (OCICallbackLobWrite) 0,
                           (ub2) 0, (ub1) SQLCS_IMPLICIT), "OCILobWrite blob") ||
      expect(amt == IMG_LEN, "amount written to the image"))
    return 1;
  amt = IMG_MORE;
  return checkerr(OCILobWriteAppend(svchp, errhp, blob, &amt, (dvoid *) (blob_want + IMG_LEN),
                                    (ub4) IMG_MORE, OCI_ONE_PIECE, (dvoid *) 0,
                                    (OCICallbackLobWrite) 0, (ub2) 0, (ub1) SQLCS_IMPLICIT),
                  "OCILobWriteAppend blob") ||
         expect_length("image appended to", blob, (ub4) (IMG_LEN + IMG_MORE)) ||
         checkerr(OCILobTrim(svchp, errhp, blob, (ub4) BLOB_LEN), "OCILobTrim") ||
         expect_length("image trimmed", blob, (ub4) BLOB_LEN) ||
         checkerr(OCILobClose(svchp, errhp, blob), "OCILobClose") ||
         checkerr(OCITransCommit(svchp, errhp, (ub4) 0), "OCITransCommit");
}

static sb4 read_piece(dvoid *ctxp, CONST dvoid *bufp, ub4 len, ub1 piece) {
  struct lob_sink *sink = (struct lob_sink *) ctxp;
  if (sink->used + len > sink->size) return OCI_ERROR;
  memcpy(sink->buf + sink->used, bufp, (size_t) len);
  sink->used += len;
  if (sink->pieces++ == 0) sink->first = piece;
  sink->last = piece;
  return OCI_CONTINUE;
}

/* Reads a whole LOB into got[] through a callback or by polling, in pieces of `bufl`
 * bytes, and checks the pieces and every byte. */
static int read_lob(CONST char *what, OCILobLocator *loc, int polling, ub4 bufl,
                    CONST ub1 *want, ub4 want_len) {
  ub1 buf[2048];
  ub4 amt = want_len, pieces = 0, used = 0;
  sword status;
  struct lob_sink sink = {got, (ub4) sizeof(got), 0, 0, 0, 0};

  if (!polling) {
    if (checkerr(OCILobRead(svchp, errhp, loc, &amt, (ub4) 1, (dvoid *) buf, bufl,
                            (dvoid *) &sink, read_piece, (ub2) 0, (ub1) SQLCS_IMPLICIT), what))
      return 1;
    pieces = sink.pieces;
    used = sink.used;
    if (expect(sink.first == OCI_FIRST_PIECE && sink.last == OCI_LAST_PIECE, what) ||
        expect(amt == want_len, what))
      return 1;
  } else {
    do {
      status = OCILobRead(svchp, errhp, loc, &amt, (ub4) 1, (dvoid *) buf, bufl, (dvoid *) 0,
                          (OCICallbackLobRead) 0, (ub2) 0, (ub1) SQLCS_IMPLICIT);
      if (status != OCI_NEED_DATA && checkerr(status, what)) return 1;
      if (used + amt > (ub4) sizeof(got)) return expect(0, what);
      memcpy(got + used, buf, (size_t) amt);
      used += amt;
      ++pieces;
    } while (status == OCI_NEED_DATA);
  }
  return expect(pieces == (want_len + bufl - 1) / bufl, what) ||
         expect(used == want_len && memcmp(got, want, (size_t) used) == 0, what);
}

/* Selects the LOBs again as locators, read both ways, and as plain data: the CLOB into
 * characters (SQLT_LNG, SQLT_STR), the BLOB into bytes (SQLT_LBI, SQLT_BIN). */
int read_back_lobs(void) {
  static text as_long[CLOB_LEN + 8], as_str[CLOB_LEN + 8];
  static ub1 as_lbi[BLOB_LEN + 8], as_bin[BLOB_LEN + 8];
  OCIDefine *defs[6];
  sb2 ind[4] = {-1, -1, -1, -1};
  ub2 len[4] = {0, 0, 0, 0}, rc[4] = {1, 1, 1, 1};
  CONST char *sql = "SELECT doc, img, doc, img, doc, img FROM media WHERE id = 1";

  return prepare(sql) ||
         define_pos(&defs[0], (ub4) 1, (dvoid *) &clob, (sb4) 0, SQLT_CLOB, (sb2 *) 0,
                    (ub2 *) 0, (ub2 *) 0) ||
         define_pos(&defs[1], (ub4) 2, (dvoid *) &blob, (sb4) 0, SQLT_BLOB, (sb2 *) 0,
                    (ub2 *) 0, (ub2 *) 0) ||
         define_pos(&defs[2], (ub4) 3, (dvoid *) as_long, (sb4) sizeof(as_long), SQLT_LNG,
                    &ind[0], &len[0], &rc[0]) ||
         define_pos(&defs[3], (ub4) 4, (dvoid *) as_lbi, (sb4) sizeof(as_lbi), SQLT_LBI,
                    &ind[1], &len[1], &rc[1]) ||
         define_pos(&defs[4], (ub4) 5, (dvoid *) as_str, (sb4) sizeof(as_str), SQLT_STR,
                    &ind[2], &len[2], &rc[2]) ||
         define_pos(&defs[5], (ub4) 6, (dvoid *) as_bin, (sb4) sizeof(as_bin), SQLT_BIN,
                    &ind[3], &len[3], &rc[3]) ||
         execute((ub4) 1, sql) ||
         expect(ind[0] == 0 && ind[1] == 0 && ind[2] == 0 && ind[3] == 0 && rc[0] == 0 &&
                rc[1] == 0 && rc[2] == 0 && rc[3] == 0, "LOB data indicators") ||
         expect(len[0] == CLOB_LEN && memcmp(as_long, clob_want, (size_t) CLOB_LEN) == 0,
                "notes as SQLT_LNG") ||
         expect(strlen((char *) as_str) == CLOB_LEN &&
                memcmp(as_str, clob_want, (size_t) CLOB_LEN) == 0, "notes as SQLT_STR") ||
         expect(len[1] == BLOB_LEN && memcmp(as_lbi, blob_want, (size_t) BLOB_LEN) == 0,
                "image as SQLT_LBI") ||
         expect(len[3] == BLOB_LEN && memcmp(as_bin, blob_want, (size_t) BLOB_LEN) == 0,
                "image as SQLT_BIN") ||
         expect_length("notes selected", clob, (ub4) CLOB_LEN) ||
         read_lob("notes through a callback", clob, 0, (ub4) 2048, clob_want, CLOB_LEN) ||
         read_lob("notes by polling", clob, 1, (ub4) 1000, clob_want, CLOB_LEN) ||
         read_lob("image through a callback", blob, 0, (ub4) 1024, blob_want, BLOB_LEN) ||
         read_lob("image by polling", blob, 1, (ub4) 1000, blob_want, BLOB_LEN);
}
