# The contract's headers and library come from an installed kit: <prefix>/include/{hostclient,hostsdk} and a library
# under <prefix>/lib. The kit's include folder goes before ours, so that a contract header is never taken from here.
# It is not the imported library that brings it: as that one's include folder it would be a system folder to the
# compiler, and those are searched last, after the contract's headers in our own tree.

set(TERMINAL_HOST_KIT_LIBRARY_NAME "host_kit" CACHE STRING "Base name of the kit's library")

if(NOT EXISTS "${TERMINAL_HOST_KIT}/include/hostsdk/kd_plugin_interface.h")
  message(FATAL_ERROR "No host kit under \"${TERMINAL_HOST_KIT}\": include/hostsdk/kd_plugin_interface.h is missing. "
    "Pass -DTERMINAL_HOST_KIT=<prefix> with the folder that holds include/ and lib/.")
endif()
find_library(TERMINAL_HOST_KIT_LIBRARY "${TERMINAL_HOST_KIT_LIBRARY_NAME}"
  PATHS "${TERMINAL_HOST_KIT}" PATH_SUFFIXES "${CMAKE_INSTALL_LIBDIR}" lib NO_DEFAULT_PATH)
if(NOT TERMINAL_HOST_KIT_LIBRARY)
  message(FATAL_ERROR "No library \"${TERMINAL_HOST_KIT_LIBRARY_NAME}\" under \"${TERMINAL_HOST_KIT}/lib\". "
    "Name another one with -DTERMINAL_HOST_KIT_LIBRARY_NAME=<name>.")
endif()

add_library(host_kit UNKNOWN IMPORTED)
set_target_properties(host_kit PROPERTIES
  IMPORTED_LOCATION "${TERMINAL_HOST_KIT_LIBRARY}"
  INTERFACE_LINK_LIBRARIES "Qt5::Widgets")
include_directories(BEFORE "${TERMINAL_HOST_KIT}/include")

add_library(hostclient INTERFACE)
add_library(hostsdk INTERFACE)
target_link_libraries(hostclient INTERFACE host_kit)
target_link_libraries(hostsdk INTERFACE host_kit)
