# OpenCV for the wheel: Debian's static libraries instead of its shared ones, for those link OpenGL, GDAL and FFmpeg, of
# which reading pictures needs nothing. Cameras are compiled and left out when the library is linked.
find_package(TBB REQUIRED)
find_package(ZLIB REQUIRED)
set(OpenCV_INCLUDE_DIRS /usr/include/opencv4)
if(NOT TARGET opencv_core)
  add_library(opencv_videoio INTERFACE IMPORTED)
  foreach(name core imgproc)
    add_library(opencv_${name} STATIC IMPORTED)
    set_target_properties(opencv_${name} PROPERTIES
      IMPORTED_LOCATION /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/libopencv_${name}.a
      INTERFACE_SYSTEM_INCLUDE_DIRECTORIES ${OpenCV_INCLUDE_DIRS} INTERFACE_INCLUDE_DIRECTORIES ${OpenCV_INCLUDE_DIRS})
  endforeach()
  set_target_properties(opencv_imgproc PROPERTIES INTERFACE_LINK_LIBRARIES opencv_core)
  set_target_properties(opencv_core PROPERTIES INTERFACE_LINK_LIBRARIES
    "TBB::tbb;ZLIB::ZLIB;-l:liblapack.so.3;-l:libblas.so.3;dl")
endif()
