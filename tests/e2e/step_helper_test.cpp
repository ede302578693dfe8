// The steps of a build share one helper process that starts their programs; what a step leaves
// running still ends with that step, and the helper ends with the build.
#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <sstream>
#include <thread>

#include "CliMachine.h"
#include "TestSupport.h"

namespace wren {
namespace {

TEST(StepHelper, WhatAStepLeavesEndsBeforeTheNextStepAndTheHelperWithTheBuild) {
  test::TempDir state;
  const std::string pids = state / "pids";
  const std::string helpers = state / "helpers";
  // "leave": a background child and a setsid one are left running; "check": fails while any
  // of them still runs. Each records the process that started it.
  CliMachine m("#!/bin/sh\n"
               "echo $PPID >> '" + helpers + "'\n"
               "case \" $* \" in *\" leave \"*)\n"
               "  setsid sleep 300 >/dev/null 2>&1 & echo $! >> '" + pids + "'\n"
               "  sleep 300 >/dev/null 2>&1 & echo $! >> '" + pids + "'\n"
               "  exit 0 ;;\n"
               "esac\n"
               "for pid in $(cat '" + pids + "'); do\n"
               "  if kill -0 $pid 2>/dev/null; then echo \"$pid still runs\"; exit 1; fi\n"
               "done\n");
  m.WriteProject("steps.mbproj", SnStep("leave") + SnStep("check") + SnStep("leave") +
                                     SnStep("check"));
  std::string out;
  EXPECT_EQ(m.Run({"run", m.dir / "steps.mbproj"}, &out), 0) << out;

  const std::vector<int> left = test::ReadPids(pids);
  EXPECT_EQ(left.size(), 4u);
  for (int pid : left) EXPECT_FALSE(test::ProcessRunning(pid)) << pid << " outlived its step";
  const std::vector<int> started = test::ReadPids(helpers);
  ASSERT_EQ(started.size(), 4u);
  for (int helper : started) EXPECT_EQ(helper, started[0]) << "the steps did not share a helper";
  for (int i = 0; i < 200 && test::ProcessRunning(started[0]); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(test::ProcessRunning(started[0])) << "the helper outlived the build";
}

}  // namespace
}  // namespace wren
