#include "faults/fault_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>

namespace selvane::faults {

namespace {

Counter* armed = nullptr;
bool syncs_ignored = false;

// Counts the call. True when it is to fail; kills where that is asked for.
bool IsDue(Calls calls, bool needs_room, const char* name, const char* path) {
  if (armed == nullptr || armed->calls != calls) return false;
  const long count = ++armed->count;
  if (count == armed->chosen) std::snprintf(armed->call, sizeof armed->call, "%s %s", name, path);
  return armed->fault != Fault::kNone &&
         (count == armed->chosen || (count > armed->chosen && armed->fault == Fault::kOnward && needs_room));
}

int Failed(int error) {
  if (armed->fault == Fault::kKill) ::raise(SIGKILL);
  errno = armed->fault == Fault::kOnward ? ENOSPC : error;
  return -1;
}

// What the library of Roaring sets allocates has no faults: it does not look whether there was memory.
bool IsOfRoaring(const void* caller) {
  Dl_info about{};
  return ::dladdr(caller, &about) != 0 && std::strstr(about.dli_fname, "libroaring") != nullptr;
}

bool IsMemoryDue(const void* caller) {
  if (!IsDue(Calls::kMemory, true, "allocation", "") || IsOfRoaring(caller)) return false;
  errno = ENOMEM;
  return true;
}

template <typename Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

void Arm(Counter& counter) {
  armed = &counter;
}

void IgnoreSyncs() {
  syncs_ignored = true;
}

}  // namespace selvane::faults

using namespace selvane::faults;  // NOLINT

// `next` is the system's own function, or the sanitizer's.
#define NEXT(name) static const auto next = Next<decltype(&::name)>(#name)
#define REPLACE(name, parameters, arguments, path, needs_room, error)                      \
  int name parameters {                                                                    \
    NEXT(name);                                                                            \
    return IsDue(Calls::kFiles, needs_room, #name, path) ? Failed(error) : next arguments; \
  }
// Messages get through. Of what a full disk or a kill cuts off, half is written.
#define REPLACE_WRITE(name, parameters, arguments, half)                                        \
  ssize_t name parameters {                                                                     \
    NEXT(name);                                                                                 \
    if (file == STDERR_FILENO || !IsDue(Calls::kFiles, true, #name, "")) return next arguments; \
    if (armed->fault != Fault::kOnce) static_cast<void>(next half);                             \
    return Failed(EIO);                                                                         \
  }
#define REPLACE_OPEN(name)                                                                      \
  int name(const char* path, int flags, ...) {                                                  \
    NEXT(name);                                                                                 \
    va_list rest;                                                                               \
    va_start(rest, flags);                                                                      \
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;        \
    va_end(rest);                                                                               \
    return IsDue(Calls::kFiles, (flags & O_CREAT) != 0, #name, path) ? Failed(EMFILE)           \
                                                                     : next(path, flags, mode); \
  }

extern "C" {

REPLACE_OPEN(open)
REPLACE_OPEN(open64)
REPLACE_WRITE(write, (int file, const void* bytes, std::size_t size), (file, bytes, size),
              (file, bytes, size / 2))
REPLACE_WRITE(pwrite64, (int file, const void* bytes, std::size_t size, off64_t at), (file, bytes, size, at),
              (file, bytes, size / 2, at))
REPLACE(ftruncate64, (int file, off64_t size) noexcept, (file, size), "", true, EIO)
REPLACE(rename, (const char* path, const char* to) noexcept, (path, to), path, false, EIO)
REPLACE(renameat2, (int a, const char* path, int b, const char* to, unsigned flags) noexcept,
        (a, path, b, to, flags), path, false, EIO)
REPLACE(link, (const char* path, const char* to) noexcept, (path, to), path, true, EIO)
REPLACE(unlink, (const char* path) noexcept, (path), path, false, EIO)
REPLACE(remove, (const char* path) noexcept, (path), path, false, EIO)
REPLACE(mkdir, (const char* path, mode_t mode) noexcept, (path, mode), path, true, EIO)
REPLACE(fchmod, (int file, mode_t mode) noexcept, (file, mode), "", false, EIO)
REPLACE(fchown, (int file, uid_t user, gid_t group) noexcept, (file, user, group), "", false, EIO)

#define REPLACE_SYNC(name)                                         \
  int name(int file) {                                             \
    NEXT(name);                                                    \
    if (IsDue(Calls::kFiles, true, #name, "")) return Failed(EIO); \
    return syncs_ignored ? 0 : next(file);                         \
  }
REPLACE_SYNC(fsync)
REPLACE_SYNC(fdatasync)

// What is closed is closed, whatever the answer.
int close(int file) {
  NEXT(close);
  const bool is_due = IsDue(Calls::kFiles, false, "close", "");
  if (is_due && armed->fault == Fault::kKill) ::raise(SIGKILL);
  const int result = next(file);
  return is_due ? Failed(EIO) : result;
}

int flock(int file, int operation) noexcept {
  NEXT(flock);
  return IsDue(Calls::kFiles, false, "flock", "") ? Failed(ENOLCK) : next(file, operation);
}

int fcntl64(int file, int command, ...) {
  NEXT(fcntl64);
  va_list rest;
  va_start(rest, command);
  void* const argument = va_arg(rest, void*);
  va_end(rest);
  const bool locks = command == F_SETLK && static_cast<struct flock*>(argument)->l_type != F_UNLCK;
  return locks && IsDue(Calls::kFiles, false, "lock", "") ? Failed(EACCES) : next(file, command, argument);
}

// Names that are made of the time are the same in all runs.
std::time_t time(std::time_t* result) noexcept {
  NEXT(time);
  const std::time_t now = armed != nullptr ? 1'000'000'000 : next(nullptr);
  if (result != nullptr) *result = now;
  return now;
}

// No guarded static: the system allocates while it looks for its own functions.
#define REPLACE_MEMORY(name, parameters, arguments)                             \
  void* name parameters noexcept {                                              \
    static decltype(&::name) next = nullptr;                                    \
    if (next == nullptr) next = Next<decltype(&::name)>(#name);                 \
    return IsMemoryDue(__builtin_return_address(0)) ? nullptr : next arguments; \
  }
REPLACE_MEMORY(malloc, (std::size_t size), (size))
REPLACE_MEMORY(calloc, (std::size_t count, std::size_t size), (count, size))
REPLACE_MEMORY(realloc, (void* old, std::size_t size), (old, size))

}  // extern "C"

#ifdef SELVANE_SANITIZED
// The sanitizer's own does not come by malloc.
void* operator new(std::size_t size) {
  static const auto next = Next<void* (*)(std::size_t)>("_Znwm");
  while (IsMemoryDue(nullptr)) {
    if (std::get_new_handler() == nullptr) throw std::bad_alloc();
    std::get_new_handler()();
  }
  return next(size);
}
#endif
