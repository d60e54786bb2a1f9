#include "qvpctl/web/gate.h"

#include <algorithm>
#include <charconv>

#include "qvpctl/web/token.h"

static WebAnswer page(unsigned status, const std::string& title, const std::string& text, const char* more = "") {
    return {status,
            "text/html; charset=utf-8",
            "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>" + title + "</title>" + more +
                "</head>\n<body><h1>" + title + "</h1><p>" + text + "</p></body></html>\n",
            {}};
}

static WebAnswer turnedAway(const WebRequest& request, const std::string& why) {
    if (request.isApi()) return errorAnswer(403, "forbidden", why);
    return page(
        403, "This page is of one browser alone",
        why +
            " Open the address that <code>qvpctl web</code> printed. It works once: to open the page in another "
            "browser, end <code>qvpctl web</code> and start it again.");
}

bool Gate::isOurs(const std::string& host) const {
    const std::string port = ":" + std::to_string(port_);
    return host == "127.0.0.1" + port || host == "localhost" + port;
}

// A name that somebody's server has made one of this machine's shows in Host, what a foreign page sends in Origin.
bool Gate::isForThisServer(const WebRequest& request) const {
    const auto hosts = request.all("Host");
    if (hosts.size() != 1 || !isOurs(hosts.front())) return false;
    constexpr std::string_view kScheme = "http://";
    const auto origins = request.all("Origin");
    return std::ranges::all_of(origins, [&](const std::string& origin) {
        return origin.starts_with(kScheme) && isOurs(origin.substr(kScheme.size()));
    });
}

static bool isFromForeignPage(const WebRequest& request) {
    return std::ranges::any_of(request.all("Sec-Fetch-Site"),
                               [](const std::string& site) { return site != "same-origin" && site != "none"; });
}

static WebAnswer foreign(const WebRequest& request) {
    return turnedAway(request, "This request comes from another page, or by another name of this machine.");
}

// Who has the token comes from the file that the browser was opened with, which is a foreign page to it, and which the
// cookie of an answer that only leads on would not come back from: the way in is by a page of this server.
std::optional<WebAnswer> Gate::redeem(const WebRequest& request) {
    const std::scoped_lock lock(mutex_);
    const bool isInAlready = !isFromForeignPage(request) && isSameToken(request.cookie, secrets_.cookie);
    const bool isRight = isSameToken(request.token, secrets_.token);
    if (!isInAlready && !isRight) return turnedAway(request, "The token of this address is wrong, or was used before.");
    if (isRight) secrets_.token.clear();
    WebAnswer answer =
        page(200, "Cameras", "<a href=\"/\">To the cameras</a>", "<meta http-equiv=\"refresh\" content=\"0; url=/\">");
    answer.headers = {
        {"Set-Cookie", cookieName() + "=" + secrets_.cookie + "; HttpOnly; SameSite=Strict; Path=/"},
    };
    return answer;
}

// A form of another page can send neither the header nor this type without asking first, and nobody answers that.
static std::optional<WebAnswer> checkWriting(const WebRequest& request) {
    if (request.first("X-Qvpctl") != "1") {
        return errorAnswer(403, "forbidden", "requests that change something need the header X-Qvpctl");
    }
    const std::string type = request.first("Content-Type");
    if (type != "application/json" && !type.starts_with("application/json;")) {
        return errorAnswer(403, "forbidden", "requests that change something are application/json");
    }
    if (!request.all("Transfer-Encoding").empty()) return errorAnswer(411, "length-needed", "Content-Length is needed");
    const std::string length = request.first("Content-Length");
    size_t number = 0;
    const auto [end, error] = std::from_chars(length.data(), length.data() + length.size(), number);
    const bool isNumber = error == std::errc() && end == length.data() + length.size();
    if (length.empty()) return std::nullopt;
    if (!isNumber || number > kLongestBody) return errorAnswer(413, "too-large", "the body is longer than 1 MiB");
    return std::nullopt;
}

static bool isAny(const std::string& word, std::initializer_list<const char*> words) {
    return std::ranges::find(words, word) != words.end();
}

std::optional<WebAnswer> Gate::check(const WebRequest& request) {
    if (!isForThisServer(request)) return foreign(request);
    if (request.method == "GET" && request.path == "/" && !request.token.empty()) return redeem(request);
    if (isFromForeignPage(request)) return foreign(request);
    const bool isReading = isAny(request.method, {"GET", "HEAD"});
    if (!isReading && !isAny(request.method, {"POST", "DELETE"})) {
        return errorAnswer(405, "method", "GET, HEAD, POST and DELETE are known");
    }
    if (!isSameToken(request.cookie, secrets_.cookie)) {
        return turnedAway(request, "This browser has not been let in.");
    }
    return isReading ? std::nullopt : checkWriting(request);
}

std::string Gate::address() const {
    const std::scoped_lock lock(mutex_);
    return "http://127.0.0.1:" + std::to_string(port_) + "/?token=" + secrets_.token;
}

WebSecrets Gate::secrets() const {
    const std::scoped_lock lock(mutex_);
    return secrets_;
}
