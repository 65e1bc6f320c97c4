# The number symbols of the ICU we build with, as a table the library reads
# (message_core/NumberSymbolData.h). The generator runs on the build
# machine; only it and the tests link ICU. Included from the top directory,
# so that the library's layer in that directory sees the custom command.
add_executable(msg_number_symbols_generator
  ${PROJECT_SOURCE_DIR}/tools/number_symbols/GenerateNumberSymbols.cpp)
target_link_libraries(msg_number_symbols_generator PRIVATE ICU::i18n ICU::uc)
target_include_directories(msg_number_symbols_generator PRIVATE ${PROJECT_SOURCE_DIR})
msg_strict_warnings(msg_number_symbols_generator)

set(MSG_NUMBER_SYMBOL_DATA ${PROJECT_BINARY_DIR}/generated/NumberSymbolData.cpp)
add_custom_command(
  OUTPUT ${MSG_NUMBER_SYMBOL_DATA}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/generated
  COMMAND msg_number_symbols_generator ${MSG_NUMBER_SYMBOL_DATA}
  DEPENDS msg_number_symbols_generator
  COMMENT "Writing the number symbols of ICU ${ICU_VERSION}"
  VERBATIM)
