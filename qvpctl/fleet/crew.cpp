#include "qvpctl/fleet/crew.h"

#include <poll.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "client/error.h"
#include "qvpctl/tool.h"
#include "qvpctl/wait_bar.h"

bool isStopped(int stop) {
    pollfd ready{stop, POLLIN, 0};
    return poll(&ready, 1, 0) > 0;
}

void inParallel(size_t count, size_t parallel, int stop, const std::function<void(size_t)>& work) {
    std::atomic<size_t> next{0};
    std::mutex mutex;
    std::exception_ptr failure;
    const auto takeTurns = [&] {
        try {
            for (size_t i = next++; i < count && !isStopped(stop); i = next++) work(i);
        } catch (...) {
            next = count;
            const std::scoped_lock lock(mutex);
            if (!failure) failure = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> crew;
        for (size_t i = 0; i < std::min(count, parallel); i++) crew.emplace_back(takeTurns);
    }
    if (failure) std::rethrow_exception(failure);
}

void sayFromCrew(const std::string& sentence) {
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    say(sentence);
}

// Reports are not needed by most of the cameras, so where they cannot be heard is told once, by the roll call.
static client::UdpLink linkOfCrew(int stop) try {
    return client::UdpLink(client::UdpLink::Hears::RepliesAndReports, stop);
} catch (const client::Error&) {
    return client::UdpLink(client::UdpLink::Hears::Replies, stop);
}

void withJob(const CommonOptions& common, const std::vector<client::Login>& logins, int stop,
             const std::function<void(client::CameraJob&)>& work) {
    client::UdpLink network = linkOfCrew(stop);
    WaitBar link(network, common);
    const client::Patience patience{common.wait(), static_cast<int>(common.retries) + 1};
    client::CameraJob job(link, common.family, patience, logins, sayFromCrew);
    work(job);
}
