/* Oracle's base types: fixed-size integers, text, the older spellings (CONST, dvoid, eb1,
 * b1, ...) and their limits, for 64-bit Linux. */
#ifndef ORATYPES
#define ORATYPES

#include <limits.h>
#include <stddef.h>

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#define CONST const
#define dvoid void

typedef unsigned char ub1;
typedef signed char sb1;
typedef unsigned short ub2;
typedef signed short sb2;
typedef unsigned int ub4;
typedef signed int sb4;
typedef unsigned long oraub8;
typedef signed long orasb8;
typedef oraub8 ub8;
typedef orasb8 sb8;
typedef unsigned int uword;
typedef signed int sword;
typedef signed int eword;
typedef int boolean;

/* Values held as either signed or unsigned: only the range both share is used. */
typedef signed char eb1;
typedef signed short eb2;
typedef signed int eb4;
typedef sb1 b1;
typedef sb2 b2;
typedef sb4 b4;

typedef signed long sbig_ora;
typedef unsigned long ubig_ora;

typedef unsigned char oratext;
typedef oratext OraText;
typedef unsigned char text;
typedef unsigned short utext;
typedef oratext *string;

/* Limits.  xMAXVAL/xMINVAL hold on this platform; MINxMAXVAL and MAXxMINVAL are the
 * bounds every platform keeps. */
#define UB1BITS          CHAR_BIT
#define UB1MASK          ((1 << ((uword)CHAR_BIT)) - 1)

#define UB1MAXVAL        ((ub1)UCHAR_MAX)
#define UB1MINVAL        ((ub1)0)
#define SB1MAXVAL        ((sb1)SCHAR_MAX)
#define SB1MINVAL        ((sb1)SCHAR_MIN)
#define MINUB1MAXVAL     ((ub1)255)
#define MAXUB1MINVAL     ((ub1)0)
#define MINSB1MAXVAL     ((sb1)127)
#define MAXSB1MINVAL     ((sb1)-127)

#define UB2MAXVAL        ((ub2)USHRT_MAX)
#define UB2MINVAL        ((ub2)0)
#define SB2MAXVAL        ((sb2)SHRT_MAX)
#define SB2MINVAL        ((sb2)SHRT_MIN)
#define MINUB2MAXVAL     ((ub2)65535)
#define MAXUB2MINVAL     ((ub2)0)
#define MINSB2MAXVAL     ((sb2)32767)
#define MAXSB2MINVAL     ((sb2)-32767)

#define UB4MAXVAL        ((ub4)UINT_MAX)
#define UB4MINVAL        ((ub4)0)
#define SB4MAXVAL        ((sb4)INT_MAX)
#define SB4MINVAL        ((sb4)INT_MIN)
#define MINUB4MAXVAL     ((ub4)4294967295U)
#define MAXUB4MINVAL     ((ub4)0)
#define MINSB4MAXVAL     ((sb4)2147483647)
#define MAXSB4MINVAL     ((sb4)-2147483647)

#define ORAUB8MAXVAL     ((oraub8)ULONG_MAX)
#define ORAUB8MINVAL     ((oraub8)0)
#define ORASB8MAXVAL     ((orasb8)LONG_MAX)
#define ORASB8MINVAL     ((orasb8)LONG_MIN)
#define MINORAUB8MAXVAL  ((oraub8)18446744073709551615UL)
#define MAXORAUB8MINVAL  ((oraub8)0)
#define MINORASB8MAXVAL  ((orasb8)9223372036854775807L)
#define MAXORASB8MINVAL  ((orasb8)-9223372036854775807L)

#define EB1MAXVAL        ((eb1)SCHAR_MAX)
#define EB1MINVAL        ((eb1)0)
#define MINEB1MAXVAL     ((eb1)127)
#define MAXEB1MINVAL     ((eb1)0)
#define EB2MAXVAL        ((eb2)SHRT_MAX)
#define EB2MINVAL        ((eb2)0)
#define MINEB2MAXVAL     ((eb2)32767)
#define MAXEB2MINVAL     ((eb2)0)
#define EB4MAXVAL        ((eb4)INT_MAX)
#define EB4MINVAL        ((eb4)0)
#define MINEB4MAXVAL     ((eb4)2147483647)
#define MAXEB4MINVAL     ((eb4)0)

#define B1MAXVAL         SB1MAXVAL
#define B1MINVAL         SB1MINVAL
#define MINB1MAXVAL      MINSB1MAXVAL
#define MAXB1MINVAL      MAXSB1MINVAL
#define B2MAXVAL         SB2MAXVAL
#define B2MINVAL         SB2MINVAL
#define MINB2MAXVAL      MINSB2MAXVAL
#define MAXB2MINVAL      MAXSB2MINVAL
#define B4MAXVAL         SB4MAXVAL
#define B4MINVAL         SB4MINVAL
#define MINB4MAXVAL      MINSB4MAXVAL
#define MAXB4MINVAL      MAXSB4MINVAL

#define UBIG_ORAMAXVAL   ((ubig_ora)ULONG_MAX)
#define UBIG_ORAMINVAL   ((ubig_ora)0)
#define SBIG_ORAMAXVAL   ((sbig_ora)LONG_MAX)
#define SBIG_ORAMINVAL   ((sbig_ora)LONG_MIN)
#define MINUBIG_ORAMAXVAL ((ubig_ora)4294967295UL)
#define MAXUBIG_ORAMINVAL ((ubig_ora)0)
#define MINSBIG_ORAMAXVAL ((sbig_ora)2147483647L)
#define MAXSBIG_ORAMINVAL ((sbig_ora)-2147483647L)

#define SIZE_TMAXVAL     ((size_t)-1)
#define MINSIZE_TMAXVAL  ((size_t)4294967295U)

#define UWORDMAXVAL      ((uword)UINT_MAX)
#define UWORDMINVAL      ((uword)0)
#define SWORDMAXVAL      ((sword)INT_MAX)
#define SWORDMINVAL      ((sword)INT_MIN)
#define MINUWORDMAXVAL   ((uword)4294967295U)
#define MAXUWORDMINVAL   ((uword)0)
#define MINSWORDMAXVAL   ((sword)2147483647)
#define MAXSWORDMINVAL   ((sword)-2147483647)
#define EWORDMAXVAL      ((eword)INT_MAX)
#define EWORDMINVAL      ((eword)0)
#define MINEWORDMAXVAL   ((eword)2147483647)
#define MAXEWORDMINVAL   ((eword)0)

#endif /* ORATYPES */
