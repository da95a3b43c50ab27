# Installs the build tree into a scratch prefix, then configures, builds and
# runs a tiny consumer project that finds the library with find_package and
# pkg-config.
foreach(var VNX_BUILD_DIR VNX_CONSUMER_DIR VNX_WORK_DIR)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "${var} is not set")
  endif()
endforeach()

set(prefix ${VNX_WORK_DIR}/prefix)
file(REMOVE_RECURSE ${VNX_WORK_DIR})
file(MAKE_DIRECTORY ${VNX_WORK_DIR})

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "command failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(LAST_OUTPUT "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${VNX_BUILD_DIR} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${VNX_CONSUMER_DIR} -B ${VNX_WORK_DIR}/consumer -G Ninja
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${VNX_WORK_DIR}/consumer)
run(${VNX_WORK_DIR}/consumer/consumer)
if(NOT LAST_OUTPUT MATCHES "consumer ok")
  message(FATAL_ERROR "unexpected consumer output: ${LAST_OUTPUT}")
endif()

# pkg-config must describe the same library.
find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig:${prefix}/lib/x86_64-linux-gnu/pkgconfig)
  run(${PKG_CONFIG} --libs --cflags vnxParser)
  if(NOT LAST_OUTPUT MATCHES "-lvnxParser")
    message(FATAL_ERROR "pkg-config output lacks -lvnxParser: ${LAST_OUTPUT}")
  endif()
endif()
message(STATUS "installed tree is usable")
