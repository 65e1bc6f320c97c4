#!/usr/bin/env python3
"""Plants deliberate faults in the library, one at a time, and tells which
test catches each. A check of the test suite: a fault that no test catches
shows a gap.

  tools/plant-faults.py <asan tree> <tsan tree> [fault name ...]
  tools/plant-faults.py --check

--check only verifies that the code each fault changes is in its file exactly
once, and builds nothing; `make test` runs it, so that a change to the code
that moves a fault's pattern is noticed at once.

<asan tree> is a configured build tree like the one of `make test`
(Debug, -DMSG_SANITIZE=ON -DMSG_WARNINGS_AS_ERRORS=ON); <tsan tree> one like
`make tsan`'s. For each fault the file is changed, the tree rebuilt and the
tests run until the first failure (the slow bad-input and deep-document
cases only if nothing faster fails), starting with the tests named as the
likely catchers of the fault. The file is always put back; the
trees are rebuilt from the clean sources at the end. Never commit while it
runs.
"""

import os
import re
import subprocess
import sys
from dataclasses import dataclass


@dataclass
class Fault:
    name: str
    first: str  # the tests most likely to catch it (a key of FIRST), run before all others
    path: str
    old: str
    new: str
    tree: str = "asan"  # "tsan": only the threads test in the ThreadSanitizer tree


