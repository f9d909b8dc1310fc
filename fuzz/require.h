#pragma once

#include <cstdio>
#include <cstdlib>

// Stops a fuzz target where a property doesn't hold, in every build.
#define REQUIRE(property)                                                       \
    do {                                                                        \
        if (!(property)) {                                                      \
            std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #property); \
            std::abort();                                                       \
        }                                                                       \
    } while (false)
