// What only holds among the processes of one machine: names in the directory, dead listeners, permissions, sizes.
#include "platform/service_fixture.h"

namespace ribkit::platform {

namespace {

class over_unix : public on_one_bus {};

TEST_F(over_unix, large_messages) {
    for (const size_t size : {65519U, 65520U, 65521U, 131040U, 131041U, 1U << 20, 10U << 20}) {
        std::string text(size, '\0');
        for (size_t index = 0; index < size; ++index) {
            text[index] = static_cast<char>(index * 31 + (index >> 12));
        }
        std::thread serving{[this] {
            qip_ref asked = dirty_ref();
            ASSERT_EQ(qip_recv(server, &asked, nullptr), 0);
            EXPECT_EQ(answer_text(server, asked, text_of(asked)), 0);
            EXPECT_EQ(qip_drop(server, &asked), 0);
        }};
        EXPECT_TRUE(taken(client, within(100000, QIP_RECV_BY_TOKEN, ask(text))) == text) << size;
        serving.join();
    }
}

} // namespace

} // namespace ribkit::platform
