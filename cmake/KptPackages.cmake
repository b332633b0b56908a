# Debian packages, by cpack in the build folder: the library, the reference host, what building against
# them takes, the tool, the Yosys plugin and the Python module. A package names the one build of the library that it was
# made with. The preset `package` builds what they are made for: in /usr, with symbols, which go into
# packages of their own; scripts/packages-test installs them into a fresh system.
if(NOT TARGET kpt)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "kpt maintainers <maintainers@kpt.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL library host dev)
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
# Each package has a synopsis of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/KptPackagesFinish.cmake)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
if(CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo")
  set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
endif()
# The libraries that are packaged at the same time are found where they are built; what they depend on
# is named below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/db/kpt ${PROJECT_BINARY_DIR}/host)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(kpt_version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(kpt_library_package libkpt${PROJECT_VERSION_MAJOR})
set(kpt_host_package libkpt-host${PROJECT_VERSION_MAJOR})
set(kpt_this_library "${kpt_library_package} (= ${kpt_version})")
set(kpt_this_host "${kpt_host_package} (= ${kpt_version})")
set(kpt_about
    "A keypoint database records, for one design, how the registers of a
reference netlist correspond to those of the netlist that a synthesis made
of it: kept, re-encoded, replicated, merged, inverted or gone.")

# kpt_package(COMPONENT package section synopsis text): names a package and installs what every package
# holds, its copyright and its changelog.
function(kpt_package component package section synopsis text)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${synopsis}\n${kpt_about}\n.\n${text}" PARENT_SCOPE)
  install(FILES cmake/debian/copyright DESTINATION ${kpt_docs}/${package} COMPONENT ${component})
  install(FILES ${PROJECT_BINARY_DIR}/changelog.Debian.gz DESTINATION ${kpt_docs}/${package} COMPONENT ${component})
  if(EXISTS ${PROJECT_SOURCE_DIR}/cmake/debian/${package}.lintian-overrides)
    install(FILES cmake/debian/${package}.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
            RENAME ${package} COMPONENT ${component})
  endif()
endfunction()

configure_file(cmake/debian/changelog.in ${PROJECT_BINARY_DIR}/changelog.Debian @ONLY)
kpt_pack(${PROJECT_BINARY_DIR}/changelog.Debian ${PROJECT_BINARY_DIR}/changelog.Debian.gz)

kpt_package(library ${kpt_library_package} libs "keypoint database for logic synthesis flows"
            "This package holds the shared library. The process that loads it supplies\nits services.")
kpt_package(host ${kpt_host_package} libs "keypoint database - reference host"
            "This package holds the reference host: the services that the library asks\nof a process, for programs that have none of their own.")
kpt_package(dev libkpt-dev libdevel "keypoint database - headers and package files"
            "This package holds what programs are built with, the guides, and examples.")
# Clients of kpt.h need neither; classes derived from the library's own do.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${kpt_this_library}, ${kpt_this_host}, libboost1.81-dev, libxerces-c-dev")
if(TARGET kptdb)
  kpt_package(tool kptdb electronics "keypoint database - command-line tool"
              "This package holds kptdb, which records, inspects, compares and composes\ndatabases.")
  set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${kpt_this_library}, ${kpt_this_host}")
endif()
if(TARGET kpt_yosys)
  kpt_package(yosys yosys-plugin-kpt electronics "keypoint database - plugin for Yosys"
              "This package holds the plugin by which Yosys records a database while it\nsynthesises, and proves a netlist by one.")
  set(CPACK_DEBIAN_YOSYS_PACKAGE_DEPENDS "${kpt_this_library}, ${kpt_this_yosys}")
endif()

if(TARGET kpt_python)
  kpt_package(python python3-kpt python "keypoint database - Python module"
              "This package holds the Python module kpt, which records, asks and composes\ndatabases.")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${kpt_this_library}, ${kpt_this_host}, ${kpt_this_python}")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-numpy, python3-matplotlib")
endif()

include(CPack)
