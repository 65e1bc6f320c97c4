#include "IncomingFile.h"

#include <algorithm>
#include <map>
#include <utility>

#include "PoFile.h"
#include "ToolError.h"
#include "XliffFile.h"
#include "XliffSupport.h"

namespace msgtool {

namespace {

// Two units of one key would leave the result to chance: the file is refused.
void refuseDuplicates(const std::string& path, const std::vector<IncomingUnit>& units) {
  std::map<std::string, int> firstLine;
  for (const IncomingUnit& unit : units) {
    auto [known, isNew] = firstLine.emplace(unit.key, unit.line);
    if (!isNew) {
      throw ToolError(path, unit.line,
                      "the key \"" + unit.key + "\" appears again (first on line " +
                          std::to_string(known->second) + ")");
    }
  }
}

// The value of the extracted comment "severity: info" for `label` "severity: ".
std::string commentValue(const std::vector<std::string>& comments, const std::string& label) {
  for (const std::string& comment : comments) {
    if (comment.rfind(label, 0) == 0) {
      return comment.substr(label.size());
    }
  }
  return std::string();
}

IncomingFile readPoFile(const std::string& path) {
  PoFile po = PoFile::read(path);
  if (po.header.empty() && po.entries.empty()) {
    throw ToolError(path, 0, "is empty: no header and no entries; nothing to import");
  }
  IncomingFile file{
      po.headerField("X-Source-Language"), po.headerField("Language"), "Language header", {}};
  for (const PoEntry& entry : po.entries) {
    if (!entry.context || entry.context->empty()) {
      throw ToolError(path, entry.line,
                      "the entry has no msgctxt; msgtool finds the message by its msgctxt "
                      "\"namespace:identifier\" (export the file with msgtool export)");
    }
    IncomingUnit unit{*entry.context,
                      entry.id,
                      entry.str,
                      entry.str.empty(),
                      entry.hasFlag("fuzzy"),
                      commentValue(entry.extractedComments, kSeverityNote),
                      commentValue(entry.extractedComments, kCountNote),
                      entry.line,
                      "",
                      "",
                      entry.idPlural,
                      entry.forms};
    if (unit.sourcePlural) {
      unit.untranslated = std::all_of(unit.forms.begin(), unit.forms.end(),
                                      [](const std::string& form) { return form.empty(); });
    }
    file.units.push_back(std::move(unit));
  }
  refuseDuplicates(path, file.units);
  return file;
}

IncomingFile readXliffFile(const std::string& path) {
  XliffFile xliff = XliffFile::read(path);
  IncomingFile file{xliff.sourceLanguage,
                    xliff.targetLanguage,
                    xliff.version2 ? "trgLang" : "target-language",
                    {}};
  for (const XliffUnit& in : xliff.units) {
    if (in.form > 0) {
      // A later form of the plural message that the unit before began.
      IncomingUnit& forms = file.units.back();
      if (in.form == 1) {
        forms.sourcePlural = in.source;
      }
      forms.forms.push_back(in.target.value_or(std::string()));
      forms.untranslated = forms.untranslated && !in.target;
      forms.fuzzy = forms.fuzzy || in.state.rfind("needs-review", 0) == 0;
      continue;
    }
    IncomingUnit unit;
    unit.key = in.key;
    unit.source = in.source;
    unit.target = in.target.value_or(std::string());
    unit.untranslated = unit.target.empty() || in.state == "new" || in.state == "needs-translation";
    unit.fuzzy = in.state.rfind("needs-review", 0) == 0;
    unit.severity = in.severity;
    unit.count = in.count;
    unit.line = in.line;
    unit.sourceLanguage = in.sourceLanguage;
    unit.targetLanguage = in.targetLanguage;
    if (in.form == 0) {
      unit.sourcePlural = in.source;
      unit.forms.push_back(unit.target);
      unit.untranslated = !in.target;
    }
    file.units.push_back(std::move(unit));
  }
  refuseDuplicates(path, file.units);
  return file;
}

}  // namespace

IncomingFile IncomingFile::read(const std::string& path, TranslationFormat format) {
  return format == TranslationFormat::po ? readPoFile(path) : readXliffFile(path);
}

}  // namespace msgtool
