# One static library per folder: LINKS is all that a target may include; logic targets never name Qt.
# Headers are a file set, so that "all_verify_interface_header_sets" compiles each of them on its own.
function(app_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;HEADERS;LINKS;PRIVATE_LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${ARG_HEADERS})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
endfunction()

# The tests of one folder, a program called <name>_test; every test case is a ctest test of its own.
# LABELS: "unit" needs nothing but the program; "adapter" starts real servers on loopback by itself.
# RESOURCE_LOCK: what only one test may use at a time, for example "touch_port".
function(app_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT;RESOURCE_LOCK" "SOURCES;LINKS;LABELS" ${ARGN})
    if(NOT BUILD_TESTING)
        return()
    endif()
    if(NOT ARG_LABELS)
        set(ARG_LABELS unit)
    endif()
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 60)
    endif()
    add_executable(${name}_test ${ARG_SOURCES})
    set_target_properties(${name}_test PROPERTIES UNITY_BUILD OFF) # each test file has helpers of its own, under like names
    target_include_directories(${name}_test PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name}_test PRIVATE ${ARG_LINKS} GTest::gmock GTest::gtest_main)
    set(properties LABELS ${ARG_LABELS} TIMEOUT ${ARG_TIMEOUT})
    if(ARG_RESOURCE_LOCK)
        list(APPEND properties RESOURCE_LOCK ${ARG_RESOURCE_LOCK})
    endif()
    if(NOT TARGET test_programs)
        add_custom_target(test_programs)
    endif()
    add_dependencies(test_programs ${name}_test)
    gtest_discover_tests(${name}_test TEST_PREFIX "${name}/" DISCOVERY_MODE PRE_TEST PROPERTIES ${properties})
endfunction()
