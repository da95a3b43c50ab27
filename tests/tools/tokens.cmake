# vnxparse tokens: hand-checked output on a small file, the NUL cut, and the
# exit status 2 for a missing file, a directory and a missing argument.
file(MAKE_DIRECTORY ${WORK_DIR})

function(check_tokens input expected_file)
  execute_process(COMMAND ${VNXPARSE} tokens ${DATA_DIR}/lexer/${input}
    OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "tokens ${input}: exit ${rc}, stderr: ${err}")
  endif()
  file(READ ${DATA_DIR}/lexer/${expected_file} expected)
  if(NOT "${out}" STREQUAL "${expected}")
    file(WRITE ${WORK_DIR}/${input}.actual "${out}")
    message(FATAL_ERROR "tokens ${input}: output differs from ${expected_file} "
      "(actual output written to ${WORK_DIR}/${input}.actual)")
  endif()
endfunction()

check_tokens(tokens_sample.h tokens_sample.expected)
# The file holds "a", a NUL byte, then more text: tokenizing stops at the NUL.
check_tokens(tokens_nul.h tokens_nul.expected)

function(expect_exit_2 what)
  execute_process(COMMAND ${VNXPARSE} tokens ${ARGN}
    OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
  if(NOT rc EQUAL 2)
    message(FATAL_ERROR "tokens with ${what}: expected exit 2, got ${rc}")
  endif()
  if(NOT out STREQUAL "")
    message(FATAL_ERROR "tokens with ${what}: unexpected output: ${out}")
  endif()
  string(REGEX MATCHALL "\n" newlines "${err}")
  list(LENGTH newlines count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "tokens with ${what}: expected a one-line error, got: ${err}")
  endif()
endfunction()

expect_exit_2("a missing file" ${WORK_DIR}/no/such/file.h)
expect_exit_2("a directory" ${DATA_DIR}/lexer)
expect_exit_2("no argument")
expect_exit_2("two files" ${DATA_DIR}/lexer/tokens_sample.h ${DATA_DIR}/lexer/tokens_nul.h)
