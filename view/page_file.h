#pragma once

#include <string>
#include <string_view>

namespace marrowfen::view {

// The viewer page with a binary glTF file in it: one file that needs nothing else. `page` is the page as
// scripts/build-viewer makes it. Empty when it isn't such a page.
std::string embedInPage(std::string_view page, std::string_view glb, std::string_view title);

}  // namespace marrowfen::view
