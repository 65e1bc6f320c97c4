#include "MessageDocumentEditor.h"

#include <algorithm>
#include <filesystem>

#include "FileReplacement.h"
#include "OutsideFiles.h"
#include "SourceStamp.h"
#include "ToolError.h"
#include "message_documents/MessageDocumentReader.h"
#include "platform/InputLimits.h"

namespace msgtool {

namespace {

namespace fs = std::filesystem;

constexpr char kXmlnsMsgtool[] = "xmlns:msgtool";

// The text of a new document, before anything is added to it.
std::string newDocumentText(const std::string& schemaLocation) {
  const XercesXML::MarkupEncoding utf8 = XercesXML::MarkupEncoding::of(std::string());
  return std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MessageCollection ") +
         kXmlnsMsgtool + "=\"" + kMsgtoolNamespace +
         "\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xsi:noNamespaceSchemaLocation=\"" +
         utf8.escapeAttribute(schemaLocation, '"') + "\">\n</MessageCollection>\n";
}

// True if `file` lies in `folder` or below it.
bool liesIn(const fs::path& file, const fs::path& folder) {
  std::error_code error;
  const fs::path relative = fs::weakly_canonical(file, error).lexically_relative(folder);
  return !error && !relative.empty() && *relative.begin() != "..";
}

// Checks `written`, the new text of `file`: that the loader loads it, for
// a document, else that it is well formed. Raises ToolError naming `file`.
void checkResult(const std::string& file, const std::string& written, bool loads) {
  if (loads) {
    try {
      msg::parseMessageDocument(written.c_str());
    } catch (const msg::DocumentRefused& refused) {
      throw ToolError(file, 0,
                      "the edited document would not load, so it was left as it was: " +
                          refused.problems.front().message);
    }
  } else {
    try {
      readOutsideFile(written, msg::limits::kMaxMessageDocumentBytes, false);
    } catch (const ToolError& refused) {
      throw ToolError(file, 0,
                      std::string("the edited part would not be well formed, so it was left as "
                                  "it was: ") +
                          refused.what());
    }
  }
}

}  // namespace

MessageDocumentEditor::MessageDocumentEditor(std::string path, const std::string& schemaLocation)
    : path(std::move(path)) {
  // A document that cannot be written is refused before the import does any
  // work on it or reports a unit as imported.
  requireReplaceable(this->path);
  std::error_code error;
  if (!fs::exists(this->path, error)) {
    created = true;
    files.push_back(std::make_unique<DocumentFile>(this->path, newDocumentText(schemaLocation)));
    collection = 0;
    return;
  }
  files.push_back(std::make_unique<DocumentFile>(this->path));
  if (!files[0]->isPart()) {
    readLoadedTexts();
  }
  openParts();
  std::vector<int> within;
  index(0, within);
}

MessageDocumentEditor::~MessageDocumentEditor() = default;

std::string MessageDocumentEditor::keyOf(const std::string& nameSpace,
                                         const std::string& identifier) {
  return nameSpace + '\n' + identifier;
}

std::string MessageDocumentEditor::textKey(const std::string& language, const std::string& plural,
                                           const std::string& ordinal) {
  if (!plural.empty()) {
    return language + "\nplural=" + plural;
  }
  return ordinal.empty() ? language : language + "\nordinal=" + ordinal;
}

std::string MessageDocumentEditor::textKey(const std::string& language, const Variant& variant) {
  return textKey(language, variant.attribute == "plural" ? variant.value : std::string(),
                 variant.attribute == "ordinal" ? variant.value : std::string());
}

// The texts as the loader reads them, parts included: the document must
// load before anything is imported into it.
void MessageDocumentEditor::readLoadedTexts() {
  try {
    XercesXML::DOMNode expanded = msg::parseMessageDocument(path.c_str());
    msg::forEachDocumentText(
        msg::findMessageCollection(expanded), [this](const msg::DocumentText& text) {
          const std::string key = keyOf(text.effectiveNamespace(), text.effectiveIdentifier());
          loadedKeys.insert(key);
          loadedCounts[key] = text.count;
          loadedTexts[key + '\n' + textKey(text.effectiveLanguage(), text.plural, text.ordinal)] =
              ExistingText{text.readText(), text.textElement.getAttributeByName(
                                                kTranslatedFromAttribute, kMsgtoolNamespace)};
        });
  } catch (const msg::DocumentRefused& refused) {
    const msg::DocumentProblem& first = refused.problems.front();
    throw ToolError(
        first.file.empty() ? path : first.file, first.line,
        first.message + " (the document must load before texts can be imported into it)");
  }
}

// The parts the file includes, and theirs, each once. Only parts in the
// folder of the file given or below it are opened, as the loader allows.
void MessageDocumentEditor::openParts() {
  std::error_code error;
  const fs::path folder = fs::weakly_canonical(fs::absolute(path).parent_path(), error);
  std::map<fs::path, int> seen{{fs::weakly_canonical(path, error), 0}};
  for (std::size_t file = 0; file < files.size(); ++file) {
    std::vector<PartAt> parts;
    for (const DocumentFile::Inclusion& part : files[file]->includedFiles()) {
      const fs::path canonical = fs::weakly_canonical(part.path, error);
      if (error || !liesIn(canonical, folder) || !fs::is_regular_file(canonical, error)) {
        continue;
      }
      auto known = seen.emplace(canonical, static_cast<int>(files.size()));
      if (known.second) {
        files.push_back(std::make_unique<DocumentFile>(part.path));
      }
      parts.push_back(PartAt{part.element, known.first->second});
    }
    partsOf.push_back(std::move(parts));
  }
}

// The texts of one file, walked as the loader walks them, with each part
// walked where the file includes it: what comes later in the expanded
// document replaces what came before, as it does in the loader. `within`
// holds the files whose walk is under way; a part that includes one of them
// is not walked again. A part whose root is neither a MessageCollection nor
// a MessageNamespace is not indexed: its keys are out of reach.
void MessageDocumentEditor::index(int file, std::vector<int>& within) {
  if (std::find(within.begin(), within.end(), file) != within.end()) {
    return;
  }
  const XercesXML::DOMNode& document = files[file]->document();
  XercesXML::DOMNode from = document;
  if (document.getFirstElementChild().getNodeName() != "MessageNamespace") {
    from = msg::findMessageCollection(document);
    if (!from.isValid()) {
      if (file == 0) {
        throw ToolError(path, 0, "holds no MessageCollection");
      }
      return;
    }
    if (file == 0) {
      collection = files[0]->idOf(from);
    }
  }
  within.push_back(file);
  const DocumentFile& in = *files[file];
  const std::vector<PartAt>& parts = partsOf[file];
  std::size_t nextPart = 0;
  // The parts included before `element` of this file, walked first.
  auto partsBefore = [&](int element) {
    for (; nextPart < parts.size() && parts[nextPart].element < element; ++nextPart) {
      index(parts[nextPart].file, within);
    }
  };
  int currentNamespace = -1;
  msg::DocumentVisitor visitor;
  visitor.onNamespace = [&](const msg::DocumentText& at) {
    currentNamespace = in.idOf(at.namespaceElement);
    partsBefore(currentNamespace);
    namespaces[at.effectiveNamespace()] = NamespacePlace{file, currentNamespace, -1};
    if (file == 0 && collection >= 0) {
      lastNamespace = currentNamespace;
    }
  };
  visitor.onMessage = [&](const msg::DocumentText& at) {
    const int element = in.idOf(at.messageElement);
    partsBefore(element);
    MessagePlace& place = messages[keyOf(at.effectiveNamespace(), at.effectiveIdentifier())];
    place.file = file;
    place.element = element;
    place.lastText = -1;
    // A part walked since may have put its namespace of the same name in
    // place of this one.
    NamespacePlace& space = namespaces[at.effectiveNamespace()];
    if (space.file == file && space.element == currentNamespace) {
      space.lastMessage = element;
    }
  };
  visitor.onText = [&](const msg::DocumentText& at) {
    const int element = in.idOf(at.textElement);
    partsBefore(element);
    MessagePlace& place = messages[keyOf(at.effectiveNamespace(), at.effectiveIdentifier())];
    place.lastText = element;
    place.texts[textKey(at.effectiveLanguage(), at.plural, at.ordinal)] =
        TextPlace{file, element,
                  ExistingText{at.readText(), at.textElement.getAttributeByName(
                                                  kTranslatedFromAttribute, kMsgtoolNamespace)}};
  };
  msg::walkMessageDocument(from, visitor);
  partsBefore(files[file]->markup().elementCount());
  within.pop_back();
}

std::optional<MessageDocumentEditor::ExistingText> MessageDocumentEditor::find(
    const std::string& nameSpace, const std::string& identifier, const std::string& language,
    const Variant& variant) const {
  auto place = messages.find(keyOf(nameSpace, identifier));
  if (place != messages.end()) {
    auto text = place->second.texts.find(textKey(language, variant));
    if (text == place->second.texts.end()) {
      return std::nullopt;
    }
    return text->second.current;
  }
  auto loaded = loadedTexts.find(keyOf(nameSpace, identifier) + '\n' + textKey(language, variant));
  return loaded == loadedTexts.end() ? std::nullopt : std::optional<ExistingText>(loaded->second);
}

std::string MessageDocumentEditor::countOf(const std::string& nameSpace,
                                           const std::string& identifier) const {
  const auto found = loadedCounts.find(keyOf(nameSpace, identifier));
  return found == loadedCounts.end() ? std::string() : found->second;
}

bool MessageDocumentEditor::hasMessage(const std::string& nameSpace,
                                       const std::string& identifier) const {
  return messages.count(keyOf(nameSpace, identifier)) != 0 ||
         loadedKeys.count(keyOf(nameSpace, identifier)) != 0;
}

bool MessageDocumentEditor::isOutOfReach(const std::string& nameSpace,
                                         const std::string& identifier) const {
  return messages.count(keyOf(nameSpace, identifier)) == 0 &&
         loadedKeys.count(keyOf(nameSpace, identifier)) != 0;
}

void MessageDocumentEditor::setText(const std::string& nameSpace, const std::string& identifier,
                                    const std::string& severityWord, const std::string& language,
                                    const std::string& text, const std::string& stampValue,
                                    const Variant& variant, const std::string& count) {
  MessagePlace& place = messages[keyOf(nameSpace, identifier)];
  if (place.element < 0) {
    auto space = namespaces.find(nameSpace);
    if (space == namespaces.end()) {
      if (collection < 0) {
        messages.erase(keyOf(nameSpace, identifier));
        throw ToolError(path, 0,
                        "is a part that holds one MessageNamespace; the namespace \"" + nameSpace +
                            "\" cannot be added to it (import into the document that includes "
                            "it)");
      }
      XercesXML::MarkupEditor& main = files[0]->markup();
      lastNamespace = main.addElement(collection, lastNamespace, "MessageNamespace");
      main.setAttribute(lastNamespace, "name", nameSpace);
      space = namespaces.emplace(nameSpace, NamespacePlace{0, lastNamespace, -1}).first;
    }
    XercesXML::MarkupEditor& markup = files[space->second.file]->markup();
    place.file = space->second.file;
    place.element = markup.addElement(space->second.element, space->second.lastMessage, "Message");
    markup.setAttribute(place.element, "id", identifier);
    if (!severityWord.empty()) {
      markup.setAttribute(place.element, "severity", severityWord);
    }
    if (!count.empty()) {
      markup.setAttribute(place.element, "count", count);
    }
    space->second.lastMessage = place.element;
  }
  TextPlace& written = place.texts[textKey(language, variant)];
  if (written.element < 0) {
    written.file = place.file;
    written.element = files[place.file]->markup().addElement(place.element, place.lastText, "Text");
    place.lastText = written.element;
    stamp(written.file, written.element, stampValue);
    files[place.file]->markup().setAttribute(written.element, "xml:lang", language);
    if (!variant.attribute.empty()) {
      files[place.file]->markup().setAttribute(written.element, variant.attribute, variant.value);
    }
  }
  files[written.file]->markup().setContent(written.element, text);
  stamp(written.file, written.element, stampValue);
  written.current = ExistingText{text, stampValue};
}

void MessageDocumentEditor::stamp(int file, int element, const std::string& value) {
  XercesXML::MarkupEditor& markup = files[file]->markup();
  const std::optional<std::string> bound = markup.writtenAttribute(0, kXmlnsMsgtool);
  if (!bound) {
    markup.setAttribute(0, kXmlnsMsgtool, kMsgtoolNamespace);
  } else if (*bound != kMsgtoolNamespace) {
    throw ToolError(files[file]->path(), 0,
                    std::string("binds the prefix \"") + kMsgtoolPrefix + "\" to \"" + *bound +
                        "\"; msgtool needs it for " + kMsgtoolNamespace);
  }
  markup.setAttribute(element, std::string(kMsgtoolPrefix) + ':' + kTranslatedFromAttribute, value);
}

// The files are written one after the other, the parts first, so that the
// document is checked with the parts it will load. Atomicity across files is
// not possible; what comes closest is to put back what was written before a
// failure.
void MessageDocumentEditor::save() const {
  struct Write {
    const DocumentFile* file;
    std::string bytes;
  };
  std::vector<Write> writes;
  for (std::size_t at = 1; at <= files.size(); ++at) {
    const DocumentFile& file = *files[at % files.size()];  // files[0] last
    if (file.markup().changed()) {
      std::string bytes = file.editedBytes();
      if (created || bytes != file.originalBytes()) {
        writes.push_back(Write{&file, std::move(bytes)});
      }
    }
  }
  for (const Write& write : writes) {
    requireReplaceable(write.file->path());
  }
  const bool whole = !files[0]->isPart();
  std::size_t written = 0;
  try {
    for (const Write& write : writes) {
      const bool loads = whole && write.file == files[0].get();
      replaceFileAtomically(write.file->path(), write.bytes, [&](const std::string& temporary) {
        checkResult(write.file->path(), temporary, loads);
      });
      ++written;
    }
    if (whole && written > 0 && writes.back().file != files[0].get()) {
      checkResult(path, path, true);  // only parts changed: the document must still load
    }
  } catch (const ToolError& failure) {
    std::string restored;
    for (std::size_t at = written; at-- > 0;) {
      try {
        replaceFileAtomically(writes[at].file->path(), writes[at].file->originalBytes(),
                              [](const std::string&) {});
        restored += (restored.empty() ? "" : ", ") + writes[at].file->path();
      } catch (const ToolError& again) {
        throw ToolError(failure.getFile(), failure.getLine(),
                        std::string(failure.what()) + "; and " + writes[at].file->path() +
                            ", written before, could not be put back: " + again.what());
      }
    }
    if (restored.empty()) {
      throw;
    }
    throw ToolError(
        failure.getFile(), failure.getLine(),
        std::string(failure.what()) + "; " + restored + ", written before, was put back as it was");
  }
}

}  // namespace msgtool
