// gettext as a C++ developer would use it: the same start as
// gettext_lookup.c (bind the benchmark domain to its .mo files, translate
// one key), built as a C++ program, so that it pays for libstdc++ as every
// msg program does (its text is a std::string, as in most C++ programs).
// Its skeleton is that of lookup.cpp.
//
// Usage: PROGRAM LOCALE_DIR KEY
// Exits with 0 only if the key was translated.

#include <libintl.h>

#include <clocale>
#include <string>

int main(int argc, char** argv) {
  if (argc != 3 || std::setlocale(LC_ALL, "C.UTF-8") == nullptr) {
    return 2;
  }
  bindtextdomain("msgbench", argv[1]);
  bind_textdomain_codeset("msgbench", "UTF-8");
  const std::string key = argv[2];
  const std::string text = dcgettext("msgbench", key.c_str(), LC_MESSAGES);
  return text != key ? 0 : 1;
}
