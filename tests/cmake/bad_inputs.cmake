# The bad-input table of docs/reliability.md. bad_input_probe makes one
# input per case at run time, loads it through
# MessageHandlerX::loadMessageDocument after a small document, and checks
# the outcome and that the entries loaded before are still found.
# tools/bad-inputs.sh runs every case to measure time and peak memory.
add_executable(bad_input_probe ${CMAKE_CURRENT_SOURCE_DIR}/bad_input_probe.cpp)
target_link_libraries(bad_input_probe PRIVATE msg_objects)
target_include_directories(bad_input_probe PRIVATE ${PROJECT_SOURCE_DIR})
target_compile_definitions(bad_input_probe PRIVATE MSG_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
msg_strict_warnings(bad_input_probe)

# Every case but the large document with placeholders, which takes as long
# as the one without them and adds nothing a unit test would catch. The
# figures of all are in docs/reliability.md.
set(msg_bad_input_cases
  missing_file folder empty_file bom_only binary_garbage utf16_declared latin1_declared
  broken_first_byte broken_last_byte schema_invalid schema_missing include_missing_part
  include_itself include_each_other large_50mb_200k_messages nested_200k_elements text_1mb
  entity_expansion_bomb external_entity_local_file quadratic_blowup include_outside_folder
  include_part_with_doctype network_references schema_entity_bomb)
foreach(case IN LISTS msg_bad_input_cases)
  add_test(NAME bad_input.${case} COMMAND bad_input_probe ${case})
  set_tests_properties(bad_input.${case} PROPERTIES LABELS bad_input TIMEOUT 600)
endforeach()
