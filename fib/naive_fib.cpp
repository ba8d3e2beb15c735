// Numbers are written out: that they are right is what the comparison is for.
#include "fib/naive_fib.h"

#include <algorithm>
#include <sstream>

namespace ribkit::fib {

namespace {

bool is_sound(uint32_t table, const naive_path &path) {
    if (table == 1) {
        return true;
    }
    if (path.ways.size() > 16) {
        return false;
    }
    for (const word_list &way : path.ways) {
        if (way.size() > 5) {
            return false;
        }
    }
    if (table == 0) {
        return true;
    }
    const uint32_t type = path.key[0];
    return path.key[4] <= 2 && ((type == 1 && path.key[1] != 0) || (type == 2 && path.key[4] != 0) || type == 4);
}

bool is_same(const naive_path &a, const naive_path &b) { return a.fixed == b.fixed && a.ways == b.ways; }

word_list joined(uint32_t vsan, const word_list &key) {
    word_list all{vsan};
    all.insert(all.end(), key.begin(), key.end());
    return all;
}

constexpr uint32_t with_paths = 0x1 | 0x2 | 0x20 | 0x200;

} // namespace

naive_fib::entry *naive_fib::find(const naive_update &asked, const word_list &key) {
    for (entry &one : entries_) {
        if (one.table == asked.table && one.vsan == asked.vsan && one.is.key == key) {
            return &one;
        }
    }
    return nullptr;
}

naive_fib::going *naive_fib::find_going(const naive_update &asked, bool merges) {
    for (going &one : going_) {
        if (one.merges == merges && one.table == asked.table && one.vsan == asked.vsan) {
            return &one;
        }
    }
    return nullptr;
}

bool naive_fib::is_covered(const naive_update &asked, bool merges) const {
    return std::any_of(going_.begin(), going_.end(), [&](const going &one) {
        return one.merges == merges && one.table == asked.table && (one.vsan == 0 || one.vsan == asked.vsan);
    });
}

void naive_fib::name(const naive_update &asked, bool merges, const word_list &key) {
    for (going &one : going_) {
        if (one.merges == merges && one.table == asked.table && (one.vsan == 0 || one.vsan == asked.vsan)) {
            one.named.insert(joined(asked.vsan, key));
        }
    }
}

bool naive_fib::any_going(bool merges) const {
    return std::any_of(going_.begin(), going_.end(), [&](const going &one) { return one.merges == merges; });
}

uint32_t naive_fib::refusal(const naive_update &asked) {
    constexpr uint32_t known[] = {0x1, 0x2, 0x4, 0x10, 0x20, 0x40, 0x100, 0x200, 0x400};
    if (std::find(std::begin(known), std::end(known), asked.oper) == std::end(known)) {
        return 0x40520002;
    }
    const bool names_paths = (asked.oper & with_paths) != 0;
    if (asked.vsan > 4095 || (names_paths ? asked.vsan == 0 : !asked.paths.empty())) {
        return 0x40520001;
    }
    if (upgrading_) {
        return 0x40520012;
    }
    if (has_sequence_ && static_cast<int32_t>(asked.sequence - sequence_) <= 0) {
        return 0x4052000e;
    }
    has_sequence_ = true;
    sequence_ = asked.sequence;
    if ((asked.oper == 0x20 && !is_covered(asked, true)) || (asked.oper == 0x200 && !is_covered(asked, false))) {
        return 0x40520010;
    }
    return 0;
}

uint32_t naive_fib::put(const naive_update &asked, const naive_path &path) {
    if (!is_sound(asked.table, path)) {
        return 0x40520001;
    }
    if (entry *held = find(asked, path.key); held != nullptr) {
        held->is = path;
    } else {
        const auto count = [this](auto which) {
            return static_cast<uint32_t>(std::count_if(entries_.begin(), entries_.end(), which));
        };
        if (count([&](const entry &one) { return one.table == asked.table; }) >= most_.entries[asked.table]) {
            return 0x4052000b;
        }
        if (most_.per_vsan != 0 && count([&](const entry &one) { return one.vsan == asked.vsan; }) >= most_.per_vsan) {
            return 0x4052001c;
        }
        entries_.push_back({asked.table, asked.vsan, path});
    }
    if (asked.oper == 0x20) {
        name(asked, true, path.key);
    }
    name(asked, false, path.key);
    return 0;
}

void naive_fib::remove(const naive_update &asked, const word_list &key) {
    std::erase_if(entries_, [&](const entry &one) {
        return one.table == asked.table && one.vsan == asked.vsan && one.is.key == key;
    });
}

void naive_fib::remove_all(const naive_update &asked, uint32_t &accepted) {
    accepted = static_cast<uint32_t>(std::erase_if(entries_, [&](const entry &one) {
        return one.table == asked.table && (asked.vsan == 0 || one.vsan == asked.vsan);
    }));
}

/// @return status
uint32_t naive_fib::compare(const naive_update &asked, const naive_path &path) {
    const entry *held = find(asked, path.key);
    if (held == nullptr) {
        return 0x20;
    }
    name(asked, false, path.key);
    return is_same(held->is, path) ? 0 : 0x80;
}

void naive_fib::begin(const naive_update &asked, bool merges) {
    std::erase_if(going_, [&](const going &one) {
        return one.merges == merges && one.table == asked.table && (asked.vsan == 0 || one.vsan == asked.vsan);
    });
    going_.push_back({merges, asked.table, asked.vsan, {}});
}

uint32_t naive_fib::end_merge(const naive_update &asked, uint32_t &accepted) {
    const going *ended = find_going(asked, true);
    if (ended == nullptr) {
        return 0x40520010;
    }
    accepted = static_cast<uint32_t>(std::erase_if(entries_, [&](const entry &one) {
        return one.table == asked.table && (asked.vsan == 0 || one.vsan == asked.vsan) &&
               !ended->named.contains(joined(one.vsan, one.is.key));
    }));
    going_.erase(going_.begin() + (ended - going_.data()));
    return 0;
}

uint32_t naive_fib::end_comparison(const naive_update &asked, uint32_t &accepted, word_list &faults) {
    const going *ended = find_going(asked, false);
    if (ended == nullptr) {
        return 0x40520010;
    }
    std::vector<word_list> extra;
    for (const entry &one : entries_) {
        if (one.table == asked.table && (asked.vsan == 0 || one.vsan == asked.vsan)) {
            accepted++;
            if (!ended->named.contains(joined(one.vsan, one.is.key))) {
                extra.push_back(joined(one.vsan, one.is.key));
            }
        }
    }
    std::sort(extra.begin(), extra.end(), by_words());
    for (const word_list &key : extra) {
        faults.push_back(0x10);
        faults.insert(faults.end(), key.begin(), key.end());
    }
    going_.erase(going_.begin() + (ended - going_.data()));
    return 0;
}

/// A merge has not named what was removed since.
void naive_fib::forget_gone() {
    for (going &one : going_) {
        std::erase_if(one.named, [&](const word_list &named) {
            return one.merges && std::none_of(entries_.begin(), entries_.end(), [&](const entry &held) {
                       return held.table == one.table && joined(held.vsan, held.is.key) == named;
                   });
        });
    }
}

word_list naive_fib::update(const naive_update &asked) {
    uint32_t result = refusal(asked);
    const uint32_t refused = result;
    uint32_t accepted = 0;
    word_list faults;
    for (const naive_path &path : asked.paths) {
        uint32_t status = 0;
        uint32_t failed = refused;
        if (refused == 0 && asked.oper == 0x2) {
            remove(asked, path.key);
        } else if (refused == 0 && asked.oper == 0x200) {
            status = compare(asked, path);
        } else if (refused == 0) {
            failed = put(asked, path);
        }
        if (failed != 0) {
            status = failed == 0x4052000b || failed == 0x4052001c ? 0x200 : failed == 0x40520001 ? 0x80 : 0x20;
            result = result == 0 ? failed : result;
        }
        if (status != 0) {
            faults.insert(faults.end(), {status, asked.vsan});
            faults.insert(faults.end(), path.key.begin(), path.key.end());
        } else {
            accepted++;
        }
    }
    if (refused == 0) {
        switch (asked.oper) {
        case 0x4:
            remove_all(asked, accepted);
            break;
        case 0x10:
        case 0x100:
            begin(asked, asked.oper == 0x10);
            break;
        case 0x40:
            result = end_merge(asked, accepted);
            break;
        case 0x400:
            result = end_comparison(asked, accepted, faults);
            break;
        default:
            break;
        }
        loaded_ = loaded_ || (!any_going(true) && (asked.oper == 0x1 || (asked.oper == 0x40 && result == 0)));
    }
    forget_gone();
    word_list answer{result, accepted};
    answer.insert(answer.end(), faults.begin(), faults.end());
    return answer;
}

void naive_fib::lose() {
    reached_ = false;
    going_.clear();
}

uint32_t naive_fib::state() const {
    if (upgrading_) {
        return 7;
    }
    if (!reached_) {
        return was_reached_ ? 5 : 0;
    }
    return any_going(true) ? 2 : any_going(false) ? 3 : loaded_ ? 4 : 1;
}

std::vector<word_list> naive_fib::all(uint32_t table) const {
    std::vector<word_list> all;
    for (const entry &one : entries_) {
        if (one.table == table) {
            word_list line = joined(one.vsan, one.is.key);
            line.insert(line.end(), one.is.fixed.begin(), one.is.fixed.end());
            for (const word_list &way : one.is.ways) {
                line.insert(line.end(), way.begin(), way.end());
            }
            all.push_back(line);
        }
    }
    std::sort(all.begin(), all.end(), by_words());
    return all;
}

std::string shown(const word_list &numbers) {
    std::ostringstream text;
    text << std::hex;
    for (const uint32_t number : numbers) {
        text << ' ' << number;
    }
    return text.str();
}

std::string shown(const naive_update &asked) {
    std::ostringstream text;
    text << "table " << asked.table << ", operation 0x" << std::hex << asked.oper << ", vsan " << std::dec << asked.vsan
         << ", number " << asked.sequence << '\n';
    for (const naive_path &path : asked.paths) {
        text << "  key" << shown(path.key) << ", " << path.ways.size() << " ways\n";
    }
    return text.str();
}

} // namespace ribkit::fib
