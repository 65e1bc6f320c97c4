# The tables the library reads from the ICU we build with: plural rules
# (message_core/PluralRuleData.h) and number symbols
# (message_core/NumberSymbolData.h). Each generator runs on the build
# machine and writes one source file; only the generators and the tests
# link ICU. Included from the top directory, so that the library's layer in
# that directory sees the custom commands.

# Builds the generator `name` from `source` and has it write
# generated/<output>; `description` names the table for the build's log.
# Adds generated/<output> to the layer msg_core.
function(msg_icu_table name source output description)
  add_executable(${name} ${PROJECT_SOURCE_DIR}/${source})
  target_link_libraries(${name} PRIVATE ICU::i18n ICU::uc)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  msg_strict_warnings(${name})
  set(table ${PROJECT_BINARY_DIR}/generated/${output})
  add_custom_command(
    OUTPUT ${table}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/generated
    COMMAND ${name} ${table}
    DEPENDS ${name}
    COMMENT "Writing the ${description} of ICU ${ICU_VERSION}"
    VERBATIM)
  target_sources(msg_core PRIVATE ${table})
endfunction()

msg_icu_table(msg_plural_rules_generator tools/plural_rules/GeneratePluralRules.cpp
  PluralRuleData.cpp "plural rules")
msg_icu_table(msg_number_symbols_generator tools/number_symbols/GenerateNumberSymbols.cpp
  NumberSymbolData.cpp "number symbols")
