/* The floor for the AssemblyInfo updater: walks ROOT for *.cs files and, in each, sets the value of
   the named attributes on lines "[assembly: NAME("old")]", writing the result to a temporary file
   beside it that is renamed over it (no fsync, like the updater without backups).
   Usage: rewrite ROOT NAME=VALUE... */
#define _GNU_SOURCE
#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

static int names;
static char** name;
static char** value;
static char buf[1 << 20], outbuf[1 << 20];

/* Copies the line [p, end) to *o, replacing the value of a listed attribute. */
static char* Line(const char* p, const char* end, char* o) {
  static const char kHead[] = "[assembly: ";
  const size_t head = sizeof kHead - 1;
  if ((size_t)(end - p) > head && memcmp(p, kHead, head) == 0)
    for (int i = 0; i < names; ++i) {
      size_t n = strlen(name[i]);
      const char* q = p + head;
      if ((size_t)(end - q) <= n + 2 || memcmp(q, name[i], n) != 0 || q[n] != '(' || q[n + 1] != '"')
        continue;
      const char* close = memchr(q + n + 2, '"', (size_t)(end - q - n - 2));
      if (!close || end - close < 3 || close[1] != ')' || close[2] != ']') continue;
      size_t keep = (size_t)(q + n + 2 - p), v = strlen(value[i]);
      memcpy(o, p, keep), o += keep;
      memcpy(o, value[i], v), o += v;
      memcpy(o, close, (size_t)(end - close));
      return o + (end - close);
    }
  memcpy(o, p, (size_t)(end - p));
  return o + (end - p);
}

static int Rewrite(int dirfd, const char* file) {
  int fd = openat(dirfd, file, O_RDONLY);
  if (fd < 0) return -1;
  ssize_t size = read(fd, buf, sizeof buf);
  close(fd);
  if (size < 0) return -1;
  char* o = outbuf;
  for (const char* p = buf; p < buf + size;) {
    const char* nl = memchr(p, '\n', (size_t)(buf + size - p));
    const char* end = nl ? nl + 1 : buf + size;
    o = Line(p, end, o);
    p = end;
  }
  char tmp[512];
  snprintf(tmp, sizeof tmp, ".%s.tmp%d", file, getpid());
  int out = openat(dirfd, tmp, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (out < 0) return -1;
  if (write(out, outbuf, (size_t)(o - outbuf)) != o - outbuf) return -1;
  close(out);
  return renameat(dirfd, tmp, dirfd, file);
}

static int Walk(int dirfd) {
  DIR* dir = fdopendir(dirfd);
  if (!dir) return -1;
  int rc = 0;
  for (struct dirent* e; (e = readdir(dir));) {
    if (e->d_name[0] == '.') continue;
    size_t len = strlen(e->d_name);
    if (e->d_type == DT_DIR) {
      int sub = openat(dirfd, e->d_name, O_RDONLY | O_DIRECTORY);
      rc |= sub < 0 ? -1 : Walk(sub);
    } else if (len > 3 && strcasecmp(e->d_name + len - 3, ".cs") == 0) {
      rc |= Rewrite(dirfd, e->d_name);
    }
  }
  closedir(dir);
  return rc;
}

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  names = argc - 2;
  name = calloc((size_t)names, sizeof *name);
  value = calloc((size_t)names, sizeof *value);
  for (int i = 0; i < names; ++i) {
    name[i] = strdup(argv[i + 2]);
    char* eq = strchr(name[i], '=');
    if (!eq) return 2;
    *eq = '\0';
    value[i] = eq + 1;
  }
  int root = open(argv[1], O_RDONLY | O_DIRECTORY);
  return root < 0 || Walk(root) != 0 ? 1 : 0;
}
