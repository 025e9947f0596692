# SPDX-License-Identifier: Apache-2.0
# What needs Qt's declarative packages, and is left out where they are not there: QML modules ask for the target Qt5::Qml,
# what has a screen asks for Qt5::Quick and Qt5::QuickControls2, too.
option(MORVEK_QUICK "Build the QML modules and the screen, where Qt's declarative packages are there" ON)
if(MORVEK_QUICK)
    find_package(Qt5Qml 5.15 QUIET)
    if(NOT CMAKE_CROSSCOMPILING) # of the target's system, nothing that draws is there to build against
        find_package(Qt5Quick 5.15 QUIET)
        find_package(Qt5QuickControls2 5.15 QUIET)
        find_package(Qt5QuickTest 5.15 QUIET)
    endif()
endif()

# morvek_qml_module(TARGET NAME): the plugin TARGET, with the qmldir and the plugins.qmltypes of its folder, as the QML
# module NAME. Modules of the build stand in its folder qml, installed ones in that of the libraries.
function(morvek_qml_module TARGET NAME)
    string(REPLACE . / FOLDER qml/${NAME})
    set(PLACE ${CMAKE_INSTALL_LIBDIR}/${FOLDER})
    file(RELATIVE_PATH LIBRARIES ${CMAKE_INSTALL_FULL_LIBDIR}/${FOLDER} ${CMAKE_INSTALL_FULL_LIBDIR})
    string(REGEX REPLACE "/$" "" LIBRARIES ${LIBRARIES})
    set_target_properties(${TARGET} PROPERTIES
        LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${FOLDER} INSTALL_RPATH \$ORIGIN/${LIBRARIES}
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    install(TARGETS ${TARGET} LIBRARY DESTINATION ${PLACE})
    foreach(FILE qmldir plugins.qmltypes)
        configure_file(${FILE} ${PROJECT_BINARY_DIR}/${FOLDER}/${FILE} COPYONLY)
        install(FILES ${FILE} DESTINATION ${PLACE})
    endforeach()
endfunction()
