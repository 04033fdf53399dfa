include(GoogleTest)
find_package(GTest REQUIRED)

# boxlift_precompile_headers(<name>): what most tests include takes longer to read than they take to
# compile. A program of few sources is built sooner without.
function(boxlift_precompile_headers name)
    target_precompile_headers(${name} PRIVATE
        <algorithm> <chrono> <filesystem> <functional> <memory> <optional> <string> <thread>
        <vector> <gtest/gtest.h>)
    get_target_property(sources ${name} SOURCES)
    list(LENGTH sources count)
    if(count LESS 5)
        set_target_properties(${name} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)
    endif()
    # A compiler that cannot use them reads the headers again; that is no failure.
    set_target_properties(${name} PROPERTIES PCH_WARN_INVALID OFF)
endfunction()

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
    boxlift_precompile_headers(${name})
    gtest_discover_tests(${name} TEST_PREFIX "${arg_PREFIX}" DISCOVERY_TIMEOUT 60)
endfunction()
