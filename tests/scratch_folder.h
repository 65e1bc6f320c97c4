// ScratchFolder: a folder of the running test's own, for the files a test
// writes, removed with everything in it when the test ends. Its name holds
// the process id and the test's suite and name, so tests that ctest runs in
// parallel never share one.

#ifndef MSG_TESTS_SCRATCH_FOLDER_H_
#define MSG_TESTS_SCRATCH_FOLDER_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace test_support {

// The whole content of the file at `path`; empty if it cannot be read.
inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

// Makes `bytes` the whole content of the file at `path`.
inline void writeFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// Copies the message schema into `folder`, so that the documents there that
// name "messages.xsd" validate.
inline void copySchemaInto(const std::filesystem::path& folder) {
  std::filesystem::copy_file(std::filesystem::path(MSG_SOURCE_DIR) / "schema" / "messages.xsd",
                             folder / "messages.xsd",
                             std::filesystem::copy_options::overwrite_existing);
}

class ScratchFolder {
 public:
  // Creates the folder of the test that is running now.
  // REQUIRES: a test is running (make it a member of the fixture).
  ScratchFolder() {
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    folder = std::filesystem::temp_directory_path() /
             (std::string("msg_") + test->test_suite_name() + "_" + test->name() + "_" +
              std::to_string(::getpid()));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
  }
  // Removes the folder, also after a test took its own permissions away.
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
    std::filesystem::remove_all(folder, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return folder; }
  std::filesystem::path operator/(const std::string& name) const { return folder / name; }

  // Writes `bytes` to the file `name` in the folder; returns its path.
  std::string write(const std::string& name, const std::string& bytes) const {
    writeFile(folder / name, bytes);
    return (folder / name).string();
  }

 private:
  std::filesystem::path folder;
};

}  // namespace test_support

#endif  // MSG_TESTS_SCRATCH_FOLDER_H_
