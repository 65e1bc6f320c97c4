// DocumentScratch: the file system corner in which the document fuzz targets
// put each input, and the network isolation they need.

#ifndef MSG_FUZZ_DOCUMENTSCRATCH_H_
#define MSG_FUZZ_DOCUMENTSCRATCH_H_

#include <sched.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace msgfuzz {

// Cuts the process off the network for good: a document may name an http://
// schema, DTD or include, and Xerces-C would fetch it. A fresh network
// namespace holds nothing but a loopback device that is down. Exits if the
// system allows no such namespace, rather than fuzz with network access.
inline void leaveTheNetwork() {
  if (unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0) {
    return;
  }
  std::fprintf(stderr,
               "cannot enter a network namespace of its own (%s); the document fuzz targets "
               "do not run with network access\n",
               std::strerror(errno));
  std::exit(1);
}

// A private temporary tree laid out so that the references of the seed
// documents resolve from the input's folder `inputDir`:
//   <root>/schema/messages.xsd         for "../../../schema/messages.xsd"
//   <root>/a/schema/messages.xsd       for "../../schema/messages.xsd"
//   <root>/a/b/c/                      the input, the schemas the seeds name
//                                      beside them, and every seed document
//                                      (their includes name each other).
// The tree is removed when the object is destroyed.
class DocumentScratch {
 public:
  DocumentScratch() {
    namespace fs = std::filesystem;
    std::string pattern = (fs::temp_directory_path() / "msg-fuzz-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      std::perror("mkdtemp");
      std::exit(1);
    }
    root = pattern;
    inputDir = root / "a" / "b" / "c";
    fs::create_directories(inputDir);
    fs::create_directories(root / "schema");
    fs::create_directories(root / "a" / "schema");

    const fs::path source(MSG_SOURCE_DIR);
    const fs::path schema = source / "schema" / "messages.xsd";
    fs::copy_file(schema, root / "schema" / "messages.xsd");
    fs::copy_file(schema, root / "a" / "schema" / "messages.xsd");
    fs::copy_file(schema, inputDir / "messages.xsd");
    for (const fs::path& dir :
         {source / "tests" / "data", source / "examples", source / "fuzz" / "seeds"}) {
      for (const fs::directory_entry& entry : fs::recursive_directory_iterator(dir)) {
        const fs::path extension = entry.path().extension();
        if (entry.is_regular_file() && (extension == ".xml" || extension == ".xsd")) {
          fs::copy_file(entry.path(), inputDir / entry.path().filename(),
                        fs::copy_options::overwrite_existing);
        }
      }
    }
    inputPath = (inputDir / "input.xml").string();
  }

  DocumentScratch(const DocumentScratch&) = delete;
  DocumentScratch& operator=(const DocumentScratch&) = delete;

  ~DocumentScratch() {
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
  }

  // Writes `bytes` as the input document and returns its path.
  const std::string& write(const std::uint8_t* bytes, std::size_t size) {
    std::ofstream out(inputPath, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    return inputPath;
  }

 private:
  std::filesystem::path root;
  std::filesystem::path inputDir;
  std::string inputPath;
};

}  // namespace msgfuzz

#endif  // MSG_FUZZ_DOCUMENTSCRATCH_H_
