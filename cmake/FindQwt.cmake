# Qwt 6 as built for Qt 5, which Debian installs under names of its own and without a CMake package. Defines Qwt::Qwt.

find_path(Qwt_INCLUDE_DIR qwt_plot.h PATH_SUFFIXES qwt qwt-qt5 qt5/qwt qwt6-qt5)
find_library(Qwt_LIBRARY NAMES qwt-qt5 qwt6-qt5 qwt)

if(Qwt_INCLUDE_DIR)
  file(STRINGS "${Qwt_INCLUDE_DIR}/qwt_global.h" version_line REGEX "define QWT_VERSION_STR")
  string(REGEX MATCH "[0-9]+(\\.[0-9]+)+" Qwt_VERSION "${version_line}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Qwt REQUIRED_VARS Qwt_LIBRARY Qwt_INCLUDE_DIR VERSION_VAR Qwt_VERSION)
mark_as_advanced(Qwt_LIBRARY Qwt_INCLUDE_DIR)

if(Qwt_FOUND AND NOT TARGET Qwt::Qwt)
  add_library(Qwt::Qwt UNKNOWN IMPORTED)
  set_target_properties(Qwt::Qwt PROPERTIES
    IMPORTED_LOCATION "${Qwt_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${Qwt_INCLUDE_DIR}"
    INTERFACE_LINK_LIBRARIES Qt5::Widgets)
endif()
