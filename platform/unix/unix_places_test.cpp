// Processes that meet in a directory: names in it, dead listeners, permissions. They are forked and start threads, so
// the tests are a program of their own, which no sanitizer of threads runs.
#include "platform/descriptor.h"
#include "platform/transport.h"
#include "platform/unix/unix_fixture.h"

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <pwd.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace ribkit::platform {

namespace {

constexpr qip_addr group{0xfe000000, 0};

/// A directory, and no handle yet.
class unix_places : public ::testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(qip_refs_held(), 0U); }

    testing::temporary_directory home;
    std::string directory = home.file("bus");
    std::string url = "unix:" + directory;
};

TEST_F(unix_places, two_processes) {
    const pid_t child = started([&] {
        const uint32_t client = opened(url);
        qip_ref sent{};
        while (send_text(client, "question", &sent) == ENOTCONN) {
            usleep(1000);
        }
        return taken(client, within(60000, QIP_RECV_BY_TOKEN, qip_rr_token_get(&sent))) == "question!" ? 0 : 1;
    });
    const uint32_t server = listening(url);
    qip_ref asked = dirty_ref();
    ASSERT_EQ(qip_recv(server, &asked, nullptr), 0);
    EXPECT_EQ(qip_sender_name(&asked), own_name());
    EXPECT_EQ(answer_text(server, asked, text_of(asked) + "!"), 0);
    EXPECT_EQ(qip_drop(server, &asked), 0);
    EXPECT_EQ(ended(child), 0);
    EXPECT_EQ(qip_close(server), 0);
}

TEST_F(unix_places, the_listener_makes_the_directory_for_itself_and_leaves_nothing_in_it) {
    const uint32_t client = opened(url);
    EXPECT_EQ(send_text(client, "?"), ENOTCONN);
    EXPECT_EQ(send_text(client, "?", nullptr, group), 0);
    EXPECT_FALSE(std::filesystem::exists(directory));
    const uint32_t server = listening(url);
    EXPECT_EQ(error_of(qip_listen(server, &group, 1)), 0);
    struct stat made {};
    ASSERT_EQ(stat(directory.c_str(), &made), 0);
    EXPECT_EQ(made.st_mode & 0777U, 0700U);
    EXPECT_TRUE(std::filesystem::is_socket(directory + "/fe000001.25"));
    EXPECT_EQ(entries(directory), 4U);
    EXPECT_EQ(exchanged(client, server), "question!");
    EXPECT_EQ(qip_close(server), 0);
    EXPECT_EQ(entries(directory), 0U);
    EXPECT_EQ(qip_close(client), 0);
}

TEST_F(unix_places, urls) {
    uint32_t handle = 0;
    EXPECT_EQ(error_of(qip_open("unix:", &handle)), EINVAL);
    EXPECT_EQ(error_of(qip_open("unix:/dev/null", &handle)), ENOTDIR);
    handle = opened(url + "/no/such");
    EXPECT_EQ(error_of(qip_listen(handle, &rib, 1)), ENOENT);
    EXPECT_EQ(qip_close(handle), 0);
    endpoint_ptr end;
    EXPECT_EQ(open_endpoint(std::string_view{"unix:a\0b", 8}, std::chrono::seconds{1}, end), EINVAL);
}

TEST_F(unix_places, a_directory_that_becomes_something_else) {
    const uint32_t handle = opened(url);
    const testing::input_file there{"no directory"};
    std::filesystem::copy(there.path(), directory);
    EXPECT_EQ(send_text(handle, "?"), ENOTDIR);
    EXPECT_EQ(send_text(handle, "?", nullptr, group), ENOTDIR);
    EXPECT_EQ(error_of(qip_listen(handle, &rib, 1)), ENOTDIR);
    EXPECT_EQ(qip_close(handle), 0);
}

TEST_F(unix_places, no_relative_path_where_there_is_no_directory) {
    const std::string before = std::filesystem::current_path();
    std::filesystem::create_directory(directory);
    std::filesystem::current_path(directory);
    std::filesystem::remove(directory);
    uint32_t handle = 0;
    EXPECT_EQ(error_of(qip_open("unix:bus", &handle)), ENOENT);
    std::filesystem::current_path(before);
}

