# One static library per folder: LINKS is all that a target may include; logic targets never name Qt.
# "all_verify_interface_header_sets" compiles on its own each header that has no source, which would include it first.
function(app_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;HEADERS;LINKS;PRIVATE_LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    set(headers_without_source ${ARG_HEADERS})
    list(TRANSFORM ARG_SOURCES REPLACE "\\.cpp$" ".h" OUTPUT_VARIABLE headers_with_source)
    list(REMOVE_ITEM headers_without_source ${headers_with_source})
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${headers_without_source})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_compile_options(${name} PRIVATE ${product_warnings})
    target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
endfunction()

# The tests of one folder, a program called <name>_test; see app_test_run for the other arguments.
#   ONE_THREAD   our code starts no threads there, so the thread sanitizer has nothing to find; tools/check.sh makes sure
function(app_test name)
    cmake_parse_arguments(ARG "ONE_THREAD" "TIMEOUT;SHARDS" "SOURCES;LINKS;LABELS" ${ARGN})
    if(NOT BUILD_TESTING)
        return()
    endif()
    add_executable(${name}_test ${ARG_SOURCES})
    if(PANEL_COMPANION_UNITY_TESTS)
        set_target_properties(${name}_test PROPERTIES UNITY_BUILD ON)
        # GCC takes the sources for headers, whose unnamed namespaces would be a mistake.
        target_compile_options(${name}_test PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
    endif()
    target_include_directories(${name}_test PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name}_test PRIVATE ${ARG_LINKS} GTest::gmock GTest::gtest_main)
    if(NOT TARGET test_programs)
        add_custom_target(test_programs)
    endif()
    if(ARG_ONE_THREAD AND PANEL_COMPANION_SANITIZE STREQUAL "thread")
        set_target_properties(${name}_test PROPERTIES EXCLUDE_FROM_ALL ON)
        return()
    endif()
    add_dependencies(test_programs ${name}_test)
    app_test_run(${name} PROGRAM ${name}_test TIMEOUT ${ARG_TIMEOUT} SHARDS ${ARG_SHARDS} LABELS ${ARG_LABELS})
endfunction()

# Has CTest run a test program as <name>/1, <name>/2, ... Each run executes its share of the cases and writes their
# results to junit/<name>/<number>/ in the build folder. A single case: <program> --gtest_filter=Suite.Case
#   LABELS       "unit" (default) needs nothing but the program; "adapter" starts real servers on loopback by itself;
#                "realtime" besides: waits for real time, so that a busy machine may fail it: ./test retries it once
#   SHARDS       number of processes that share the cases and may run side by side
#   FILTER       the cases to run, as for --gtest_filter
#   ENVIRONMENT  variables
function(app_test_run name)
    cmake_parse_arguments(ARG "" "PROGRAM;TIMEOUT;SHARDS;FILTER" "LABELS;ENVIRONMENT" ${ARGN})
    get_target_property(is_left_out ${ARG_PROGRAM} EXCLUDE_FROM_ALL)
    if(is_left_out)
        return()
    endif()
    if(NOT ARG_LABELS)
        set(ARG_LABELS unit)
    endif()
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    if(NOT ARG_SHARDS)
        set(ARG_SHARDS 1)
    endif()
    if(ARG_FILTER)
        list(APPEND ARG_ENVIRONMENT GTEST_FILTER=${ARG_FILTER})
    endif()
    set(cost 0)
    if("realtime" IN_LIST ARG_LABELS)
        set(cost 150) # before the suites of a few seconds each, which fill the gaps at the end
    endif()
    foreach(shard RANGE 1 ${ARG_SHARDS})
        math(EXPR index "${shard} - 1")
        add_test(NAME ${name}/${shard} COMMAND ${ARG_PROGRAM})
        set(environment ${ARG_ENVIRONMENT} GTEST_TOTAL_SHARDS=${ARG_SHARDS} GTEST_SHARD_INDEX=${index}
            GTEST_OUTPUT=xml:${PROJECT_BINARY_DIR}/junit/${name}/${shard}/)
        set_tests_properties(${name}/${shard} PROPERTIES
            LABELS "${ARG_LABELS}" TIMEOUT ${ARG_TIMEOUT} COST ${cost} ENVIRONMENT "${environment}")
    endforeach()
endfunction()

# Has CTest run a Python file's tests with pytest, each as <name>/<test> in a network and on a desktop of its own.
#   TOGETHER     all of them in one process, as <name>, since they share fixtures that take long to set up
#   LABELS       as above
function(app_pytest name file)
    cmake_parse_arguments(ARG "TOGETHER" "TIMEOUT" "LABELS" ${ARGN})
    get_filename_component(file ${file} ABSOLUTE)
    if(ARG_TOGETHER)
        app_pytest_run(${name} ${file} "${ARG_TIMEOUT}" "${ARG_LABELS}")
        return()
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(STRINGS ${file} functions REGEX "^def test_")
    foreach(function IN LISTS functions)
        string(REGEX REPLACE "^def test_([A-Za-z0-9_]+).*" "\\1" test ${function})
        app_pytest_run(${name}/${test} ${file}::test_${test} "${ARG_TIMEOUT}" "${ARG_LABELS}")
    endforeach()
endfunction()

function(app_pytest_run name tests timeout labels)
    if(NOT timeout)
        set(timeout 120)
    endif()
    string(REGEX REPLACE "/.*" "" suite ${name})
    # Only the distribution's own Python has the accessibility bindings.
    add_test(NAME ${name} COMMAND ${PROJECT_SOURCE_DIR}/tools/lib/isolated.sh --or-skip /usr/bin/python3 -B -m pytest -s -q
        -p no:cacheprovider --tb=short -o junit_suite_name=${suite} ${tests})
    set_tests_properties(${name} PROPERTIES LABELS "suite;${labels}" TIMEOUT ${timeout} SKIP_RETURN_CODE 77
        COST ${timeout} # long ones first
        ENVIRONMENT "PANEL_COMPANION_PROGRAMS=${CMAKE_RUNTIME_OUTPUT_DIRECTORY};PANEL_COMPANION_JUNIT=${PROJECT_BINARY_DIR}/junit/${name}")
endfunction()
