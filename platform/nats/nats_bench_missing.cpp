// Stands in where the client library is missing.
#include "bench/harness.h"
#include "platform/transport_bench.h"

using namespace ribkit::bench;

namespace ribkit::platform {

void nats_rows(const char * /*url*/) { missing_row("request and answer over a server", "built without libnats"); }

} // namespace ribkit::platform
