# Proves the Debian packages of a build tree. Run in script mode:
#
#   cmake -DMSG_BINARY_DIR=<build tree> -DMSG_SOURCE_DIR=<source tree>
#         -DWORK_DIR=<scratch directory> -DCXX_COMPILER=<c++ compiler>
#         [-DGENERATOR=<CMake generator>] [-DLINTIAN=ON|OFF]
#         -P RunPackageTest.cmake
#
# The tree must be built without sanitizers. Nothing is installed into the
# system: the packages are only unpacked.
#
# 1. Builds the packages of the tree with cpack into WORK_DIR/packages and
#    finds libmsg<N>, libmsg-dev and msgtool there.
# 2. Checks each package's fields: libmsg<N> holds exactly the libraries
#    whose SONAME ends in .so.<N>, dpkg-shlibdeps wrote its dependencies,
#    libmsg-dev depends on the library and the tool of its own version, and
#    every path lies under /usr.
# 3. Unpacks them with `dpkg-deb -x` into WORK_DIR/root and compares that
#    tree with a plain `cmake --install` of the build tree: every installed
#    file must be in a package (an install rule without a component would
#    be in none).
# 4. Checks that the package version, msg/version.h, `msgtool --version` and
#    msg.pc agree, and that CHANGELOG.md has an entry of that version.
# 5. Runs lintian on the packages (LINTIAN=ON, the default): no error.
# 6. Builds and runs examples/consumer against WORK_DIR/root/usr alone
#    (RunConsumerTest.cmake with PREFIX), through find_package and
#    pkg-config.

cmake_minimum_required(VERSION 3.25)

include("${CMAKE_CURRENT_LIST_DIR}/ScriptSupport.cmake")
msg_require_arguments(RunPackageTest.cmake MSG_BINARY_DIR MSG_SOURCE_DIR WORK_DIR CXX_COMPILER)
msg_default_generator()
if(NOT DEFINED LINTIAN)
  set(LINTIAN ON)
endif()

function(fail)
  string(JOIN "" text ${ARGN})
  message(FATAL_ERROR "${text}")
endfunction()

# The field `field` of the control file of package `deb`.
function(deb_field out_var deb field)
  run_step("dpkg-deb -f ${deb} ${field}" dpkg-deb -f "${deb}" ${field})
  set(${out_var} "${run_stdout}" PARENT_SCOPE)
endfunction()

