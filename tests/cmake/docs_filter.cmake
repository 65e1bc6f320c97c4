# The filter that hands the public headers' comments to Doxygen
# (docs/doxygen_filter.py), when Python 3 is there. The reference itself is
# built and checked by `make docs-check`.
find_package(Python3 QUIET COMPONENTS Interpreter)
if(Python3_Interpreter_FOUND)
  add_test(NAME docs_filter
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/docs_filter_test.py)
  set_tests_properties(docs_filter PROPERTIES
    LABELS unit
    ENVIRONMENT "MSG_SOURCE_DIR=${PROJECT_SOURCE_DIR};PYTHONDONTWRITEBYTECODE=1")
endif()
