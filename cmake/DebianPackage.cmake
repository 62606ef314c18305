# The Debian package of workbench and plug-in: "cpack -G DEB" in a build tree, or tools/package.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME "${TERMINAL_PACKAGE_NAME}")
set(CPACK_PACKAGE_VENDOR "the maintainers of the terminal workbench")
set(CPACK_PACKAGE_CONTACT "Maintainers of the terminal workbench <maintainers@localhost>")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/package")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})

# One package of these; the host's kit and the module for somebody else's Python are not in it.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL workbench plugin debian)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)

set(CPACK_DEBIAN_PACKAGE_NAME "${TERMINAL_PACKAGE_NAME}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "rehearse high-voltage command files and scripts")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"A window with a command terminal and a Python terminal for high-voltage
power supplies, as the tarnControl console has them, connected to a simulated
system of controllers, crates, modules and channels. What is done in it
reaches no hardware.
.
The package holds the workbench, the plug-in with the two terminals, the
Python 3.7 that scripts run on, and examples.")

# Qt's library brings the plug-ins for X11 and for no display along. Without a font every text is empty boxes.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/workbench/hostkit" "${Python3_LIBRARY_DIRS}")

include(CPack)
