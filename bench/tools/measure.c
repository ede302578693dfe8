/* Runs a command and prints its wall time in seconds and the largest resident set of it and the
   children it waited for, in KiB: "SECONDS MAXRSS_KB". Usage: measure [-o FILE] -- COMMAND ARGS...
   (-o: the command's stdout, default /dev/null). Exits with the command's status. */
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

int main(int argc, char** argv) {
  const char* out = "/dev/null";
  int i = 1;
  for (; i < argc && strcmp(argv[i], "--") != 0; ++i)
    if (strcmp(argv[i], "-o") == 0 && i + 1 < argc) out = argv[++i];
  if (i + 1 >= argc) {
    fprintf(stderr, "usage: measure [-o FILE] -- COMMAND ARGS...\n");
    return 2;
  }
  struct timespec start, end;
  clock_gettime(CLOCK_MONOTONIC, &start);
  pid_t pid = fork();
  if (pid == 0) {
    int fd = open(out, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0 || dup2(fd, 1) < 0) _exit(126);
    close(fd);
    execvp(argv[i + 1], argv + i + 1);
    _exit(127);
  }
  int status = 0;
  struct rusage usage;
  if (pid < 0 || wait4(pid, &status, 0, &usage) < 0) return 125;
  clock_gettime(CLOCK_MONOTONIC, &end);
  printf("%.6f %ld\n", (end.tv_sec - start.tv_sec) + (end.tv_nsec - start.tv_nsec) / 1e9,
         usage.ru_maxrss);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
