#include "upgrade/http_download.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <limits.h>
#include <netdb.h>
#include <netinet/in.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

static constexpr int kAttempts = 5;
static constexpr int kPortLimit = 65535;
static constexpr int kRequestSize = 1460;
static constexpr int kHeaderSize = 1024;
static constexpr int kLargestPiece = 1024;
static constexpr int kPatienceSeconds = 5;

int resolve_host(const char* name, char (&out)[80]) {
    const hostent* host = gethostbyname(name);
    if (host == nullptr) return -1;
    inet_ntop(AF_INET, host->h_addr_list[0], out, sizeof out);
    return 0;
}

static bool makeNonBlocking(int socket) {
    int flags = fcntl(socket, F_GETFL);
    return flags != -1 && fcntl(socket, F_SETFL, flags | O_NONBLOCK) != -1;
}

static bool tryToConnect(int socket, const sockaddr_in& address) {
    for (int attempt = 0; attempt < kAttempts; attempt++) {
        if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) >= 0) return true;
        sleep(1);
    }
    return false;
}

int connect_with_retry(int* out, const char* host, long port) {
    char dotted[80];
    *out = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (*out < 0 || resolve_host(host, dotted) != 0) return 0;  // a socket made stays open
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = inet_addr(dotted);
    if (makeNonBlocking(*out) && tryToConnect(*out, address)) return 1;
    close(*out);
    return 0;
}

static bool isPort(long port) { return port >= 0 && port <= kPortLimit; }

int send_http_get(int* out, const char* host, long port, const char* path) {
    if (out == nullptr || host == nullptr || !isPort(port) || path == nullptr) return -1;
    if (connect_with_retry(out, host, port) != 1) {
        *out = -1;
        return -1;
    }
    char request[kRequestSize] = {};
    snprintf(request, sizeof request, "GET %s HTTP/1.1\r\nUser-Agent: \r\nConnection: Keep-Alive\r\n\r\n", path);
    if (send(*out, request, strlen(request), MSG_NOSIGNAL) < 0) {
        close(*out);
        *out = -1;
        return -1;
    }
    return 0;
}

// A socket and how long to wait for it: prepared once and used up by the waits that follow.
struct Readiness {
    fd_set sockets;
    timeval left;
};

static void prepare(Readiness& readiness, int socket) {
    FD_ZERO(&readiness.sockets);
    FD_SET(socket, &readiness.sockets);
    readiness.left = {kPatienceSeconds, 0};
}

static int waitReadable(Readiness& readiness, int socket) {
    return select(socket + 1, &readiness.sockets, nullptr, nullptr, &readiness.left);
}

int receive_http_header(int socket, char* buffer, int capacity) {
    if (socket < 0 || socket >= FD_SETSIZE || buffer == nullptr || capacity < 1) return -1;
    Readiness readiness;
    prepare(readiness, socket);
    for (int total = 1;; total++) {
        if (waitReadable(readiness, socket) < 0) return -1;
        if (recv(socket, buffer + total - 1, 1, 0) < 1) return -1;
        if (total >= capacity) return -1;
        if (total >= 4 && memcmp(buffer + total - 4, "\r\n\r\n", 4) == 0) return 0;
    }
}

// Takes the length of the body that a header announces; false when it announces none, or its status is not 200.
static bool takeBodyLength(const char* header, long& length) {
    if (strtol(header + 8, nullptr, 10) != 200) return false;  // a number beyond all numbers stays beyond them
    const char* field = strstr(header, "Content-Length:");
    if (field == nullptr) return false;
    length = strtol(field + 16, nullptr, 10);
    return true;
}

// A zeroed buffer, also for an empty body; null for a length that no body can have.
static uint8_t* allocateBody(long length) {
    if (length < 0 || length > INT_MAX) return nullptr;
    return static_cast<uint8_t*>(calloc(1, length > 0 ? static_cast<size_t>(length) : 1));
}

// From the socket that the header came by. Returns the result of the last wait, 0 without any, or -1.
static int receiveBody(int socket, uint8_t* body, int length) {
    Readiness readiness;
    prepare(readiness, socket);
    int result = 0;
    while (length > 0) {
        result = waitReadable(readiness, socket);
        if (result < 0) return -1;
        ssize_t received = recv(socket, body, static_cast<size_t>(length < kLargestPiece ? length : kLargestPiece), 0);
        if (received < 1) return -1;
        body += received;
        length -= static_cast<int>(received);
    }
    return result;
}

static int receiveResponse(int socket, uint8_t** data) {
    char header[kHeaderSize] = {};
    if (receive_http_header(socket, header, kHeaderSize) != 0) return -1;
    long length = 0;
    if (!takeBodyLength(header, length)) return -1;
    free(*data);
    *data = allocateBody(length);
    if (*data == nullptr) return -1;
    return receiveBody(socket, *data, static_cast<int>(length));
}

int http_download(const char* host, long port, const char* path, uint8_t** data) {
    if (host == nullptr || !isPort(port) || data == nullptr || path == nullptr) return -1;
    int socket = -1;
    if (send_http_get(&socket, host, port, path) != 0) return -1;
    int result = receiveResponse(socket, data);
    close(socket);
    return result;
}
