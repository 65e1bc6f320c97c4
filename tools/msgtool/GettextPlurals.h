// GettextPlurals: the plural forms of gettext for a language, taken from the
// library's CLDR rules the way Weblate and Poedit map them.
//
// CLDR names categories (zero one two few many other); gettext numbers forms
// (msgstr[0] ... msgstr[N-1]) and picks one with the header's Plural-Forms
// expression in n, for whole numbers only. The forms are the categories that
// whole numbers reach, in the order zero one two few many other. Where
// `other` is reached by decimals alone (Polish, Russian), the last form
// stands for it: its text is the language's `other` too.
//
// Which categories whole numbers reach is what check finds too
// (LanguagePlurals in PluralNeeds.h); the expression is a chain of the
// rules' own conditions, so ngettext and msg choose alike.

#ifndef MSGTOOL_GETTEXTPLURALS_H_
#define MSGTOOL_GETTEXTPLURALS_H_

#include <string>
#include <vector>

#include "msg/Language.h"
#include "msg/Plural.h"

namespace msgtool {

struct GettextPlurals {
  // forms[i] is the category whose text goes into msgstr[i].
  std::vector<msg::PluralCategory> forms;
  // True if the last form also holds the language's `other`, which whole
  // numbers never reach.
  bool lastStandsForOther = false;
  // The Plural-Forms expression in n.
  std::string formula;

  // The cardinal forms of `language`.
  static GettextPlurals of(msg::Language language);

  // "nplurals=N; plural=EXPR;", the value of the Plural-Forms header.
  std::string header() const;

  // The form that holds the text of `category`; for a category that no
  // whole number reaches (`other` of Polish), the last form if it stands for
  // it, else -1.
  int indexOf(msg::PluralCategory category) const;
};

}  // namespace msgtool

#endif  // MSGTOOL_GETTEXTPLURALS_H_
