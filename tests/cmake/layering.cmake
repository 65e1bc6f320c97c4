# The library's layers (cmake/MsgLayers.cmake) hold:
#  - layering.<layer>.reaches.<folder>: a header of each folder below the
#    layer compiles with the layer's include root, so the root works;
#  - layering.<layer>.refuses.<folder>: a header of each folder that is not
#    below the layer is not found with that root, so an include that runs
#    the wrong way does not build. It passes only on that compiler message.
#  - layering.no_xerces_below_xml_access: Xerces-C's headers stand in the
#    system's include path, where no include root can hide them, so the
#    layers below xml_access are searched for them instead.
include(${CMAKE_CURRENT_LIST_DIR}/compile_check.cmake)

set(msg_layer_probe ${CMAKE_CURRENT_SOURCE_DIR}/compile/layer_probe.cpp)
set(msg_layer_folders "")
foreach(layer IN LISTS MSG_LAYERS)
  get_target_property(folders ${layer} MSG_LAYER_FOLDERS)
  list(GET folders 0 own)
  list(APPEND msg_layer_folders ${own})
endforeach()

set(msg_below_xml "")
foreach(layer IN LISTS MSG_LAYERS)
  get_target_property(folders ${layer} MSG_LAYER_FOLDERS)
  get_target_property(root ${layer} MSG_LAYER_ROOT)
  list(GET folders 0 own)
  if(NOT "xml_access" IN_LIST folders)
    list(APPEND msg_below_xml ${PROJECT_SOURCE_DIR}/${own})
  endif()
  foreach(folder IN LISTS msg_layer_folders)
    if(folder STREQUAL own)
      continue()
    endif()
    file(GLOB headers RELATIVE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/${folder}/*.h)
    list(GET headers 0 header)
    if(folder IN_LIST folders)
      set(name layering.${layer}.reaches.${folder})
      msg_add_compile_check(NAME ${name} SOURCE ${msg_layer_probe}
        DEFINITIONS LAYER_PROBE_HEADER=${header} INCLUDE_DIRECTORIES ${root})
    else()
      set(name layering.${layer}.refuses.${folder})
      msg_add_compile_check(NAME ${name} SOURCE ${msg_layer_probe}
        DEFINITIONS LAYER_PROBE_HEADER=${header} INCLUDE_DIRECTORIES ${root}
        FAILS_WITH "${header}: No such file")
    endif()
    set_tests_properties(${name} PROPERTIES LABELS "compile;layering")
  endforeach()
endforeach()

add_test(NAME layering.no_xerces_below_xml_access
  COMMAND sh -c "for d; do test -d \"$d\" || exit 2; done; ! grep -rn 'xercesc/' \"$@\"" sh
          ${msg_below_xml})
set_tests_properties(layering.no_xerces_below_xml_access PROPERTIES LABELS layering)
