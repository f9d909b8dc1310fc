#pragma once

#include <string>
#include <string_view>

#include "standin/host/json_document.h"

namespace marrowfen::standin {

// Reads a JSON text of plain values into what parseJson() makes of it, several times as fast as the library's parser.
// False for all other texts: those that aren't JSON, and a few rare right ones (a byte order mark, whole numbers of 19
// digits, numbers out of a double's range). The document is of no use then.
bool scanJson(const std::string& text, JsonDocument& into);

// The float nearest to the decimal digits, of which number is the nearest double.
float singleFromDigits(std::string_view digits, double number);

}  // namespace marrowfen::standin
