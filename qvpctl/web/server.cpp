#include "qvpctl/web/server.h"

#include <charconv>
#include <cstring>
#include <exception>
#include <string_view>
#include <utility>

// A request on its way through the server; MHD calls for each step of it.
struct WebServer::Exchange {
    MHD_Connection* connection;
    WebRequest request;
    bool isOdd = false;      // its address holds what no address of here does
    bool isChecked = false;  // its header is known
    bool isLater = false;
    std::optional<WebAnswer> answer;
};

static constexpr std::pair<const char*, const char*> kHeaders[] = {
    {"Content-Security-Policy",      "default-src 'self'; frame-ancestors 'none'; base-uri 'none'; form-action 'self'"},
    {"X-Content-Type-Options",       "nosniff"                                                                        },
    {"Referrer-Policy",              "no-referrer"                                                                    },
    {"Cache-Control",                "no-store"                                                                       },
    {"Cross-Origin-Resource-Policy", "same-origin"                                                                    },
};

static int socketOf(MHD_Connection* connection) {
    return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
}

static void addHeaders(MHD_Response* response) {
    for (const auto& [name, value] : kHeaders) MHD_add_response_header(response, name, value);
}

// Nothing may leave through C.
template <typename Work>
static WebAnswer answerOf(const Work& work) try {
    return work();
} catch (const client::Error& error) {
    return errorAnswer(error);
} catch (const std::exception&) {
    return errorAnswer(500, "this-machine", "the request could not be answered");
}

WebServer::WebServer(int socket, Gate& gate, EventStreams& streams, Jobs& jobs, Router route)
    : gate_(gate), streams_(streams), jobs_(jobs), route_(std::move(route)) {
    constexpr unsigned kMostConnections = 512, kIdleSeconds = 20;
    constexpr size_t kConnectionMemory = size_t{32} * 1024;
    daemon_ = MHD_start_daemon(MHD_USE_POLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, handle,
                               this, MHD_OPTION_LISTEN_SOCKET, socket, MHD_OPTION_CONNECTION_LIMIT, kMostConnections,
                               MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
                               kConnectionMemory, MHD_OPTION_URI_LOG_CALLBACK, begin, this, MHD_OPTION_NOTIFY_COMPLETED,
                               complete, this, MHD_OPTION_NOTIFY_CONNECTION, notice, this, MHD_OPTION_END);
    if (daemon_ == nullptr) throw client::Error(client::ErrorKind::Local, "cannot start the web server");
}

WebServer::~WebServer() { stop(); }

void WebServer::stop() {
    if (daemon_ == nullptr) return;
    MHD_quiesce_daemon(daemon_);
    streams_.close();
    jobs_.close();
    {
        std::unique_lock lock(mutex_);
        answered_.wait_for(lock, std::chrono::seconds(1), [this] { return waiting_ == 0; });
    }
    MHD_stop_daemon(daemon_);
    daemon_ = nullptr;
}

void WebServer::tick() {
    idle_.tick();
    streams_.tick();
}

void WebServer::notice(void* server, MHD_Connection* connection, void**, MHD_ConnectionNotificationCode code) {
    IdleConnections& idle = static_cast<WebServer*>(server)->idle_;
    if (code == MHD_CONNECTION_NOTIFY_STARTED) idle.begin(socketOf(connection));
    if (code == MHD_CONNECTION_NOTIFY_CLOSED) idle.end(socketOf(connection));
}

void* WebServer::begin(void* server, const char* uri, MHD_Connection* connection) {
    static_cast<WebServer*>(server)->idle_.begin(socketOf(connection));
    auto* exchange = new Exchange;
    exchange->connection = connection;
    exchange->isOdd = strstr(uri, "%00") != nullptr;
    return exchange;
}

void WebServer::complete(void* server, MHD_Connection* connection, void** exchange, MHD_RequestTerminationCode code) {
    auto& self = *static_cast<WebServer*>(server);
    const std::unique_ptr<Exchange> one(static_cast<Exchange*>(*exchange));
    *exchange = nullptr;
    if (one != nullptr && one->isLater) self.countWaiting(-1);
    if (code == MHD_REQUEST_TERMINATED_COMPLETED_OK) self.idle_.begin(socketOf(connection));
}

static MHD_Result addHeader(void* headers, MHD_ValueKind, const char* key, const char* value) {
    static_cast<std::vector<std::pair<std::string, std::string>>*>(headers)->emplace_back(
        key, value != nullptr ? value : "");
    return MHD_YES;
}

