// Fuzzes the placeholder scanner and substitution of Message.
//
// One input is a text and a sequence of operations on one record made from
// it: substitute() with strings (also null, and values that point into the
// record itself), ints, doubles of any precision and booleans, clear(),
// clean(). After every operation the record is compared with a small model
// that follows the documented rules directly: the shown text, the result of
// substitute(), the text that never changes and the buffer capacity.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string>

#include "msg/Message.h"

namespace {

// Stops the run with a description of the mismatch; libFuzzer keeps the input.
void fail(const char* what, const std::string& expected, const char* actual) {
  std::fprintf(stderr, "model mismatch: %s\n  expected \"%s\"\n  actual   \"%s\"\n", what,
               expected.c_str(), actual == nullptr ? "(null)" : actual);
  std::abort();
}

// The number that the digit run `digits` names, or -1 for none: a run of 1
// to 22 digits whose value, leading zeros aside, is at most INT_MAX.
long long placeholderNumber(const std::string& digits) {
  if (digits.empty() || digits.size() > 22) {
    return -1;
  }
  const std::size_t firstNonZero = digits.find_first_not_of('0');
  if (firstNonZero == std::string::npos) {
    return 0;
  }
  const std::string significant = digits.substr(firstNonZero);
  if (significant.size() > 10) {
    return -1;
  }
  const long long value = std::stoll(significant);
  return value > INT_MAX ? -1 : value;
}

// What the record should show, kept as plain strings.
class RecordModel {
 public:
  explicit RecordModel(const std::string& text) : text(text) {}

  bool substitute(unsigned int number, const std::string& value) {
    const std::size_t shownLength = hasBuffers && !shown.empty() ? shown.size() : text.size();
    const std::size_t room = shownLength + value.size() + 1;
    if (capacity < room) {
      capacity = capacity == 0 ? std::max<std::size_t>(room, 100)
                               : std::max<std::size_t>(2 * capacity, room);
    }
    if (!hasBuffers) {
      work = text;
      hasBuffers = true;
    }
    // Every "&" opens a candidate: a digit run never holds another "&".
    bool found = false;
    for (std::size_t amp = work.find('&'); amp != std::string::npos;
         amp = work.find('&', amp + 1)) {
      std::size_t end = amp + 1;
      while (end < work.size() && work[end] >= '0' && work[end] <= '9') {
        ++end;
      }
      if (placeholderNumber(work.substr(amp + 1, end - amp - 1)) ==
          static_cast<long long>(number)) {
        work = work.substr(0, amp) + value + work.substr(end);
        found = true;
        break;
      }
    }
    shown = work;
    return found;
  }

  void clear() {
    if (hasBuffers) {
      shown.clear();
      work = text;
    }
  }

  void clean() {
    hasBuffers = false;
    capacity = 0;
  }

  // The shown text; null stands for a record without text and buffers.
  const char* expected() const {
    if (hasBuffers) {
      return shown.c_str();
    }
    return text.empty() ? nullptr : text.c_str();
  }

  std::size_t getCapacity() const { return capacity; }
  std::size_t shownLength() const { return hasBuffers ? shown.size() : text.size(); }

 private:
  const std::string text;
  std::string work;
  std::string shown;
  bool hasBuffers = false;
  std::size_t capacity = 0;
};

// The documented text of a double argument.
std::string formatDouble(double value, int precision) {
  std::ostringstream out;
  out << std::fixed;
  if (precision <= 0 && value == 0.0) {
    out << std::setprecision(1) << value;
    return out.str();
  }
  const int decimals = std::min(std::max(precision, 0), 16);
  out << std::setprecision(decimals) << value;
  if (out.str().size() <= 31) {
    return out.str();
  }
  std::ostringstream exponential;
  exponential << std::scientific << std::setprecision(decimals) << value;
  return exponential.str();
}

unsigned int pickNumber(FuzzedDataProvider& data) {
  switch (data.ConsumeIntegralInRange(0, 7)) {
    case 0:
      return static_cast<unsigned int>(INT_MAX);
    case 1:
      return static_cast<unsigned int>(INT_MAX) + 1u;
    case 2:
      return data.ConsumeIntegral<unsigned int>();
    default:
      return data.ConsumeIntegralInRange(0u, 12u);
  }
}

void compare(const msg::Message& record, const RecordModel& model, const std::string& text) {
  const char* expected = model.expected();
  const char* actual = record.getMessage();
  if ((expected == nullptr) != (actual == nullptr) ||
      (expected != nullptr && std::strcmp(expected, actual) != 0)) {
    fail("getMessage()", expected == nullptr ? "(null)" : expected, actual);
  }
  const char* kept = record.getText();
  if (text.empty() ? kept != nullptr : (kept == nullptr || text != kept)) {
    fail("getText()", text, kept);
  }
  if (record.getBufferSize() != model.getCapacity()) {
    fail("getBufferSize()", std::to_string(model.getCapacity()),
         std::to_string(record.getBufferSize()).c_str());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const std::string text = data.ConsumeRandomLengthString(400).c_str();
  msg::Message record("fuzz", "record", msg::info, msg::Language("en"), text.c_str());
  RecordModel model(text);

  // A value that holds its own placeholder can double the text at every
  // step; past 64 KiB the input only measures memcpy.
  for (int step = 0; step < 64 && data.remaining_bytes() > 0 && model.shownLength() < 65536;
       ++step) {
    bool result = false;
    bool expectedResult = false;
    const unsigned int number = pickNumber(data);
    switch (data.ConsumeIntegralInRange(0, 8)) {
      case 0:
      case 1: {
        const std::string value = data.ConsumeRandomLengthString(200).c_str();
        expectedResult = model.substitute(number, value);
        result = record.substitute(number, value.c_str());
        break;
      }
      case 2: {
        // A value that points into the record's own text.
        const char* shown = record.getMessage();
        if (shown == nullptr) {
          continue;
        }
        const std::size_t offset = data.ConsumeIntegralInRange<std::size_t>(0, std::strlen(shown));
        expectedResult = model.substitute(number, shown + offset);
        result = record.substitute(number, shown + offset);
        break;
      }
      case 3:
        // A null value changes nothing.
        result = record.substitute(number, static_cast<const char*>(nullptr));
        break;
      case 4: {
        const int value = data.ConsumeIntegral<int>();
        expectedResult = model.substitute(number, std::to_string(value));
        result = record.substitute(number, value);
        break;
      }
      case 5: {
        const double value = data.ConsumeBool() ? data.ConsumeFloatingPoint<double>()
                                                : data.ConsumeIntegralInRange(-1000, 1000) / 8.0;
        const int precision = data.ConsumeIntegralInRange(-3, 20);
        expectedResult = model.substitute(number, formatDouble(value, precision));
        result = record.substitute(number, value, precision);
        break;
      }
      case 6: {
        // The process-wide handler accepts "en", which the built-in
        // catalogue offers for all four words.
        const bool value = data.ConsumeBool();
        const bool asYesNo = data.ConsumeBool();
        const std::string word = asYesNo ? (value ? "yes" : "no") : (value ? "true" : "false");
        expectedResult = model.substitute(number, word);
        result = record.substitute(number, value,
                                   asYesNo ? msg::Message::yesNo : msg::Message::trueFalse);
        break;
      }
      case 7:
        model.clear();
        record.clear();
        break;
      default:
        model.clean();
        record.clean();
        break;
    }
    if (result != expectedResult) {
      fail("substitute() result", expectedResult ? "true" : "false", result ? "true" : "false");
    }
    compare(record, model, text);
  }
  return 0;
}
