#pragma once

#include <string>
#include <vector>

namespace marrowfen::standin {

// Takes from this process, for good, everything that reading a model doesn't need: it may read the files and folders
// that are named, with what is below them, and its memory, write to what is open and end itself. It can't open any
// other file, nor one to write, make, move or remove one, use the network, start a program or a process, or reach
// another one. What the kernel can't do stays allowed: reading any file where it has no Landlock (5.13), and all but
// the growth of files and new processes where it has no filters.
void closeCell(const std::vector<std::string>& readable);

// Makes what is the same in each cell, which takes longer than all the rest. A process does that once, before it makes
// those that close theirs.
void prepareCell();

}  // namespace marrowfen::standin
