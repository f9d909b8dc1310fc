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

void useLargePages([[maybe_unused]] size_t bytes) {
#ifdef __GLIBC__
    constexpr int kMostInHeap = 32 << 20;  // that the allocator agrees to
    constexpr size_t kFewestBytes = 16 << 20, kMostBytes = 256 << 20;
    constexpr uintptr_t kLargePage = 2 << 20;
    if (bytes < kFewestBytes) return;
    const auto room = static_cast<int>(std::min(bytes, kMostBytes));
    mallopt(M_MMAP_THRESHOLD, kMostInHeap);
    mallopt(M_TRIM_THRESHOLD, 2 * room);
    mallopt(M_TOP_PAD, room);
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

}  // namespace marrowfen::standin