// Other names, one that nobody locks, and one that a living process does.
TEST_F(unix_places, what_is_no_dead_member_of_a_group_stays) {
    const uint32_t server = listening(url);
    const std::string names[] = {"fe000000.0.short",
                                 "fe000000.0x0123456789abcdef",
                                 "fe000001.0.0123456789abcdef",
                                 "fe000000.0.0123456789abcdeX",
                                 "fe000000.0.0123456789abcdef",
                                 "fe000000.0.00000000000000ff"};
    for (const std::string &name : names) {
        std::ofstream{directory + "/" + name};
    }
    const std::string lock = directory + "/" + names[5] + ".lock";
    const descriptor living{open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)};
    EXPECT_EQ(flock(living.get(), LOCK_EX), 0);
    const size_t before = entries(directory);
    const uint32_t client = opened(url);
    EXPECT_EQ(send_text(client, "?", nullptr, group), 0);
    EXPECT_EQ(entries(directory), before);
    EXPECT_EQ(qip_close(client), 0);
    EXPECT_EQ(qip_close(server), 0);
}

TEST_F(unix_places, paths_longer_than_an_address_of_a_socket_and_relative_ones) {
    const std::string deep = directory + "/" + std::string(200, 'd');
    std::filesystem::create_directories(deep);
    const std::string before = std::filesystem::current_path();
    std::filesystem::current_path(deep);
    const uint32_t client = opened("unix:.");
    std::filesystem::current_path(before);
    const uint32_t server = listening("unix:" + deep);
    EXPECT_EQ(exchanged(client, server), "question!");
    EXPECT_EQ(qip_close(client), 0);
    EXPECT_EQ(qip_close(server), 0);
    EXPECT_EQ(entries(deep), 0U);
}

TEST_F(unix_places, what_a_killed_listener_left_is_replaced) {
    const pid_t child = started([&] {
        const uint32_t handle = listening(url);
        qip_listen(handle, &group, 1);
        raise(SIGKILL);
        return 0;
    });
    EXPECT_EQ(ended(child), -1);
    EXPECT_EQ(entries(directory), 4U);
    const uint32_t client = opened(url);
    EXPECT_EQ(send_text(client, "?"), ENOTCONN);
    EXPECT_EQ(send_text(client, "?", nullptr, group), 0);
    EXPECT_EQ(entries(directory), 2U); // a member's name is nobody else's
    const uint32_t server = listening(url);
    EXPECT_EQ(exchanged(client, server), "question!");
    EXPECT_EQ(qip_reconnections(client), 0U);
    EXPECT_EQ(qip_close(client), 0);
    EXPECT_EQ(qip_close(server), 0);
    EXPECT_EQ(entries(directory), 0U);
}

// Each round begins with what the last winner has left when it was killed.
TEST_F(unix_places, one_of_those_who_start_at_one_moment_listens) {
    constexpr int rounds = 40;
    constexpr int crowd = 4;
    for (int round = 0; round < rounds; ++round) {
        int start[2];
        int ready[2];
        int stay[2];
        ASSERT_EQ(pipe(start) | pipe(ready) | pipe(stay), 0);
        std::vector<pid_t> children;
        for (int number = 0; number < crowd; ++number) {
            children.push_back(started([&] {
                close(start[1]);
                close(stay[1]);
                char none = 0;
                uint32_t handle = 0;
                qip_open(url.c_str(), &handle);
                static_cast<void>(read(start[0], &none, 1)); // until it is closed
                const int error = error_of(qip_listen(handle, &rib, 1));
                static_cast<void>(!write(ready[1], &none, 1));
                static_cast<void>(read(stay[0], &none, 1));
                return error;
            }));
        }
        close(start[1]);
        char none = 0;
        for (int number = 0; number < crowd; ++number) {
            EXPECT_EQ(read(ready[0], &none, 1), 1);
        }
        close(stay[1]);
        int winners = 0;
        for (const pid_t child : children) {
            const int error = ended(child);
            winners += error == 0 ? 1 : 0;
            EXPECT_TRUE(error == 0 || error == EADDRINUSE) << error;
        }
        EXPECT_EQ(winners, 1) << round;
        for (const int end : {start[0], ready[0], ready[1], stay[0]}) {
            close(end);
        }
    }
    const uint32_t server = listening(url);
    EXPECT_EQ(qip_close(server), 0);
    EXPECT_EQ(entries(directory), 0U);
}

