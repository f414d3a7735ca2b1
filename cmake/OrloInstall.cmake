# What `cmake --install` and the Debian package put on the system, under the usual folders of
# a desktop application: the program, its desktop entry and AppStream metainfo, its icons in
# the hicolor theme (scalable, the PNG sizes the theme keeps, and the symbolic tray icon),
# its manual page, and the copyright and changelog a Debian package carries.
include(GNUInstallDirs)

set(ORLO_DESKTOP_FILES ${PROJECT_SOURCE_DIR}/resources/linux)
set(ORLO_INSTALL_STAGE ${CMAKE_BINARY_DIR}/install-stage)
set(ORLO_ICON_SIZES 16 22 24 32 48 64 128 256)
# /usr/share/doc/<package>, named after the package rather than the project.
set(ORLO_INSTALL_DOCDIR ${CMAKE_INSTALL_DATADIR}/doc/orlo)

# The manual, the changelog and the metainfo each name the release: a new version in
# project() must come with an entry in each.
foreach(file orlo.1 changelog ${ORLO_APP_ID}.metainfo.xml)
  file(READ ${ORLO_DESKTOP_FILES}/${file} text)
  string(REPLACE "." "\\." version_pattern "${PROJECT_VERSION}")
  if(NOT text MATCHES "(Orlo |orlo \\(|release version=\")${version_pattern}[\") ]")
    message(FATAL_ERROR "resources/linux/${file} does not name release ${PROJECT_VERSION}")
  endif()
endforeach()

# PNG renderings of the scalable icon, made at build time by a small Qt tool.
add_executable(orlo-render-icons tools/RenderIcons.cpp)
target_link_libraries(orlo-render-icons PRIVATE Qt6::Gui Qt6::Svg)
set(icon_svg ${ORLO_DESKTOP_FILES}/icons/${ORLO_APP_ID}.svg)
set(icon_theme ${ORLO_INSTALL_STAGE}/icons/hicolor)
set(icon_pngs)
foreach(size ${ORLO_ICON_SIZES})
  list(APPEND icon_pngs ${icon_theme}/${size}x${size}/apps/${ORLO_APP_ID}.png)
endforeach()
add_custom_command(OUTPUT ${icon_pngs}
  COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen
    $<TARGET_FILE:orlo-render-icons> ${icon_svg} ${icon_theme} ${ORLO_APP_ID} ${ORLO_ICON_SIZES}
  DEPENDS orlo-render-icons ${icon_svg}
  COMMENT "Rendering Orlo's icon at ${ORLO_ICON_SIZES}" VERBATIM)

# Debian keeps manuals and changelogs compressed at the highest level, without a time stamp.
set(compressed)
foreach(pair "orlo.1:man/orlo.1.gz" "changelog:doc/changelog.gz")
  string(REPLACE ":" ";" pair "${pair}")
  list(GET pair 0 source)
  list(GET pair 1 target)
  add_custom_command(OUTPUT ${ORLO_INSTALL_STAGE}/${target}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${ORLO_INSTALL_STAGE}/man ${ORLO_INSTALL_STAGE}/doc
    COMMAND sh -c "gzip -9nc \"$0\" > \"$1\"" ${ORLO_DESKTOP_FILES}/${source} ${ORLO_INSTALL_STAGE}/${target}
    DEPENDS ${ORLO_DESKTOP_FILES}/${source} VERBATIM)
  list(APPEND compressed ${ORLO_INSTALL_STAGE}/${target})
endforeach()

add_custom_target(orlo_install_files ALL DEPENDS ${icon_pngs} ${compressed})

# Relocations resolved at start and then read-only, as Debian links its programs.
target_link_options(orlo PRIVATE LINKER:-z,relro,-z,now)
install(TARGETS orlo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# KWin lets a program use its fake input (Orlo's paste keystroke on Plasma) when the desktop
# entry whose Exec names the program's own file lists it in X-KDE-Wayland-Interfaces. KWin
# resolves that first word as a path, so the installed entry names the program by its full
# path, known only as it is installed (the package installs under /usr).
install(CODE "
  file(READ \"${ORLO_DESKTOP_FILES}/${ORLO_APP_ID}.desktop\" entry)
  string(REPLACE \"Exec=orlo\" \"Exec=\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/orlo\" entry \"\${entry}\")
  file(WRITE \"${ORLO_INSTALL_STAGE}/applications/${ORLO_APP_ID}.desktop\" \"\${entry}\")
  file(INSTALL \"${ORLO_INSTALL_STAGE}/applications/${ORLO_APP_ID}.desktop\"
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/applications\")")
install(FILES ${ORLO_DESKTOP_FILES}/${ORLO_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${icon_svg} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${ORLO_DESKTOP_FILES}/icons/${ORLO_APP_ID}-symbolic.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/symbolic/apps)
foreach(size ${ORLO_ICON_SIZES})
  install(FILES ${icon_theme}/${size}x${size}/apps/${ORLO_APP_ID}.png
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
endforeach()
install(FILES ${ORLO_INSTALL_STAGE}/man/orlo.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${ORLO_DESKTOP_FILES}/copyright ${ORLO_INSTALL_STAGE}/doc/changelog.gz
  DESTINATION ${ORLO_INSTALL_DOCDIR})
