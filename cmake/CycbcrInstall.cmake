include(CMakePackageConfigHelpers)

install(TARGETS cycbcr
    EXPORT cycbcrTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(CYCBCR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/cycbcr)
install(EXPORT cycbcrTargets
    NAMESPACE cycbcr::
    DESTINATION ${CYCBCR_CMAKE_DIR})

configure_package_config_file(cmake/cycbcrConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/cycbcrConfig.cmake
    INSTALL_DESTINATION ${CYCBCR_CMAKE_DIR})
write_basic_package_version_file(
    ${CMAKE_CURRENT_BINARY_DIR}/cycbcrConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/cycbcrConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/cycbcrConfigVersion.cmake
    DESTINATION ${CYCBCR_CMAKE_DIR})

# The .pc file finds the prefix from its own place, so an install with
# --prefix anywhere gives a working file.
file(RELATIVE_PATH CYCBCR_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" CYCBCR_PC_TO_PREFIX "${CYCBCR_PC_TO_PREFIX}")
configure_file(cmake/cycbcr.pc.in ${CMAKE_CURRENT_BINARY_DIR}/cycbcr.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cycbcr.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The licence, where Debian keeps a package's documents.
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

# The command's manual page, with this version in its footer.
if(CYCBCR_BUILD_TOOLS)
    configure_file(man/cycbcr.1.in ${CMAKE_CURRENT_BINARY_DIR}/man/cycbcr.1 @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/man/cycbcr.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
