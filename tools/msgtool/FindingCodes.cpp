#include "FindingCodes.h"

namespace msgtool {

const std::vector<FindingCode>& findingCodes() {
  static const std::vector<FindingCode> codes{
      {code::kDocumentRefused, "error",
       "The loader would refuse the document; one finding per problem the parser or the loader "
       "reports"},
      {code::kPlaceholderMismatch, "error",
       "A text of a key has other placeholder numbers than the reference text (of a plural "
       "message: its other form)"},
      {code::kDuplicateText, "error",
       "The same key and language defined twice, in one file or across files"},
      {code::kUnknownSeverity, "error", "A severity word other than info, warning, error, abort"},
      {code::kMissingId, "error", "A Message without id"},
      {code::kMissingNamespaceName, "error", "A MessageNamespace without name"},
      {code::kMissingTranslation, "warning; error with --strict",
       "A required language has no text for a key"},
      {code::kLanguageTag, "warning", "A language tag the library does not use as written"},
      {code::kPlaceholderGap, "warning", "The reference text skips placeholder numbers"},
      {code::kIgnoredPlaceholder, "warning", "An & and digits that substitution never replaces"},
      {code::kEmptyText, "warning", "A text that is empty or only whitespace"},
      {code::kWhitespaceMismatch, "warning",
       "Leading or trailing whitespace differs from the reference text"},
      {code::kStaleTranslation, "warning",
       "A translation was imported from a source text that has changed since"},
      {code::kPluralFormMissing, "error",
       "A language of a plural message lacks a form its rules give to whole numbers"},
      {code::kPluralFormUnused, "warning",
       "A plural or ordinal form that the language's rules never choose"},
      {code::kPluralCountMissing, "error",
       "A text of a plural message chosen for more than one number does not show the count"},
  };
  return codes;
}

}  // namespace msgtool
