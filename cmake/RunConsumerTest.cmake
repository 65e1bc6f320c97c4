# Proves that an application can use an installed msg. Run in script mode:
#
#   cmake -DMSG_BINARY_DIR=<build tree> -DMSG_SOURCE_DIR=<source tree>
#         -DWORK_DIR=<scratch directory> -DCXX_COMPILER=<c++ compiler>
#         [-DGENERATOR=<CMake generator>] [-DSANITIZE_FLAGS="<flags>"]
#         [-DPREFIX=<installed msg>]
#         -P RunConsumerTest.cmake
#
# 1. Installs the build tree with `cmake --install` into WORK_DIR/prefix;
#    with PREFIX, uses the msg installed there instead (the unpacked Debian
#    packages, RunPackageTest.cmake).
# 2. Configures, builds and runs examples/consumer against that prefix
#    (find_package(msg CONFIG) through CMAKE_PREFIX_PATH): main.cpp in
#    C++17 and main20.cpp in C++20 with msg::msg, and core.cpp with
#    msg::core alone.
# 3. Compiles the same programs with `pkg-config --cflags --libs msg`, or
#    `msg-core` for core.cpp (PKG_CONFIG_PATH into the prefix), with
#    -std=c++17 and -std=c++20 given before pkg-config's flags, and runs
#    them. Neither .pc file may set the standard itself, and msg-core.pc
#    must not link the documents library.
# Every program must exit with 0 and print its expected line. core.cpp
# checks its own mappings: no Xerces-C, curl or TLS library may be loaded.
#
# SANITIZE_FLAGS are the flags the library was built with when it was built
# with sanitizers; a program that loads such a libmsg.so needs the sanitizer
# runtime, so the consumer is compiled and linked with the same flags.

cmake_policy(VERSION 3.25)

include("${CMAKE_CURRENT_LIST_DIR}/ScriptSupport.cmake")
msg_require_arguments(RunConsumerTest.cmake MSG_BINARY_DIR MSG_SOURCE_DIR WORK_DIR CXX_COMPILER)
msg_default_generator()
separate_arguments(sanitize_list UNIX_COMMAND "${SANITIZE_FLAGS}")

set(prefix "${WORK_DIR}/prefix")
if(DEFINED PREFIX AND NOT PREFIX STREQUAL "")
  set(prefix "${PREFIX}")
endif()
set(consumer_source "${MSG_SOURCE_DIR}/examples/consumer")
set(expected_line "consumer:greeting: Hello, world! You have 3 new messages.")
set(expected_line20 "consumer:span: 3 languages, best de-AT.")
set(expected_core_line "consumer:core: Auf Wiedersehen, &0.")

# Stops the test unless a program printed `line`.
function(expect_line program_description stderr_text line)
  string(FIND "${stderr_text}" "${line}\n" found)
  if(found EQUAL -1)
    message(FATAL_ERROR "${program_description} did not print \"${line}\"; "
                        "its standard error was:\n${stderr_text}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")

# 1. Install.
if(NOT DEFINED PREFIX OR PREFIX STREQUAL "")
  run_step("Installing msg" "${CMAKE_COMMAND}" --install "${MSG_BINARY_DIR}" --prefix "${prefix}")
endif()

# 2. find_package.
set(consumer_build "${WORK_DIR}/consumer-build")
run_step("Configuring examples/consumer" "${CMAKE_COMMAND}"
  -S "${consumer_source}" -B "${consumer_build}" -G "${GENERATOR}"
  -DCMAKE_BUILD_TYPE=Debug
  "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}"
  "-DCMAKE_PREFIX_PATH=${prefix}"
  "-DCMAKE_CXX_FLAGS=${SANITIZE_FLAGS}"
  "-DCMAKE_EXE_LINKER_FLAGS=${SANITIZE_FLAGS}")

# The package must come from the scratch prefix, not from some other install.
file(STRINGS "${consumer_build}/CMakeCache.txt" msg_dir_line REGEX "^msg_DIR:")
string(REGEX REPLACE "^msg_DIR:[A-Z]+=" "" msg_dir "${msg_dir_line}")
file(REAL_PATH "${prefix}" real_prefix)
file(REAL_PATH "${msg_dir}" real_msg_dir)
string(FIND "${real_msg_dir}" "${real_prefix}/" prefix_position)
if(NOT prefix_position EQUAL 0)
  message(FATAL_ERROR "find_package(msg) used ${msg_dir}, not the package in ${prefix}")
endif()

