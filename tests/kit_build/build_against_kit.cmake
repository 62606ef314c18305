# Installs our host kit to a scratch prefix, copies the product's sources beside it, and builds the plug-in there as
# somebody would who has the host's real kit.

cmake_minimum_required(VERSION 3.25)

set(product "${SCRATCH_DIR}/product")
set(kit "${SCRATCH_DIR}/kit")
file(REMOVE_RECURSE "${SCRATCH_DIR}")

# run(<what is done> <command>...): its output is shown when it fails.
function(run what)
  message(STATUS "${what}")
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${what} failed (${status}):\n${output}")
  endif()
endfunction()

# refused(<what is wrong> <regular expression> <argument of cmake>...): configuring must fail, and say why.
function(refused what expected)
  message(STATUS "Configuring with ${what}")
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -S "${product}" -B "${SCRATCH_DIR}/refused" --fresh -G "${GENERATOR}"
      "-DCMAKE_CXX_COMPILER=${COMPILER}" ${ARGN}
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  # cmake breaks its messages' lines where it likes.
  string(REGEX REPLACE "[ \n]+" " " output "${output}")
  if(status EQUAL 0)
    message(FATAL_ERROR "${what} was accepted:\n${output}")
  elseif(NOT output MATCHES "${expected}")
    message(FATAL_ERROR "${what} was refused without saying \"${expected}\":\n${output}")
  endif()
endfunction()

run("Installing the kit"
  "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --component host_kit --prefix "${kit}")
if(EXISTS "${kit}/include/workbench" OR EXISTS "${kit}/include/plugin")
  message(FATAL_ERROR "The kit holds more than the contract")
endif()

foreach(part IN ITEMS CMakeLists.txt cmake orbclient command_terminal python_terminal plugin)
  if(EXISTS "${SOURCE_DIR}/${part}")
    file(COPY "${SOURCE_DIR}/${part}" DESTINATION "${product}")
  endif()
endforeach()
# A checkout has our copy of the contract as well. It must not be taken, so here it cannot be compiled.
foreach(folder IN ITEMS hostclient hostsdk)
  file(GLOB headers RELATIVE "${SOURCE_DIR}" "${SOURCE_DIR}/${folder}/*.h")
  foreach(header IN LISTS headers)
    file(WRITE "${product}/${header}" "#error \"${header} comes from the source tree and not from the kit\"\n")
  endforeach()
endforeach()

string(REPLACE "." "\\." empty_prefix "No host kit under \"${SCRATCH_DIR}/empty\": include/hostsdk/kd_plugin_interface.h is missing.")
refused("an empty prefix" "${empty_prefix}" "-DTERMINAL_HOST_KIT=${SCRATCH_DIR}/empty")
refused("a library that is not there" "No library \"not_there\" under \"${kit}/lib\""
  "-DTERMINAL_HOST_KIT=${kit}" "-DTERMINAL_HOST_KIT_LIBRARY_NAME=not_there")

run("Configuring the plug-in with the kit"
  "${CMAKE_COMMAND}" -S "${product}" -B "${SCRATCH_DIR}/build" -G "${GENERATOR}"
    "-DCMAKE_BUILD_TYPE=${BUILD_TYPE}" "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DTERMINAL_HOST_KIT=${kit}"
    "-DPython3_ROOT_DIR=${PYTHON_ROOT}")
run("Building the plug-in with the kit"
  "${CMAKE_COMMAND}" --build "${SCRATCH_DIR}/build" --parallel 2 --target TerminalPlugin)

file(GLOB_RECURSE plugins "${SCRATCH_DIR}/build/*TerminalPlugin.so")
list(LENGTH plugins count)
if(NOT count EQUAL 1)
  message(FATAL_ERROR "One plug-in library expected, found ${count}: ${plugins}")
endif()

# The host owns the contract's classes: the plug-in asks for the kit's library instead of bringing a copy.
execute_process(COMMAND "${READELF}" --dynamic --wide "${plugins}" OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
if(NOT dynamic MATCHES "NEEDED[^\n]*libhost_kit\\.so")
  message(FATAL_ERROR "The plug-in does not ask for the kit's library:\n${dynamic}")
endif()
execute_process(COMMAND "${READELF}" --dyn-syms --wide "${plugins}" OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
foreach(entry IN ITEMS qt_plugin_instance qt_plugin_query_metadata PyInit_orbClientPython_3_for_ORB)
  if(NOT symbols MATCHES " DEFAULT +[0-9]+ ${entry}\n")
    message(FATAL_ERROR "The plug-in has no entry ${entry}:\n${symbols}")
  endif()
endforeach()

file(READ "${SCRATCH_DIR}/build/compile_commands.json" commands)
foreach(path IN ITEMS hostclient hostsdk workbench orbclient command_terminal plugin)
  string(FIND "${commands}" "${SOURCE_DIR}/${path}/" found)
  if(NOT found EQUAL -1)
    message(FATAL_ERROR "The build reached back into ${SOURCE_DIR}/${path}")
  endif()
endforeach()
message(STATUS "Built ${plugins}")
