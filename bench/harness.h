// Ratios between two ways to do one thing, timed alternately in one run: absolute times drift, ratios hold.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

namespace ribkit::bench {

/// Keeps the compiler from removing or merging what a timed function does.
template <class T> [[gnu::always_inline]] inline void keep(T &&value) { asm volatile("" : : "g"(value) : "memory"); }

struct times {
    double ours = 0; // nanoseconds a unit, the best seen
    double peer = 0;
    [[nodiscard]] double ratio() const { return ours / peer; }
};

/// Nanoseconds that one of `repeats` calls takes.
template <class Function> double time_of(Function &&function, int repeats) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < repeats; ++i) {
        function();
    }
    const std::chrono::duration<double, std::nano> passed = std::chrono::steady_clock::now() - start;
    return passed.count() / repeats;
}

/// As many calls as fill about a millisecond.
template <class Function> int repeats_of(Function &&function) {
    const double once = std::max(time_of(function, 1), time_of(function, 3));
    return std::clamp(static_cast<int>(1e6 / std::max(once, 1.0)), 1, 100000);
}

/// Times both alternately, each `rounds` times, and keeps the best of each; a call does `units` units of work.
template <class Ours, class Peer> times compare(double units, Ours &&ours, Peer &&peer, int rounds = 60) {
    const int our_repeats = repeats_of(ours);
    const int peer_repeats = repeats_of(peer);
    times best{1e300, 1e300};
    for (int i = 0; i < rounds; ++i) {
        best.ours = std::min(best.ours, time_of(ours, our_repeats) / units);
        best.peer = std::min(best.peer, time_of(peer, peer_repeats) / units);
    }
    return best;
}

inline void heading(const char *title, const char *unit) {
    std::printf("\n%-58s %12s %12s %8s\n", title, "ours", "peer", "ratio");
    std::printf("%-58s %9s/%-3s %8s/%-3s\n", "", "ns", unit, "ns", unit);
}

/// Rows that nothing is expected of, beyond being seen.
inline constexpr double no_bound = 0;

/// A row says what its ratio may be at most, and whether it is above that.
inline void print_row(const std::string &what, const times &t, double bound = no_bound) {
    std::printf("%-58s %12.2f %12.2f %8.3f", what.c_str(), t.ours, t.peer, t.ratio());
    if (bound != no_bound) {
        std::printf("  %s %.4g", t.ratio() > bound ? "above its bound of" : "at most", bound);
    }
    std::printf("\n");
    std::fflush(stdout);
}

inline void missing_row(const std::string &what, const char *why) { std::printf("%-58s %s\n", what.c_str(), why); }

} // namespace ribkit::bench
