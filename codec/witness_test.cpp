// Every exported converter against the naive one and against the golden vectors, and the witnesses against each other.
#include "codec/message.h"
#include "codec/witness/comparison.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <set>

namespace {

using namespace ribkit::witness;
using ribkit::codec::message;
using ribkit::codec::messages;

constexpr order native = std::endian::native == std::endian::little ? order::little : order::big;
/// Under emulation (the 32-bit builds) everything is many times slower.
constexpr unsigned scale = RIBKIT_EMULATED ? 1 : 10;

const std::vector<golden> &goldens() {
    static const std::vector<golden> all = load_goldens(RIBKIT_SOURCE_DIR "/codec/witness/golden");
    return all;
}

subject subject_of(const message &m, direction way) {
    return {find_pair(m.name), way, native, way == direction::hton ? m.to_network : m.to_host};
}

std::string name_of(const ::testing::TestParamInfo<message> &info) { return std::string(info.param.name); }

class converters : public ::testing::TestWithParam<message> {
  protected:
    [[nodiscard]] static std::vector<subject> both() {
        return {subject_of(GetParam(), direction::hton), subject_of(GetParam(), direction::ntoh)};
    }
};

TEST_P(converters, agree_with_the_naive_ones_at_random) {
    for (const subject &what : both()) {
        EXPECT_TRUE(agrees_at_random(what, 30 * scale));
    }
}

TEST_P(converters, touch_nothing_beyond_the_message) {
    for (const subject &what : both()) {
        EXPECT_TRUE(agrees_at_the_edge(what, 10 * scale));
    }
}

TEST_P(converters, agree_with_golden_vectors) {
    for (const golden &vector : goldens()) {
        if (vector.message == GetParam().name) {
            for (const subject &what : both()) {
                EXPECT_TRUE(agrees_with_golden(what, vector));
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(exported, converters, ::testing::ValuesIn(messages().begin(), messages().end()), name_of);

TEST(witnesses, naive_converters_agree_with_golden_vectors_in_both_orders) {
    for (const golden &vector : goldens()) {
        const pair *model = find_pair(vector.message);
        ASSERT_NE(model, nullptr) << vector.message;
        for (const order host : {order::little, order::big}) {
            for (const direction way : {direction::hton, direction::ntoh}) {
                const size_t size = vector.network.size();
                const auto naive = [&](const void *src, void *dst) {
                    return convert(*model, way, host, {static_cast<const uint8_t *>(src), size},
                                   {static_cast<uint8_t *>(dst), size})
                        .result;
                };
                EXPECT_TRUE(agrees_with_golden({model, way, host, naive}, vector));
            }
        }
    }
}

TEST(witnesses, every_message_has_golden_vectors_in_both_directions) {
    for (const pair &model : pairs()) {
        const auto count = [&model](direction way) {
            return std::count_if(goldens().begin(), goldens().end(), [&model, way](const golden &vector) {
                return vector.message == model.name && vector.goes(way);
            });
        };
        EXPECT_GE(count(direction::hton), 2) << model.name;
        EXPECT_GE(count(direction::ntoh), 2) << model.name;
    }
}

TEST(witnesses, every_golden_vector_of_a_sized_record_says_its_size) {
    for (const golden &vector : goldens()) {
        const pair *model = find_pair(vector.message);
        ASSERT_NE(model, nullptr) << vector.message;
        EXPECT_EQ(vector.returns.has_value(), model->returns_value(vector.hton ? direction::hton : direction::ntoh))
            << vector.message << ", " << vector.title;
    }
}

} // namespace
