# Warnings, sanitizers and coverage for every target of the project.
option(PANEL_COMPANION_WERROR "Warnings are errors" OFF)
option(PANEL_COMPANION_UNITY_TESTS "Compile up to eight sources of a test program as one, in a third of the time" ON)
option(PANEL_COMPANION_COVERAGE "Instrument for gcov" OFF)
set(PANEL_COMPANION_SANITIZE "" CACHE STRING "Sanitizers, as in -fsanitize=")

if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(CCACHE_PROGRAM ccache)
    if(CCACHE_PROGRAM)
        set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
        set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    endif()
endif()

# Links in a quarter of the time where it is installed.
include(CheckLinkerFlag)
check_linker_flag(CXX -fuse-ld=mold PANEL_COMPANION_HAS_MOLD)
if(PANEL_COMPANION_HAS_MOLD)
    add_link_options(-fuse-ld=mold)
endif()

add_compile_options(-Wall -Wextra -Wpedantic)
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wshadow> $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>)
# For the programs and their libraries, but not for tests, whose macros cast and whose numbers are small.
set(product_warnings $<$<COMPILE_LANGUAGE:CXX>:-Wconversion> $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>)
if(PANEL_COMPANION_WERROR)
    add_compile_options(-Werror)
endif()
if(PANEL_COMPANION_SANITIZE)
    # Functions and lines are enough for a report; without -O1 and local variables it compiles in half the time.
    add_compile_options(-fsanitize=${PANEL_COMPANION_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -Og -g1)
    add_link_options(-fsanitize=${PANEL_COMPANION_SANITIZE})
endif()
if(PANEL_COMPANION_COVERAGE)
    add_compile_options(--coverage)
    add_link_options(--coverage)
endif()
