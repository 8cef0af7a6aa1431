# Finds what tools/setup fetched into third_party/onnxruntime and offers it as OnnxRuntime::OnnxRuntime.
# Another place can be named with -DOnnxRuntime_ROOT=...

find_path(OnnxRuntime_INCLUDE_DIR onnxruntime_cxx_api.h
          HINTS ${OnnxRuntime_ROOT} ${PROJECT_SOURCE_DIR}/third_party/onnxruntime PATH_SUFFIXES include)
find_library(OnnxRuntime_LIBRARY NAMES libonnxruntime.so.1 onnxruntime
             HINTS ${OnnxRuntime_ROOT} ${PROJECT_SOURCE_DIR}/third_party/onnxruntime PATH_SUFFIXES lib)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(OnnxRuntime REQUIRED_VARS OnnxRuntime_LIBRARY OnnxRuntime_INCLUDE_DIR
                                  REASON_FAILURE_MESSAGE "run tools/setup first")
mark_as_advanced(OnnxRuntime_INCLUDE_DIR OnnxRuntime_LIBRARY)

if(OnnxRuntime_FOUND AND NOT TARGET OnnxRuntime::OnnxRuntime)
  add_library(OnnxRuntime::OnnxRuntime SHARED IMPORTED)
  set_target_properties(OnnxRuntime::OnnxRuntime PROPERTIES
    IMPORTED_LOCATION ${OnnxRuntime_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${OnnxRuntime_INCLUDE_DIR})
endif()
