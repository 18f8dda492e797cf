# cmake --install: headers, the libraries, the CMake package, the pkg-config files, the program.
include(CMakePackageConfigHelpers)

set(header_dir "${CMAKE_INSTALL_INCLUDEDIR}/accredit")
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/accredit")

if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(ACCREDIT_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
    set(ACCREDIT_PC_INCLUDEDIR "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
    set(ACCREDIT_PC_LIBDIR "${CMAKE_INSTALL_FULL_LIBDIR}")
else()
    # Relative to the file's own place, so that an installation may be moved.
    file(RELATIVE_PATH to_prefix "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
    set(ACCREDIT_PC_PREFIX "\${pcfiledir}/${to_prefix}")
    set(ACCREDIT_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
    set(ACCREDIT_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()

# accredit_install_library(PREFIX FOLDER...): what accredit_whole_library(PREFIX ...) made of the
# folders. The targets have a file of their own, so that the CMake package reads only those that an
# application asks for.
function(accredit_install_library prefix)
    string(REPLACE "_" "-" file "${prefix}")
    foreach(folder IN LISTS ARGN)
        install(DIRECTORY "${PROJECT_SOURCE_DIR}/${folder}"
                DESTINATION "${header_dir}" COMPONENT dev
                FILES_MATCHING PATTERN "*.h"
                PATTERN internal EXCLUDE)
    endforeach()
    install(TARGETS ${prefix}_static ${prefix}_shared EXPORT ${file}
            ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT dev
            LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT dev)
    install(EXPORT ${file} NAMESPACE accredit:: FILE ${file}-targets.cmake
            DESTINATION "${package_dir}" COMPONENT dev)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${file}.pc.in" "${PROJECT_BINARY_DIR}/${file}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${file}.pc"
            DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT dev)
endfunction()

accredit_install_library(accredit host distfun diststats accreditation)
if(ACCREDIT_BUILD_DOCUMENTS)
    accredit_install_library(accredit_documents documents)
endif()

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/accredit-config.cmake.in"
    "${PROJECT_BINARY_DIR}/accredit-config.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/accredit-config-version.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/accredit-config.cmake"
              "${PROJECT_BINARY_DIR}/accredit-config-version.cmake"
        DESTINATION "${package_dir}" COMPONENT dev)

if(ACCREDIT_BUILD_APP)
    install(TARGETS accredit_program
            RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT program)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/accredit.1"
            DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT program)
endif()

install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/" DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples"
        COMPONENT dev FILES_MATCHING PATTERN "*.cpp" PATTERN weather EXCLUDE)
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE"
        DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT dev)
