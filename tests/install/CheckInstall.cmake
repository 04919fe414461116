# Script mode: install, configure and build the host, then run it.
file(REMOVE_RECURSE ${WORK_DIR})
set(PREFIX ${WORK_DIR}/prefix)

function(run_step)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "Step failed: ${ARGN}\n${out}\n${err}")
  endif()
endfunction()

run_step(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX})
run_step(${CMAKE_COMMAND} -S ${HOST_SOURCE_DIR} -B ${WORK_DIR}/host -G ${GENERATOR}
  -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_BUILD_TYPE=Release
  # The build's own compiler, and its sanitizer flags when the libraries carry them.
  -DCMAKE_CXX_COMPILER=${CXX_COMPILER} "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${CXX_FLAGS}")
run_step(${CMAKE_COMMAND} --build ${WORK_DIR}/host)
run_step(${WORK_DIR}/host/vexa-install-host)
# The persistence host opens a window: only with a display.
if(DEFINED ENV{DISPLAY})
  run_step(${WORK_DIR}/host/vexa-persist-host write ${WORK_DIR}/persist-state)
  run_step(${WORK_DIR}/host/vexa-persist-host check ${WORK_DIR}/persist-state)
  run_step(${WORK_DIR}/host/vexa-modules-host ${WORK_DIR}/modules)
else()
  message(STATUS "No display: the two-run persistence host is skipped")
endif()
message(STATUS "Host program built and ran against the installed package")
