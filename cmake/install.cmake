# What `cmake --install` puts under the prefix: the public headers, the
# library, a CMake package (find_package(VeskText) gives vesk::text) and a
# pkg-config file (vesktext). Both package files locate the prefix from
# where they are installed, so an installed tree can be moved.
include(CMakePackageConfigHelpers)

set(vesk_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/vesktext)
set(vesk_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VeskText)

# host/utf.h stays behind: it is the default host's own helper, not part of
# what the module asks of a host.
install(FILES core/veskstring.h DESTINATION ${vesk_include_dir}/core)
install(FILES
    host/memory_manager.h
    host/object_model.h
    host/text_services.h
    host/vm_string.h
  DESTINATION ${vesk_include_dir}/host)

install(TARGETS vesk_text EXPORT VeskTextTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT VeskTextTargets
  NAMESPACE vesk::
  FILE VeskTextTargets.cmake
  DESTINATION ${vesk_cmake_dir})

configure_package_config_file(cmake/VeskTextConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VeskTextConfig.cmake
  INSTALL_DESTINATION ${vesk_cmake_dir})
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/VeskTextConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/VeskTextConfig.cmake
    ${PROJECT_BINARY_DIR}/VeskTextConfigVersion.cmake
  DESTINATION ${vesk_cmake_dir})

# The pkg-config file finds the prefix through ${pcfiledir}.
file(RELATIVE_PATH vesk_pc_to_prefix
  /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" vesk_pc_to_prefix "${vesk_pc_to_prefix}")
configure_file(cmake/vesktext.pc.in ${PROJECT_BINARY_DIR}/vesktext.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vesktext.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
