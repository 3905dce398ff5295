/* Oracle's XML DB calls (none provided here). */
#ifndef OCIXMLDB_ORACLE
#define OCIXMLDB_ORACLE

#endif /* OCIXMLDB_ORACLE */
