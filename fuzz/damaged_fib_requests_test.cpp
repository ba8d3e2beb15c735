// Every message that a module takes, damaged: cut behind each of its bytes, with each of its words another number, with
// each of its counts too large. Whatever comes is answered, soundly; what is refused has changed nothing.
#include "codec/bytes.h"
#include "codec/size.h"
#include "fib/service/fib_service.h"
#include "fuzz/quiet.h"
#include "fuzz/sound_fib_requests.h"
#include "protocol/fib/fib_requests.h"
#include "protocol/uses.h"
#include "rib_codes.h"
#include "ribkit_platform.h"

#include <gtest/gtest.h>
#include <set>

namespace ribkit::fuzz {
namespace {

constexpr const char *bus = "local:damaged_fib_requests";

class damaged_fib_requests : public ::testing::Test {
  protected:
    quiet silence;
    fib::fib_service service{bus, {.sizes = {.unicast = 1, .multicast = 1, .label = 1}}};
    module_requester asking{bus, 1};
    const std::vector<sound_request> requests = sound_fib_requests();

    [[nodiscard]] uint32_t last_number() const {
        return service.read([](const fib::module &of) { return of.fib.sequence(); });
    }
};

TEST_F(damaged_fib_requests, there_is_a_sound_one_of_every_kind) {
    std::set<uint32_t> tried;
    for (const auto &[opcode, bytes] : requests) {
        const auto *row = protocol::find_fib_request(opcode);
        ASSERT_NE(row, nullptr);
        EXPECT_NE(run_of(asking.ask(opcode, bytes), row->answer), "") << row->name;
        tried.insert(opcode);
    }
    for (const protocol::request_row &row : protocol::fib_requests) {
        EXPECT_EQ(row.to == protocol::destination_of::module, tried.contains(row.opcode)) << row.name;
    }
    EXPECT_EQ(tried.size(), fib::message_handlers().size());
}

TEST_F(damaged_fib_requests, cut_behind_any_byte_are_refused_and_change_nothing) {
    for (const auto &[opcode, bytes] : requests) {
        for (size_t size = 0; size < bytes.size(); size++) {
            const byte_vector cut(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size));
            ASSERT_EQ(module_refusal(asking.ask(opcode, cut)), RIB_BAD_PARAMETERS)
                << protocol::find_fib_request(opcode)->name << " at " << size;
        }
        byte_vector longer = bytes;
        longer.push_back(0);
        EXPECT_EQ(module_refusal(asking.ask(opcode, longer)), RIB_EXCESS_DATA)
            << protocol::find_fib_request(opcode)->name;
    }
    EXPECT_EQ(last_number(), 0U);
}

TEST_F(damaged_fib_requests, with_any_word_another_number_are_answered) {
    for (const auto &[opcode, bytes] : requests) {
        const auto &row = *protocol::find_fib_request(opcode);
        for (size_t at = 0; at + sizeof(uint32_t) <= bytes.size(); at += sizeof(uint32_t)) {
            for (const uint32_t number : {0U, 17U, 0xffffU, 0x7fffffffU, 0x80000000U, UINT32_MAX}) {
                byte_vector damaged = bytes;
                codec::store32<std::endian::big>(damaged.data() + at, number);
                const byte_vector answer = asking.ask(opcode, damaged);
                ASSERT_TRUE(run_of(answer, row.answer) != "" || module_refusal(answer) != RIB_OK)
                    << row.name << " at " << at << ": " << number << ", " << answer.size();
            }
        }
    }
}

/// Sets every count of a message to more than it has, one after the other: of its lists, and of the paths behind it.
template <class Try>
void with_counts_too_large(const codec::layout &l, byte_vector &bytes, size_t at, const Try &attempt) {
    const auto set = [&](size_t where, uint32_t number) {
        const uint32_t right = codec::load32<std::endian::big>(bytes.data() + where);
        codec::store32<std::endian::big>(bytes.data() + where, number);
        attempt(where);
        codec::store32<std::endian::big>(bytes.data() + where, right);
    };
    for (const codec::row &r : l) {
        const auto *use = protocol::use_of(l, r.name);
        if (use != nullptr && std::string_view(use->use) == "n_path") {
            set(at + r.offset, UINT32_MAX);
            set(at + r.offset, 17);
        }
        if (!codec::is_list(r) || r.count.where == codec::count_in::constant) {
            continue;
        }
        set(at + r.count.at, r.count.where == codec::count_in::second_byte ? 0x00ff0000 : UINT32_MAX);
        if (codec::read_count<std::endian::big>(r.count, bytes.data() + at) != 0) {
            with_counts_too_large(*r.entry, bytes, at + r.offset, attempt);
        }
    }
}

TEST_F(damaged_fib_requests, with_any_count_too_large_are_refused) {
    size_t tried = 0;
    for (const auto &[opcode, bytes] : requests) {
        byte_vector damaged = bytes;
        const uint8_t *begin = bytes.data();
        const auto attempt = [&, opcode = opcode](size_t at) {
            EXPECT_EQ(module_refusal(asking.ask(opcode, damaged)), RIB_BAD_PARAMETERS)
                << protocol::find_fib_request(opcode)->name << " at " << at;
            tried++;
        };
        for_each_part(protocol::find_fib_request(opcode)->message, bytes,
                      [&](const codec::message &kind, std::span<const uint8_t> part) {
                          with_counts_too_large(*kind.wire, damaged, static_cast<size_t>(part.data() - begin), attempt);
                      });
    }
    EXPECT_GT(tried, 40U);
    EXPECT_EQ(last_number(), 0U);
}

TEST_F(damaged_fib_requests, of_no_kind_are_refused) {
    for (uint32_t opcode = 1; opcode < 0x400; opcode++) {
        if (opcode != RIBKIT_OPCODE_STARTED && fib::find_handler(opcode) == nullptr) {
            EXPECT_EQ(module_refusal(asking.ask(opcode, byte_vector(20))), RIB_NOT_SUPPORTED) << opcode;
        }
    }
}

} // namespace
} // namespace ribkit::fuzz
