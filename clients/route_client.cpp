// The way of a route change: computed, compared with what the RIB has, written, sent, answered. A VSAN is unsure while
// anything of it is on its way: whatever ends that before its time, the RIB is asked what came of it.
#include "clients/route_client.h"

#include "bus/patience.h"
#include "clients/question.h"
#include "rib_codes.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace ribkit::clients {

namespace {

constexpr unsigned most_rounds = 8;

void report(uint32_t vsan, const protocol::fcurt_response &response) {
    std::fprintf(stderr, "ribkit: the RIB's answer for vsan %u is \"%s\": %u routes accepted\n", vsan,
                 bus::result_text(response.result).c_str(), response.accepted);
}

/// Whether somebody has deleted what was to be changed; of another client there may be a route still.
constexpr bool is_missing(uint32_t result) { return result == RIB_NO_ENTRY || result == RIB_OBJECT_OWNED; }

// Which of several clients' routes is active is the RIB's business: what is read is taken for as it was sent.
model::route as_sent(const model::route_values &what) {
    model::route sent = copied(what);
    sent.flag |= RIB_FLAG_ACTIVE;
    return sent;
}
template <class Values> auto as_sent(const Values &what) { return copied(what); }

} // namespace

template <class Table>
route_client<Table>::route_client(const std::string &url, uint32_t uuid, client_options options)
    : uuid_(uuid), options_(std::move(options)), link_(url, uuid, options_.link),
      registration_(link_, uuid, options_.name, options_.distance), writer_(uuid, options_.message_limit),
      pipeline_(
          link_, options_.trace,
          {[this](const content &about, const auto &response) { take_answer(about, response); },
           [this](const content &about) { known_.leave_open(about.vsan, about.changes, about.changes.size()); }}) {}

template <class Table> void route_client<Table>::start_over(takeover how) {
    known_.forget();
    takes_over_ = how;
}

template <class Table> bool route_client<Table>::rib_started(std::chrono::milliseconds limit) {
    bool started = false;
    for (auto left = limit;;) {
        const auto part =
            registration_.is_wanted() ? std::min<std::chrono::milliseconds>(left, registration::interval) : left;
        started = link_.heard_of_start(part);
        left -= part;
        if (started || left.count() <= 0) {
            break;
        }
        stay_registered();
    }
    if (started) {
        suppose_start();
    }
    return started;
}

// Of what is on its way it is not known which RIB it has come to.
template <class Table> void route_client<Table>::suppose_start() {
    registration_.forget();
    known_.doubt_all();
    errands_.clear();
}

template <class Table> client_traffic route_client<Table>::converge(const wanted_tables<Table> &wanted) {
    traffic_ = {};
    to_send_ = 0;
    errands_.clear();
    rounds_.clear();
    refused_.clear();
    const auto start = bus::run_now();
    const auto finish = [&] {
        const bus::link_traffic carried = link_.take_traffic();
        traffic_.messages = carried.messages;
        traffic_.bytes_sent = carried.bytes_sent;
        traffic_.bytes_received = carried.bytes_received;
        traffic_.exchanging = bus::run_now() - start;
    };
    try {
        rib_started({});
        bring_all(wanted);
        link_.renew_patience(); // for what happens next
    } catch (...) {
        finish();
        throw;
    }
    finish();
    return traffic_;
}

// Where an answer is lost, the others are waited for all the same; what is in then is not sent again.
template <class Table> void route_client<Table>::bring_all(const wanted_tables<Table> &wanted) {
    for (bool is_done = false; !is_done;) {
        try {
            is_done = bring_each(wanted);
        } catch (const bus::no_answer &why) {
            pipeline_.give_up();
            errands_.clear();
            has_come_in_ = false; // before the one that was waited for in vain
            if (!link_.await_after(why)) {
                throw;
            }
        }
    }
}

/// @return whether all of them are in. A RIB that starts while this goes on has lost what it was sent before: all VSANs
/// have their turn again.
template <class Table> bool route_client<Table>::bring_each(const wanted_tables<Table> &wanted) {
    for (const auto &[vsan, routes] : wanted) {
        keep_registered();
        bring(vsan, routes);
        if (std::exchange(has_come_in_, false)) {
            link_.renew_patience();
        }
        if (rib_started({})) {
            return false;
        }
    }
    pipeline_.finish();
    return !rib_started({}) && std::all_of(wanted.begin(), wanted.end(), [this](const auto &one) {
        return known_.is_sure(one.first) || refused_.contains(one.first);
    });
}

template <class Table> void route_client<Table>::bring(uint32_t vsan, const shared_table<Table> &wanted) {
    pipeline_.finish(vsan);
    if (refused_.contains(vsan)) {
        return;
    }
    if (takes_over_ && !known_.has(vsan)) {
        take_over(vsan, wanted);
    }
    if (!known_.is_sure(vsan)) {
        read(vsan);
    }
    const auto difference = known_.difference_to(vsan, wanted);
    if (difference->changes.empty()) {
        known_.accept(vsan, wanted); // the same, and shared
    } else {
        send(vsan, difference);
    }
}

