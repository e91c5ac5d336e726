set(vantrel_architecture arm64)
set(vantrel_processor aarch64)
set(VANTREL_EMULATED ON)
set(vantrel_compiler aarch64-linux-gnu)
set(vantrel_multiarch aarch64-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)

set(CMAKE_CROSSCOMPILING_EMULATOR
    ${vantrel_limit} qemu-aarch64 -L /usr/${vantrel_compiler}
    -E LD_LIBRARY_PATH=${vantrel_overlay_libraries}
    -E LOCPATH=${vantrel_overlay}/usr/lib/locale)