static std::string valueOf(MHD_Connection* connection, MHD_ValueKind kind, const char* key) {
    const char* value = MHD_lookup_connection_value(connection, kind, key);
    return value != nullptr ? value : "";
}

MHD_Result WebServer::handle(void* server, MHD_Connection* connection, const char* url, const char* method, const char*,
                             const char* upload, size_t* uploadSize, void** exchange) try {
    auto& self = *static_cast<WebServer*>(server);
    auto* one = static_cast<Exchange*>(*exchange);
    if (one == nullptr) return MHD_NO;
    if (!one->isChecked) {
        one->isChecked = true;
        WebRequest& request = one->request;
        request.method = method;
        request.path = url;
        MHD_get_connection_values(connection, MHD_HEADER_KIND, addHeader, &request.headers);
        request.token = valueOf(connection, MHD_GET_ARGUMENT_KIND, "token");
        request.cookie = valueOf(connection, MHD_COOKIE_KIND, self.gate_.cookieName().c_str());
        const auto refusal = one->isOdd ? emptyAnswer(404) : self.gate_.check(request);
        return refusal ? send(*one, *refusal) : MHD_YES;
    }
    return self.advance(*one, upload, *uploadSize);
} catch (const std::exception&) {
    return MHD_NO;
}

MHD_Result WebServer::advance(Exchange& exchange, const char* upload, size_t& size) {
    if (size > 0) return takeBody(exchange, upload, size);
    idle_.end(socketOf(exchange.connection));
    if (exchange.answer) return send(exchange, *exchange.answer);
    return react(exchange);
}

MHD_Result WebServer::takeBody(Exchange& exchange, const char* upload, size_t& size) {
    if (exchange.request.body.size() + size > kLongestBody) return MHD_NO;
    exchange.request.body.append(upload, size);
    size = 0;
    return MHD_YES;
}

MHD_Result WebServer::react(Exchange& exchange) {
    if (exchange.request.path == "/api/events" && exchange.request.method == "GET") return openStream(exchange);
    LaterAnswer work;
    const WebAnswer answer = answerOf([&]() -> WebAnswer {
        Reaction reaction = route_(exchange.request);
        if (auto* now = std::get_if<WebAnswer>(&reaction)) return std::move(*now);
        work = std::move(std::get<LaterAnswer>(reaction));
        return {};
    });
    return work ? later(exchange, std::move(work)) : send(exchange, answer);
}

void WebServer::countWaiting(int change) {
    const std::scoped_lock lock(mutex_);
    waiting_ += static_cast<size_t>(change);
    answered_.notify_all();
}

// The connection sleeps while a thread works for it; the thread's last act is to wake it.
MHD_Result WebServer::later(Exchange& exchange, LaterAnswer work) {
    exchange.isLater = true;
    countWaiting(1);
    MHD_suspend_connection(exchange.connection);
    const bool isTaken = jobs_.start([&exchange, run = std::move(work)] {
        exchange.answer = answerOf(run);
        MHD_resume_connection(exchange.connection);
    });
    if (isTaken) return MHD_YES;
    exchange.answer = errorAnswer(429, "too-many", "too many requests are worked on at once");
    MHD_resume_connection(exchange.connection);
    return MHD_YES;
}

MHD_Result WebServer::openStream(const Exchange& exchange) {
    const std::string last = exchange.request.first("Last-Event-ID");
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(last.data(), last.data() + last.size(), number);
    const bool isNumber = !last.empty() && error == std::errc() && end == last.data() + last.size();
    MHD_Response* response = streams_.open(exchange.connection, isNumber ? std::optional(number) : std::nullopt);
    if (response == nullptr) {
        return send(exchange, errorAnswer(429, "too-many", "too many pages are open; close one of them"));
    }
    addHeaders(response);
    MHD_add_response_header(response, "Content-Type", "text/event-stream");
    const MHD_Result result = MHD_queue_response(exchange.connection, 200, response);
    MHD_destroy_response(response);
    return result;
}

MHD_Result WebServer::send(const Exchange& exchange, const WebAnswer& answer) {
    MHD_Response* response = MHD_create_response_from_buffer(answer.body.size(), const_cast<char*>(answer.body.data()),
                                                             MHD_RESPMEM_MUST_COPY);
    if (response == nullptr) return MHD_NO;
    addHeaders(response);
    if (!answer.type.empty()) MHD_add_response_header(response, "Content-Type", answer.type.c_str());
    for (const auto& [name, value] : answer.headers) {
        MHD_add_response_header(response, name.c_str(), value.c_str());
    }
    const MHD_Result result = MHD_queue_response(exchange.connection, answer.status, response);
    MHD_destroy_response(response);
    return result;
}
