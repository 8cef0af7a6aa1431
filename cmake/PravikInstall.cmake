# What `cmake --install` and the packages hold: libpravik1 (the C interface, ONNX Runtime, the models), libpravik-dev
# (headers, archives, what CMake and pkg-config look for) and pravik-tools (the programs).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# ONNX Runtime's folder does not follow the system's library folder: defaultModelDirectory() finds the models from it.
set(PRAVIK_RUNTIME_DIRECTORY lib/pravik)
set(PRAVIK_MODEL_DIRECTORY share/pravik/models)
set(PRAVIK_CMAKE_DIRECTORY ${CMAKE_INSTALL_LIBDIR}/cmake/Pravik)

# The Debian package of each component.
set(PRAVIK_PACKAGE_library libpravik${PROJECT_VERSION_MAJOR})
set(PRAVIK_PACKAGE_development libpravik-dev)
set(PRAVIK_PACKAGE_tools pravik-tools)

# pravik_install(TARGET COMPONENT NAME BASE HEADERS...): a library of a component of find_package(Pravik), which
# imports it as pravik::NAME; its headers keep their paths below BASE.
function(pravik_install target component name base)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${base} FILES ${ARGN})
  if(PRAVIK_INSTALL)
    file(RELATIVE_PATH runtime /${CMAKE_INSTALL_LIBDIR} /${PRAVIK_RUNTIME_DIRECTORY})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH $ORIGIN/${runtime})
    install(TARGETS ${target} EXPORT Pravik-${component}
            ARCHIVE COMPONENT development
            LIBRARY COMPONENT library NAMELINK_COMPONENT development
            FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/pravik COMPONENT development)
    set_property(GLOBAL APPEND PROPERTY PRAVIK_COMPONENTS ${component})
  endif()
endfunction()

function(pravik_install_program target)
  if(PRAVIK_INSTALL)
    file(RELATIVE_PATH runtime /${CMAKE_INSTALL_BINDIR} /${PRAVIK_RUNTIME_DIRECTORY})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH $ORIGIN/${runtime})
    install(TARGETS ${target} COMPONENT tools)
  endif()
endfunction()

# The licence where Debian looks for it, and those of the parts that come from others beside it.
function(pravik_install_licences)
  foreach(component IN LISTS ARGN)
    set(folder ${CMAKE_INSTALL_DATADIR}/doc/${PRAVIK_PACKAGE_${component}})
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${folder} RENAME copyright COMPONENT ${component})
    install(FILES ${PROJECT_SOURCE_DIR}/THIRD_PARTY.md DESTINATION ${folder} COMPONENT ${component})
  endforeach()
endfunction()

# To be called once all targets are known.
function(pravik_install_package)
  get_property(components GLOBAL PROPERTY PRAVIK_COMPONENTS)
  list(REMOVE_DUPLICATES components)
  foreach(component IN LISTS components)
    install(EXPORT Pravik-${component} NAMESPACE pravik:: DESTINATION ${PRAVIK_CMAKE_DIRECTORY} COMPONENT development)
  endforeach()
  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/PravikConfig.cmake.in PravikConfig.cmake
                                INSTALL_DESTINATION ${PRAVIK_CMAKE_DIRECTORY} PATH_VARS PRAVIK_RUNTIME_DIRECTORY)
  write_basic_package_version_file(PravikConfigVersion.cmake COMPATIBILITY SameMajorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/PravikConfig.cmake ${PROJECT_BINARY_DIR}/PravikConfigVersion.cmake
          DESTINATION ${PRAVIK_CMAKE_DIRECTORY} COMPONENT development)

  get_target_property(PRAVIK_DEFINITIONS pravik INTERFACE_COMPILE_DEFINITIONS)
  list(TRANSFORM PRAVIK_DEFINITIONS PREPEND -D)
  list(JOIN PRAVIK_DEFINITIONS " " PRAVIK_DEFINITIONS)
  pravik_install_licences(development)
  set(modules pravik)
  if("backends" IN_LIST components)
    pravik_install_licences(library tools)
    list(APPEND modules pravik-backends)
    install(PROGRAMS ${OnnxRuntime_LIBRARY} DESTINATION ${PRAVIK_RUNTIME_DIRECTORY} COMPONENT library
            RENAME libonnxruntime.so.1)
    install(FILES ${PROJECT_SOURCE_DIR}/third_party/onnxruntime/copyright DESTINATION ${PRAVIK_RUNTIME_DIRECTORY}
            COMPONENT library RENAME libonnxruntime.copyright OPTIONAL)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/third_party/models/ DESTINATION ${PRAVIK_MODEL_DIRECTORY}
            COMPONENT library)
  endif()
  if("c" IN_LIST components)
    list(APPEND modules pravik_c)
  endif()
  file(RELATIVE_PATH PRAVIK_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" PRAVIK_PREFIX_FROM_PC "${PRAVIK_PREFIX_FROM_PC}")
  foreach(module IN LISTS modules)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${module}.pc.in ${module}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${module}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
            COMPONENT development)
  endforeach()
endfunction()
