#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace marrowfen {

// A set over the members 0 to size() - 1, kept as bits. Files store it as 32-bit words, bit i in bit (i mod 32) of
// word (i / 32).
class IndexSet {
public:
    void resize(size_t size) { bits_.resize(size); }
    size_t size() const { return bits_.size(); }

    void set(size_t i, bool member = true) { bits_[i] = member; }
    bool test(size_t i) const { return bits_[i]; }

    // How many members there are.
    size_t count() const { return static_cast<size_t>(std::count(bits_.begin(), bits_.end(), true)); }

    bool operator==(const IndexSet&) const = default;

private:
    std::vector<bool> bits_;
};

}  // namespace marrowfen
