// ReferenceGuard: decides what the external references of a document may
// reach, and opens what it allows itself.

#ifndef MSG_XML_ACCESS_REFERENCEGUARD_H_
#define MSG_XML_ACCESS_REFERENCEGUARD_H_

#include <deque>
#include <filesystem>
#include <string>

#include <xercesc/util/XMLEntityResolver.hpp>

#include "xml_access/BoundedDOMParser.h"
#include "xml_access/PartPositions.h"

namespace XercesXML {

// The entity resolver of every parser of this library. Xerces-C asks it
// about each reference a document makes: a schema location (and the
// includes and imports of a schema), an xi:include, an external entity or
// external DTD. Whatever the resolver leaves unanswered Xerces-C fetches
// itself, from any URL and over the network, so the guard answers every
// question, and never with null (for a schema or an include Xerces-C would
// open the reference itself). Its rules:
//  - a reference that names anything but a local file is refused;
//  - external entities and external DTDs are refused: no parser of this
//    library reads them;
//  - a schema must be a local file; an xi:include must be a local file, and
//    with confinement on it must lie in the folder of the document being
//    parsed or below it (after symbolic links are followed).
// Xerces-C reads included parts and schema files with parsers of its own
// that know none of the bounds of BoundedDOMParser. So before the guard
// hands out a part or a schema, it reads the file into memory and parses it
// once with a BoundedDOMParser of the same rules (a part refuses a DOCTYPE
// when the guard says so; a schema may have one, with bounded entities),
// and Xerces-C then reads those same bytes; a part or schema that fails
// that parse (not well formed, or beyond a bound) is refused with the
// parser's message.
//
// Xerces-C swallows exceptions out of a resolver in places (an include
// then takes its fallback), so a refusal is recorded, the guard answers
// with a source of one blank, and the Parser refuses the document after the
// parse (getRefusal). A file that cannot be read is left to Xerces-C as a
// local file, which fails as a missing file always has (an include then
// takes its fallback).
//
// The guard borrows the parser whose questions it answers, to learn whether
// a reference is an include. One parse at a time, one thread.
class ReferenceGuard : public xercesc::XMLEntityResolver {
 public:
  explicit ReferenceGuard(const BoundedDOMParser& parser);

  ReferenceGuard(const ReferenceGuard&) = delete;
  ReferenceGuard& operator=(const ReferenceGuard&) = delete;
  ~ReferenceGuard() override;

  // Prepares the parse of `documentPath`. With `confine`, includes must stay
  // in its folder; with `refuseDoctypeInParts`, included parts may not have a
  // document type declaration. Frees the bytes of the previous parse.
  void start(const std::string& documentPath, bool confine, bool refuseDoctypeInParts);

  // With a record (borrowed, not null), the check of every part also notes
  // where the part's elements start, into the record; null notes nothing.
  // Stays until changed.
  void setPartPositions(PartPositions* record) { partPositions = record; }

  xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* resource) override;

  // The first refusal of the running or last parse; null if none.
  const ParseRefused* getRefusal() const { return refused.empty() ? nullptr : &refused.front(); }

 private:
  enum class Kind { Part, Schema };

  // The source for `resource`. Raises ParseRefused.
  xercesc::InputSource* answer(const xercesc::XMLResourceIdentifier& resource);

  xercesc::InputSource* open(const std::string& reference, const std::string& base, Kind kind,
                             const xercesc::XMLResourceIdentifier& resource);

  const BoundedDOMParser& parser;
  std::filesystem::path root;  // empty: includes may reach any local file
  bool refuseDoctypeInParts = false;
  PartPositions* partPositions = nullptr;  // borrowed, may be null
  std::deque<std::string> contents;        // bytes handed out during this parse
  std::deque<ParseRefused> refused;        // in the order found
};

// The local file a document name refers to: the name itself, or the path of
// a file: URL without a host (or with localhost). Empty for a URL of any
// other kind, which names something this library never reads.
std::string localFileOf(const std::string& name);

// The local file name `reference` as an absolute, lexically normal path;
// a relative one is taken from the folder of `base` (a local file name or
// file: URL; empty: the current folder).
std::filesystem::path resolveLocalFile(const std::string& reference, const std::string& base);

}  // namespace XercesXML

#endif  // MSG_XML_ACCESS_REFERENCEGUARD_H_
