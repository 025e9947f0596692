# SPDX-License-Identifier: Apache-2.0
# morvek_install_translations(TARGET FILE...): makes of each FILE.ts what Qt's translators load, in the folder of the build,
# and installs it; where Qt's linguist tools are not there, nothing.
get_target_property(MORVEK_MOC Qt5::moc IMPORTED_LOCATION)
get_filename_component(MORVEK_QT_PROGRAMS ${MORVEK_MOC} DIRECTORY)
find_program(MORVEK_LRELEASE lrelease HINTS ${MORVEK_QT_PROGRAMS})

function(morvek_install_translations TARGET)
    if(NOT MORVEK_LRELEASE)
        return()
    endif()
    foreach(FILE ${ARGN})
        set(SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/${FILE}.ts)
        set(RESULT ${CMAKE_CURRENT_BINARY_DIR}/${FILE}.qm)
        add_custom_command(OUTPUT ${RESULT} DEPENDS ${SOURCE} COMMENT "The translation ${FILE}"
            COMMAND ${MORVEK_LRELEASE} -silent ${SOURCE} -qm ${RESULT})
        list(APPEND RESULTS ${RESULT})
    endforeach()
    add_custom_target(${TARGET} ALL DEPENDS ${RESULTS})
    install(FILES ${RESULTS} DESTINATION ${CMAKE_INSTALL_DATADIR}/morvek/translations)
endfunction()
