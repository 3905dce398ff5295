# Installs the libraries (versioned SONAMEs), the headers under
# include/varnadp, a CMake package (find_package(varnadp) with the imported
# targets varnadp::varnadp, varnadp::qorvpi, varnadp::coldef and varnadp::ocimem) and a
# relocatable pkg-config file.
include(CMakePackageConfigHelpers)

set(VARNADP_INSTALL_TARGETS varnadp qorvpi coldef)
if(VARNADP_OCI STREQUAL "ocimem")
  list(APPEND VARNADP_INSTALL_TARGETS ocimem)
endif()

install(TARGETS ${VARNADP_INSTALL_TARGETS}
  EXPORT varnadpTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/varnadp
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/varnadp)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/host/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/varnadp/host
  FILES_MATCHING PATTERN "*.h"
  PATTERN "*_impl.h" EXCLUDE)
if(VARNADP_OCI STREQUAL "ocimem")
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/ocimem/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/varnadp
    FILES_MATCHING PATTERN "*.h")
endif()

set(VARNADP_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/varnadp)
install(EXPORT varnadpTargets NAMESPACE varnadp:: DESTINATION ${VARNADP_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/varnadpConfig.cmake.in
  ${PROJECT_BINARY_DIR}/varnadpConfig.cmake
  INSTALL_DESTINATION ${VARNADP_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/varnadpConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/varnadpConfig.cmake
  ${PROJECT_BINARY_DIR}/varnadpConfigVersion.cmake
  ${PROJECT_SOURCE_DIR}/cmake/VarnadpOracleClient.cmake
  DESTINATION ${VARNADP_CMAKE_DIR})

if(VARNADP_OCI STREQUAL "ocimem")
  set(VARNADP_PC_OCI_LIBS "-locimem")
else()
  set(VARNADP_PC_OCI_LIBS "${OCI_LIBRARY}")
endif()
# The .pc file finds its prefix relative to itself, so an installed tree can be moved.
file(RELATIVE_PATH VARNADP_PC_PREFIX_REL "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" VARNADP_PC_PREFIX_REL "${VARNADP_PC_PREFIX_REL}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/varnadp.pc.in ${PROJECT_BINARY_DIR}/varnadp.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/varnadp.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
