// What the switch can rely on: the room that the library takes, loaded whole or linked in parts, the stack below its
// calls, and which of them ask for memory. Compiler and linker say so of the library as it is built for size; stack has
// its limit in the one built for speed as well.
#include "codec/checks/checked_messages.h"
#include "footprint/parts.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace ribkit::footprint {
namespace {

constexpr uint32_t loaded_limit = 128 * 1024;
constexpr uint32_t client_limit = 12 * 1024;
constexpr uint32_t stack_limit = 2 * 1024;

const std::filesystem::path measured = RIBKIT_MEASURED_DIR;
const std::filesystem::path sources = RIBKIT_SOURCE_DIR;

/// How deep the walk of a check goes into entries of entries.
uint32_t nesting_of(uint8_t plan) {
    const codec::check_tables &tables = codec::core_checks::tables;
    const codec::check_plan &p = tables.plans[plan];
    uint32_t below = p.odd == codec::odd_check::ucast_route ? nesting_of(tables.hop) : 0;
    for (unsigned i = 0; i < p.n_lists; ++i) {
        const uint8_t entry = tables.lists[p.first_list + i].entry;
        below = std::max(below, entry == codec::check_list::no_plan ? 0 : nesting_of(entry));
    }
    return below + 1;
}

struct calls {
    explicit calls(const char *name) : graph(calls_of(measured, name)) {
        std::ifstream in = opened(sources / "footprint/indirect_calls.txt");
        unnamed = graph.resolve(read_indirect_calls(in));
        graph.nesting = checks_nest;
    }

    /// The functions that are exported, data left out.
    [[nodiscard]] std::vector<std::string> functions() const {
        std::vector<std::string> all = exported_names(sources);
        all.erase(std::remove_if(all.begin(), all.end(), [&](const std::string &name) { return !graph.defines(name); }),
                  all.end());
        return all;
    }

    call_graph graph;
    std::vector<std::string> unnamed;
};

class calls_built : public ::testing::TestWithParam<const char *> {
  protected:
    calls built{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(footprint, calls_built, ::testing::Values("core_for_size", "core_for_speed"));

TEST(footprint, the_library_is_loaded_into_less_than_128_kib) {
    const link_map map = map_of(measured, "core_for_size");
    EXPECT_GT(map.loaded, loaded_limit / 2); // the whole map was read
    EXPECT_LT(map.loaded, loaded_limit);
}

TEST(footprint, a_client_of_unicast_routes_links_less_than_12_kib) {
    const uint32_t ours = client_bytes(measured);
    EXPECT_GT(ours, 1024u);
    EXPECT_LT(ours, client_limit);
}

TEST_P(calls_built, through_pointers_are_all_named) { EXPECT_EQ(built.unnamed, std::vector<std::string>{}); }

TEST_P(calls_built, take_less_than_2_kib_of_stack) {
    EXPECT_GT(built.functions().size(), 400u);
    std::set<std::string> recursive;
    for (const std::string &function : built.functions()) {
        const call_graph::path way = built.graph.deepest(function, recursive);
        EXPECT_LT(way.bytes, stack_limit) << [&] {
            std::string all;
            for (const std::string &step : way.functions) {
                all += step + "\n";
            }
            return all;
        }();
    }
    EXPECT_FALSE(recursive.empty());
    for (const std::string &function : recursive) {
        EXPECT_TRUE(matches("ribkit::codec::checker::walk*", function)) << function;
    }
}

TEST(footprint, checks_call_themselves_no_deeper_than_counted) {
    uint32_t deepest = 0;
    for (const codec::checked_message &message : codec::checked_messages) {
        deepest = std::max(deepest, nesting_of(message.plan));
    }
    EXPECT_EQ(deepest, checks_nest);
}

/// Whether its name is that of a call that manages memory.
bool may_ask_for_memory(const std::string &function) {
    const char *const managers[] = {"bud_*", "cont_*", "pool_*", "rib_token_*", "rib_wrap_cmi_*"};
    return std::any_of(std::begin(managers), std::end(managers),
                       [&](const char *pattern) { return matches(pattern, function); });
}

TEST(footprint, calls_ask_for_memory_only_where_they_manage_it) {
    const calls built("core_for_size");
    size_t asking = 0;
    for (const std::string &function : built.functions()) {
        for (const char *const heap : {"malloc", "calloc", "realloc", "free"}) {
            const bool asks = built.graph.reaches(function, heap);
            EXPECT_TRUE(!asks || may_ask_for_memory(function)) << function << " calls " << heap;
            asking += asks ? 1 : 0;
        }
    }
    EXPECT_GT(asking, 10u);
}

/// The numbers of a line of a document, up to a text that ends them.
std::vector<uint32_t> numbers_in(const std::string &line, size_t at) {
    std::vector<uint32_t> numbers;
    while (at < line.size()) {
        at = line.find_first_of("0123456789", at);
        size_t length = 0;
        if (at != std::string::npos) {
            numbers.push_back(static_cast<uint32_t>(std::stoul(line.substr(at), &length)));
            at += length;
        }
    }
    return numbers;
}

/// The numbers behind the beginning of the document's line that begins so.
std::vector<uint32_t> documented(const std::string &beginning) {
    std::ifstream in = opened(sources / "docs/size.md");
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with(beginning)) {
            return numbers_in(line, beginning.size());
        }
    }
    return {};
}

/// Compilers of a distribution's life differ by some bytes.
void expect_near(uint32_t said, uint32_t is, const std::string &what) {
    EXPECT_LE(said, is + is / 100 + 32) << what << ": docs/size.md says too much; ./run size writes it anew";
    EXPECT_LE(is, said + said / 100 + 32) << what << ": docs/size.md says too little; ./run size writes it anew";
}

TEST(footprint, is_what_the_document_says) {
    const build now(measured, sources, "core_for_size");
    for (const char *const part : parts) {
        const figures is = now.of(part);
        const auto said = documented("| `" + std::string(part) + "/` |");
        ASSERT_EQ(said.size(), 8U) << part;
        for (size_t use = 0; use < is.bytes.size(); use++) {
            expect_near(said[use], is.bytes[use], part);
        }
        expect_near(said[3], is.stack, std::string(part) + ", stack");
    }
    const auto all = documented("| **loaded, in all** |");
    ASSERT_EQ(all.size(), 2U);
    expect_near(all[0], now.loaded(), "all");
    const auto client =
        documented("A client that sends unicast routes (`footprint/unicast_client.c`), linked statically:");
    ASSERT_EQ(client.size(), 1U);
    expect_near(client[0], client_bytes(measured), "client");
    const auto deepest = documented("The deepest call with `-Os`,");
    ASSERT_EQ(deepest.size(), 1U);
    expect_near(deepest[0], now.deepest().bytes, "deepest call");
}

} // namespace
} // namespace ribkit::footprint
