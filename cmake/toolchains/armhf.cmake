set(vantrel_architecture armhf)
set(vantrel_processor arm)
set(VANTREL_EMULATED ON)
set(vantrel_compiler arm-linux-gnueabihf)
set(vantrel_multiarch arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)

set(CMAKE_CROSSCOMPILING_EMULATOR
    ${vantrel_limit} qemu-arm -L /usr/${vantrel_compiler}
    -E LD_LIBRARY_PATH=${vantrel_overlay_libraries}
    -E LOCPATH=${vantrel_overlay}/usr/lib/locale)
