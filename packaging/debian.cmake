# What Debian's policy adds to an installed tree. CPack runs this before it makes the packages, in a folder that has one
# tree for each of them.
#
# The same sources give the same packages: every time in them is SOURCE_DATE_EPOCH, where that is given.
string(TIMESTAMP CHANGED "%a, %d %b %Y %H:%M:%S +0000" UTC)

foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} COMPONENT)
  set(PACKAGE ${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME})
  set(tree ${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX})

  configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${tree}/share/doc/${PACKAGE}/changelog @ONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${tree}/share/doc/${PACKAGE}/copyright COPYONLY)
  # The license is one of those that every Debian system has.
  file(REMOVE ${tree}/share/doc/kestrel/LICENSE)

  if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/${PACKAGE}.lintian-overrides)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${PACKAGE}.lintian-overrides ${tree}/share/lintian/overrides/${PACKAGE} COPYONLY)
  endif()

  # Debian's zsh looks for the completions of packages in a folder of their own.
  if(EXISTS ${tree}/share/zsh/site-functions)
    file(RENAME ${tree}/share/zsh/site-functions ${tree}/share/zsh/vendor-completions)
  endif()

  file(GLOB pages ${tree}/share/man/man*/*)
  execute_process(
    COMMAND gzip --best --no-name ${tree}/share/doc/${PACKAGE}/changelog ${pages}
    COMMAND_ERROR_IS_FATAL ANY
  )

  # The loader looks where the package puts the library, without being told.
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