FAULTS = [
    # Records and placeholders.
    Fault("placeholder-digit-limit", "placeholders", "message_core/PlaceholderScanner.h",
          "kMaxPlaceholderDigits = 22;", "kMaxPlaceholderDigits = 21;"),
    Fault("placeholder-beyond-int-max", "placeholders", "message_core/PlaceholderScanner.h",
          "std::numeric_limits<int>::max());", "std::numeric_limits<unsigned int>::max());"),
    Fault("first-buffer-too-small", "message", "message_core/Message.cpp",
          "kMinBufferSize = 100;", "kMinBufferSize = 64;"),
    Fault("clear-forgets-the-text", "message", "message_core/Message.cpp",
          "  if (text != nullptr) {\n    std::strcpy(workBuffer, text);",
          "  if (text == nullptr) {\n    std::strcpy(workBuffer, text);"),
    Fault("value-from-the-record-itself", "message", "message_core/Message.cpp",
          "if (pointsInto(value, resultBuffer, 2 * std::size_t{bufferSize})) {",
          "if (pointsInto(value, resultBuffer, 0)) {"),
    Fault("not-found-key-swapped", "message", "message_core/Message.cpp",
          "substitute(0, nameSpace);\n    substitute(1, identifier);",
          "substitute(0, identifier);\n    substitute(1, nameSpace);"),
    Fault("cut-number-not-exponential", "message", "message_core/MessageArguments.cpp",
          "if (length < 0 || length >= kNumberBufferSize) {", "if (length < 0) {"),
    Fault("boolean-region-counts", "message", "message_core/MessageArguments.cpp",
          "language.tagChars[0] == 'd' && language.tagChars[1] == 'e';",
          "language == Language(\"de\");"),
    Fault("boolean-option-inverted", "message", "message_core/MessageArguments.cpp",
          "const bool asYesNo = option == yesNo;", "const bool asYesNo = option != trueFalse;"),
    # Handler.
    Fault("threshold-off-by-one", "handler", "message_core/MessageHandler.cpp",
          "if (message.getSeverityLevel() < severityLevel) {",
          "if (message.getSeverityLevel() <= severityLevel) {"),
    Fault("second-channel-forgotten", "handler", "message_core/MessageHandler.cpp",
          "    messageChannel2->onMessage(message);\n", ""),
    Fault("owned-channel-kept", "handler", "message_core/MessageHandler.cpp",
          "  if (messageChannel != nullptr && messageChannelOwned) {\n    delete messageChannel;\n  }\n  messageChannel = channel;",
          "  messageChannel = channel;"),
    Fault("borrowed-channel-deleted", "handler", "message_core/MessageHandler.cpp",
          "  if (messageChannel2 != nullptr && messageChannel2Owned) {\n    delete messageChannel2;\n  }\n  messageChannel2 = channel;",
          "  if (messageChannel2 != nullptr) {\n    delete messageChannel2;\n  }\n  messageChannel2 = channel;"),
    Fault("parent-not-asked", "handler", "message_core/MessageHandler.cpp",
          "return parent->getMessage(nameSpace, identifier);", "return nullptr;"),
    Fault("write-without-clear", "handler", "message_core/MessageHandler.cpp",
          "  message.clear();\n  // A plural record takes its count first",
          "  // A plural record takes its count first"),
    Fault("duplicate-accepted", "builtin", "message_core/MessageHandler.cpp",
          "if (existing != nullptr && throwOnDuplicate) {",
          "if (existing != nullptr && throwOnDuplicate && existing == entry) {"),
    # Languages.
    Fault("region-second-letter-dropped", "table", "include/msg/Language.h",
          "if (length >= 5) {", "if (length > 5) {"),
    Fault("bare-language-ranked-as-region", "table", "message_core/LanguageList.cpp",
          "return 3 * barePosition + 1;", "return 3 * barePosition + 2;"),
    # The bounded loop of an earlier version: right, but g++ -O3 warns about it
    # in the caller's code.
    Fault("packing-loop-warns-at-O3", "strict", "include/msg/Language.h",
          "    const std::size_t length = std::strlen(tag);\n"
          "    if (length >= 1) {\n      tagChars[0] = tag[0];\n    }\n"
          "    if (length >= 2) {\n      tagChars[1] = tag[1];\n    }\n"
          "    if (length >= 4 && tag[2] == '-') {\n      tagChars[2] = tag[3];\n"
          "      if (length >= 5) {\n        tagChars[3] = tag[4];\n      }\n    }\n",
          "    char head[5] = {0, 0, 0, 0, 0};\n"
          "    for (int i = 0; i < 5 && tag[i] != '\\0'; ++i) {\n      head[i] = tag[i];\n    }\n"
          "    tagChars[0] = head[0];\n    tagChars[1] = head[1];\n"
          "    if (head[2] == '-') {\n      tagChars[2] = head[3];\n      tagChars[3] = head[4];\n    }\n"),
    Fault("builtin-word-misspelt", "builtin", "message_core/BuiltinCatalogue.cpp",
          '"yes", "Ja",', '"yes", "ja",'),
    # Channels.
    Fault("default-line-separator", "handler", "message_core/MessageChannel.cpp",
          'line += ": ";', 'line += ":";'),
    Fault("default-line-written-in-pieces", "threads", "message_core/MessageChannel.cpp",
          "platform::standardError().write(line.data(), static_cast<std::streamsize>(line.size()));",
          "for (char c : line) {\n    platform::standardError().put(c);\n  }"),
    Fault("formatting-state-shared", "threads", "message_core/FormattingMessageChannel.cpp",
          "  LineState state;\n", "  static LineState state;\n", tree="tsan"),
    Fault("formatting-breaks-at-column-0", "formatting", "message_core/FormattingMessageChannel.cpp",
          "if (state.lastBlank > 0 && state.lastBlank >= lineLeft) {",
          "if (state.lastBlank >= 0 && state.lastBlank >= lineLeft) {"),
    Fault("formatting-last-line-flag", "formatting", "message_core/FormattingMessageChannel.cpp",
          "onMessageLine(state.firstLine, true, state.buffer);",
          "onMessageLine(state.firstLine, false, state.buffer);"),
    # Files written in place of others.
    Fault("replacement-forgets-permissions", "atomic", "platform/AtomicFile.cpp",
          "fchmod(fd, old.st_mode & 07777) != 0", "fchmod(fd, 0644) != 0"),
    Fault("refused-replacement-leaves-temporary", "atomic", "platform/AtomicFile.cpp",
          "    } catch (...) {\n      unlink(temporary.c_str());\n      throw;",
          "    } catch (...) {\n      throw;"),
    Fault("replacement-replaces-the-link", "atomic", "platform/AtomicFile.cpp",
          "rename(temporary.c_str(), real.c_str())", "rename(temporary.c_str(), path.c_str())"),
    Fault("replacement-forgets-owner", "atomic", "platform/AtomicFile.cpp",
          "fchown(fd, old.st_uid, old.st_gid) != 0", "false"),
    Fault("read-only-file-replaced", "atomic", "platform/AtomicFile.cpp",
          "if ((status.st_mode & 0222) == 0) {", "if (false) {"),
    # Exceptions and faults.
    Fault("unknown-code-in-capitals", "faults", "structured_exceptions/SystemExceptionTranslator.cpp",
          "std::nouppercase", "std::uppercase"),
    Fault("fault-signal-left-blocked", "faults", "platform/SystemExceptions.cpp",
          "pthread_sigmask(SIG_SETMASK, &context->uc_sigmask, &handlerMask);",
          "pthread_sigmask(SIG_BLOCK, nullptr, &handlerMask);"),
    Fault("exception-arguments-borrowed", "faults", "structured_exceptions/structured_exception.cpp",
          "ownedArguments[i] = msg::copyString(arguments[i]);",
          "ownedArguments[i] = const_cast<char*>(arguments[i]);"),
    # Documents.
    Fault("refusal-not-reported", "loader", "message_documents/MessageHandlerX.cpp",
          "handler.writeMessage1(report, path);", "(void)path;"),
    Fault("language-filter-off", "loader", "message_documents/MessageHandlerX.cpp",
          "return languages.distance(Language(language.c_str())) >= 0;",
          "return languages.distance(Language(language.c_str())) >= -1;"),
    # Packaging and public headers.
    Fault("pkg-config-sets-the-standard", "consumer", "cmake/msg.pc.in",
          "Cflags: -I${includedir}", "Cflags: -I${includedir} -std=c++17"),
    Fault("header-parameter-shadows", "strict", "include/msg/MessageExceptions.h",
          "explicit MessageHandlerError(const char* errorText) : text(errorText) {}",
          "explicit MessageHandlerError(const char* text) : text(text) {}"),
]

