// The library's own catalogue entries.
//
// Static objects, constructed in this order on the loading thread before any
// client code runs. The first of them creates the process-wide handler
// (MessageHandler::object()), and all of them link themselves into its table.
// None owns its strings, so the table never deletes them, and their
// destructors at unload change nothing. The fault translator is installed
// by the structured exceptions layer, whose objects the library links after
// these, so it too runs on the loading thread before any client code.
//
// Texts are ISO 8859-1, one byte a character: u-umlaut is the byte 0xFC.
// Rows of namespace "Xerces" and "exception" are German texts registered
// under "en" and have no "de" row.

#include "msg/MTE.h"
#include "msg/SeverityLevel.h"

namespace msg {
namespace {

// Fallback for a key that nothing can find; &0 and &1 take the key.
MTE notFoundEn(error, "en", "msg", "notfound", "System error: Message with key &0:&1 not found.",
               nullptr, false, false);
MTE languageUnknownEn(error, "en", "msg", "langunknown",
                      "System error: Language with id &0 is unknown.", nullptr, false, false);
MTE notFoundDe(error, "de", "msg", "notfound",
               "Systemfehler: Eine auszugebende Meldung mit Schl\xFC"
               "ssel &0:&1 wurde nicht gefunden.",
               nullptr, false, false);
MTE languageUnknownDe(error, "de", "msg", "langunknown",
                      "Systemfehler: Die angegebene Sprache mit der Kennung &0 ist nicht bekannt.",
                      nullptr, false, false);

// Words for boolean arguments.
MTE trueEn(info, "en", "msg", "true", "true", nullptr, false, false);
MTE trueDe(info, "de", "msg", "true", "Wahr", nullptr, false, false);
MTE falseEn(info, "en", "msg", "false", "false", nullptr, false, false);
MTE falseDe(info, "de", "msg", "false", "Falsch", nullptr, false, false);
MTE yesEn(info, "en", "msg", "yes", "yes", nullptr, false, false);
MTE yesDe(info, "de", "msg", "yes", "Ja", nullptr, false, false);
MTE noEn(info, "en", "msg", "no", "no", nullptr, false, false);
MTE noDe(info, "de", "msg", "no", "Nein", nullptr, false, false);

// Texts of the XML layer's exceptions.
MTE xercesNotInitialized(info, "en", "Xerces", "NotInitialized",
                         "Das Xerces-Subsystem wurde nicht initialisiert.", nullptr, false, false);
MTE xercesInitializationFailure(warning, "en", "Xerces", "InitializationFailure",
                                "Fehler bei der Initialisierung des Xerces-Subsystems.", nullptr,
                                false, false);
MTE xercesParsingError(info, "en", "Xerces", "ParsingError",
                       "Fehler bei der Analyse einer XML-Datei.", nullptr, false, false);
MTE xercesNullPointer(warning, "en", "Xerces", "NullPointer",
                      "Abbruch der Aktion aufgrund eines ung\xFC"
                      "ltigen Null-Zeigers.",
                      nullptr, false, false);
MTE xercesNavigationError(info, "en", "Xerces", "NavigationError",
                          "Fehler bei der Navigation in einem XML-Dokument.", nullptr, false,
                          false);
MTE xercesConversionError(info, "en", "Xerces", "ConversionError",
                          "Es ist ein Umwandlungsfehler aufgetreten.", nullptr, false, false);
MTE xercesFormatError(info, "en", "Xerces", "FormatError", "Es ist ein Formatfehler aufgetreten.",
                      nullptr, false, false);
MTE xercesGetError(info, "en", "Xerces", "GetError",
                   "Fehler beim Abruf einer Datei aus dem Internet.", nullptr, false, false);
MTE xercesMalformedUrl(info, "en", "Xerces", "MalformedUrl",
                       "Eine URL ist syntaktisch falsch angegeben worden.", nullptr, false, false);
MTE exceptionDefault(info, "en", "exception", "default",
                     "Meldung: Das Subsystem [&0] hat die Fehlersituation [&1] gemeldet. "
                     "Text: [&2], Parameter sind 1: [&3], 2: [&4], 3: [&5], usw.",
                     nullptr, false, false);

}  // namespace
}  // namespace msg
