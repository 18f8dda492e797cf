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

# Relative to its own place, so that an installation may be moved.
file(RELATIVE_PATH ACCREDIT_PC_TO_PREFIX
     "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file("${PROJECT_SOURCE_DIR}/cmake/accredit.pc.in" "${PROJECT_BINARY_DIR}/accredit.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/accredit.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT dev)

if(ACCREDIT_BUILD_APP)
    install(TARGETS accredit_program
            RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT program)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/accredit.1"
            DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT program)
endif()

# cpack in the build folder makes three Debian packages: the shared library, what a developer needs,
# and the program, which has the library linked in.
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
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME "libaccredit${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libaccredit-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "libaccredit${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME accredit)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
include(CPack)
