# Adds the files that Debian's policy requires. CPack runs this script before it builds the packages, in a folder with one
# installed tree per package.
#
# The packages are reproducible: if SOURCE_DATE_EPOCH is set, all their times have this value.
string(TIMESTAMP CHANGED "%a, %d %b %Y %H:%M:%S +0000" UTC)

foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} COMPONENT)
  set(PACKAGE ${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME})
  set(tree ${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX})

  configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${tree}/share/doc/${PACKAGE}/changelog @ONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${tree}/share/doc/${PACKAGE}/copyright COPYONLY)
  # Every Debian system has this license in /usr/share/common-licenses.
  file(REMOVE ${tree}/share/doc/kestrel/LICENSE)

  # Write the symbols file: the package version that introduced each symbol of the library. Packages of programs that
  # use a symbol depend on its version.
  if(component STREQUAL "library")
    list(GET CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA -1 symbols)
    cmake_path(GET symbols PARENT_PATH folder)
    file(MAKE_DIRECTORY ${folder})
    execute_process(
      COMMAND dpkg-gensymbols -c4 -p${PACKAGE} -v${CPACK_PACKAGE_VERSION}
        -P${CPACK_TEMPORARY_DIRECTORY}/${component} -I${CMAKE_CURRENT_LIST_DIR}/${PACKAGE}.symbols -O${symbols}
      COMMAND_ERROR_IS_FATAL ANY
    )
  endif()

  if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/${PACKAGE}.lintian-overrides)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${PACKAGE}.lintian-overrides ${tree}/share/lintian/overrides/${PACKAGE} COPYONLY)
  endif()

  # Debian's zsh reads completions of packages from another folder.
  if(EXISTS ${tree}/share/zsh/site-functions)
    file(RENAME ${tree}/share/zsh/site-functions ${tree}/share/zsh/vendor-completions)
  endif()

  file(GLOB pages ${tree}/share/man/man*/*)
  execute_process(
    COMMAND gzip --best --no-name ${tree}/share/doc/${PACKAGE}/changelog ${pages}
    COMMAND_ERROR_IS_FATAL ANY
  )

  # The library is in a standard folder of the loader, so kestrel needs no RPATH.
  if(EXISTS ${tree}/bin/kestrel)
    file(RPATH_REMOVE FILE ${tree}/bin/kestrel)
  endif()

  if(DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(
      COMMAND find ${tree} -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
      COMMAND_ERROR_IS_FATAL ANY
    )
  endif()
endforeach()
