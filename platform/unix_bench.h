// A request and its answer through sockets of this machine.
#pragma once

namespace ribkit::bench {

void unix_rows();

} // namespace ribkit::bench
