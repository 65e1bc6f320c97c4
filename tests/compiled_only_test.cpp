// A program that only loads compiled catalogues. This executable links the
// layers below XML alone (platform, message core, compiled catalogues): it
// loads a catalogue into a plain handler, finds its texts, and never has
// Xerces-C, curl or a TLS library in its address space. Refusals of damaged
// files are the same code as in compiled_catalogue_test. The writer's own
// checks live here too.

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "compiled_catalogues/CompiledCatalogueWriter.h"
#include "msg/Message.h"
#include "msg/MessageHandler.h"
#include "tests/catalogue_support.h"
#include "tests/scratch_folder.h"

namespace {

using test_support::recordOf;

// The same texts give the same bytes in any order of addition; the file
// loads into a plain handler, and neither Xerces-C nor the network and TLS
// libraries it brings along are ever mapped.
TEST(CompiledOnlyTest, WritesTheSameBytesInAnyOrderAndLoadsWithoutXercesC) {
  test_support::ScratchFolder scratch;
  msg::CompiledCatalogueWriter writer;
  msg::CompiledCatalogueWriter backward;
  writer.add(msg::warning, "en", "app", "start", "Starting &0.");
  writer.add(msg::warning, "de", "app", "start", "&0 startet.");
  writer.add(msg::error, "en", "app", "stop", "Stopped.");
  backward.add(msg::error, "en", "app", "stop", "Stopped.");
  backward.add(msg::info, "de", "app", "start", "replaced");
  backward.add(msg::warning, "de", "app", "start", "&0 startet.");
  backward.add(msg::warning, "en", "app", "start", "Starting &0.");
  EXPECT_EQ(writer.bytes(), backward.bytes());
  EXPECT_THROW(writer.add(msg::info, "", "a", "x", "no language"), std::invalid_argument);
  EXPECT_THROW(writer.add(msg::info, "en", "a", std::string("x\0y", 3), "t"),
               std::invalid_argument);
  const std::string path = (scratch / "app.msgc").string();
  writer.writeFile(path);

  msg::MessageHandler handler;
  handler.setLanguageList(msg::LanguageList(msg::Language("de"), msg::Language("en")));
  handler.loadCompiledCatalogue(path.c_str());
  EXPECT_EQ(test_support::entryCount(handler), 0u);  // read in place: nothing registered
  EXPECT_EQ(recordOf(handler, "app", "start"), "&0 startet.|1|de");
  EXPECT_EQ(recordOf(handler, "app", "stop"), "Stopped.|2|en");

  const std::string maps = test_support::readFile("/proc/self/maps");
  ASSERT_NE(maps.find("libstdc++"), std::string::npos) << "cannot read the process's mappings";
  EXPECT_NE(maps.find("app.msgc"), std::string::npos) << "the catalogue is not mapped";
  for (const char* library : {"libxerces-c", "libcurl", "libgnutls", "libssl", "libnettle"}) {
    EXPECT_EQ(maps.find(library), std::string::npos) << library << " is mapped:\n" << maps;
  }
}

}  // namespace
