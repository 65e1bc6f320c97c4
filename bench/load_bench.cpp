// W3 load: the whole catalogue made ready for lookups, per contender.
//
//   msg            loadMessageDocument into a fresh MessageHandlerX, and the
//                  end of that handler
//   xerces_bare    the Xerces-C work that loading cannot avoid, written
//                  directly: parse with XInclude (relaxed), serialise to
//                  memory, parse again with strict schema validation, walk
//                  the Text elements and transcode key, language and text,
//                  and the end of parser and documents; once more with the
//                  first document kept through the second parse, as the
//                  library's round trip keeps it
//   gettext_ready  bindtextdomain and the first dcgettext that maps de_AT
//                  and de
//   icu_ready      ures_open of de_AT (which opens de and root) and the
//                  first lookup that falls back to de
//
// glibc and ICU keep every catalogue they opened for the life of the
// process, so each of their iterations opens the catalogue under a name not
// used before (a new text domain; a new bundle path), through symbolic links
// to the same files. Those two run a fixed number of iterations to bound
// what they keep.

#include <benchmark/benchmark.h>
#include <libintl.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "Peers.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/Message.h"
#include "msg/MessageHandlerX.h"

namespace msg_bench {
namespace {

namespace xc = xercesc;

// A load takes about half a second: a few of them per repetition.
constexpr double kLoadMinTime = 1.5;

std::string documentPath() {
  return catalogueDir() + "/messages.xml";
}

// ---------------------------------------------------------------- Xerces-C

// Counts what the parser reports; the baseline must see a clean document.
class CountingErrorHandler : public xc::ErrorHandler {
 public:
  void warning(const xc::SAXParseException&) override {}
  void error(const xc::SAXParseException&) override { ++errors; }
  void fatalError(const xc::SAXParseException&) override { ++errors; }
  void resetErrors() override {}
  int errors = 0;
};

// The settings the library's loader uses: the fixed ones, then relaxed or
// strict validation.
void applyBaseSettings(xc::XercesDOMParser& parser) {
  parser.setCreateEntityReferenceNodes(false);
  parser.setDoNamespaces(true);
  parser.setCreateCommentNodes(false);
  parser.setIncludeIgnorableWhitespace(false);
  parser.setIgnoreAnnotations(true);
  parser.setExitOnFirstFatalError(true);
  parser.setCreateSchemaInfo(false);
}

void applyValidation(xc::XercesDOMParser& parser, bool strict) {
  parser.setValidationConstraintFatal(strict);
  parser.setValidationScheme(strict ? xc::XercesDOMParser::Val_Always
                                    : xc::XercesDOMParser::Val_Auto);
  parser.setDoSchema(strict);
}

// Element names and attributes, as XMLCh, made once.
struct Names {
  std::u16string collection = u"MessageCollection";
  std::u16string nameSpace = u"MessageNamespace";
  std::u16string message = u"Message";
  std::u16string text = u"Text";
  std::u16string name = u"name";
  std::u16string id = u"id";
  std::u16string severity = u"severity";
  std::u16string lang = u"xml:lang";
  std::u16string ls = u"LS";
};

const XMLCh* x(const std::u16string& s) {
  return reinterpret_cast<const XMLCh*>(s.c_str());
}

bool named(const xc::DOMElement* element, const std::u16string& name) {
  return xc::XMLString::equals(element->getLocalName(), x(name));
}

// Transcodes into a fixed buffer with one transcoder; gives the bytes made.
class Utf8Sink {
 public:
  Utf8Sink() {
    xc::XMLTransService::Codes code = xc::XMLTransService::Ok;
    transcoder.reset(xc::XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
        "UTF-8", code, sizeof buffer, xc::XMLPlatformUtils::fgMemoryManager));
  }

  std::size_t take(const XMLCh* text) {
    if (text == nullptr) {
      return 0;
    }
    XMLSize_t eaten = 0;
    return transcoder->transcodeTo(text, xc::XMLString::stringLen(text), buffer, sizeof buffer,
                                   eaten, xc::XMLTranscoder::UnRep_RepChar);
  }

