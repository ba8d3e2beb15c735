// The texts that a table cannot say: upper case, bits, and whole records.
#include "codec/messages/fib.h"
#include "diag/compose.h"
#include "diag/text/client_rows.h"
#include "diag/text/fib_rows.h"
#include "diag/text/packed_texts.h"
#include "diag/text/state_rows.h"
#include "rib_codes.h"
#include "rib_text.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace ribkit::diag {

namespace {

// In upper case a client's text has at most 40 characters; none is longer, so nothing is cut.
static_assert(std::all_of(client_texts.begin(), client_texts.end(),
                          [](const text_row &row) { return row.size <= 41; }));

/// The value that stands for a mask of port modes in the table: its first bit that has a row, or the mask itself.
uint32_t shown_mode(uint32_t mode) {
    if (mode != all_modes) {
        for (const uint32_t value : values_of<pm_mode_texts>) {
            if (std::has_single_bit(value) && (mode & value) != 0) {
                return value;
            }
        }
    }
    return mode;
}

} // namespace

} // namespace ribkit::diag

using namespace ribkit;
using namespace ribkit::diag;

void rib_uuid_to_uc_str(uint32_t uuid, char *str) {
    rib_uuid_to_str(uuid, str);
    for (; *str != '\0'; ++str) {
        *str = static_cast<char>(std::toupper(static_cast<unsigned char>(*str)));
    }
}

uintptr_t rib_pm_mode_to_str(uint32_t mode, char *str) { return put_text<pm_mode_texts>(shown_mode(mode), str); }

// Nearly every index is one without a row, so its "%03x" is written by hand.
uintptr_t fib_d_idx_to_str(uint32_t value, char *str) {
    constexpr auto &rows = values_of<fib_d_idx_texts>;
    if (std::find(rows.begin(), rows.end(), value) != rows.end()) {
        return put_text<fib_d_idx_texts>(value, str);
    }
    const size_t digits = std::max(size_t{3}, hex_digits(value));
    *put_hex(str, value, digits) = '\0';
    return digits;
}

// "push=%d pop=%d use_UP=%s use_TTL=%s dec_TTL=%s"; the push count is printed first though it is the second byte. The
// three bytes that are read may be all that the caller has: each part lies in one of them.
int rib_fclrt_ctrl_to_str(const uint8_t *ctrl, char *str) {
    const view<wire::fclrt_intf> hop{ctrl};
    char *end = put_decimal(put(str, "push="), hop.get<"ctrl", "push">());
    end = put_decimal(put(end, " pop="), hop.get<"ctrl", "pop">());
    end = put_truth(put(end, " use_UP="), hop.get<"ctrl", "use_up">() != 0);
    end = put_truth(put(end, " use_TTL="), hop.get<"ctrl", "use_ttl">() != 0);
    end = put_truth(put(end, " dec_TTL="), hop.get<"ctrl", "dec_ttl">() != 0);
    *end = '\0';
    return static_cast<int>(end - str);
}

int rib_fcurt_flag_to_str(uint32_t flags, char *str) {
    const char letters[] = {(flags & RIB_FLAG_DIRECT) != 0 ? 'D' : 'R',   ' ',
                            (flags & RIB_FLAG_VOLATILE) != 0 ? 'V' : 'P', ' ',
                            (flags & RIB_FLAG_ACTIVE) != 0 ? 'A' : 'N',   '\0'};
    std::memcpy(str, letters, sizeof letters);
    return sizeof letters - 1;
}

int fib_vsan_to_str(const uint8_t *rec, char *str) {
    const view<wire::vsan> vsan{rec};
    const uint32_t number = vsan.get<"word_4", "vsan">();
    char iod[RIB_TEXT_SIZE];
    char state[RIB_TEXT_SIZE];
    char balance[RIB_TEXT_SIZE];
    rib_vsan_iod_to_str(vsan.get<"word_4", "iod">(), iod);
    if (number == 0) {
        return std::sprintf(str, "%s IOD with latency %u msec for all vsans", iod, vsan.get<"latency">());
    }
    rib_vsan_state_to_str(vsan.get<"word_4", "state">(), state);
    rib_vsan_bal_to_str(vsan.get<"word_4", "balance">(), balance);
    if (vsan.get<"word_4", "iod_valid">() != 0) {
        return std::sprintf(str, "vsan %u is %s with %s IOD, latency %u msec and %s", number, state, iod,
                            vsan.get<"latency">(), balance);
    }
    return std::sprintf(str, "vsan %u is %s with invalid IOD, latency %u msec and %s", number, state,
                        vsan.get<"latency">(), balance);
}
