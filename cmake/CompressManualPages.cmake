# Run by CPack before it builds the packages (CPACK_PRE_BUILD_SCRIPTS):
# gzips every manual page in the staging tree with `gzip -9n`, as Debian
# wants manual pages (no name or time stamp in the archive, so the
# packages of one build are the same whenever they are made).

file(GLOB_RECURSE pages LIST_DIRECTORIES false
     "${CPACK_TEMPORARY_DIRECTORY}/*/share/man/man[1-9]/*")
foreach(page IN LISTS pages)
  if(page MATCHES "\\.gz$" OR IS_SYMLINK "${page}")
    continue()
  endif()
  execute_process(COMMAND gzip -9nf "${page}" RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "gzip failed on the manual page ${page}")
  endif()
endforeach()
