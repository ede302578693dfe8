#include "WrenSuggest.h"

#include <gtest/gtest.h>

namespace wren {
namespace {

TEST(WrenSuggest, NearestNamesForTyposOnly) {
  const std::vector<std::string> attributes{"class", "enabled", "description"};
  EXPECT_EQ(DidYouMean("enable", attributes), "did you mean enabled?");
  EXPECT_EQ(DidYouMean("descripton", attributes), "did you mean description?");
  EXPECT_EQ(DidYouMean("Enalbed", attributes), "did you mean enabled?");  // swap, any case
  EXPECT_EQ(DidYouMean("colour", attributes), "");                       // nothing near
  const std::vector<std::string> commands{"run", "validate", "actions", "describe", "options"};
  EXPECT_EQ(NearestNames("rnu", commands), std::vector<std::string>{"run"});
  EXPECT_EQ(DidYouMean("option", {"options", "option1", "optional"}),
            "did you mean options or option1?");  // the nearest only
  EXPECT_EQ(DidYouMean("ProjectDri", {"ProjectName", "ProjectDir"}), "did you mean ProjectDir?");
  EXPECT_EQ(DidYouMean("opton", {"option1", "option2", "option3", "option4"}),
            "did you mean option1, option2 or option3?");  // at most three
  EXPECT_EQ(DidYouMean("x", {}), "");
}

}  // namespace
}  // namespace wren
