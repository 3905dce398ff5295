/* Oracle's object language types: NUMBER, DATE, strings, raws, collections and
 * iterators, with the calls that work on them. */
#ifndef ORL_ORACLE
#define ORL_ORACLE

#include "oratypes.h"

typedef struct OCIString OCIString;
typedef struct OCIRaw OCIRaw;
typedef struct OCIColl OCIColl;
typedef OCIColl OCIArray;
typedef OCIColl OCITable;
typedef struct OCIIter OCIIter;

#define OCI_NUMBER_SIZE 22
struct OCINumber {
  ub1 OCINumberPart[OCI_NUMBER_SIZE];
};
typedef struct OCINumber OCINumber;

struct OCITime {
  ub1 OCITimeHH;
  ub1 OCITimeMI;
  ub1 OCITimeSS;
};
typedef struct OCITime OCITime;

struct OCIDate {
  sb2 OCIDateYYYY;
  ub1 OCIDateMM;
  ub1 OCIDateDD;
  OCITime OCIDateTime;
};
typedef struct OCIDate OCIDate;

#define OCIDateGetTime(date, hour, min, sec) \
  { \
    *(hour) = (date)->OCIDateTime.OCITimeHH; \
    *(min) = (date)->OCIDateTime.OCITimeMI; \
    *(sec) = (date)->OCIDateTime.OCITimeSS; \
  }

#define OCIDateGetDate(date, year, month, day) \
  { \
    *(year) = (date)->OCIDateYYYY; \
    *(month) = (date)->OCIDateMM; \
    *(day) = (date)->OCIDateDD; \
  }

#define OCIDateSetTime(date, hour, min, sec) \
  { \
    (date)->OCIDateTime.OCITimeHH = (hour); \
    (date)->OCIDateTime.OCITimeMI = (min); \
    (date)->OCIDateTime.OCITimeSS = (sec); \
  }

#define OCIDateSetDate(date, year, month, day) \
  { \
    (date)->OCIDateYYYY = (year); \
    (date)->OCIDateMM = (month); \
    (date)->OCIDateDD = (day); \
  }

/* Signedness flags of OCINumberToInt and OCINumberFromInt */
#define OCI_NUMBER_UNSIGNED                0
#define OCI_NUMBER_SIGNED                  2

#include "oci.h"

#ifdef __cplusplus
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

sword OCICollSize(OCIEnv *env, OCIError *err, const OCIColl *coll, sb4 *size);
sb4 OCICollMax(OCIEnv *env, const OCIColl *coll);
sword OCICollTrim(OCIEnv *env, OCIError *err, sb4 trim_num, OCIColl *coll);
sword OCICollAppend(OCIEnv *env, OCIError *err, const void *elem, const void *elemind, OCIColl *coll);
sword OCICollGetElem(OCIEnv *env, OCIError *err, const OCIColl *coll, sb4 index, boolean *exists, void **elem, void **elemind);
sword OCICollAssignElem(OCIEnv *env, OCIError *err, sb4 index, const void *elem, const void *elemind, OCIColl *coll);
sword OCICollAssign(OCIEnv *env, OCIError *err, const OCIColl *rhs, OCIColl *lhs);
sword OCITableSize(OCIEnv *env, OCIError *err, const OCITable *tbl, sb4 *size);
sword OCITableExists(OCIEnv *env, OCIError *err, const OCITable *tbl, sb4 index, boolean *exists);
sword OCITableDelete(OCIEnv *env, OCIError *err, sb4 index, OCITable *tbl);
sword OCITableFirst(OCIEnv *env, OCIError *err, const OCITable *tbl, sb4 *index);
sword OCITableLast(OCIEnv *env, OCIError *err, const OCITable *tbl, sb4 *index);
sword OCITableNext(OCIEnv *env, OCIError *err, sb4 index, const OCITable *tbl, sb4 *next_index, boolean *exists);
sword OCITablePrev(OCIEnv *env, OCIError *err, sb4 index, const OCITable *tbl, sb4 *prev_index, boolean *exists);
sword OCIIterCreate(OCIEnv *env, OCIError *err, const OCIColl *coll, OCIIter **itr);
sword OCIIterDelete(OCIEnv *env, OCIError *err, OCIIter **itr);
sword OCIIterNext(OCIEnv *env, OCIError *err, OCIIter *itr, void **elem, void **elemind, boolean *eoc);
sword OCIIterInit(OCIEnv *env, OCIError *err, const OCIColl *coll, OCIIter *itr);
ub4 OCIStringSize(OCIEnv *env, const OCIString *vs);
oratext * OCIStringPtr(OCIEnv *env, const OCIString *vs);
sword OCIStringResize(OCIEnv *env, OCIError *err, ub4 new_size, OCIString **str);
sword OCIStringAssignText(OCIEnv *env, OCIError *err, const oratext *rhs, ub4 rhs_len, OCIString **lhs);
sword OCIStringAssign(OCIEnv *env, OCIError *err, const OCIString *rhs, OCIString **lhs);
ub4 OCIRawSize(OCIEnv * env, const OCIRaw *raw);
ub1 * OCIRawPtr(OCIEnv * env, const OCIRaw *raw);
sword OCIRawResize(OCIEnv *env, OCIError *err, ub4 new_size, OCIRaw **raw);
sword OCIRawAssignBytes(OCIEnv *env, OCIError *err, const ub1 *rhs, ub4 rhs_len, OCIRaw **lhs);
sword OCINumberToText(OCIError *err, const OCINumber *number, const oratext *fmt, ub4 fmt_length, const oratext *nls_params, ub4 nls_p_length, ub4 *buf_size, oratext *buf);
sword OCINumberFromText(OCIError *err, const oratext *str, ub4 str_length, const oratext *fmt, ub4 fmt_length, const oratext *nls_params, ub4 nls_p_length, OCINumber *number);
sword OCINumberToReal(OCIError *err, const OCINumber *number, uword rsl_length, void *rsl);
sword OCINumberFromReal(OCIError *err, const void *rnum, uword rnum_length, OCINumber *number);
sword OCINumberToInt(OCIError *err, const OCINumber *number, uword rsl_length, uword rsl_flag, void *rsl);
sword OCINumberFromInt(OCIError *err, const void *inum, uword inum_length, uword inum_s_flag, OCINumber *number);
sword OCINumberCmp(OCIError *err, const OCINumber *number1, const OCINumber *number2, sword *result);
sword OCIDateToText(OCIError *err, const OCIDate *date, const oratext *fmt, ub1 fmt_length, const oratext *lang_name, ub4 lang_length, ub4 *buf_size, oratext *buf);
sword OCIDateFromText(OCIError *err, const oratext *date_str, ub4 d_str_length, const oratext *fmt, ub1 fmt_length, const oratext *lang_name, ub4 lang_length, OCIDate *date);
sword OCIDateAddDays( OCIError *err, const OCIDate *date, sb4 num_days, OCIDate *result );
sword OCIDateAddMonths( OCIError *err, const OCIDate *date, sb4 num_months, OCIDate *result );
sword OCIDateDaysBetween( OCIError *err, const OCIDate *date1, const OCIDate *date2, sb4 *num_days );
sword OCIDateSysDate( OCIError *err, OCIDate *sys_date );
sword OCIDateCompare( OCIError *err, const OCIDate *date1, const OCIDate *date2, sword *result );

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif /* ORL_ORACLE */
