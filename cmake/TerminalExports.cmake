# terminal_exports(<target> <symbol>...): what is seen of a library from outside is these symbols and nothing else, what
# static libraries and templates bring along included. The symbols are linked in even if nothing refers to them.
function(terminal_exports target)
  list(JOIN ARGN "; " symbols)
  set(script "${CMAKE_CURRENT_BINARY_DIR}/${target}.map")
  file(GENERATE OUTPUT "${script}" CONTENT "{ global: ${symbols}; local: *; };\n")
  target_link_options(${target} PRIVATE "-Wl,--version-script=${script}")
  foreach(symbol IN LISTS ARGN)
    target_link_options(${target} PRIVATE "-Wl,-u,${symbol}")
  endforeach()
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${script}")
endfunction()
