# cmake --install: headers, both libraries and the command, and how CMake and pkg-config find them.
include(CMakePackageConfigHelpers)

set_target_properties(audlmd PROPERTIES EXPORT_NAME render)
set_target_properties(audlmd_host PROPERTIES EXPORT_NAME host)
install(TARGETS audlmd audlmd_host EXPORT audlmd-targets)
install(TARGETS audlmd_tool)

# Includes are relative to the root of the tree, and stay so below include/audlmd.
set(includeDir ${CMAKE_INSTALL_INCLUDEDIR}/audlmd)
install(DIRECTORY contract ole loop_modes DESTINATION ${includeDir}
    FILES_MATCHING PATTERN "*.hpp" PATTERN "Aud__RenderIterators" PATTERN "OrvModeMeta")
# Of the stand-alone host, what a program needs; the other headers are its own.
foreach(header
        cache/MaterialCache cache/SampleSource cache/SoundFile
        mix/Media mix/MixReport mix/Mixer mix/RateConvertedSource mix/ScaledSource mix/Timeline
        play/LiveOptions play/LivePlayer play/Transport
        services/Configuration services/Event services/Identities services/ImageFormats services/RenderFunctions
        services/SampleRates services/Threads
        signal/Automation signal/BlockLoops signal/BlockConversion signal/Equaliser signal/Fade signal/GainLaws
        signal/RecordNumbers signal/Speed signal/StripPlan signal/StripPlayer signal/StripSettings
        signal/Unclipped)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES host/${header}.hpp DESTINATION ${includeDir}/host/${folder})
endforeach()

install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
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
foreach(package audlmd audlmd-host)
    configure_file(cmake/${package}.pc.in ${package}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${package}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
