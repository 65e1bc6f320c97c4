# msg_add_compile_check(NAME <test> SOURCE <file>
#                       [DEFINITIONS <macro>...] [INCLUDE_DIRECTORIES <dir>...]
#                       [FAILS_WITH <regex>])
#
# A CTest test that compiles <file> (syntax and templates only, nothing is
# linked) with the project's compiler, C++ standard and public headers and
# -Wall -Wextra -Wpedantic -Werror. Without FAILS_WITH the test passes when
# the file compiles. With FAILS_WITH it passes only when the compilation
# fails with output matching <regex>, so a file that breaks for another
# reason (a typo, a missing header) does not count as the expected error.
include_guard(GLOBAL)

function(msg_add_compile_check)
  cmake_parse_arguments(PARSE_ARGV 0 check "" "NAME;SOURCE;FAILS_WITH"
                        "DEFINITIONS;INCLUDE_DIRECTORIES")
  set(flags -std=c++${CMAKE_CXX_STANDARD} -fsyntax-only -Wall -Wextra -Wpedantic -Werror
            -I${PROJECT_SOURCE_DIR}/include)
  foreach(directory IN LISTS check_INCLUDE_DIRECTORIES)
    list(APPEND flags -I${directory})
  endforeach()
  foreach(definition IN LISTS check_DEFINITIONS)
    list(APPEND flags -D${definition})
  endforeach()
  add_test(NAME ${check_NAME} COMMAND ${CMAKE_CXX_COMPILER} ${flags} ${check_SOURCE})
  set_tests_properties(${check_NAME} PROPERTIES LABELS compile)
  if(DEFINED check_FAILS_WITH)
    # The exit code is ignored once an expected output is set; the error
    # text decides.
    set_tests_properties(${check_NAME} PROPERTIES PASS_REGULAR_EXPRESSION "${check_FAILS_WITH}")
  endif()
endfunction()
