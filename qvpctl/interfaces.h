// The network interfaces of this machine, as far as a broadcast needs them.
#pragma once

#include <string>
#include <vector>

struct Interface {
    std::string name;
    unsigned index;
};

// Every interface that is up, can broadcast and has an IPv4 address; loopback cannot.
std::vector<Interface> broadcastInterfaces();

// The interface of that name, loopback or not. Throws Failure when it is missing, down or without an IPv4 address.
Interface interfaceNamed(const std::string& name);

// Throws Failure when there is no such interface.
unsigned interfaceIndex(const std::string& name);

// "" when it has gone.
std::string interfaceName(unsigned index);
