// FindingCodes: the codes of `msgtool check`'s findings, with the severity
// and meaning of each.
//
// This is the one list of them: the rules in Findings.cpp name their codes
// by the constants below, and the manual page lists findingCodes(). A new
// code goes into both places here. Codes never change meaning once
// released.

#ifndef MSGTOOL_FINDINGCODES_H_
#define MSGTOOL_FINDINGCODES_H_

#include <vector>

namespace msgtool {

// The codes, one per kind of fault.
namespace code {
inline constexpr char kDocumentRefused[] = "document-refused";
inline constexpr char kPlaceholderMismatch[] = "placeholder-mismatch";
inline constexpr char kDuplicateText[] = "duplicate-text";
inline constexpr char kUnknownSeverity[] = "unknown-severity";
inline constexpr char kMissingId[] = "missing-id";
inline constexpr char kMissingNamespaceName[] = "missing-namespace-name";
inline constexpr char kMissingTranslation[] = "missing-translation";
inline constexpr char kLanguageTag[] = "language-tag";
inline constexpr char kPlaceholderGap[] = "placeholder-gap";
inline constexpr char kIgnoredPlaceholder[] = "ignored-placeholder";
inline constexpr char kEmptyText[] = "empty-text";
inline constexpr char kWhitespaceMismatch[] = "whitespace-mismatch";
inline constexpr char kStaleTranslation[] = "stale-translation";
inline constexpr char kPluralFormMissing[] = "plural-form-missing";
inline constexpr char kPluralFormUnused[] = "plural-form-unused";
inline constexpr char kPluralCountMissing[] = "plural-count-missing";
}  // namespace code

// A finding code as a user reads about it.
struct FindingCode {
  const char* code;      // one of the constants above
  const char* severity;  // "error", "warning", or how an option changes it
  const char* meaning;   // one sentence, without a full stop
};

// Every code, errors first, in the order the guide explains them.
const std::vector<FindingCode>& findingCodes();

}  // namespace msgtool

#endif  // MSGTOOL_FINDINGCODES_H_
