// A module's FIB as a list of everything, searched from the start: the model that the real one is compared with. It
// shares nothing with it but numbers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace ribkit::fib {

using word_list = std::vector<uint32_t>;

/// The order of lists: of big-endian machines gcc 12 compares too few of their bytes with <.
class by_words {
  public:
    bool operator()(const word_list &a, const word_list &b) const {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
    }
};

/// What is asked, number by number.
struct naive_path {
    word_list
        key; ///< unicast and multicast: FC ID, mask; label: type, source, FC ID, mask, number of labels, two labels
    word_list fixed;             ///< what a unicast entry says but its ways
    std::vector<word_list> ways; ///< control word, interface, labels; of multicast one word each
};

struct naive_update {
    uint32_t table; ///< 0 unicast, 1 multicast, 2 label
    uint32_t oper;
    uint32_t vsan;
    uint32_t sequence;
    std::vector<naive_path> paths;
};

class naive_fib {
  public:
    struct limits {
        uint32_t entries[3];
        uint32_t per_vsan;
    };

    explicit naive_fib(const limits &most) : most_(most) {}

    /// @return result, accepted, and status and key of each path that is named
    word_list update(const naive_update &asked);
    void reach() { reached_ = was_reached_ = true; }
    void lose();
    void set_upgrading(bool upgrading) { upgrading_ = upgrading; }
    [[nodiscard]] uint32_t state() const;

    /// All of a table, sorted: VSAN, key, fixed words, ways.
    [[nodiscard]] std::vector<word_list> all(uint32_t table) const;

  private:
    struct entry {
        uint32_t table;
        uint32_t vsan;
        naive_path is;
    };
    /// A merge or a comparison that goes on.
    struct going {
        bool merges;
        uint32_t table;
        uint32_t vsan;
        std::set<word_list, by_words> named; ///< VSAN and key
    };

    uint32_t refusal(const naive_update &asked);
    uint32_t put(const naive_update &asked, const naive_path &path);
    void remove(const naive_update &asked, const word_list &key);
    void remove_all(const naive_update &asked, uint32_t &accepted);
    uint32_t compare(const naive_update &asked, const naive_path &path);
    void begin(const naive_update &asked, bool merges);
    uint32_t end_merge(const naive_update &asked, uint32_t &accepted);
    uint32_t end_comparison(const naive_update &asked, uint32_t &accepted, word_list &faults);
    void forget_gone();
    going *find_going(const naive_update &asked, bool merges);
    [[nodiscard]] bool is_covered(const naive_update &asked, bool merges) const;
    void name(const naive_update &asked, bool merges, const word_list &key);
    entry *find(const naive_update &asked, const word_list &key);
    [[nodiscard]] bool any_going(bool merges) const;

    limits most_;
    std::vector<entry> entries_;
    std::vector<going> going_;
    bool reached_ = false;
    bool was_reached_ = false;
    bool loaded_ = false;
    bool upgrading_ = false;
    bool has_sequence_ = false;
    uint32_t sequence_ = 0;
};

/// Of a difference: both sides.
std::string shown(const naive_update &asked);
std::string shown(const word_list &numbers);

} // namespace ribkit::fib
