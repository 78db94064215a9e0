# Locates every third-party dependency once, for all targets.
# Qt 6 is preferred where present; the code also builds against Qt 5.15.
find_package(QT NAMES Qt6 Qt5 REQUIRED COMPONENTS Core)
find_package(Qt${QT_VERSION_MAJOR} REQUIRED COMPONENTS
  Core Gui Widgets Concurrent Network Svg PrintSupport Help Test)
add_compile_definitions(QT_DISABLE_DEPRECATED_BEFORE=0x050F00)

# Qwt ships without a CMake package on Debian; find its header and the library built for our Qt.
find_path(QWT_INCLUDE_DIR qwt_plot.h PATH_SUFFIXES qwt qwt-qt${QT_VERSION_MAJOR} REQUIRED)
find_library(QWT_LIBRARY NAMES qwt-qt${QT_VERSION_MAJOR} qwt REQUIRED)
add_library(Tessaly::Qwt UNKNOWN IMPORTED)
set_target_properties(Tessaly::Qwt PROPERTIES
  IMPORTED_LOCATION "${QWT_LIBRARY}"
  INTERFACE_INCLUDE_DIRECTORIES "${QWT_INCLUDE_DIR}"
  INTERFACE_LINK_LIBRARIES "Qt${QT_VERSION_MAJOR}::Widgets;Qt${QT_VERSION_MAJOR}::Svg;Qt${QT_VERSION_MAJOR}::PrintSupport")

find_package(HDF5 REQUIRED COMPONENTS C CXX)
string(REPLACE "-D" "" TESSALY_HDF5_DEFINITIONS "${HDF5_DEFINITIONS}")
add_library(Tessaly::HDF5 INTERFACE IMPORTED)
set_target_properties(Tessaly::HDF5 PROPERTIES
  INTERFACE_INCLUDE_DIRECTORIES "${HDF5_INCLUDE_DIRS}"
  INTERFACE_COMPILE_DEFINITIONS "${TESSALY_HDF5_DEFINITIONS}"
  INTERFACE_LINK_LIBRARIES "${HDF5_CXX_LIBRARIES};${HDF5_C_LIBRARIES}")

find_package(PkgConfig REQUIRED)
pkg_check_modules(ZSTD REQUIRED IMPORTED_TARGET libzstd)

find_package(OpenCV 4 REQUIRED COMPONENTS core imgproc imgcodecs videoio)
find_package(Armadillo REQUIRED)
find_library(OPENBLAS_LIBRARY NAMES openblas REQUIRED)
add_library(Tessaly::Armadillo INTERFACE IMPORTED)
set_target_properties(Tessaly::Armadillo PROPERTIES
  INTERFACE_INCLUDE_DIRECTORIES "${ARMADILLO_INCLUDE_DIRS}"
  INTERFACE_LINK_LIBRARIES "${ARMADILLO_LIBRARIES};${OPENBLAS_LIBRARY}")

find_package(Threads REQUIRED)
