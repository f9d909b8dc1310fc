#include "standin/host/large_pages.h"

#ifdef __GLIBC__
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace marrowfen::standin {

namespace {

constexpr uintptr_t kLargePage = 2 << 20;

#ifdef __GLIBC__
constexpr int kMostInHeap = 32 << 20;  // of one block, that the allocator agrees to

// From here on large blocks come from the heap, which grows by the room and doesn't shrink.
void keepInHeap(int room) {
    mallopt(M_MMAP_THRESHOLD, kMostInHeap);
    mallopt(M_TRIM_THRESHOLD, 2 * room);
    mallopt(M_TOP_PAD, room);
}
#endif

}  // namespace

void useLargePages([[maybe_unused]] size_t bytes) {
#ifdef __GLIBC__
    constexpr size_t kFewestBytes = 16 << 20, kMostBytes = 256 << 20;
    if (bytes < kFewestBytes) return;
    const auto room = static_cast<int>(std::min(bytes, kMostBytes));
    keepInHeap(room);
    const auto before = reinterpret_cast<uintptr_t>(sbrk(0));
    // More than is free, so that the heap grows by the room.
    const size_t more = mallinfo2().fordblks + (1 << 20);
    void* volatile grown = std::malloc(std::min(more, size_t{kMostInHeap} - 1));
    std::free(grown);
    const uintptr_t first = (before / kLargePage + 1) * kLargePage;
    const uintptr_t last = reinterpret_cast<uintptr_t>(sbrk(0)) / kLargePage * kLargePage;
    if (first < last) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#endif
}

void putBlockOnLargePages([[maybe_unused]] size_t bytes) {
#ifdef __GLIBC__
    // More than what is free between other blocks may be.
    constexpr size_t kForSmall = kLargePage, kFewestBetween = kLargePage;
    constexpr size_t kHead = 2 * sizeof(size_t);  // in front of a block
    keepInHeap(static_cast<int>(bytes + 2 * kLargePage));
    // [small blocks][between, never used][the block, at a large page's begin]
    void* volatile small = std::malloc(kForSmall);
    const uintptr_t between = reinterpret_cast<uintptr_t>(small) + kForSmall + kHead;
    const uintptr_t begin = ((between + kFewestBetween) / kLargePage + 1) * kLargePage;
    static void* volatile theBetween = std::malloc(begin - between - kHead);
    std::free(small);
    if (theBetween != nullptr) madvise(reinterpret_cast<void*>(begin), bytes, MADV_HUGEPAGE);
#endif
}

}  // namespace marrowfen::standin
