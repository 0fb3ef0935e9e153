# Installs the exported libraries, their headers, the CMake package
# (find_package(KaTypeMgr CONFIG)) and one pkg-config file per library.
include(CMakePackageConfigHelpers)

get_property(ka_libs GLOBAL PROPERTY KA_EXPORTED_LIBRARIES)
set(ka_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/KaTypeMgr)

install(TARGETS ${ka_libs} EXPORT KaTypeMgrTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT KaTypeMgrTargets NAMESPACE KaTypeMgr:: DESTINATION ${ka_cmake_dir})

configure_package_config_file(cmake/KaTypeMgrConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/KaTypeMgrConfig.cmake
  INSTALL_DESTINATION ${ka_cmake_dir})
# An engine built against 12.0 works with every 12.0.x build, not with 12.1.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/KaTypeMgrConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KaTypeMgrConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/KaTypeMgrConfigVersion.cmake
        DESTINATION ${ka_cmake_dir})

# The .pc files locate the prefix relative to themselves (lib/pkgconfig -> ../..).
string(REGEX REPLACE "[^/]+" ".." KA_PC_PREFIX_REL "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
foreach(lib IN LISTS ka_libs)
  get_property(inc TARGET ${lib} PROPERTY KA_INCLUDE_DIR)
  install(DIRECTORY ${inc}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  get_property(KA_PC_NAME TARGET ${lib} PROPERTY NAME)
  get_property(KA_PC_DESCRIPTION TARGET ${lib} PROPERTY KA_PC_DESCRIPTION)
  get_property(reqs TARGET ${lib} PROPERTY KA_PC_REQUIRES)
  list(TRANSFORM reqs REPLACE "^KaTypeMgr::" "")
  list(JOIN reqs " " KA_PC_REQUIRES)
  configure_file(cmake/ka.pc.in ${CMAKE_CURRENT_BINARY_DIR}/pkgconfig/${lib}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pkgconfig/${lib}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
