include(GoogleTest)

# Registers the tests of a program: one by one, or all in one process where an emulator runs them, since
# starting that for each would take a hundred times longer.
#   vantrel_discover_tests(TARGET LABEL [EMULATED FILTER])
# An emulator runs what the filter names: it is slow, and a child of a process with threads fails in it.
function(vantrel_discover_tests target label)
    cmake_parse_arguments(PARSE_ARGV 2 tests "" "EMULATED" "")
    if(NOT CMAKE_CROSSCOMPILING)
        gtest_discover_tests(${target} PROPERTIES LABELS ${label} TIMEOUT 600)
        return()
    endif()
    set(environment)
    set(filter "*")
    if(VANTREL_EMULATED)
        set(environment VANTREL_EMULATED=1)
        if(tests_EMULATED)
            set(filter "${tests_EMULATED}")
        endif()
    endif()
    add_test(NAME ${target} COMMAND ${target} --gtest_filter=${filter})
    set_tests_properties(${target} PROPERTIES LABELS ${label} TIMEOUT 900 ENVIRONMENT "${environment}")
endfunction()
