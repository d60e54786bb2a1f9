// The HTTP server: what arrives is bounded and checked here before anything looks at it.
#pragma once

#include <microhttpd.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

#include "qvpctl/web/connections.h"
#include "qvpctl/web/gate.h"
#include "qvpctl/web/jobs.h"
#include "qvpctl/web/message.h"
#include "qvpctl/web/streams.h"

class WebServer {
public:
    using Router = std::function<Reaction(const WebRequest&)>;

    // Serves that listening socket from here on. Throws Error Local.
    WebServer(int socket, Gate& gate, EventStreams& streams, Jobs& jobs, Router route);
    ~WebServer();
    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    // To be called every second or so.
    void tick();

    // Ends: streams end, jobs are waited for. The socket stays open, for another process.
    void stop();

private:
    struct Exchange;

    static void* begin(void* server, const char* uri, MHD_Connection* connection);
    static MHD_Result handle(void* server, MHD_Connection* connection, const char* url, const char* method,
                             const char* version, const char* upload, size_t* uploadSize, void** exchange);
    static void complete(void* server, MHD_Connection* connection, void** exchange, MHD_RequestTerminationCode code);
    static void notice(void* server, MHD_Connection* connection, void** context, MHD_ConnectionNotificationCode code);

    MHD_Result advance(Exchange& exchange, const char* upload, size_t& size);
    MHD_Result react(Exchange& exchange);
    MHD_Result takeBody(Exchange& exchange, const char* upload, size_t& size);
    MHD_Result later(Exchange& exchange, LaterAnswer work);
    MHD_Result openStream(const Exchange& exchange);
    void countWaiting(int change);
    static MHD_Result send(const Exchange& exchange, const WebAnswer& answer);

    Gate& gate_;
    EventStreams& streams_;
    Jobs& jobs_;
    Router route_;
    IdleConnections idle_;
    std::mutex mutex_;
    std::condition_variable answered_;
    size_t waiting_ = 0;  // those that a thread works for, until their answer is sent
    MHD_Daemon* daemon_ = nullptr;
};
