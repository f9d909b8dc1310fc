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

void putOnLargePages([[maybe_unused]] const void* block, [[maybe_unused]] size_t bytes) {
#ifdef __GLIBC__
    constexpr uintptr_t kInSmallPages = 1 << 20;
    const auto begin = reinterpret_cast<uintptr_t>(block);
    const uintptr_t first = ((begin + kInSmallPages) / kLargePage + 1) * kLargePage;
    const uintptr_t last = (begin + bytes) / kLargePage * kLargePage;
    if (first < last) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#endif
}

void putBlockOnLargePages([[maybe_unused]] size_t bytes) {
#ifdef __GLIBC__
    constexpr size_t kHead = 2 * sizeof(size_t);  // in front of a block
    keepInHeap(static_cast<int>(bytes + 4 * kLargePage));
    // Where the heap's last block would begin; it is larger than what is free between others.
    void* volatile probe = std::malloc(kLargePage);
    const auto end = reinterpret_cast<uintptr_t>(probe);
    std::free(probe);
    // [never used][small blocks, a large page][never used, as long][the block]
    const uintptr_t small = (end / kLargePage + 2) * kLargePage;
    static void* volatile theGap = std::malloc(small - end - kHead);
    if (theGap == nullptr) return;
    madvise(reinterpret_cast<void*>(small), kLargePage, MADV_HUGEPAGE);
    madvise(reinterpret_cast<void*>(small + 2 * kLargePage), bytes, MADV_HUGEPAGE);
    void* volatile forSmall = std::malloc(kLargePage - kHead);
    static void* volatile theSecondGap = std::malloc(kLargePage - kHead);
    if (theSecondGap != nullptr) std::free(forSmall);
#endif
}

}  // namespace marrowfen::standin
