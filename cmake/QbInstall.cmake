# Headers, both libraries, the CMake package and the pkg-config file.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/QBFoundation)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/QBFoundation
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN *.h)
install(TARGETS QBFoundation QBFoundationStatic
    EXPORT QBFoundationTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT QBFoundationTargets
    NAMESPACE QBFoundation::
    FILE QBFoundationConfig.cmake
    DESTINATION ${package_dir})

write_basic_package_version_file(${PROJECT_BINARY_DIR}/QBFoundationConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QBFoundationConfigVersion.cmake DESTINATION ${package_dir})

# The prefix is given relative to the file itself, so that an installed tree may be moved.
file(RELATIVE_PATH QB_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" QB_PC_TO_PREFIX ${QB_PC_TO_PREFIX})
if(QB_FREE_LISTS)
    set(QB_PC_CFLAGS "")
else()
    set(QB_PC_CFLAGS " -DQB_NO_FREE_LISTS")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/qbfoundation.pc.in ${PROJECT_BINARY_DIR}/qbfoundation.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qbfoundation.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
