// The header flag of every display: any value but 0 prints the heads, and 0 prints the row alone.
#include "diag/show/show_fixture.h"
#include "rib_show.h"

#include <array>

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace {

class ShowHeader : public printing_test {};

struct headed {
    const char *name;
    void (*show)(uint32_t header, const void *record);
};

template <auto Display> void plainly(uint32_t header, const void *record) { Display(header, record); }

void show_fcl(uint32_t header, const void *record) { rib_show_fcl(header, 0, record); }
void show_db(uint32_t header, const void *record) { rib_show_db(header, record, record); }
void show_sys_port(uint32_t header, const void *record) { rib_show_sys_port(&header, record); }
void show_snmp(uint32_t header, const void *record) {
    rib_show_snmp_fcroute(header, static_cast<const fcRouteEntry *>(record));
}

// Not rib_show_fcmrt, whose flags are compared with 1.
constexpr headed displays[] = {
    {"rib_show_fcu", plainly<rib_show_fcu>},
    {"rib_show_fcl", show_fcl},
    {"rib_show_fcm", plainly<rib_show_fcm>},
    {"rib_show_fct", plainly<rib_show_fct>},
    {"rib_show_fcurt", plainly<rib_show_fcurt>},
    {"rib_show_sync_fcu", plainly<rib_show_sync_fcu>},
    {"rib_show_sync_fcm", plainly<rib_show_sync_fcm>},
    {"rib_show_sync_fcl", plainly<rib_show_sync_fcl>},
    {"rib_show_sync_gbl", plainly<rib_show_sync_gbl>},
    {"rib_show_snmp_fcroute", show_snmp},
    {"rib_show_dm", plainly<rib_show_dm>},
    {"rib_show_db", show_db},
    {"rib_show_db_total", plainly<rib_show_db_total>},
    {"rib_show_verf_info", plainly<rib_show_verf_info>},
    {"rib_show_register", plainly<rib_show_register>},
    {"rib_show_sys_port", show_sys_port},
    {"fib_show_verf_fcu", plainly<fib_show_verf_fcu>},
    {"fib_show_verf_fcm", plainly<fib_show_verf_fcm>},
    {"fib_show_verf_fcl", plainly<fib_show_verf_fcl>},
    {"fib_show_vsan", plainly<fib_show_vsan>},
    {"fib_show_port", plainly<fib_show_port>},
    {"fib_show_node", plainly<fib_show_node>},
};

} // namespace

TEST_F(ShowHeader, AnyFlagButZeroPrintsTheHeads) {
    alignas(fcRouteEntry) std::array<uint8_t, 1560> record{};
    record[20] = 1; // port 32 is there, for rib_show_sys_port
    for (const headed &display : displays) {
        const auto printed = [&](uint32_t header) { return printed_by([&] { display.show(header, record.data()); }); };
        const std::string with = printed(1);
        const std::string without = printed(0);
        ASSERT_GT(with.size(), without.size()) << display.name;
        EXPECT_EQ(with.substr(with.size() - without.size()), without) << display.name;
        for (const uint32_t header : {2u, 0x100u, 0x10000u, 0x80000000u, 0xffffffffu}) {
            EXPECT_EQ(printed(header), with) << display.name << ' ' << header;
        }
    }
}
