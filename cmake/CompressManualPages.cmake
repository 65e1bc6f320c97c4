# Run by CPack before it builds the packages (CPACK_PRE_BUILD_SCRIPTS):
# gzips every manual page in the staging tree with `gzip -9n`, as Debian
# wants manual pages (no name or time stamp in the archive, so the
# packages of one build are the same whenever they are made).

if(NOT IS_DIRECTORY "${CPACK_TEMPORARY_DIRECTORY}")
  message(FATAL_ERROR "CompressManualPages.cmake: no staging tree (CPACK_TEMPORARY_DIRECTORY)")
endif()
file(GLOB_RECURSE files LIST_DIRECTORIES false "${CPACK_TEMPORARY_DIRECTORY}/*")
foreach(page IN LISTS files)
  if(NOT page MATCHES "/share/man/man[1-9]/[^/]+$" OR page MATCHES "\\.gz$" OR IS_SYMLINK "${page}")
    continue()
  endif()
  execute_process(COMMAND gzip -9nf "${page}" RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "gzip failed on the manual page ${page}")
  endif()
endforeach()
