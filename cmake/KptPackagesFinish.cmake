# Run by cpack when it has made the packages: where cpack writes scripts that call ldconfig, Debian asks
# for a trigger.
find_program(DPKG_DEB dpkg-deb REQUIRED)

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(folder ${package}.content)
  execute_process(COMMAND ${DPKG_DEB} --raw-extract ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
  if(EXISTS ${folder}/DEBIAN/shlibs)
    file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
    file(WRITE ${folder}/DEBIAN/triggers "activate-noawait ldconfig\n")
    execute_process(COMMAND ${DPKG_DEB} --root-owner-group --build ${folder} ${package}
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(REMOVE_RECURSE ${folder})
endforeach()
