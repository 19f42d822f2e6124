// with-private-root PROGRAM [ARGUMENT...]: runs a program in a root of its own, in which
// /home/quillon is an empty folder and /libwlt.so does not exist, whatever the machine has there.
// Everything else is the machine's, bind-mounted. The new root is a tmpfs inside a user and mount
// namespace, so that any user can make it and nothing of it outlives the program. Sets
// QL_PRIVATE_ROOT=1 for the program. Where the machine forbids namespaces it says so and runs the
// program without; tests that need the private root look at the variable and skip. QL_RUN_UNDER
// may hold a command that runs the program, such as "valgrind -q".
#define _GNU_SOURCE
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

static const char kRoot[] = "/tmp/quillonid-root";
static char problem[512];

static int fail(const char* what) {
  snprintf(problem, sizeof problem, "%s: %s", what, strerror(errno));
  return 0;
}

static int write_file(const char* path, const char* text) {
  const int fd = open(path, O_WRONLY | O_CLOEXEC);
  if (fd < 0) return 0;
  const int done = write(fd, text, strlen(text)) == (ssize_t)strlen(text);
  close(fd);
  return done;
}

static int bind_entry(const char* folder, const char* name, const char* target_folder) {
  char source[PATH_MAX], target[PATH_MAX];
  snprintf(source, sizeof source, "%s/%s", folder, name);
  snprintf(target, sizeof target, "%s%s/%s", kRoot, target_folder, name);
  struct stat status;
  if (lstat(source, &status) != 0) return 1;
  if (S_ISLNK(status.st_mode)) {
    char link[PATH_MAX] = {0};
    if (readlink(source, link, sizeof link - 1) < 0 || symlink(link, target) != 0)
      return fail(target);
    return 1;
  }
  if (S_ISDIR(status.st_mode)) {
    if (mkdir(target, 0755) != 0) return fail(target);
  } else {
    const int fd = open(target, O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
    if (fd < 0) return fail(target);
    close(fd);
  }
  if (mount(source, target, NULL, MS_BIND | MS_REC, NULL) != 0) return fail(source);
  return 1;
}

static int bind_folder(const char* folder, const char* target_folder, const char* except) {
  DIR* list = opendir(*folder ? folder : "/");
  if (!list) return fail(folder);
  int done = 1;
  for (const struct dirent* entry; done && (entry = readdir(list));) {
    if (!strcmp(entry->d_name, ".") || !strcmp(entry->d_name, "..")) continue;
    if (!strcmp(entry->d_name, except) || !strcmp(entry->d_name, "libwlt.so")) continue;
    done = bind_entry(folder, entry->d_name, target_folder);
  }
  closedir(list);
  return done;
}

static int make_root(void) {
  char text[64];
  const uid_t uid = getuid();
  const gid_t gid = getgid();
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return fail("unshare");
  write_file("/proc/self/setgroups", "deny");
  snprintf(text, sizeof text, "0 %u 1", (unsigned)uid);
  if (!write_file("/proc/self/uid_map", text)) return fail("/proc/self/uid_map");
  snprintf(text, sizeof text, "0 %u 1", (unsigned)gid);
  if (!write_file("/proc/self/gid_map", text)) return fail("/proc/self/gid_map");
  if (mount(NULL, "/", NULL, MS_REC | MS_PRIVATE, NULL) != 0) return fail("private mounts");
  if (mkdir(kRoot, 0755) != 0 && errno != EEXIST) return fail(kRoot);
  if (mount("quillonid", kRoot, "tmpfs", 0, "mode=0755") != 0) return fail("tmpfs");
  char home[PATH_MAX];
  snprintf(home, sizeof home, "%s/home", kRoot);
  if (!bind_folder("", "", "home")) return 0;
  if (mkdir(home, 0755) != 0) return fail(home);
  if (access("/home", F_OK) == 0 && !bind_folder("/home", "/home", "quillon")) return 0;
  snprintf(home, sizeof home, "%s/home/quillon", kRoot);
  if (mkdir(home, 0755) != 0) return fail(home);
  char here[PATH_MAX];
  if (!getcwd(here, sizeof here)) return fail("working folder");
  if (chroot(kRoot) != 0) return fail("chroot");
  if (chdir(here) != 0) return fail(here);
  return 1;
}

// Becomes the program, run by the words of QL_RUN_UNDER where there are some.
static int run(char** program) {
  char* words[128];
  size_t count = 0;
  char* under = getenv("QL_RUN_UNDER");
  under = under ? strdup(under) : NULL;
  unsetenv("QL_RUN_UNDER");
  for (char* word = under ? strtok(under, " \n") : NULL; word; word = strtok(NULL, " \n")) {
    if (count < 32) words[count++] = word;
  }
  while (*program && count < sizeof words / sizeof *words - 1) words[count++] = *program++;
  words[count] = NULL;
  execvp(words[0], words);
  fprintf(stderr, "with-private-root: %s: %s\n", words[0], strerror(errno));
  return 127;
}

int main(int argc, char** argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: with-private-root PROGRAM [ARGUMENT...]\n");
    return 2;
  }
  if (!getenv("QL_PRIVATE_ROOT")) {
    if (make_root()) {
      setenv("QL_PRIVATE_ROOT", "1", 1);
    } else {
      fprintf(stderr, "with-private-root: no private root here (%s)\n", problem);
    }
  }
  return run(argv + 1);
}