# The paths (./usr/...) of the files and links in package `deb`.
function(deb_files out_var deb)
  run_step("dpkg-deb -c ${deb}" dpkg-deb -c "${deb}")
  string(REPLACE "\n" ";" lines "${run_stdout}")
  set(files "")
  foreach(line IN LISTS lines)
    if(line MATCHES "^[-l][^ ]* +[^ ]+ +[0-9]+ [^ ]+ [^ ]+ (\\./[^ ]+)")
      list(APPEND files "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  set(${out_var} "${files}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(root "${WORK_DIR}/root")

# 1. Build the packages.
execute_process(COMMAND "${CMAKE_CPACK_COMMAND}" --config "${MSG_BINARY_DIR}/CPackConfig.cmake"
  -B "${WORK_DIR}" WORKING_DIRECTORY "${WORK_DIR}"
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT result EQUAL 0)
  fail("cpack failed (${result}):\n${output}\n${errors}")
endif()
file(GLOB debs "${WORK_DIR}/packages/*.deb")
set(runtime_deb "")
foreach(deb IN LISTS debs)
  deb_field(name "${deb}" Package)
  if(name MATCHES "^libmsg([0-9]+)$")
    set(runtime_deb "${deb}")
    set(soversion "${CMAKE_MATCH_1}")
  elseif(name STREQUAL "libmsg-dev")
    set(dev_deb "${deb}")
  elseif(name STREQUAL "msgtool")
    set(tool_deb "${deb}")
  else()
    fail("cpack built a package nobody asked for: ${name} (${deb})")
  endif()
endforeach()
if(NOT runtime_deb OR NOT dev_deb OR NOT tool_deb)
  fail("Expected the packages libmsg<N>, libmsg-dev and msgtool, cpack built: ${debs}")
endif()

# 2. Fields and contents.
set(package_files "")
foreach(deb IN LISTS debs)
  deb_files(files "${deb}")
  foreach(path IN LISTS files)
    if(NOT path MATCHES "^\\./usr/")
      fail("${deb} installs ${path}, outside /usr")
    endif()
  endforeach()
  list(APPEND package_files ${files})
endforeach()

deb_field(runtime_depends "${runtime_deb}" Depends)
if(NOT runtime_depends MATCHES "(^|, )libc6 " OR NOT runtime_depends MATCHES "libxerces-c")
  fail("libmsg${soversion} does not depend on what it links (dpkg-shlibdeps did not run?): "
       "${runtime_depends}")
endif()
deb_files(runtime_files "${runtime_deb}")

deb_field(dev_depends "${dev_deb}" Depends)
deb_field(version "${runtime_deb}" Version)
foreach(needed IN ITEMS "libmsg${soversion} (= ${version})" "msgtool (= ${version})")
  string(FIND "${dev_depends}" "${needed}" position)
  if(position EQUAL -1)
    fail("libmsg-dev must depend on ${needed}; it depends on: ${dev_depends}")
  endif()
endforeach()
foreach(deb IN ITEMS "${dev_deb}" "${tool_deb}")
  deb_field(other_version "${deb}" Version)
  if(NOT other_version STREQUAL version)
    fail("${deb} has version ${other_version}, libmsg${soversion} has ${version}")
  endif()
endforeach()

# 3. Unpack, and compare with a plain install.
foreach(deb IN LISTS debs)
  run_step("dpkg-deb -x ${deb}" dpkg-deb -x "${deb}" "${root}")
endforeach()

file(GLOB_RECURSE shared_objects LIST_DIRECTORIES false "${root}/usr/lib/*.so*")
set(sonames "")
set(library_dirs "")
foreach(object IN LISTS shared_objects)
  if(IS_SYMLINK "${object}")
    continue()
  endif()
  file(RELATIVE_PATH relative "${root}" "${object}")
  # The library's private modules (msg/msg-unicode.so) are loaded by path,
  # not by SONAME; they belong with the libraries that load them.
  if(relative MATCHES "/msg/[^/]+\\.so$")
    if(NOT "./${relative}" IN_LIST runtime_files)
      fail("the module ${relative} is not in libmsg${soversion}")
    endif()
    continue()
  endif()
  run_step("readelf -d ${object}" readelf -d "${object}")
  if(NOT run_stdout MATCHES "Library soname: \\[([^]]+)\\]")
    fail("${object} has no SONAME")
  endif()
  set(soname "${CMAKE_MATCH_1}")
  if(NOT soname MATCHES "\\.so\\.${soversion}$")
    fail("${object} has the SONAME ${soname}; the package libmsg${soversion} needs .so.${soversion}")
  endif()
  if(NOT "./${relative}" IN_LIST runtime_files)
    fail("${relative} is not in libmsg${soversion}")
  endif()
  get_filename_component(directory "${object}" DIRECTORY)
  if(NOT EXISTS "${directory}/${soname}")
    fail("libmsg${soversion} has ${relative} but no ${soname} link beside it")
  endif()
  list(APPEND sonames "${soname}")
  list(APPEND library_dirs "${directory}")
endforeach()
if(NOT sonames)
  fail("libmsg${soversion} holds no shared library")
endif()

set(plain "${WORK_DIR}/plain")
run_step("cmake --install" "${CMAKE_COMMAND}" --install "${MSG_BINARY_DIR}"
  --prefix "${plain}/usr")
file(GLOB_RECURSE plain_files LIST_DIRECTORIES false RELATIVE "${plain}" "${plain}/*")
foreach(path IN LISTS plain_files)
  # Manual pages are gzipped in the packages.
  if(path MATCHES "/share/man/man[1-9]/[^/]+[^z]$")
    string(APPEND path ".gz")
  endif()
  if(NOT "./${path}" IN_LIST package_files)
    fail("`cmake --install` installs ${path}, but no package holds it: "
         "does its install rule name a component (cmake/MsgPackaging.cmake)?")
  endif()
endforeach()

# 4. One version everywhere.
string(REGEX REPLACE "-[^-]+$" "" upstream_version "${version}")
file(STRINGS "${root}/usr/include/msg/version.h" version_line REGEX "define MSG_VERSION_STRING ")
if(NOT version_line MATCHES "\"([^\"]+)\"" OR NOT CMAKE_MATCH_1 STREQUAL upstream_version)
  fail("msg/version.h says ${version_line}, the packages ${version}")
endif()
string(REGEX MATCH "^[0-9]+" major "${upstream_version}")
if(NOT major STREQUAL soversion)
  fail("Version ${upstream_version} is packaged as libmsg${soversion}; the SONAME "
       "follows the major version (docs/versioning.md)")
endif()
list(REMOVE_DUPLICATES library_dirs)
list(JOIN library_dirs ":" library_path)
run_step("msgtool --version" "${CMAKE_COMMAND}" -E env
  "LD_LIBRARY_PATH=${library_path}" "${root}/usr/bin/msgtool" --version)
set(tool_version "${run_stdout}")
if(NOT tool_version STREQUAL "msgtool ${upstream_version}")
  fail("The packaged msgtool --version says \"${tool_version}\", the packages ${version}")
endif()
file(GLOB_RECURSE pc_files "${root}/usr/lib/*/msg.pc" "${root}/usr/lib/msg.pc")
list(GET pc_files 0 pc_file)
file(STRINGS "${pc_file}" pc_version REGEX "^Version: ")
if(NOT pc_version STREQUAL "Version: ${upstream_version}")
  fail("${pc_file} says ${pc_version}, the packages ${version}")
endif()
file(STRINGS "${MSG_SOURCE_DIR}/CHANGELOG.md" release_heading
     REGEX "^## ${upstream_version} - [0-9]+-[0-9]+-[0-9]+$")
if(NOT release_heading)
  fail("CHANGELOG.md has no entry \"## ${upstream_version} - <date>\" for the packaged version")
endif()

# 5. lintian.
if(LINTIAN)
  find_program(LINTIAN_EXECUTABLE lintian REQUIRED)
  execute_process(COMMAND "${LINTIAN_EXECUTABLE}" --fail-on error ${debs}
    RESULT_VARIABLE result OUTPUT_VARIABLE report ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    fail("lintian found errors in the packages:\n${report}\n${errors}")
  endif()
  message(STATUS "lintian:\n${report}")
endif()

# 6. The consumer, against the unpacked packages alone.
run_step("The consumer against the unpacked packages" "${CMAKE_COMMAND}"
  "-DPREFIX=${root}/usr"
  "-DMSG_BINARY_DIR=${MSG_BINARY_DIR}"
  "-DMSG_SOURCE_DIR=${MSG_SOURCE_DIR}"
  "-DWORK_DIR=${WORK_DIR}/consumer"
  "-DCXX_COMPILER=${CXX_COMPILER}"
  "-DGENERATOR=${GENERATOR}"
  -P "${CMAKE_CURRENT_LIST_DIR}/RunConsumerTest.cmake")
