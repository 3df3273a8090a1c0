#include "Steps.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is of POSIX
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <map>

namespace {

namespace fs = std::filesystem;

struct Opened {
    bool isNew = false;
    bool hasRoom = true;
};

struct Followed {
    steps::Plan plan;
    int count = 0;
    std::map<int, Opened> files;  // by descriptor
};

Followed& followed() {
    static Followed one;  // the wrapped calls cannot find it anywhere else
    return one;
}

void step() {
    if (++followed().count == followed().plan.killAt) {
        kill(getpid(), SIGKILL);
    }
}

bool liesIn(const char* path, const std::string& folder) {
    return !folder.empty() && fs::path(path).parent_path() == folder;
}

int refuse(int reason) {
    errno = reason;
    return -1;
}

}  // namespace

void steps::follow(const Plan& plan) {
    followed() = {plan, 0, {}};
}

// The names are the linker's.
// NOLINTBEGIN(bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp, cert-dcl50-cpp)
extern "C" {

int __real_open(const char* path, int flags, ...);
ssize_t __real_write(int file, const void* bytes, size_t size);
int __real_fsync(int file);
int __real_rename(const char* from, const char* to);
int __real_unlink(const char* path);
int __real_ftruncate(int file, off_t size);
int __real_fallocate(int file, int mode, off_t offset, off_t size);
int __real_fchmod(int file, mode_t mode);
int __real_fchown(int file, uid_t user, gid_t group);
int __real_flock(int file, int operation);
int __real_mkdir(const char* path, mode_t mode);
int __real_fsetxattr(int file, const char* name, const void* value, size_t size, int flags);

int __wrap_open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    step();
    const bool isMade = (flags & O_CREAT) != 0;
    if (isMade && liesIn(path, followed().plan.readOnlyFolder)) {
        return refuse(EACCES);
    }
    const int file = __real_open(path, flags, mode);
    followed().files[file] = {isMade, !isMade || !liesIn(path, followed().plan.fullFolder)};
    return file;
}

ssize_t __wrap_write(int file, const void* bytes, size_t size) {
    step();
    if (!followed().files[file].hasRoom) {
        return refuse(ENOSPC);
    }
    if (followed().plan.failingWrites > 0 && !followed().files[file].isNew) {
        --followed().plan.failingWrites;
        __real_write(file, bytes, size / 2);
        return refuse(EIO);
    }
    if (followed().count + 1 == followed().plan.killAt) {
        __real_write(file, bytes, size / 2);
    }
    step();
    return __real_write(file, bytes, size);
}

// A kill loses no written data; only a power cut would.
int __wrap_fsync(int /*file*/) {
    step();
    return 0;
}

int __wrap_rename(const char* from, const char* to) {
    step();
    return __real_rename(from, to);
}

int __wrap_unlink(const char* path) {
    step();
    return __real_unlink(path);
}

int __wrap_ftruncate(int file, off_t size) {
    step();
    return __real_ftruncate(file, size);
}

int __wrap_fallocate(int file, int mode, off_t offset, off_t size) {
    step();
    return __real_fallocate(file, mode, offset, size);
}

int __wrap_fchmod(int file, mode_t mode) {
    step();
    return __real_fchmod(file, mode);
}

int __wrap_fchown(int file, uid_t user, gid_t group) {
    step();
    return __real_fchown(file, user, group);
}

int __wrap_flock(int file, int operation) {
    step();
    return __real_flock(file, operation);
}

int __wrap_mkdir(const char* path, mode_t mode) {
    step();
    return __real_mkdir(path, mode);
}

int __wrap_fsetxattr(int file, const char* name, const void* value, size_t size, int flags) {
    step();
    return followed().plan.refusesAttributes ? refuse(EPERM) : __real_fsetxattr(file, name, value, size, flags);
}
}
// NOLINTEND(bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp, cert-dcl50-cpp)
