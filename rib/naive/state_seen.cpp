// Keys and routes of each table turned into rows of numbers, and back.
#include "rib/naive/state_seen.h"

#include <algorithm>

namespace ribkit::rib {

namespace {

void append(words &to, const words &list) {
    to.push_back(static_cast<uint32_t>(list.size()));
    to.insert(to.end(), list.begin(), list.end());
}

words flat(const model::route_key &key) { return {key.vsan, key.to.fcid, key.to.mask}; }
words flat(const model::label_key &key) {
    return {key.vsan, key.type, key.source, key.to.fcid, key.to.mask, key.match_count, key.match[0], key.match[1]};
}

/// As the model has a route's line behind its owner.
words flat(const model::route_values &what) {
    words all{what.metric, what.flag};
    append(all, {what.carried.begin(), what.carried.end()});
    words hops;
    for (const model::next_hop &hop : what.hops) {
        hops.insert(hops.end(), {hop.if_index, hop.domain});
    }
    append(all, hops);
    return all;
}
words flat(const model::multicast_values &what) {
    words all{0};
    append(all, {what.members.begin(), what.members.end()});
    return all;
}
words flat(const model::label_values &what) {
    words all;
    append(all, {what.sources.begin(), what.sources.end()});
    append(all, {what.hops.begin(), what.hops.end()});
    return all;
}

template <class Kind> words line(const typename Kind::key &key, uint32_t uuid, const typename Kind::values &what) {
    words all{static_cast<uint32_t>(Kind::id)};
    const words where = flat(key);
    const words says = flat(what);
    all.insert(all.end(), where.begin(), where.end());
    all.push_back(uuid);
    all.insert(all.end(), says.begin(), says.end());
    return all;
}

template <class Kind> words told_of(const route_event<Kind> &event) {
    words all = line<Kind>(event.key, event.uuid, event.what);
    all.insert(all.begin(), {static_cast<uint32_t>(event.why), event.oper, event.action});
    return all;
}

// A record of the model's as one of each table's.

template <class Kind> class changes;

template <> class changes<unicast> {
  public:
    explicit changes(const std::vector<naive_record> &records) {
        held_.reserve(records.size());
        for (const naive_record &one : records) {
            model::route what{one.metric, one.flag, {}, {}};
            std::copy(one.carried.begin(), one.carried.end(), what.carried.begin());
            for (size_t i = 0; i < one.ways.size(); i += 2) {
                what.hops.push_back({one.ways[i], one.ways[i + 1]});
            }
            held_.push_back(what);
            all.push_back({one.action, {one.key[1], one.key[2]}, held_.back()});
        }
    }
    std::vector<model::unicast_change> all;

  private:
    std::vector<model::route> held_;
};

template <> class changes<multicast> {
  public:
    explicit changes(const std::vector<naive_record> &records) {
        for (const naive_record &one : records) {
            all.push_back({one.action, {one.key[1], one.key[2]}, std::span(one.ways)});
        }
    }
    std::vector<model::multicast_change> all;
};

template <> class changes<label> {
  public:
    explicit changes(const std::vector<naive_record> &records) {
        for (const naive_record &one : records) {
            const words &k = one.key;
            all.push_back({one.action, {k[0], k[1], k[2], {k[3], k[4]}, k[5], {k[6], k[7]}}, {one.carried, one.ways}});
        }
    }
    std::vector<model::label_change> all;
};

template <class Kind> words answer_of(state &asked, const naive_request &request) {
    const changes<Kind> records(request.records);
    const update_answer answer = asked.update<Kind>(
        {request.uuid, request.vsan, request.oper, request.versions, request.in_envelope, request.now}, records.all);
    return {answer.result, answer.oper, answer.vsan, answer.accepted, answer.held};
}

template <class Kind> void add_table(std::vector<words> &lines, const state &held) {
    const table<Kind> &routes = held.routes<Kind>();
    for (const auto &[key, first] : routes.all()) {
        for (const auto *one = first; one != nullptr; one = one->next) {
            lines.push_back(line<Kind>(key, one->of->uuid, routes.read(*one)));
        }
    }
}

template <class Kind> std::deque<words> entries_of(const change_logs &logs) {
    const auto &log = logs.of<Kind>();
    std::deque<words> all;
    for (uint32_t at = log.next() - log.held(); at != log.next(); at++) {
        const auto &entry = log.at(at);
        words &line = all.emplace_back(words{entry.sequence, entry.time, entry.oper, entry.action});
        const words key = flat(entry.key);
        line.insert(line.end(), key.begin(), key.end());
    }
    return all;
}

} // namespace

template <class Kind> void listener::hear(const route_event<Kind> &event) {
    told_since.push_back(told_of(event));
    logs_.enter(event, now_);
}
void listener::told(const route_event<unicast> &event) { hear(event); }
void listener::told(const route_event<multicast> &event) { hear(event); }
void listener::told(const route_event<label> &event) { hear(event); }

std::deque<words> listener::log(size_t table) const {
    return table == naive_label       ? entries_of<label>(logs_)
           : table == naive_multicast ? entries_of<multicast>(logs_)
                                      : entries_of<unicast>(logs_);
}

words answer_of(state &asked, const naive_request &request) {
    return request.table == naive_label       ? answer_of<label>(asked, request)
           : request.table == naive_multicast ? answer_of<multicast>(asked, request)
                                              : answer_of<unicast>(asked, request);
}

std::vector<words> all_routes(const state &held) {
    std::vector<words> lines;
    add_table<label>(lines, held);
    add_table<multicast>(lines, held);
    add_table<unicast>(lines, held);
    return lines;
}

std::map<uint32_t, words> vsans_of(const state &held) {
    std::map<uint32_t, words> all;
    for (const auto &[vsan, use] : held.vsans()) {
        all[vsan] = {use.routes[0], use.routes[1], use.routes[2], use.changed};
    }
    return all;
}

/// Those that have routes; the others have to be known for another reason.
std::map<uint32_t, words> clients_of(const state &held) {
    std::map<uint32_t, words> all;
    for (const auto &[uuid, client] : held.clients().all()) {
        if (client.held() != 0) {
            all[uuid] = {client.routes.begin(), client.routes.end()};
        } else {
        }
    }
    return all;
}

std::map<std::array<uint32_t, 2>, words> versions_of(const state &held) {
    std::map<std::array<uint32_t, 2>, words> all;
    for (const auto &[of, list] : held.versions().all()) {
        all[{of.uuid, of.vsan}] = list;
    }
    return all;
}

} // namespace ribkit::rib
