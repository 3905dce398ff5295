# Driven by ctest: every header of the in-memory OCI included first, on its own and then
# followed by all the others (in the order Oracle's oci.h includes them), compiled as C89
# with -pedantic and as C++, warnings as errors.  A header that needs a name it neither
# declares nor includes fails here.
cmake_minimum_required(VERSION 3.25)
file(GLOB headers RELATIVE ${INCLUDE_DIR} ${INCLUDE_DIR}/*.h)
set(all oratypes.h ocidfn.h ociver.h oci1.h oro.h ori.h orl.h ort.h ociextp.h ociapr.h
        ociap.h ocixmldb.h oci8dp.h ocixstream.h oci.h orid.h ocimem.h)
foreach(h ${all})
  if(NOT h IN_LIST headers)
    message(FATAL_ERROR "${h} is missing from ${INCLUDE_DIR}")
  endif()
endforeach()
file(MAKE_DIRECTORY ${WORK_DIR})
set(rest "")
foreach(h ${all})
  string(APPEND rest "#include <${h}>\n")
endforeach()
foreach(h ${headers})
  string(REPLACE "." "_" stem ${h})
  file(WRITE ${WORK_DIR}/${stem}_alone.c "#include <${h}>\nint main(void) { return 0; }\n")
  file(WRITE ${WORK_DIR}/${stem}_first.c
       "#include <${h}>\n${rest}int main(void) { return OCI_SUCCESS + (int) sizeof(OCIDate); }\n")
  foreach(tu ${stem}_alone.c ${stem}_first.c)
    foreach(compiler "${CC};-std=c89" "${CXX};-x;c++;-std=c++17")
      execute_process(
        COMMAND ${compiler} -Wall -Wextra -Werror -pedantic -fsyntax-only -I${INCLUDE_DIR}
                ${WORK_DIR}/${tu}
        RESULT_VARIABLE rc ERROR_VARIABLE err OUTPUT_VARIABLE out)
      if(NOT rc EQUAL 0)
        string(REPLACE ";" " " shown "${compiler}")
        message(FATAL_ERROR "${shown} ${tu} (${h} first) failed:\n${out}${err}")
      endif()
    endforeach()
  endforeach()
endforeach()
list(LENGTH headers n)
message(STATUS "${n} headers compile first, alone and before the others, as C89 and C++")
