# orlo_layer(<target> FOLDERS <folder>... [SOURCES <file>...] LINKS <target>...)
#
# A static library of the sources directly in src/<folder>. Its headers are offered to the
# layers above through an include folder of its own, which holds a link to each header under
# its usual name ("kit/Defaults.h"): a file sees only the headers of the layers it links.
function(orlo_layer target)
  cmake_parse_arguments(PARSE_ARGV 1 LAYER "" "" "FOLDERS;SOURCES;LINKS")
  set(root ${CMAKE_BINARY_DIR}/include/${target})
  set(sources ${LAYER_SOURCES})
  foreach(folder ${LAYER_FOLDERS})
    file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${folder}/*.h)
    file(GLOB code CONFIGURE_DEPENDS
      ${PROJECT_SOURCE_DIR}/src/${folder}/*.cpp ${PROJECT_SOURCE_DIR}/src/${folder}/*.mm)
    list(APPEND sources ${headers} ${code})
    file(REMOVE_RECURSE ${root}/${folder})
    file(MAKE_DIRECTORY ${root}/${folder})
    foreach(header ${headers})
      get_filename_component(name ${header} NAME)
      file(CREATE_LINK ${header} ${root}/${folder}/${name} SYMBOLIC)
    endforeach()
  endforeach()
  add_library(${target} STATIC ${sources})
  target_include_directories(${target} PUBLIC ${root})
  target_link_libraries(${target} PUBLIC ${LAYER_LINKS})
  target_compile_options(${target} PUBLIC -Wall -Wextra)
endfunction()
