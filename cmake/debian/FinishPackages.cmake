# SPDX-License-Identifier: MIT
# CPack runs this on the trees of the packages: makes the changes that Debian needs, and sets times
# that depend only on SOURCE_DATE_EPOCH.
cmake_policy(SET CMP0057 NEW)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Finishes the files of a package below their root. Does nothing if the package is not built.
function(finish package root)
  if(NOT IS_DIRECTORY ${root}/usr)
    return()
  endif()
  set(doc ${root}/usr/share/doc/${package})
  set(zsh ${root}/usr/share/zsh)
  if(IS_DIRECTORY ${zsh}/site-functions)
    file(RENAME ${zsh}/site-functions ${zsh}/vendor-completions)
  endif()
  # Where compilers for other machines look as well.
  set(flags ${root}/usr/lib/pkgconfig)
  if(IS_DIRECTORY ${flags})
    file(MAKE_DIRECTORY ${root}/usr/share)
    file(RENAME ${flags} ${root}/usr/share/pkgconfig)
  endif()
  file(REMOVE ${doc}/LICENSE)
  configure_file(${KRADDON_DEBIAN_FOLDER}/copyright ${doc}/copyright COPYONLY)
  configure_file(${KRADDON_DEBIAN_FOLDER}/changelog.in ${doc}/changelog @ONLY)
  file(GLOB pages ${root}/usr/share/man/man1/*.1 ${root}/usr/share/man/man5/*.5)
  file(GLOB news ${doc}/CHANGELOG.md)
  run(gzip -9nf ${doc}/changelog ${pages} ${news})
  file(GLOB archives ${root}/usr/lib/kraddon/*.a)
  if(archives)
    run(strip --strip-debug --enable-deterministic-archives ${archives})
  endif()
  run(find ${root} -type d -exec chmod 0755 {} +)
  run(chmod 0644 ${doc}/copyright ${doc}/changelog.gz)
  if(DEFINED ENV{SOURCE_DATE_EPOCH})
    run(find ${root} -exec touch -h -d @$ENV{SOURCE_DATE_EPOCH} {} +)
  endif()
endfunction()

finish(kraddon ${CPACK_TEMPORARY_DIRECTORY}/runtime)
finish(kraddon-dev ${CPACK_TEMPORARY_DIRECTORY}/development)
