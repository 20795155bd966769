# What hosts are built against: find_package(Kavra), and kavra.pc for those that do not use CMake.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Kavra)
configure_package_config_file(cmake/KavraConfig.cmake.in ${PROJECT_BINARY_DIR}/package/KavraConfig.cmake
  INSTALL_DESTINATION ${package_folder} PATH_VARS CMAKE_INSTALL_LIBDIR)
# As the libraries' own names have it: what was built with one version runs with every later one of the same first number.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/KavraConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(EXPORT KavraTargets NAMESPACE Kavra:: DESTINATION ${package_folder})
install(FILES ${PROJECT_BINARY_DIR}/package/KavraConfig.cmake ${PROJECT_BINARY_DIR}/package/KavraConfigVersion.cmake
  DESTINATION ${package_folder})

# The folders are told from the file's own place, so that the prefix may move.
cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/${CMAKE_INSTALL_LIBDIR}/pkgconfig
  OUTPUT_VARIABLE KAVRA_PREFIX_FROM_PC)
configure_file(cmake/kavra.pc.in ${PROJECT_BINARY_DIR}/package/kavra.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/kavra.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# ninja -C build/release uninstall: takes back what the last cmake --install put in place.
add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -DMANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt
  -P ${PROJECT_SOURCE_DIR}/cmake/Uninstall.cmake VERBATIM)
