// Preloaded, it counts the allocations of a program (malloc, calloc, realloc; `new` ends there too), all threads', and
// says at the end how many there were.

#include <atomic>
#include <cstddef>
#include <cstdio>

namespace {

std::atomic<unsigned long> count;

[[gnu::destructor]] void sayCount() { std::fprintf(stderr, "allocations: %lu\n", count.load()); }

}  // namespace

// glibc lets a library put its own functions in front of the allocator's.
extern "C" {
void* __libc_malloc(size_t size);                  // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(size_t number, size_t size);   // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* pointer, size_t size);  // NOLINT(bugprone-reserved-identifier)

[[gnu::visibility("default")]] void* malloc(size_t size) {
    ++count;
    return __libc_malloc(size);
}

[[gnu::visibility("default")]] void* calloc(size_t number, size_t size) {
    ++count;
    return __libc_calloc(number, size);
}

[[gnu::visibility("default")]] void* realloc(void* pointer, size_t size) {
    ++count;
    return __libc_realloc(pointer, size);
}
}
