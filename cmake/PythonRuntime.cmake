# The Python runtime beside an application: python-3.7.1/Lib holds the standard library and its extension modules side by
# side, as the interpreter's one search path; python-3.7.1/lib is the same folder under the name by which it is looked
# for.

set(terminal_python_extensions "${Python3_STDLIB}/lib-dynload")

# What a console program has no use for.
set(terminal_python_left_out lib-dynload site-packages test idlelib turtledemo lib2to3 ensurepip)

# terminal_link_python_runtime(<folder of the application>): a build tree gets links, which take no room and no time.
function(terminal_link_python_runtime application_dir)
  set(home "${application_dir}/python-3.7.1")
  # Made anew when another Python is chosen.
  if(EXISTS "${home}/made-of")
    file(READ "${home}/made-of" made_of)
    if(made_of STREQUAL "${Python3_STDLIB}")
      return()
    endif()
  endif()
  file(REMOVE_RECURSE "${home}")
  file(MAKE_DIRECTORY "${home}/Lib")
  file(GLOB modules "${Python3_STDLIB}/*" "${terminal_python_extensions}/*")
  foreach(module IN LISTS modules)
    cmake_path(GET module FILENAME name)
    if(NOT name IN_LIST terminal_python_left_out)
      file(CREATE_LINK "${module}" "${home}/Lib/${name}" SYMBOLIC)
    endif()
  endforeach()
  # One and the same where names differ by more than their case; elsewhere the two are one already.
  if(NOT EXISTS "${home}/lib")
    file(CREATE_LINK Lib "${home}/lib" SYMBOLIC)
  endif()
  file(WRITE "${home}/made-of" "${Python3_STDLIB}")
endfunction()

# terminal_install_python_runtime(<folder, relative to the prefix> <component>): an installation gets copies.
function(terminal_install_python_runtime destination component)
  set(home "${destination}/python-3.7.1")
  set(left_out "")
  foreach(name IN LISTS terminal_python_left_out ITEMS __pycache__)
    list(APPEND left_out PATTERN "${name}" EXCLUDE)
  endforeach()
  install(DIRECTORY "${Python3_STDLIB}/" DESTINATION "${home}/Lib" COMPONENT ${component} ${left_out})
  install(DIRECTORY "${terminal_python_extensions}/" DESTINATION "${home}/Lib" COMPONENT ${component})
  install(CODE "
    set(link \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${home}/lib\")
    if(NOT EXISTS \"\${link}\")
      file(CREATE_LINK Lib \"\${link}\" SYMBOLIC)
    endif()" COMPONENT ${component})
endfunction()
