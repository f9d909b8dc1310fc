#pragma once

// The five functions that the host finds in the plug-in's library. All of them run on the host's user-interface thread.

#include <cstddef>
#include <cstdint>

namespace marrowfen::plugin {
inline constexpr size_t kDataBlockSize = 100;
}

extern "C" {

// The plug-in interface version that the plug-in is built for.
int32_t tsxGetVersion();

// Copies the block that describes the plug-in, of kDataBlockSize bytes, to the destination and asks the host for its
// main view window, which will own the panel. The second word is kept; nothing looks at it. Answers 0.
//   0: module name, 32 bytes, zero-padded;  32: maker's name, 64 bytes, zero-padded
//   96: resource number of the icon bitmap, unsigned 16-bit;  98: 1, unsigned 16-bit
int32_t tsxGetData(void* destination, void* secondWord);

// Opens the panel, or gives the open one the keyboard focus, and answers 2; with a host that is too old, says so and
// answers 0.
int32_t tsxOnLeftClick();

// Does nothing.
void tsxOnRightClick();

// Closes the panel if it is open.
void tsxDeactivate();

}  // extern "C"
