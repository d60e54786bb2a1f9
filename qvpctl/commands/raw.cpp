// qvpctl raw: any bytes to a camera, and what comes back.
#include <charconv>
#include <iostream>
#include <memory>

#include "client/error.h"
#include "client/login.h"
#include "client/text.h"
#include "qvpctl/commands.h"
#include "qvpctl/dump.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/secret_bytes.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/tool.h"

using client::Error;
using client::ErrorKind;

static const char kExamples[] =
    "  qvpctl raw 'Front door' --opcode 0x00A1            a header, and nothing behind it\n"
    "  qvpctl raw 'Front door' --opcode 0x00A8 --login    with user name and password\n"
    "  qvpctl raw 'Front door' fdfd 0100 a100 ffffffffffff 00000000 0000 0200 0000\n"
    "                                                     a whole datagram, byte for byte\n";

struct RawOptions {
    std::string camera;
    std::vector<std::string> bytes;
    std::string opcode;
    bool login = false;
};

static uint16_t parseOpcode(const std::string& text) {
    const bool isHex = text.starts_with("0x");
    const char* const end = text.data() + text.size();
    uint16_t number = 0;
    const auto result = std::from_chars(text.data() + (isHex ? 2 : 0), end, number, isHex ? 16 : 10);
    if (result.ec == std::errc() && result.ptr == end) return number;
    throw Error(ErrorKind::BadValue, "--opcode must be a number from 0 to 65535, such as 0x00A1");
}

static std::vector<uint8_t> datagramOf(const RawOptions& options, const CommonOptions& common, Mac mac) {
    std::string digits;
    for (const std::string& word : options.bytes) digits += word + " ";
    std::vector<uint8_t> bytes = parseHex(digits);
    if (options.opcode.empty()) return bytes;
    std::vector<uint8_t> request =
        options.login ? client::protectedRequest(readLogin(common)) : std::vector<uint8_t>(sizeof(PacketHeader));
    request.insert(request.end(), bytes.begin(), bytes.end());
    const PacketHeader header =
        client::requestTo(mac, common.family, parseOpcode(options.opcode), client::randomSequence(), request.size());
    memcpy(request.data(), &header, sizeof header);
    return request;
}

static void check(const RawOptions& options) {
    const bool isBuilt = !options.opcode.empty();
    if (!isBuilt && options.bytes.empty()) throw Error(ErrorKind::BadValue, "bytes or --opcode are needed");
    if (!isBuilt && options.login) {
        throw Error(ErrorKind::BadValue, "--login needs --opcode: a whole datagram holds its own");
    }
    if (isBuilt) parseOpcode(options.opcode);
}

static void print(const char* direction, Ipv4 address, std::span<const uint8_t> bytes, bool json) {
    Record record = {
        {"direction", direction                   },
        {"address",   client::addressText(address)}
    };
    record.update(dumpRecord(bytes));
    if (json) return jsonLines(std::cout)->add(record);
    std::cout << direction << (*direction == 's' ? " to " : " from ") << client::addressText(address) << ", "
              << bytes.size() << " bytes\n"
              << dumpText(bytes) << std::flush;
}

static bool isFrom(const client::Incoming& incoming, Mac mac) {
    if (incoming.bytes.size() < sizeof(PacketHeader)) return false;
    return client::isSame(client::layoutOf<PacketHeader>(incoming.bytes).mac, mac);
}

static void send(client::UdpLink& link, const client::Found& found, std::span<const uint8_t> request) {
    const int error =
        found.isNear ? link.send(found.camera.address, request) : link.broadcast(found.interface, request);
    if (error != 0) throw client::localError("cannot send", error);
}

static bool showAnswer(client::UdpLink& link, const client::Found& found, const CommonOptions& common) {
    const auto deadline = link.now() + common.wait();
    while (auto incoming = link.receiveUntil(deadline)) {
        if (!isFrom(*incoming, found.camera.mac)) continue;
        blankSecrets(incoming->bytes);
        print("received", incoming->sender, incoming->bytes, common.json);
        return true;
    }
    return false;
}

static int sendRaw(const RawOptions& options, const CommonOptions& common) {
    check(options);
    client::UdpLink link(client::UdpLink::Hears::Replies);
    const client::Found found = findCamera(link, common, options.camera);
    const std::vector<uint8_t> request = datagramOf(options, common, found.camera.mac);
    if (request.empty()) throw Error(ErrorKind::BadValue, "there are no bytes to send");
    if (request.size() > kDatagramSize) throw Error(ErrorKind::BadValue, "a datagram has at most 1024 bytes");
    std::vector<uint8_t> shown = request;
    if (options.login) blankLogin(shown);
    for (unsigned attempt = 0; attempt <= common.retries; attempt++) {
        send(link, found, request);
        print("sent", found.camera.address, shown, common.json);
        if (showAnswer(link, found, common)) return kSuccess;
    }
    throw Error(ErrorKind::NotFound, "no answer; cameras say nothing to a request that is malformed or not theirs");
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<RawOptions>();
    addCamera(app, options->camera);
    addWords(app, "BYTES", options->bytes,
             "Hexadecimal digits: a whole datagram, or what follows the header and login");
    addText(app, "--opcode", options->opcode, "NUMBER", "Build the header of a request with that command code");
    addFlag(app, "--login", options->login, "Put user name and password behind that header");
    return [options, &common] { return sendRaw(*options, common); };
}

const Subcommand kRaw = {"raw", "Send any bytes to a camera, and show what comes back, but for its secrets.", kExamples,
                         prepare};
