#include "allocations.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint64_t> allocations{0};

// The benchmarks have one thread.
std::size_t out = 0;
std::size_t peak = 0;
std::size_t base = 0;

}  // namespace

std::uint64_t vento::bench::Allocations() {
    return allocations;
}

std::size_t vento::bench::PeakBytes() {
    return peak - base;
}

void vento::bench::ForgetPeak() {
    peak = base = out;
}

// NOLINTBEGIN(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory,misc-new-delete-overloads)
void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    void* const memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    out += malloc_usable_size(memory);
    peak = std::max(peak, out);
    return memory;
}
void operator delete(void* memory) noexcept {
    out -= malloc_usable_size(memory);
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}
// NOLINTEND(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory,misc-new-delete-overloads)
