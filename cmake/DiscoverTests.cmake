include(GoogleTest)

# Registers the tests of a program: one by one, or all in a few processes where an emulator runs them, since
# starting that for each would take a hundred times longer.
#   vantrel_discover_tests(TARGET LABEL [SHARDS COUNT] [NOT_EMULATED FILTER])
# What the filter names needs what an emulator lacks.
function(vantrel_discover_tests target label)
    cmake_parse_arguments(PARSE_ARGV 2 tests "" "SHARDS;NOT_EMULATED" "")
    if(NOT CMAKE_CROSSCOMPILING)
        gtest_discover_tests(${target} PROPERTIES LABELS ${label} TIMEOUT 600)
        return()
    endif()
    set(environment)
    set(filter "*")
    if(VANTREL_EMULATED)
        list(APPEND environment VANTREL_EMULATED=1)
        set(filter "-${tests_NOT_EMULATED}")
    endif()
    if(NOT tests_SHARDS)
        set(tests_SHARDS 1)
    endif()
    math(EXPR last "${tests_SHARDS} - 1")
    foreach(shard RANGE ${last})
        set(name ${target}.${shard})
        add_test(NAME ${name} COMMAND ${target} --gtest_filter=${filter})
        set_tests_properties(${name} PROPERTIES LABELS ${label} TIMEOUT 900
            ENVIRONMENT "GTEST_TOTAL_SHARDS=${tests_SHARDS};GTEST_SHARD_INDEX=${shard};${environment}")
    endforeach()
endfunction()
