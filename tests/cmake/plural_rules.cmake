# The plural rules test compares the library with ICU, so it alone of the
# unit tests links ICU (the library does not).
target_link_libraries(plural_rules_test PRIVATE ICU::i18n ICU::uc)
