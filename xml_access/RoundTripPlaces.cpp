#include "xml_access/RoundTripPlaces.h"

#include <limits>
#include <utility>

namespace XercesXML {

namespace {

bool operator==(SourcePosition a, SourcePosition b) {
  return a.line == b.line && a.column == b.column;
}

bool notAfter(SourcePosition a, SourcePosition b) {
  return a.line < b.line || (a.line == b.line && a.column <= b.column);
}

std::uint32_t narrow(std::uint64_t value) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::uint32_t>(value > kLargest ? kLargest : value);
}

}  // namespace

RoundTripPlaces::RoundTripPlaces(std::string copyId, std::vector<ElementMarks> copy,
                                 std::vector<SourcePosition> original,
                                 std::vector<std::string> partNames)
    : copyId(std::move(copyId)),
      copy(std::move(copy)),
      original(std::move(original)),
      partNames(std::move(partNames)) {
  if (this->copy.size() != this->original.size()) {
    this->copy.clear();
    this->original.clear();
  }
}

std::size_t RoundTripPlaces::elementAt(SourcePosition at) const {
  std::size_t before = copy.size();
  for (std::size_t i = 0; i < copy.size(); ++i) {
    const ElementMarks& marks = copy[i];
    if (marks.tagEnd == at || marks.close == at) {
      return i;
    }
    if (notAfter(marks.start, at)) {
      before = i;  // starts come in document order, so the last one counts
    }
  }
  return before;
}

void RoundTripPlaces::place(ParseProblem& problem) const {
  if (copy.empty() || problem.line == 0 || problem.file != copyId) {
    return;
  }
  const std::size_t element =
      elementAt(SourcePosition{narrow(problem.line), narrow(problem.column)});
  if (element == copy.size()) {
    return;  // before the root element: the copy's prolog stands for the document's
  }
  const SourcePosition start = original[element];
  if (start.line == 0 || start.file > partNames.size()) {
    problem.line = 0;
    problem.column = 0;
    return;
  }
  if (start.file != 0) {
    problem.file = partNames[start.file - 1];
  }
  problem.line = start.line;
  problem.column = start.column;
}

}  // namespace XercesXML
