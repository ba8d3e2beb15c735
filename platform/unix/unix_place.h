// The directory where the processes of one machine meet. Whoever listens at an address has a socket there that is named
// after it, NODE.SAP, and beside it a lock file, which holds the listener's bound and is locked for as long as its
// process lives: so a dead one's socket is known and replaced. A group's members add a random number to the name, which
// is never used again.
#pragma once

#include "platform/descriptor.h"
#include "qip.h"
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::platform {

/// A name in the directory as long as the object lives, and the socket that listens there.
class taken_name {
  public:
    taken_name() = default;
    taken_name(descriptor directory, descriptor lock, std::string name)
        : directory_(std::move(directory)), lock_(std::move(lock)), name_(std::move(name)) {}
    taken_name(taken_name &&) = default;
    taken_name &operator=(taken_name &&other) noexcept {
        directory_ = std::move(other.directory_);
        lock_ = std::move(other.lock_);
        socket_ = std::move(other.socket_);
        name_.swap(other.name_);
        return *this;
    }
    ~taken_name() { release(); }

    /// Makes the socket; 0 or an errno.
    int listen(const std::string &path);

    /// Nobody finds it any more.
    void release();

    [[nodiscard]] int socket() const { return socket_.get(); }

  private:
    descriptor directory_;
    descriptor lock_;
    descriptor socket_;
    std::string name_;
};

/// Results are 0 or an errno.
class unix_place {
  public:
    /// The directory as the URL says it, which need not be there yet.
    int parse(std::string_view url);

    /// Makes the directory where it is not there. EADDRINUSE where another process listens.
    int take(const qip_addr &address, uint32_t bound, taken_name &taken) const;

    /// ENOTCONN where nobody listens, EAGAIN where too many are about to connect. Also says the listener's bound.
    int connect(const std::string &name, descriptor &connected, uint32_t &bound) const;

    /// The names of a group's members, some of which dead processes may have left.
    int members(const qip_addr &group, std::vector<std::string> &names) const;

    /// Only for a member's name, which nobody else takes later.
    void remove_if_dead(const std::string &name) const;

    /// Whether it is that of a group's member.
    static bool is_member(std::string_view name);

    static std::string name_of(const qip_addr &address);

  private:
    int open_directory(descriptor &opened, bool make) const;

    std::string path_;
};

} // namespace ribkit::platform
