# msgtool: the process tests of tests/msgtool_test.cpp run the built tool,
# and a header it generates must build calls with the keys' numbers of
# arguments. That a key refuses any other number, or a plural key a count
# that is no number, is the library's (typed_call.cmake).
if(NOT TARGET msgtool)
  return()
endif()
target_compile_definitions(msgtool_test PRIVATE MSGTOOL_PATH="$<TARGET_FILE:msgtool>")
add_dependencies(msgtool_test msgtool)
find_package(nlohmann_json 3 CONFIG REQUIRED)
target_link_libraries(msgtool_test PRIVATE nlohmann_json::nlohmann_json)

include(${CMAKE_CURRENT_LIST_DIR}/compile_check.cmake)
set(msgtool_keys_dir ${CMAKE_CURRENT_BINARY_DIR}/msgtool_keys)
add_test(NAME msgtool.generate_keys
  COMMAND msgtool header -o ${msgtool_keys_dir}/generated_keys.h
          ${CMAKE_CURRENT_SOURCE_DIR}/data/msgtool/keys.xml)
set_tests_properties(msgtool.generate_keys PROPERTIES FIXTURES_SETUP msgtool_keys)
file(MAKE_DIRECTORY ${msgtool_keys_dir})
set(msgtool_keys_source ${CMAKE_CURRENT_SOURCE_DIR}/compile/generated_keys.cpp)
msg_add_compile_check(NAME msgtool.keys_count_right SOURCE ${msgtool_keys_source}
  INCLUDE_DIRECTORIES ${msgtool_keys_dir})
set_tests_properties(msgtool.keys_count_right PROPERTIES FIXTURES_REQUIRED msgtool_keys)