 private:
  std::unique_ptr<xc::XMLTranscoder> transcoder;
  XMLByte buffer[4096];
};

// When the expanded document of the first parse is released.
enum class FirstDocument : std::uint8_t {
  kReleasedBeforeReparse,  // as soon as it is serialised: the least work
  kKeptThroughReparse,     // after the second parse, as the library's round trip does
};

// One load without the library; gives the number of Text elements read, or
// -1 if a parse reported an error.
long bareXercesLoad(const std::string& path, FirstDocument first) {
  static const Names names;
  CountingErrorHandler errors;
  xc::XercesDOMParser parser(nullptr, xc::XMLPlatformUtils::fgMemoryManager, nullptr);
  applyBaseSettings(parser);
  applyValidation(parser, false);
  parser.setDoXInclude(true);
  parser.setErrorHandler(&errors);
  parser.parse(path.c_str());
  if (errors.errors != 0) {
    return -1;
  }
  xc::DOMDocument* expanded = parser.adoptDocument();

  xc::MemBufFormatTarget target(1023);
  xc::DOMImplementation* implementation =
      xc::DOMImplementationRegistry::getDOMImplementation(x(names.ls));
  xc::DOMLSSerializer* serializer = implementation->createLSSerializer();
  xc::DOMLSOutput* output = implementation->createLSOutput();
  output->setByteStream(&target);
  serializer->write(expanded, output);
  output->release();
  serializer->release();
  if (first == FirstDocument::kReleasedBeforeReparse) {
    expanded->release();
  }

  applyValidation(parser, true);
  xc::MemBufInputSource source(target.getRawBuffer(), target.getLen(), path.c_str(), false);
  parser.parse(source);
  if (first == FirstDocument::kKeptThroughReparse) {
    expanded->release();
  }
  if (errors.errors != 0) {
    return -1;
  }

  Utf8Sink sink;
  std::size_t bytes = 0;
  long texts = 0;
  xc::DOMElement* collection = parser.getDocument()->getDocumentElement();
  for (xc::DOMElement* ns = collection->getFirstElementChild(); ns != nullptr;
       ns = ns->getNextElementSibling()) {
    if (!named(ns, names.nameSpace)) {
      continue;
    }
    bytes += sink.take(ns->getAttribute(x(names.name)));
    for (xc::DOMElement* message = ns->getFirstElementChild(); message != nullptr;
         message = message->getNextElementSibling()) {
      if (!named(message, names.message)) {
        continue;
      }
      bytes += sink.take(message->getAttribute(x(names.id)));
      bytes += sink.take(message->getAttribute(x(names.severity)));
      for (xc::DOMElement* text = message->getFirstElementChild(); text != nullptr;
           text = text->getNextElementSibling()) {
        if (!named(text, names.text)) {
          continue;
        }
        bytes += sink.take(text->getAttribute(x(names.lang)));
        for (xc::DOMNode* child = text->getFirstChild(); child != nullptr;
             child = child->getNextSibling()) {
          bytes += sink.take(child->getNodeValue());
        }
        ++texts;
      }
    }
  }
  benchmark::DoNotOptimize(bytes);
  return texts;
}

void startXerces() {
  // Counted by Xerces-C itself; never stopped, so no iteration pays for it.
  static const bool started = [] {
    xc::XMLPlatformUtils::Initialize();
    return true;
  }();
  (void)started;
}

void bareLoads(benchmark::State& state, FirstDocument first) {
  startXerces();
  const std::string path = documentPath();
  static const long texts = bareXercesLoad(path, FirstDocument::kReleasedBeforeReparse);
  if (texts <= 0) {
    state.SkipWithError("the bare Xerces-C load reports errors in the generated document");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(bareXercesLoad(path, first));
  }
  state.counters["texts"] = static_cast<double>(texts);
}

void W3XercesBare(benchmark::State& state) {
  bareLoads(state, FirstDocument::kReleasedBeforeReparse);
}
BENCHMARK(W3XercesBare)
    ->Name("W3_load/xerces_bare")
    ->MinTime(kLoadMinTime)
    ->Unit(benchmark::kMillisecond);

// The same work with the first document kept until the second parse ends:
// the part of msg's cost that the round trip's document lifetime makes.
void W3XercesBareKept(benchmark::State& state) {
  bareLoads(state, FirstDocument::kKeptThroughReparse);
}
BENCHMARK(W3XercesBareKept)
    ->Name("W3_load/xerces_bare_first_document_kept")
    ->MinTime(kLoadMinTime)
    ->Unit(benchmark::kMillisecond);

// --------------------------------------------------------------------- msg

// Keeps the library's XML system started for the whole run, so that no
// iteration pays for starting or stopping it, as the bare load does not.
void keepXmlSystemStarted() {
  static msg::MessageHandlerX* keeper = new msg::MessageHandlerX();
  benchmark::DoNotOptimize(keeper);
}

// Empty if `handler` gives the expected text of every key, else what
// differs: the loaded table must be the one the lookups are measured on.
std::string checkLoaded(const msg::MessageHandler& handler) {
  const std::vector<Entry>& entries = standardEntries();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    std::unique_ptr<msg::Message> message(
        handler.getMessage(kNamespace, entries[i].identifier.c_str()));
    const std::string expected = preferredText(entries[i], i).render(PlaceholderSyntax::kMsg);
    if (message == nullptr || expected != message->getText()) {
      return "msg: key " + entries[i].identifier + " does not give \"" + expected + "\"";
    }
  }
  return {};
}

