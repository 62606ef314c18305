# Puts the Python that this build uses in the cache of a user who has no other, and lets a project look for it.

cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${SCRATCH_DIR}")
set(project "${SCRATCH_DIR}/project")
file(WRITE "${project}/CMakeLists.txt" "
cmake_minimum_required(VERSION 3.25)
project(finds_python LANGUAGES C)
list(APPEND CMAKE_MODULE_PATH \"${SOURCE_DIR}/cmake\")
include(TerminalPython)
")

foreach(cache IN ITEMS home/.cache elsewhere)
  set(prefix "${SCRATCH_DIR}/${cache}/tarn-terminal/python-3.7.16")
  cmake_path(GET prefix PARENT_PATH folder)
  file(MAKE_DIRECTORY "${folder}")
  file(CREATE_LINK "${PYTHON}" "${prefix}" SYMBOLIC)
  set(variables "HOME=${SCRATCH_DIR}/home" --unset=XDG_CACHE_HOME)
  if(cache STREQUAL "elsewhere")
    list(APPEND variables "XDG_CACHE_HOME=${SCRATCH_DIR}/elsewhere")
  endif()
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env --unset=PYENV_ROOT --unset=Python3_ROOT_DIR ${variables}
      "${CMAKE_COMMAND}" -S "${project}" -B "${SCRATCH_DIR}/build" --fresh
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  file(STRINGS "${SCRATCH_DIR}/build/CMakeCache.txt" found REGEX "^_Python3_EXECUTABLE:")
  if(NOT status EQUAL 0 OR NOT found MATCHES "=${prefix}/bin/python3")
    message(FATAL_ERROR "The Python in ${prefix} was not found, but \"${found}\":\n${output}")
  endif()
endforeach()
