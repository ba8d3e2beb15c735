// A request and its answer through sockets of this machine.
#pragma once

namespace ribkit::platform {

void unix_rows();

} // namespace ribkit::platform
