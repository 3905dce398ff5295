/* Oracle's client version (no version macros are provided here). */
#ifndef OCIVER_ORACLE
#define OCIVER_ORACLE

#endif /* OCIVER_ORACLE */
