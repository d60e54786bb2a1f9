#include "qvpctl/web/listener.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "client/error.h"
#include "qvpctl/output.h"

using client::Error;
using client::ErrorKind;

static constexpr int kSocket = 3, kSecrets = 4;
static constexpr char kSocketVariable[] = "LISTEN_FDS";
static constexpr char kSecretsVariable[] = "QVPCTL_WEB_SESSION";

static sockaddr_in localAddress(uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int listenLocally(uint16_t port) {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (listener < 0) throw client::localError("cannot open a socket", errno);
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = localAddress(port);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, SOMAXCONN) != 0) {
        const int error = errno;
        close(listener);
        throw client::localError("cannot listen on 127.0.0.1, port " + std::to_string(port), error);
    }
    return listener;
}

static sockaddr_in nameOf(int socket) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    const bool isKnown = getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) == 0;
    return isKnown && length == sizeof address && address.sin_family == AF_INET ? address : sockaddr_in{};
}

uint16_t portOf(int socket) { return ntohs(nameOf(socket).sin_port); }

static bool listensLocally(int socket) {
    int listens = 0;
    socklen_t length = sizeof listens;
    const bool isKnown = getsockopt(socket, SOL_SOCKET, SO_ACCEPTCONN, &listens, &length) == 0;
    return isKnown && listens != 0 && nameOf(socket).sin_addr.s_addr == htonl(INADDR_LOOPBACK);
}

static std::string takeText(int memory) {
    std::string text(4096, '\0');
    const ssize_t length = pread(memory, text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(length, 0)));
    if (ftruncate(memory, 0) != 0) text.clear();  // others may have it, too
    close(memory);
    return text;
}

static Error notOurs() {
    return Error(ErrorKind::Local, std::string(kSecretsVariable) + " is set, but not by qvpctl: nothing is served");
}

std::optional<Handover> takeHandover() {
    const char* sockets = std::getenv(kSocketVariable);
    const char* secrets = std::getenv(kSecretsVariable);
    if (secrets == nullptr) return std::nullopt;
    const bool areThere = sockets != nullptr && strcmp(sockets, "1") == 0 && strcmp(secrets, "4") == 0;
    if (!areThere || !listensLocally(kSocket)) throw notOurs();
    unsetenv(kSocketVariable);
    unsetenv(kSecretsVariable);
    fcntl(kSocket, F_SETFD, FD_CLOEXEC);
    std::string text = takeText(kSecrets);
    const auto record = nlohmann::json::parse(text, nullptr, false);
    wipe(text);
    const bool isWhole = record.is_object() && record.contains("cookie") && record.contains("token") &&
                         record.contains("next") && record.contains("doorway");
    if (!isWhole) throw notOurs();
    return Handover{
        kSocket, {record["token"], record["cookie"]},
         record["next"], record["doorway"]
    };
}

void leaveHandover(const Handover& handover) {
    constexpr int kOutOfTheWay = 10;
    std::string text = jsonLine({
        {"token",   handover.secrets.token },
        {"cookie",  handover.secrets.cookie},
        {"next",    handover.nextEvent     },
        {"doorway", handover.doorway       }
    });
    const int memory = memfd_create("qvpctl-web", MFD_CLOEXEC);
    const bool isWritten = memory >= 0 && write(memory, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    wipe(text);
    const int secrets = fcntl(memory, F_DUPFD_CLOEXEC, kOutOfTheWay);
    const int socket = fcntl(handover.socket, F_DUPFD_CLOEXEC, kOutOfTheWay);
    const bool areLeft = isWritten && dup2(socket, kSocket) == kSocket && dup2(secrets, kSecrets) == kSecrets;
    if (!areLeft) throw client::localError("cannot hand the page over", errno);
    setenv(kSocketVariable, "1", 1);
    setenv(kSecretsVariable, "4", 1);
}
