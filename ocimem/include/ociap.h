/* Oracle's relational calls: environment, handles, attributes, connections, statements,
 * binds and defines, transactions, datetimes and intervals, LOBs and describe. */
#ifndef OCIAP_ORACLE
#define OCIAP_ORACLE

#include "oratypes.h"

#include "oci.h"

#ifdef __cplusplus
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

typedef sb4 (*OCICallbackInBind)(void *ictxp, OCIBind *bindp, ub4 iter, ub4 index, void **bufpp, ub4 *alenp, ub1 *piecep, void **indp);
typedef sb4 (*OCICallbackOutBind)(void *octxp, OCIBind *bindp, ub4 iter, ub4 index, void **bufpp, ub4 **alenp, ub1 *piecep, void **indp, ub2 **rcodep);
typedef sb4 (*OCICallbackDefine)(void *octxp, OCIDefine *defnp, ub4 iter, void **bufpp, ub4 **alenp, ub1 *piecep, void **indp, ub2 **rcodep);

sword OCIEnvCreate(OCIEnv **envp, ub4 mode, void *ctxp, void *(*malocfp)(void *ctxp, size_t size), void *(*ralocfp)(void *ctxp, void *memptr, size_t newsize), void (*mfreefp)(void *ctxp, void *memptr), size_t xtramem_sz, void **usrmempp);
sword OCIEnvInit(OCIEnv **envp, ub4 mode, size_t xtramem_sz, void **usrmempp);
sword OCIInitialize(ub4 mode, void *ctxp, void *(*malocfp)(void *ctxp, size_t size), void *(*ralocfp)(void *ctxp, void *memptr, size_t newsize), void (*mfreefp)(void *ctxp, void *memptr));
sword OCIHandleAlloc(const void *parenth, void **hndlpp, const ub4 type, const size_t xtramem_sz, void **usrmempp);
sword OCIHandleFree(void *hndlp, const ub4 type);
sword OCIDescriptorAlloc(const void *parenth, void **descpp, const ub4 type, const size_t xtramem_sz, void **usrmempp);
sword OCIDescriptorFree(void *descp, const ub4 type);
sword OCIAttrSet(void *trgthndlp, ub4 trghndltyp, void *attributep, ub4 size, ub4 attrtype, OCIError *errhp);
sword OCIAttrGet(const void *trgthndlp, ub4 trghndltyp, void *attributep, ub4 *sizep, ub4 attrtype, OCIError *errhp);
sword OCILogon(OCIEnv *envhp, OCIError *errhp, OCISvcCtx **svchp, const OraText *username, ub4 uname_len, const OraText *password, ub4 passwd_len, const OraText *dbname, ub4 dbname_len);
sword OCILogon2(OCIEnv *envhp, OCIError *errhp, OCISvcCtx **svchp, const OraText *username, ub4 uname_len, const OraText *password, ub4 passwd_len, const OraText *dbname, ub4 dbname_len, ub4 mode);
sword OCILogoff(OCISvcCtx *svchp, OCIError *errhp);
sword OCIServerAttach(OCIServer *srvhp, OCIError *errhp, const OraText *dblink, sb4 dblink_len, ub4 mode);
sword OCIServerDetach(OCIServer *srvhp, OCIError *errhp, ub4 mode);
sword OCISessionBegin(OCISvcCtx *svchp, OCIError *errhp, OCISession *usrhp, ub4 credt, ub4 mode);
sword OCISessionEnd(OCISvcCtx *svchp, OCIError *errhp, OCISession *usrhp, ub4 mode);
sword OCIErrorGet(void *hndlp, ub4 recordno, OraText *sqlstate, sb4 *errcodep, OraText *bufp, ub4 bufsiz, ub4 type);
sword OCIStmtPrepare(OCIStmt *stmtp, OCIError *errhp, const OraText *stmt, ub4 stmt_len, ub4 language, ub4 mode);
sword OCIStmtExecute(OCISvcCtx *svchp, OCIStmt *stmtp, OCIError *errhp, ub4 iters, ub4 rowoff, const OCISnapshot *snap_in, OCISnapshot *snap_out, ub4 mode);
sword OCIStmtFetch(OCIStmt *stmtp, OCIError *errhp, ub4 nrows, ub2 orientation, ub4 mode);
sword OCIStmtFetch2(OCIStmt *stmtp, OCIError *errhp, ub4 nrows, ub2 orientation, sb4 scrollOffset, ub4 mode);
sword OCIDefineByPos(OCIStmt *stmtp, OCIDefine **defnp, OCIError *errhp, ub4 position, void *valuep, sb4 value_sz, ub2 dty, void *indp, ub2 *rlenp, ub2 *rcodep, ub4 mode);
sword OCIDefineObject(OCIDefine *defnp, OCIError *errhp, const OCIType *type, void **pgvpp, ub4 *pvszsp, void **indpp, ub4 *indszp);
sword OCIBindByPos(OCIStmt *stmtp, OCIBind **bindp, OCIError *errhp, ub4 position, void *valuep, sb4 value_sz, ub2 dty, void *indp, ub2 *alenp, ub2 *rcodep, ub4 maxarr_len, ub4 *curelep, ub4 mode);
sword OCIBindByName(OCIStmt *stmtp, OCIBind **bindp, OCIError *errhp, const OraText *placeholder, sb4 placeh_len, void *valuep, sb4 value_sz, ub2 dty, void *indp, ub2 *alenp, ub2 *rcodep, ub4 maxarr_len, ub4 *curelep, ub4 mode);
sword OCIBindObject(OCIBind *bindp, OCIError *errhp, const OCIType *type, void **pgvpp, ub4 *pvszsp, void **indpp, ub4 *indszp);
sword OCIBindArrayOfStruct (OCIBind *bindp, OCIError *errhp, ub4 pvskip, ub4 indskip, ub4 alskip, ub4 rcskip);
sword OCIDefineArrayOfStruct (OCIDefine *defnp, OCIError *errhp, ub4 pvskip, ub4 indskip, ub4 rlskip, ub4 rcskip);
sword OCIBindDynamic (OCIBind *bindp, OCIError *errhp, void *ictxp, OCICallbackInBind icbfp, void *octxp, OCICallbackOutBind ocbfp);
sword OCIDefineDynamic (OCIDefine *defnp, OCIError *errhp, void *octxp, OCICallbackDefine ocbfp);
sword OCIStmtGetPieceInfo (OCIStmt *stmtp, OCIError *errhp, void **hndlpp, ub4 *typep, ub1 *in_outp, ub4 *iterp, ub4 *idxp, ub1 *piecep);
sword OCIStmtSetPieceInfo (void *hndlp, ub4 type, OCIError *errhp, const void *bufp, ub4 *alenp, ub1 piece, const void *indp, ub2 *rcodep);
sword OCITransCommit(OCISvcCtx *svchp, OCIError *errhp, ub4 flags);
sword OCITransRollback(OCISvcCtx *svchp, OCIError *errhp, ub4 flags);
sword OCIDateTimeToText(void *hndl, OCIError *err, const OCIDateTime *date, const OraText *fmt, ub1 fmt_length, ub1 fsprec, const OraText *lang_name, size_t lang_length, ub4 *buf_size, OraText *buf);
sword OCIDateTimeFromText(void *hndl, OCIError *err, const OraText *date_str, size_t dstr_length, const OraText *fmt, ub1 fmt_length, const OraText *lang_name, size_t lang_length, OCIDateTime *date);
sword OCIDateTimeConstruct(void *hndl,OCIError *err,OCIDateTime *datetime, sb2 yr,ub1 mnth,ub1 dy,ub1 hr,ub1 mm,ub1 ss,ub4 fsec, OraText *timezone,size_t timezone_length);
sword OCIDateTimeGetDate(void *hndl, OCIError *err, const OCIDateTime *date, sb2 *yr, ub1 *mnth, ub1 *dy);
sword OCIDateTimeGetTime(void *hndl, OCIError *err, OCIDateTime *datetime, ub1 *hr, ub1 *mm, ub1 *ss, ub4 *fsec);
sword OCIDateTimeGetTimeZoneOffset(void *hndl,OCIError *err, const OCIDateTime *datetime, sb1 *hr,sb1 *mm);
sword OCIIntervalToText(void *hndl, OCIError *err, const OCIInterval *inter, ub1 lfprec, ub1 fsprec, OraText *buffer, size_t buflen, size_t *resultlen);
sword OCIIntervalFromText(void *hndl, OCIError *err, const OraText *inpstr, size_t str_len, OCIInterval *result);
sword OCIIntervalSetYearMonth(void *hndl, OCIError *err, sb4 yr, sb4 mnth, OCIInterval *result);
sword OCIIntervalSetDaySecond(void *hndl, OCIError *err, sb4 dy, sb4 hr, sb4 mm, sb4 ss, sb4 fsec, OCIInterval *result);
sword OCIIntervalGetYearMonth(void *hndl, OCIError *err, sb4 *yr, sb4 *mnth, const OCIInterval *result);
sword OCIIntervalGetDaySecond(void *hndl, OCIError *err, sb4 *dy, sb4 *hr, sb4 *mm, sb4 *ss, sb4 *fsec, const OCIInterval *result);
sword OCIDateTimeIntervalAdd(void *hndl, OCIError *err, OCIDateTime *datetime, OCIInterval *inter, OCIDateTime *outdatetime);
sword OCIDateTimeIntervalSub(void *hndl, OCIError *err, OCIDateTime *datetime, OCIInterval *inter, OCIDateTime *outdatetime);
sword OCIDateTimeSubtract(void *hndl, OCIError *err, OCIDateTime *indate1, OCIDateTime *indate2, OCIInterval *inter);
sword OCIDateTimeConvert(void *hndl, OCIError *err, OCIDateTime *indate, OCIDateTime *outdate);
sword OCIDateTimeSysTimeStamp(void *hndl, OCIError *err, OCIDateTime *sys_date );
sword OCIDateTimeCompare(void *hndl, OCIError *err, const OCIDateTime *date1, const OCIDateTime *date2, sword *result );
sword OCIIntervalAdd(void *hndl, OCIError *err, OCIInterval *addend1, OCIInterval *addend2, OCIInterval *result );
sword OCIIntervalSubtract(void *hndl, OCIError *err, OCIInterval *minuend, OCIInterval *subtrahend, OCIInterval *result );
sword OCIIntervalCompare(void *hndl, OCIError *err, OCIInterval *inter1, OCIInterval *inter2, sword *result );
sword OCILobGetLength(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub4 *lenp);
sword OCILobRead(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub4 *amtp, ub4 offset, void *bufp, ub4 bufl, void *ctxp, OCICallbackLobRead cbfp, ub2 csid, ub1 csfrm);
sword OCILobWrite(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub4 *amtp, ub4 offset, void *bufp, ub4 buflen, ub1 piece, void *ctxp, OCICallbackLobWrite cbfp, ub2 csid, ub1 csfrm);
sword OCILobTrim(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub4 newlen);
sword OCILobCreateTemporary(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub2 csid, ub1 csfrm, ub1 lobtype, boolean cache, OCIDuration duration);
sword OCILobFreeTemporary(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp);
sword OCILobIsTemporary(OCIEnv *envp, OCIError *errhp, OCILobLocator *locp, boolean *is_temporary);
sword OCILobLocatorAssign(OCISvcCtx *svchp, OCIError *errhp, const OCILobLocator *src_locp, OCILobLocator **dst_locpp);
typedef sb4 (*OCICallbackLobRead2)(void *ctxp, const void *bufp, oraub8 len, ub1 piece, void **changed_bufpp, oraub8 *changed_lenp);
typedef sb4 (*OCICallbackLobWrite2)(void *ctxp, void *bufp, oraub8 *lenp, ub1 *piece, void **changed_bufpp, oraub8 *changed_lenp);
sword OCILobAppend (OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *dst_locp, OCILobLocator *src_locp);
sword OCILobCopy (OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *dst_locp, OCILobLocator *src_locp, ub4 amount, ub4 dst_offset, ub4 src_offset);
sword OCILobCopy2 (OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *dst_locp, OCILobLocator *src_locp, oraub8 amount, oraub8 dst_offset, oraub8 src_offset);
sword OCILobErase (OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub4 *amount, ub4 offset);
sword OCILobErase2 (OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, oraub8 *amount, oraub8 offset);
sword OCILobOpen( OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub1 mode );
sword OCILobClose( OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp );
sword OCILobIsOpen( OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, boolean *flag);
sword OCILobCharSetForm (OCIEnv *envhp, OCIError *errhp, const OCILobLocator *locp, ub1 *csfrm);
sword OCILobCharSetId (OCIEnv *envhp, OCIError *errhp, const OCILobLocator *locp, ub2 *csid);
sword OCILobGetChunkSize(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub4 *chunksizep);
sword OCILobRead2 (OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, oraub8 *byte_amtp, oraub8 *char_amtp, oraub8 offset, void *bufp, oraub8 bufl, ub1 piece, void *ctxp, OCICallbackLobRead2 cbfp, ub2 csid, ub1 csfrm);
sword OCILobWrite2 (OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, oraub8 *byte_amtp, oraub8 *char_amtp, oraub8 offset, void *bufp, oraub8 buflen, ub1 piece, void *ctxp, OCICallbackLobWrite2 cbfp, ub2 csid, ub1 csfrm);
sword OCILobWriteAppend(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *lobp, ub4 *amtp, void *bufp, ub4 bufl, ub1 piece, void *ctxp, OCICallbackLobWrite cbfp, ub2 csid, ub1 csfrm);
sword OCILobGetLength2 (OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, oraub8 *lenp);
sword OCILobTrim2 (OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, oraub8 newlen);
sword OCIDescribeAny(OCISvcCtx *svchp, OCIError *errhp, void *objptr, ub4 objnm_len, ub1 objptr_typ, ub1 info_level, ub1 objtyp, OCIDescribe *dschp);
sword OCIParamGet(const void *hndlp, ub4 htype, OCIError *errhp, void **parmdpp, ub4 pos);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif /* OCIAP_ORACLE */
