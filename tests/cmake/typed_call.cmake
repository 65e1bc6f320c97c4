# A Key takes exactly its number of arguments, a PluralKey a number as its
# count, and an unsupported argument type is refused with a readable message, both at compile time.
include(${CMAKE_CURRENT_LIST_DIR}/compile_check.cmake)

set(msg_typed_source ${CMAKE_CURRENT_SOURCE_DIR}/compile/typed_key_arguments.cpp)
msg_add_compile_check(NAME typed_call.key_count_right SOURCE ${msg_typed_source})
msg_add_compile_check(NAME typed_call.key_count_wrong SOURCE ${msg_typed_source}
  DEFINITIONS MSG_EXPECT_COUNT_ERROR
  FAILS_WITH "msg::write: the number of arguments differs from the key's placeholders")
msg_add_compile_check(NAME typed_call.unsupported_type SOURCE ${msg_typed_source}
  DEFINITIONS MSG_EXPECT_TYPE_ERROR
  FAILS_WITH "msg: a character is not a message argument")
msg_add_compile_check(NAME typed_call.plural_count_string SOURCE ${msg_typed_source}
  DEFINITIONS MSG_EXPECT_STRING_COUNT_ERROR
  FAILS_WITH "msg: the count of a plural key must be a number")
