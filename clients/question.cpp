// What cannot be answered is answered with the five words that updates are answered with. A damaged answer may be as
// long, but begins with no result code.
#include "clients/question.h"

#include "rib_codes.h"
#include "ribkit_rib.h"

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
    if (result <= RIBKIT_LAST_CLIENT) {
        bus::rib_link::drop_answer(opcode, answer.size(), "what came is damaged");
    }
    link.take_result(opcode, result);
    throw refused_question(result);
}

protocol::fcurt_response ask_for_result(bus::rib_link &link, uint32_t opcode, std::span<uint8_t> request) {
    constexpr size_t size = wire::route_rsp.size;
    const auto bytes = link.ask(opcode, request);
    if (bytes.size() != size) {
        bus::rib_link::drop_answer(opcode, bytes.size(), "what came is damaged");
    }
    const auto answer = protocol::decode_fcurt_response(std::span(bytes).first<size>());
    link.take_result(opcode, answer.result);
    return answer;
}

} // namespace ribkit::clients
