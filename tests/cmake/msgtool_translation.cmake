# msgtool export and import against the translators' own tools: gettext
# (msgfmt, msgcat, msgen) and translate-toolkit (pocount, podebug), which
# `make test` installs. One CTest test per case of the script.
if(TARGET msgtool)
  foreach(case po_tools older_source xliff_tools round_trip stale bad_input plural_tools)
    add_test(NAME msgtool_translation.${case}
             COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/msgtool_translation_test.sh
                     $<TARGET_FILE:msgtool> ${PROJECT_SOURCE_DIR} ${case})
    set_tests_properties(msgtool_translation.${case} PROPERTIES LABELS msgtool TIMEOUT 120)
  endforeach()
endif()
