// The in-process transport: one lock a bus, held for moving a message from one queue to another and no longer.
#include "platform/transports.h"

#include "platform/lasting.h"
#include "platform/local/mailbox.h"
#include "platform/tokens.h"
#include <algorithm>
#include <cerrno>
#include <map>
#include <span>
#include <string>
#include <utility>

namespace ribkit::platform {

namespace {

struct listener {
    mailbox *box;
    door *way_in;
};

struct bus {
    std::shared_ptr<post_office> office = std::make_shared<post_office>();
    std::map<std::pair<uint32_t, uint32_t>, std::vector<listener>> listeners; // by node and service access point
    std::shared_ptr<token_source> tokens = std::make_shared<token_source>();
    std::vector<arrival> arrivals; // of one message to a group, all before any of them is completed

    [[nodiscard]] std::span<const listener> at(const qip_addr &address) const {
        const auto found = listeners.find({address.node, address.sap});
        return found == listeners.end() ? std::span<const listener>{} : found->second;
    }
};

/// Empties a container whatever happens.
template <typename Container> class clear_at_end {
  public:
    explicit clear_at_end(Container &emptied) : emptied_(emptied) {}
    clear_at_end(const clear_at_end &) = delete;
    clear_at_end &operator=(const clear_at_end &) = delete;
    ~clear_at_end() { emptied_.clear(); }

  private:
    Container &emptied_;
};

class local_endpoint;

class way_home final : public return_path {
  public:
    way_home(std::weak_ptr<local_endpoint> home, std::shared_ptr<token_source> tokens)
        : home_(std::move(home)), token_(std::move(tokens)) {}

    int answer(message letter) override;
    [[nodiscard]] uint32_t token() const { return token_.value(); }

  private:
    std::weak_ptr<local_endpoint> home_;
    token_holder token_;
};

class local_endpoint final : public endpoint, public std::enable_shared_from_this<local_endpoint> {
  public:
    explicit local_endpoint(std::shared_ptr<bus> home) : bus_(std::move(home)) {}
    ~local_endpoint() override { shut(); }

    // Nobody vouches for a name here: whoever is in this process may say anything.
    int listen(const qip_addr &address, uint32_t bound, std::span<const char *const> /*names*/) override {
        const std::scoped_lock lock{bus_->office->lock};
        if (box_->closed()) {
            return ECANCELED;
        }
        std::vector<listener> &there = bus_->listeners[{address.node, address.sap}];
        const auto mine = [&](const listener &one) { return one.box == box_.get(); };
        if (is_group(address) ? std::any_of(there.begin(), there.end(), mine) : !there.empty()) {
            return EADDRINUSE;
        }
        there.reserve(there.size() + 1);
        there.push_back({box_.get(), &box_->add_door(bound)});
        return 0;
    }

    int send(const qip_addr &address, message letter, bool may_wait, uint32_t *token) override {
        if (token != nullptr) {
            auto path = std::make_shared<way_home>(weak_from_this(), bus_->tokens);
            letter.token = *token = path->token();
            letter.reply = std::move(path);
        }
        letter.from = self_;
        std::unique_lock locked{bus_->office->lock};
        std::span<const listener> readers;
        if (const int error = find_room(address, may_wait, locked, readers); error != 0) {
            return error;
        }
        if (token == nullptr) {
            deliver(readers, std::move(letter));
            return 0;
        }
        expected_answer awaited{*box_, *token};
        if (awaited.error() == 0) {
            deliver(readers, std::move(letter));
            awaited.keep();
        }
        return awaited.error();
    }

    int receive(const selector &selected, message &letter) override { return box_->receive(selected, letter); }

    void close() override { shut(); }

    void take_home(message letter) {
        const std::scoped_lock lock{bus_->office->lock};
        box_->put_answer(std::move(letter));
    }

  private:
    // Everyone who listens at the address once all of them have room; none only where a group is empty.
    int find_room(const qip_addr &address, bool may_wait, std::unique_lock<std::mutex> &locked,
                  std::span<const listener> &readers) {
        for (;;) {
            readers = bus_->at(address);
            if (box_->closed()) {
                return ECANCELED;
            }
            if (readers.empty() && !is_group(address)) {
                return ENOTCONN;
            }
            if (std::all_of(readers.begin(), readers.end(),
                            [this](const listener &one) { return one.box->has_room(*one.way_in, self_->number); })) {
                return 0;
            }
            if (!may_wait) {
                return EAGAIN;
            }
            bus_->office->wait_for_room(locked, self_->number);
        }
    }

    // Of several readers the first is given the message itself, after the copies.
    void deliver(std::span<const listener> readers, message letter) {
        if (readers.size() == 1) {
            readers.front().box->put(*readers.front().way_in, std::move(letter));
            return;
        }
        const clear_at_end<std::vector<arrival>> emptied{bus_->arrivals};
        for (size_t index = 1; index < readers.size(); ++index) {
            const listener &one = readers[index];
            bus_->arrivals.push_back(one.box->prepare(one.way_in, copy_of(letter)));
        }
        if (!readers.empty()) {
            const listener &one = readers.front();
            bus_->arrivals.push_back(one.box->prepare(one.way_in, std::move(letter)));
        }
        std::for_each(bus_->arrivals.begin(), bus_->arrivals.end(), mailbox::complete);
    }

    void shut() {
        mailbox::leftovers unread;
        const std::scoped_lock lock{bus_->office->lock};
        for (auto &[address, there] : bus_->listeners) {
            std::erase_if(there, [&](const listener &one) { return one.box == box_.get(); });
        }
        unread = box_->close();
    }

    std::shared_ptr<bus> bus_;
    std::shared_ptr<mailbox> box_ = std::make_shared<mailbox>(bus_->office, faults());
    sender_ptr self_ = new_sender("");
};

int way_home::answer(message letter) {
    letter.token = token();
    if (const auto home = home_.lock()) {
        home->take_home(std::move(letter));
    }
    return 0;
}

struct named_bus {
    std::string name;
    std::weak_ptr<bus> there;
};

struct bus_list {
    std::mutex lock;
    std::vector<named_bus> known;
};

constinit lasting<bus_list> buses;

std::shared_ptr<bus> bus_named(std::string_view name) {
    std::vector<named_bus> &known = buses.it.known;
    const std::scoped_lock locked{buses.it.lock};
    std::erase_if(known, [](const named_bus &one) { return one.there.expired(); });
    for (const named_bus &one : known) {
        if (auto found = one.there.lock(); found != nullptr && one.name == name) {
            return found;
        }
    }
    auto made = std::make_shared<bus>();
    known.push_back({std::string{name}, made});
    return made;
}

} // namespace

int open_local(std::string_view url, std::chrono::milliseconds /*server_limit*/, endpoint_ptr &opened) {
    opened = std::make_shared<local_endpoint>(bus_named(url.substr(url.find(':') + 1)));
    return 0;
}

} // namespace ribkit::platform
