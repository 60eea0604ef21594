// SPDX-License-Identifier: MIT
//
// Preloaded into the program, makes chosen system calls and allocations fail. It counts only calls
// made by main(), and of calls on files only those on files below one folder, so that the counts of
// a run do not vary.
//
//   KRADDON_FAULT         what fails: RULE[;RULE...], each FAMILY[,FAMILY...]:N[+]:HOW
//                         the N-th call of these families, with + every one from the N-th on;
//                         HOW is an error (EIO, ENOSPC, ...), "short" (half of the requested size),
//                         "lost" (rename and link succeed, but return EINTR), or a signal
//                         that arrives just before the call (SIGKILL, SIGSTOP, ...)
//   KRADDON_FAULT_FOLDER  the folder, without links
//   KRADDON_FAULT_REPORT  a file that gets the line "hit" for each call that was changed, and at
//                         the end the line "counts FAMILY=NUMBER ..."
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

enum Family {
  kOpen,
  kNameless,
  kRead,
  kWrite,
  kCopy,
  kSync,
  kFolderSync,
  kRename,
  kRenameKeeping,
  kLink,
  kTruncate,
  kClose,
  kUnlink,
  kAttribute,
  kExtended,
  kFolder,
  kListing,
  kStatus,
  kMemory,
  kDate,
  kFamilies
};

static const char* const kNames[kFamilies] = {
    "open",     "nameless",      "read",    "write",    "copy",   "sync",   "foldersync",
    "rename",   "renamekeeping", "link",    "truncate", "close",  "unlink", "attribute",
    "extended", "folder",        "listing", "status",   "memory", "date"};

static const struct {
  const char* name;
  int number;
} kErrors[] = {{"EIO", EIO},       {"ENOSPC", ENOSPC},         {"EINTR", EINTR},
               {"EDQUOT", EDQUOT}, {"ENOSYS", ENOSYS},         {"EXDEV", EXDEV},
               {"EINVAL", EINVAL}, {"EOPNOTSUPP", EOPNOTSUPP}, {"EACCES", EACCES},
               {"EPERM", EPERM},   {"EMFILE", EMFILE},         {"ENOMEM", ENOMEM},
               {"EISDIR", EISDIR}};
static const struct {
  const char* name;
  int number;
} kSignals[] = {{"SIGKILL", SIGKILL},
                {"SIGINT", SIGINT},
                {"SIGTERM", SIGTERM},
                {"SIGHUP", SIGHUP},
                {"SIGSTOP", SIGSTOP}};

struct Rule {
  int families[kFamilies];
  unsigned long at;
  int isLasting;
  int error;  // 0: none
  int signal;
  int isShort;
  int isLost;
  unsigned long seen;
};

enum Outcome { kPass, kFail, kShort, kLost };
enum { kMaxRules = 4 };

static struct Rule rules[kMaxRules];
static size_t ruleCount;
static unsigned long counts[kFamilies];
static const char* folder;
static size_t folderLength;
static const char* report;
static int isActive;

#define LENGTH(array) (sizeof(array) / sizeof *(array))

