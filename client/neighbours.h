// Which addresses of the local networks are in use, by cameras or by anything else.
#pragma once

#include <chrono>
#include <utility>
#include <vector>

#include "protocol/bytes.h"

namespace client {

// Sends each address a datagram to a port that nobody serves, which has this machine ask for it by ARP, and looks who
// answered that. It needs no privileges, and a firewall there keeps nothing back. Throws Error Local.
std::vector<std::pair<Ipv4, Mac>> answeringHosts(const std::vector<Ipv4>& addresses, std::chrono::milliseconds wait);

}  // namespace client
