/* Starts PROGRAM N times one after another with posix_spawn and waits for each: the floor for a
   build of N program steps. Usage: spawnloop N PROGRAM [ARGS...] */
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>

extern char** environ;

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  long n = atol(argv[1]);
  for (long i = 0; i < n; ++i) {
    pid_t pid;
    int status;
    if (posix_spawn(&pid, argv[2], NULL, NULL, argv + 2, environ) != 0) return 1;
    if (waitpid(pid, &status, 0) < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) return 1;
  }
  return 0;
}
