# msg_compile_catalogue: compiles message documents into one compiled
# catalogue at build time, again whenever one of them changes.
#
#   msg_compile_catalogue(OUTPUT <file.msgc>
#                         DOCUMENTS <document.xml>...
#                         [DEPENDS <file>...]
#                         [TARGET <target>]
#                         [FORCE])
#
# OUTPUT     the compiled catalogue to write (relative: to the current
#            binary directory).
# DOCUMENTS  the message documents, in loading order: a later text of a key
#            replaces an earlier one (relative: to the current source
#            directory).
# DEPENDS    further files whose change must recompile, such as parts the
#            documents include with XInclude.
# TARGET     a target that needs the catalogue; it is built after it.
# FORCE      compile even when the languages of a key disagree on their
#            placeholders (msgtool compile --force).
#
# Runs `msgtool compile`: inside the msg build the msgtool target, otherwise
# the msgtool installed with this package (or found on PATH).
#
# Example:
#   msg_compile_catalogue(OUTPUT app.msgc DOCUMENTS messages.xml TARGET app)
#   target_compile_definitions(app PRIVATE APP_CATALOGUE="${CMAKE_CURRENT_BINARY_DIR}/app.msgc")

# Where an installed package keeps msgtool: bin/ beside lib/cmake/msg.
get_filename_component(_msg_compile_prefix "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)

function(msg_compile_catalogue)
  cmake_parse_arguments(PARSE_ARGV 0 arg "FORCE" "OUTPUT;TARGET" "DOCUMENTS;DEPENDS")
  if(NOT arg_OUTPUT OR NOT arg_DOCUMENTS)
    message(FATAL_ERROR "msg_compile_catalogue: OUTPUT and DOCUMENTS are required")
  endif()
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "msg_compile_catalogue: unknown arguments ${arg_UNPARSED_ARGUMENTS}")
  endif()

  if(TARGET msgtool)
    set(tool $<TARGET_FILE:msgtool>)
    set(tool_dependency msgtool)
  else()
    find_program(MSG_MSGTOOL_EXECUTABLE msgtool
      HINTS "${_msg_compile_prefix}/bin" "${_msg_compile_prefix}/../bin")
    if(NOT MSG_MSGTOOL_EXECUTABLE)
      message(FATAL_ERROR "msg_compile_catalogue: msgtool not found; install msg with its "
                          "tool or set MSG_MSGTOOL_EXECUTABLE")
    endif()
    set(tool ${MSG_MSGTOOL_EXECUTABLE})
    set(tool_dependency ${MSG_MSGTOOL_EXECUTABLE})
  endif()

  get_filename_component(output "${arg_OUTPUT}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")
  set(documents "")
  foreach(document IN LISTS arg_DOCUMENTS)
    get_filename_component(document "${document}" ABSOLUTE)
    list(APPEND documents "${document}")
  endforeach()
  set(force "")
  if(arg_FORCE)
    set(force --force)
  endif()

  add_custom_command(
    OUTPUT "${output}"
    COMMAND ${tool} compile ${force} -o "${output}" ${documents}
    DEPENDS ${documents} ${arg_DEPENDS} ${tool_dependency}
    COMMENT "Compiling the message catalogue ${arg_OUTPUT}"
    VERBATIM)
  if(arg_TARGET)
    get_filename_component(name "${output}" NAME_WE)
    string(MAKE_C_IDENTIFIER "${arg_TARGET}_${name}_catalogue" custom_target)
    add_custom_target(${custom_target} DEPENDS "${output}")
    add_dependencies(${arg_TARGET} ${custom_target})
  endif()
endfunction()
