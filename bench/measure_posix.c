/* Runs a command and writes what it used to a file, one "name: figure" in each line.
 *
 * measure FILE COMMAND [ARGUMENT...]
 *
 * A program of its own because the kernel counts the memory of whoever starts a process as that of the process: this
 * one has next to none. Ends with the exit code of the command. */

#define _DEFAULT_SOURCE
#define _XOPEN_SOURCE 700

#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>

extern char** environ;

static double Seconds(struct timeval time) { return (double)time.tv_sec + (double)time.tv_usec / 1e6; }

static double Now(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)now.tv_sec + (double)now.tv_nsec / 1e9;
}

/* The kernel's account of the bytes, which goes with the process. */
static int CopyAccount(pid_t process, FILE* figures) {
  char text[256];
  snprintf(text, sizeof text, "/proc/%ld/io", (long)process);
  FILE* const account = fopen(text, "r");
  if (account == NULL) {
    perror(text);
    return 0;
  }
  while (fgets(text, sizeof text, account) != NULL) {
    fputs(text, figures);
  }
  fclose(account);
  return 1;
}

/* The exit code of the command, or -1. */
static int Measure(char** command, FILE* figures) {
  pid_t process = 0;
  const double start = Now();
  const int code = posix_spawnp(&process, command[0], NULL, NULL, command, environ);
  if (code != 0) {
    fprintf(stderr, "measure: %s: %s\n", command[0], strerror(code));
    return -1;
  }
  siginfo_t ended;
  if (waitid(P_PID, (id_t)process, &ended, WEXITED | WNOWAIT) != 0) {
    perror("measure");
    return -1;
  }
  fprintf(figures, "wall_s: %.6f\n", Now() - start);
  const int accounted = CopyAccount(process, figures);
  int status = 0;
  struct rusage usage;
  if (wait4(process, &status, 0, &usage) != process || !accounted) {
    return -1;
  }
  fprintf(figures, "cpu_s: %.6f\nmemory_kib: %ld\n", Seconds(usage.ru_utime) + Seconds(usage.ru_stime),
          usage.ru_maxrss);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int main(int argc, char** argv) {
  if (argc < 3) {
    fprintf(stderr, "usage: measure FILE COMMAND [ARGUMENT...]\n");
    return EXIT_FAILURE;
  }
  FILE* const figures = fopen(argv[1], "w");
  if (figures == NULL) {
    perror(argv[1]);
    return EXIT_FAILURE;
  }
  const int code = Measure(argv + 2, figures);
  if (fclose(figures) != 0) {
    perror(argv[1]);
    return EXIT_FAILURE;
  }
  return code < 0 ? EXIT_FAILURE : code;
}
