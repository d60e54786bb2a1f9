#include "upgrade/http_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "upgrade/conditions.h"
#include "upgrade/network_calls.h"

namespace worker {
namespace {

void require(bool fulfilled, const char* what) {
    if (fulfilled) return;
    std::perror(what);
    std::abort();
}

// False when `stop` was closed before `socket` became readable.
bool waitReadable(int socket, int stop) {
    pollfd polled[] = {{socket, POLLIN, 0}, {stop, POLLIN, 0}};
    require(poll(polled, 2, -1) >= 0, "poll");
    return polled[1].revents == 0;
}

bool isClosedByClient(int socket) {
    pollfd polled{socket, POLLRDHUP, 0};
    return poll(&polled, 1, 0) > 0;
}

}  // namespace

bool Connection::readMore() {
    char part[4096];
    if (socket_ < 0 || !waitReadable(socket_, stop_)) return false;
    const ssize_t length = read(socket_, part, sizeof part);
    if (length <= 0) return false;
    read_.append(part, static_cast<std::size_t>(length));
    return true;
}

void Connection::readRequest() {
    while (read_.find("\r\n\r\n") == std::string::npos && readMore()) continue;
}

std::string Connection::readToEnd() {
    while (readMore()) continue;
    return read_;
}

void Connection::say(const std::string& text) {
    const ssize_t written = ::sendto(socket_, text.data(), text.size(), MSG_NOSIGNAL, nullptr, 0);
    if (written > 0) said_ += static_cast<std::size_t>(written);
}

void Connection::sayInPieces(const std::string& text, const std::vector<std::size_t>& sizes) {
    std::size_t piece = 0;
    for (std::size_t at = 0; at < text.size(); piece = (piece + 1) % sizes.size()) {
        while (!waitForReceived(said_)) {
            if (isClosedByClient(socket_)) return;
        }
        const std::size_t length = std::min(sizes[piece], text.size() - at);
        say(text.substr(at, length));
        at += length;
    }
}

void Connection::close() {
    if (socket_ >= 0) ::close(socket_);
    socket_ = -1;
}

HttpServer::HttpServer() {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* plain = reinterpret_cast<sockaddr*>(&address);
    socklen_t length = sizeof address;
    require(listener_ >= 0 && bind(listener_, plain, length) == 0 && listen(listener_, 8) == 0, "listen");
    require(getsockname(listener_, plain, &length) == 0 && pipe2(stop_, O_CLOEXEC) == 0, "server");
    port_ = ntohs(address.sin_port);
}

HttpServer::~HttpServer() {
    ::close(stop_[1]);
    if (thread_.joinable()) thread_.join();
    ::close(stop_[0]);
    ::close(listener_);
}

void HttpServer::serve(Script script) {
    thread_ = std::thread([this, script = std::move(script)] { run(script); });
}

bool HttpServer::waitForConnection() const { return waitReadable(listener_, stop_[0]); }

void HttpServer::run(const Script& script) {
    while (waitForConnection()) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        require(socket >= 0, "accept");
        {
            const std::lock_guard lock(mutex_);
            ++accepted_;
        }
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        Connection connection(socket, stop_[0]);
        script(connection);
        std::string all = connection.readToEnd();
        const std::lock_guard lock(mutex_);
        received_.push_back(std::move(all));
    }
}

std::string HttpServer::received(std::size_t nth) {
    const bool over = waitUntil([&] {
        const std::lock_guard lock(mutex_);
        return received_.size() >= nth;
    });
    const std::lock_guard lock(mutex_);
    return over ? received_[nth - 1] : "(not closed by the client)";
}

std::size_t HttpServer::connections() {
    const std::lock_guard lock(mutex_);
    return accepted_;
}

std::string httpReply(const std::vector<std::string>& lines, const std::string& body) {
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    return text + "\r\n" + body;
}

std::string goodReply(const std::string& body) {
    return httpReply({"HTTP/1.1 200 OK", "Content-Length: " + std::to_string(body.size())}, body);
}

}  // namespace worker
