#include <pthread.h>
#include <signal.h>

#include "runtime/WrenQuietThread.h"

namespace wren {

std::thread StartQuietThread(std::function<void()> body) {
  // A new thread inherits the signal mask of the one that starts it.
  sigset_t all, previous;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &previous);
  std::thread thread(std::move(body));
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  return thread;
}

}  // namespace wren
