# Finds the family's common library where it is installed: target Kalvira::KalvCommon.
find_path(KalvCommon_INCLUDE_DIR kalv/KalvError.h)
find_library(KalvCommon_LIBRARY KalvCommon)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(KalvCommon REQUIRED_VARS KalvCommon_LIBRARY KalvCommon_INCLUDE_DIR)
if(KalvCommon_FOUND AND NOT TARGET Kalvira::KalvCommon)
  add_library(Kalvira::KalvCommon UNKNOWN IMPORTED)
  set_target_properties(Kalvira::KalvCommon PROPERTIES
    IMPORTED_LOCATION ${KalvCommon_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${KalvCommon_INCLUDE_DIR})
endif()
mark_as_advanced(KalvCommon_INCLUDE_DIR KalvCommon_LIBRARY)
