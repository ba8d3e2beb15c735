// Several RIBs begin at one address. Messages between them arrive in any order; whatever it is, one of them stays.
#include "rib/service/rib_claim.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace ribkit::rib {
namespace {

struct contender {
    rib_claim claim;
    bool listens = false, gone = false;
    int answered = 0; ///< claims of its own that may still be answered
};

struct letter {
    size_t from, to;
    bool answer;
    size_t number; ///< of the claim that it carries or answers
};

/// As a server carries them: each claim to everybody who listens when it is sent, and the first answer back.
class meeting {
  public:
    meeting(std::mt19937 &random, const std::vector<rib_claim> &claims) : random_(random) {
        for (const rib_claim &claim : claims) {
            all_.push_back({claim});
        }
    }

    std::vector<size_t> play() {
        size_t next = 0;
        while (next < all_.size() || !under_way_.empty()) {
            if (next < all_.size() && (under_way_.empty() || random_() % 3 == 0)) {
                begin(next++);
            } else {
                deliver(random_() % under_way_.size());
            }
        }
        std::vector<size_t> stayed;
        for (size_t i = 0; i < all_.size(); i++) {
            if (!all_[i].gone) {
                stayed.push_back(i);
            }
        }
        return stayed;
    }

  private:
    void begin(size_t who) {
        all_[who].listens = true;
        claim(who);
    }

    void claim(size_t who) {
        answered_.push_back(false);
        for (size_t to = 0; to < all_.size(); to++) {
            if (all_[to].listens && to != who) {
                under_way_.push_back({who, to, false, answered_.size() - 1});
            }
        }
    }

    void deliver(size_t index) {
        const letter one = under_way_[index];
        under_way_.erase(under_way_.begin() + static_cast<std::ptrdiff_t>(index));
        contender &reader = all_[one.to];
        if (reader.gone || (one.answer && answered_[one.number])) {
            return; // nobody reads it, or another answer was first
        }
        if (!one.answer) {
            under_way_.push_back({one.to, one.from, true, one.number});
            step(one.to, step_after_claim(reader.claim, all_[one.from].claim));
        } else {
            answered_[one.number] = true;
            step(one.to, step_after_answer(reader.claim, all_[one.from].claim));
        }
    }

    void step(size_t who, claim_step next) {
        if (next == claim_step::ask_again) {
            claim(who);
        }
        all_[who].gone = all_[who].gone || next == claim_step::give_way;
        all_[who].listens = !all_[who].gone;
    }

    std::mt19937 &random_;
    std::vector<contender> all_;
    std::vector<letter> under_way_;
    std::vector<bool> answered_;
};

TEST(rib_claim, exactly_one_of_those_who_begin_together_stays) {
    for (uint32_t seed = 0; seed < 20000; seed++) {
        std::mt19937 random(seed);
        std::vector<rib_claim> claims;
        for (size_t i = 2 + random() % 4; i > 0; i--) {
            claims.push_back({false, 1000 + random() % 2, random()});
        }
        ASSERT_EQ(meeting(random, claims).play().size(), 1U) << seed;
    }
}

TEST(rib_claim, one_that_has_listened_for_long_stays_whatever_the_clocks_say) {
    const rib_claim old{true, 2000, 5};
    const rib_claim fresh{false, 1000, 5};
    EXPECT_EQ(step_after_claim(old, fresh), claim_step::nothing);
    EXPECT_EQ(step_after_answer(fresh, old), claim_step::give_way);
    EXPECT_EQ(step_after_claim(fresh, old), claim_step::nothing);
}

TEST(rib_claim, travels_as_five_words) {
    const rib_claim claim{true, 0x0102030405060708, 0x1112131415161718};
    const auto bytes = encode(claim);
    EXPECT_EQ(bytes, (std::array<uint8_t, 20>{0, 0, 0,    1,    1,    2,    3,    4,    5,    6,
                                              7, 8, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18}));
    const auto read = decode_claim(bytes);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->settled && read->is_of(claim));
    EXPECT_FALSE(decode_claim(std::span(bytes).first(19)));
    EXPECT_FALSE(rib_claim::made_now().is_of(rib_claim::made_now()));
}

} // namespace
} // namespace ribkit::rib
