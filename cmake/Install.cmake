# What `cmake --install` puts where: the program, the host library, the panel, and the SDK that
# find_package(ZuHost) finds.
include(CMakePackageConfigHelpers)
install(TARGETS production-desk RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS HostSdk zuhost EXPORT ZuHostTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS SharedProjects LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/production-desk/plugins)
install(DIRECTORY host DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zuhost FILES_MATCHING PATTERN "*.h")
install(EXPORT ZuHostTargets NAMESPACE ZuHost:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZuHost)
file(WRITE ${CMAKE_BINARY_DIR}/ZuHostConfig.cmake
  "include(CMakeFindDependencyMacro)\nfind_dependency(Boost 1.74)\ninclude(\${CMAKE_CURRENT_LIST_DIR}/ZuHostTargets.cmake)\n")
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ZuHostConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ZuHostConfig.cmake ${CMAKE_BINARY_DIR}/ZuHostConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZuHost)
set_target_properties(production-desk PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
set_target_properties(SharedProjects PROPERTIES INSTALL_RPATH "$ORIGIN/../..")
