// Packed vocabularies answer as the fast ones do: the same text, the same result.
#include "diag/text/client_rows.h"
#include "diag/text/fib_rows.h"
#include "diag/text/operation_rows.h"
#include "diag/text/packed_texts.h"
#include "diag/text/state_rows.h"
#include "rib_text.h"

#include <gtest/gtest.h>
#include <string>

using namespace ribkit::diag;

namespace {

struct outcome {
    std::string text;
    bool is_buffer;
    uintptr_t count; ///< what else was answered

    bool operator==(const outcome &) const = default;
};

template <const auto &Table, bool Packed> outcome put(uint32_t value) {
    char buffer[RIB_TEXT_SIZE];
    const uintptr_t result = put_text<Table, Packed>(value, buffer);
    const bool is_buffer = result == reinterpret_cast<uintptr_t>(buffer);
    return {buffer, is_buffer, is_buffer ? 0 : result};
}

template <const auto &Table> void expect_same(uint32_t value) {
    const outcome packed = put<Table, true>(value);
    const outcome fast = put<Table, false>(value);
    EXPECT_TRUE(packed == fast) << value << ": " << packed.text << ", " << fast.text;
}

/// Of every row, of its neighbours, and of single bits.
template <const auto &Table> void expect_all_same() {
    for (const text_row &row : Table) {
        for (const uint32_t value : {row.value - 1, row.value, row.value + 1, row.value | 0x80000000}) {
            expect_same<Table>(value);
        }
    }
    for (uint32_t bit = 1; bit != 0; bit <<= 1) {
        expect_same<Table>(bit);
    }
}

template <const auto &...Tables> void expect_all_tables_same() { (expect_all_same<Tables>(), ...); }

} // namespace

TEST(packed_texts, answer_as_the_fast_tables_do) {
    expect_all_tables_same<pm_mode_texts, fib_d_idx_texts, result_texts, client_texts, client_proto_texts,
                           fcroute_proto_texts, fcroute_type_texts, fcroute_perm_texts, fclrt_type_texts,
                           fcmrt_type_texts, fcurt_type_texts, query_texts, oper_texts, action_texts, route_type_texts,
                           sync_texts, sup_state_texts, mod_state_texts, mod_type_texts, vsan_state_texts,
                           vsan_state_chg_texts, vsan_bal_texts, vsan_iod_texts, pm_layer_texts, pm_state_texts,
                           pcm_event_texts, mem_texts, in_texts, verf_texts, test_type_texts, cmi_msg_texts,
                           time_op_texts, fib_state_texts, fib_mod_type_texts, fib_verf_texts, fib_route_type_texts,
                           fib_reason_texts, fib_oper_texts, fib_iod_mode_texts, fib_action_texts>();
}

// Nothing but values, texts and their terminators.
TEST(packed_texts, take_no_room_for_longer_texts) {
    EXPECT_EQ(sizeof packed<fib_d_idx_texts>, 2 * sizeof(uint32_t) + sizeof "%03x" + 2 * sizeof "..." + 3);
    EXPECT_LT(3 * sizeof packed<fclrt_type_texts>, 2 * sizeof fclrt_type_texts);
}
