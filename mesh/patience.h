#pragma once

#include <algorithm>
#include <cstdint>

namespace marrowfen {

// Says when to try again what may be in vain: after each failure in a row half as often, but never seldom enough to
// miss much.
class Patience {
public:
    bool isOver() {
        if (waits_ == 0) return true;
        --waits_;
        return false;
    }
    void tell(bool wasWorthwhile) {
        last_ = wasWorthwhile ? 0 : std::min(2 * last_ + 1, kMostWaits);
        waits_ = last_;
    }

private:
    static constexpr uint32_t kMostWaits = 63;
    uint32_t waits_ = 0, last_ = 0;
};

}  // namespace marrowfen
