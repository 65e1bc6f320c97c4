// unicodeTextLayout(): the Unicode model from the objects a program was
// built from, or from the module beside libmsg-core.so.

#include <dlfcn.h>

#include <cstdio>
#include <string>

#include "message_core/TextLayout.h"

// Defined in unicode_layout/ (as default visibility there). A program
// built from the library's objects links that definition; in libmsg-core.so
// nothing defines it, the weak reference stays null, and the module is
// loaded instead. Hidden, so that the core neither exports it nor binds it
// to some other object at run time.
extern "C" const msg::TextLayout* MSG_UNICODE_LAYOUT_ENTRY()
    __attribute__((weak, visibility("hidden")));

namespace msg {

namespace {

// Any address inside this library: dladdr() names the file it came from.
const char kInsideThisLibrary = 0;

// `why` names the module's path (dlerror() does).
void reportMissingModule(const std::string& why) {
  std::fprintf(stderr,
               "msg: cannot load the Unicode line layout (%s); texts beyond ASCII are laid out "
               "by bytes\n",
               why.c_str());
}

// What the dynamic loader says went wrong with `path`.
std::string loaderError(const std::string& path) {
  const char* error = dlerror();
  return error != nullptr ? std::string(error) : path + ": unknown error";
}

const TextLayout* loadModule() {
  Dl_info self;
  std::string path = MSG_UNICODE_LAYOUT_MODULE;
  if (dladdr(&kInsideThisLibrary, &self) != 0 && self.dli_fname != nullptr) {
    const std::string library = self.dli_fname;
    const std::size_t slash = library.rfind('/');
    path = (slash == std::string::npos ? std::string(".") : library.substr(0, slash)) + "/" + path;
  }
  // Never closed: its layout, thread-local workspaces and ICU stay until the
  // process ends.
  void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    reportMissingModule(loaderError(path));
    return nullptr;
  }
  void* entry = dlsym(module, MSG_UNICODE_LAYOUT_ENTRY_NAME);
  if (entry == nullptr) {
    reportMissingModule(loaderError(path));
    return nullptr;
  }
  using Entry = const TextLayout* (*)();
  const TextLayout* layout = reinterpret_cast<Entry>(entry)();
  if (layout == nullptr) {
    reportMissingModule(path + ": no layout in it");
  }
  return layout;
}

}  // namespace

const TextLayout* unicodeTextLayout() {
  if (MSG_UNICODE_LAYOUT_ENTRY != nullptr) {
    return MSG_UNICODE_LAYOUT_ENTRY();
  }
  static const TextLayout* const loaded = loadModule();
  return loaded;
}

}  // namespace msg
