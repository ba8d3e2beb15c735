// What a flood of one sender does to another one's requests.
#pragma once

namespace ribkit::platform {

/// In process, between processes, and over the server where a URL is given.
void attack_rows(const char *server_url);

} // namespace ribkit::platform