static void tell(const char* line) {
  if (report == NULL) return;
  const long file =
      syscall(SYS_openat, AT_FDCWD, report, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (file < 0) return;
  syscall(SYS_write, file, line, strlen(line));
  syscall(SYS_close, file);
}

static void refuse(const char* what) {
  dprintf(STDERR_FILENO, "failing_calls: bad rule: %s\n", what);
  _exit(99);
}

static void parseFamilies(struct Rule* rule, char* text) {
  char* rest = NULL;
  for (char* word = strtok_r(text, ",", &rest); word != NULL; word = strtok_r(NULL, ",", &rest)) {
    int family = 0;
    while (family < kFamilies && strcmp(kNames[family], word) != 0) ++family;
    if (family == kFamilies) refuse(word);
    rule->families[family] = 1;
  }
}

static void parseHow(struct Rule* rule, const char* how) {
  rule->isShort = strcmp(how, "short") == 0;
  rule->isLost = strcmp(how, "lost") == 0;
  for (size_t i = 0; i < LENGTH(kErrors); ++i) {
    if (strcmp(kErrors[i].name, how) == 0) rule->error = kErrors[i].number;
  }
  for (size_t i = 0; i < LENGTH(kSignals); ++i) {
    if (strcmp(kSignals[i].name, how) == 0) rule->signal = kSignals[i].number;
  }
  if (!rule->isShort && !rule->isLost && rule->error == 0 && rule->signal == 0) refuse(how);
}

static void parseRule(char* text) {
  char* rest = NULL;
  char* families = strtok_r(text, ":", &rest);
  char* at = strtok_r(NULL, ":", &rest);
  char* how = strtok_r(NULL, ":", &rest);
  if (how == NULL || ruleCount == kMaxRules) refuse(text);
  struct Rule* rule = &rules[ruleCount++];
  parseFamilies(rule, families);
  char* end = NULL;
  rule->at = strtoul(at, &end, 10);
  rule->isLasting = *end == '+';
  parseHow(rule, how);
}

static void readSettings(void) {
  folder = getenv("KRADDON_FAULT_FOLDER");
  folderLength = folder == NULL ? 0 : strlen(folder);
  report = getenv("KRADDON_FAULT_REPORT");
  const char* text = getenv("KRADDON_FAULT");
  if (text == NULL) return;
  static char copy[1024];
  if (strlen(text) >= sizeof copy) refuse(text);
  strcpy(copy, text);
  char* rest = NULL;
  for (char* one = strtok_r(copy, ";", &rest); one != NULL; one = strtok_r(NULL, ";", &rest)) {
    parseRule(one);
  }
}

static enum Outcome apply(const struct Rule* rule) {
  tell("hit\n");
  if (rule->signal != 0) {
    syscall(SYS_kill, getpid(), rule->signal);
    return kPass;
  }
  errno = rule->error;
  if (rule->isLost) return kLost;
  return rule->isShort ? kShort : kFail;
}

static enum Outcome next(enum Family family) {
  if (!isActive) return kPass;
  __atomic_fetch_add(&counts[family], 1, __ATOMIC_RELAXED);
  const int before = errno;
  for (size_t i = 0; i < ruleCount; ++i) {
    struct Rule* rule = &rules[i];
    if (!rule->families[family]) continue;
    const unsigned long number = __atomic_add_fetch(&rule->seen, 1, __ATOMIC_RELAXED);
    if (number < rule->at || (number > rule->at && !rule->isLasting)) continue;
    const enum Outcome outcome = apply(rule);
    if (outcome != kPass) return outcome;
  }
  errno = before;
  return kPass;
}

// The counts of a whole run, which bound the numbers that are worth trying.
__attribute__((destructor)) static void tellCounts(void) {
  isActive = 0;
  char line[1024] = "counts";
  size_t length = strlen(line);
  for (int family = 0; family < kFamilies; ++family) {
    length += (size_t)snprintf(line + length, sizeof line - length, " %s=%lu", kNames[family],
                               counts[family]);
  }
  snprintf(line + length, sizeof line - length, "\n");
  tell(line);
}

static int (*realMain)(int, char**, char**);

static int countedMain(int count, char** words, char** environment) {
  readSettings();
  isActive = 1;
  const int result = realMain(count, words, environment);
  isActive = 0;
  return result;
}

typedef int (*Start)(int (*)(int, char**, char**), int, char**, void (*)(void), void (*)(void),
                     void (*)(void), void*);

__attribute__((visibility("default"))) int __libc_start_main(int (*program)(int, char**, char**),
                                                             int count, char** words,
                                                             void (*init)(void), void (*fini)(void),
                                                             void (*linker)(void), void* stackEnd) {
  realMain = program;
  Start start = __extension__(Start) dlsym(RTLD_NEXT, "__libc_start_main");
  return start(countedMain, count, words, init, fini, linker, stackEnd);
}

// ---- which files count -----------------------------------------------------------------------

static int isOurs(const char* path) {
  if (folder == NULL || path == NULL) return 0;
  return path[0] != '/' || strncmp(path, folder, folderLength) == 0;
}

static int isOurFile(int descriptor) {
  if (!isActive || folder == NULL || descriptor <= STDERR_FILENO) return 0;
  char link[64];
  char path[PATH_MAX];
  snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
  const long length = syscall(SYS_readlinkat, AT_FDCWD, link, path, sizeof path);
  return length >= (long)folderLength && memcmp(path, folder, folderLength) == 0;
}

static int isFolder(int descriptor) {
  struct stat status;
  return syscall(SYS_newfstatat, descriptor, "", &status, AT_EMPTY_PATH) == 0 &&
         S_ISDIR(status.st_mode);
}

static enum Outcome nextAt(enum Family family, const char* path) {
  return isActive && isOurs(path) ? next(family) : kPass;
}

static enum Outcome nextOn(enum Family family, int descriptor) {
  const int before = errno;
  const int counted = isOurFile(descriptor);
  errno = before;
  return counted ? next(family) : kPass;
}

static size_t sizeFor(enum Outcome outcome, size_t size) {
  return outcome == kShort && size > 1 ? size / 2 : size;
}

// ---- calls -----------------------------------------------------------------------------------

#define EXPORT __attribute__((visibility("default")))
#define FAIL_AT(family, path) \
  if (nextAt(family, path) == kFail) return -1
#define FAIL_ON(family, descriptor) \
  if (nextOn(family, descriptor) == kFail) return -1

static int openFile(int at, const char* path, int flags, mode_t mode) {
  FAIL_AT((flags & O_TMPFILE) == O_TMPFILE ? kNameless : kOpen, path);
  return (int)syscall(SYS_openat, at, path, flags, mode);
}

static mode_t modeOf(int flags, va_list rest) {
  const int hasMode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
  return hasMode ? va_arg(rest, mode_t) : 0;
}

#define OPEN_FUNCTION(name)                           \
  EXPORT int name(const char* path, int flags, ...) { \
    va_list rest;                                     \
    va_start(rest, flags);                            \
    const mode_t mode = modeOf(flags, rest);          \
    va_end(rest);                                     \
    return openFile(AT_FDCWD, path, flags, mode);     \
  }
OPEN_FUNCTION(open)
OPEN_FUNCTION(open64)

#define OPENAT_FUNCTION(name)                                 \
  EXPORT int name(int at, const char* path, int flags, ...) { \
    va_list rest;                                             \
    va_start(rest, flags);                                    \
    const mode_t mode = modeOf(flags, rest);                  \
    va_end(rest);                                             \
    return openFile(at, path, flags, mode);                   \
  }
OPENAT_FUNCTION(openat)
OPENAT_FUNCTION(openat64)

#define MAKE_FUNCTION(name)                                                               \
  EXPORT int name(char* pattern, int flags) {                                             \
    FAIL_AT(kOpen, pattern);                                                              \
    int (*real)(char*, int) = __extension__(int (*)(char*, int)) dlsym(RTLD_NEXT, #name); \
    return real(pattern, flags);                                                          \
  }
MAKE_FUNCTION(mkostemp)
MAKE_FUNCTION(mkostemp64)

EXPORT ssize_t read(int file, void* into, size_t size) {
  const enum Outcome outcome = nextOn(kRead, file);
  return outcome == kFail ? -1 : syscall(SYS_read, file, into, sizeFor(outcome, size));
}

static ssize_t readAt(int file, void* into, size_t size, off_t offset) {
  const enum Outcome outcome = nextOn(kRead, file);
  return outcome == kFail ? -1 : syscall(SYS_pread64, file, into, sizeFor(outcome, size), offset);
}
EXPORT ssize_t pread(int file, void* into, size_t size, off_t offset) {
  return readAt(file, into, size, offset);
}
EXPORT ssize_t pread64(int file, void* into, size_t size, off_t offset) {
  return readAt(file, into, size, offset);
}

EXPORT ssize_t write(int file, const void* from, size_t size) {
  const enum Outcome outcome = nextOn(kWrite, file);
  return outcome == kFail ? -1 : syscall(SYS_write, file, from, sizeFor(outcome, size));
}

static ssize_t writeAt(int file, const void* from, size_t size, off_t offset) {
  const enum Outcome outcome = nextOn(kWrite, file);
  return outcome == kFail ? -1 : syscall(SYS_pwrite64, file, from, sizeFor(outcome, size), offset);
}
EXPORT ssize_t pwrite(int file, const void* from, size_t size, off_t offset) {
  return writeAt(file, from, size, offset);
}
EXPORT ssize_t pwrite64(int file, const void* from, size_t size, off_t offset) {
  return writeAt(file, from, size, offset);
}

EXPORT ssize_t copy_file_range(int from, off_t* start, int to, off_t* target, size_t size,
                               unsigned flags) {
  const enum Outcome outcome = nextOn(kCopy, to);
  if (outcome == kFail) return -1;
  return syscall(SYS_copy_file_range, from, start, to, target, sizeFor(outcome, size), flags);
}

EXPORT int fsync(int file) {
  FAIL_ON(isFolder(file) ? kFolderSync : kSync, file);
  return (int)syscall(SYS_fsync, file);
}
EXPORT int fdatasync(int file) {
  FAIL_ON(kSync, file);
  return (int)syscall(SYS_fdatasync, file);
}
EXPORT int syncfs(int file) {
  FAIL_ON(kFolderSync, file);
  return (int)syscall(SYS_syncfs, file);
}

static int answer(enum Outcome outcome, long result) {
  if (outcome != kLost) return (int)result;
  errno = EINTR;
  return -1;
}

static int renameFile(int at, const char* from, int to, const char* name, unsigned flags) {
  const enum Outcome outcome = nextAt(flags == 0 ? kRename : kRenameKeeping, from);
  if (outcome == kFail) return -1;
  return answer(outcome, syscall(SYS_renameat2, at, from, to, name, flags));
}
EXPORT int rename(const char* from, const char* to) {
  return renameFile(AT_FDCWD, from, AT_FDCWD, to, 0);
}
EXPORT int renameat(int at, const char* from, int to, const char* name) {
  return renameFile(at, from, to, name, 0);
}
EXPORT int renameat2(int at, const char* from, int to, const char* name, unsigned flags) {
  return renameFile(at, from, to, name, flags);
}
EXPORT int linkat(int at, const char* from, int to, const char* name, int flags) {
  const enum Outcome outcome = nextAt(kLink, from);
  if (outcome == kFail) return -1;
  return answer(outcome, syscall(SYS_linkat, at, from, to, name, flags));
}

EXPORT int ftruncate(int file, off_t size) {
  FAIL_ON(kTruncate, file);
  return (int)syscall(SYS_ftruncate, file, size);
}
EXPORT int ftruncate64(int file, off_t size) {
  FAIL_ON(kTruncate, file);
  return (int)syscall(SYS_ftruncate, file, size);
}
EXPORT int fallocate(int file, int mode, off_t offset, off_t size) {
  FAIL_ON(kTruncate, file);
  return (int)syscall(SYS_fallocate, file, mode, offset, size);
}

// The file is closed even if close() fails; only a delayed write error is simulated.
EXPORT int close(int file) {
  const enum Outcome outcome = nextOn(kClose, file);
  const int reported = errno;
  const int result = (int)syscall(SYS_close, file);
  if (outcome != kFail) return result;
  errno = reported;
  return -1;
}

EXPORT int unlink(const char* path) {
  FAIL_AT(kUnlink, path);
  return (int)syscall(SYS_unlinkat, AT_FDCWD, path, 0);
}
EXPORT int unlinkat(int at, const char* path, int flags) {
  FAIL_AT(kUnlink, path);
  return (int)syscall(SYS_unlinkat, at, path, flags);
}

EXPORT int fchmod(int file, mode_t mode) {
  FAIL_ON(kAttribute, file);
  return (int)syscall(SYS_fchmod, file, mode);
}
EXPORT int fchown(int file, uid_t user, gid_t group) {
  FAIL_ON(kAttribute, file);
  return (int)syscall(SYS_fchown, file, user, group);
}
EXPORT int futimens(int file, const struct timespec times[2]) {
  FAIL_ON(kAttribute, file);
  return (int)syscall(SYS_utimensat, file, NULL, times, 0);
}

EXPORT ssize_t getxattr(const char* path, const char* name, void* into, size_t size) {
  FAIL_AT(kExtended, path);
  return syscall(SYS_getxattr, path, name, into, size);
}
EXPORT ssize_t listxattr(const char* path, char* into, size_t size) {
  FAIL_AT(kExtended, path);
  return syscall(SYS_listxattr, path, into, size);
}
EXPORT int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) {
  FAIL_ON(kExtended, file);
  return (int)syscall(SYS_fsetxattr, file, name, value, size, flags);
}
EXPORT int fremovexattr(int file, const char* name) {
  FAIL_ON(kExtended, file);
  return (int)syscall(SYS_fremovexattr, file, name);
}

EXPORT int mkdir(const char* path, mode_t mode) {
  FAIL_AT(kFolder, path);
  return (int)syscall(SYS_mkdirat, AT_FDCWD, path, mode);
}
EXPORT int mkdirat(int at, const char* path, mode_t mode) {
  FAIL_AT(kFolder, path);
  return (int)syscall(SYS_mkdirat, at, path, mode);
}

EXPORT DIR* opendir(const char* path) {
  if (nextAt(kListing, path) == kFail) return NULL;
  DIR* (*real)(const char*) = __extension__(DIR * (*)(const char*)) dlsym(RTLD_NEXT, "opendir");
  return real(path);
}
EXPORT struct dirent* readdir(DIR* listing) {
  if (nextOn(kListing, dirfd(listing)) == kFail) return NULL;
  struct dirent* (*real)(DIR*) =
      __extension__(struct dirent * (*)(DIR*)) dlsym(RTLD_NEXT, "readdir");
  return real(listing);
}

EXPORT int stat(const char* path, struct stat* status) {
  FAIL_AT(kStatus, path);
  return (int)syscall(SYS_newfstatat, AT_FDCWD, path, status, 0);
}
EXPORT int lstat(const char* path, struct stat* status) {
  FAIL_AT(kStatus, path);
  return (int)syscall(SYS_newfstatat, AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}
EXPORT int fstat(int file, struct stat* status) {
  FAIL_ON(kStatus, file);
  return (int)syscall(SYS_newfstatat, file, "", status, AT_EMPTY_PATH);
}
EXPORT int fstatat(int at, const char* path, struct stat* status, int flags) {
  FAIL_AT(kStatus, path);
  return (int)syscall(SYS_newfstatat, at, path, status, flags);
}

EXPORT struct tm* gmtime_r(const time_t* time, struct tm* into) {
  if (next(kDate) == kFail) return NULL;
  struct tm* (*real)(const time_t*, struct tm*) =
      __extension__(struct tm * (*)(const time_t*, struct tm*)) dlsym(RTLD_NEXT, "gmtime_r");
  return real(time, into);
}

// ---- allocations -----------------------------------------------------------------------------

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* old, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

static int isOutOfMemory(void) {
  if (next(kMemory) != kFail) return 0;
  errno = ENOMEM;
  return 1;
}

EXPORT void* malloc(size_t size) {
  return isOutOfMemory() ? NULL : __libc_malloc(size);
}
EXPORT void* calloc(size_t count, size_t size) {
  return isOutOfMemory() ? NULL : __libc_calloc(count, size);
}
EXPORT void* realloc(void* old, size_t size) {
  return isOutOfMemory() ? NULL : __libc_realloc(old, size);
}
EXPORT void* aligned_alloc(size_t alignment, size_t size) {
  return isOutOfMemory() ? NULL : __libc_memalign(alignment, size);
}
EXPORT int posix_memalign(void** into, size_t alignment, size_t size) {
  if (isOutOfMemory()) return ENOMEM;
  *into = __libc_memalign(alignment, size);
  return *into == NULL ? ENOMEM : 0;
}