# Build targets and CTest selection of each group of first tests.
FIRST = {
    "message": (["message_test"], r"^MessageTest\."),
    "handler": (["message_handler_test"], r"^MessageHandlerTest\."),
    "builtin": (["builtin_catalogue_test"], r"^BuiltinCatalogueTest\."),
    "placeholders": (["placeholder_scanner_test", "message_test"],
                     r"^(PlaceholderScanner|Message)Test\."),
    "atomic": (["atomic_file_test"], r"^AtomicFileTest\."),
    "table": (["message_table_test"], r"^(MessageTable|LanguageList|Language)Test\."),
    "formatting": (["formatting_channel_test"], r"^FormattingChannelTest\."),
    "faults": (["fault_translation_test"], r"^(FaultTranslation|FaultTranslationDeath|StructuredException)Test\."),
    "loader": (["document_loader_test", "message_handler_x_test"], r"^(DocumentLoader|MessageHandlerX)"),
    "threads": (["threads_test"], r"^Threads\."),
    "strict": ([], r"^headers\.strict\."),
    "consumer": (["all"], r"^packaging\."),
}

# Tests of a minute or more; run last.
SLOW = r"^bad_input\.(large|nested)|^DeepDocumentTest|ADeepTree|^packaging\.consumer"


def run(command, cwd=None, env=None):
    result = subprocess.run(command, cwd=cwd, env=env, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True)
    return result.returncode, result.stdout


def first_failure(output):
    match = re.search(r"The following tests FAILED:\s*\n\s*\d+ - (\S+)", output)
    return match.group(1) if match else "?"


def check(fault, asan, tsan):
    if fault.tree == "tsan":
        status, output = run(["cmake", "--build", tsan, "-j2", "--target", "threads_test"])
        if status != 0:
            return "build of the threads test"
        env = dict(os.environ, TSAN_OPTIONS="halt_on_error=1")
        status, output = run([os.path.join(tsan, "tests", "threads_test")], env=env)
        return "threads_test under ThreadSanitizer" if status != 0 else None
    targets, first = FIRST[fault.first]
    if targets:
        status, output = run(["cmake", "--build", asan, "-j2", "--target"] + targets)
        if status != 0:
            return "the build (warnings are errors)"
    status, output = run(["ctest", "-j2", "--timeout", "600", "-R", first], cwd=asan)
    if status != 0:
        return first_failure(output)
    status, output = run(["cmake", "--build", asan, "-j2"])
    if status != 0:
        return "the build (warnings are errors)"
    for selection in (["-E", SLOW], ["-R", SLOW]):
        status, output = run(["ctest", "-j2", "--stop-on-failure", "--timeout", "600"] + selection,
                             cwd=asan)
        if status != 0:
            return first_failure(output)
    return None


def stale(fault, root):
    """Returns why the fault cannot be planted, or None if its pattern is in
    its file exactly once."""
    path = os.path.join(root, fault.path)
    try:
        with open(path) as source:
            count = source.read().count(fault.old)
    except OSError as error:
        return f"{fault.path} cannot be read ({error.strerror})"
    if count == 1:
        return None
    where = "is not in" if count == 0 else f"is {count} times in"
    first_line = fault.old.splitlines()[0].strip() if fault.old.strip() else repr(fault.old)
    return f"the code it changes ({first_line!r}) {where} {fault.path}"


def check_patterns(faults, root):
    """Prints every fault whose pattern is stale; returns their number."""
    problems = 0
    for fault in faults:
        reason = stale(fault, root)
        if reason:
            print(f"plant-faults: fault {fault.name}: {reason}; update the fault",
                  file=sys.stderr)
            problems += 1
    return problems


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    if sys.argv[1:] == ["--check"]:
        problems = check_patterns(FAULTS, root)
        if problems == 0:
            print(f"plant-faults: all {len(FAULTS)} faults match their code once")
        return 1 if problems else 0
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    asan, tsan = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    wanted = set(sys.argv[3:])
    unknown = wanted - {f.name for f in FAULTS}
    if unknown:
        sys.exit(f"plant-faults: no fault named {', '.join(sorted(unknown))}")
    caught = 0
    faults = [f for f in FAULTS if not wanted or f.name in wanted]
    # A stale fault would be a silent gap in the census: stop before any
    # file is changed.
    if check_patterns(faults, root):
        return 2
    for fault in faults:
        path = os.path.join(root, fault.path)
        with open(path) as source:
            original = source.read()
        try:
            with open(path, "w") as source:
                source.write(original.replace(fault.old, fault.new))
            catcher = check(fault, asan, tsan)
        finally:
            with open(path, "w") as source:
                source.write(original)
        caught += catcher is not None
        print(f"{fault.name}: {'caught by ' + catcher if catcher else 'NOT CAUGHT'}", flush=True)
    print(f"{caught} of {len(faults)} planted faults caught")
    run(["cmake", "--build", asan, "-j2"])
    run(["cmake", "--build", tsan, "-j2", "--target", "threads_test"])
    return 0 if caught == len(faults) else 1


if __name__ == "__main__":
    sys.exit(main())
