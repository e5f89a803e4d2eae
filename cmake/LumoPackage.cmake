# The installed CMake package: find_package(LumoRTCLibWrapper) gives LumoRTCLibWrapper::LumoRTCLibWrapper, and
# LumoRTCLibWrapper::LumoRTCLocal where that was built.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/LumoRTCLibWrapper")
configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/LumoRTCLibWrapperConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/LumoRTCLibWrapperConfig.cmake"
  INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/LumoRTCLibWrapperConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/LumoRTCLibWrapperConfig.cmake"
              "${PROJECT_BINARY_DIR}/LumoRTCLibWrapperConfigVersion.cmake"
        DESTINATION "${package_dir}")
install(EXPORT LumoRTCLibWrapperTargets NAMESPACE LumoRTCLibWrapper:: DESTINATION "${package_dir}")
if(LUMO_BUILD_LOCAL)
  install(FILES "${PROJECT_SOURCE_DIR}/cmake/FindLibYuv.cmake" DESTINATION "${package_dir}")
  install(EXPORT LumoRTCLocalTargets NAMESPACE LumoRTCLibWrapper:: DESTINATION "${package_dir}")
endif()