void loadMsg(const std::string& path) {
  msg::MessageHandlerX handler;
  handler.setLanguageList(preferredLanguages());
  handler.loadMessageDocument(path.c_str());
}

void W3Msg(benchmark::State& state) {
  keepXmlSystemStarted();
  const std::string path = documentPath();
  static const std::string problem = [&]() -> std::string {
    try {
      msg::MessageHandlerX handler;
      handler.setLanguageList(preferredLanguages());
      handler.loadMessageDocument(path.c_str());
      return checkLoaded(handler);
    } catch (const msg::ErrorInMessageDocument& error) {
      return std::string("msg: ") + error.getText();
    }
  }();
  if (!problem.empty()) {
    state.SkipWithError(problem.c_str());
    return;
  }
  for (auto _ : state) {
    loadMsg(path);  // the handler's end, with its 21,000 entries, counts too
  }
}
BENCHMARK(W3Msg)->Name("W3_load/msg")->MinTime(kLoadMinTime)->Unit(benchmark::kMillisecond);

// ------------------------------------------------- texts with references

// 20,000 messages in two languages whose texts of 250 bytes hold `&amp;0`
// (as every text with a placeholder must), against the same catalogue with
// its texts in CDATA sections, which need no reference. Text that follows
// a reference is appended to its node; the two must load in about the same
// time (the parser's own append made the first one quadratic).
constexpr int kReferenceMessages = 20000;

std::string referenceCatalogue(bool cdata) {
  // Beside the standard catalogue, which has the schema.
  const std::string path =
      catalogueDir() + (cdata ? "/references_cdata.xml" : "/references_amp.xml");
  std::ofstream out(path);
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MessageCollection "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xsi:noNamespaceSchemaLocation=\"messages.xsd\">\n<MessageNamespace name=\"refs\">\n";
  const std::string filler(80, 'x');
  for (int i = 0; i < kReferenceMessages; ++i) {
    out << "<Message id=\"m" << i << "\">";
    for (const char* language : {"en", "de"}) {
      out << "<Text xml:lang=\"" << language << "\">";
      // 3 x (80 + 2) + 4 = 250 bytes of text once the references expand.
      if (cdata) {
        out << "<![CDATA[" << filler << "&0" << filler << "&1" << filler << "&2" << language
            << "..]]>";
      } else {
        out << filler << "&amp;0" << filler << "&amp;1" << filler << "&amp;2" << language << "..";
      }
      out << "</Text>";
    }
    out << "</Message>\n";
  }
  out << "</MessageNamespace>\n</MessageCollection>\n";
  return path;
}

