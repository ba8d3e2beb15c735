// A new socket gets its name by a rename once it listens: nobody finds one that does not answer yet, and that of a dead
// process is replaced at one stroke.
#include "platform/unix/unix_place.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <random>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace ribkit::platform {

namespace {

constexpr const char *lock_ending = ".lock";
constexpr const char *new_ending = ".new";
constexpr size_t number_digits = 16; // of a group's member

int errno_of(int result) { return result < 0 ? errno : 0; }

// Where the path is too long for a socket's address, the way to the directory's descriptor is not.
sockaddr_un address_of(const std::string &path, int directory, const std::string &name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() + 1 + name.size() < sizeof address.sun_path) {
        std::snprintf(address.sun_path, sizeof address.sun_path, "%s/%s", path.c_str(), name.c_str());
    } else {
        std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", directory, name.c_str());
    }
    return address;
}

descriptor new_socket() { return descriptor{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)}; }

std::string random_number() {
    std::random_device random;
    char text[number_digits + 1];
    std::snprintf(text, sizeof text, "%08x%08x", random(), random());
    return text;
}

bool is_same_file(const struct stat &one, const struct stat &other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Locks the file of this name, which the process that held it before may have removed meanwhile.
int lock_file(int directory, const std::string &name, int flags, descriptor &locked) {
    for (;;) {
        locked = descriptor{openat(directory, name.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, 0644)};
        if (!locked.is_open()) {
            return errno;
        }
        if (flock(locked.get(), LOCK_EX | LOCK_NB) != 0) {
            return errno == EWOULDBLOCK ? EADDRINUSE : errno;
        }
        struct stat ours {};
        struct stat there {};
        if (fstat(locked.get(), &ours) != 0) {
            return errno;
        }
        if (fstatat(directory, name.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0 && is_same_file(ours, there)) {
            return 0;
        }
    }
}

int write_bound(int file, uint32_t bound) {
    const std::string text = std::to_string(bound) + "\n";
    if (ftruncate(file, 0) != 0) {
        return errno;
    }
    const ssize_t written = pwrite(file, text.data(), text.size(), 0);
    return written == static_cast<ssize_t>(text.size()) ? 0 : written < 0 ? errno : ENOSPC;
}

// One message is always allowed: what stands there may be anything.
uint32_t read_bound(int directory, const std::string &name) {
    const descriptor file{
        openat(directory, (name + lock_ending).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK)};
    char text[12] = "";
    if (file.is_open() && read(file.get(), text, sizeof text - 1) > 0) {
        return static_cast<uint32_t>(std::clamp(std::strtoll(text, nullptr, 10), 1LL, 0xffffffffLL));
    }
    return 1;
}

// Without memory of the heap: also an object that ends does this.
void remove(int directory, const std::string &name) {
    for (const char *ending : {"", new_ending, lock_ending}) {
        std::array<char, NAME_MAX + 1> file{};
        std::snprintf(file.data(), file.size(), "%s%s", name.c_str(), ending);
        unlinkat(directory, file.data(), 0);
    }
}

// Nobody but us can think that this name is its own.
void remove_if_dead(int directory, const std::string &name) {
    descriptor lock;
    if (lock_file(directory, name + lock_ending, O_RDONLY, lock) == 0) {
        remove(directory, name);
    }
}

bool is_member_of(std::string_view name, std::string_view group) {
    const size_t number = group.size() + 1;
    return name.size() == number + number_digits && name.starts_with(group) && name[group.size()] == '.' &&
           name.find_first_not_of("0123456789abcdef", number) == std::string_view::npos;
}

} // namespace

void taken_name::release() {
    if (lock_.is_open()) {
        remove(directory_.get(), name_);
    }
    socket_.reset();
    lock_.reset();
}

int taken_name::listen(const std::string &path) {
    const std::string unready = name_ + new_ending;
    const sockaddr_un address = address_of(path, directory_.get(), unready);
    socket_ = new_socket();
    if (!socket_.is_open()) {
        return errno;
    }
    unlinkat(directory_.get(), unready.c_str(), 0);
    if (bind(socket_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        ::listen(socket_.get(), SOMAXCONN) != 0) {
        return errno;
    }
    return errno_of(renameat(directory_.get(), unready.c_str(), directory_.get(), name_.c_str()));
}

int unix_place::parse(std::string_view url) {
    path_ = url.substr(url.find(':') + 1);
    if (path_.empty() || path_.find('\0') != std::string::npos) {
        return EINVAL;
    }
    if (path_.front() != '/') { // wherever the process goes later
        const std::unique_ptr<char, decltype(&std::free)> here{getcwd(nullptr, 0), std::free};
        if (here == nullptr) {
            return errno;
        }
        std::string whole = here.get();
        path_ = whole.append("/").append(path_);
    }
    struct stat there {};
    return stat(path_.c_str(), &there) == 0 && !S_ISDIR(there.st_mode) ? ENOTDIR : 0;
}

int unix_place::open_directory(descriptor &opened, bool make) const {
    if (make && mkdir(path_.c_str(), 0700) != 0 && errno != EEXIST) {
        return errno;
    }
    opened = descriptor{open(path_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    return opened.is_open() ? 0 : errno;
}

std::string unix_place::name_of(const qip_addr &address) {
    char text[24];
    std::snprintf(text, sizeof text, "%08x.%u", address.node, address.sap);
    return text;
}

bool unix_place::is_member(std::string_view name) { return std::count(name.begin(), name.end(), '.') == 2; }

int unix_place::take(const qip_addr &address, uint32_t bound, taken_name &taken) const {
    std::string name = name_of(address);
    if (address.sap == 0) {
        name.append(".").append(random_number());
    }
    descriptor directory;
    descriptor lock;
    int error = open_directory(directory, true);
    error = error == 0 ? lock_file(directory.get(), name + lock_ending, O_RDWR | O_CREAT, lock) : error;
    error = error == 0 ? write_bound(lock.get(), bound) : error;
    if (error != 0) {
        return error;
    }
    taken_name made{std::move(directory), std::move(lock), name};
    error = made.listen(path_);
    if (error == 0) {
        taken = std::move(made);
    }
    return error;
}

int unix_place::connect(const std::string &name, descriptor &connected, uint32_t &bound) const {
    descriptor directory;
    if (const int error = open_directory(directory, false); error != 0) {
        return error == ENOENT ? ENOTCONN : error;
    }
    const sockaddr_un address = address_of(path_, directory.get(), name);
    descriptor made = new_socket();
    if (!made.is_open()) {
        return errno;
    }
    if (::connect(made.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        return errno == ENOENT || errno == ECONNREFUSED ? ENOTCONN : errno;
    }
    bound = read_bound(directory.get(), name);
    connected = std::move(made);
    return 0;
}

int unix_place::members(const qip_addr &group, std::vector<std::string> &names) const {
    const std::unique_ptr<DIR, int (*)(DIR *)> directory{opendir(path_.c_str()), closedir};
    if (directory == nullptr) {
        return errno == ENOENT ? 0 : errno;
    }
    const std::string group_name = name_of(group);
    for (;;) {
        errno = 0;
        const dirent *entry = readdir(directory.get());
        if (entry == nullptr) {
            return errno; // 0 at the end
        }
        if (is_member_of(entry->d_name, group_name)) {
            names.emplace_back(entry->d_name);
        }
    }
}

void unix_place::remove_if_dead(const std::string &name) const {
    descriptor directory;
    if (open_directory(directory, false) == 0) {
        platform::remove_if_dead(directory.get(), name);
    }
}

} // namespace ribkit::platform
