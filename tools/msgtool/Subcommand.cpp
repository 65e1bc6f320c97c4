#include "Subcommand.h"

#include <algorithm>
#include <utility>

namespace msgtool {

namespace {

// Function-local, so registrations from other files' static objects find it
// constructed whatever the order of initialisation.
std::vector<SubcommandInfo>& registry() {
  static std::vector<SubcommandInfo> subcommands;
  return subcommands;
}

}  // namespace

SubcommandRegistration::SubcommandRegistration(SubcommandInfo info) {
  registry().push_back(std::move(info));
}

std::vector<SubcommandInfo> registeredSubcommands() {
  std::vector<SubcommandInfo> sorted = registry();
  std::sort(sorted.begin(), sorted.end(),
            [](const SubcommandInfo& a, const SubcommandInfo& b) { return a.name < b.name; });
  return sorted;
}

}  // namespace msgtool