void W3References(benchmark::State& state, bool cdata) {
  keepXmlSystemStarted();
  static const std::string ampPath = referenceCatalogue(false);
  static const std::string cdataPath = referenceCatalogue(true);
  const std::string& path = cdata ? cdataPath : ampPath;
  try {
    msg::MessageHandlerX handler;
    handler.loadMessageDocument(path.c_str());
    std::unique_ptr<msg::Message> last(handler.getMessage("refs", "m19999"));
    if (last == nullptr || std::string(last->getText()).size() != 250) {
      state.SkipWithError("reference catalogue: the last text did not load whole");
      return;
    }
  } catch (const msg::ErrorInMessageDocument& error) {
    state.SkipWithError(error.getText());
    return;
  }
  for (auto _ : state) {
    msg::MessageHandlerX handler;
    handler.loadMessageDocument(path.c_str());
  }
}
BENCHMARK_CAPTURE(W3References, amp_texts, false)
    ->Name("W3_load/references_amp")
    ->MinTime(kLoadMinTime)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(W3References, cdata_texts, true)
    ->Name("W3_load/references_cdata")
    ->MinTime(kLoadMinTime)
    ->Unit(benchmark::kMillisecond);

// ------------------------------------------------------------------- peers

// Iterations of each peer run: enough to time a load of tens of
// microseconds, few enough that the kept catalogues stay small.
constexpr benchmark::IterationCount kPeerLoads = 200;

// A key without an Austrian text, so that the lookup needs de as well.
const char* germanOnlyKey() {
  return standardEntries()[1].identifier.c_str();
}

#ifdef MSG_BENCH_WITH_GETTEXT
void W3GettextReady(benchmark::State& state) {
  static std::size_t used = 0;
  namespace fs = std::filesystem;
  const fs::path locale = fs::path(catalogueDir()) / "locale";
  const fs::path links = fs::path(catalogueDir()) / "load-locale";
  std::vector<std::string> domains;
  for (std::size_t i = 0; i < static_cast<std::size_t>(state.max_iterations); ++i) {
    const std::string domain = "msgbench_load" + std::to_string(used++);
    for (const char* language : {"en", "de", "de_AT"}) {
      const fs::path dir = links / language / "LC_MESSAGES";
      fs::create_directories(dir);
      const fs::path link = dir / (domain + ".mo");
      if (!fs::exists(fs::symlink_status(link))) {
        fs::create_symlink(locale / language / "LC_MESSAGES" / "msgbench.mo", link);
      }
    }
    domains.push_back(domain);
  }
  const std::string dir = links.string();
  const char* key = germanOnlyKey();
  std::size_t next = 0;
  for (auto _ : state) {
    const char* domain = domains[next++].c_str();
    bindtextdomain(domain, dir.c_str());
    benchmark::DoNotOptimize(dcgettext(domain, key, LC_MESSAGES));
  }
}
BENCHMARK(W3GettextReady)
    ->Name("W3_load/gettext_ready")
    ->Iterations(kPeerLoads)
    ->Unit(benchmark::kMillisecond);
#endif

#ifdef MSG_BENCH_WITH_ICU
void W3IcuReady(benchmark::State& state) {
  static std::size_t used = 0;
  namespace fs = std::filesystem;
  const fs::path bundles = fs::path(catalogueDir()) / "icu";
  const fs::path links = fs::path(catalogueDir()) / "load-icu";
  fs::create_directories(links);
  std::vector<std::string> paths;
  for (std::size_t i = 0; i < static_cast<std::size_t>(state.max_iterations); ++i) {
    const fs::path link = links / std::to_string(used++);
    if (!fs::exists(fs::symlink_status(link))) {
      fs::create_directory_symlink(bundles, link);
    }
    paths.push_back(link.string() + "/");
  }
  const char* key = germanOnlyKey();
  std::size_t next = 0;
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    UResourceBundle* bundle = ures_open(paths[next++].c_str(), "de_AT", &status);
    int32_t length = 0;
    benchmark::DoNotOptimize(ures_getStringByKey(bundle, key, &length, &status));
    ures_close(bundle);
  }
}
BENCHMARK(W3IcuReady)
    ->Name("W3_load/icu_ready")
    ->Iterations(kPeerLoads)
    ->Unit(benchmark::kMillisecond);
#endif

}  // namespace
}  // namespace msg_bench