/// Becomes another user where this one may do everything; there is always a user `nobody`.
bool is_somebody_else() {
    const passwd *nobody = getpwnam("nobody");
    return nobody != nullptr && setgid(nobody->pw_gid) == 0 && setuid(nobody->pw_uid) == 0;
}

// A root that becomes another user; anybody else locks the directory.
TEST_F(unix_places, others_may_neither_listen_nor_send) {
    std::filesystem::create_directory(directory);
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = started([&] {
        char none = 0;
        static_cast<void>(!read(ready[0], &none, 1));
        if (geteuid() == 0 && !is_somebody_else()) {
            return 1;
        }
        const uint32_t client = opened(url);
        const bool send_refused = send_text(client, "?") == EACCES;
        const bool listen_refused = error_of(qip_listen(client, &group, 1)) == EACCES;
        return send_refused && listen_refused ? 0 : 2;
    });
    const uint32_t server = listening(url);
    using perms = std::filesystem::perms;
    const bool is_root = geteuid() == 0;
    std::filesystem::permissions(home.file("."), perms::owner_all | perms::group_exec | perms::others_exec);
    std::filesystem::permissions(directory,
                                 is_root ? perms::owner_all | perms::group_exec | perms::others_exec : perms{});
    EXPECT_EQ(write(ready[1], "", 1), 1);
    EXPECT_EQ(ended(child), 0);
    std::filesystem::permissions(directory, perms::owner_all);
    EXPECT_EQ(qip_close(server), 0);
    close(ready[0]);
    close(ready[1]);
}

TEST_F(unix_places, whoever_may_send_is_known_by_name_and_may_be_unwanted) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = started([&] {
        char none = 0;
        static_cast<void>(!read(ready[0], &none, 1));
        if (geteuid() == 0 && !is_somebody_else()) {
            return 1;
        }
        const uint32_t client = opened(url);
        qip_ref sent{};
        const qip_addr other{2, 2};
        const int mine = send_text(client, "mine");
        const int unwanted = send_text(client, "?", &sent, other);
        const qip_recv_opts opts = within(60000, QIP_RECV_BY_TOKEN, qip_rr_token_get(&sent));
        return mine == 0 && (unwanted == EACCES || (unwanted == 0 && taken(client, opts) == refused(EACCES))) ? 0 : 2;
    });
    std::filesystem::create_directory(directory);
    const mode_t before = umask(0);
    const uint32_t server = listening(url);
    const char *const names[] = {"no-such-user"};
    const qip_addr other{2, 2};
    EXPECT_EQ(error_of(qip_listen_to(server, &other, 1, names, 1)), 0);
    umask(before);
    std::filesystem::permissions(home.file("."), std::filesystem::perms::all);
    EXPECT_EQ(write(ready[1], "", 1), 1);
    qip_ref asked{};
    const qip_recv_opts soon = within(60000);
    ASSERT_EQ(qip_recv(server, &asked, &soon), 0);
    EXPECT_EQ(qip_sender_name(&asked), geteuid() == 0 ? "nobody" : own_name());
    EXPECT_EQ(qip_drop(server, &asked), 0);
    EXPECT_EQ(ended(child), 0);
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), refused(EAGAIN));
    EXPECT_EQ(qip_close(server), 0);
    close(ready[0]);
    close(ready[1]);
}

constexpr uid_t unknown_user = 54321;

/// Becomes whom the test needs, where this process may.
bool become(uid_t user) { return geteuid() != 0 || setuid(user) == 0; }

