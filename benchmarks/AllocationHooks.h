#pragma once

#include <cstddef>

// For one source of a program, or of a library that is preloaded: it says what is to be done at each allocation
// (malloc, calloc, realloc; `new` ends there too). glibc lets these functions stand in front of the allocator's own.

void countAllocation();

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t number, size_t size);
void* __libc_realloc(void* pointer, size_t size);

[[gnu::visibility("default")]] void* malloc(size_t size) {
    countAllocation();
    return __libc_malloc(size);
}

[[gnu::visibility("default")]] void* calloc(size_t number, size_t size) {
    countAllocation();
    return __libc_calloc(number, size);
}

[[gnu::visibility("default")]] void* realloc(void* pointer, size_t size) {
    countAllocation();
    return __libc_realloc(pointer, size);
}
}
