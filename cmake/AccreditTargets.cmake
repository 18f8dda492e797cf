include(GNUInstallDirs)

# accredit_compile_options(TARGET): the warnings that every target of ours is built with.
function(accredit_compile_options target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
        $<$<CXX_COMPILER_ID:Clang>:-Wreserved-identifier>
        $<$<CXX_COMPILER_ID:Clang>:-Wreserved-macro-identifier>)
    if(ACCREDIT_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

# accredit_include_root(VARIABLE NAME): a folder from which the headers of the folder NAME, and no
# others, are included under their full name: accredit/host/Record.h, app/base/Errors.h. A target has
# the folder of its own and those of the targets it links, so that an include against the direction
# of the links does not compile.
function(accredit_include_root variable name)
    set(spelling "${name}")
    if(NOT name MATCHES "^app/")
        set(spelling "accredit/${name}")
    endif()
    string(REPLACE "/" "_" root "${name}")
    set(root "${PROJECT_BINARY_DIR}/include/${root}")
    get_filename_component(parent "${root}/${spelling}" DIRECTORY)
    file(MAKE_DIRECTORY "${parent}")
    file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${name}" "${root}/${spelling}" SYMBOLIC)
    set(${variable} "${root}" PARENT_SCOPE)
endfunction()

# accredit_folder(TARGET SOURCES ... LINKS ... PRIVATE_LINKS ...): the static library of the folder
# that calls this, with the include root of that folder.
function(accredit_folder target)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    file(RELATIVE_PATH name "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
    accredit_include_root(root ${name})
    add_library(${target} STATIC ${ARG_SOURCES})
    target_include_directories(${target} PUBLIC "${root}")
    target_link_libraries(${target} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
    set_target_properties(${target} PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    accredit_compile_options(${target})
    if(ACCREDIT_BUILD_FUZZERS)
        # Lets the fuzzers see which branches an input takes; means nothing to other programs.
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
endfunction()

# accredit_library_folder(TARGET SOURCES ... LINKS ...): the same for a folder of a library. Results
# are specified to the last bit, so no product and sum may be fused into one rounding and no option
# that loosens floating-point arithmetic may reach these sources. Nobody replaces single functions of
# the library when it is loaded, so they may be inlined into each other in the shared one as well.
function(accredit_library_folder target)
    accredit_folder(${target} ${ARGN})
    target_compile_options(${target} PRIVATE -ffp-contract=off -fno-fast-math
        -fno-semantic-interposition)
endfunction()

# accredit_whole_library(PREFIX NAME ... FOLDERS ... BASE ... PRIVATE_LINKS ...): the library that
# applications link as accredit::NAME, of the objects of its folders: the target PREFIX_static or
# PREFIX_shared. A project that adds this one gets the one that BUILD_SHARED_LIBS asks for, an
# installation has both. BASE is the prefix of another such library on which this one stands.
function(accredit_whole_library prefix)
    cmake_parse_arguments(ARG "" "NAME;BASE" "FOLDERS;PRIVATE_LINKS" ${ARGN})
    if(BUILD_SHARED_LIBS)
        set(asked shared)
    else()
        set(asked static)
    endif()
    set(kinds ${asked})
    if(ACCREDIT_INSTALL)
        set(kinds static shared)
    endif()
    list(TRANSFORM ARG_FOLDERS REPLACE "(.+)" "$<TARGET_OBJECTS:accredit_\\1>"
         OUTPUT_VARIABLE objects)
    string(REPLACE "_" "-" file "${prefix}")
    foreach(kind IN LISTS kinds)
        set(target ${prefix}_${kind})
        string(TOUPPER ${kind} type)
        add_library(${target} ${type} ${objects})
        foreach(folder IN LISTS ARG_FOLDERS)
            target_include_directories(${target} PUBLIC
                $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include/${folder}>)
        endforeach()
        target_include_directories(${target} PUBLIC
            $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
        target_compile_features(${target} PUBLIC cxx_std_17)
        if(ARG_BASE)
            target_link_libraries(${target} PUBLIC ${ARG_BASE}_${kind})
        endif()
        target_link_libraries(${target} PRIVATE ${ARG_PRIVATE_LINKS})
        set_target_properties(${target} PROPERTIES
            EXPORT_NAME ${ARG_NAME}_${kind}
            OUTPUT_NAME ${file}
            VERSION ${PROJECT_VERSION}
            SOVERSION ${PROJECT_VERSION_MAJOR})
    endforeach()
    if(TARGET ${prefix}_shared)
        set(map "${PROJECT_SOURCE_DIR}/cmake/${file}.map")
        target_link_options(${prefix}_shared PRIVATE "LINKER:--version-script=${map}")
        # Clang leaves the sanitizers' functions to the program that loads the library.
        if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
            target_link_options(${prefix}_shared PRIVATE "LINKER:--no-undefined")
        endif()
        set_target_properties(${prefix}_shared PROPERTIES LINK_DEPENDS "${map}" LINKER_LANGUAGE CXX)
    endif()
    add_library(accredit::${ARG_NAME} ALIAS ${prefix}_${asked})
endfunction()
