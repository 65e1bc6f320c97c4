# The bad-input table of docs/reliability.md: bad_input_probe loads one
# generated input per case through MessageHandlerX::loadMessageDocument and
# checks its outcome and that the entries loaded before are still found.
# tools/bad-inputs.sh runs the same program to measure time and memory.
add_executable(bad_input_probe ${CMAKE_CURRENT_SOURCE_DIR}/bad_input_probe.cpp)
target_link_libraries(bad_input_probe PRIVATE msg_objects)
target_include_directories(bad_input_probe PRIVATE ${PROJECT_SOURCE_DIR})
target_compile_definitions(bad_input_probe PRIVATE MSG_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
msg_strict_warnings(bad_input_probe)
