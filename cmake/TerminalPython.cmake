# Finds Python 3.7, and gives three targets to link with:
#   terminal_python_headers  the headers alone: for code that is loaded into an interpreter, whoever brings that one
#   Python3::Module          for an extension module, which takes the interpreter's symbols from the process
#   Python3::Python          the interpreter itself: for a program or a library that brings it along
# -DPython3_ROOT_DIR=<prefix> says where to look. tools/provide_python looks at the same places.

# pyenv's command "python3.7" does not run unless that version is selected, so its folders are looked at directly.
# After them comes the one that tools/provide_python has built.
function(terminal_find_python_root result)
  set(roots "$ENV{Python3_ROOT_DIR}")
  foreach(home IN ITEMS "$ENV{PYENV_ROOT}" "$ENV{HOME}/.pyenv")
    if(home)
      file(GLOB versions LIST_DIRECTORIES true "${home}/versions/3.7.*")
      list(SORT versions COMPARE NATURAL ORDER DESCENDING)
      list(APPEND roots ${versions})
    endif()
  endforeach()
  set(cache "$ENV{XDG_CACHE_HOME}")
  if(NOT cache)
    set(cache "$ENV{HOME}/.cache")
  endif()
  list(APPEND roots "${cache}/tarn-terminal/python-3.7.16")
  foreach(root IN LISTS roots)
    if(EXISTS "${root}/include/python3.7m/Python.h")
      set(${result} "${root}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
endfunction()

if(NOT Python3_ROOT_DIR)
  terminal_find_python_root(Python3_ROOT_DIR)
endif()
set(Python3_FIND_STRATEGY LOCATION)
find_package(Python3 3.7 EXACT COMPONENTS Interpreter Development.Module Development.Embed)
if(NOT Python3_FOUND)
  message(FATAL_ERROR "Python 3.7 with its headers and its shared library was not found. "
    "Looked at Python3_ROOT_DIR, PYENV_ROOT, ~/.pyenv, the user's cache and PATH. "
    "tools/bootstrap builds one. Or pass -DPython3_ROOT_DIR=<prefix> with the folder that holds include/python3.7m and lib/.")
endif()

# Where an embedded interpreter of ours finds its standard library.
get_filename_component(TERMINAL_PYTHON_HOME "${Python3_STDLIB}/../.." ABSOLUTE)
# For those who read the cache, such as tools/package.
set(TERMINAL_PYTHON_HOME "${TERMINAL_PYTHON_HOME}" CACHE INTERNAL "Prefix of the Python that was found")

add_library(terminal_python_headers INTERFACE)
target_include_directories(terminal_python_headers SYSTEM INTERFACE ${Python3_INCLUDE_DIRS})
