# What `cmake --install` gives: headers, libraries, the CMake package KalvFileHandling and a pkg-config file.
# All of it finds its parts from its own place, so an installed tree can be moved as a whole.
#
# The headers need C99 or C++17 and no other library; what the shared libraries need is theirs alone.
option(KALV_INSTALL "Install the library; off where it is a part of another project" ${PROJECT_IS_TOP_LEVEL})
if(NOT KALV_INSTALL)
  return()
endif()
include(CMakePackageConfigHelpers)

set(kalv_targets KalvFileHandling)
set(kalv_headers ${PROJECT_SOURCE_DIR}/include/kalv)
if(KALV_COMMON STREQUAL "bundled")
  list(APPEND kalv_targets KalvCommon)
  list(APPEND kalv_headers ${PROJECT_SOURCE_DIR}/common/include/kalv)
  if(NOT DEFINED CMAKE_INSTALL_RPATH)
    # Finds libKalvCommon beside it. A program's own search path does not reach a library's libraries.
    set_target_properties(KalvFileHandling PROPERTIES INSTALL_RPATH $ORIGIN)
  endif()
endif()

install(TARGETS ${kalv_targets} EXPORT KalvFileHandlingTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${kalv_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

# The CMake package.
set(kalv_package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/KalvFileHandling)
install(EXPORT KalvFileHandlingTargets NAMESPACE Kalvira:: DESTINATION ${kalv_package_folder})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/KalvFileHandlingConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/KalvFileHandlingConfig.cmake
  INSTALL_DESTINATION ${kalv_package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/KalvFileHandlingConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/KalvFileHandlingConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/KalvFileHandlingConfigVersion.cmake
  DESTINATION ${kalv_package_folder})
if(KALV_COMMON STREQUAL "installed")
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/FindKalvCommon.cmake DESTINATION ${kalv_package_folder})
endif()

# The pkg-config file. Its folders start from its own, and not from `prefix`, which `--define-prefix` takes to be
# two levels up, whatever the layout.
set(kalv_pkgconfig_folder ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH kalv_prefix ${kalv_pkgconfig_folder} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" kalv_prefix ${kalv_prefix})
file(RELATIVE_PATH kalv_includedir ${kalv_pkgconfig_folder} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(${CMAKE_CURRENT_LIST_DIR}/KalvFileHandling.pc.in
  ${CMAKE_CURRENT_BINARY_DIR}/KalvFileHandling.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KalvFileHandling.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