/// A process that connects so often once it is told to, each time with a message unless it is to be refused; and ends
/// when it is told so.
class crowd {
  public:
    crowd(const std::string &path, uid_t user, size_t size, bool is_refused = false) {
        EXPECT_EQ(pipe(begin_) | pipe(end_), 0);
        child_ = started([&] {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            char none = 0;
            if (read(begin_[0], &none, 1) != 1 || !become(user)) {
                return 1;
            }
            std::vector<raw_peer> peers;
            bool refused = false;
            for (size_t count = 0; count < size; ++count) {
                packet_head head;
                peers.emplace_back(path);
                refused = is_refused && parse_head(peers.back().packet(), head) && head.kind == packet_kind::refusal &&
                          head.opcode == ENOBUFS;
                if (!is_refused && !peers.back().send({.kind = packet_kind::message})) {
                    return 1;
                }
            }
            static_cast<void>(!read(end_[0], &none, 1));
            return refused ? 2 : 0;
        });
    }
    crowd(const crowd &) = delete;
    crowd &operator=(const crowd &) = delete;
    ~crowd() {
        for (const int one : {begin_[0], begin_[1], end_[0], end_[1]}) {
            close(one);
        }
    }

    void begin() const { EXPECT_EQ(write(begin_[1], "", 1), 1); }

    /// Whether it was refused.
    [[nodiscard]] bool end() const {
        EXPECT_EQ(write(end_[1], "", 1), 1);
        const int said = ended(child_);
        EXPECT_TRUE(said == 0 || said == 2) << said;
        return said == 2;
    }

  private:
    int begin_[2] = {-1, -1};
    int end_[2] = {-1, -1};
    pid_t child_ = 0;
};

// A process has a quarter of the connections, a user half of them, and all users together have all.
TEST_F(unix_places, connections_of_a_user_are_bounded) {
    constexpr size_t most = 128; // half of the descriptors
    const std::string path = directory + "/fe000001.25";
    const bool is_root = geteuid() == 0;
    crowd mine[] = {{path, geteuid(), most / 4}, {path, geteuid(), most / 4}, {path, geteuid(), 1, true}};
    crowd others[] = {
        {path, unknown_user, most / 4}, {path, unknown_user, most / 4}, {path, unknown_user + 1, 1, true}};
    std::filesystem::create_directory(directory);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit few{2 * most, before.rlim_max};
    const mode_t mask = umask(0);
    const uint32_t server = listening(url, 2 * most);
    umask(mask);
    std::filesystem::permissions(home.file("."), std::filesystem::perms::all);
    std::string name;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    const auto serve = [&](const crowd &ones, size_t size) {
        ones.begin();
        for (size_t count = 0; count < size; ++count) {
            qip_ref asked{};
            const qip_recv_opts soon = within(60000);
            ASSERT_EQ(qip_recv(server, &asked, &soon), 0);
            name = qip_sender_name(&asked);
            EXPECT_EQ(qip_drop(server, &asked), 0);
        }
    };
    serve(mine[0], most / 4);
    serve(mine[1], most / 4);
    mine[2].begin();
    EXPECT_TRUE(mine[2].end());
    serve(others[0], is_root ? most / 4 : 0);
    serve(others[1], is_root ? most / 4 : 0);
    EXPECT_EQ(name, is_root ? std::to_string(unknown_user) : own_name()) << "no service knows it";
    others[2].begin();
    EXPECT_TRUE(others[2].end());
    for (const crowd *one : {&mine[0], &mine[1], &others[0], &others[1]}) {
        EXPECT_FALSE(one->end());
    }
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(qip_close(server), 0);
}

TEST_F(unix_places, opening_and_closing_leaves_no_descriptor) {
    const size_t before = entries("/proc/self/fd");
    for (int count = 0; count < 1000; ++count) {
        const uint32_t client = opened(url);
        const uint32_t server = listening(url);
        ASSERT_EQ(exchanged(client, server), "question!");
        ASSERT_EQ(qip_close(count % 2 == 0 ? client : server), 0);
        ASSERT_EQ(qip_close(count % 2 == 0 ? server : client), 0);
    }
    EXPECT_EQ(entries("/proc/self/fd"), before);
    EXPECT_EQ(entries(directory), 0U);
}

} // namespace

} // namespace ribkit::platform
