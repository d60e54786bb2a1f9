// Sends requests to a server of datagrams and measures its replies. A server answers in the order in which it was
// asked, so the oldest request in flight is the one that a reply answers.
#include <arpa/inet.h>
#include <errno.h>
#include <netinet/in.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

enum { kMostBytes = 1024, kMostRequests = 16, kMostInFlight = 64, kMostReplies = 1 << 21 };
enum { kMostSilences = 3, kSilenceSeconds = 2 };
static const uint64_t kSecond = 1000000000;

static const char kUsage[] =
    "Usage: bench_load (-n REQUESTS | -s SECONDS) [-w WINDOW] [-b] ADDRESS PORT HEX...\n"
    "Sends the datagrams in turn, WINDOW (1 to 64, default 1) of them ahead of their replies; with -b, does not sleep\n"
    "in between, so that the server need not wake it.\n"
    "Prints: replies lost bytes-of-the-last-reply nanoseconds median-latency 99th-percentile (nanoseconds)\n";

struct Datagram {
    uint8_t bytes[kMostBytes];
    size_t length;
};

static struct Datagram g_requests[kMostRequests];
static uint64_t g_requestCount;
static uint64_t g_sentAt[kMostInFlight];
static uint32_t g_latencies[kMostReplies];

static uint64_t now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (uint64_t)time.tv_sec * kSecond + (uint64_t)time.tv_nsec;
}

static bool takeHex(const char* text, struct Datagram* out) {
    size_t digits = strlen(text);
    if (digits == 0 || digits % 2 != 0 || digits > 2 * kMostBytes) return false;
    for (out->length = 0; out->length < digits / 2; out->length++) {
        const char pair[3] = {text[2 * out->length], text[2 * out->length + 1]};
        char* end;
        out->bytes[out->length] = (uint8_t)strtoul(pair, &end, 16);
        if (*end != '\0') return false;
    }
    return true;
}

static int openClient(const char* address, const char* port) {
    struct sockaddr_in server = {.sin_family = AF_INET, .sin_port = htons((uint16_t)atoi(port))};
    struct timeval silence = {.tv_sec = kSilenceSeconds};
    int client = socket(AF_INET, SOCK_DGRAM, 0);
    if (client >= 0 && inet_pton(AF_INET, address, &server.sin_addr) == 1 &&
        setsockopt(client, SOL_SOCKET, SO_RCVTIMEO, &silence, sizeof silence) == 0 &&
        connect(client, (struct sockaddr*)&server, sizeof server) == 0) {
        return client;
    }
    perror("bench_load");
    exit(1);
}

static void sendRequest(int client, uint64_t number) {
    const struct Datagram* request = &g_requests[number % g_requestCount];
    g_sentAt[number % kMostInFlight] = now();
    if (send(client, request->bytes, request->length, 0) < 0) perror("bench_load: send");
}

static ssize_t receive(int client, uint8_t reply[kMostBytes], bool busy) {
    if (!busy) return recv(client, reply, kMostBytes, 0);
    for (uint64_t end = now() + kSilenceSeconds * kSecond; now() < end;) {
        ssize_t length = recv(client, reply, kMostBytes, MSG_DONTWAIT);
        if (length >= 0 || errno != EAGAIN) return length;
    }
    return -1;
}

struct Result {
    uint64_t replies, lost, nanoseconds;
    ssize_t replyBytes;
};

// Until `most` requests are answered or `deadline` is over; the requests in flight are waited for.
static struct Result run(int client, uint64_t window, bool busy, uint64_t most, uint64_t deadline) {
    struct Result result = {0};
    uint64_t sent = 0, start = now(), end = start + deadline;
    for (int silences = 0; silences < kMostSilences;) {
        uint64_t settled = result.replies + result.lost;
        while (sent - settled < window && sent < most && now() < end) sendRequest(client, sent++);
        if (settled == sent) break;
        uint8_t reply[kMostBytes];
        ssize_t length = receive(client, reply, busy);
        if (length < 0) {
            result.lost = sent - result.replies;
            silences++;
            continue;
        }
        result.replyBytes = length;
        g_latencies[result.replies++] = (uint32_t)(now() - g_sentAt[settled % kMostInFlight]);
    }
    result.nanoseconds = now() - start;
    return result;
}

static int compare(const void* left, const void* right) {
    uint32_t a = *(const uint32_t*)left, b = *(const uint32_t*)right;
    return (a > b) - (a < b);
}

static void print(const struct Result* result) {
    qsort(g_latencies, result->replies, sizeof *g_latencies, compare);
    printf("%llu %llu %zd %llu %u %u\n", (unsigned long long)result->replies, (unsigned long long)result->lost,
           result->replyBytes, (unsigned long long)result->nanoseconds, g_latencies[result->replies / 2],
           g_latencies[result->replies * 99 / 100]);
}

int main(int count, char** arguments) {
    uint64_t window = 1, most = kMostReplies - 1, deadline = 0;
    bool busy = false;
    for (int option; (option = getopt(count, arguments, "bn:s:w:")) != -1;) {
        if (option == 'b') busy = true;
        if (option == 'n') most = strtoull(optarg, NULL, 10);
        if (option == 's') deadline = (uint64_t)(strtod(optarg, NULL) * (double)kSecond);
        if (option == 'w') window = strtoull(optarg, NULL, 10);
    }
    if (deadline == 0) deadline = 3600 * kSecond;
    for (int i = optind + 2; i < count && g_requestCount < kMostRequests; i++) {
        if (!takeHex(arguments[i], &g_requests[g_requestCount++])) return fputs(kUsage, stderr), 2;
    }
    if (g_requestCount == 0 || most >= kMostReplies || window < 1 || window > kMostInFlight) {
        return fputs(kUsage, stderr), 2;
    }
    struct Result result = run(openClient(arguments[optind], arguments[optind + 1]), window, busy, most, deadline);
    print(&result);
    return result.replies == 0;
}
