// ImportScratch: the whole of `msgtool import` for the import fuzz targets.
// Each input is written as a translator's file and imported, through the
// tool's own command line, into a small message document that includes a
// part; the documents are put back as they were after every input that
// changed them.
//
// What must hold after every import, whatever the file:
//   - the tool exits 0 (imported), 1 (some units refused) or 2 (nothing
//     imported), and throws nothing;
//   - after exit 2 both documents are byte for byte as they were;
//   - the document still loads with the library's own loader, part and all.
// Anything else aborts, so libFuzzer keeps the input.

#ifndef MSG_FUZZ_IMPORTSCRATCH_H_
#define MSG_FUZZ_IMPORTSCRATCH_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "Tool.h"
#include "fuzz/DocumentScratch.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/MessageHandlerX.h"
#include "xml_access/XMLSystem.h"

namespace msgfuzz {

// The keys, languages and placeholders of these two documents are the ones
// the seeds of fuzz/seeds/<target>/ name, so that mutations start from
// files that import.
inline constexpr char kImportDocument[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!-- the catalogue an import may change -->\n"
    "<MessageCollection xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
    "                   xmlns:xi=\"http://www.w3.org/2001/XInclude\"\n"
    "                   xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n"
    "  <MessageNamespace name=\"app\">\n"
    "    <Message id=\"start\" severity=\"info\">\n"
    "      <Text xml:lang=\"en\">Starting &amp;0, version &amp;1.</Text>\n"
    "      <Text xml:lang=\"de\">&amp;0 wird gestartet, Version &amp;1.</Text>\n"
    "    </Message>\n"
    "    <Message id=\"quote\" severity=\"warning\">\n"
    "      <Text xml:lang=\"en\">Say \"hello\" to C:\\temp\\&amp;0&#9;and &amp;&amp;1.</Text>\n"
    "    </Message>\n"
    "    <Message id=\"lines\" severity=\"error\">\n"
    "      <Text xml:lang=\"en\">First line\n"
    "second line, &amp;0\n"
    "</Text>\n"
    "    </Message>\n"
    "  </MessageNamespace>\n"
    "  <MessageNamespace name=\"other\">\n"
    "    <Message id=\"start\" severity=\"info\">\n"
    "      <Text xml:lang=\"en\">Starting &amp;0.</Text>\n"
    "    </Message>\n"
    "  </MessageNamespace>\n"
    "  <xi:include href=\"part.xml\"/>\n"
    "</MessageCollection>\n";

inline constexpr char kImportPart[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<MessageNamespace name=\"included\"\n"
    "                  xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
    "                  xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n"
    "  <Message id=\"part\" severity=\"warning\">\n"
    "    <Text xml:lang=\"en\">from the part, &amp;0</Text>\n"
    "    <Text xml:lang=\"de\">aus dem Teil, &amp;0</Text>\n"
    "  </Message>\n"
    "</MessageNamespace>\n";

class ImportScratch {
 public:
  // `format` is the tool's --format word; `extension` names the input file.
  ImportScratch(std::string format, const std::string& extension) : format(std::move(format)) {
    namespace fs = std::filesystem;
    // Every import that writes syncs the document to disk; in memory (tmpfs)
    // that costs nothing, on a disk it holds the target to a few inputs a
    // second.
    std::error_code noMemoryFolder;
    const fs::path base = fs::is_directory("/dev/shm", noMemoryFolder) ? fs::path("/dev/shm")
                                                                       : fs::temp_directory_path();
    std::string pattern = (base / "msg-import-fuzz-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      std::perror("mkdtemp");
      std::exit(1);
    }
    root = pattern;
    fs::copy_file(fs::path(MSG_SOURCE_DIR) / "schema" / "messages.xsd", root / "messages.xsd");
    input = (root / ("in" + extension)).string();
    document = (root / "messages.xml").string();
    part = (root / "part.xml").string();
    writeFile(document, kImportDocument);
    writeFile(part, kImportPart);
    // The check after each import is skipped while both files are as
    // written here, so these must load.
    requireLoads();
  }

  ImportScratch(const ImportScratch&) = delete;
  ImportScratch& operator=(const ImportScratch&) = delete;

  ~ImportScratch() {
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
  }

  // Imports `bytes` and checks the outcome (see above). The input's length
  // picks the options, so that every input is a whole file: bit 0
  // --add-new-keys, bit 1 --accept-fuzzy, bit 2 --target de, and one length
  // in four of the rest imports into the part instead of the document.
  void importOne(const std::uint8_t* bytes, std::size_t size) {
    writeFile(input, std::string(reinterpret_cast<const char*>(bytes), size));

    std::vector<const char*> arguments = {"msgtool",      "import",      "--format",
                                          format.c_str(), input.c_str(), "--into"};
    arguments.push_back((size / 8) % 4 == 3 ? part.c_str() : document.c_str());
    if ((size & 1u) != 0) {
      arguments.push_back("--add-new-keys");
    }
    if ((size & 2u) != 0) {
      arguments.push_back("--accept-fuzzy");
    }
    if ((size & 4u) != 0) {
      arguments.insert(arguments.end(), {"--target", "de"});
    }

    const int code = runQuietly(arguments);
    if (code != 0 && code != 1 && code != 2) {
      fail("the tool exited with " + std::to_string(code));
    }
    const bool documentChanged = readFile(document) != kImportDocument;
    const bool partChanged = readFile(part) != kImportPart;
    if (code == 2 && (documentChanged || partChanged)) {
      fail("an import that imported nothing changed a document");
    }
    // Whether a document loads depends on its bytes alone, and these bytes
    // loaded at the start: only a changed document needs the check. Most
    // inputs are turned away without a write, and for them the check was
    // the dearest step.
    if (documentChanged || partChanged) {
      requireLoads();
    }
    // Back as they were for the next input.
    if (documentChanged) {
      writeFile(document, kImportDocument);
    }
    if (partChanged) {
      writeFile(part, kImportPart);
    }
  }

 private:
  [[noreturn]] static void fail(const std::string& what) {
    std::fprintf(stderr, "import check failed: %s\n", what.c_str());
    std::abort();
  }

  static void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    if (!out.flush()) {
      fail("cannot write " + path);
    }
  }

  static std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
  }

  // Runs the tool with its report and errors discarded: thousands of inputs
  // a second would otherwise bury libFuzzer's own output.
  static int runQuietly(const std::vector<const char*>& arguments) {
    std::ostringstream discarded;
    std::streambuf* const out = std::cout.rdbuf(discarded.rdbuf());
    std::streambuf* const err = std::cerr.rdbuf(discarded.rdbuf());
    int code = -1;
    try {
      code = msgtool::runTool(static_cast<int>(arguments.size()), arguments.data());
    } catch (...) {
      std::cout.rdbuf(out);
      std::cerr.rdbuf(err);
      fail("the tool let an exception out");
    }
    std::cout.rdbuf(out);
    std::cerr.rdbuf(err);
    return code;
  }

  // A document handler with the plain process-wide handler behind it, so
  // that the loader's reports find their texts.
  class LoadProbe : public msg::MessageHandlerX {
   public:
    LoadProbe() {
      setParent(msg::MessageHandler::object());
      setMessageChannel(nullptr, false);
    }
    // The parent is borrowed: it must not be deleted with this handler.
    ~LoadProbe() override { setParent(nullptr); }
  };

  // The import must never leave a document that the library would refuse.
  void requireLoads() const {
    LoadProbe handler;
    try {
      handler.loadMessageDocument(document.c_str());
    } catch (const msg::ErrorInMessageDocument& error) {
      fail(std::string("the document no longer loads: ") + error.getText());
    }
  }

  std::string format;
  std::filesystem::path root;
  std::string input;
  std::string document;
  std::string part;
};

// What each import target does once, before its first input: off the
// network (an XLIFF may name http:// schemas), and the XML system kept up
// between inputs as the tool wants it, so each import only joins it.
inline void startImportTarget() {
  leaveTheNetwork();
  XercesXML::initializeSystem(XercesXML::UTF8);
}

// Imports one input with `msgtool import --format <format>`, in a scratch
// folder made at the first call and kept for the life of the process.
inline void importInput(const char* format, const char* extension, const std::uint8_t* bytes,
                        std::size_t size) {
  static ImportScratch scratch(format, extension);
  scratch.importOne(bytes, size);
}

}  // namespace msgfuzz

#endif  // MSG_FUZZ_IMPORTSCRATCH_H_
