// An HTTP server on 127.0.0.1 that says exactly what a test wants said, when the test wants it said.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace worker {

// One connection, in the server's thread.
class Connection {
public:
    Connection(int socket, int stop) : socket_(socket), stop_(stop) {}
    ~Connection() { close(); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void readRequest();  // up to the blank line or the end
    void say(const std::string& text);

    // Pieces of these sizes, over and over; each is sent when the client has taken all before it.
    void sayInPieces(const std::string& text, const std::vector<std::size_t>& sizes);

    // Everything that the client sent. Reads on until the client has closed.
    std::string readToEnd();

    void close();

private:
    bool readMore();

    int socket_, stop_;
    std::string read_;
    std::size_t said_ = 0;
};

class HttpServer {
public:
    using Script = std::function<void(Connection&)>;

    // Listens; connections wait until serve() begins to accept them.
    HttpServer();
    explicit HttpServer(Script script) : HttpServer() { serve(std::move(script)); }
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    // Runs the script on each connection, one after the other, then reads until the client closes it.
    void serve(Script script);

    std::uint16_t port() const { return port_; }

    // All bytes received on the nth connection (1 the first); waits until it is over, which takes a client that closes.
    std::string received(std::size_t nth = 1);

    std::size_t connections();

private:
    void run(const Script& script);
    bool waitForConnection() const;

    int listener_;
    int stop_[2];
    std::uint16_t port_;
    std::thread thread_;
    std::mutex mutex_;
    std::size_t accepted_ = 0;
    std::vector<std::string> received_;
};

// A reply with these header lines, each without its line end, and this body.
std::string httpReply(const std::vector<std::string>& lines, const std::string& body = "");

// 200 with the body's true length.
std::string goodReply(const std::string& body);

}  // namespace worker
