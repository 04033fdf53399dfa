include(GoogleTest)
find_package(GTest REQUIRED)

# boxlift_add_tests(<name> [MAIN <target>] [PREFIX <text>] SOURCES <files...> LIBRARIES
# <targets...>): one test program, each of its cases a test of its own. MAIN holds the program's
# main function, GTest::gtest_main unless named. PREFIX begins the names of the tests.
function(boxlift_add_tests name)
    cmake_parse_arguments(arg "" "MAIN;PREFIX" "SOURCES;LIBRARIES" ${ARGN})
    if(NOT arg_MAIN)
        set(arg_MAIN GTest::gtest_main)
    endif()
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} ${arg_MAIN} GTest::gmock)
    # To read them takes longer than to compile most of the tests.
    target_precompile_headers(${name} PRIVATE
        <algorithm> <chrono> <filesystem> <functional> <memory> <optional> <string> <thread>
        <vector> <gtest/gtest.h>)
    set_target_properties(${name} PROPERTIES PCH_WARN_INVALID OFF)
    gtest_discover_tests(${name} TEST_PREFIX "${arg_PREFIX}" DISCOVERY_TIMEOUT 60)
endfunction()
