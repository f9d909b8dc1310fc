#pragma once

#include "ground/message.h"

namespace marrowfen::plugin {

// Told besides what the builder tells. An artist isn't: the log and the boxes have their stated texts.
inline constexpr MessageKind kWriteFailed = {"WRITE_FAILED", Severity::Error, "a file couldn't be written whole"};
inline constexpr MessageKind kNoMemory = {"NO_MEMORY", Severity::Error, "out of memory"};

// Hears from now on what exports have to tell an artist, besides their log; none for nobody. For a program that has
// the plug-in built in: the host itself doesn't ask.
void listenToExports(MessageListener listener);

}  // namespace marrowfen::plugin
