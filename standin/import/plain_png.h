#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace marrowfen::standin {

// A small PNG file of one colour; without alpha where that is 255.
std::string plainPng(const std::array<uint8_t, 4>& color);

}  // namespace marrowfen::standin
