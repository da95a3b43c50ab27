# vnxparse sweep and mutate: the summary counts on the sample workspace plus a
# broken file, the JSON form, the exit statuses (0 with failures counted, 1 on
# a hang, 2 on bad usage or an unreadable file), and mutate's repeatability.
set(work ${WORK_DIR}/sweep)
file(REMOVE_RECURSE ${work})
file(MAKE_DIRECTORY ${work})

file(GLOB_RECURSE examples ${EXAMPLES_DIR}/*.h ${EXAMPLES_DIR}/*.cpp)
list(LENGTH examples example_count)
if(example_count LESS 2)
  message(FATAL_ERROR "expected the sample workspace under ${EXAMPLES_DIR}")
endif()
# An unclosed parenthesis: the tree cannot be built. The name needs JSON escapes.
set(broken "${work}/bro\"ken\\1.cpp")
file(WRITE ${broken} "int f() {\n  return g(1;\n}\n")
# One name per line, a blank line and a carriage return to be ignored.
string(REPLACE ";" "\n" list_text "${examples}")
file(WRITE ${work}/files.list "${list_text}\n\n${broken}\r\n")
math(EXPR total "${example_count} + 1")

function(run_sweep expected_rc)
  execute_process(COMMAND ${VNXPARSE} sweep ${ARGN}
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL expected_rc)
    message(FATAL_ERROR "sweep ${ARGN}: expected exit ${expected_rc}, got ${rc}\n${out}${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
  set(err "${err}" PARENT_SCOPE)
endfunction()

function(expect_line text)
  string(REGEX MATCH "\n${text}\n" found "\n${out}")
  if(NOT found)
    message(FATAL_ERROR "expected a line matching '${text}' in:\n${out}")
  endif()
endfunction()

# Text summary: the broken file is counted, named with its message, and the
# library's own diagnostics stay off standard error.
run_sweep(0 --files-from ${work}/files.list)
expect_line("files: +${total}")
expect_line("preprocessing failures: +0")
expect_line("tree-building failures: +1")
expect_line("hangs \\(over 10 s\\): +0")
expect_line("leaked trees: +0")
expect_line("nodes: +[1-9][0-9]*")
expect_line("wall time: +[0-9.]+ s, [0-9.]+ MB/s, [0-9]+ files/s")
expect_line("       1  tree: Missing [^\n]*  \\(first in .*bro\"ken.1\\.cpp\\)")
expect_line("  tree: .*bro\"ken.1\\.cpp: Missing [^\n]*")
if(NOT err STREQUAL "")
  message(FATAL_ERROR "sweep wrote to standard error: ${err}")
endif()

# The same through --json: one object on one line, which parses, with the
# same counts; the name keeps its quote and backslash.
run_sweep(0 --json ${examples} ${broken})
if(NOT out MATCHES "^{\"files\": [0-9]+, .*}\n$")
  message(FATAL_ERROR "--json: not one JSON object on one line:\n${out}")
endif()
string(JSON files ERROR_VARIABLE json_error GET "${out}" files)
if(json_error)
  message(FATAL_ERROR "--json: invalid JSON (${json_error}):\n${out}")
endif()
string(JSON tree_failures GET "${out}" tree_failures)
string(JSON hangs GET "${out}" hangs)
string(JSON nodes GET "${out}" nodes)
string(JSON ratio GET "${out}" tree_bytes_per_source_byte)
string(JSON failed_file GET "${out}" failures 0 file)
string(JSON reason_count GET "${out}" failure_reasons 0 count)
if(NOT files EQUAL total OR NOT tree_failures EQUAL 1 OR NOT hangs EQUAL 0 OR NOT nodes GREATER 0
    OR NOT ratio GREATER 0 OR NOT failed_file STREQUAL broken OR NOT reason_count EQUAL 1)
  message(FATAL_ERROR "--json: unexpected values:\n${out}")
endif()

# A hang limit no file can meet: every file is reported, exit 1.
run_sweep(1 --hang-seconds 0.000000001 --show 0 ${examples})
expect_line("hangs \\(over 1e-09 s\\): +${example_count}")
expect_line("   *${example_count}  hang: took #\\.# s  \\(first in .*\\)")

# An unreadable file is counted, the rest is swept, exit 2.
run_sweep(2 ${examples} ${work}/no/such/file.h ${work})
expect_line("files: +${example_count}")
expect_line("unreadable files: +2")

# Bad usage.
run_sweep(2)
run_sweep(2 --files-from ${work}/no/such.list)
run_sweep(2 --unknown-option ${broken})
run_sweep(2 --hang-seconds 0 ${broken})

# mutate: the same seed gives the same damaged files, another seed others.
function(run_mutate dir seed)
  execute_process(COMMAND ${VNXPARSE} mutate --out ${dir} --seed ${seed} --count 3 --files-from ${work}/files.list
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "mutate: exit ${rc}\n${out}${err}")
  endif()
  file(STRINGS ${dir}/mutated.list names)
  list(LENGTH names count)
  if(NOT count EQUAL 3)
    message(FATAL_ERROR "mutate: expected 3 names in ${dir}/mutated.list, got ${count}")
  endif()
  set(names "${names}" PARENT_SCOPE)
endfunction()

run_mutate(${work}/m1 7)
set(first_names "${names}")
run_mutate(${work}/m2 7)
set(same_as_original 0)
foreach(name ${first_names})
  get_filename_component(base ${name} NAME)
  file(READ ${work}/m1/${base} a HEX)
  file(READ ${work}/m2/${base} b HEX)
  if(NOT a STREQUAL b)
    message(FATAL_ERROR "mutate: seed 7 gave two different ${base}")
  endif()
endforeach()
file(READ ${work}/m1/origins.txt origins)
file(READ ${work}/m2/origins.txt origins_again)
string(REPLACE "/m2/" "/m1/" origins_again "${origins_again}")
if(NOT origins STREQUAL origins_again)
  message(FATAL_ERROR "mutate: seed 7 drew two different samples")
endif()
# Every copy differs from its original.
string(REGEX MATCHALL "[^\n]+" pairs "${origins}")
foreach(pair ${pairs})
  string(REGEX REPLACE "\t.*" "" copy "${pair}")
  string(REGEX REPLACE ".*\t" "" original "${pair}")
  file(READ ${copy} a HEX)
  file(READ ${original} b HEX)
  if(a STREQUAL b)
    message(FATAL_ERROR "mutate: ${copy} is the same as ${original}")
  endif()
endforeach()
# The damaged copies sweep without a crash.
run_sweep(0 --files-from ${work}/m1/mutated.list)
execute_process(COMMAND ${VNXPARSE} mutate --seed 1 ${broken} RESULT_VARIABLE rc OUTPUT_QUIET ERROR_QUIET)
if(NOT rc EQUAL 2)
  message(FATAL_ERROR "mutate without --out: expected exit 2, got ${rc}")
endif()
