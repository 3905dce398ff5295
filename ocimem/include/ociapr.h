/* Oracle's older relational calls (none provided here). */
#ifndef OCIAPR_ORACLE
#define OCIAPR_ORACLE

#endif /* OCIAPR_ORACLE */
