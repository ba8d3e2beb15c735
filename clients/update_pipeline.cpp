// Answers are taken in the order in which the updates were sent: what is answered before keeps until its turn. All of
// them are waited for since they were sent, so that several that are lost cost no longer than one.
#include "clients/update_pipeline.h"

#include "rib_codes.h"

#include <algorithm>
#include <utility>

namespace ribkit::clients {

template <class Table>
void update_pipeline<Table>::send(const update_content<Table> &content, std::span<uint8_t> update) {
    while (flights_.size() >= most()) {
        take_first();
    }
    if (most() > 1) {
        if (const auto sent = link_.send(Table::update, update)) {
            flights_.push_back({*sent, content});
            return;
        }
        finish(); // the RIB has no room
    }
    if (traces_) {
        print_update<Table>(update);
    }
    take(content, [&] { return link_.ask(Table::update, update); });
}

template <class Table> void update_pipeline<Table>::take_first() {
    const flight first = std::move(flights_.front());
    flights_.pop_front();
    take(first.content, [&] { return link_.take_answer(first.sent); });
}

template <class Table>
template <class Answer>
void update_pipeline<Table>::take(const update_content<Table> &content, const Answer &answer) {
    protocol::fcurt_response response{};
    try {
        response = result_of(answer());
    } catch (const bus::no_answer &) {
        told_.lost(content);
        throw;
    }
    is_careful_ = is_careful_ && response.result != RIB_OK;
    told_.answered(content, response);
}

template <class Table> protocol::fcurt_response update_pipeline<Table>::exchange(std::span<uint8_t> update) {
    if (traces_) {
        print_update<Table>(update);
    }
    return result_of(link_.ask(Table::update, update));
}

template <class Table> protocol::fcurt_response update_pipeline<Table>::result_of(std::span<const uint8_t> answer) {
    const protocol::fcurt_response response = response_in<Table>(answer);
    link_.take_result(Table::update, response.accepted == 0 ? response.result : RIB_OK);
    return response;
}

template <class Table> void update_pipeline<Table>::finish(uint32_t vsan) {
    const auto is_of = [=](const flight &one) { return one.content.vsan == vsan; };
    while (std::any_of(flights_.begin(), flights_.end(), is_of)) {
        take_first();
    }
}

template <class Table> void update_pipeline<Table>::finish() {
    while (!flights_.empty()) {
        take_first();
    }
}

template <class Table> void update_pipeline<Table>::give_up() {
    while (!flights_.empty()) {
        try {
            take_first();
        } catch (const bus::no_answer &) { // as the listener knows
        }
    }
    is_careful_ = true;
}

template class update_pipeline<unicast_table>;
template class update_pipeline<multicast_table>;
template class update_pipeline<label_table>;

} // namespace ribkit::clients
