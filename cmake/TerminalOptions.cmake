# What a build of this project can be asked for, and the compiler settings that follow from it.

set(TERMINAL_HOST_KIT "" CACHE PATH
  "Prefix of an installed host kit (include/hostclient, include/hostsdk, lib/libhost_kit.so). \
Empty builds our own kit and the workbench.")
option(TERMINAL_WARNINGS_AS_ERRORS "Fail on compiler warnings (set by the presets that CI runs)" OFF)
option(TERMINAL_BENCHMARKS "Build the programs under benchmarks/" OFF)
option(TERMINAL_FUZZERS "Build the fuzz targets under tests/fuzz (clang only)" OFF)
set(TERMINAL_SANITIZERS "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

add_compile_definitions(
  QT_DEPRECATED_WARNINGS
  QT_DISABLE_DEPRECATED_BEFORE=0x050E00
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_KEYWORDS)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wcast-qual -Wold-style-cast)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # qCWarning(category) << ... is what Qt's manual says, and its macro is called without variadic arguments.
    add_compile_options(-Wno-gnu-zero-variadic-macro-arguments)
  endif()
  add_link_options(-Wl,--no-undefined -Wl,--as-needed)
  if(TERMINAL_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
  endif()
endif()

if(TERMINAL_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link) # libFuzzer sees which code an input reaches
endif()

if(TERMINAL_SANITIZERS)
  # An optimised build, but one that is made to find mistakes.
  add_compile_definitions(QT_FORCE_ASSERTS)
  add_compile_options(-fsanitize=${TERMINAL_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TERMINAL_SANITIZERS})
  # clang resolves the sanitizer's own symbols at run time, so libraries are undefined without it.
  add_link_options(-Wl,-z,undefs)
endif()
