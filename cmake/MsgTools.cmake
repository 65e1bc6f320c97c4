# msg_generate_header(TARGET <target> DOCUMENTS <file>...
#                     [OUTPUT <header>] [REFERENCE <language>]
#                     [NAMESPACE <c++ namespace>] [DEPENDS <file>...])
#
# Generates a header of typed message keys (one ::msg::Key<N> per message,
# see `msgtool header`) from message documents, and makes <target> build it
# first and find it on its include path. The header is written again
# whenever a document, a file named in DEPENDS (parts a document includes,
# say) or msgtool itself changes.
#
#   OUTPUT     default: <current binary dir>/<target>_messages/<target>_keys.h;
#              a relative path is taken from the current binary dir
#   REFERENCE  the language whose texts give the placeholders (default en)
#   NAMESPACE  a C++ namespace around the generated ones
#
# Needs the msgtool of this package: the imported target msg::msgtool.
include_guard(GLOBAL)

function(msg_generate_header)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;OUTPUT;REFERENCE;NAMESPACE"
                        "DOCUMENTS;DEPENDS")
  if(NOT arg_TARGET OR NOT TARGET ${arg_TARGET})
    message(FATAL_ERROR "msg_generate_header: TARGET must name an existing target")
  endif()
  if(NOT arg_DOCUMENTS)
    message(FATAL_ERROR "msg_generate_header: DOCUMENTS must name at least one message document")
  endif()
  if(NOT TARGET msg::msgtool)
    message(FATAL_ERROR "msg_generate_header: msgtool is not part of this msg installation "
                        "(it was built with MSG_BUILD_TOOLS=OFF)")
  endif()
  if(NOT arg_OUTPUT)
    set(arg_OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${arg_TARGET}_messages/${arg_TARGET}_keys.h)
  elseif(NOT IS_ABSOLUTE "${arg_OUTPUT}")
    set(arg_OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${arg_OUTPUT})
  endif()
  if(NOT arg_REFERENCE)
    set(arg_REFERENCE en)
  endif()

  set(documents "")
  foreach(document IN LISTS arg_DOCUMENTS)
    get_filename_component(document "${document}" ABSOLUTE)
    list(APPEND documents "${document}")
  endforeach()
  set(namespace_option "")
  if(arg_NAMESPACE)
    set(namespace_option --namespace ${arg_NAMESPACE})
  endif()

  get_filename_component(output_dir "${arg_OUTPUT}" DIRECTORY)
  add_custom_command(
    OUTPUT "${arg_OUTPUT}"
    COMMAND ${CMAKE_COMMAND} -E make_directory "${output_dir}"
    COMMAND msg::msgtool header --reference ${arg_REFERENCE} ${namespace_option}
            -o "${arg_OUTPUT}" ${documents}
    DEPENDS ${documents} ${arg_DEPENDS} msg::msgtool
    COMMENT "Generating message keys ${arg_OUTPUT}"
    VERBATIM)
  target_sources(${arg_TARGET} PRIVATE "${arg_OUTPUT}")
  target_include_directories(${arg_TARGET} PRIVATE "${output_dir}")
endfunction()
