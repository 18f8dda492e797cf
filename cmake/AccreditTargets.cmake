include(GNUInstallDirs)

# accredit_compile_options(TARGET): the warnings of the house, for every target we build.
function(accredit_compile_options target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(ACCREDIT_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

# accredit_folder_library(FOLDER SOURCES ... LINKS ...): the target of one folder of the library.
# Results are specified to the last bit, so no product and sum may be fused into one rounding and
# no option that loosens floating-point arithmetic may reach these sources. Nobody replaces single
# functions of the library when it is loaded, so they may be inlined into each other in the shared
# one as well.
function(accredit_folder_library folder)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    set(target accredit_${folder})
    add_library(${target} STATIC ${ARG_SOURCES})
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${target} PUBLIC ${ARG_LINKS})
    target_compile_options(${target} PRIVATE -ffp-contract=off -fno-fast-math
        -fno-semantic-interposition)
    set_target_properties(${target} PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    accredit_compile_options(${target})
endfunction()

# accredit_whole_library(TARGET STATIC|SHARED): the objects of all folders in one library.
function(accredit_whole_library target type)
    add_library(${target} ${type}
        $<TARGET_OBJECTS:accredit_host>
        $<TARGET_OBJECTS:accredit_distfun>
        $<TARGET_OBJECTS:accredit_diststats>
        $<TARGET_OBJECTS:accredit_accreditation>)
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/accredit>)
    target_compile_features(${target} PUBLIC cxx_std_17)
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME accredit
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    if(type STREQUAL SHARED)
        set(map "${PROJECT_SOURCE_DIR}/cmake/accredit.map")
        target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
        # Clang leaves the sanitizers' functions to the program that loads the library.
        if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
            target_link_options(${target} PRIVATE "LINKER:--no-undefined")
        endif()
        set_target_properties(${target} PROPERTIES LINK_DEPENDS "${map}" LINKER_LANGUAGE CXX)
    endif()
endfunction()
