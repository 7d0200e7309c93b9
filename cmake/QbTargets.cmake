# What every target of this project shares: flags, the library in its two forms, programs.

# Settings of the whole build tree, the test framework included.
function(qb_set_up_build)
    if(PROJECT_IS_TOP_LEVEL)
        find_program(QB_CCACHE ccache)
        if(QB_CCACHE)
            set(CMAKE_CXX_COMPILER_LAUNCHER ${QB_CCACHE} PARENT_SCOPE)
        endif()
        set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin PARENT_SCOPE)
        set(CMAKE_EXPORT_COMPILE_COMMANDS ON PARENT_SCOPE)
    endif()
    set(CMAKE_CXX_EXTENSIONS OFF PARENT_SCOPE)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
        # The x87 unit rounds twice; with SSE2 a double has the same bits on both word sizes.
        if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
            add_compile_options(-msse2 -mfpmath=sse)
        endif()
    endif()
endfunction()

# Our own code is clean at a high level of warnings; clients that build us inside their tree decide for themselves.
function(qb_set_warnings target)
    if(PROJECT_IS_TOP_LEVEL)
        target_compile_options(${target} PRIVATE
            -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align -Werror
            # g++ 12 sees overlapping copies in string concatenations where there are none.
            $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
    endif()
endfunction()

# What a target that compiles against the library's headers needs, installed or not.
function(qb_set_usage target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    # Public headers allocate inline, so a client must know which allocator the library was built with.
    if(NOT QB_FREE_LISTS)
        target_compile_definitions(${target} PUBLIC QB_NO_FREE_LISTS)
    endif()
endfunction()

# The sources are compiled once: the shared and the static library and the tests link the same objects.
function(qb_add_library_targets)
    add_library(qb_objects OBJECT ${ARGN})
    qb_set_usage(qb_objects)
    qb_set_warnings(qb_objects)
    target_include_directories(qb_objects PRIVATE ${PROJECT_SOURCE_DIR}/src)
    target_compile_options(qb_objects PRIVATE -fno-semantic-interposition)
    target_compile_definitions(qb_objects PRIVATE
        QB_MAKES_LIBRARY_CLASSES
        $<$<BOOL:${QB_FAULT_INJECTION}>:QB_FAULT_INJECTION>)
    set_target_properties(qb_objects PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)

    add_library(QBFoundation SHARED $<TARGET_OBJECTS:qb_objects>)
    # The library's own calls go straight to its functions, not through the linkage table.
    target_link_options(QBFoundation PRIVATE
        -Wl,--dynamic-list-data -Wl,--dynamic-list=${PROJECT_SOURCE_DIR}/cmake/inline-operations.txt)
    set_target_properties(QBFoundation PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})

    add_library(QBFoundationStatic STATIC $<TARGET_OBJECTS:qb_objects>)
    set_target_properties(QBFoundationStatic PROPERTIES OUTPUT_NAME QBFoundation)

    foreach(library IN ITEMS QBFoundation QBFoundationStatic)
        qb_set_usage(${library})
        set_target_properties(${library} PROPERTIES
            LINKER_LANGUAGE CXX
            ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib
            LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
        add_library(QBFoundation::${library} ALIAS ${library})
    endforeach()
endfunction()

# Gives `target` the private headers and whatever the library hides, for tests and fuzz targets.
function(qb_link_internals target)
    target_link_libraries(${target} PRIVATE QBFoundationStatic)
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src)
    target_compile_definitions(${target} PRIVATE $<$<BOOL:${QB_FAULT_INJECTION}>:QB_FAULT_INJECTION>)
    qb_set_warnings(${target})
endfunction()

# Where a program or plug-in looks for the library, installed or built; the directories are relative to the two roots.
# A path that is replaced on installation would have an empty entry until then, which is the current directory.
function(qb_set_library_path target installed built)
    file(RELATIVE_PATH to_installed /${installed} /${CMAKE_INSTALL_LIBDIR})
    file(RELATIVE_PATH to_built /${built} /lib)
    set_target_properties(${target} PROPERTIES
        BUILD_WITH_INSTALL_RPATH ON
        INSTALL_RPATH "$ORIGIN/${to_installed};$ORIGIN/${to_built}")
endfunction()

# A program that uses the shared library as a client does, and is installed beside it.
function(qb_add_program name)
    add_executable(${name} ${ARGN})
    target_link_libraries(${name} PRIVATE QBFoundation)
    qb_set_warnings(${name})
    qb_set_library_path(${name} ${CMAKE_INSTALL_BINDIR} bin)
    install(TARGETS ${name} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()
