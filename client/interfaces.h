// The network interfaces of this machine, as far as talking to cameras needs them.
#pragma once

#include <string>
#include <vector>

#include "protocol/bytes.h"

namespace client {

struct Subnet {
    Ipv4 address;  // this machine's in it
    Ipv4 mask;
};

struct Interface {
    std::string name;
    unsigned index;
    std::vector<Subnet> subnets;
};

// Every interface that is up, can broadcast and has an IPv4 address; loopback cannot.
std::vector<Interface> broadcastInterfaces();

// The interface of that name, loopback or not. Throws Error Local when it is missing, down or without an IPv4 address.
Interface interfaceNamed(const std::string& name);

// Throws Error Local when there is no such interface.
unsigned interfaceIndex(const std::string& name);

// "" when it has gone.
std::string interfaceName(unsigned index);

// True for an address that this machine reaches on that interface without a router.
bool isNear(const Interface& interface, Ipv4 address);

}  // namespace client
