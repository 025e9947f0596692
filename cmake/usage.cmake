# SPDX-License-Identifier: Apache-2.0
# morvek_install_usage(TARGET ARGUMENT...): what a shell and the manual know of the program TARGET. The page of the manual
# is made of what it writes with these arguments, so it takes a machine that can run it.
function(morvek_install_usage TARGET)
    set(COMPLETION ${PROJECT_SOURCE_DIR}/usage/completion)
    install(FILES ${COMPLETION}/morvek.bash RENAME ${TARGET}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES ${COMPLETION}/morvek.fish RENAME ${TARGET}.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

    find_program(MORVEK_AWK awk)
    if(CMAKE_CROSSCOMPILING OR NOT MORVEK_AWK)
        return()
    endif()
    set(SCRIPT ${PROJECT_SOURCE_DIR}/usage/manpage.awk)
    set(PAGE ${CMAKE_CURRENT_BINARY_DIR}/${TARGET}.1)
    add_custom_command(OUTPUT ${PAGE} DEPENDS ${TARGET} ${SCRIPT} COMMENT "The manual's page of ${TARGET}"
        COMMAND ${TARGET} ${ARGN} >${PAGE}.txt
        COMMAND ${MORVEK_AWK} -v name=${TARGET} -v version=${PROJECT_VERSION} -f ${SCRIPT} ${PAGE}.txt >${PAGE})
    add_custom_target(${TARGET}-page ALL DEPENDS ${PAGE})
    install(FILES ${PAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 OPTIONAL)
endfunction()
