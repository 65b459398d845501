# Gives TARGET exactly the exports that LIST names, all under the version node QMML_1. The node is what makes a reference
# to the C runtime's rand or srand pass by this library's functions of the same name.
function(qmml_restrict_exports target list)
    if(WIN32 OR APPLE)
        return()
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
    file(STRINGS ${list} names REGEX "^[A-Za-z_]")
    list(JOIN names ";\n        " names)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
    file(CONFIGURE OUTPUT ${script} CONTENT [[QMML_1 {
    global:
        @names@;
    local:
        *;
};
]] @ONLY)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
    # Calls between the library's own exports stay inside: a program may define a Beta or a Normal of its own.
    target_link_options(${target} PRIVATE -Wl,--version-script=${script} -Wl,-Bsymbolic-functions)
    if(NOT QMML_SANITIZE) # a sanitized library takes its runtime from the program
        target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
endfunction()
