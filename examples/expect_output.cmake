# Runs the example and compares its output, byte for byte, with the stream it
# must write (read back as hex: CMake would drop the terminator's CR).
get_filename_component(out_file "${PROGRAM}.out" ABSOLUTE)
execute_process(COMMAND ${PROGRAM} OUTPUT_FILE ${out_file} RESULT_VARIABLE rc)
file(READ ${out_file} out HEX)
string(HEX "Smith!|Jones|42|1984-02-29 00:00:00|[555-0100|555-0199]" expected)
string(APPEND expected "0d0a")
if(NOT rc EQUAL 0 OR NOT out STREQUAL expected)
  message(FATAL_ERROR "write_object: exit ${rc}, output ${out}, expected ${expected}")
endif()
