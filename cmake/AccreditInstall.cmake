# cmake --install: headers, both libraries, the CMake package, the pkg-config file.
include(CMakePackageConfigHelpers)

set(header_dir "${CMAKE_INSTALL_INCLUDEDIR}/accredit")
foreach(folder host distfun diststats accreditation)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/${folder}"
            DESTINATION "${header_dir}" COMPONENT dev
            FILES_MATCHING PATTERN "*.h"
            PATTERN internal EXCLUDE)
endforeach()

install(TARGETS accredit_static accredit_shared EXPORT accredit
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT dev
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT dev)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/accredit")
install(EXPORT accredit NAMESPACE accredit:: FILE accredit-targets.cmake
        DESTINATION "${package_dir}" COMPONENT dev)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/accredit-config.cmake.in"
    "${PROJECT_BINARY_DIR}/accredit-config.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/accredit-config-version.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/accredit-config.cmake"
              "${PROJECT_BINARY_DIR}/accredit-config-version.cmake"
        DESTINATION "${package_dir}" COMPONENT dev)

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
configure_file("${PROJECT_SOURCE_DIR}/cmake/accredit.pc.in" "${PROJECT_BINARY_DIR}/accredit.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/accredit.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT dev)

if(ACCREDIT_BUILD_APP)
    install(TARGETS accredit_program
            RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT program)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/accredit.1"
            DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT program)
endif()

# The licence goes where Debian looks for it, once a package.
foreach(component_package library:libaccredit${PROJECT_VERSION_MAJOR} dev:libaccredit-dev program:accredit)
    string(REPLACE ":" ";" pair "${component_package}")
    list(GET pair 0 component)
    list(GET pair 1 package)
    install(FILES "${PROJECT_SOURCE_DIR}/LICENSE"
            DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}" RENAME copyright
            COMPONENT ${component})
endforeach()

# cmake --workflow --preset package makes three Debian packages: the shared library, what a developer
# needs, and the program, which has the library linked in.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Accredit authors <authors@accredit.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library dev program)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME "libaccredit${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libaccredit-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "libaccredit${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME accredit)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
include(CPack)
