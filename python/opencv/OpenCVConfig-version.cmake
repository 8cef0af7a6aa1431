include(/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/cmake/opencv4/OpenCVConfig-version.cmake)
