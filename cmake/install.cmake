# SPDX-License-Identifier: Apache-2.0
# Installs a shared library TARGET as the CMake package PACKAGE (target Morvek::NAME), with its public headers in
# the folder HEADERS, and a pkg-config file named like the header folder.
include(CMakePackageConfigHelpers)

# Programs and libraries find the libraries by where they stand themselves, so that an installed tree may be moved.
file(RELATIVE_PATH LIBRARIES_OF_PROGRAMS ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(CMAKE_INSTALL_RPATH \$ORIGIN/${LIBRARIES_OF_PROGRAMS})

function(morvek_install_library TARGET PACKAGE NAME HEADERS HEADER_FILES)
    set_target_properties(${TARGET} PROPERTIES EXPORT_NAME ${NAME} INSTALL_RPATH \$ORIGIN)
    install(TARGETS ${TARGET} EXPORT ${PACKAGE}Targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${HEADERS})
    install(FILES ${HEADER_FILES} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${HEADERS})
    set(PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/${PACKAGE})
    install(EXPORT ${PACKAGE}Targets NAMESPACE Morvek:: DESTINATION ${PACKAGE_DIR})
    configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/${PACKAGE}Config.cmake.in
        ${CMAKE_CURRENT_BINARY_DIR}/${PACKAGE}Config.cmake INSTALL_DESTINATION ${PACKAGE_DIR})
    write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/${PACKAGE}ConfigVersion.cmake
        COMPATIBILITY SameMajorVersion)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${PACKAGE}Config.cmake
        ${CMAKE_CURRENT_BINARY_DIR}/${PACKAGE}ConfigVersion.cmake DESTINATION ${PACKAGE_DIR})
    # Relative to the file itself, so that an installed tree may be moved.
    file(RELATIVE_PATH PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${HEADERS}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${HEADERS}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${HEADERS}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
