/* Oracle's calls of the 8.1 interface (none provided here). */
#ifndef OCI1_ORACLE
#define OCI1_ORACLE

#endif /* OCI1_ORACLE */
