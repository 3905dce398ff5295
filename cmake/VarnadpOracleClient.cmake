# Locates a real Oracle client for -DVARNADP_OCI=oracle and defines the
# imported target varnadp::oracle_client. Inputs, in order of preference:
#   OCI_INCLUDE_DIR and OCI_LIBRARY        the header folder and libclntsh itself
#   ORACLE_SDK_DIR                         an Instant Client folder (sdk/include, libclntsh.so)
#   ORACLE_HOME (environment)              a full client installation (rdbms/public, lib)
if(TARGET varnadp::oracle_client)
  return()
endif()
set(_oci_hints "")
if(ORACLE_SDK_DIR)
  list(APPEND _oci_hints ${ORACLE_SDK_DIR} ${ORACLE_SDK_DIR}/sdk/include ${ORACLE_SDK_DIR}/lib)
endif()
if(DEFINED ENV{ORACLE_HOME})
  list(APPEND _oci_hints $ENV{ORACLE_HOME}/rdbms/public $ENV{ORACLE_HOME}/lib $ENV{ORACLE_HOME})
endif()
find_path(OCI_INCLUDE_DIR oci.h HINTS ${_oci_hints})
find_library(OCI_LIBRARY NAMES clntsh HINTS ${_oci_hints})
if(NOT OCI_INCLUDE_DIR OR NOT OCI_LIBRARY)
  message(FATAL_ERROR "VARNADP_OCI=oracle: set OCI_INCLUDE_DIR and OCI_LIBRARY, or ORACLE_SDK_DIR "
                      "to an Instant Client folder with its SDK (found include '${OCI_INCLUDE_DIR}', "
                      "library '${OCI_LIBRARY}')")
endif()
add_library(varnadp::oracle_client UNKNOWN IMPORTED)
set_target_properties(varnadp::oracle_client PROPERTIES
  IMPORTED_LOCATION "${OCI_LIBRARY}"
  INTERFACE_INCLUDE_DIRECTORIES "${OCI_INCLUDE_DIR}")
