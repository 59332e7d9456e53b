// Only in programs built with ThreadSanitizer.

#include <dlfcn.h>

#include <cstdarg>
#include <cstdlib>
#include <sys/types.h>

/// QProcess starts programs by clone() with CLONE_VM | CLONE_VFORK: until it executes the program,
/// the child uses the parent's memory. ThreadSanitizer's clone() takes every child for a copy and
/// marks it as not to be watched any more, and so stops watching the thread that started it: the
/// locks of that thread go unseen from then on, and all they guard seems to race. This one, found
/// before that one, goes straight to the C library.
extern "C" int clone(int (*function)(void*), void* stack, int flags, void* argument, ...)
{
    using Clone = int (*)(int (*)(void*), void*, int, void*, ...);
    static const auto real = [] {
        void* const library = dlopen("libc.so.6", RTLD_NOLOAD | RTLD_LAZY);
        return library == nullptr ? nullptr : reinterpret_cast<Clone>(dlsym(library, "clone"));
    }();
    if (real == nullptr) {
        std::abort();
    }
    std::va_list rest;
    va_start(rest, argument);
    auto* const parentThread = va_arg(rest, pid_t*);
    auto* const storage = va_arg(rest, void*);
    auto* const childThread = va_arg(rest, pid_t*);
    va_end(rest);
    return real(function, stack, flags, argument, parentThread, storage, childThread);
}
