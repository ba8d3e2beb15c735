// The tables of all messages that the library checks.
#pragma once

#include "codec/checks/check_table.h"
#include "codec/kernels.h"

namespace ribkit::codec {

template <const layout &...L> checked_layouts<L...> checked(layouts<L...> /*all*/);

using core_checks = decltype(checked(all_layouts{}));

} // namespace ribkit::codec
