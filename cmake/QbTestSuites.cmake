# Read by ctest: one test for each suite of `qb_tests`, so that a crash hides little and start-up costs little.
execute_process(COMMAND ${launcher} ${qb_tests} --gtest_list_tests
    OUTPUT_VARIABLE listing RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${qb_tests} could not list its tests (${status}); build it first.")
endif()

list(JOIN launcher " " launcher_text)
string(REGEX MATCHALL "(^|\n)[A-Za-z0-9_/]+\\." suites "${listing}")
foreach(suite IN LISTS suites)
    string(STRIP "${suite}" suite)
    string(REGEX REPLACE "\\.$" "" name "${suite}")
    add_test(${name} ${launcher} ${qb_tests} --gtest_brief=1 --gtest_filter=${suite}*)
    set_tests_properties(${name} PROPERTIES TIMEOUT 600 ENVIRONMENT "QB_TEST_LAUNCHER=${launcher_text};LOCPATH=${locale_dir}")
endforeach()
