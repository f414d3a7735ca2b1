# Orlo.app: the program as a menu-bar application bundle (no Dock icon), its Info.plist made
# from resources/mac/Info.plist.in, its icon rendered from the same SVG as the Linux icons and
# packed by iconutil; `cpack` then makes Orlo-<version>.dmg of the bundle once macdeployqt
# has copied Qt into it.
set(ORLO_BUNDLE_EXECUTABLE Orlo)
set(ORLO_MAC_STAGE ${CMAKE_BINARY_DIR}/mac-stage)
configure_file(${PROJECT_SOURCE_DIR}/resources/mac/Info.plist.in ${ORLO_MAC_STAGE}/Info.plist @ONLY)

# The icon: every size an .icns holds, rendered at build time by the small Qt tool the Linux
# build uses too, then packed by iconutil.
add_executable(orlo-render-icons tools/RenderIcons.cpp)
target_link_libraries(orlo-render-icons PRIVATE Qt6::Gui Qt6::Svg)
set(icon_svg ${PROJECT_SOURCE_DIR}/resources/linux/icons/${ORLO_APP_ID}.svg)
set(icon_renders ${ORLO_MAC_STAGE}/renders)
set(iconset ${ORLO_MAC_STAGE}/Orlo.iconset)
set(icns ${ORLO_MAC_STAGE}/Orlo.icns)
set(iconset_commands)
# Each base size, once as it is and once at twice the pixels for Retina screens.
foreach(size 16 32 128 256 512)
  math(EXPR double "${size} * 2")
  list(APPEND iconset_commands
    COMMAND ${CMAKE_COMMAND} -E copy ${icon_renders}/${size}x${size}/apps/Orlo.png ${iconset}/icon_${size}x${size}.png
    COMMAND ${CMAKE_COMMAND} -E copy ${icon_renders}/${double}x${double}/apps/Orlo.png ${iconset}/icon_${size}x${size}@2x.png)
endforeach()
add_custom_command(OUTPUT ${icns}
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${icon_renders} ${iconset}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${iconset}
  COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen
    $<TARGET_FILE:orlo-render-icons> ${icon_svg} ${icon_renders} Orlo 16 32 64 128 256 512 1024
  ${iconset_commands}
  COMMAND iconutil --convert icns --output ${icns} ${iconset}
  DEPENDS orlo-render-icons ${icon_svg}
  COMMENT "Making Orlo.icns from ${icon_svg}" VERBATIM)
target_sources(orlo PRIVATE ${icns})
set_source_files_properties(${icns} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)

set_target_properties(orlo PROPERTIES
  MACOSX_BUNDLE TRUE
  OUTPUT_NAME ${ORLO_BUNDLE_EXECUTABLE}
  MACOSX_BUNDLE_INFO_PLIST ${ORLO_MAC_STAGE}/Info.plist)

# The disk image: Orlo.app beside a link to /Applications, to drag it there.
install(TARGETS orlo BUNDLE DESTINATION .)
find_program(ORLO_MACDEPLOYQT macdeployqt HINTS "${QT6_INSTALL_PREFIX}/bin" "${Qt6_DIR}/../../../bin" REQUIRED)
# Run on the bundle as installed into CPack's staging folder: Qt's frameworks and plugins go
# into it, and the whole bundle is signed again (ad hoc) since copying them breaks the seal.
install(CODE "
  set(bundle \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/Orlo.app\")
  execute_process(COMMAND \"${ORLO_MACDEPLOYQT}\" \"\${bundle}\" -always-overwrite COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND codesign --force --deep --sign - \"\${bundle}\" COMMAND_ERROR_IS_FATAL ANY)
")
set(CPACK_GENERATOR DragNDrop)
set(CPACK_PACKAGE_NAME Orlo)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_FILE_NAME Orlo-${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_DMG_VOLUME_NAME Orlo)
set(CPACK_DMG_FORMAT UDZO)
include(CPack)
