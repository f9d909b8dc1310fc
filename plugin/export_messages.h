#pragma once

#include "ground/message.h"

namespace marrowfen::plugin {

// Hears from now on what exports have to tell an artist, besides their log; none for nobody. For a program that has
// the plug-in built in: the host itself doesn't ask.
void listenToExports(MessageListener listener);

}  // namespace marrowfen::plugin
