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
            "did you mean options, option1 or optional?");
  EXPECT_EQ(DidYouMean("x", {}), "");
}

}  // namespace
}  // namespace wren
