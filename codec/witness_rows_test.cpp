// The conversions of the management rows against the naive ones and the golden vectors.
#include "codec/witness/comparison.h"
#include "codec/witness/exported.h"

#include <array>
#include <bit>

namespace {

using namespace ribkit::witness;

constexpr order native = std::endian::native == std::endian::little ? order::little : order::big;

void examine(const exported_pair &row, direction way, const std::vector<golden> &goldens) {
    const subject what{find_pair(row.name), way, native, way == direction::hton ? row.hton : row.ntoh, true};
    EXPECT_TRUE(agrees_at_random(what, 50));
    EXPECT_TRUE(agrees_at_the_edge(what, 10));
    for (const golden &vector : goldens) {
        if (vector.message == row.name) {
            EXPECT_TRUE(agrees_with_golden(what, vector));
        }
    }
}

TEST(management_rows, agree_with_the_naive_ones_and_the_golden_vectors) {
    const std::vector<golden> goldens = load_goldens(RIBKIT_SOURCE_DIR "/codec/witness/golden/management_rows.txt");
    for (const exported_pair &row : exported_rows()) {
        examine(row, direction::hton, goldens);
        examine(row, direction::ntoh, goldens);
    }
}

TEST(management_rows, of_flow_statistics_keep_the_words_that_nobody_carries) {
    alignas(4) std::array<uint8_t, 68> row{};
    alignas(4) std::array<uint8_t, 68> arrived{};
    row.fill(0x11);
    arrived.fill(0xa5);
    exported_rows()[1].ntoh(row.data(), arrived.data());
    for (size_t i = 0; i < 68; ++i) {
        const size_t word = i / 4;
        EXPECT_EQ(arrived.at(i), word == 1 || word == 2 || word == 4 ? 0xa5 : 0x11) << i;
    }
}

} // namespace
