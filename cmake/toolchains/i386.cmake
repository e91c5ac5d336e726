set(vantrel_architecture i386)
set(vantrel_processor i686)
set(vantrel_compiler i686-linux-gnu)
set(vantrel_multiarch i386-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)

# The processor runs these programs itself; they only need their own loader and libraries.
set(CMAKE_CROSSCOMPILING_EMULATOR
    ${vantrel_limit} env LOCPATH=${vantrel_overlay}/usr/lib/locale
    /usr/${vantrel_compiler}/lib/ld-linux.so.2
    --library-path /usr/${vantrel_compiler}/lib:${vantrel_overlay_libraries})
