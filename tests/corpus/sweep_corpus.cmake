# One corpus sweep: runs 'vnxparse sweep --json' over the files of LISTS
# ('|'-separated list files) and fails on a crash, a sanitizer report, a leak,
# a hang or an unreadable file. Failure counts are printed and written to
# WORK_DIR/NAME.summary (and the JSON to WORK_DIR/NAME.json), not asserted.
# With MUTATE_SEED, the sweep runs over MUTATE_COUNT damaged copies made by
# 'vnxparse mutate' under WORK_DIR/NAME/ instead.
string(REPLACE "|" ";" lists "${LISTS}")
foreach(list ${lists})
  if(NOT EXISTS ${list})
    message(STATUS "SKIPPED: ${list} is missing (bench/corpora.sh writes it)")
    return()
  endif()
endforeach()
file(MAKE_DIRECTORY ${WORK_DIR})

set(from_args)
foreach(list ${lists})
  list(APPEND from_args --files-from ${list})
endforeach()

set(sanitizer_report "AddressSanitizer|LeakSanitizer|UndefinedBehaviorSanitizer|runtime error:")

if(DEFINED MUTATE_SEED)
  set(out_dir ${WORK_DIR}/${NAME})
  file(REMOVE_RECURSE ${out_dir})
  execute_process(COMMAND ${VNXPARSE} mutate --out ${out_dir} --seed ${MUTATE_SEED} --count ${MUTATE_COUNT}
      ${from_args}
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0 OR err MATCHES "${sanitizer_report}")
    message(FATAL_ERROR "vnxparse mutate failed (exit ${rc}):\n${out}${err}")
  endif()
  set(from_args --files-from ${out_dir}/mutated.list)
endif()

execute_process(COMMAND ${VNXPARSE} sweep --json --show 20 ${from_args}
  RESULT_VARIABLE rc OUTPUT_VARIABLE json ERROR_VARIABLE err)
file(WRITE ${WORK_DIR}/${NAME}.json "${json}")

if(err MATCHES "${sanitizer_report}")
  message(FATAL_ERROR "${NAME}: sanitizer report (exit ${rc}):\n${err}")
endif()
if(NOT rc MATCHES "^[0-2]$")
  message(FATAL_ERROR "${NAME}: vnxparse sweep crashed or was stopped (${rc}):\n${err}")
endif()

string(JSON files ERROR_VARIABLE json_error GET "${json}" files)
if(json_error)
  message(FATAL_ERROR "${NAME}: the sweep printed no valid JSON (${json_error}):\n${json}\n${err}")
endif()
foreach(field bytes unreadable preprocessing_failures tree_failures hangs leaks error_lines nodes
    tree_bytes_per_source_byte peak_rss_kib rss_last_kib wall_seconds mb_per_second)
  string(JSON ${field} GET "${json}" ${field})
endforeach()

# Three decimals are enough for a report.
foreach(field tree_bytes_per_source_byte wall_seconds mb_per_second)
  string(REGEX REPLACE "^([0-9]+\\.[0-9]?[0-9]?[0-9]?).*" "\\1" ${field} "${${field}}")
endforeach()
string(CONCAT summary "${NAME}: ${files} files, ${bytes} bytes, ${wall_seconds} s (${mb_per_second} MB/s), "
  "${nodes} nodes, ${tree_bytes_per_source_byte} tree bytes per source byte, peak ${peak_rss_kib} KiB "
  "(${rss_last_kib} KiB resident at the end)\n"
  "  preprocessing failures ${preprocessing_failures}, tree failures ${tree_failures}, library error "
  "lines ${error_lines}, hangs ${hangs}, leaks ${leaks}, unreadable ${unreadable}\n")
foreach(kind failure_reasons error_reasons)
  string(JSON count LENGTH "${json}" ${kind})
  if(count GREATER 0)
    math(EXPR last "${count} - 1")
    foreach(i RANGE ${last})
      string(JSON reason GET "${json}" ${kind} ${i} reason)
      string(JSON n GET "${json}" ${kind} ${i} count)
      string(JSON first GET "${json}" ${kind} ${i} first_file)
      string(APPEND summary "  ${n}  ${reason}  (first: ${first})\n")
    endforeach()
  endif()
endforeach()
file(WRITE ${WORK_DIR}/${NAME}.summary "${summary}")
message(STATUS "${summary}")

if(NOT rc EQUAL 0 OR hangs GREATER 0 OR leaks GREATER 0 OR unreadable GREATER 0)
  string(JSON failures GET "${json}" failures)
  message(FATAL_ERROR "${NAME}: hangs ${hangs}, leaks ${leaks}, unreadable ${unreadable} (exit ${rc})\n"
    "${failures}\n${err}")
endif()
