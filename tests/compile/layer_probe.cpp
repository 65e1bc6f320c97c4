// Compiled by the layering tests (tests/cmake/layering.cmake) with one
// layer's include root: LAYER_PROBE_HEADER names a header of some folder,
// which must be found if the layer may use that folder and not otherwise.

#define LAYER_PROBE_STRING(name) #name
#define LAYER_PROBE_QUOTED(name) LAYER_PROBE_STRING(name)
#include LAYER_PROBE_QUOTED(LAYER_PROBE_HEADER)
