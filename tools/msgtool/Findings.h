// Findings: what `msgtool check` finds wrong in a catalogue.
//
// Each finding has a place, a severity, a stable code and a one-line
// explanation; the codes and what they mean are listed in FindingCodes.h
// (and explained at length in docs/msgtool.md) and never change meaning.
// The rules look at the catalogue as the loader would register it (defaults
// in place, languages packed) and point at the document as written.

#ifndef MSGTOOL_FINDINGS_H_
#define MSGTOOL_FINDINGS_H_

#include <string>
#include <vector>

#include "Catalogue.h"
#include "FindingCodes.h"

namespace msgtool {

enum class FindingSeverity { warning, error };

struct Finding {
  SourcePlace place;
  FindingSeverity severity = FindingSeverity::error;
  std::string code;
  std::string message;    // one line
  std::string nameSpace;  // the key, when the finding has one
  std::string identifier;
  std::string language;              // the packed language, when it has one
  std::vector<SourcePlace> related;  // other places it names
};

struct CheckSettings {
  // Packed languages every key must have; empty: every language present.
  std::vector<std::string> languages;
  // The language others are compared with; a key without it is compared
  // with its first text.
  std::string reference = "en";
  // Missing translations are errors, not warnings.
  bool strict = false;
};

// Every finding of `catalogue`, sorted by file, line, column and code.
std::vector<Finding> findFindings(const Catalogue& catalogue, const CheckSettings& settings);

const char* severityName(FindingSeverity severity);

}  // namespace msgtool

#endif  // MSGTOOL_FINDINGS_H_
