// What a service has to complain about, on standard error: each kind at once when it comes up, then as a count once a
// second. Whoever complains never waits for the output.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace ribkit::bus {

class complaints {
  public:
    /// @param each_second whether counts are said meanwhile, and not only in the end
    explicit complaints(int descriptor, bool each_second = true) : descriptor_(descriptor), each_second_(each_second) {}
    complaints(const complaints &) = delete;
    complaints &operator=(const complaints &) = delete;
    ~complaints() { end(); }

    /// @param kind what is counted, as text
    /// @param detail about this one; printed where it is the first of its kind
    void add(const std::string &kind, const std::string &detail) noexcept;

    /// Says what has not been said yet, as far as the output takes it.
    void end();

  private:
    using clock = std::chrono::steady_clock;

    struct known_kind {
        std::string detail;
        bool said = false;
        uint64_t unsaid = 0;     ///< beyond the first
        clock::time_point due{}; ///< the earliest moment to say them
    };

    void count(const std::string &kind, const std::string &detail);
    void say_them();
    bool wait_for_some(std::unique_lock<std::mutex> &locked);
    std::vector<std::string> take_lines(bool all);
    void print(const std::vector<std::string> &lines);

    int descriptor_;
    bool each_second_;
    std::mutex lock_;
    std::condition_variable changed_;
    std::map<std::string, known_kind> kinds_;
    uint64_t others_ = 0; ///< of kinds for which there is no room
    size_t lost_ = 0;     ///< lines, of the thread alone
    bool fresh_ = false;  ///< there is a kind of which nothing has been said
    bool ended_ = false;
    std::thread saying_; ///< from the first complaint on
};

} // namespace ribkit::bus
