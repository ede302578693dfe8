// Helper threads of the build that leave signals to the build's own thread.
#pragma once

#include <functional>
#include <thread>

namespace wren {

/// Starts body on a thread that takes no signal: Ctrl-C and friends stay the build's thread's to
/// handle, however many helpers it has.
std::thread StartQuietThread(std::function<void()> body);

}  // namespace wren
