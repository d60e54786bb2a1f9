# Read by ctest as it starts: one test a suite of a GoogleTest program, named after the suite with the number of its cases.
# A program without cases is a fault. Set: program, emulator (may be empty), prefix, properties.
if(NOT EXISTS ${program})
    add_test("${prefix} is not built" ${program})  # which ctest reports as not run
    return()
endif()

execute_process(COMMAND ${emulator} ${program} --gtest_list_tests
    OUTPUT_VARIABLE listing RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${program} does not list its cases: ${result}")
endif()
string(REGEX REPLACE "[][;#]" "_" listing "${listing}")
string(REPLACE "\n" ";" lines "${listing}")

set(suite "")
set(suites "")
foreach(line IN LISTS lines)
    if(line MATCHES "^([^ ]+)\\.( |$)")
        set(suite ${CMAKE_MATCH_1})
        list(APPEND suites ${suite})
        set(count_${suite} 0)
    elseif(suite AND line MATCHES "^  [^ ]")
        math(EXPR count_${suite} "${count_${suite}} + 1")
    endif()
endforeach()
if(NOT suites)
    message(FATAL_ERROR "${program} has no cases")
endif()

foreach(suite IN LISTS suites)
    set(cases cases)
    if(count_${suite} EQUAL 1)
        set(cases case)
    endif()
    set(name "${prefix}.${suite} (${count_${suite}} ${cases})")
    add_test("${name}" ${emulator} ${program} --gtest_brief=1 "--gtest_filter=${suite}.*")
    set_tests_properties("${name}" PROPERTIES FAIL_REGULAR_EXPRESSION "] 0 tests from" ${properties})
endforeach()
