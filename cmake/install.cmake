# Installation: library, headers, CMake package quillonid, pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS quillonid EXPORT quillonid
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY include/quillonid DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")
install(EXPORT quillonid NAMESPACE quillonid:: FILE quillonidTargets.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/quillonid COMPONENT development)

configure_package_config_file(cmake/quillonidConfig.cmake.in ${PROJECT_BINARY_DIR}/quillonidConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/quillonid)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/quillonidConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/quillonidConfig.cmake ${PROJECT_BINARY_DIR}/quillonidConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/quillonid COMPONENT development)

configure_file(cmake/quillonid.pc.in ${PROJECT_BINARY_DIR}/quillonid.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quillonid.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development USE_SOURCE_PERMISSIONS)
