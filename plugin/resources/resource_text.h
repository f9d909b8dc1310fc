#pragma once

namespace marrowfen::plugin {

// resource.h and the resource script after it, as text; where there is no resource compiler.
extern const char* const kResourceText;

}  // namespace marrowfen::plugin