template <class Table> void route_client<Table>::take_over(uint32_t vsan, const shared_table<Table> &wanted) {
    if (*takes_over_ == takeover::reads) {
        known_.doubt(vsan);
    } else {
        merge(vsan, wanted);
    }
}

// Whoever merged before may have ended before the merge did: what it named is marked still. So what the RIB has is
// believed only where the count says that it has nothing else.
template <class Table> void route_client<Table>::merge(uint32_t vsan, const shared_table<Table> &wanted) {
    const auto all = model::changes_between({}, *wanted);
    size_t named = 0;
    for (auto left = std::span(all); !left.empty();) {
        const auto message = writer_.write(vsan, left, RIB_OPER_MERGE_RSP);
        left = left.subspan(message.changes.size());
        named += pipeline_.exchange(message.bytes).accepted;
    }
    const protocol::fcurt_response end = pipeline_.exchange(writer_.write(vsan, {}, RIB_OPER_MERGE_RSP).bytes);
    traffic_.merged += named;
    traffic_.deleted += end.accepted;
    if (end.result == RIB_OK && named == all.size() && end.held == named) {
        known_.accept(vsan, wanted);
        has_come_in_ = true;
    } else {
        known_.doubt(vsan);
    }
}

template <class Table> void route_client<Table>::read(uint32_t vsan) {
    known_.doubt(vsan);
    own_table<Table> mine;
    try {
        read_table<Table>(link_, {.uuid = uuid_, .vsan = vsan, .trace = options_.trace},
                          [&](uint32_t owner, const auto &key, const auto &what) {
                              if (owner == uuid_) {
                                  mine.emplace_hint(mine.end(), Table::in_vsan(key), as_sent(what));
                              }
                          });
    } catch (const refused_question &why) {
        throw bus::no_answer(why.what());
    }
    known_.learn(vsan, std::move(mine), traffic_);
}

template <class Table> void route_client<Table>::send(uint32_t vsan, const shared_difference<Table> &difference) {
    const uint32_t oper = options_.link.envelopes ? RIB_OPER_UPDATE_CMI : RIB_OPER_UPDATE_RSP;
    to_send_ += difference->changes.size();
    known_.doubt(vsan);
    errands_[vsan] = {difference};
    for (auto left = std::span(difference->changes); !left.empty();) {
        const auto message = writer_.write(vsan, left, oper);
        left = left.subspan(message.changes.size());
        errands_[vsan].unanswered++;
        errands_[vsan].is_sent = left.empty();
        pipeline_.send({vsan, difference, message.changes}, message.bytes);
    }
}

template <class Table>
void route_client<Table>::take_answer(const content &about, const protocol::fcurt_response &response) {
    const auto [vsan, difference, changes] = about;
    if (response.result == RIB_OK) {
        traffic_.count(table_of(difference->before), changes);
    } else {
        known_.leave_open(vsan, changes, response.accepted);
    }
    const auto found = errands_.find(vsan);
    if (found != errands_.end()) {
        if (response.result != RIB_OK) {
            found->second.refused.push_back({response, {changes.begin(), changes.end()}});
        }
        if (--found->second.unanswered == 0 && found->second.is_sent) {
            end_errand(vsan);
        }
    }
    options_.progress("routes sent", traffic_.sent(), to_send_);
}

/// All answers about a VSAN are there. Where somebody else has changed this client's routes meanwhile, what to send is
/// found anew. An answer counts what took effect without naming it, so the RIB is asked what it has.
template <class Table> void route_client<Table>::end_errand(uint32_t vsan) {
    const errand done = std::move(errands_.extract(vsan).mapped());
    has_come_in_ = true;
    if (done.refused.empty()) {
        known_.accept(vsan, done.of->after);
        return;
    }
    const bool is_changed = std::any_of(done.refused.begin(), done.refused.end(),
                                        [](const refusal &one) { return is_missing(one.response.result); });
    if (!is_changed || ++rounds_[vsan] == most_rounds) {
        note_refused(vsan, done.refused);
    }
}

// Of the VSAN that was asked about: a refusal that comes before the update was read names none.
template <class Table> void route_client<Table>::note_refused(uint32_t vsan, const std::vector<refusal> &refused) {
    read(vsan);
    refused_.insert(vsan);
    for (const auto &[response, changes] : refused) {
        traffic_.refused += static_cast<size_t>(std::count_if(
            changes.begin(), changes.end(), [&](const auto &one) { return !model::has_effect(known_.of(vsan), one); }));
        report(vsan, response);
    }
}

template class route_client<unicast_table>;
template class route_client<multicast_table>;
template class route_client<label_table>;

} // namespace ribkit::clients
