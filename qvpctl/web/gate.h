// Who gets in: the browser that was given the address, and pages of this server alone.
#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "qvpctl/web/message.h"

// What a server knows its browser by. It outlives a server that starts itself again.
struct WebSecrets {
    std::string token;   // of the address that is opened; "" once it was used
    std::string cookie;  // of every request after that
};

class Gate {
public:
    Gate(uint16_t port, WebSecrets secrets) : port_(port), secrets_(std::move(secrets)) {}

    // Why a request is turned away, before anything of its body is read; nothing for one that may come in. The one with
    // the token is among those that are answered here.
    std::optional<WebAnswer> check(const WebRequest& request);

    std::string cookieName() const { return "qvpctl_" + std::to_string(port_); }
    std::string address() const;  // with the token
    WebSecrets secrets() const;

private:
    bool isOurs(const std::string& host) const;
    bool isForThisServer(const WebRequest& request) const;
    std::optional<WebAnswer> redeem(const WebRequest& request);

    uint16_t port_;
    mutable std::mutex mutex_;
    WebSecrets secrets_;
};

// Bytes that a request may hold behind its header.
inline constexpr size_t kLongestBody = 1024 * 1024;
