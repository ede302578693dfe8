/* Starts PROGRAM N times one after another with posix_spawn and waits for each: the floor for a
   build of N program steps. With --pipes it also reads each program's stdout and stderr through
   two pipes until both end, as anything that shows a program's output must: the floor for a
   runner that captures output. Usage: spawnloop [--pipes] N PROGRAM [ARGS...] */
#define _GNU_SOURCE
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

/* Reads both pipes until both end; 0 on success. */
static int drain(int out, int err) {
  char buffer[65536];
  struct pollfd fds[2] = {{out, POLLIN, 0}, {err, POLLIN, 0}};
  int open = 2;
  while (open > 0) {
    if (poll(fds, 2, -1) < 0) return -1;
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || fds[i].revents == 0) continue;
      if (read(fds[i].fd, buffer, sizeof buffer) <= 0) {
        close(fds[i].fd);
        fds[i].fd = -1;
        --open;
      }
    }
  }
  return 0;
}

static int run(const char* path, char** args, int pipes) {
  pid_t pid;
  int status;
  if (!pipes) {
    if (posix_spawn(&pid, path, NULL, NULL, args, environ) != 0) return -1;
  } else {
    int out[2], err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) return -1;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err[1], 2);
    const int failed = posix_spawn(&pid, path, &actions, NULL, args, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    close(err[1]);
    if (failed || drain(out[0], err[0]) != 0) return -1;
  }
  if (waitpid(pid, &status, 0) < 0 || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

int main(int argc, char** argv) {
  int pipes = argc > 1 && strcmp(argv[1], "--pipes") == 0;
  if (argc < 3 + pipes) return 2;
  long n = atol(argv[1 + pipes]);
  for (long i = 0; i < n; ++i)
    if (run(argv[2 + pipes], argv + 2 + pipes, pipes) != 0) return 1;
  return 0;
}
