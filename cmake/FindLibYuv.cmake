# Debian's libyuv-dev ships neither a pkg-config file nor a CMake package. Gives LibYuv::LibYuv.
find_path(LibYuv_INCLUDE_DIR libyuv.h)
find_library(LibYuv_LIBRARY yuv)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(LibYuv REQUIRED_VARS LibYuv_LIBRARY LibYuv_INCLUDE_DIR)
if(LibYuv_FOUND AND NOT TARGET LibYuv::LibYuv)
  add_library(LibYuv::LibYuv UNKNOWN IMPORTED)
  set_target_properties(LibYuv::LibYuv PROPERTIES IMPORTED_LOCATION "${LibYuv_LIBRARY}"
                                                  INTERFACE_INCLUDE_DIRECTORIES "${LibYuv_INCLUDE_DIR}")
endif()
mark_as_advanced(LibYuv_INCLUDE_DIR LibYuv_LIBRARY)
