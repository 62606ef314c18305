# Installs the scripting module and the host kit to a scratch prefix, moves it, and lets a plain Python find them there.

cmake_minimum_required(VERSION 3.25)

set(prefix "${SCRATCH_DIR}/moved")
file(REMOVE_RECURSE "${SCRATCH_DIR}")
foreach(component IN ITEMS orbclient host_kit)
  execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --component ${component}
    --prefix "${SCRATCH_DIR}/installed" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(RENAME "${SCRATCH_DIR}/installed" "${prefix}")

set(folder "${prefix}/${PYTHON_DIR}")
file(GLOB files RELATIVE "${folder}" "${folder}/*")
list(SORT files)
set(expected orbClient.py orbClient.pyi orbClientPython_3_for_ORB.so py.typed)
if(NOT files STREQUAL expected)
  message(FATAL_ERROR "Expected in ${folder}: ${expected}; found: ${files}")
endif()

set(ENV{PYTHONPATH} "${folder}")
set(ENV{PREFIX} "${prefix}")
set(ENV{LIBRARY_DIR} "${LIBRARY_DIR}")
execute_process(COMMAND "${PYTHON}" "${CMAKE_CURRENT_LIST_DIR}/check_imports.py" COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${PYTHON}" "${CMAKE_CURRENT_LIST_DIR}/test_stub.py" COMMAND_ERROR_IS_FATAL ANY)

execute_process(COMMAND "${PYTHON}" -c "import orbClient; help(orbClient)"
  OUTPUT_VARIABLE help COMMAND_ERROR_IS_FATAL ANY)
foreach(text IN ITEMS "class channel" "getStatusVoltageMeasure" "findConnection" "HV is turned on")
  string(FIND "${help}" "${text}" found)
  if(found EQUAL -1)
    message(FATAL_ERROR "help(orbClient) does not tell of \"${text}\":\n${help}")
  endif()
endforeach()
