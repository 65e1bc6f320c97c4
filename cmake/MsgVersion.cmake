# msg/version.h: the version macros, generated from project(msg VERSION ...)
# into the build tree and installed beside the other public headers.
#
# MSG_GENERATED_INCLUDE_DIR holds the generated headers. It is on the include
# path of every target of this project (the directory property below), and
# the msg target passes it on to a project that adds msg as a subdirectory;
# command lines that compile the public headers by hand (tests/cmake) add it
# themselves.

set(MSG_GENERATED_INCLUDE_DIR ${PROJECT_BINARY_DIR}/include)
configure_file(${CMAKE_CURRENT_LIST_DIR}/version.h.in
  ${MSG_GENERATED_INCLUDE_DIR}/msg/version.h @ONLY)
include_directories(BEFORE ${MSG_GENERATED_INCLUDE_DIR})
install(FILES ${MSG_GENERATED_INCLUDE_DIR}/msg/version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/msg COMPONENT development)
