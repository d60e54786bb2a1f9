// Requests to the server of the tool's page: who gets in, and what their bodies say.
//
// An input is lines: method, path, token, cookie, headers up to an empty line; then the body.
#include <strings.h>
#include <algorithm>

#include "client/error.h"
#include "fuzz/fuzz.h"
#include "qvpctl/web/fleet_body.h"
#include "qvpctl/web/gate.h"

using fuzz::require;

constexpr uint16_t kPagePort = 8080;
static const std::string kToken = "1e7t-me-in", kCookie = "c00kie";

static void takeRequest(fuzz::Input& input, WebRequest& request) {
    request.method = input.upTo('\n');
    request.path = input.upTo('\n');
    request.token = input.upTo('\n');
    request.cookie = input.upTo('\n');
    for (std::string_view line = input.upTo('\n'); !line.empty(); line = input.upTo('\n')) {
        const size_t colon = std::min(line.find(':'), line.size());
        std::string_view value = line.substr(std::min(colon + 1, line.size()));
        if (value.starts_with(' ')) value.remove_prefix(1);
        request.headers.emplace_back(line.substr(0, colon), value);
    }
    request.body = input.rest();
}

// The one value of a header; "" for none, or more than one.
static std::string only(const WebRequest& request, const char* name) {
    std::string value;
    int count = 0;
    for (const auto& [key, one] : request.headers) {
        if (strcasecmp(key.c_str(), name) != 0) continue;
        value = one;
        count++;
    }
    return count == 1 ? value : "";
}

static bool isOurs(const std::string& host) { return host == "127.0.0.1:8080" || host == "localhost:8080"; }

static void checkAdmitted(const WebRequest& request) {
    require(request.cookie == kCookie, "nobody gets in without the cookie");
    require(isOurs(only(request, "Host")), "nobody gets in by another name");
    for (const auto& [key, value] : request.headers) {
        if (strcasecmp(key.c_str(), "Origin") != 0) continue;
        require(value.starts_with("http://") && isOurs(value.substr(7)), "no other page gets in");
    }
    if (request.method == "GET" || request.method == "HEAD") return;
    require(request.method == "POST" || request.method == "DELETE", "nothing is done by other methods");
    require(std::ranges::any_of(request.headers, [](const auto& header) { return header.second == "1"; }),
            "a change has its header");
}

static bool check(const WebRequest& request) {
    Gate gate(kPagePort, {kToken, kCookie});
    const auto refusal = gate.check(request);
    if (!refusal) checkAdmitted(request);
    if (!refusal) return true;
    const bool isLetIn = refusal->status == 303;
    if (isLetIn && request.token == kToken) require(gate.secrets().token.empty(), "a token is used once");
    if (isLetIn) require(request.token == kToken || request.cookie == kCookie, "the token is the right one");
    const std::string& body = refusal->body;
    require(body.find(kCookie) == body.npos && body.find(kToken) == body.npos, "a refusal tells no secret");
    return false;
}

// Nothing but what is meant for the browser is thrown.
template <typename Work>
static void attempt(const Work& work) try {
    work();
} catch (const client::Error& error) {
    require(error.what()[0] != '\0', "an error has words");
    require(errorAnswer(error).status >= 400, "an error is one of the browser's");
}

static void readBody(const std::string& text) {
    const JsonBody body(text);
    attempt([&] {
        for (const client::Assignment& one : body.settings())
            require(one.setting != nullptr, "a value has its setting");
    });
    attempt([&] {
        const client::CameraFile file = fleetFile(body);
        for (const client::Fault& fault : file.faults) require(fault.place.line > 0, "a fault has a place");
    });
    attempt([&] { body.text("mac"); });
    attempt([&] { body.secret("password"); });
    attempt([&] { body.textOr("confirm", ""); });
    attempt([&] { require(body.count("parallel", 8, 64) <= 64, "a count keeps its bounds"); });
}

// A body is read whoever sends it: that strangers get in is not what its reader relies on.
int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    fuzz::Input input(bytes, size);
    WebRequest request;
    takeRequest(input, request);
    check(request);
    attempt([&] { readBody(request.body); });
    return 0;
}
