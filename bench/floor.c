// The least that a server of datagrams does: select, recvfrom, sendto. What a daemon costs is told as a multiple of it.
#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

enum { kMostBytes = 1024 };

static const char kUsage[] =
    "Usage: bench_floor [-t] [-q INTERFACE] PORT BYTES\n"
    "Answers every datagram with BYTES (1 to 1024) bytes.\n"
    "  -t            also writes two lines a datagram to standard error\n"
    "  -q INTERFACE  also asks for the interface's address, mask and hardware address\n";

static void writeTraces(void) {
    static const char kReceived[] = "[QVP][qvp][main][Line: 343]: QVP Client receive command from [198.18.0.1]\n";
    static const char kServed[] = "[QVP][QVP_FUNCTION][discovery][Line: 65]\n";
    if (write(STDERR_FILENO, kReceived, sizeof kReceived - 1) < 0) return;
    if (write(STDERR_FILENO, kServed, sizeof kServed - 1) < 0) return;
}

static void queryInterface(int server, const char* name) {
    static const unsigned long kQueries[] = {SIOCGIFADDR, SIOCGIFNETMASK, SIOCGIFHWADDR};
    for (size_t i = 0; i < sizeof kQueries / sizeof *kQueries; i++) {
        struct ifreq query = {0};
        strncpy(query.ifr_name, name, sizeof query.ifr_name - 1);
        if (ioctl(server, kQueries[i], &query) != 0) perror(name);
    }
}

static void waitForDatagram(int server) {
    fd_set sockets;
    FD_ZERO(&sockets);
    FD_SET(server, &sockets);
    select(server + 1, &sockets, NULL, NULL, NULL);
}

static int openServer(int port) {
    int server = socket(AF_INET, SOCK_DGRAM, 0);
    struct sockaddr_in here = {.sin_family = AF_INET, .sin_port = htons((uint16_t)port)};
    if (server >= 0 && bind(server, (struct sockaddr*)&here, sizeof here) == 0) return server;
    perror("bench_floor");
    exit(1);
}

int main(int count, char** arguments) {
    bool traces = false;
    const char* interface = NULL;
    for (int option; (option = getopt(count, arguments, "tq:")) != -1;) {
        if (option == 't') traces = true;
        if (option == 'q') interface = optarg;
    }
    int bytes = count - optind == 2 ? atoi(arguments[optind + 1]) : 0;
    if (bytes < 1 || bytes > kMostBytes) return fputs(kUsage, stderr), 2;
    int server = openServer(atoi(arguments[optind]));
    for (;;) {
        char datagram[kMostBytes];
        struct sockaddr_in client;
        socklen_t length = sizeof client;
        waitForDatagram(server);
        if (recvfrom(server, datagram, sizeof datagram, 0, (struct sockaddr*)&client, &length) < 0) continue;
        if (traces) writeTraces();
        if (interface) queryInterface(server, interface);
        sendto(server, datagram, (size_t)bytes, 0, (struct sockaddr*)&client, length);
    }
}
