# What cmake --install puts where: the libraries, and what programs are built against them with.
include(CMakePackageConfigHelpers)

# Folders have the library's name in lower case.
if(CMAKE_INSTALL_DOCDIR STREQUAL "${CMAKE_INSTALL_DATAROOTDIR}/doc/${PROJECT_NAME}")
    set(CMAKE_INSTALL_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/vantrel)
endif()
set(vantrel_cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Vantrel)
set(vantrel_pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(vantrel_libraries vantrelC)
set(vantrel_private_libraries "")
if(TARGET vantrelif)
    list(APPEND vantrel_libraries vantrelif vantrelcore)
    set(vantrel_private_libraries "-lvantrelif -lvantrelcore")
endif()
install(TARGETS ${vantrel_libraries} EXPORT VantrelTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/vantrel.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# Neither file depends on the prefix: what is installed can be moved.
install(EXPORT VantrelTargets NAMESPACE Vantrel:: DESTINATION ${vantrel_cmake_folder})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/VantrelConfig.cmake.in
    ${PROJECT_BINARY_DIR}/VantrelConfig.cmake INSTALL_DESTINATION ${vantrel_cmake_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VantrelConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VantrelConfig.cmake ${PROJECT_BINARY_DIR}/VantrelConfigVersion.cmake
    DESTINATION ${vantrel_cmake_folder})

foreach(kind LIB INCLUDE)
    string(TOLOWER ${kind} name)
    file(RELATIVE_PATH vantrel_${name}_path
        ${CMAKE_INSTALL_PREFIX}/${vantrel_pkgconfig_folder} ${CMAKE_INSTALL_FULL_${kind}DIR})
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/vantrel.pc.in ${PROJECT_BINARY_DIR}/vantrel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vantrel.pc DESTINATION ${vantrel_pkgconfig_folder})

# The manual pages are the header's text: 3 has the functions, 7 the conventions, types and statuses.
foreach(section 3 7)
    set(page ${PROJECT_BINARY_DIR}/man/vantrel.${section})
    add_custom_command(OUTPUT ${page}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
        COMMAND awk -v section=${section} -v version=${PROJECT_VERSION}
            -f ${PROJECT_SOURCE_DIR}/docs/man/page.awk ${PROJECT_SOURCE_DIR}/include/vantrel.h > ${page}
        DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/page.awk ${PROJECT_SOURCE_DIR}/include/vantrel.h
        VERBATIM)
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
    list(APPEND vantrel_pages ${page})
endforeach()
add_custom_target(vantrel_man ALL DEPENDS ${vantrel_pages})

# The link to the header leads to where that is installed.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/README.md)
file(RELATIVE_PATH vantrel_header_path ${CMAKE_INSTALL_FULL_DOCDIR} ${CMAKE_INSTALL_FULL_INCLUDEDIR}/vantrel.h)
file(READ ${PROJECT_SOURCE_DIR}/README.md vantrel_readme)
string(REPLACE "](include/vantrel.h)" "](${vantrel_header_path})" vantrel_readme "${vantrel_readme}")
file(WRITE ${PROJECT_BINARY_DIR}/README.md "${vantrel_readme}")
install(FILES ${PROJECT_BINARY_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
    FILES_MATCHING PATTERN *.md PATTERN api EXCLUDE PATTERN man EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/catalogue DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(FILES ${PROJECT_SOURCE_DIR}/tests/library/first_program.c DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
