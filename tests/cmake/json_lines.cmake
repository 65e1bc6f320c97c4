# The JSON Lines channel's test reads its output back with nlohmann-json, a
# strict parser (the library itself does not use it).
find_package(nlohmann_json 3 REQUIRED)
target_link_libraries(json_lines_channel_test PRIVATE nlohmann_json::nlohmann_json)
