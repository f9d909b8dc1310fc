#include "mesh/list_pool.h"

#include <gtest/gtest.h>

#include "tests/plain/mesh_makers.h"

namespace marrowfen {
namespace {

// Around the room that a list begins with, around what it has next, and so long that its numbers are found by an index.
constexpr uint32_t kLengths[] = {8, 30, 3000};

TEST(ListPool, HoldsWhatPlainListsHold) {
    std::mt19937 random(1);
    ListPool pool(std::size(kLengths));
    std::vector<uint32_t> plain[std::size(kLengths)];
    for (int round = 0; round < 30000; ++round) {
        const uint32_t l = makers::pick(random, 3), number = makers::pick(random, kLengths[l]);
        std::vector<uint32_t>& list = plain[l];
        const auto found = std::find(list.begin(), list.end(), number);
        ASSERT_EQ(pool.contains(l, number), found != list.end()) << round;
        if (makers::pick(random, 2 * kLengths[l]) >= list.size()) {
            pool.append(l, number);
            list.push_back(number);
        } else if (makers::pick(random, 3) == 0 && std::count(list.begin(), list.end(), list.back()) == 1) {
            ASSERT_EQ(pool.last(l), list.back());
            pool.removeLast(l);
            list.pop_back();
        } else if (found != list.end()) {
            list.erase(found);
            if (makers::pick(random, 2) == 0) {
                pool.remove(l, number);
            } else {
                pool.replace(l, number, number / 2);
                list.push_back(number / 2);
            }
        } else {
            pool.remove(l, number);
        }
        if (makers::pick(random, 100) == 0) pool.tidy(l);
        if (makers::pick(random, 3000) == 0 && round < 9000) pool.clear(l), list.clear();
        ASSERT_EQ(pool.size(l), list.size()) << round;
        if (l == 2 && round % 16 != 0) continue;
        std::vector<uint32_t> held(pool[l].begin(), pool[l].end());
        std::erase(held, ListPool::kGap);
        ASSERT_EQ(held, list) << round;
    }
}

}  // namespace
}  // namespace marrowfen
