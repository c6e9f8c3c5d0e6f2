# Installs the library (versioned, with its SONAME), the public headers, the tool, a
# CMake package giving aafbridge::aafbridge, and aafbridge.pc for pkg-config.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(AAFBRIDGE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/aafbridge)

install(TARGETS aafbridge EXPORT aafbridgeTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/aafbridge DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS aafbridge-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(EXPORT aafbridgeTargets NAMESPACE aafbridge:: DESTINATION ${AAFBRIDGE_CMAKE_DIR})
configure_package_config_file(cmake/aafbridgeConfig.cmake.in ${PROJECT_BINARY_DIR}/aafbridgeConfig.cmake
                              INSTALL_DESTINATION ${AAFBRIDGE_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/aafbridgeConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/aafbridgeConfig.cmake ${PROJECT_BINARY_DIR}/aafbridgeConfigVersion.cmake
        DESTINATION ${AAFBRIDGE_CMAKE_DIR})

# The prefix is found from the .pc file's own place, so `cmake --install --prefix` anywhere works.
file(RELATIVE_PATH AAFBRIDGE_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" AAFBRIDGE_PC_TO_PREFIX "${AAFBRIDGE_PC_TO_PREFIX}")
configure_file(cmake/aafbridge.pc.in ${PROJECT_BINARY_DIR}/aafbridge.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/aafbridge.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
