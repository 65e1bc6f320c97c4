// TextLayout: how the formatting channel reaches its Unicode model, which
// lives apart from the core library because it needs ICU. A program that
// never lays out a text beyond ASCII never loads ICU.
//
// The implementation is in unicode_layout/. A program built from the
// library's objects (msgtool, the tests, the benchmarks) holds it and uses it
// directly. A program linked to libmsg-core.so gets it from the module
// msg/msg-unicode.so beside the library (its installed place, and the same
// place in the build tree), loaded on first use. The module links ICU like
// any library does, so the packaging sees the dependency.
//
// Private to the library: not installed, nothing here is exported.

#ifndef MSG_MESSAGE_CORE_TEXTLAYOUT_H_
#define MSG_MESSAGE_CORE_TEXTLAYOUT_H_

namespace msg {

// Receives the lines of one layout, as FormattingMessageChannel::
// onMessageLine() does.
class LineSink {
 public:
  virtual void onLine(bool firstLine, bool lastLine, const char* line) = 0;

 protected:
  ~LineSink() = default;
};

// The values a header format shows for one message: `&n`, `&i` and `&t`.
// A null value shows nothing.
struct LayoutFields {
  const char* nameSpace;
  const char* identifier;
  const char* text;
};

// Lays out a message by the Unicode model. The one instance lives as long as
// the process; it is safe to use from several threads at once.
class TextLayout {
 public:
  // Expands `format` for `fields` and hands each line to `sink`, at least
  // once. The first line starts in `firstColumn`, every further one in
  // `leftMargin`, and no line goes beyond `rightMargin` (0 <= leftMargin,
  // firstColumn <= rightMargin). Returns false, having handed on nothing,
  // if the output is not valid UTF-8, if `onlyBeyondAscii` and the output is
  // pure ASCII, or if ICU cannot give its break iterator (no data); the
  // caller then lays the message out by bytes. Whatever `sink` throws
  // passes through.
  virtual bool layOut(const char* format, const LayoutFields& fields, int firstColumn,
                      int leftMargin, int rightMargin, bool onlyBeyondAscii,
                      LineSink& sink) const = 0;

 protected:
  ~TextLayout() = default;
};

// The Unicode model, or null if this program cannot have it: the module is
// missing or broken. The first call of a program without the objects loads
// the module (once, however many threads ask); if that fails it writes one
// line to stderr that says so, and every call returns null, so that the
// formatting channel keeps to the byte model.
const TextLayout* unicodeTextLayout();

}  // namespace msg

// The module's one entry point, and the same function in a program built
// from the objects: the process's one TextLayout. The version in the name
// changes whenever TextLayout does, so that a stale module is refused.
#define MSG_UNICODE_LAYOUT_ENTRY msg_unicode_layout_v1
#define MSG_UNICODE_LAYOUT_ENTRY_NAME "msg_unicode_layout_v1"

// Where the module lies, relative to the folder of libmsg-core.so.
#define MSG_UNICODE_LAYOUT_MODULE "msg/msg-unicode.so"

#endif  // MSG_MESSAGE_CORE_TEXTLAYOUT_H_
