# The flags that every target of the project is compiled with.
add_library(vantrel_build_flags INTERFACE)
target_compile_options(vantrel_build_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wcast-align$<$<CXX_COMPILER_ID:GNU>:=strict> -Wundef
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
    $<$<BOOL:${VANTREL_WARNINGS_AS_ERRORS}>:-Werror>)
# Everything of a build comes from one compiler, so that what changed between its versions does not matter.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_compile_options(vantrel_build_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-psabi>)
endif()
# File offsets and times are 64 bits wide on 32-bit platforms too.
target_compile_definitions(vantrel_build_flags INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)

# Where the sources lie leaves no trace either.
target_compile_options(vantrel_build_flags INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)

if(VANTREL_SANITIZERS)
    target_compile_options(vantrel_build_flags INTERFACE
        -fsanitize=${VANTREL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vantrel_build_flags INTERFACE -fsanitize=${VANTREL_SANITIZERS})
endif()

# Most of a test runs once: what counts is how soon it is built.
add_library(vantrel_test_flags INTERFACE)
target_link_libraries(vantrel_test_flags INTERFACE vantrel_build_flags)
target_compile_options(vantrel_test_flags INTERFACE -O0 -g1)
