// What cannot be answered is answered with the five words that updates are answered with.
#include "clients/question.h"

#include "protocol/route_messages.h"
#include "rib_codes.h"

namespace ribkit::clients {

std::vector<uint8_t> ask_checked(bus::rib_link &link, uint32_t opcode, std::span<uint8_t> question, checker check) {
    constexpr size_t size = wire::route_rsp.size;
    auto answer = link.ask(opcode, question);
    if (check(answer.data(), static_cast<uint32_t>(answer.size()), nullptr) == RIB_OK) {
        link.take_result(opcode, RIB_OK);
        return answer;
    }
    const uint32_t result =
        answer.size() == size ? protocol::decode_fcurt_response(std::span(answer).first<size>()).result : RIB_OK;
    link.take_result(opcode, result);
    if (result == RIB_OK) {
        throw bus::no_answer("what came is damaged");
    }
    throw refused_question(result);
}

} // namespace ribkit::clients
