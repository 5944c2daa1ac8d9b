/* SPDX-License-Identifier: GPL-3.0-or-later
 *
 * A disk that takes nothing: preloaded before the program, it holds every write and synchronisation of
 * a raw log while the file that STALLED_WHILE names is there.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

static int is_raw_log(int file) {
    char link[64], path[PATH_MAX];
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t length = readlink(link, path, sizeof path);
    return length > 4 && memcmp(path + length - 4, ".raw", 4) == 0;
}

static void wait_for_disk(int file) {
    const char* flag = getenv("STALLED_WHILE");
    const struct timespec pause = {0, 5000000};
    while (flag && is_raw_log(file) && access(flag, F_OK) == 0)
        nanosleep(&pause, NULL);
}

ssize_t write(int file, const void* bytes, size_t count) {
    ssize_t (*next)(int, const void*, size_t) = dlsym(RTLD_NEXT, "write");
    wait_for_disk(file);
    return next(file, bytes, count);
}

int fsync(int file) {
    int (*next)(int) = dlsym(RTLD_NEXT, "fsync");
    wait_for_disk(file);
    return next(file);
}

int fdatasync(int file) {
    int (*next)(int) = dlsym(RTLD_NEXT, "fdatasync");
    wait_for_disk(file);
    return next(file);
}
