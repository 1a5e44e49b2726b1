# Headers, libraries with their variants, and the two package descriptions.
include(CMakePackageConfigHelpers)

install(TARGETS zvpcore zvpcv EXPORT zvpcvTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(variant IN LISTS ZVP_VARIANTS)
  install(TARGETS zvpcv-${variant} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/${variant}
                                           NAMELINK_SKIP)
endforeach()
install(DIRECTORY include/zvpcv zvpcore/include/zvpcore DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zvpcv)
install(EXPORT zvpcvTargets NAMESPACE zvpcv:: DESTINATION ${package_dir})
configure_package_config_file(cmake/zvpcvConfig.cmake.in ${PROJECT_BINARY_DIR}/zvpcvConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zvpcvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zvpcvConfig.cmake ${PROJECT_BINARY_DIR}/zvpcvConfigVersion.cmake
        DESTINATION ${package_dir})

configure_file(cmake/zvpcv.pc.in ${PROJECT_BINARY_DIR}/zvpcv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zvpcv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
