# Fixture of the corpus tests: makes sure bench/corpora/*.list exist and name
# files that are there, running bench/corpora.sh (root and the Debian mirrors
# needed) when they do not.
execute_process(COMMAND bash ${CORPORA_SCRIPT} --check RESULT_VARIABLE rc OUTPUT_QUIET ERROR_QUIET)
if(rc EQUAL 0)
  message(STATUS "corpus lists present")
  return()
endif()
execute_process(COMMAND bash ${CORPORA_SCRIPT} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "bench/corpora.sh failed (exit ${rc}): it needs root and the Debian mirrors\n${out}${err}")
endif()
message(STATUS "corpus lists written:\n${out}")
