/* Oracle's external procedure calls (none provided here). */
#ifndef OCIEXTP_ORACLE
#define OCIEXTP_ORACLE

#endif /* OCIEXTP_ORACLE */
