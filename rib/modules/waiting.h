// Requests whose answers wait for the modules: how many answers each still waits for, what the worst of them said,
// which of its routes a module did not take, and what a comparison has found.
#pragma once

#include "model/label.h"
#include "rib/request.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace ribkit::rib {

/// A destination of any table, as answers of modules tell it apart. Throws nothing.
using any_key = std::pair<table_id, model::label_key>;

/// Which of two result codes of modules tells more of what is wrong.
uint32_t worse_of(uint32_t one, uint32_t other);

class waiting {
  public:
    /// 0 is no request.
    using id = uint32_t;

    /// What a comparison with the modules has found.
    struct findings {
        std::map<any_key, uint32_t> keys{}; ///< FIB_VERF_... of those that differ; of several modules the first's
        uint32_t named = 0;                 ///< routes that modules shall have
        bool complete = true;               ///< every module has said all

        bool operator==(const findings &) const = default;
    };
    /// So many keys of a comparison are kept.
    static constexpr size_t most_found = 65536;

    struct done {
        id request;
        update_answer answer;
        std::optional<findings> found{}; ///< of a request that compares
    };

    /// A request begins: what changes until it is sealed is its doing. Throws std::bad_alloc.
    id open();
    /// One more answer of a module is waited for.
    void owe(id request);
    /// An answer has come, or will not: what it says of one route of the request. Of one that is over nothing is kept.
    void settle(id request, const any_key &route, uint32_t code) noexcept;
    /// Something is known of a route of the request without asking.
    void tell(id request, const any_key &route, uint32_t code) noexcept;
    /// As settle and tell, of no route.
    void settle(id request, uint32_t code) noexcept;
    void tell(id request, uint32_t code) noexcept;

    /// The request compares; its result will be RIB_FAILED where something differs.
    void compare(id request) noexcept;
    /// A module has something else than it shall have. @return whether more of it is of use
    bool find(id request, const any_key &route, uint32_t status) noexcept;
    /// So many routes were named to a module.
    void count_named(id request, uint32_t named) noexcept;

    /// All that the request changes has been told. It is done once nothing is owed.
    void seal(id request, const update_answer &answer) noexcept;
    /// The request will not wait any more. It is done with RIB_TIMEOUT where anything is owed.
    void give_up(id request) noexcept;
    /// A request that is done; it is forgotten.
    std::optional<done> take_done();

    /// Requests that are not done.
    [[nodiscard]] size_t size() const { return open_.size() - finished_; }

  private:
    struct one {
        bool sealed = false;
        bool over = false;
        uint32_t owed = 0;
        uint32_t worst = RIB_OK;
        update_answer answer{};
        std::set<any_key> missed{};
        std::optional<findings> found{};
        one *next_done = nullptr;
        id number = 0;
    };

    [[nodiscard]] one *find_open(id request) noexcept;
    void finish_if_done(one &request) noexcept;
    void finish(one &request) noexcept;

    std::map<id, one> open_;
    one *first_done_ = nullptr; // linked, since finishing must not fail
    one *last_done_ = nullptr;
    size_t finished_ = 0;
    id last_ = 0;
};

} // namespace ribkit::rib
