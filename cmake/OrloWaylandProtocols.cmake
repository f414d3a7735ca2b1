# orlo_wayland_protocols(<target> <protocol.xml>...)
#
# Generates the client code of Wayland protocol descriptions with wayland-scanner and builds
# it into <target>, whose sources include "<name>-client-protocol.h". The descriptions come
# from the wayland-protocols and plasma-wayland-protocols packages (WAYLAND_PROTOCOLS_DIR,
# PLASMA_WAYLAND_PROTOCOLS_DIR), or from src/platform/wayland/protocols for the protocols
# Debian does not ship.
pkg_get_variable(WAYLAND_SCANNER wayland-scanner wayland_scanner)
if(NOT WAYLAND_SCANNER)
  message(FATAL_ERROR "wayland-scanner not found: install libwayland-dev (tools/deps)")
endif()
pkg_get_variable(WAYLAND_PROTOCOLS_DIR wayland-protocols pkgdatadir)
find_package(PlasmaWaylandProtocols REQUIRED)

function(orlo_wayland_protocols target)
  set(out ${CMAKE_BINARY_DIR}/wayland-protocols)
  file(MAKE_DIRECTORY ${out})
  foreach(xml ${ARGN})
    get_filename_component(name ${xml} NAME_WE)
    set(header ${out}/${name}-client-protocol.h)
    set(code ${out}/${name}-protocol.c)
    add_custom_command(OUTPUT ${header} COMMAND ${WAYLAND_SCANNER} client-header ${xml} ${header}
      DEPENDS ${xml} VERBATIM)
    add_custom_command(OUTPUT ${code} COMMAND ${WAYLAND_SCANNER} private-code ${xml} ${code}
      DEPENDS ${xml} VERBATIM)
    target_sources(${target} PRIVATE ${header} ${code})
  endforeach()
  target_include_directories(${target} PRIVATE ${out})
endfunction()
