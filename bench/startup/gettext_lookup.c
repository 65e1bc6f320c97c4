/* gettext's start: bind the benchmark domain to its .mo files and translate
 * one key. The preference comes from LANGUAGE (de_AT:de:en), which the
 * harness sets; glibc honours it under any locale but plain "C".
 *
 * Usage: gettext_lookup LOCALE_DIR KEY
 * Exits with 0 only if the key was translated. */

#include <libintl.h>
#include <locale.h>
#include <string.h>

int main(int argc, char** argv) {
  if (argc != 3 || setlocale(LC_ALL, "C.UTF-8") == NULL) {
    return 2;
  }
  bindtextdomain("msgbench", argv[1]);
  bind_textdomain_codeset("msgbench", "UTF-8");
  const char* text = dcgettext("msgbench", argv[2], LC_MESSAGES);
  return strcmp(text, argv[2]) != 0 ? 0 : 1;
}
