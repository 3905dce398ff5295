/* Shared by the two files of the classic media program (classic_media.c: the session,
 * the types, datetimes, collections and SQL; classic_media_lob.c: the row's insert and
 * its LOBs), the way Oracle's demos share a header between their files. */
#ifndef CLASSIC_MEDIA_ORACLE
#define CLASSIC_MEDIA_ORACLE

#ifndef ORATYPES
#include <oratypes.h>
#endif
#ifndef OCIDFN
#include <ocidfn.h>
#endif
#ifndef OCIAP_ORACLE
#include <ociap.h>
#endif
#ifndef OCI_ORACLE
#include <oci.h>
#endif
#ifndef ORI_ORACLE
#include <ori.h>
#endif
#ifndef ORL_ORACLE
#include <orl.h>
#endif

/* The C struct of SHOT_T and its null structure, as Oracle's type translator makes them. */
struct shot { OCIDate taken; OCIDateTime *stamped; OCIInterval *exposure; };
struct shot_ind { OCIInd _atomic; OCIInd taken; OCIInd stamped; OCIInd exposure; };

extern OCIEnv *envhp;
extern OCIError *errhp;
extern OCISvcCtx *svchp;
extern OCIStmt *stmthp;
extern OCIType *shot_tdo, *tags_tdo, *scores_tdo;
extern OCILobLocator *clob, *blob;

/* classic_media.c */
int checkerr(sword status, CONST char *what);
int expect(int ok, CONST char *what);
int expect_text(CONST char *what, CONST text *have, size_t len, CONST char *want);
int alloc_desc(dvoid **descpp, ub4 type, CONST char *what);
int define_pos(OCIDefine **def, ub4 pos, dvoid *value, sb4 size, ub2 type, sb2 *ind,
               ub2 *rlen, ub2 *rcode);
int prepare(CONST char *sql);
int execute(ub4 iters, CONST char *what);

/* classic_media_lob.c */
int insert_row(struct shot *shot, struct shot_ind *shot_ind, OCIDate *made, OCITable *tags,
               OCIArray *scores);
int write_lobs(void);
int read_back_lobs(void);

#endif
