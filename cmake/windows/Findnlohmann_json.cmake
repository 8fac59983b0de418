include(${CMAKE_CURRENT_LIST_DIR}/Headers.cmake)
ovno2_find_headers(nlohmann_json nlohmann_json::nlohmann_json nlohmann)
