// Every exported converter against the naive one and against the golden vectors, and the witnesses against each other.
#include "codec/witness/comparison.h"
#include "codec/witness/exported.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <set>

namespace {

using namespace ribkit::witness;

constexpr order native = std::endian::native == std::endian::little ? order::little : order::big;
/// Under emulation (the 32-bit builds) everything is many times slower.
constexpr unsigned scale = sizeof(void *) == 4 ? 1 : 10;

const std::vector<golden> &goldens() {
    static const std::vector<golden> all = load_goldens(RIBKIT_SOURCE_DIR "/codec/witness/golden");
    return all;
}

subject subject_of(const exported_pair &exported, direction way) {
    return {find_pair(exported.name), way, native, way == direction::hton ? exported.hton : exported.ntoh};
}

std::string name_of(const ::testing::TestParamInfo<exported_pair> &info) { return std::string(info.param.name); }

class converters : public ::testing::TestWithParam<exported_pair> {
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

INSTANTIATE_TEST_SUITE_P(exported, converters, ::testing::ValuesIn(exported_pairs().begin(), exported_pairs().end()),
                         name_of);

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

TEST(witnesses, every_exported_converter_is_examined) {
    std::set<std::string> examined;
    for (const exported_pair &exported : exported_pairs()) {
        const std::string name(exported.name);
        const size_t prefix = name.starts_with("rib_fib_") ? 8 : 4;
        examined.insert(name.substr(0, prefix) + "hton_" + name.substr(prefix));
        examined.insert(name.substr(0, prefix) + "ntoh_" + name.substr(prefix));
        EXPECT_NE(find_pair(exported.name), nullptr) << name;
    }
    std::ifstream exports(RIBKIT_SOURCE_DIR "/exports.txt");
    size_t listed = 0;
    for (std::string line; std::getline(exports, line);) {
        const bool converter = line.find("_hton_") != std::string::npos ||
                               (line.find("_ntoh_") != std::string::npos && line.find("_get_") == std::string::npos);
        listed += converter ? 1 : 0;
        EXPECT_EQ(examined.count(line), converter ? 1 : 0) << line;
    }
    EXPECT_EQ(examined.size(), listed);
}

} // namespace
