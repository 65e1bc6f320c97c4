# msg_add_compile_check(NAME <test> SOURCE <file> [DEFINITIONS <macro>...]
#                       [INCLUDE_DIRECTORIES <dir>...] [FAILS_WITH <regex>])
# A test that compiles <file> (-fsyntax-only) with the project's compiler,
# standard, public headers and -Wall -Wextra -Wpedantic -Werror. It passes if
# the file compiles or, with FAILS_WITH, only if the compiler's output matches
# <regex>, so a file that breaks for another reason does not pass.
include_guard(GLOBAL)

function(msg_add_compile_check)
  cmake_parse_arguments(PARSE_ARGV 0 check "" "NAME;SOURCE;FAILS_WITH"
                        "DEFINITIONS;INCLUDE_DIRECTORIES")
  set(flags -std=c++${CMAKE_CXX_STANDARD} -fsyntax-only -Wall -Wextra -Wpedantic -Werror
            -I${PROJECT_SOURCE_DIR}/include -I${MSG_GENERATED_INCLUDE_DIR})
  foreach(directory IN LISTS check_INCLUDE_DIRECTORIES)
    list(APPEND flags -I${directory})
  endforeach()
  foreach(definition IN LISTS check_DEFINITIONS)
    list(APPEND flags -D${definition})
  endforeach()
  add_test(NAME ${check_NAME} COMMAND ${CMAKE_CXX_COMPILER} ${flags} ${check_SOURCE})
  set_tests_properties(${check_NAME} PROPERTIES LABELS compile)
  if(DEFINED check_FAILS_WITH)
    set_tests_properties(${check_NAME} PROPERTIES PASS_REGULAR_EXPRESSION "${check_FAILS_WITH}")
  endif()
endfunction()
