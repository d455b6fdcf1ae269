include(CMakePackageConfigHelpers)
set(QVX_CONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qvx-parser)
install(TARGETS qvx_parser EXPORT qvx-parserTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT qvx-parserTargets NAMESPACE qvx:: DESTINATION ${QVX_CONFIG_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qvx-parserConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qvx-parserConfig.cmake INSTALL_DESTINATION ${QVX_CONFIG_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qvx-parserConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qvx-parserConfig.cmake
              ${PROJECT_BINARY_DIR}/qvx-parserConfigVersion.cmake
        DESTINATION ${QVX_CONFIG_DIR})
export(EXPORT qvx-parserTargets NAMESPACE qvx:: FILE ${PROJECT_BINARY_DIR}/qvx-parserTargets.cmake)
