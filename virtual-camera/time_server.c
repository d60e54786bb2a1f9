// The virtual LAN's time server: answers SNTP requests with this machine's time. The file that its argument names may
// hold how many seconds that is to be ahead.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>

enum { kPort = 123, kLength = 48 };
static const int64_t kFrom1900To1970 = 2208988800;

static int64_t secondsAhead(const char* path) {
    long long seconds = 0;
    FILE* file = fopen(path, "r");
    if (!file) return 0;
    if (fscanf(file, "%lld", &seconds) != 1) seconds = 0;
    fclose(file);
    return seconds;
}

// Seconds since 1900 and a fraction of one, in network order.
static void putTime(uint8_t* field, int64_t ahead) {
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    uint32_t seconds = htonl((uint32_t)(now.tv_sec + ahead + kFrom1900To1970));
    uint32_t fraction = htonl((uint32_t)(((uint64_t)now.tv_nsec << 32) / 1000000000));
    memcpy(field, &seconds, 4);
    memcpy(field + 4, &fraction, 4);
}

static void answer(const uint8_t request[kLength], uint8_t reply[kLength], int64_t ahead) {
    memset(reply, 0, kLength);
    reply[0] = (uint8_t)((request[0] & 0x38) | 4);  // the version that was asked in; mode "server"
    reply[1] = 1;                                   // stratum: a clock of its own
    reply[3] = 0xEC;                                // precision: a microsecond
    memcpy(reply + 12, "LOCL", 4);
    memcpy(reply + 24, request + 40, 8);  // when the client asked
    putTime(reply + 16, ahead);
    putTime(reply + 32, ahead);
    putTime(reply + 40, ahead);
}

int main(int count, char** arguments) {
    if (count != 2) return 2;
    int server = socket(AF_INET, SOCK_DGRAM, 0);
    struct sockaddr_in here = {.sin_family = AF_INET, .sin_port = htons(kPort)};
    if (server < 0 || bind(server, (struct sockaddr*)&here, sizeof here) != 0) {
        perror("no time server");
        return 1;
    }
    for (;;) {
        uint8_t request[kLength], reply[kLength];
        struct sockaddr_in client;
        socklen_t length = sizeof client;
        if (recvfrom(server, request, kLength, 0, (struct sockaddr*)&client, &length) != kLength) continue;
        if ((request[0] & 7) != 3) continue;  // no client's
        answer(request, reply, secondsAhead(arguments[1]));
        sendto(server, reply, kLength, 0, (struct sockaddr*)&client, length);
    }
}
