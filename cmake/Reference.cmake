# The API reference, by Doxygen: the target audlmd_reference makes reference/html in the build folder, and fails on a warning.
find_program(AUDLMD_DOXYGEN doxygen)
if(AUDLMD_DOXYGEN)
    set(referenceInput)
    foreach(library IN ITEMS audlmd audlmd_host audlmd_host_check audlmd_c)
        get_target_property(headers ${library} HEADER_SET)
        list(APPEND referenceInput ${headers})
    endforeach()
    file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
    list(APPEND referenceInput ${pages} ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md ${PROJECT_SOURCE_DIR}/SECURITY.md
        ${PROJECT_SOURCE_DIR}/fuzz/README.md)
    list(JOIN referenceInput " " referenceInput)
    configure_file(docs/Doxyfile.in Doxyfile @ONLY)
    add_custom_target(audlmd_reference
        COMMAND ${CMAKE_COMMAND} -E rm -rf ${PROJECT_BINARY_DIR}/reference # pages of headers that are gone
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/reference
        COMMAND ${AUDLMD_DOXYGEN} Doxyfile
        WORKING_DIRECTORY ${PROJECT_BINARY_DIR} VERBATIM)
endif()
