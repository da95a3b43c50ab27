# vnxparse prepro / comments / directives / tree on a small file whose
# expected output follows from the stream rules, plus their failure statuses.
file(MAKE_DIRECTORY ${WORK_DIR})

function(run_cli expected_rc)
  execute_process(COMMAND ${VNXPARSE} ${ARGN} OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
  if(NOT rc EQUAL expected_rc)
    message(FATAL_ERROR "vnxparse ${ARGN}: expected exit ${expected_rc}, got ${rc}\n${out}\n${err}")
  endif()
  set(OUT "${out}" PARENT_SCOPE)
  set(ERR "${err}" PARENT_SCOPE)
endfunction()

function(expect_equal what actual expected)
  if(NOT "${actual}" STREQUAL "${expected}")
    message(FATAL_ERROR "${what}:\n--- expected\n${expected}\n--- actual\n${actual}")
  endif()
endfunction()

set(sample ${DATA_DIR}/cli/sample.h)

run_cli(0 prepro ${sample})
expect_equal("prepro" "${OUT}" "int kept = ONE;void f(int a);\n")

run_cli(0 prepro --expand ONE ${sample})
expect_equal("prepro --expand" "${OUT}" "int kept = 1;void f(int a);\n")

run_cli(0 comments ${sample})
# The dead #else branch is recorded at 1:1 with its own line count.
expect_equal("comments" "${OUT}"
"vnxCComment\t1:1\t1:10\tint dead;\\n
vnxCComment\t3:18\t3:27\t/* note */
vnxCppComment\t7:1\t7:7\t// tail
")

run_cli(0 directives ${sample})
foreach(line "## preproType : DefineSimple" "## definedIdentifier : ONE"
             "************* Groupe de directives ***************")
  string(FIND "${OUT}" "${line}" at)
  if(at LESS 0)
    message(FATAL_ERROR "directives output lacks '${line}':\n${OUT}")
  endif()
endforeach()

run_cli(0 tree ${sample})
string(FIND "${OUT}" "vnxInstruction  int kept = ONE" at)
if(at LESS 0)
  message(FATAL_ERROR "tree output lacks the first instruction:\n${OUT}")
endif()

run_cli(3 tree ${DATA_DIR}/cli/unbalanced.h)
string(FIND "${ERR}" "Missing TAPBloc end at line 1 col 9" at)
if(at LESS 0)
  message(FATAL_ERROR "tree on an unbalanced file: unexpected message: ${ERR}")
endif()

foreach(cmd prepro comments directives tree)
  run_cli(2 ${cmd} ${WORK_DIR}/no/such/file.h)
  run_cli(2 ${cmd})
endforeach()
