# SPDX-License-Identifier: GPL-3.0-or-later
# `cpack` in the build folder makes python3-qorview_VERSION_ARCH.deb: the Python package alone, for the system's Python.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL python)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "QorView <qorview@localhost>")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-qorview)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "raw logs of oceanographic instruments as numpy arrays and xarray datasets")
# A module is of one version of Python.
math(EXPR next "${Python3_VERSION_MINOR} + 1")
string(CONCAT CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
       "python3 (>= 3.${Python3_VERSION_MINOR}), python3 (<< 3.${next}), python3-numpy, python3-xarray")
if(QORVIEW_NETCDF_NAME MATCHES "\\.so\\.([0-9]+)") # loaded when it is needed
  set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "libnetcdf${CMAKE_MATCH_1}")
endif()
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-dask, python3-distributed, python3-matplotlib, python3-netcdf4")
include(CPack)
