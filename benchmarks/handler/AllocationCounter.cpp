#include "AllocationCounter.h"

#include <cerrno>
#include <cstddef>

// Stands in front of the allocation functions of the whole program: of C's, which C++'s call and the JSON library calls
// too. For a program with one thread.

extern "C" {
void* __libc_malloc(std::size_t size);                           // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size);        // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* block, std::size_t size);             // NOLINT(bugprone-reserved-identifier)
void* __libc_memalign(std::size_t alignment, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
}

namespace Benchmarks {

namespace {

HeapRequests requests;

void note(std::size_t size) {
    ++requests.allocations;
    requests.bytes += static_cast<long>(size);
}

}  // namespace

HeapRequests heapRequests() {
    return requests;
}

}  // namespace Benchmarks

extern "C" {
void* malloc(std::size_t size) noexcept {
    Benchmarks::note(size);
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    Benchmarks::note(count * size);
    return __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
    Benchmarks::note(size);
    return __libc_realloc(block, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    Benchmarks::note(size);
    return __libc_memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    *block = aligned_alloc(alignment, size);  // NOLINT(cppcoreguidelines-owning-memory)
    return *block == nullptr ? ENOMEM : 0;
}
}
