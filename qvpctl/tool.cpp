#include "qvpctl/tool.h"

#include <algorithm>
#include <iostream>

#include "client/error.h"
#include "client/text.h"
#include "qvpctl/output.h"
#include "qvpctl/terminal_text.h"

using client::Error;
using client::ErrorKind;
using client::Found;

static bool saysInJson = false;

void sayInJson() { saysInJson = true; }

void say(const std::string& sentence) {
    if (saysInJson) {
        std::cerr << jsonLine({
            {"note", sentence}
        });
    } else {
        std::cerr << "qvpctl: " << printable(sentence) << "\n";
    }
}

client::UdpLink linkWithReports(int stop) try {
    return client::UdpLink(client::UdpLink::Hears::RepliesAndReports, stop);
} catch (const Error& error) {
    say(std::string("presence reports are not heard: ") + error.what());
    return client::UdpLink(client::UdpLink::Hears::Replies, stop);
}

std::vector<client::Interface> chosenInterfaces(const CommonOptions& options) {
    if (!options.interface.empty()) return {client::interfaceNamed(options.interface)};
    std::vector<client::Interface> all = client::broadcastInterfaces();
    if (all.empty()) throw Error(ErrorKind::Local, "no interface is up with broadcast and an IPv4 address");
    return all;
}

static bool goesBy(const Found& camera, const std::string& name) {
    const auto mac = client::parseMac(name);
    if (mac) return client::isSame(*mac, camera.camera.mac);
    return client::addressText(camera.camera.address) == name || camera.camera.name == name;
}

static std::vector<Found> those(const std::vector<Found>& all, const std::string& name) {
    std::vector<Found> matching;
    std::ranges::copy_if(all, std::back_inserter(matching), [&](const Found& one) { return goesBy(one, name); });
    return matching;
}

static Error ambiguous(const std::string& name, const std::vector<Found>& candidates) {
    std::string list;
    for (const Found& one : candidates) {
        list += "\n  " + client::macText(one.camera.mac) + "  " + client::addressText(one.camera.address) + "  " +
                printable(one.camera.name);
    }
    return Error(ErrorKind::Ambiguous,
                 "more than one camera goes by " + printable(name) + "; say which by its MAC:" + list);
}

using IsLast = std::function<bool(const Found&)>;

static std::vector<Found> search(client::Link& link, const CommonOptions& options, std::chrono::milliseconds wait,
                                 const IsLast& isLast) {
    client::Finder finder(link, {chosenInterfaces(options), options.family, wait, 0, isLast}, say);
    finder.run([](const Found&) {});
    return finder.all();
}

// A MAC is one camera's; of a name or an address, there may be another.
static IsLast endOf(const std::string& name) {
    if (!client::parseMac(name)) return nullptr;
    return [name](const Found& one) { return one.answered && goesBy(one, name); };
}

Found findCamera(client::Link& link, const CommonOptions& options, const std::string& name,
                 std::chrono::milliseconds patience) {
    auto matching = those(search(link, options, options.wait(), endOf(name)), name);
    if (matching.empty() && patience.count() > 0) {
        say("no answer from " + name + "; listening for its presence report, for up to " +
            std::to_string(patience.count() / 1000) + " s");
        const auto isHeard = [&](const Found& one) { return goesBy(one, name); };
        matching = those(search(link, options, patience, isHeard), name);
    }
    if (matching.empty()) {
        throw Error(ErrorKind::NotFound,
                    "no camera " + printable(name) + " answered; 'qvpctl discover' shows those that do");
    }
    if (matching.size() > 1) throw ambiguous(name, matching);
    return matching.front();
}

client::Session openSession(client::Link& link, const CommonOptions& options, const Found& camera,
                            const client::Login& login) {
    const client::Patience patience{options.wait(), static_cast<int>(options.retries) + 1};
    const client::Target target{camera.camera.mac, camera.camera.address, camera.interface, camera.sharesAddress};
    return client::Session(link, client::Conversation(link, options.family, target, patience, say), login);
}
