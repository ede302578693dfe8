// Texts the subcommands share: name lists and "did you mean" tails.
#include <algorithm>

#include "Commands.h"
#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenSuggest.h"

namespace wren {

std::string JoinNames(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

std::string WithSuggestion(const std::string& didYouMean) {
  return didYouMean.empty() ? "" : "; " + didYouMean;
}

std::string UnknownClassMessage(const std::string& className) {
  std::vector<std::string> classes;
  for (const TWrenRegisteredAction& a : WrenRegistrations().actions)
    classes.push_back(a.actionClass.name);
  return "no action class named '" + className + "' is registered" +
         WithSuggestion(DidYouMean(className, classes)) + " (see marrowby actions)";
}

}  // namespace wren
