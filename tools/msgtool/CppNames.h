// CppNames: C++ names for message namespaces and identifiers, for the
// header that `msgtool header` writes.
//
// A name keeps the letters, digits and underscores of the original; every
// other byte becomes "_", runs of "_" shrink to one, a leading digit gets a
// prefix, and a keyword or a name the platform reserves gets a trailing
// "_". Names that still collide within one scope are told apart by "_2",
// "_3", ... in the sorted order of the originals; a name that needed no
// change keeps it.

#ifndef MSGTOOL_CPPNAMES_H_
#define MSGTOOL_CPPNAMES_H_

#include <map>
#include <string>
#include <vector>

namespace msgtool {

enum class NameScope {
  global,    // a namespace at global (or the caller's) scope
  enclosed,  // a constant inside a namespace of ours
};

// A valid, unreserved C++ identifier made from `original`.
std::string safeCppName(const std::string& original, NameScope scope);

// safeCppName of every original, made unique within the scope. `originals`
// must be sorted and hold no repeats; the result maps each to its name.
std::map<std::string, std::string> uniqueCppNames(const std::vector<std::string>& originals,
                                                  NameScope scope);

// `text` as the inside of a C++ string literal: quotes, backslashes and
// control characters escaped; with `asciiOnly` every byte above 0x7F as an
// octal escape too.
std::string escapeForCpp(const std::string& text, bool asciiOnly);

}  // namespace msgtool

#endif  // MSGTOOL_CPPNAMES_H_
