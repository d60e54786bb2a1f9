// Every handler of both families, with what is known of it before its own work begins.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace unit {

using Handler = int (*)(const std::uint8_t* request, std::uint8_t* reply, int capacity);

enum class Addressed { ByMac, ByMacOrBroadcast };
enum class Needs { Nothing, Credentials, CredentialsIfPayload };

struct Family {
    std::string name;
    std::uint8_t protocol;
    std::string tracePrefix, source, handlerPrefix;
};

const Family& primaryFamily();
const Family& landapFamily();

struct CommandRow {
    const Family* family;
    std::string name;  // without the family's prefix
    std::uint16_t opcode;
    Handler handler;
    Addressed addressed;
    Needs needs;
    int replyLength;

    std::string handlerName() const { return family->handlerPrefix + name; }
};

// How parameters stand in the list of tests and in failures.
void PrintTo(const CommandRow& row, std::ostream* out);
void PrintTo(const Family* family, std::ostream* out);

const std::vector<CommandRow>& allCommands();

// The row of that name; ends the test program when the family has none.
const CommandRow& command(const Family& family, const std::string& name);

}  // namespace unit
