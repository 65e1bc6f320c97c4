# The API reference: target `docs` runs Doxygen over the public headers,
# README.md (the main page) and the guides of docs/, with docs/Doxyfile.in,
# and writes MSG_DOCS_DIR/html/index.html. Any warning of Doxygen (an
# undocumented public declaration, a @param that names no parameter, a
# broken reference) fails the target; `make docs-check` runs it in
# `make test`.
#
# Only when Doxygen and Python 3 (docs/doxygen_filter.py) are found; the
# library does not need either.

find_package(Doxygen QUIET)
find_package(Python3 QUIET COMPONENTS Interpreter)
if(NOT DOXYGEN_FOUND OR NOT Python3_Interpreter_FOUND)
  return()
endif()

set(MSG_DOCS_DIR ${PROJECT_BINARY_DIR}/docs
  CACHE PATH "Where the target docs writes the API reference (its html/)")
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)

add_custom_target(docs
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${MSG_DOCS_DIR}/html
  COMMAND ${CMAKE_COMMAND} -E make_directory ${MSG_DOCS_DIR}
  COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  COMMENT "API reference: ${MSG_DOCS_DIR}/html/index.html"
  VERBATIM)
