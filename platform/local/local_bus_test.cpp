// What only holds in one process.
#include "platform/service_fixture.h"

namespace ribkit::platform {

namespace {

class local_bus : public on_one_bus {};

TEST_F(local_bus, names_of_senders_are_checked_and_make_no_difference_in_process) {
    const qip_addr other{2, 2};
    for (const char *wrong : {"", "a.b", "*", ">", "a b", "\xc3\xa4", static_cast<const char *>(nullptr)}) {
        const char *const names[] = {"fspf", wrong};
        EXPECT_EQ(error_of(qip_listen_to(server, &other, 1, names, 2)), EINVAL);
    }
    const char *const names[] = {"fspf", "static-7_x"};
    EXPECT_EQ(error_of(qip_listen_to(server, &other, 0, names, 2)), EINVAL);
    ASSERT_EQ(error_of(qip_listen_to(server, &other, 1, names, 2)), 0);
    EXPECT_EQ(error_of(qip_listen_to(server, &other, 1, nullptr, 0)), EADDRINUSE);
    EXPECT_EQ(send_at_once(client, "from anybody", other), 0);
    EXPECT_EQ(taken(server, now(QIP_RECV_INCOMING)), "from anybody");
}

TEST_F(local_bus, any_handle_may_answer) {
    const uint32_t token = ask("question");
    qip_ref asked = request();
    ASSERT_EQ(qip_close(server), 0);
    EXPECT_EQ(answer_text(client, asked, "from another handle"), 0);
    EXPECT_EQ(qip_drop(server, &asked), 0);
    EXPECT_EQ(taken(client, now(QIP_RECV_BY_TOKEN, token)), "from another handle");
}

} // namespace

} // namespace ribkit::platform
