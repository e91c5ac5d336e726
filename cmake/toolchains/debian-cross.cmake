# Cross builds with Debian's compilers. The files that include this one set
#   vantrel_architecture   Debian's name of the architecture, which the overlay is named after
#   vantrel_processor      CMake's name of it
#   vantrel_compiler       the prefix of the compilers and the directory of their C library
#   vantrel_multiarch      the library directory inside Debian's packages
# and may then use vantrel_overlay and vantrel_overlay_libraries for the emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${vantrel_processor})
set(CMAKE_C_COMPILER ${vantrel_compiler}-gcc)
set(CMAKE_CXX_COMPILER ${vantrel_compiler}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${vantrel_multiarch})

if(DEFINED ENV{VANTREL_OVERLAY})
    set(vantrel_overlay $ENV{VANTREL_OVERLAY})
else()
    get_filename_component(vantrel_overlay
        ${CMAKE_CURRENT_LIST_DIR}/../../build/overlay/${vantrel_architecture} ABSOLUTE)
endif()
if(NOT EXISTS ${vantrel_overlay})
    message(FATAL_ERROR "${vantrel_overlay} is missing: scripts/overlay ${vantrel_architecture} makes it")
endif()
set(vantrel_overlay_libraries ${vantrel_overlay}/usr/lib/${vantrel_multiarch})

set(CMAKE_FIND_ROOT_PATH ${vantrel_overlay} /usr/${vantrel_compiler})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Packages keep headers that differ between architectures in a folder of their own. Where the overlay lies leaves
# no trace in what is compiled.
foreach(language C CXX)
    set(CMAKE_${language}_FLAGS_INIT
        "-isystem ${vantrel_overlay}/usr/include/${vantrel_multiarch} -ffile-prefix-map=${vantrel_overlay}=")
endforeach()
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,-rpath-link,${vantrel_overlay_libraries}")
endforeach()

# An emulated program that hangs is ended.
set(vantrel_limit timeout --kill-after=10 900)
