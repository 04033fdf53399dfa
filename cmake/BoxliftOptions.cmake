# How every target of the project is compiled: `boxlift_options` carries it, each target links it.
option(BOXLIFT_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)
set(BOXLIFT_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_package(Threads REQUIRED)

add_library(boxlift_options INTERFACE)
target_include_directories(boxlift_options INTERFACE "${CMAKE_SOURCE_DIR}/src")
target_link_libraries(boxlift_options INTERFACE Threads::Threads)
target_compile_options(boxlift_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion)
if(BOXLIFT_WARNINGS_AS_ERRORS)
    target_compile_options(boxlift_options INTERFACE -Werror)
endif()
if(BOXLIFT_SANITIZE)
    # With its checks in between, gcc 12 takes for uninitialized what is not.
    target_compile_options(boxlift_options INTERFACE
        -Wno-maybe-uninitialized -fsanitize=${BOXLIFT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(boxlift_options INTERFACE -fsanitize=${BOXLIFT_SANITIZE})
endif()
