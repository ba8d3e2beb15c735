// Conversion of updates against memcpy and against the loop that everybody writes.
#include "bench/codec_bench.h"

#include "bench/harness.h"
#include "bench/loop_peer.h"
#include "bench/samples.h"
#include "rib_codec.h"

#include <cstring>

namespace ribkit::bench {

namespace {

constexpr uint32_t routes = 1000;

using record_converter = uint32_t (*)(const void *, void *);

/// Converts the records of an update one by one, as a client does.
void convert_records(record_converter convert, const uint8_t *src, uint8_t *dst, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) {
        const uint32_t size = convert(src, dst);
        src += size;
        dst += size;
    }
}

/// The limit of an interface that is called record by record.
uint32_t copy_fcurt(const void *src, void *dst) {
    uint32_t n;
    std::memcpy(&n, static_cast<const uint8_t *>(src) + 28, sizeof n);
    const uint32_t size = wire::fcurt.size + wire::fcurt_hop.size * n;
    std::memcpy(dst, src, size);
    return size;
}

/// A sample in both forms and room to convert it into.
struct forms {
    sample host, network, out;
    uint32_t n;
    forms(sample s, uint32_t records) : host(std::move(s)), network(host.size), out(host.size), n(records) {
        rib_hton_fcurt_update(host.data(), network.data());
        convert_records(rib_hton_fcurt, host.data() + wire::fcurt_update.size, network.data() + wire::fcurt_update.size,
                        n);
    }
    auto sending(record_converter convert) {
        return [this, convert] {
            convert_records(convert, host.data() + wire::fcurt_update.size, out.data(), n);
            keep(out.data());
        };
    }
    auto receiving(record_converter convert) {
        return [this, convert] {
            convert_records(convert, network.data() + wire::fcurt_update.size, out.data(), n);
            keep(out.data());
        };
    }
    auto in_place(record_converter there, record_converter back) {
        return [this, there, back] {
            uint8_t *at = host.data() + wire::fcurt_update.size;
            convert_records(there, at, at, n);
            convert_records(back, at, at, n);
            keep(at);
        };
    }
};

void against_loop(const char *what, forms &f, double bound) {
    print_row(std::string(what) + ", sending, to the loop",
              compare(f.n, f.sending(rib_hton_fcurt), f.sending(loop::hton_fcurt)), bound);
    print_row(std::string(what) + ", receiving, to the loop",
              compare(f.n, f.receiving(rib_ntoh_fcurt), f.receiving(loop::ntoh_fcurt)), bound);
}

/// More updates than any cache holds, each converted (or copied) whole.
times many_updates(forms &one) {
    const size_t count = (size_t{64} << 20) / one.host.size;
    sample from(one.host.size * count);
    sample to(one.host.size * count);
    for (size_t i = 0; i < count; ++i) {
        std::memcpy(from.data() + i * one.host.size, one.host.data(), one.host.size);
    }
    const auto each = [&](auto &&act) {
        for (size_t at = 0; at < from.size; at += one.host.size) {
            act(from.data() + at, to.data() + at);
        }
        keep(to.data());
    };
    return compare(
        static_cast<double>(count) * one.n,
        [&] {
            each([&](const uint8_t *src, uint8_t *dst) {
                rib_hton_fcurt_update(src, dst);
                convert_records(rib_hton_fcurt, src + wire::fcurt_update.size, dst + wire::fcurt_update.size, one.n);
            });
        },
        [&] { each([&](const uint8_t *src, uint8_t *dst) { std::memcpy(dst, src, one.host.size); }); }, 15);
}

} // namespace

void codec_rows() {
    heading("unicast update, 1000 routes", "route");
    forms four(fcurt_update(routes, [](uint32_t) { return 4U; }), routes);
    print_row("4 hops, sending, to memcpy of each record",
              compare(routes, four.sending(rib_hton_fcurt), four.sending(copy_fcurt)), 1.1);
    against_loop("4 hops", four, 0.60);

    std::mt19937 random(2);
    std::vector<uint32_t> shuffled(routes);
    for (uint32_t &hops : shuffled) {
        hops = random() % 9;
    }
    forms mixed(fcurt_update(routes, [&](uint32_t i) { return shuffled[i]; }), routes);
    against_loop("0 to 8 hops shuffled", mixed, 0.58);
    print_row("4 hops, there and back in place, to the loop in place",
              compare(routes, four.in_place(rib_hton_fcurt, rib_ntoh_fcurt),
                      four.in_place(loop::hton_fcurt, loop::ntoh_fcurt)),
              0.7);

    print_row("64 MiB of updates, sending, to memcpy of each update", many_updates(four), 1.4);
    print_row("size of an update of 1000 routes, to the loop",
              compare(
                  routes, [&] { keep(rib_sizeof_fcurt_update(four.network.data())); },
                  [&] { keep(loop::sizeof_fcurt_update(four.network.data())); }),
              0.4);
}

} // namespace ribkit::bench
