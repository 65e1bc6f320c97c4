# Installation: the two shared libraries, the public headers, a CMake
# package (find_package(msg CONFIG) with msg::core and msg::msg) and a
# pkg-config file for each library.
#
# Every rule names its component, for packagers (cpack, cmake --install
# --component):
#   runtime      the versioned libraries libmsg-core.so.N and libmsg.so.N,
#                and the core's Unicode layout module msg/msg-unicode.so
#   development  headers, the unversioned .so links, the CMake package,
#                the pkg-config files, the schema and the licence
# Each component is one Debian package (cmake/MsgPackaging.cmake).

include(CMakePackageConfigHelpers)

set(MSG_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/msg)

install(TARGETS msg_core_library msg EXPORT msgTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# Found relative to libmsg-core.so (message_core/UnicodeLayoutLoader.cpp);
# private to the library, so in a folder of its own.
install(TARGETS msg_unicode_module
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/msg COMPONENT runtime)
install(DIRECTORY include/msg DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development FILES_MATCHING PATTERN "*.h")
install(FILES ${MSG_GENERATED_INCLUDE_DIR}/msg/version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/msg COMPONENT development)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
install(DIRECTORY schema/ DESTINATION ${CMAKE_INSTALL_DATADIR}/msg
  COMPONENT development FILES_MATCHING PATTERN "*.xsd")

install(EXPORT msgTargets NAMESPACE msg:: DESTINATION ${MSG_CMAKE_DIR}
  COMPONENT development)
configure_package_config_file(cmake/msgConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/msgConfig.cmake
  INSTALL_DESTINATION ${MSG_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/msgConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/msgConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/msgConfigVersion.cmake
  ${PROJECT_SOURCE_DIR}/cmake/MsgTools.cmake
  DESTINATION ${MSG_CMAKE_DIR} COMPONENT development)
install(FILES cmake/MsgCompileCatalogue.cmake DESTINATION ${MSG_CMAKE_DIR}
  COMPONENT development)

# msg-core.pc offers the core alone; msg.pc the whole library, which needs
# the core (Requires) and links both, since an application that includes
# the document headers calls into both. Xerces-C and ICU are private
# dependencies of the shared libraries and appear in neither file.
#
# Each .pc derives its prefix from its own place (${pcfiledir}), so it stays
# right when the package is installed with `cmake --install --prefix` into
# another prefix than the configured one, or moved. Absolute install
# directories cannot move and are written as they are.
set(MSG_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(MSG_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
  set(MSG_PC_LIBDIR "${CMAKE_INSTALL_FULL_LIBDIR}")
  set(MSG_PC_INCLUDEDIR "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
else()
  file(RELATIVE_PATH MSG_PC_UP "/${MSG_PC_DIR}" "/")
  string(REGEX REPLACE "/$" "" MSG_PC_UP "${MSG_PC_UP}")
  set(MSG_PC_PREFIX "\${pcfiledir}/${MSG_PC_UP}")
  set(MSG_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(MSG_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(cmake/msg-core.pc.in ${CMAKE_CURRENT_BINARY_DIR}/msg-core.pc @ONLY)
configure_file(cmake/msg.pc.in ${CMAKE_CURRENT_BINARY_DIR}/msg.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/msg-core.pc ${CMAKE_CURRENT_BINARY_DIR}/msg.pc
  DESTINATION ${MSG_PC_DIR} COMPONENT development)
