# The Python runtime beside an application, in the folder python-3.7.1:
#   Lib             the standard library and its extension modules side by side: the host's one search path
#   lib             by which the host looks for the runtime; also what a plain interpreter searches
#   bin/python3.7   a plain interpreter, for the processes that a script starts: the host is none

set(terminal_python_extensions "${Python3_STDLIB}/lib-dynload")

# What a console program has no use for. A second toolkit for windows would pull its libraries in.
set(terminal_python_left_out lib-dynload site-packages test idlelib tkinter turtle.py turtledemo lib2to3 ensurepip)

# terminal_link_python_runtime(<folder of the application>): a build tree gets links, which take no room and no time.
function(terminal_link_python_runtime application_dir)
  set(home "${application_dir}/python-3.7.1")
  # Made anew when another Python is chosen.
  set(origin "${Python3_EXECUTABLE} ${Python3_STDLIB} without ${terminal_python_left_out}")
  if(EXISTS "${home}/made-of")
    file(READ "${home}/made-of" made_of)
    if(made_of STREQUAL origin)
      return()
    endif()
  endif()
  file(REMOVE_RECURSE "${home}")
  file(MAKE_DIRECTORY "${home}/Lib" "${home}/lib" "${home}/bin")
  file(GLOB modules "${Python3_STDLIB}/*" "${terminal_python_extensions}/*")
  foreach(module IN LISTS modules)
    cmake_path(GET module FILENAME name)
    if(NOT name IN_LIST terminal_python_left_out AND NOT name MATCHES "^_tkinter")
      file(CREATE_LINK "${module}" "${home}/Lib/${name}" SYMBOLIC)
    endif()
  endforeach()
  # A plain interpreter follows this link to where it belongs, and finds its own library there.
  file(CREATE_LINK "${Python3_EXECUTABLE}" "${home}/bin/python3.7" SYMBOLIC)
  file(WRITE "${home}/made-of" "${origin}")
endfunction()

# terminal_install_python_runtime(<folder, relative to the prefix> <component>): an installation gets copies, the
# interpreter's own library among them, and needs nothing of the Python that it was built with.
function(terminal_install_python_runtime destination component)
  set(home "${destination}/python-3.7.1")
  # Compiled modules are taken along, since an installation is often not to be written to; optimised ones are not.
  set(left_out "")
  foreach(name IN LISTS terminal_python_left_out ITEMS "config-*" "*.opt-[12].pyc")
    list(APPEND left_out PATTERN "${name}" EXCLUDE)
  endforeach()
  install(DIRECTORY "${Python3_STDLIB}/" DESTINATION "${home}/Lib" COMPONENT ${component} ${left_out})
  install(DIRECTORY "${terminal_python_extensions}/" DESTINATION "${home}/Lib" COMPONENT ${component}
    PATTERN "_test*" EXCLUDE PATTERN "_tkinter*" EXCLUDE PATTERN "__pycache__" EXCLUDE)
  install(TARGETS python_runtime_interpreter COMPONENT ${component} RUNTIME DESTINATION "${home}/bin")
  list(GET Python3_LIBRARIES 0 library)
  file(REAL_PATH "${library}" library)
  install(FILES "${library}" DESTINATION "${home}/lib" COMPONENT ${component})
  # A plain interpreter knows its folders by lib/python3.7 and, in there, lib-dynload, empty though it is.
  install(DIRECTORY DESTINATION "${home}/Lib/lib-dynload" COMPONENT ${component})
  # The copies would look for libraries where their Python was built first. Stripping is asked for as for any target.
  install(CODE "
    set(home \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${home}\")
    if(NOT EXISTS \"\${home}/lib/python3.7\")
      file(CREATE_LINK ../Lib \"\${home}/lib/python3.7\" SYMBOLIC)
    endif()
    file(GLOB libraries \"\${home}/lib/*.so*\" \"\${home}/Lib/*.so\")
    foreach(library IN LISTS libraries)
      file(RPATH_REMOVE FILE \"\${library}\")
    endforeach()
    if(CMAKE_INSTALL_DO_STRIP)
      execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-unneeded \${libraries} COMMAND_ERROR_IS_FATAL ANY)
    endif()" COMPONENT ${component})
endfunction()
