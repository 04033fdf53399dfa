include(GoogleTest)
find_package(GTest REQUIRED)

# boxlift_add_tests(<name> SOURCES <files...> LIBRARIES <targets...>): one test program, each of its
# cases a test of its own.
function(boxlift_add_tests name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
endfunction()
