# Installs workbench and plug-in to a scratch prefix, moves it, and executes a Python file there. Nothing of the
# build tree or of the Python that the build found may be needed.

cmake_minimum_required(VERSION 3.25)

set(prefix "${SCRATCH_DIR}/moved")
file(REMOVE_RECURSE "${SCRATCH_DIR}")
foreach(component IN ITEMS plugin workbench)
  execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --component ${component}
    --prefix "${SCRATCH_DIR}/installed" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(RENAME "${SCRATCH_DIR}/installed" "${prefix}")

file(GLOB_RECURSE left_overs "${prefix}/*/test_support*" "${prefix}/*.opt-1.pyc" "${prefix}/*/idlelib/*")
if(left_overs)
  message(FATAL_ERROR "The installation holds what nobody needs: ${left_overs}")
endif()

# The compiled modules that came along must be good: nothing is written here, and no module compiled anew.
set(ENV{PYTHONDONTWRITEBYTECODE} 1)
set(ENV{PREFIX} "${prefix}")
set(ENV{FOREIGN} "${BUILD_DIR}:${PYTHON_ROOT}")
execute_process(
  COMMAND "${prefix}/${BINDIR}/terminal-workbench" --config-dir "${SCRATCH_DIR}/config"
    --run-python-file "${CMAKE_CURRENT_LIST_DIR}/check_runtime.py" --quit-when-done
  INPUT_FILE /dev/null RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE error)
if(NOT status EQUAL 0 OR NOT output MATCHES "\nhost: sound\nchild: sound\n")
  message(FATAL_ERROR "The installed workbench (exit code ${status}):\n${output}\n${error}")
endif()
