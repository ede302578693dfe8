// `marrowby edit PROJECT`: the property editor in the browser, served from this process.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include "cli/Commands.h"
#include "cli/editor/WrenEditorServer.h"

extern char** environ;

namespace wren {

namespace {

int g_wakeFd = -1;

void OnStop(int) {
  const char byte = 1;
  // Nothing else is safe in a handler; the watcher thread does the stopping.
  [[maybe_unused]] const ssize_t n = ::write(g_wakeFd, &byte, 1);
}

/// Opens the URL with xdg-open in the background; a browser that cannot be opened is a note, not
/// an error (the URL is on standard output).
void OpenBrowser(const std::string& url, std::ostream& err) {
  const char* argv[] = {"xdg-open", url.c_str(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t pid = -1;
  const int rc = posix_spawnp(&pid, "xdg-open", &actions, nullptr, const_cast<char**>(argv),
                              environ);
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) {
    err << "marrowby: could not start xdg-open; open the address above in a browser\n";
    return;
  }
  // Reaped on a thread of its own: a slow browser never holds the editor up.
  std::thread([pid, &err] {
    int status = 0;
    if (::waitpid(pid, &status, 0) == pid && !(WIFEXITED(status) && WEXITSTATUS(status) == 0))
      err << "marrowby: xdg-open could not open a browser; open the address above in one\n";
  }).detach();
}

}  // namespace

int CmdEditor(TCliContext& ctx, const std::string& projectFile, int port, bool noBrowser) {
  std::unique_ptr<TWrenEditorSession> session;
  try {
    session = std::make_unique<TWrenEditorSession>(projectFile);
  } catch (const TWrenEditorError& e) {
    *ctx.err << "marrowby: " << e.what() << "\n";
    return kExitUsage;
  }
  TWrenEditorServer server(*session, NewEditorToken());
  std::string error;
  if (!server.Bind(port, error)) {
    *ctx.err << "marrowby: " << error << "\n";
    return kExitFailed;
  }

  int wake[2];
  if (::pipe2(wake, O_CLOEXEC) != 0) {
    *ctx.err << "marrowby: cannot make a pipe for the signal handler\n";
    return kExitFailed;
  }
  g_wakeFd = wake[1];
  struct sigaction stop {};
  stop.sa_handler = OnStop;
  sigemptyset(&stop.sa_mask);
  for (int sig : {SIGINT, SIGTERM}) ::sigaction(sig, &stop, nullptr);
  // A browser that goes away mid-answer must not end the editor.
  std::signal(SIGPIPE, SIG_IGN);
  std::atomic<bool> served{false};
  std::thread watcher([&] {
    char byte = 0;
    while (::read(wake[0], &byte, 1) < 0 && errno == EINTR) {
    }
    session->StopRun();
    // A signal that comes before the server listens would find nothing to stop yet.
    while (!served) {
      server.Stop();
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  });

  *ctx.out << server.Url() << std::endl;
  if (!noBrowser) OpenBrowser(server.Url(), *ctx.err);
  server.Serve();
  served = true;

  // Serve can also end on its own (the socket failed): the watcher is woken either way.
  OnStop(0);
  watcher.join();
  for (int sig : {SIGINT, SIGTERM}) std::signal(sig, SIG_DFL);
  ::close(wake[0]);
  ::close(wake[1]);
  g_wakeFd = -1;
  // The server goes first (it points into the session); the session then joins a stopped build.
  return kExitOk;
}

}  // namespace wren
