# Debian packages of what PravikInstall installs: cpack writes them into the build folder's packages/.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL library development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The Pravik developers")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
cmake_path(GET OnnxRuntime_LIBRARY PARENT_PATH CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS)
set(same "${PRAVIK_PACKAGE_library} (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${PRAVIK_PACKAGE_library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "poppler-utils")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "Reads identity cards, bank cards and codes: library and models
The C interface of Pravik, which reads Chinese identity cards, bank cards and
codes from pictures, with the text engine and the models that it works with.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${PRAVIK_PACKAGE_development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${same}, libicu-dev, libasio-dev, libexpected-dev, libopencv-dev, libjpeg-dev, libpng-dev, libtiff-dev, libwebp-dev, libheif-dev, libzxing-dev, nlohmann-json3-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "qt6-base-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Reads identity cards, bank cards and codes: development files
Headers, static libraries of the C++ interface, and what CMake and pkg-config
need to find Pravik. The component qt also needs qt6-base-dev.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${PRAVIK_PACKAGE_tools})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${same}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "fonts-noto-cjk, qt6-translations-l10n")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Reads identity cards, bank cards and codes: programs
The command line (pravik) and the desktop scanner (pravik-scanner).")
include(CPack)
