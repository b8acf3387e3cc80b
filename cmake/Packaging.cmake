# cmake --install: headers, both libraries and the command, and how CMake and pkg-config find them.
include(CMakePackageConfigHelpers)

set_target_properties(audlmd PROPERTIES EXPORT_NAME render)
set_target_properties(audlmd_host PROPERTIES EXPORT_NAME host)
set_target_properties(audlmd_host_check PROPERTIES EXPORT_NAME host_check)
set_target_properties(audlmd_c PROPERTIES EXPORT_NAME c)
# Includes are relative to the root of the tree, and stay so below include/audlmd. Each room names its headers.
install(TARGETS audlmd audlmd_host audlmd_host_check EXPORT audlmd-targets FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/audlmd)
# The C interface has one header, for which nobody needs a folder.
install(TARGETS audlmd_c EXPORT audlmd-targets FILE_SET HEADERS)
install(TARGETS audlmd_tool audlmd_host_check_tool)

set(AUDLMD_PYTHON_DIR lib/python3/dist-packages CACHE STRING "Where the Python module is installed, below the prefix")
install(DIRECTORY python/audlmd DESTINATION ${AUDLMD_PYTHON_DIR} PATTERN __pycache__ EXCLUDE)

install(FILES LICENSE README.md CHANGELOG.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/audlmd)
install(EXPORT audlmd-targets NAMESPACE audlmd:: DESTINATION ${packageDir})
configure_package_config_file(cmake/audlmd-config.cmake.in audlmd-config.cmake
    INSTALL_DESTINATION ${packageDir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(audlmd-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/audlmd-config.cmake ${PROJECT_BINARY_DIR}/audlmd-config-version.cmake
    DESTINATION ${packageDir})

# Paths relative to the .pc files, so that an installed tree can be moved.
file(RELATIVE_PATH pcPrefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" pcPrefix ${pcPrefix})
foreach(package audlmd audlmd-host audlmd-c)
    configure_file(cmake/${package}.pc.in ${package}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${package}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
