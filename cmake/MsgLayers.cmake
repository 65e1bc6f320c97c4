# The library's subsystem folders as layers the build enforces.
#
#   msg_layer(<target> <folder> [BELOW <layer>...])
#
# makes the OBJECT library <target> of every <folder>/*.cpp (globbed, so a
# new file lands in its layer at the next build). Its sources reach the
# public headers (include/msg/) and, through an include root of its own in
# the build tree, only <folder> and the folders of the layers BELOW it and of
# theirs. The root holds one symbolic link per allowed folder and nothing
# else, so `#include "message_documents/X.h"` from a lower layer is simply
# not found. The layers below are linked PUBLIC, which carries their usage
# requirements (Xerces-C from xml_access upwards) but not their objects: a
# program gets the objects of the layers it links directly, so the library
# and msg_objects list every layer.
#
# Every layer is recorded, lowest first, in the global property MSG_LAYERS;
# the fuzz tree builds its instrumented copy from it.

function(msg_layer target folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "BELOW")
  set(folders ${folder})
  foreach(lower IN LISTS arg_BELOW)
    get_target_property(lower_folders ${lower} MSG_LAYER_FOLDERS)
    list(APPEND folders ${lower_folders})
  endforeach()
  list(REMOVE_DUPLICATES folders)

  set(root ${PROJECT_BINARY_DIR}/layers/${folder})
  file(MAKE_DIRECTORY ${root})
  # A folder that a layer no longer reaches must not stay reachable.
  file(GLOB present LIST_DIRECTORIES true RELATIVE ${root} ${root}/*)
  foreach(entry IN LISTS present)
    if(NOT entry IN_LIST folders)
      file(REMOVE ${root}/${entry})
    endif()
  endforeach()
  foreach(allowed IN LISTS folders)
    if(NOT IS_SYMLINK ${root}/${allowed})
      file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${allowed} ${root}/${allowed} SYMBOLIC)
    endif()
  endforeach()

  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
  add_library(${target} OBJECT ${sources})
  target_include_directories(${target}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    PRIVATE ${root})
  target_link_libraries(${target} PUBLIC ${arg_BELOW})
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    MSG_LAYER_FOLDERS "${folders}"
    MSG_LAYER_BELOW "${arg_BELOW}"
    MSG_LAYER_ROOT ${root})
  msg_strict_warnings(${target})
  set_property(GLOBAL APPEND PROPERTY MSG_LAYERS ${target})
endfunction()
