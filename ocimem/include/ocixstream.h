/* Oracle's XStream calls (none provided here). */
#ifndef OCIXSTREAM_ORACLE
#define OCIXSTREAM_ORACLE

#endif /* OCIXSTREAM_ORACLE */
