# The default channels write to std::cerr in a program that has not set up
# the standard streams itself (tests/standard_error_probe.cpp).
add_executable(standard_error_probe ${CMAKE_CURRENT_SOURCE_DIR}/standard_error_probe.cpp)
target_link_libraries(standard_error_probe PRIVATE msg::core)
msg_strict_warnings(standard_error_probe)
add_test(NAME standard_error.without_iostream COMMAND standard_error_probe)
# A pass needs both lines; the exit code does not count then, so a
# sanitizer's report fails it.
set_tests_properties(standard_error.without_iostream PROPERTIES LABELS unit
  PASS_REGULAR_EXPRESSION "probe:plain: through MessageChannel\n.*through FormattingMessageChannel"
  FAIL_REGULAR_EXPRESSION "Sanitizer|runtime error")
