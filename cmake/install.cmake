# What users of the library find: headers, both libraries, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS qmml qmml_static EXPORT qmml-targets)
install(DIRECTORY include/qmml DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN *.h)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qmml)
install(EXPORT qmml-targets NAMESPACE qmml:: DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/qmml-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES cmake/qmml-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/qmml-config-version.cmake DESTINATION ${package_dir})

# The prefix is found from the file's own place, so that an installed tree can be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(prefix_from_pkgconfig ${CMAKE_INSTALL_PREFIX})
    set(libdir_from_prefix ${CMAKE_INSTALL_LIBDIR})
else()
    file(RELATIVE_PATH up /${pkgconfig_dir} /)
    string(REGEX REPLACE "/$" "" up ${up})
    set(prefix_from_pkgconfig "\${pcfiledir}/${up}")
    set(libdir_from_prefix "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
    set(includedir_from_prefix ${CMAKE_INSTALL_INCLUDEDIR})
else()
    set(includedir_from_prefix "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(cmake/qmml.pc.in qmml.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qmml.pc DESTINATION ${pkgconfig_dir})
