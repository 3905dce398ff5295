# Every target of our own builds with the same strict warning set.
function(varnadp_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror)
endfunction()

# Shared libraries must resolve every symbol at link time, so a missing
# dependency shows up when the library is built, not when a host loads it.
# clang's sanitizer runtimes are linked into executables only, which leaves
# their symbols undefined in a sanitized shared library (and in the fuzz build,
# the fuzzer's): skip the check there. gcc's thread sanitizer links its shared
# runtime into the library itself, so that build keeps the check.
function(varnadp_no_undefined target)
  if(VARNADP_SANITIZE_THREAD AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    return()
  endif()
  if(NOT VARNADP_SANITIZE AND NOT VARNADP_BUILD_FUZZ)
    target_link_options(${target} PRIVATE "LINKER:--no-undefined")
  endif()
endfunction()
