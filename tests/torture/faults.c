/* SPDX-License-Identifier: GPL-3.0-or-later
 *
 * A system that fails, and one that remembers: preloaded before the program.
 * FAULT=KIND:N:once|on lets the N-th call of a kind fail, alone or with all that follow. The file that
 * FAULT_REACHED names appears when the first one has failed.
 * Beside single calls there are: "short", a write that takes half; "torn", one after which the disk is full;
 * "broken", the same where cutting back fails too.
 * TRACE=FILE keeps what happens to raw logs, a line an event: seconds, what, path, two numbers, bytes.
 * Standard output and error never fail: they carry what the program says of it.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

extern void* __libc_malloc(size_t);

static char kind[16];
static long from, once;
static int trace = -1;
static atomic_long calls;
static atomic_int full; /* the file whose next write fails */
static atomic_int armed; /* memory fails from the first file on: before it there is only the runtime */
static pthread_mutex_t tracing = PTHREAD_MUTEX_INITIALIZER;

#define NEXT(name) ((typeof(&name))dlsym(RTLD_NEXT, #name))

__attribute__((constructor)) static void begin(void) {
    const char* fault = getenv("FAULT");
    char mode[8] = "";
    if (fault && sscanf(fault, "%15[a-z]:%ld:%7s", kind, &from, mode) == 3)
        once = strcmp(mode, "once") == 0;
    const char* path = getenv("TRACE");
    if (path)
        trace = (int)syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
}

static int fails(const char* what, int error) {
    if (strcmp(what, kind) != 0)
        return 0;
    const long call = atomic_fetch_add(&calls, 1) + 1;
    if (call < from || (once && call > from))
        return 0;
    if (call == from)
        syscall(SYS_close, syscall(SYS_openat, AT_FDCWD, getenv("FAULT_REACHED"), O_WRONLY | O_CREAT, 0600));
    errno = error;
    return 1;
}

static int is_raw(const char* path) {
    const size_t length = strlen(path);
    return trace >= 0 && length > 4 && strcmp(path + length - 4, ".raw") == 0;
}

static const char* raw_path(int file, char path[PATH_MAX]) {
    char link[64];
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t length = trace < 0 ? -1 : readlink(link, path, PATH_MAX - 1);
    path[length < 0 ? 0 : length] = 0;
    return is_raw(path) ? path : NULL;
}

static double now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec * 1e-9;
}

static void note(const char* what, const char* path, double first, double second, const unsigned char* bytes, size_t count) {
    char* line = __libc_malloc(PATH_MAX + 128 + 2 * count);
    int length = sprintf(line, "%.6f\t%s\t%s\t%.6f\t%.6f\t", now(), what, path, first, second);
    for (size_t i = 0; i < count; ++i)
        length += sprintf(line + length, "%02x", bytes[i]);
    line[length++] = '\n';
    syscall(SYS_write, trace, line, length);
    free(line);
}

static int open_at(int folder, const char* path, int flags, mode_t mode) {
    atomic_store(&armed, 1);
    if (fails("open", flags & O_CREAT ? ENOSPC : EMFILE))
        return -1;
    const int file = (int)syscall(SYS_openat, folder, path, flags, mode);
    if (file >= 0 && (flags & O_CREAT) && is_raw(path))
        note("create", path, 0, 0, NULL, 0);
    return file;
}

#define MODE_OF(flags)                                                                                                 \
    va_list list;                                                                                                      \
    va_start(list, flags);                                                                                             \
    const mode_t mode = flags & O_CREAT ? va_arg(list, mode_t) : 0;                                                    \
    va_end(list)

int open(const char* path, int flags, ...) {
    MODE_OF(flags);
    return open_at(AT_FDCWD, path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    MODE_OF(flags);
    return open_at(AT_FDCWD, path, flags, mode);
}

ssize_t write(int file, const void* bytes, size_t count) {
    char path[PATH_MAX];
    if (file > 2 && fails("write", ENOSPC))
        return -1;
    if (file > 2 && file == atomic_exchange(&full, 0)) {
        errno = ENOSPC;
        return -1;
    }
    if (file > 2 && count > 1 && fails("short", 0))
        count /= 2;
    if (file > 2 && count > 1 && (fails("torn", 0) || fails("broken", 0))) {
        count /= 2;
        atomic_store(&full, file);
    }
    const int raw = trace >= 0 && raw_path(file, path) != NULL;
    if (raw) { /* the order of the trace is that of the disk */
        pthread_mutex_lock(&tracing);
        note("write", path, (double)lseek(file, 0, SEEK_CUR), 0, bytes, count);
    }
    const ssize_t written = syscall(SYS_write, file, bytes, count);
    if (raw)
        pthread_mutex_unlock(&tracing);
    return written;
}

static int synchronise(int file, long number) {
    char path[PATH_MAX];
    if (fails("sync", EIO)) {
        usleep(300000); /* a disk that fails takes its time */
        errno = EIO;
        return -1;
    }
    const double begun = now();
    const int result = (int)syscall(number, file);
    if (trace >= 0 && raw_path(file, path))
        note("sync", path, begun, 0, NULL, 0);
    return result;
}

int fsync(int file) {
    return synchronise(file, SYS_fsync);
}

int fdatasync(int file) {
    return synchronise(file, SYS_fdatasync);
}

int close(int file) {
    const int result = file > 2 && fails("close", EIO);
    const int error = errno;
    const int closed = (int)syscall(SYS_close, file);
    if (result)
        errno = error;
    return result ? -1 : closed;
}

int ftruncate(int file, off_t size) {
    char path[PATH_MAX];
    if (fails("truncate", EIO))
        return -1;
    if (strcmp(kind, "broken") == 0 && access(getenv("FAULT_REACHED"), F_OK) == 0) {
        errno = EIO;
        return -1;
    }
    if (trace >= 0 && raw_path(file, path))
        note("truncate", path, (double)size, 0, NULL, 0);
    return (int)syscall(SYS_ftruncate, file, size);
}

int ftruncate64(int file, off_t size) {
    return ftruncate(file, size);
}

int unlink(const char* path) {
    if (fails("unlink", EIO))
        return -1;
    if (is_raw(path))
        note("unlink", path, 0, 0, NULL, 0);
    return (int)syscall(SYS_unlinkat, AT_FDCWD, path, 0);
}

int flock(int file, int operation) {
    return fails("flock", EWOULDBLOCK) ? -1 : (int)syscall(SYS_flock, file, operation);
}

int poll(struct pollfd* files, nfds_t count, int milliseconds) {
    return fails("poll", ENOMEM) ? -1 : NEXT(poll)(files, count, milliseconds);
}

ssize_t read(int file, void* bytes, size_t count) {
    return fails("read", EIO) ? -1 : (ssize_t)syscall(SYS_read, file, bytes, count);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* how, void* (*body)(void*), void* argument) {
    return fails("thread", 0) ? EAGAIN : NEXT(pthread_create)(thread, how, body, argument);
}

void* malloc(size_t size) {
    return atomic_load(&armed) && fails("memory", ENOMEM) ? NULL : __libc_malloc(size);
}
