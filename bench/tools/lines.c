/* Writes BYTES bytes of 100-byte text lines to stdout in large writes: a tool with a lot to say
   whose own cost stays far below the host's. Usage: lines BYTES */
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { kLine = 100, kLinesPerBlock = 1310 };

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  long long left = atoll(argv[1]);
  static char block[kLine * kLinesPerBlock];
  for (int i = 0; i < kLinesPerBlock; ++i) {
    char* line = block + i * kLine;
    memset(line, 'a' + i % 26, kLine - 1);
    memcpy(line, "compiling unit ", 15);
    line[kLine - 1] = '\n';
  }
  while (left > 0) {
    size_t n = left < (long long)sizeof block ? (size_t)left : sizeof block;
    const char* p = block;
    while (n > 0) {
      ssize_t w = write(1, p, n);
      if (w < 0 && errno == EINTR) continue;
      if (w <= 0) return 1;
      p += w;
      n -= (size_t)w;
      left -= w;
    }
  }
  return 0;
}
