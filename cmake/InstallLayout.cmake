# Where an installation keeps what, relative to its prefix.
#
#   bin/terminal-workbench                   a link to the program
#   <libdir>/tarn-terminal-workbench/        the program, and beside it what it alone needs: the Python runtime, in
#                                            libraries/ the host's, in scripting/ orbClient for a plain interpreter
#   <libdir>/tarnControl/plugins/            the plug-in
#   share/doc/tarn-terminal-workbench/       documents and examples
#
# The program looks for its Python runtime beside itself, and a folder has no place in bin.

include(GNUInstallDirs)

set(TERMINAL_PACKAGE_NAME tarn-terminal-workbench)
set(application_dir "${CMAKE_INSTALL_LIBDIR}/${TERMINAL_PACKAGE_NAME}")
if(TERMINAL_HOST_KIT)
  set(application_dir "${CMAKE_INSTALL_BINDIR}")
endif()
set(TERMINAL_APPLICATION_DIR "${application_dir}" CACHE STRING
  "Where the host's program is, with python-3.7.1 beside it, relative to the prefix")
set(TERMINAL_PLUGIN_DIR "${CMAKE_INSTALL_LIBDIR}/tarnControl/plugins" CACHE STRING
  "Where the plug-in is installed, relative to the prefix")
mark_as_advanced(TERMINAL_APPLICATION_DIR TERMINAL_PLUGIN_DIR)
set(TERMINAL_DOC_DIR "${CMAKE_INSTALL_DATAROOTDIR}/doc/${TERMINAL_PACKAGE_NAME}")

# Whatever the umask of whoever installs.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# terminal_relative_path(<result> <from folder> <to folder>): both are relative to the prefix.
function(terminal_relative_path result from to)
  file(RELATIVE_PATH path "/prefix/${from}" "/prefix/${to}")
  set(${result} "${path}" PARENT_SCOPE)
endfunction()
