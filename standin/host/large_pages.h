#pragma once

#include <cstddef>

namespace marrowfen::standin {

// Gives the heap addresses for so many bytes more, in pages of 2 MB. What becomes large has its memory sooner: pages of
// 4 KB come one by one, each by a fault, which takes as long as filling it. Nothing is done for less than 16 MB.
void useLargePages(size_t bytes);

// What comes to lie in a block of many megabytes has its memory in large pages, but for the first megabyte: little is
// better off in small ones.
void putOnLargePages(const void* block, size_t bytes);

// The next block of so many bytes, whole large pages, is going to begin at one's begin, and smaller ones lie on one of
// their own. (Unless the heap has room of such a size between other blocks.)
void putBlockOnLargePages(size_t bytes);

}  // namespace marrowfen::standin
