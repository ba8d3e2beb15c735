// The RIB's own state: its database, versions, verification, registrations, ports, parameters, memory and availability.
#include "codec/messages/info.h"
#include "diag/print.h"
#include "rib_mem.h"
#include "rib_show.h"

using namespace ribkit;
using namespace ribkit::diag;

namespace {

constexpr uint32_t short_list = 5; // versions that share the line of their heading
constexpr uint32_t versions_a_line = 8;
constexpr uint32_t port_map_size = wire::module_entry.row_of("port").bound / 8; // bytes, a bit for each port

constexpr char counts_rule[] = "-----    --------    --------    --------    ------------------------";

void address_to_str(const void *address, char *str) { std::sprintf(str, "%p", address); }

truth flag(uint32_t word) { return {word == 1}; }

} // namespace

void rib_show_version(uint32_t version, uint32_t position, uint32_t count) {
    if (position == 0 && count > short_list) {
        print_row<" topology version\n %08x ">(version);
    } else if (position == 0) {
        print_row<" topology version %08x ">(version);
    } else if (position == count - 1) {
        print_row<"%08x\n">(version);
    } else if (position % versions_a_line != 0) {
        print_row<"%08x ">(version);
    } else {
        print_row<"\n %08x ">(version);
    }
}

void rib_show_db(uint32_t header, const void *database, const void *vsan_entry) {
    const view<wire::db_summary> entry{vsan_entry};
    if (header != 0) {
        print_row<"\nFC Route Database Created %s\n\n">(
            text(time_word_to_str, view<wire::db_info>(database).get<"created">()));
        print_lines("VSAN        Ucast       Mcast       Label    Last Modified Time", counts_rule);
    }
    print_row<"%-5u    %8u    %8u    %8u    %s\n">(entry.get<"vsan">(), entry.get<"ucast">(), entry.get<"mcast">(),
                                                   entry.get<"label">(),
                                                   text(time_word_to_str, entry.get<"modified">()));
}

// The rule is printed whatever the flag: a total under a table is set off from its rows.
void rib_show_db_total(uint32_t header, const void *totals) {
    const view<wire::db_summary> total{totals};
    if (header != 0) {
        print_lines("VSAN     Ucast       Mcast       Label       Last Modified Time");
    }
    print_lines(counts_rule);
    print_row<"Total    %8u    %8u    %8u\n">(total.get<"ucast">(), total.get<"mcast">(), total.get<"label">());
}

void rib_show_verf_info(uint32_t header, const void *report) {
    const view<wire::verf_info> info{report};
    if (header == 0) {
        return;
    }
    print_lines("\nRoute Verification Report");
    print_row<"  Generated %s\n">(text(time_word_to_str, info.get<"generated">()));
    if (info.get<"completed">() != 0) {
        print_row<"  Completed %s\n">(text(time_word_to_str, info.get<"completed">()));
    } else {
        print_lines("  Report not completely generated!");
    }
}

void rib_show_register(uint32_t header, const void *registration) {
    const view<wire::registration> reg{registration};
    if (header != 0) {
        print_lines("\n            Route", "UUID        Distance        Name", "----        --------        ----");
    }
    print_row<"%-4u        %-8u        %s\n">(reg.get<"uuid">(), reg.get<"distance">(),
                                              text(rib_uuid_to_str, reg.get<"uuid">()));
}

void rib_show_sys_port(uint32_t *header, const void *system_record) {
    const view<wire::module_entry> module{system_record};
    for (uint32_t port = 0; bmap_next_set(module.area<"ports">().data(), port_map_size, port, &port) == RIB_OK;
         ++port) {
        fib_show_port(*header, module.list<"port">()[port].data());
        *header = 0;
    }
}

void rib_show_p(const struct rib_param_block *block) {
    print_row<"# parameters = %u  (All fields in hex except Token)\n\n">(unsigned{block->count});
    print_lines("Pointer       Token    Type    Value", "----------    -----    ----    -----");
    for (uint32_t i = 0; i < block->count; ++i) {
        const rib_param &param = block->params[i];
        print_row<"%s    %-5u    %-4x    ">(text(address_to_str, &param, 10), param.token, param.type);
        if (param.value != nullptr) {
            uint32_t value;
            std::memcpy(&value, param.value, sizeof value);
            print_row<"%08x ">(value);
        }
        std::putchar('\n');
    }
}

void rib_show_in_mem(const void *record) {
    const view<wire::in_mem> memory{record};
    uint32_t total = 0;
    print_lines("\nMemory Pool     Data Size    # Data", "------------    ---------    ---------");
    for (const auto pool : memory.list<"pool">()) {
        const uint32_t size = pool.get<"data_size">();
        const uint32_t number = pool.get<"n_data">();
        print_row<"%s    %-9u    %u\n">(text(rib_mem_to_str, pool.get<"pool">(), 12), size, number);
        total += size * number;
    }
    print_lines("------------    ---------    ---------");
    print_row<"Total                        %u\n">(total);
}

void rib_show_in_ha(const void *record) {
    const view<wire::in_ha> state{record};
    print_row<"\nSup State              %s\n">(text(rib_sup_state_to_str, state.get<"sup_state">()));
    print_row<"Switching Over         %s\n">(flag(state.get<"switching_over">()));
    print_row<"Started Stateful       %s\n">(flag(state.get<"started_stateful">()));
    print_row<"Started Stateless      %s\n">(flag(state.get<"started_stateless">()));
    print_row<"Standby Sup Existed    %s\n">(flag(state.get<"standby_existed">()));
    print_row<"Just Sent Heartbeat    %s\n">(flag(state.get<"sent_heartbeat">()));
}
