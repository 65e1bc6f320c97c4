# Debian packages: `cpack -G DEB` (`make package`) turns the components of
# the install rules into one package each, installed under /usr:
#
#   component    package              holds
#   runtime      libmsg<SOVERSION>    the shared libraries, with their SONAME
#   development  libmsg-dev           headers, CMake package, pkg-config files,
#                                     schema, the unversioned .so links
#   tool         msgtool              the tool, its manual page and completion
#
# Whatever an install rule puts into one of these components lands in its
# package, so a new library or file needs no change here. A rule without a
# component would land in none; the packaging test compares the packages with
# a full `cmake --install` and fails on such a rule.
#
# Dependencies on other packages come from dpkg-shlibdeps, which reads what
# the binaries link. Only the dependencies between our own packages are
# written here: the development files need the library of the same build,
# and the CMake package exports msgtool (msg_generate_header and
# msg_compile_catalogue run it), so they need the tool of the same build too.
# The public headers and the CMake package use no other library's headers,
# so libmsg-dev depends on no other -dev package.
#
# Include this file after every install rule of the project: CPack reads the
# components that exist when it is included.

set(MSG_PACKAGE_MAINTAINER "msg maintainers <maintainers@users.noreply.c-seed-d04caf4c.example>"
    CACHE STRING "Maintainer field of the Debian packages (Name <address>)")
set(MSG_PACKAGE_RELEASE 1 CACHE STRING
    "Debian revision of the packages: counts packagings of one version of msg")

set(MSG_DEBIAN_VERSION "${PROJECT_VERSION}-${MSG_PACKAGE_RELEASE}")
set(MSG_RUNTIME_PACKAGE "libmsg${PROJECT_VERSION_MAJOR}")

# The Debian changelog's date is the release's date in CHANGELOG.md
# ("## 0.2.0 - 2026-11-25"), so packages of one release are the same
# whenever they are built; a version without an entry is a snapshot of today.
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md msg_release_heading
     REGEX "^## ${PROJECT_VERSION} - [0-9]+-[0-9]+-[0-9]+$")
if(msg_release_heading)
  string(REGEX REPLACE "^.* - " "" msg_release_date "${msg_release_heading}")
else()
  string(TIMESTAMP msg_release_date "%Y-%m-%d" UTC)
endif()
execute_process(COMMAND date -u -R -d "${msg_release_date}"
  OUTPUT_VARIABLE MSG_DEBIAN_DATE OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE msg_date_result)
if(NOT msg_date_result EQUAL 0)
  message(FATAL_ERROR "Cannot write the date ${msg_release_date} of the Debian changelog")
endif()

# Every package carries its copyright file and Debian changelog in
# /usr/share/doc/<package>, as Debian requires. They belong to the packages
# only, not to a plain `cmake --install` (EXCLUDE_FROM_ALL).
set(msg_debian_dir ${PROJECT_BINARY_DIR}/debian)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/copyright ${msg_debian_dir}/copyright @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${msg_debian_dir}/changelog.Debian
               @ONLY)
execute_process(COMMAND gzip -9nf ${msg_debian_dir}/changelog.Debian RESULT_VARIABLE msg_gzip_result)
if(NOT msg_gzip_result EQUAL 0)
  message(FATAL_ERROR "gzip failed on ${msg_debian_dir}/changelog.Debian")
endif()

# component  package name  section  summary  description
set(msg_packages
  "runtime|${MSG_RUNTIME_PACKAGE}|libs|message catalogues for C++ applications|\
msg keeps an application's user-visible and diagnostic texts in catalogues\n\
instead of in code: each message has a key, a severity and a text in one or\n\
more languages with numbered placeholders. msg picks the text in the\n\
language the user prefers, fills in the arguments and hands the message to\n\
an output channel. Catalogues are written in C++, in XML message documents\n\
or compiled into a binary form.\n\
.\n\
This package contains the shared libraries."
  "development|libmsg-dev|libdevel|message catalogues for C++ applications - development files|\
msg keeps an application's user-visible and diagnostic texts in catalogues\n\
instead of in code, picks the text in the language the user prefers and\n\
fills in the arguments.\n\
.\n\
This package contains the C++17 headers, the CMake package\n\
(find_package(msg CONFIG)), the pkg-config files and the XML schema of\n\
message documents."
  "tool|msgtool|devel|check, compile and translate msg message catalogues|\
msgtool checks msg message documents in CI (placeholders that differ\n\
between languages, duplicate keys, missing translations), counts\n\
translations, shows a message as the library renders it, generates typed\n\
C++ keys, compiles catalogues and takes them to and from translators in PO\n\
and XLIFF.")

get_cmake_property(msg_install_components COMPONENTS)
set(CPACK_COMPONENTS_ALL "")
foreach(package IN LISTS msg_packages)
  string(REPLACE "|" ";" fields "${package}")
  list(GET fields 0 component)
  list(GET fields 1 name)
  list(GET fields 2 section)
  list(GET fields 3 summary)
  list(GET fields 4 description)
  if(NOT component IN_LIST msg_install_components)
    continue()  # msgtool is not built (MSG_BUILD_TOOLS=OFF)
  endif()
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${description}")
  install(FILES ${msg_debian_dir}/copyright ${msg_debian_dir}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
# The libraries' package has dpkg run ldconfig once after all packages are
# unpacked, as Debian wants it (CPack's own maintainer scripts call it too).
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${MSG_RUNTIME_PACKAGE} (= ${MSG_DEBIAN_VERSION}), msgtool (= ${MSG_DEBIAN_VERSION})")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME msg)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# Each package's description starts with its own summary line, so no
# project-wide summary is put in front of it.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT "${MSG_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_OUTPUT_FILE_PREFIX packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${MSG_PACKAGE_RELEASE})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Manual pages are gzipped in the staging tree, as Debian wants them.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/CompressManualPages.cmake)

include(CPack)
