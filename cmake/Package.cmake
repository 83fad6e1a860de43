# Debian packages by CPack, one for each part of an installation (scripts/package).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME palvex)
set(CPACK_PACKAGE_VENDOR "the palvex authors")
set(CPACK_PACKAGE_CONTACT "the palvex authors <palvex@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION math)

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME palvex)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS palvex-calc)
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
    "Densities, probabilities, quantiles, draws and pictures of ten types of distributions, cut by limits, and simulations of tables of uncertain figures with a report.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libpalvex-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS libmuparser-dev)  # for the component simulation
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers and static library for C++ programs: the engine behind palvex, with a CMake package and a pkg-config file.")

set(CPACK_COMPONENTS_ALL program development)
if(TARGET palvex_calc)
  list(APPEND CPACK_COMPONENTS_ALL calc)
  set(CPACK_DEBIAN_CALC_PACKAGE_NAME palvex-calc)
  set(CPACK_DEBIAN_CALC_PACKAGE_DEPENDS "libreoffice-calc (>= 4:7.4)")
  set(CPACK_DEBIAN_CALC_PACKAGE_ENHANCES "palvex (= ${PROJECT_VERSION})")
  set(CPACK_COMPONENT_CALC_DESCRIPTION
      "An extension for LibreOffice Calc: worksheet functions of probability distributions, an object for macros, and simulations of the open document. With it the program palvex simulates workbooks.")
endif()
include(CPack)
