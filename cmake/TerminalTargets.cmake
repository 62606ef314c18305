# One kind of library and one kind of test, so that each folder's CMakeLists.txt only lists its files.

# terminal_library(<name> SOURCES ... LINK ...): the static, position-independent library of one folder.
function(terminal_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
  add_library(${name} STATIC ${arg_SOURCES})
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${arg_LINK})
endfunction()

# terminal_test(<class in snake case> LABEL <folder> LINK ...): builds tst_<class>.cpp and gives it to CTest.
function(terminal_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL;TIMEOUT" "SOURCES;LINK;ARGUMENTS;DEFINITIONS")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 300)
  endif()
  set(target tst_${arg_LABEL}_${name})
  add_executable(${target} tst_${name}.cpp ${arg_SOURCES})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE ${arg_LINK} Qt5::Test)
  target_compile_definitions(${target} PRIVATE ${arg_DEFINITIONS})
  # -silent leaves out what passed, so that a failure is not buried in it.
  add_test(NAME ${arg_LABEL}.${name} COMMAND ${target} -silent ${arg_ARGUMENTS})
  set_tests_properties(${arg_LABEL}.${name} PROPERTIES
    LABELS ${arg_LABEL}
    TIMEOUT ${arg_TIMEOUT}
    ENVIRONMENT "${TERMINAL_TEST_ENVIRONMENT}")
endfunction()
