// Updates of a module's tables and their answers: a head, and so many paths of one table behind it; an answer, in front
// of it the keys that did not take effect, where there are any.
//
//     unicast_fib_update update(room, {FIB_OPER_UPDATE, vsan, sequence});
//     while (add_path(update, to, route, labels)) { ... }
//     send(room, update.size());
#pragma once

#include "codec/messages/fib.h"
#include "codec/writer.h"
#include "model/fib.h"
#include "protocol/uses.h"
#include "rib_check.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::protocol {

/// An update for a module while it is written.
/// @tparam Path the layout of its paths
template <const codec::layout &Path> class fib_update_writer {
  public:
    /// @param room at least the head's bytes; the caller keeps it
    fib_update_writer(std::span<uint8_t> room, const model::fib_head &head) : room_(room), head_(room) {
        head_.template set<use<wire::fib_update, "oper">>(head.oper);
        head_.template set<use<wire::fib_update, "vsan">>(head.vsan);
        head_.template set<use<wire::fib_update, "sequence">>(head.sequence);
    }

    /// Adds a path that `write` fills, whole or nothing of it. @return whether there was room
    template <class Write> bool add(const Write &write) {
        const codec::writer<Path> path(room_.subspan(size_));
        write(path);
        if (!path.is_whole()) {
            return false;
        }
        size_ += path.size();
        head_.template set<use<wire::fib_update, "n_path">>(++paths_);
        return true;
    }

    [[nodiscard]] uint32_t paths() const { return paths_; }
    [[nodiscard]] uint32_t size() const { return size_; }

  private:
    std::span<uint8_t> room_;
    codec::writer<wire::fib_update> head_;
    uint32_t size_ = wire::fib_update.size;
    uint32_t paths_ = 0;
};

using unicast_fib_update = fib_update_writer<wire::fcu_path>;
using multicast_fib_update = fib_update_writer<wire::fcm_path>;
using label_fib_update = fib_update_writer<wire::fcl_path>;

/// Whether every way pushes few enough labels for a path. What does not fit is in no module.
bool fits_path(const model::label_values &what);

/// Adds an entry: of more ways than a path can have its first. @return whether there was room
/// @param labels what a label route wants pushed for this destination: at ways by the same interface
bool add_path(unicast_fib_update &update, const model::destination &to, const model::route_values &what,
              const model::label_values &labels = {});
bool add_path(unicast_fib_update &update, const model::destination &to, const model::fib_unicast &what);
bool add_path(multicast_fib_update &update, const model::destination &to, const model::fib_multicast &what);
bool add_path(label_fib_update &update, const model::label_key &key, const model::label_values &what);
bool add_path(label_fib_update &update, const model::label_key &key, const model::fib_label &what);

/// Adds a path that is nothing but its key, to be removed or compared.
bool add_key(unicast_fib_update &update, const model::destination &to);
bool add_key(multicast_fib_update &update, const model::destination &to);
bool add_key(label_fib_update &update, const model::label_key &key);

/// The head of an update that has passed its check, and how many paths it says follow.
model::fib_head head_of(codec::view<wire::fib_update> head);
uint32_t paths_of(codec::view<wire::fib_update> head);

// What a path that has passed its check says. The ways are written into `ways`, which has room for all.
inline constexpr size_t most_way_words = size_t{model::most_paths} * (2 + model::most_path_labels);
using way_words = std::array<uint32_t, most_way_words>;

struct unicast_path {
    model::destination to;
    model::fib_unicast what;
};
unicast_path path_of(codec::view<wire::fcu_path> path, way_words &ways);

/// Of any number of members.
struct multicast_path {
    model::destination to;
    model::fib_multicast what;
};
multicast_path path_of(codec::view<wire::fcm_path> path, std::vector<uint32_t> &members);

struct label_path {
    model::label_key key;
    model::fib_label what;
};
label_path path_of(codec::view<wire::fcl_path> path, uint32_t vsan, way_words &ways);

/// The type of a label entry in a module, of a type and labels to match.
uint32_t fib_type_of(const model::label_key &key);
/// ... and back; 0 of a number that is none.
uint32_t route_type_of(uint32_t fib_type);

using bytes = std::vector<uint8_t>;

/// Bytes of a key in an answer.
template <const codec::layout &Report, codec::field_called List = "entry">
inline constexpr size_t fault_size = Report.row_of(List.str()).stride;

/// An answer; where there are faults, behind their keys.
bytes fib_answer(const model::fib_answer &answer, std::span<const model::fib_fault<model::route_key>> faults);
/// As fib_answer, of the multicast table: its keys travel without masks.
bytes fib_multicast_answer(const model::fib_answer &answer,
                           std::span<const model::fib_fault<model::multicast_key>> faults);
bytes fib_label_answer(const model::fib_answer &answer, std::span<const model::fib_fault<model::label_key>> faults);

/// From where on the next query of differences goes on behind an entry.
model::label_key key_behind(codec::view<wire::verf_fcu> entry);
model::label_key key_behind(codec::view<wire::verf_fcm> entry);
model::label_key key_behind(codec::view<wire::verf_fcl> entry);

model::fib_answer answer_of(codec::view<wire::fib_rsp> answer);
std::vector<model::fib_fault<model::route_key>> faults_of(codec::view<wire::fcu_rsp_path> report);
/// Masks are 0: a key stands for all of its FC ID.
std::vector<model::fib_fault<model::multicast_key>> faults_of(codec::view<wire::fcm_rsp_path> report);
std::vector<model::fib_fault<model::label_key>> faults_of(codec::view<wire::fcl_rsp_path> report);

} // namespace ribkit::protocol
