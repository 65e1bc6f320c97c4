# msgtool's manual page and bash completion as the build writes them
# (tools/msgtool/CMakeLists.txt): man renders the page without a warning
# (man-db and groff, which `make test` installs), and installing the tool's
# component puts both where man and bash-completion look for them. Their
# content is checked in msgtool_manual_test and msgtool_completion_test.
if(TARGET msgtool_manual)
  add_test(NAME msgtool.manual_renders COMMAND sh -c [[
    page=$0
    warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man -l --warnings "$page" 2>&1 >/dev/null) || {
      echo "man failed: $warnings"; exit 1; }
    [ -z "$warnings" ] || { echo "man warns about $page:"; echo "$warnings"; exit 1; }
    text=$(LC_ALL=C.UTF-8 MANWIDTH=80 man -l "$page" 2>/dev/null)
    for title in NAME SYNOPSIS COMMANDS "EXIT STATUS" FINDINGS; do
      echo "$text" | grep -qx "$title" || { echo "no section $title in the rendered page"; exit 1; }
    done
  ]] ${PROJECT_BINARY_DIR}/tools/msgtool/msgtool.1)
  set_tests_properties(msgtool.manual_renders PROPERTIES LABELS msgtool)

  set(msg_manual_root ${CMAKE_CURRENT_BINARY_DIR}/msgtool-manual-install)
  add_test(NAME msgtool.manual_installs COMMAND sh -c [[
    build=$0 root=$1 man=$2 completions=$3; rm -rf "$root"
    "$4" --install "$build" --component tool --prefix "$root" >/dev/null || exit 1
    cmp "$root/$man/man1/msgtool.1" "$build/tools/msgtool/msgtool.1" &&
    cmp "$root/$completions/msgtool" "$build/tools/msgtool/msgtool.bash-completion" ||
      { echo "the page or the completion is not installed where it belongs"; exit 1; }
    bash -n "$root/$completions/msgtool" || { echo "the completion is no bash"; exit 1; }
  ]] ${PROJECT_BINARY_DIR} ${msg_manual_root} ${CMAKE_INSTALL_MANDIR}
     ${CMAKE_INSTALL_DATADIR}/bash-completion/completions ${CMAKE_COMMAND})
  set_tests_properties(msgtool.manual_installs PROPERTIES LABELS msgtool)
endif()
