# How every target of the project is compiled: `boxlift_options` carries it, each target links it.
option(BOXLIFT_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)
set(BOXLIFT_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")
option(BOXLIFT_FUZZ "Build the fuzz targets; takes clang" OFF)

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
if(APPLE)
    # Apple's standard library has stop tokens only with it (docs/macos.md).
    target_compile_options(boxlift_options INTERFACE -fexperimental-library)
    target_link_options(boxlift_options INTERFACE -fexperimental-library)
endif()
if(BOXLIFT_SANITIZE)
    # With its checks in between, gcc 12 takes for uninitialized what is not.
    target_compile_options(boxlift_options INTERFACE
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>
        -fsanitize=${BOXLIFT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(boxlift_options INTERFACE -fsanitize=${BOXLIFT_SANITIZE})
endif()

# boxlift_link_only_what_is_used(<target>): of the shared libraries that come with the static ones,
# those that nothing calls are left out.
function(boxlift_link_only_what_is_used target)
    if(APPLE)
        target_link_options(${target} PRIVATE LINKER:-dead_strip_dylibs)
    else()
        target_link_options(${target} PRIVATE LINKER:--as-needed)
    endif()
endfunction()

# Where boxlift-worker is installed, and how to get there from the folder of programs.
include(GNUInstallDirs)
set(BOXLIFT_WORKER_DIR "${CMAKE_INSTALL_LIBEXECDIR}/boxlift" CACHE STRING
    "Folder of boxlift-worker, below the prefix")
file(RELATIVE_PATH BOXLIFT_WORKER_FROM_PROGRAMS
    "/${CMAKE_INSTALL_BINDIR}" "/${BOXLIFT_WORKER_DIR}")
