# Sweeps over real code (label "corpus"): every corpus that bench/corpora.sh
# lists, and damaged copies of a sample of them, through 'vnxparse sweep'. A
# crash, a sanitizer report, a leak or a hang fails the test; failure counts
# are printed, not asserted. Registered by default in the sanitizer build only,
# where they are worth their time (VNX_CORPUS_TESTS to force either way).
option(VNX_CORPUS_TESTS "Sweep vnxparse over the real-code corpora (label corpus)" ${VNX_SANITIZE})
if(NOT VNX_CORPUS_TESTS OR NOT VNX_BUILD_TOOLS)
  return()
endif()

set(_corpus_lists_dir ${PROJECT_SOURCE_DIR}/bench/corpora)
set(_corpus_work ${CMAKE_CURRENT_BINARY_DIR}/corpus-work)
# Keep in step with bench/corpora.sh.
set(_corpora occt-foundation occt-modeling-data occt-modeling-algorithms mingw-w64 qtbase5 wine)

# Installs the packages and writes the lists when they are missing or stale.
add_test(NAME corpus.lists
  COMMAND ${CMAKE_COMMAND} -DCORPORA_SCRIPT=${PROJECT_SOURCE_DIR}/bench/corpora.sh
    -P ${CMAKE_CURRENT_LIST_DIR}/corpus_lists.cmake)
set_tests_properties(corpus.lists PROPERTIES LABELS corpus FIXTURES_SETUP corpus_lists TIMEOUT 900)

foreach(_corpus ${_corpora})
  add_test(NAME corpus.${_corpus}
    COMMAND ${CMAKE_COMMAND} -DVNXPARSE=$<TARGET_FILE:vnxparse> -DNAME=${_corpus}
      -DLISTS=${_corpus_lists_dir}/${_corpus}.list -DWORK_DIR=${_corpus_work}
      -P ${CMAKE_CURRENT_LIST_DIR}/sweep_corpus.cmake)
  set_tests_properties(corpus.${_corpus} PROPERTIES LABELS corpus FIXTURES_REQUIRED corpus_lists
    TIMEOUT 1200 SKIP_REGULAR_EXPRESSION "SKIPPED:")
endforeach()

# A fixed seed: the same damaged files on every run, so a failure reproduces
# with 'vnxparse mutate' and the origins.txt written beside the copies.
set(_all_lists)
foreach(_corpus ${_corpora})
  list(APPEND _all_lists ${_corpus_lists_dir}/${_corpus}.list)
endforeach()
string(REPLACE ";" "|" _all_lists "${_all_lists}")
add_test(NAME corpus.mutated
  COMMAND ${CMAKE_COMMAND} -DVNXPARSE=$<TARGET_FILE:vnxparse> -DNAME=mutated
    "-DLISTS=${_all_lists}" -DWORK_DIR=${_corpus_work} -DMUTATE_SEED=20240611 -DMUTATE_COUNT=400
    -P ${CMAKE_CURRENT_LIST_DIR}/sweep_corpus.cmake)
set_tests_properties(corpus.mutated PROPERTIES LABELS corpus FIXTURES_REQUIRED corpus_lists
  TIMEOUT 1200 SKIP_REGULAR_EXPRESSION "SKIPPED:")
