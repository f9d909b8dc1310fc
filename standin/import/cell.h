#pragma once

namespace marrowfen::standin {

// Takes from this process, for good, everything that reading a model doesn't need: it may read files and its memory,
// write to what is open and end itself. It can't open a file to write, make, move or remove one, use the network,
// start a program or a process, or reach another one. What the kernel can't do stays allowed.
void closeCell();

}  // namespace marrowfen::standin
