# Tests of bringing the database to the device.
find_package(SQLite3 REQUIRED)
find_package(ZLIB REQUIRED)
find_package(nlohmann_json REQUIRED)

lirvox_test(DatabaseUpdateTest)
target_link_libraries(DatabaseUpdateTest PRIVATE SQLite::SQLite3 ZLIB::ZLIB)

# Runs one update, to be killed.
add_executable(UpdateChild UpdateChild.cpp)
lirvox_compile_options(UpdateChild)
target_include_directories(UpdateChild PRIVATE "${PROJECT_SOURCE_DIR}")
target_link_libraries(UpdateChild PRIVATE lirvox)
lirvox_test(LoopbackUpdateTest THREADS)
add_dependencies(LoopbackUpdateTest UpdateChild)
target_compile_definitions(LoopbackUpdateTest PRIVATE
  LIRVOX_UPDATE_CHILD="$<TARGET_FILE:UpdateChild>")
target_link_libraries(LoopbackUpdateTest PRIVATE ZLIB::ZLIB)

lirvox_test(PublishTest)
target_link_libraries(PublishTest PRIVATE lirvox_catalog nlohmann_json::nlohmann_json)
lirvox_test(NginxTest THREADS)
target_link_libraries(NginxTest PRIVATE lirvox_catalog)
target_compile_definitions(NginxTest PRIVATE
  LIRVOX_SERVICE_DOCUMENTATION="${PROJECT_SOURCE_DIR}/docs/service.md")
