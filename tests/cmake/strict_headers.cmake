# headers.strict.<compiler>.<standard>: compiles public_api_uses.cpp, which
# includes msg/msg.h and uses every public class, with the warnings of a
# strict application build and -Werror, at -O3 (where inlining exposes
# warnings in header code), with g++ and with clang, in C++17 and C++20.
# The public headers must stay silent in code built like that.

set(MSG_STRICT_USER_FLAGS -O3 -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
                          -Wold-style-cast -Werror)

find_program(MSG_STRICT_GXX NAMES g++-12 g++)
find_program(MSG_STRICT_CLANGXX NAMES clang++-14 clang++)
foreach(compiler IN ITEMS GXX CLANGXX)
  if(NOT MSG_STRICT_${compiler})
    message(STATUS "headers.strict: no ${compiler} compiler found, its tests are left out")
    continue()
  endif()
  string(TOLOWER ${compiler} compiler_name)
  foreach(standard IN ITEMS 17 20)
    add_test(NAME headers.strict.${compiler_name}.cxx${standard}
      COMMAND ${MSG_STRICT_${compiler}} -std=c++${standard} ${MSG_STRICT_USER_FLAGS}
              -I${PROJECT_SOURCE_DIR}/include -I${MSG_GENERATED_INCLUDE_DIR} -c ${CMAKE_CURRENT_SOURCE_DIR}/cmake/public_api_uses.cpp
              -o ${CMAKE_CURRENT_BINARY_DIR}/public_api_uses.${compiler_name}.cxx${standard}.o)
    set_tests_properties(headers.strict.${compiler_name}.cxx${standard} PROPERTIES LABELS packaging)
  endforeach()
endforeach()
