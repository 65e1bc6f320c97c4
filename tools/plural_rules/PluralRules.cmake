# The plural rules of the ICU we build with, as a table the library reads
# (message_core/PluralRuleData.h). The generator runs on the build machine;
# only it and the tests link ICU. Included from the top directory, so that
# the library's layer in that directory sees the custom command.
add_executable(msg_plural_rules_generator
  ${PROJECT_SOURCE_DIR}/tools/plural_rules/GeneratePluralRules.cpp)
target_link_libraries(msg_plural_rules_generator PRIVATE ICU::i18n ICU::uc)
target_include_directories(msg_plural_rules_generator PRIVATE ${PROJECT_SOURCE_DIR})
msg_strict_warnings(msg_plural_rules_generator)

set(MSG_PLURAL_RULE_DATA ${PROJECT_BINARY_DIR}/generated/PluralRuleData.cpp)
add_custom_command(
  OUTPUT ${MSG_PLURAL_RULE_DATA}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/generated
  COMMAND msg_plural_rules_generator ${MSG_PLURAL_RULE_DATA}
  DEPENDS msg_plural_rules_generator
  COMMENT "Writing the plural rules of ICU ${ICU_VERSION}"
  VERBATIM)
