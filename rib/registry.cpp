// A client's last registration counts, with the time at which it came.
#include "rib/registry.h"

#include "rib_codes.h"

#include <algorithm>
#include <utility>

namespace ribkit::rib {

namespace {

/// What lines of text and lists show of a name.
std::string shown_name(const std::string &name) {
    std::string shown = name.substr(0, longest_client_name);
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return shown;
}

} // namespace

uint32_t registry::take(const registration &said, uint64_t now) {
    const auto found = clients_.find(said.client);
    if (found == clients_.end() && clients_.size() == most_registrations) {
        return RIB_HW_FULL;
    }
    entry heard{{said.client, said.distance, shown_name(said.name)}, now};
    if (found == clients_.end()) {
        clients_.emplace(said.client, std::move(heard));
    } else {
        found->second = std::move(heard);
    }
    return RIB_OK;
}

std::optional<registration> registry::forget_one(uint64_t now) {
    const auto lost = std::find_if(clients_.begin(), clients_.end(), [now](const auto &client) {
        return now >= client.second.heard + registration_lasts;
    });
    if (lost == clients_.end()) {
        return {};
    }
    registration gone = std::move(lost->second.said);
    clients_.erase(lost);
    return gone;
}

const registration *registry::find(uint32_t client) const {
    const auto found = clients_.find(client);
    return found == clients_.end() ? nullptr : &found->second.said;
}

std::vector<registration> registry::all() const {
    std::vector<registration> listed;
    listed.reserve(clients_.size());
    for (const auto &[client, known] : clients_) {
        listed.push_back(known.said);
    }
    return listed;
}

static std::string line_about(const registration &client) {
    std::string line = "rib: client ";
    line += std::to_string(client.client);
    line += client.name.empty() ? "" : " (" + client.name + ')';
    return line;
}

std::string line_of_registration(const registration &said) {
    std::string line = line_about(said);
    line += " registered, distance ";
    return line += std::to_string(said.distance);
}

std::string line_of_loss(const registration &lost) {
    std::string line = line_about(lost);
    line += " was not heard of for ";
    line += std::to_string(registration_lasts);
    return line += " s: it is forgotten, with the distance that it registered";
}

} // namespace ribkit::rib
