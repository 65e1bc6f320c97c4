# The plural rules test compares the library with ICU, so it links ICU's
# i18n part (the library links only the common one).
target_link_libraries(plural_rules_test PRIVATE ICU::i18n ICU::uc)
