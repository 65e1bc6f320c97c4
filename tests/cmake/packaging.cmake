# Packaging tests (CTest, no GoogleTest):
#  - packaging.consumer installs the build into a scratch prefix and builds
#    examples/consumer against it, once through find_package(msg) and once
#    through pkg-config, with a program that links the core alone;
#  - packaging.exported_symbols.<library> checks that libmsg-core.so exports
#    the public classes and its private interface, and libmsg.so the public
#    classes, and nothing internal.
# The Debian packages are tested by `make package-test`
# (cmake/RunPackageTest.cmake), which `make test` runs on the fuzz tree:
# they are built from a tree without sanitizers.

# A sanitized libmsg.so needs the sanitizer runtime in the program that loads
# it, so the consumer gets the project's sanitizer flags too.
set(MSG_CONSUMER_FLAGS "")
if(MSG_SANITIZE)
  get_directory_property(msg_compile_options DIRECTORY ${PROJECT_SOURCE_DIR} COMPILE_OPTIONS)
  get_directory_property(msg_link_options DIRECTORY ${PROJECT_SOURCE_DIR} LINK_OPTIONS)
  set(msg_consumer_flag_list ${msg_compile_options} ${msg_link_options})
  list(REMOVE_DUPLICATES msg_consumer_flag_list)
  list(JOIN msg_consumer_flag_list " " MSG_CONSUMER_FLAGS)
endif()

add_test(NAME packaging.consumer
  COMMAND ${CMAKE_COMMAND}
    -DMSG_BINARY_DIR=${PROJECT_BINARY_DIR}
    -DMSG_SOURCE_DIR=${PROJECT_SOURCE_DIR}
    -DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/packaging-consumer
    -DCXX_COMPILER=${CMAKE_CXX_COMPILER}
    -DGENERATOR=${CMAKE_GENERATOR}
    -DSANITIZE_FLAGS=${MSG_CONSUMER_FLAGS}
    -P ${PROJECT_SOURCE_DIR}/cmake/RunConsumerTest.cmake)
set_tests_properties(packaging.consumer PROPERTIES LABELS packaging TIMEOUT 600)

find_program(MSG_CXXFILT NAMES c++filt)
foreach(library IN ITEMS "core;msg_core_library" "documents;msg")
  list(GET library 0 kind)
  list(GET library 1 target)
  add_test(NAME packaging.exported_symbols.${kind}
    COMMAND ${CMAKE_COMMAND}
      -DLIBRARY=$<TARGET_FILE:${target}>
      -DKIND=${kind}
      -DNM=${CMAKE_NM}
      -DCXXFILT=${MSG_CXXFILT}
      -P ${PROJECT_SOURCE_DIR}/cmake/CheckExportedSymbols.cmake)
  set_tests_properties(packaging.exported_symbols.${kind} PROPERTIES LABELS packaging)
endforeach()
