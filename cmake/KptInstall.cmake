# Install rules: headers below include/kpt, so that `#include "db/kpt/kpt.h"` is the same here and in
# a client; libraries; package files for find_package(kpt) and pkg-config. A distribution makes one
# package of each of the components library, host, dev, tool, yosys and python.
if(NOT TARGET kpt)
  return()
endif()

include(CMakePackageConfigHelpers)

set(kpt_headers ${CMAKE_INSTALL_INCLUDEDIR}/kpt)
set(kpt_package ${CMAKE_INSTALL_LIBDIR}/cmake/kpt)

# The headers that a client or a derived class needs.
install(DIRECTORY h DESTINATION ${kpt_headers} COMPONENT dev FILES_MATCHING PATTERN "*.h")
install(DIRECTORY db DESTINATION ${kpt_headers} COMPONENT dev
        FILES_MATCHING PATTERN "*.h"
        PATTERN composition EXCLUDE
        PATTERN files EXCLUDE
        PATTERN load EXCLUDE
        PATTERN unite EXCLUDE
        PATTERN kpt_steps.h EXCLUDE
        PATTERN kpt_ticks.h EXCLUDE
        PATTERN kpt_translation.h EXCLUDE)
install(FILES db/kpt/files/kpt_xml_memory.h db/kpt/files/kpt_xml_platform.h
        DESTINATION ${kpt_headers}/db/kpt/files COMPONENT dev)
install(FILES host/kpt_host.h DESTINATION ${kpt_headers}/host COMPONENT dev)
install(FILES ${PROJECT_BINARY_DIR}/include/kpt_export.h DESTINATION ${kpt_headers} COMPONENT dev)

install(TARGETS kpt EXPORT kptTargets
        LIBRARY COMPONENT library NAMELINK_COMPONENT dev
        INCLUDES DESTINATION ${kpt_headers})
install(TARGETS kpt_host EXPORT kptTargets LIBRARY COMPONENT host NAMELINK_COMPONENT dev)
install(EXPORT kptTargets NAMESPACE kpt:: DESTINATION ${kpt_package} COMPONENT dev)

configure_package_config_file(cmake/kptConfig.cmake.in ${PROJECT_BINARY_DIR}/kptConfig.cmake
                              INSTALL_DESTINATION ${kpt_package})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kptConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kptConfig.cmake ${PROJECT_BINARY_DIR}/kptConfigVersion.cmake
        DESTINATION ${kpt_package} COMPONENT dev)

# The package files name directories relative to their own, so a prefix can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
           OUTPUT_VARIABLE kpt_up_to_prefix)
foreach(package IN ITEMS kpt kpt_host)
  configure_file(cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
          COMPONENT dev)
endforeach()

# A prefix of its own can be moved: its programs find the library relative to where they lie. What lies
# in /usr is found by the system.
function(kpt_find_library_from target directory)
  if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    file(RELATIVE_PATH up ${directory} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${up}")
  endif()
endfunction()

# A file packed by gzip, without its time, so that the same file gives the same bytes.
find_program(KPT_GZIP gzip REQUIRED)
function(kpt_pack source output)
  execute_process(COMMAND ${KPT_GZIP} -9nc ${source} OUTPUT_FILE ${output} COMMAND_ERROR_IS_FATAL ANY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
endfunction()

set(kpt_docs ${CMAKE_INSTALL_DATADIR}/doc)
install(FILES docs/overview.md docs/format.md docs/behaviours.md docs/writing-a-host.md
        DESTINATION ${kpt_docs}/libkpt-dev COMPONENT dev)
install(FILES examples/record.cpp DESTINATION ${kpt_docs}/libkpt-dev/examples COMPONENT dev)
install(DIRECTORY examples/own_host DESTINATION ${kpt_docs}/libkpt-dev/examples COMPONENT dev)

if(TARGET kptdb)
  kpt_find_library_from(kptdb ${CMAKE_INSTALL_FULL_BINDIR})
  install(TARGETS kptdb COMPONENT tool)
  kpt_pack(${PROJECT_SOURCE_DIR}/docs/kptdb.1 ${PROJECT_BINARY_DIR}/kptdb.1.gz)
  install(FILES ${PROJECT_BINARY_DIR}/kptdb.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
  install(FILES docs/kptdb.md docs/kptdb-json.md docs/events.md docs/report.md docs/waves.md
          DESTINATION ${kpt_docs}/kptdb COMPONENT tool)
  install(DIRECTORY examples/events DESTINATION ${kpt_docs}/kptdb/examples COMPONENT tool)
  install(FILES docs/events.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/kptdb/schemas COMPONENT tool)
  install(DIRECTORY docs/kptdb-json/ DESTINATION ${CMAKE_INSTALL_DATADIR}/kptdb/schemas COMPONENT tool)
  set(kpt_completions ${PROJECT_BINARY_DIR}/tools/kptdb/completions)
  install(FILES ${kpt_completions}/kptdb DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tool)
  install(FILES ${kpt_completions}/_kptdb DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tool)
  install(FILES ${kpt_completions}/kptdb.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tool)
endif()

if(TARGET kpt_yosys)
  kpt_find_library_from(kpt_yosys ${CMAKE_INSTALL_PREFIX}/${KPT_YOSYS_PLUGINS})
  install(TARGETS kpt_yosys COMPONENT yosys LIBRARY DESTINATION ${KPT_YOSYS_PLUGINS})
  install(FILES docs/yosys.md DESTINATION ${kpt_docs}/yosys-plugin-kpt COMPONENT yosys)
  install(DIRECTORY examples/rtl DESTINATION ${kpt_docs}/yosys-plugin-kpt/examples COMPONENT yosys)
endif()

if(TARGET kpt_python)
  set(KPT_PYTHON_DESTINATION lib/python3/dist-packages/kpt CACHE STRING "Where the Python package is installed")
  option(KPT_PYTHON_LIBRARIES "Put the libraries beside the Python module" OFF)
  if(NOT KPT_PYTHON_LIBRARIES)
    kpt_find_library_from(kpt_python ${CMAKE_INSTALL_PREFIX}/${KPT_PYTHON_DESTINATION})
    install(FILES docs/python.md DESTINATION ${kpt_docs}/python3-kpt COMPONENT python)
    install(DIRECTORY examples/python DESTINATION ${kpt_docs}/python3-kpt/examples COMPONENT python)
  else()
    install(TARGETS kpt kpt_host LIBRARY DESTINATION ${KPT_PYTHON_DESTINATION} COMPONENT python NAMELINK_SKIP)
  endif()
  install(TARGETS kpt_python LIBRARY DESTINATION ${KPT_PYTHON_DESTINATION} COMPONENT python)
  install(DIRECTORY ${KPT_PYTHON_PACKAGE}/ DESTINATION ${KPT_PYTHON_DESTINATION} COMPONENT python
          FILES_MATCHING PATTERN "*.py" PATTERN "*.pyi" PATTERN "py.typed" PATTERN "__pycache__" EXCLUDE)
endif()
