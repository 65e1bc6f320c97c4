// InputLimits: how much of each kind of input the library and its tool take
// in, in one place. Every reader checks its input against the limit named
// here for its kind, so a limit changes in one line.

#ifndef MSG_PLATFORM_INPUTLIMITS_H_
#define MSG_PLATFORM_INPUTLIMITS_H_

#include <cstddef>
#include <cstdint>

namespace msg {
namespace limits {

// Message documents (check, stats, show, compile, and the document import
// edits): far above any real catalogue (the 10,000-key benchmark catalogue
// is about 4 MB), and low enough that a stray disk image named by mistake
// fails at once.
inline constexpr std::uintmax_t kMaxMessageDocumentBytes = 256u * 1024u * 1024u;

// Files from translators' tools (XLIFF and PO), which import reads whole.
// The cap bounds the memory of an import: an XLIFF file is held as a DOM,
// and a DOM node costs a few hundred bytes however few bytes of the file
// make it. Measured peaks of `msgtool import` on 16 MiB files: empty
// elements with one character between them ("<a/>x") 1.4 GB, about 80
// times the file; empty elements alone 1.1 GB; elements of 128 empty
// attributes 0.8 GB. Under the former 64 MiB, 60 MB of empty elements took
// 4.1 GB. Real files are far smaller: one language of the 10,000-key benchmark
// catalogue is 6.3 MB as XLIFF 1.2 (an import peaks at 115 MB), 7 MB as
// XLIFF 2.0 and 2.2 MB as PO.
inline constexpr std::uintmax_t kMaxTranslatorsFileBytes = 16u * 1024u * 1024u;

// Compiled catalogues have no byte limit: they are mapped, not read, and
// their reader checks every offset against the size of the mapping.

// Elements nested deeper than this are refused while parsing, and no
// deeper tree is serialised. The serialiser of Xerces-C recurses once per
// level (100,000 levels overflow a main thread's stack of 8 MiB), and
// message documents need five levels; 1,000 is far above any real document
// and far below the depth that overflows a thread's stack.
inline constexpr std::size_t kMaxElementDepth = 1000;

// Attributes one element may carry. Xerces-C's DOM builder looks each
// attribute up among those before it, so one element of n attributes costs
// n*n/2 comparisons (40,000 attributes took seconds, 200,000 minutes). With
// at most 128, the lookups add at most about a dozen comparisons per byte
// of the file, whatever its shape. The richest element of a translators'
// file defines about twenty attributes, and message documents use five or
// fewer (namespace declarations included).
inline constexpr std::size_t kMaxAttributesPerElement = 128;

// Groups, and inline elements inside a text, of a translators' file nested
// deeper than this are refused. The readers walk them recursively; real
// files nest groups a few levels, and inline elements two or three.
inline constexpr int kMaxExchangeNesting = 32;

// Entity references a document may expand in all (nested ones included).
// Ten levels of ten references each (the "billion laughs") need 10^10; a
// document that uses entities for names and boilerplate needs a few hundred.
inline constexpr std::size_t kMaxEntityReferences = 10000;

// Characters that entity references may add to a document in all, the
// bound on what a small document can make the parser build (one entity of
// 50,000 characters referenced 20,000 times would be 10^9). libxml2 bounds
// one text to the same 10,000,000.
inline constexpr std::size_t kMaxEntityExpansion = 10000000;

}  // namespace limits
}  // namespace msg

#endif  // MSG_PLATFORM_INPUTLIMITS_H_
