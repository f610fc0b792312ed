# Removes what the last install put down: the files of its manifest, then the folders it
# created, deepest first and only when nothing else has come into them. The user's settings
# live elsewhere and stay. A DESTDIR given to the install must be given here too.
#   cmake -DMANIFEST=install_manifest.txt -DCREATED_DIRS=install_created_dirs.txt
#         -DPACKAGE_STAGING_MARK=<mark> -P Uninstall.cmake
if(NOT EXISTS "${MANIFEST}")
  message(FATAL_ERROR "Nothing to uninstall: ${MANIFEST} is missing (install first).")
endif()
if(EXISTS "${CREATED_DIRS}")
  file(STRINGS "${CREATED_DIRS}" dirs)
  if(dirs STREQUAL "${PACKAGE_STAGING_MARK}")
    message(FATAL_ERROR "The last install was cpack's, into a package; its manifest names no "
                        "install on this system. Run cmake --install again first.")
  endif()
endif()
file(STRINGS "${MANIFEST}" files)
foreach(file IN LISTS files)
  set(file "$ENV{DESTDIR}${file}")
  if(EXISTS "${file}" OR IS_SYMLINK "${file}")
    message(STATUS "Removing: ${file}")
    file(REMOVE "${file}")
  endif()
endforeach()

if(EXISTS "${CREATED_DIRS}")
  # In reverse order a folder comes after everything inside it.
  list(SORT dirs ORDER DESCENDING)
  foreach(dir IN LISTS dirs)
    set(dir "$ENV{DESTDIR}${dir}")
    if(IS_DIRECTORY "${dir}" AND NOT IS_SYMLINK "${dir}")
      file(GLOB left LIST_DIRECTORIES true "${dir}/*" "${dir}/.*")
      if(NOT left)
        message(STATUS "Removing: ${dir}")
        file(REMOVE_RECURSE "${dir}")
      endif()
    endif()
  endforeach()
  file(REMOVE "${CREATED_DIRS}")
endif()
file(REMOVE "${MANIFEST}")
