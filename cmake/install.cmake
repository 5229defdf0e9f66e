# What `cmake --install` puts under the prefix: the public headers, the
# libraries, the vesktext tool when it is built, a CMake package
# (find_package(VeskText) gives vesk::text, vesk::core and
# vesk::default_host) and two pkg-config files: vesktext (the module with
# the default host) and vesktext-core (the module alone, for a runtime that
# brings its own host). The package files locate the prefix from where they
# are installed, so an installed tree can be moved.
include(CMakePackageConfigHelpers)

set(vesk_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/vesktext)
set(vesk_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VeskText)

# host/utf.h stays behind: it is the default host's own helper, not part of
# what the module asks of a host. Built against another host's headers, only
# the module is installed; that host installs its own headers.
install(FILES core/veskstring.h DESTINATION ${vesk_include_dir}/core)
if(vesk_own_host)
  install(FILES
      host/memory_manager.h
      host/object_model.h
      host/text_services.h
      host/vm_string.h
    DESTINATION ${vesk_include_dir}/host)
endif()

install(TARGETS ${vesk_libraries} EXPORT VeskTextTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET vesktext)
  install(TARGETS vesktext RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
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
set(vesk_pc_names vesktext-core)
if(vesk_own_host)
  list(APPEND vesk_pc_names vesktext)
endif()
foreach(vesk_pc_name ${vesk_pc_names})
  if(vesk_pc_name STREQUAL vesktext)
    set(vesk_pc_description "The text module with its default host")
  else()
    set(vesk_pc_description "The text module alone; the caller links a host")
  endif()
  configure_file(cmake/vesktext.pc.in ${PROJECT_BINARY_DIR}/${vesk_pc_name}.pc
    @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${vesk_pc_name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
