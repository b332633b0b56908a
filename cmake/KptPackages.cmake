# Debian packages, which cpack makes in the build folder: the library, its development files, the tool, the
# Yosys plugin and the Python module. A package depends on exactly the build of the library that it was made with.
if(NOT TARGET kpt)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The kpt developers <kpt@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL library dev)
if(TARGET kptdb)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
if(TARGET kpt_yosys)
  list(APPEND CPACK_COMPONENTS_ALL yosys)
  string(REGEX MATCH "^([0-9]+)[.]([0-9]+)$" kpt_yosys_version "${KPT_YOSYS_VERSION}")
  math(EXPR kpt_next_yosys "${CMAKE_MATCH_2} + 1")
  set(kpt_this_yosys "yosys (>= ${KPT_YOSYS_VERSION}), yosys (<< ${CMAKE_MATCH_1}.${kpt_next_yosys}~)")
endif()
if(TARGET kpt_python)
  list(APPEND CPACK_COMPONENTS_ALL python)
  math(EXPR kpt_next_python "${KPT_PYTHON_MINOR} + 1")
  set(kpt_this_python "python3 (>= 3.${KPT_PYTHON_MINOR}), python3 (<< 3.${kpt_next_python})")
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(kpt_library_package libkpt${PROJECT_VERSION_MAJOR})
set(kpt_this_library "${kpt_library_package} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${kpt_library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "Keypoint database for logic synthesis flows")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libkpt-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# Clients of kpt.h need neither; classes that are derived from the library's do.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${kpt_this_library}, libboost1.81-dev, libxerces-c-dev")
set(CPACK_COMPONENT_DEV_DESCRIPTION "Keypoint database: headers and package files")

# The tool's libraries are named here, because the tools that find them do not know a library that is
# packaged at the same time.
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME kptdb)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${kpt_this_library}, libfmt9, libxerces-c3.2, libstdc++6 (>= 12)")
set(CPACK_COMPONENT_TOOL_DESCRIPTION "Keypoint database: the command-line tool")

set(CPACK_DEBIAN_YOSYS_PACKAGE_NAME yosys-plugin-kpt)
set(CPACK_DEBIAN_YOSYS_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_YOSYS_PACKAGE_DEPENDS "${kpt_this_library}, ${kpt_this_yosys}, libstdc++6 (>= 12)")
set(CPACK_COMPONENT_YOSYS_DESCRIPTION "Keypoint database: the Yosys plugin")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-kpt)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "${kpt_this_library}, ${kpt_this_python}, libfmt9, libstdc++6 (>= 12), libc6 (>= 2.36)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-numpy, python3-matplotlib")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "Keypoint database: the Python module")

include(CPack)