run_step("Building examples/consumer" "${CMAKE_COMMAND}" --build "${consumer_build}")
run_step("Running the find_package consumer" "${consumer_build}/app")
expect_line("The find_package consumer" "${run_stderr}" "${expected_line}")
run_step("Running the C++20 find_package consumer" "${consumer_build}/app20")
expect_line("The C++20 find_package consumer" "${run_stderr}" "${expected_line20}")
run_step("Running the core-only find_package consumer" "${consumer_build}/core_app")
expect_line("The core-only find_package consumer" "${run_stderr}" "${expected_core_line}")
# typed_app uses keys that the installed msgtool generated through the
# installed msg_generate_header().
run_step("Running the typed-key consumer" "${consumer_build}/typed_app")

# 3. pkg-config.
file(GLOB_RECURSE pc_files "${prefix}/*/msg.pc")
file(GLOB_RECURSE core_pc_files "${prefix}/*/msg-core.pc")
if(NOT core_pc_files)
  message(FATAL_ERROR "No msg-core.pc was installed under ${prefix}")
endif()
if(NOT pc_files)
  message(FATAL_ERROR "No msg.pc was installed under ${prefix}")
endif()
list(GET pc_files 0 pc_file)
get_filename_component(pc_dir "${pc_file}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} "${pc_dir}")

find_program(PKG_CONFIG_EXECUTABLE NAMES pkg-config pkgconf REQUIRED)

# The compiler and linker flags of the pkg-config package `package`, as a
# list in `out`. They must not set the language standard.
function(pkg_config_flags package out)
  execute_process(COMMAND "${PKG_CONFIG_EXECUTABLE}" --cflags --libs ${package}
    RESULT_VARIABLE result OUTPUT_VARIABLE flags ERROR_VARIABLE errors
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "pkg-config --cflags --libs ${package} failed:\n${errors}")
  endif()
  if(flags MATCHES "(^| )-std=")
    message(FATAL_ERROR "${package}.pc sets the language standard (${flags}); "
                        "that would override the application's own")
  endif()
  separate_arguments(flag_list UNIX_COMMAND "${flags}")
  set(${out} "${flag_list}" PARENT_SCOPE)
endfunction()

execute_process(COMMAND "${PKG_CONFIG_EXECUTABLE}" --variable=libdir msg
  OUTPUT_VARIABLE pc_libdir OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND "${PKG_CONFIG_EXECUTABLE}" --variable=includedir msg
  OUTPUT_VARIABLE pc_includedir OUTPUT_STRIP_TRAILING_WHITESPACE)
file(REAL_PATH "${pc_includedir}" real_includedir)
string(FIND "${real_includedir}" "${real_prefix}/" prefix_position)
if(NOT prefix_position EQUAL 0 OR NOT EXISTS "${real_includedir}/msg/msg.h")
  message(FATAL_ERROR "msg.pc points at ${pc_includedir}, not at the headers in ${prefix}")
endif()

pkg_config_flags(msg pc_flag_list)
if(NOT "-lmsg" IN_LIST pc_flag_list OR NOT "-lmsg-core" IN_LIST pc_flag_list)
  message(FATAL_ERROR "msg.pc must link libmsg and libmsg-core: ${pc_flag_list}")
endif()
foreach(program IN ITEMS "main;c++17;expected_line" "main20;c++20;expected_line20")
  list(GET program 0 source)
  list(GET program 1 standard)
  list(GET program 2 line_variable)
  set(pkgconfig_app "${WORK_DIR}/pkgconfig-${source}")
  run_step("Compiling ${source}.cpp (${standard}) with pkg-config's flags" "${CXX_COMPILER}"
    -std=${standard} ${sanitize_list} "${consumer_source}/${source}.cpp" -o "${pkgconfig_app}"
    ${pc_flag_list})
  run_step("Running the ${standard} pkg-config consumer"
    "${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${pc_libdir}" "${pkgconfig_app}")
  expect_line("The ${standard} pkg-config consumer" "${run_stderr}" "${${line_variable}}")
endforeach()

# The core alone, with the catalogue the find_package build compiled.
pkg_config_flags(msg-core core_flag_list)
if("-lmsg" IN_LIST core_flag_list OR NOT "-lmsg-core" IN_LIST core_flag_list)
  message(FATAL_ERROR "msg-core.pc must link libmsg-core alone: ${core_flag_list}")
endif()
set(pkgconfig_core_app "${WORK_DIR}/pkgconfig-core")
run_step("Compiling core.cpp with pkg-config's flags for msg-core" "${CXX_COMPILER}"
  -std=c++17 ${sanitize_list} "-DCONSUMER_CATALOGUE=\"${consumer_build}/core.msgc\""
  "${consumer_source}/core.cpp" -o "${pkgconfig_core_app}" ${core_flag_list})
run_step("Running the core-only pkg-config consumer"
  "${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${pc_libdir}" "${pkgconfig_core_app}")
expect_line("The core-only pkg-config consumer" "${run_stderr}" "${expected_core_line}")
