# The equivalence test reads the benchmark catalogue's content from the
# benchmarks' own generator.
target_sources(compiled_catalogue_test PRIVATE ${PROJECT_SOURCE_DIR}/bench/CatalogueData.cpp)
target_include_directories(compiled_catalogue_test PRIVATE ${PROJECT_SOURCE_DIR}/bench)
