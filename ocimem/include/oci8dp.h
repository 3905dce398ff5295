/* Oracle's direct path load calls (none provided here). */
#ifndef OCI8DP_ORACLE
#define OCI8DP_ORACLE

#endif /* OCI8DP_ORACLE */
