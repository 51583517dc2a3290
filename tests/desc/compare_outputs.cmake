# Runs two programs and fails unless they print the same standard output.
execute_process(COMMAND ${FIRST} OUTPUT_VARIABLE first RESULT_VARIABLE first_status)
execute_process(COMMAND ${SECOND} OUTPUT_VARIABLE second RESULT_VARIABLE second_status)
if(NOT first_status EQUAL 0 OR NOT second_status EQUAL 0)
  message(FATAL_ERROR "exit status ${first_status} and ${second_status}")
endif()
if(NOT first STREQUAL second)
  message(FATAL_ERROR "the outputs differ:\n--- ${FIRST}\n${first}\n--- ${SECOND}\n${second}")
endif()
