# The Debian package, built by CPack from the install rules (tools/package):
# orlo_<version>_<arch>.deb in build/package. dpkg-shlibdeps finds its dependencies.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orlo)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_CONTACT "The Orlo developers <developers@orlo.app>")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "keyboard tools for X11 desktops: windows, snapping and clipboard\n"
  "Orlo is a tray utility for people who live on the keyboard. Behind one panel in\n"
  "the system tray and one settings window it gathers a window switcher, window\n"
  "snapping by shortcut, a clipboard history with a searchable picker, and system\n"
  "tools: processor and disk at a glance, a disk cleaner, display dimming, keeping\n"
  "the computer awake and locking the keyboard for cleaning.")
string(REPLACE ";" "" CPACK_DEBIAN_PACKAGE_DESCRIPTION "${CPACK_DEBIAN_PACKAGE_DESCRIPTION}")

# The package's file name, as CPack's DEB-DEFAULT makes it, for tools/package and the tests.
execute_process(COMMAND dpkg --print-architecture OUTPUT_VARIABLE ORLO_DEB_ARCH
  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
set(ORLO_DEB_FILE ${CPACK_PACKAGE_DIRECTORY}/orlo_${PROJECT_VERSION}_${ORLO_DEB_ARCH}.deb)

include(CPack)
