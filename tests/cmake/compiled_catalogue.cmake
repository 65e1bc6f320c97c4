# The equivalence test reads the benchmark catalogue's content from the
# benchmarks' own generator.
target_sources(compiled_catalogue_test PRIVATE ${PROJECT_SOURCE_DIR}/bench/CatalogueData.cpp)
target_include_directories(compiled_catalogue_test PRIVATE ${PROJECT_SOURCE_DIR}/bench)

# msgtool compile as scripts see it: placeholder errors stop it with exit 1
# and write nothing, --force writes, twice the same bytes, and a broken
# document ends it with exit 2. A plural message is compiled in the format
# that holds variants; one that breaks a plural rule ends it with exit 2 and
# leaves the catalogue there as it was.
if(MSG_BUILD_TOOLS)
  set(msg_compile_work ${CMAKE_CURRENT_BINARY_DIR}/msgtool-compile)
  file(MAKE_DIRECTORY ${msg_compile_work})
  add_test(NAME msgtool.compile COMMAND sh -c [[
    tool=$0 data=$1 out=$2; rm -f "$out"/*.msgc
    "$tool" compile "$data/faults-en.xml" "$data/faults-de.xml" -o "$out/a.msgc"; rc=$?
    [ $rc -eq 1 ] && [ ! -e "$out/a.msgc" ] || { echo "placeholder errors gave $rc"; exit 1; }
    "$tool" compile --force "$data/faults-en.xml" "$data/faults-de.xml" -o "$out/a.msgc" &&
    "$tool" compile --force "$data/faults-en.xml" "$data/faults-de.xml" -o "$out/b.msgc" &&
    cmp "$out/a.msgc" "$out/b.msgc" || { echo "--force failed or is not deterministic"; exit 1; }
    "$tool" compile "$data/broken.xml" -o "$out/c.msgc"; rc=$?
    [ $rc -eq 2 ] && [ ! -e "$out/c.msgc" ] || { echo "a broken document gave $rc"; exit 1; }
    "$tool" compile "$data/compile-plural.xml" -o "$out/p.msgc" &&
    [ "$(od -An -tu2 -j8 -N2 "$out/p.msgc" | tr -d ' ')" = 2 ] ||
      { echo "a plural message was not compiled with its variants"; exit 1; }
    cp "$out/p.msgc" "$out/before.msgc"
    "$tool" compile "$data/compile-plural-broken.xml" -o "$out/p.msgc"; rc=$?
    [ $rc -eq 2 ] && cmp "$out/p.msgc" "$out/before.msgc" ||
      { echo "a broken plural message gave $rc or changed the catalogue"; exit 1; }
  ]] $<TARGET_FILE:msgtool> ${CMAKE_CURRENT_SOURCE_DIR}/data/msgtool ${msg_compile_work})
  set_tests_properties(msgtool.compile PROPERTIES LABELS msgtool)
endif()
